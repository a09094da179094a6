#include "orlixdataprocessingcore/core/errors.h"

#include <utility>

namespace Orlix::DataProcessing::Core {

namespace {

// The exception that is being handled; outside of a handler, a copy of the given one.
template <typename E>
ExceptionPtr getCurrentOrCopy(const E& exception) {
    ExceptionPtr current = Utils::getCurrentException();
    return current == nullptr ? Utils::makeExceptionPtr(exception) : current;
}

}  // namespace

ErrorBase::ErrorBase(const gcstring& name, const gcstring& description, ErrorList parentErrors,
                     const DateTime& timestamp)
    : name_(name),
      description_(description),
      timestamp_(timestamp),
      parentErrors_(std::move(parentErrors)) {}

ErrorBase::~ErrorBase() = default;

ExceptionErrorBase::ExceptionErrorBase(const gcstring& name, const gcstring& description,
                                       ExceptionPtr exception, const DateTime& timestamp)
    : name_(name),
      description_(description),
      exception_(std::move(exception)),
      timestamp_(timestamp) {}

ExceptionErrorBase::~ExceptionErrorBase() = default;

InvalidValueError::InvalidValueError(const gcstring& description, const DateTime& timestamp)
    : InvalidValueError(description, ErrorList(), timestamp) {}

InvalidValueError::InvalidValueError(const gcstring& description, const ErrorList& parentErrors,
                                     const DateTime& timestamp)
    : ErrorBase("InvalidValueError", description, parentErrors, timestamp) {}

InvalidValueError::~InvalidValueError() = default;

DeviceError::DeviceError(const gcstring& description, const DateTime& timestamp)
    : ErrorBase("DeviceError", description, ErrorList(), timestamp) {}

DeviceError::~DeviceError() = default;

GenICamExceptionError::GenICamExceptionError(const GenICam::GenericException& exception,
                                             const DateTime& timestamp)
    : ExceptionErrorBase("GenICamExceptionError", gcstring(exception.GetDescription()),
                         getCurrentOrCopy(exception), timestamp) {}

GenICamExceptionError::~GenICamExceptionError() = default;

StdExceptionError::StdExceptionError(const std::exception& exception, const DateTime& timestamp)
    : ExceptionErrorBase("StdExceptionError", gcstring(exception.what()),
                         getCurrentOrCopy(exception), timestamp) {}

StdExceptionError::~StdExceptionError() = default;

UnknownExceptionError::UnknownExceptionError(const gcstring& description,
                                             const gcstring& sourceFile, unsigned int sourceLine,
                                             const DateTime& timestamp)
    : ExceptionErrorBase("UnknownExceptionError", description,
                         getCurrentOrCopy(GenICam::RuntimeException(
                             description.c_str(), sourceFile.c_str(), sourceLine)),
                         timestamp),
      sourceFile_(sourceFile),
      sourceLine_(sourceLine) {}

UnknownExceptionError::~UnknownExceptionError() = default;

}  // namespace Orlix::DataProcessing::Core
