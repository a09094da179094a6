// The two forms of failure in node code: log-and-throw for what a caller did wrong, and the catch
// ladder where an exception must not pass. From any thread, under any lock.
//
//     const LogSubject subject{"Plugin::OrlixVCellPackageBase::Camera", this, getCatIdCamera()};
//     if (settings == nullptr) {
//         logAndThrow<InvalidArgumentException>(subject, "No settings passed.", "loadSettings");
//     }
//     try {
//         grab();
//     } catch (...) {
//         logCaught(subject, "grabbing an image");
//     }
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
class IError;
}

namespace Orlix::DataProcessing::Utils {

// The object that a line tells of. The line begins with the last part of the class's name and the
// address, or with the name alone if the address is null. To be built where it is used.
struct LogSubject {
    const char* className;  // with namespaces, where logAndThrow is to show the function with them
    const void* address;
    CatId category;
};

// Where something fails: a function of the subject's class, and the source line that names it.
struct CodePlace {
    CodePlace(const char* functionName, const char* sourceFile = __builtin_FILE(),
              int sourceLine = __builtin_LINE()) noexcept
        : function(functionName), file(sourceFile), line(sourceLine) {}

    const char* function;
    const char* file;
    int line;
};

// How the log tells a text apart that the code does not know before it runs.
enum class MessageOrigin { Literal, RunTime };

// What follows the last backslash; a path without one stays whole.
[[nodiscard]] constexpr const char* cutSourcePath(const char* path) noexcept {
    const std::size_t found = std::string_view(path).rfind('\\');
    return found == std::string_view::npos ? path : path + found + 1;
}

// `Camera 0x1: Plugin::Camera::loadSettings failed. Message: "<message>" (<file>:<line>)` at
// severity Error. A message of the run time stands there as "&<message>".
ORLIXDATAPROCESSINGCORE_API void logFailure(const LogSubject& subject, const char* message,
                                            const CodePlace& place,
                                            MessageOrigin origin = MessageOrigin::Literal);

// Writes that line and throws the exception with the same text, file and line.
template <typename Exception>
[[noreturn]] void logAndThrow(const LogSubject& subject, const char* message,
                              const CodePlace& place,
                              MessageOrigin origin = MessageOrigin::Literal) {
    logFailure(subject, message, place, origin);
    throw Exception(message, cutSourcePath(place.file), static_cast<unsigned int>(place.line));
}

// In a handler: the text of the exception that is being handled, by the order of the ladder: the
// description of a GenICam exception, what() of a standard one, null for one of no known class.
// Valid while the handler runs.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API const char* getCaughtText();

// In a handler: `Camera 0x1: Exception caught while <doing>. Message: <text>` at severity Warning,
// or `Camera 0x1: Unknown exception caught while <doing>.` for an exception of no known class.
ORLIXDATAPROCESSINGCORE_API void logCaught(const LogSubject& subject, const char* doing);
// The same line for a text that is at hand, null for none.
ORLIXDATAPROCESSINGCORE_API void logCaught(const LogSubject& subject, const char* doing,
                                           const char* text);

// In a handler: the error object of the exception that is being handled, by the order of the
// ladder. Description and place serve an exception of no known class.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API std::shared_ptr<Core::IError> makeErrorOfCaught(
    const char* unknownDescription, const char* sourceFile = __builtin_FILE(),
    unsigned int sourceLine = __builtin_LINE());

}  // namespace Orlix::DataProcessing::Utils
