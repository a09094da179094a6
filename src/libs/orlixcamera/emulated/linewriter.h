// Packs the samples of a line of pixels as their format says. Used by one thread, for one line.
#pragma once

#include <cstdint>

#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Emulated {

// Puts the samples of a line behind each other, as the format packs them.
class LineWriter {
public:
    LineWriter(const PixelFormat& format, std::uint8_t* out)
        : out_(out), depth_(format.bitDepth), packing_(packingOf(format)) {}

    void Add(std::uint32_t level) {
        const std::uint32_t sample = level >> (16U - depth_);
        switch (packing_) {
            case Packing::Byte:
                *out_++ = static_cast<std::uint8_t>(sample);
                break;
            case Packing::Word:
                *out_++ = static_cast<std::uint8_t>(sample);
                *out_++ = static_cast<std::uint8_t>(sample >> 8U);
                break;
            case Packing::Continuous:
                addBits(sample);
                break;
            case Packing::ThreeBytes:
                addToThreeBytes(sample);
                break;
        }
    }

private:
    enum class Packing : std::uint8_t {
        Byte,
        Word,        // lowest byte first
        Continuous,  // lowest bits first
        ThreeBytes,  // two samples: high bits, the low bits of both, high bits
    };

    static Packing packingOf(const PixelFormat& format) {
        if (format.packing == SamplePacking::Bytes) {
            return format.bitDepth <= 8 ? Packing::Byte : Packing::Word;
        }
        const bool older = format.bitDepth > 8 && format.name.ends_with("Packed");
        return older ? Packing::ThreeBytes : Packing::Continuous;
    }

    void addBits(std::uint32_t sample) {
        bits_ |= sample << count_;
        count_ += depth_;
        for (; count_ >= 8; count_ -= 8, bits_ >>= 8U) {
            *out_++ = static_cast<std::uint8_t>(bits_);
        }
    }

    void addToThreeBytes(std::uint32_t sample) {
        const std::uint32_t lowBits = depth_ - 8;
        const auto high = static_cast<std::uint8_t>(sample >> lowBits);
        const std::uint32_t low = sample & ((1U << lowBits) - 1);
        if (second_) {
            out_[1] = static_cast<std::uint8_t>(out_[1] | (low << 4U));
            out_[2] = high;
            out_ += 3;
        } else {
            out_[0] = high;
            out_[1] = static_cast<std::uint8_t>(low);
        }
        second_ = !second_;
    }

    std::uint8_t* out_;
    std::uint32_t depth_;
    Packing packing_;
    std::uint32_t bits_ = 0;
    std::uint32_t count_ = 0;
    bool second_ = false;
};

}  // namespace Orlix::Emulated
