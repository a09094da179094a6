// A text on a pin. See value.h.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API String : public IValue {
    ORLIX_OBJECT(String)

public:
    String() = default;
    explicit String(const gcstring& value) : value_(value) {}
    explicit String(gcstring&& value) noexcept : value_(std::move(value)) {}
    explicit String(const std::shared_ptr<IError>& error) : error_(error) {}
    String(const String&) = default;
    String(String&&) = default;
    String& operator=(const String&) = default;
    String& operator=(String&&) = default;
    ~String() override;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    // Throws RuntimeException "String is in error state." if it carries an error.
    [[nodiscard]] const gcstring& get() const;
    // Leaves the error state.
    void set(gcstring value);

    // The property "Value".
    static void registerProperties(Utils::ITypeInfoData& data);

private:
    ErrorState error_;
    gcstring value_;
};

}  // namespace Orlix::DataProcessing::Core
