// Errors as values: what a node or a value carries in place of an exception. Error objects are
// immutable and shared by std::shared_ptr, so any thread may read them.
#pragma once

#include <memory>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/datetime.h"
#include "orlixdataprocessingcore/utils/exceptionptr.h"
#include "orlixdataprocessingcore/utils/iobject.h"

namespace Orlix::DataProcessing::Core {

using GenICam::gcstring;
using Utils::DateTime;
using Utils::ExceptionPtr;

// The order of the virtual operations is part of the interface.
class ORLIXDATAPROCESSINGCORE_API IError : public Utils::IObject {
public:
    ~IError() override;
    // The errors that led to this one; the end of each chain is the origin.
    [[nodiscard]] virtual std::vector<std::shared_ptr<IError>> getParentErrors() const = 0;
    // The class of the error, such as "DeviceError".
    [[nodiscard]] virtual gcstring getName() const = 0;
    [[nodiscard]] virtual gcstring getDescription() const = 0;
    [[nodiscard]] virtual DateTime getTimestamp() const = 0;
};

// An error that keeps the exception that it was made of.
class ORLIXDATAPROCESSINGCORE_API IExceptionError : public IError {
public:
    ~IExceptionError() override;
    [[nodiscard]] virtual ExceptionPtr getException() const = 0;
};

}  // namespace Orlix::DataProcessing::Core
