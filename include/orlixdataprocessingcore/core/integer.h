// A whole number on a pin, signed or unsigned with 64 bits. See value.h.
#pragma once

#include <concepts>
#include <cstdint>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API Integer : public IValue {
    ORLIX_OBJECT(Integer)

public:
    Integer() = default;
    explicit Integer(std::int64_t value) { set(value); }
    explicit Integer(std::uint64_t value) { set(value); }
    // Any other integer type, without ambiguity.
    template <std::integral I>
    requires(!std::same_as<I, bool>) explicit Integer(I value) { set(value); }
    explicit Integer(const std::shared_ptr<IError>& error) : error_(error) {}
    Integer(const Integer&) = default;
    Integer(Integer&&) = default;
    Integer& operator=(const Integer&) = default;
    Integer& operator=(Integer&&) = default;
    ~Integer() override;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    // Throw RuntimeException "Integer is in error state." if it carries an error, and
    // OutOfRangeException that has the value if it doesn't fit.
    [[nodiscard]] std::int64_t get() const;
    [[nodiscard]] std::uint64_t getUnsigned() const;
    // The value is below 0, or above what std::int64_t can hold.
    [[nodiscard]] bool isNegative() const;
    [[nodiscard]] bool isAboveSigned() const;
    // Leave the error state.
    void set(std::int64_t value);
    void set(std::uint64_t value);
    template <std::integral I>
    requires(!std::same_as<I, bool>) void set(I value) {
        if constexpr (std::signed_integral<I>) {
            set(std::int64_t{value});
        } else {
            set(std::uint64_t{value});
        }
    }

    // The property "Value".
    static void registerProperties(Utils::ITypeInfoData& data);

private:
    ErrorState error_;
    // Two's complement of a signed value, or an unsigned value.
    std::uint64_t bits_ = 0;
    bool isUnsigned_ = false;
};

}  // namespace Orlix::DataProcessing::Core
