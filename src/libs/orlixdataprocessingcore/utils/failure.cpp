#include "orlixdataprocessingcore/utils/failure.h"

#include <cstdio>
#include <exception>
#include <string_view>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errors.h"

namespace Orlix::DataProcessing::Utils {

namespace {

// The class without its namespaces.
const char* getShortName(const LogSubject& subject) {
    const std::string_view name(subject.className);
    const std::size_t found = name.rfind("::");
    return found == std::string_view::npos ? subject.className : subject.className + found + 2;
}

// Where the object lies, behind a blank. On the stack, since a failure may be one of memory.
struct AddressText {
    explicit AddressText(const void* address) {
        if (address != nullptr) {
            std::snprintf(text, sizeof text, " %p", address);
        }
    }
    char text[32] = "";
};

}  // namespace

void logFailure(const LogSubject& subject, const char* message, const CodePlace& place,
                MessageOrigin origin) {
    const char* mark = origin == MessageOrigin::RunTime ? "&" : "";
    createLogEntry(Severitiy::Error, subject.category,
                   "%s%s: %s::%s failed. Message: \"%s%s\" (%s:%i)", getShortName(subject),
                   AddressText(subject.address).text, subject.className, place.function, mark,
                   message, cutSourcePath(place.file), place.line);
}

// The exception lives on in the handler of the caller, and its text with it.
const char* getCaughtText() {
    try {
        throw;
    } catch (const GenICam::GenericException& exception) {
        return exception.GetDescription();
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return nullptr;
    }
}

void logCaught(const LogSubject& subject, const char* doing) {
    logCaught(subject, doing, getCaughtText());
}

void logCaught(const LogSubject& subject, const char* doing, const char* text) {
    const char* name = getShortName(subject);
    const AddressText address(subject.address);
    if (text != nullptr) {
        createLogEntry(Severitiy::Warning, subject.category,
                       "%s%s: Exception caught while %s. Message: %s", name, address.text, doing,
                       text);
    } else {
        createLogEntry(Severitiy::Warning, subject.category,
                       "%s%s: Unknown exception caught while %s.", name, address.text, doing);
    }
}

std::shared_ptr<Core::IError> makeErrorOfCaught(const char* unknownDescription,
                                                const char* sourceFile, unsigned int sourceLine) {
    const DateTime now = DateTime::now();
    try {
        throw;
    } catch (const GenICam::GenericException& exception) {
        return std::make_shared<Core::GenICamExceptionError>(exception, now);
    } catch (const std::exception& exception) {
        return std::make_shared<Core::StdExceptionError>(exception, now);
    } catch (...) {
        return std::make_shared<Core::UnknownExceptionError>(
            unknownDescription, cutSourcePath(sourceFile), sourceLine, now);
    }
}

}  // namespace Orlix::DataProcessing::Utils
