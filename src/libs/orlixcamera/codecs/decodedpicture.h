// A decoded picture on its way into an image, and the guard against headers that lie about its
// size. Plain values; used by the loading thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

class COrlixImageBase;

// Rows without padding, the top one first, in memory of the image that it is to become.
struct DecodedPicture {
    EPixelType pixelType = PixelType_Undefined;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::size_t stride = 0;
    std::size_t size = 0;
    std::shared_ptr<void> buffer;

    [[nodiscard]] unsigned char* Row(std::uint64_t y) const {
        return static_cast<unsigned char*>(buffer.get()) + y * stride;
    }
};

// A product that stays at the largest number instead of wrapping round, since its factors come
// from a file.
[[nodiscard]] std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b);

// Bytes of a row in a file.
[[nodiscard]] inline std::uint64_t bytesForBits(std::uint64_t bits) {
    return bits / 8 + (bits % 8 != 0);
}

// Throws CodecError unless `encodedBytes` of a codec that packs at most `ratio` to one can hold
// `decodedBytes`, the bytes that leave the codec. To be called before anything of that size is
// allocated.
void requirePlausibleSize(std::uint32_t width, std::uint32_t height, std::uint64_t decodedBytes,
                          std::uint64_t encodedBytes, std::uint64_t ratio);

// Takes a buffer from the image, whose content stays as it is; that of the buffer is undefined.
[[nodiscard]] DecodedPicture allocatePicture(const COrlixImageBase& image, EPixelType pixelType,
                                             std::uint32_t width, std::uint32_t height);

}  // namespace Orlix
