// A port of noise: every address answers with bytes that depend on it alone, and writes are taken
// and forgotten. What a camera without sense would do.
#pragma once

#include <cstdint>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"

namespace OrlixFuzz {

class NoisePort : public GenApi::CPortImpl {
public:
    explicit NoisePort(std::uint64_t seed) : seed_(seed) {}

    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        if (Length > longest) {
            throw GenICam::OutOfRangeException("The read is too long.", __FILE__, __LINE__);
        }
        auto* out = static_cast<std::uint8_t*>(pBuffer);
        for (std::int64_t i = 0; i < Length; ++i) {
            out[i] = byteAt(static_cast<std::uint64_t>(Address) + static_cast<std::uint64_t>(i));
        }
    }
    void Write(const void*, std::int64_t, std::int64_t) override {}

private:
    static constexpr std::int64_t longest = std::int64_t{1} << 20;

    // Some noise is small numbers, so that flags are zero and one as well.
    [[nodiscard]] std::uint8_t byteAt(std::uint64_t address) const {
        std::uint64_t mixed = (address + seed_) * 0x9E3779B97F4A7C15U;
        mixed ^= mixed >> 29;
        const bool isSmall = ((mixed >> 8) & 3) != 0;
        return static_cast<std::uint8_t>(isSmall ? mixed & 1 : mixed);
    }

    std::uint64_t seed_;
};

// Errors of GenICam classes are answers; anything else that leaves a call is a finding.
template <typename Call>
void attempt(Call call) {
    try {
        call();
    } catch (const GenICam::GenericException&) {
    }
}

}  // namespace OrlixFuzz
