// The error classes that nodes and values use; see error.h. Made with std::make_shared.
#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Core {

using ErrorList = std::vector<std::shared_ptr<IError>>;

class ORLIXDATAPROCESSINGCORE_API ErrorBase : public IError {
    ORLIX_OBJECT(ErrorBase)

public:
    ~ErrorBase() override;

    ErrorList getParentErrors() const override { return parentErrors_; }
    gcstring getName() const override { return name_; }
    gcstring getDescription() const override { return description_; }
    DateTime getTimestamp() const override { return timestamp_; }

protected:
    ErrorBase(const gcstring& name, const gcstring& description, ErrorList parentErrors,
              const DateTime& timestamp);

private:
    gcstring name_;
    gcstring description_;
    DateTime timestamp_;
    ErrorList parentErrors_;
};

class ORLIXDATAPROCESSINGCORE_API ExceptionErrorBase : public IExceptionError {
    ORLIX_OBJECT(ExceptionErrorBase)

public:
    ~ExceptionErrorBase() override;

    ErrorList getParentErrors() const override { return ErrorList(); }
    gcstring getName() const override { return name_; }
    gcstring getDescription() const override { return description_; }
    DateTime getTimestamp() const override { return timestamp_; }
    ExceptionPtr getException() const override { return exception_; }

protected:
    ExceptionErrorBase(const gcstring& name, const gcstring& description, ExceptionPtr exception,
                       const DateTime& timestamp);

private:
    gcstring name_;
    gcstring description_;
    ExceptionPtr exception_;
    DateTime timestamp_;
};

// A value that reached a node is unusable; the parents are the errors that it carried.
class ORLIXDATAPROCESSINGCORE_API InvalidValueError : public ErrorBase {
    ORLIX_OBJECT(InvalidValueError)

public:
    InvalidValueError(const gcstring& description, const DateTime& timestamp);
    InvalidValueError(const gcstring& description, const ErrorList& parentErrors,
                      const DateTime& timestamp);
    ~InvalidValueError() override;
};

// A device fails or is removed.
class ORLIXDATAPROCESSINGCORE_API DeviceError : public ErrorBase {
    ORLIX_OBJECT(DeviceError)

public:
    DeviceError(const gcstring& description, const DateTime& timestamp);
    ~DeviceError() override;
};

// Made in a handler of the exception, which it keeps; elsewhere it keeps a copy, which has lost
// what derived classes added.
class ORLIXDATAPROCESSINGCORE_API GenICamExceptionError : public ExceptionErrorBase {
    ORLIX_OBJECT(GenICamExceptionError)

public:
    GenICamExceptionError(const GenICam::GenericException& exception, const DateTime& timestamp);
    ~GenICamExceptionError() override;
};

// As GenICamExceptionError, with the description from what().
class ORLIXDATAPROCESSINGCORE_API StdExceptionError : public ExceptionErrorBase {
    ORLIX_OBJECT(StdExceptionError)

public:
    StdExceptionError(const std::exception& exception, const DateTime& timestamp);
    ~StdExceptionError() override;
};

// For a handler of everything else. Outside of a handler it keeps a RuntimeException of its
// description and place.
class ORLIXDATAPROCESSINGCORE_API UnknownExceptionError : public ExceptionErrorBase {
    ORLIX_OBJECT(UnknownExceptionError)

public:
    UnknownExceptionError(const gcstring& description, const gcstring& sourceFile,
                          unsigned int sourceLine, const DateTime& timestamp);
    ~UnknownExceptionError() override;

    [[nodiscard]] const gcstring& getSourceFile() const noexcept { return sourceFile_; }
    [[nodiscard]] unsigned int getSourceLine() const noexcept { return sourceLine_; }

private:
    gcstring sourceFile_;
    unsigned int sourceLine_;
};

}  // namespace Orlix::DataProcessing::Core
