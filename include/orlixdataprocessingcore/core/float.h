// A floating-point number on a pin. See value.h.
#pragma once

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API Float : public IValue {
    ORLIX_OBJECT(Float)

public:
    Float() = default;
    explicit Float(double value) : value_(value) {}
    explicit Float(const std::shared_ptr<IError>& error) : error_(error) {}
    Float(const Float&) = default;
    Float(Float&&) = default;
    Float& operator=(const Float&) = default;
    Float& operator=(Float&&) = default;
    ~Float() override;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    // Throws RuntimeException "Float is in error state." if it carries an error.
    [[nodiscard]] double get() const;
    // Leaves the error state.
    void set(double value);

    // The property "Value".
    static void registerProperties(Utils::ITypeInfoData& data);

private:
    ErrorState error_;
    double value_ = 0.0;
};

}  // namespace Orlix::DataProcessing::Core
