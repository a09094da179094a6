#include "orlixcamera/codecs/imagerows.h"

#include "orlixcamera/bufferpool.h"

namespace Orlix {

namespace {

bool isBlueFirst(EPixelType pixelType) {
    return pixelType == PixelType_BGR8Packed || pixelType == PixelType_BGRA8Packed;
}

bool isRedFirst(EPixelType pixelType) {
    return pixelType == PixelType_RGB8Packed || pixelType == PixelType_RGBA8Packed;
}

}  // namespace

ImageRows::ImageRows(const COrlixImageBase& image, ColorOrder order)
    : image_(image),
      planes_(ComputePlanes(image.GetPixelType(), image.GetWidth(), image.GetHeight(),
                            image.GetPaddingX())) {
    const EPixelType pixelType = image.GetPixelType();
    if ((order == ColorOrder::RedFirst && isBlueFirst(pixelType)) ||
        (order == ColorOrder::BlueFirst && isRedFirst(pixelType))) {
        swappedRow_ = BufferPool::Instance().Allocate(RowBytes());
    }
}

const unsigned char* ImageRows::PlaneRow(std::size_t plane, std::uint32_t y) const {
    const ImagePlane& place = planes_.planes.at(plane);
    const bool isTopDown = image_.GetOrientation() == ImageOrientation_TopDown;
    const std::uint64_t line = isTopDown ? y : place.lines - 1 - y;
    return static_cast<const unsigned char*>(image_.GetBuffer()) + place.offset +
           line * place.stride;
}

const unsigned char* ImageRows::Row(std::uint32_t y) const {
    const unsigned char* source = PlaneRow(0, y);
    if (swappedRow_ == nullptr) {
        return source;
    }
    const std::size_t pixelBytes = BitsPerPixel(image_.GetPixelType()) / 8;
    auto* target = static_cast<unsigned char*>(swappedRow_.get());
    for (std::uint32_t x = 0; x < Width(); ++x, source += pixelBytes, target += pixelBytes) {
        target[0] = source[2];
        target[1] = source[1];
        target[2] = source[0];
        if (pixelBytes == 4) {
            target[3] = source[3];
        }
    }
    return static_cast<const unsigned char*>(swappedRow_.get());
}

}  // namespace Orlix
