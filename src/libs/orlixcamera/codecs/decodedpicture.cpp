#include "orlixcamera/codecs/decodedpicture.h"

#include <limits>
#include <string>

#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/orliximage.h"

namespace Orlix {

std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max()
                                                  : product;
}

void requirePlausibleSize(std::uint32_t width, std::uint32_t height, std::uint64_t decodedBytes,
                          std::uint64_t encodedBytes, std::uint64_t ratio) {
    if (width == 0 || height == 0) {
        throw CodecError("the header tells a size of " + std::to_string(width) + " x " +
                         std::to_string(height) + " pixels");
    }
    if (decodedBytes > saturatingProduct(encodedBytes, ratio)) {
        throw CodecError("the header tells a size of " + std::to_string(width) + " x " +
                         std::to_string(height) + " pixels, more than a file of " +
                         std::to_string(encodedBytes) + " bytes can hold");
    }
}

DecodedPicture allocatePicture(const COrlixImageBase& image, EPixelType pixelType,
                               std::uint32_t width, std::uint32_t height) {
    DecodedPicture picture;
    picture.pixelType = pixelType;
    picture.width = width;
    picture.height = height;
    picture.stride = ComputeStride(pixelType, width);
    picture.size = ComputeBufferSize(pixelType, width, height);
    picture.buffer = image.AllocateBuffer(picture.size);
    return picture;
}

}  // namespace Orlix
