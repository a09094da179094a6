// A truth value on a pin. See value.h.
#pragma once

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API Boolean : public IValue {
    ORLIX_OBJECT(Boolean)

public:
    Boolean() = default;
    explicit Boolean(bool value) : value_(value) {}
    explicit Boolean(const std::shared_ptr<IError>& error) : error_(error) {}
    Boolean(const Boolean&) = default;
    Boolean(Boolean&&) = default;
    Boolean& operator=(const Boolean&) = default;
    Boolean& operator=(Boolean&&) = default;
    ~Boolean() override;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    // Throws RuntimeException "Boolean is in error state." if it carries an error.
    [[nodiscard]] bool get() const;
    // Leaves the error state.
    void set(bool value);

    // The property "Value".
    static void registerProperties(Utils::ITypeInfoData& data);

private:
    ErrorState error_;
    bool value_ = false;
};

}  // namespace Orlix::DataProcessing::Core
