// The identity of a node type or another registered type: 16 bytes, written as 8-4-4-4-12 hex
// digits. A value type.
#pragma once

#include <array>
#include <compare>
#include <cstdint>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

class ORLIXDATAPROCESSINGCORE_API Uuid {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    // All zero.
    Uuid() = default;
    explicit Uuid(const Bytes& bytes) : bytes_(bytes) {}
    // Digits of either case. Throws InvalidArgumentException that quotes any other text.
    explicit Uuid(const GenICam::gcstring& text);

    [[nodiscard]] const Bytes& getBytes() const noexcept { return bytes_; }
    // Lower case.
    [[nodiscard]] GenICam::gcstring toString() const;

    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    Bytes bytes_{};
};

}  // namespace Orlix::DataProcessing::Utils
