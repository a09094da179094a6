// What every value on a pin offers: it can carry an error in place of its data, so that a failure
// travels through the graph like a value. A value belongs to one holder at a time; handles share
// it copy-on-write.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/utils/iobject.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API IValue : public Utils::IObject {
public:
    ~IValue() override;

    // With `includeElements` true an array also tells of the errors of its elements; other values
    // have none.
    [[nodiscard]] virtual bool hasError(bool includeElements) const = 0;
    // Null without an error; of several elements, that of the first.
    [[nodiscard]] virtual std::shared_ptr<IError> getError(bool includeElements) const = 0;
    // Drops the data. Throws InvalidArgumentException "Invalid error pointer passed." for null.
    virtual void setError(const std::shared_ptr<IError>& error) = 0;

protected:
    IValue() = default;
    IValue(const IValue&) = default;
    IValue(IValue&&) = default;
    IValue& operator=(const IValue&) = default;
    IValue& operator=(IValue&&) = default;
};

// The error state of a value; null stands for none. An implementation helper of the values.
class ORLIXDATAPROCESSINGCORE_API ErrorState {
public:
    ErrorState() = default;
    explicit ErrorState(const std::shared_ptr<IError>& error) { set(error); }

    [[nodiscard]] bool isSet() const noexcept { return error_ != nullptr; }
    [[nodiscard]] const std::shared_ptr<IError>& get() const noexcept { return error_; }
    // Throws InvalidArgumentException "Invalid error pointer passed." for a null pointer.
    void set(const std::shared_ptr<IError>& error);
    void clear() noexcept { error_.reset(); }
    // Throws RuntimeException "<valueName> is in error state." if an error is set.
    void check(const char* valueName) const {
        if (error_ != nullptr) {
            fail(valueName);
        }
    }

private:
    [[noreturn]] static void fail(const char* valueName);

    std::shared_ptr<IError> error_;
};

}  // namespace Orlix::DataProcessing::Core
