// The two forms of failure in node code: log-and-throw for what a caller did wrong, and the catch
// ladder where an exception must not pass. Macros, since each site has its own literal format and
// place.
#pragma once

#include <cstring>
#include <exception>
#include <memory>
#include <string_view>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Utils {

// What follows the last backslash; a path without one stays whole.
[[nodiscard]] constexpr const char* cutSourcePath(const char* path) noexcept {
    const std::size_t found = std::string_view(path).rfind('\\');
    return found == std::string_view::npos ? path : path + found + 1;
}

// In a handler: the error object of the exception that is being handled, by the order of the
// ladder. The description, file and line serve an exception of no known class.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<Core::IError> makeErrorOfCurrentException(
    const char* unknownDescription, const char* sourceFile, unsigned int sourceLine);

}  // namespace Orlix::DataProcessing::Utils

// Writes one line at severity 3 and throws GenICam::Exception with the same text, file and line.
// Class, FUNCTION and MESSAGE are literals; MESSAGE has no '%'.
//
//     ORLIX_LOG_AND_THROW(InvalidArgumentException, getCatIdCamera(), "Camera", this,
//                         "Plugin::OrlixVCellPackageBase::Camera::loadSettings",
//                         "No settings passed.");
#define ORLIX_LOG_AND_THROW(Exception, category, CLASS, object, FUNCTION, MESSAGE)               \
    do {                                                                                         \
        static_assert(std::string_view(MESSAGE).find('%') == std::string_view::npos);            \
        constexpr int orlixLine = __LINE__;                                                      \
        Orlix::DataProcessing::Utils::createLogEntry(                                            \
            Orlix::DataProcessing::Utils::Severitiy::Error, category,                            \
            CLASS " %p: %s failed. Message: \"" MESSAGE "\" (%s:%i)",                            \
            static_cast<const void*>(object), FUNCTION,                                          \
            Orlix::DataProcessing::Utils::cutSourcePath(__FILE__), orlixLine);                   \
        throw GenICam::Exception(MESSAGE, Orlix::DataProcessing::Utils::cutSourcePath(__FILE__), \
                                 static_cast<unsigned int>(orlixLine));                          \
    } while (false)

// The same where the text is known at run time only. TEXT_FORMAT is the literal that stands
// between the quotes, with one %s for `text`, such as "&%s"; the exception carries `text` alone.
#define ORLIX_LOG_AND_THROW_TEXT(Exception, category, CLASS, object, FUNCTION, TEXT_FORMAT, text) \
    do {                                                                                          \
        constexpr int orlixLine = __LINE__;                                                       \
        Orlix::DataProcessing::Utils::createLogEntry(                                             \
            Orlix::DataProcessing::Utils::Severitiy::Error, category,                             \
            CLASS " %p: %s failed. Message: \"" TEXT_FORMAT "\" (%s:%i)",                         \
            static_cast<const void*>(object), FUNCTION, text,                                     \
            Orlix::DataProcessing::Utils::cutSourcePath(__FILE__), orlixLine);                    \
        throw GenICam::Exception(text, Orlix::DataProcessing::Utils::cutSourcePath(__FILE__),     \
                                 static_cast<unsigned int>(orlixLine));                           \
    } while (false)

// Behind a try block: logs at severity 4 whatever is thrown, and then runs the last argument, a
// statement that may use makeErrorOfCurrentException. DOING is a literal such as "grabbing an
// image"; the lines end in "Exception caught while <DOING>. Message: ..." and "Unknown exception
// caught while <DOING>.".
//
//     try { ... } ORLIX_CATCH_LADDER(getCatIdCamera(), "Camera", this, "grabbing an image", {})
#define ORLIX_CATCH_LADDER(category, CLASS, object, DOING, ...)                 \
    catch (const GenICam::GenericException& orlixException) {                   \
        Orlix::DataProcessing::Utils::createLogEntry(                           \
            Orlix::DataProcessing::Utils::Severitiy::Warning, category,         \
            CLASS " %p: Exception caught while " DOING ". Message: %s",         \
            static_cast<const void*>(object), orlixException.GetDescription()); \
        __VA_ARGS__;                                                            \
    }                                                                           \
    catch (const std::exception& orlixException) {                              \
        Orlix::DataProcessing::Utils::createLogEntry(                           \
            Orlix::DataProcessing::Utils::Severitiy::Warning, category,         \
            CLASS " %p: Exception caught while " DOING ". Message: %s",         \
            static_cast<const void*>(object), orlixException.what());           \
        __VA_ARGS__;                                                            \
    }                                                                           \
    catch (...) {                                                               \
        Orlix::DataProcessing::Utils::createLogEntry(                           \
            Orlix::DataProcessing::Utils::Severitiy::Warning, category,         \
            CLASS " %p: Unknown exception caught while " DOING ".",             \
            static_cast<const void*>(object));                                  \
        __VA_ARGS__;                                                            \
    }
