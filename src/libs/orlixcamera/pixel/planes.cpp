#include "orlixcamera/pixel/planes.h"

#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/pixel/pixelcode.h"
#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix {
namespace {

// How one plane relates to the pixels of the image.
struct PlaneShape {
    std::uint32_t bits;         // of one column of the plane
    std::uint32_t columnShift;  // 1: half the columns, rounded up
    std::uint32_t lineShift;    // 1: half the lines, rounded up
    std::uint32_t group;        // columns that can't be parted
};

struct PlaneShapes {
    std::array<PlaneShape, 3> shapes;
    std::size_t count;
};

PlaneShapes GetShapes(const PixelFormat& format) {
    const std::uint32_t bits = BitsPerPixel(format.pixelType);
    const PlaneShape full{8, 0, 0, 1};
    switch (format.layout) {
        case PixelLayout::Whole:
            return {{PlaneShape{bits, 0, 0, 1}}, 1};
        case PixelLayout::Pairs:
            return {{PlaneShape{bits, 0, 0, 2}}, 1};
        case PixelLayout::Quads:
            return {{PlaneShape{bits, 0, 0, 4}}, 1};
        case PixelLayout::TwoPlanes: {
            const PlaneShape half{bits / 2, 0, 0, 1};
            return {{half, half}, 2};
        }
        case PixelLayout::ThreePlanes: {
            const PlaneShape third{bits / 3, 0, 0, 1};
            return {{third, third, third}, 3};
        }
        case PixelLayout::Chroma422:
            return {{full, PlaneShape{8, 1, 0, 1}, PlaneShape{8, 1, 0, 1}}, 3};
        case PixelLayout::Chroma420:
            return {{full, PlaneShape{8, 1, 1, 1}, PlaneShape{8, 1, 1, 1}}, 3};
        case PixelLayout::Semiplanar422:
            return {{full, PlaneShape{16, 1, 0, 1}}, 2};
        case PixelLayout::Semiplanar420:
            return {{full, PlaneShape{16, 1, 1, 1}}, 2};
    }
    return {};
}

// A line of 2^32 columns of 255 bits fits into 64 bits with room to spare.
std::uint64_t LineBytes(const PlaneShape& shape, std::uint32_t width) {
    const std::uint64_t columns =
        (std::uint64_t{width} + (1U << shape.columnShift) - 1) >> shape.columnShift;
    const std::uint64_t grouped = (columns + shape.group - 1) / shape.group * shape.group;
    return (grouped * shape.bits + 7) / 8;
}

// Adds a plane behind those already there; false if 64 bits are too few.
bool Append(ImagePlanes& planes, const ImagePlane& plane) {
    ImagePlane& added = planes.planes[planes.count++];
    added = plane;
    added.offset = planes.size;
    std::uint64_t bytes = 0;
    return !__builtin_mul_overflow(plane.stride, std::uint64_t{plane.lines}, &bytes) &&
           !__builtin_add_overflow(planes.size, bytes, &planes.size);
}

[[noreturn]] void ThrowUnknown(EPixelType pixelType) {
    const std::string cause = pixelType == PixelType_Undefined
                                  ? "is undefined."
                                  : PixelCodeText(pixelType) + " is unknown.";
    const std::string text = "The size of an image can't be computed: the pixel type " + cause;
    throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

[[noreturn]] void ThrowTooLarge(const PixelFormat& format, std::uint32_t width,
                                std::uint32_t height, std::uint64_t paddingX) {
    const std::string text = "An image of format " + std::string(format.name) + " with " +
                             std::to_string(width) + " x " + std::to_string(height) +
                             " pixels and " + std::to_string(paddingX) +
                             " bytes of padding a line is too large for 64 bits.";
    throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

ImagePlanes ComputePlanes(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                          std::uint64_t paddingX) {
    const PixelFormat* format = FindPixelFormat(pixelType);
    if (format == nullptr) {
        ThrowUnknown(pixelType);
    }
    const PlaneShapes shapes = GetShapes(*format);
    ImagePlanes result;
    for (std::size_t index = 0; index < shapes.count; ++index) {
        const PlaneShape& shape = shapes.shapes[index];
        ImagePlane plane;
        plane.lineBytes = LineBytes(shape, width);
        plane.lines = static_cast<std::uint32_t>(
            (std::uint64_t{height} + (1U << shape.lineShift) - 1) >> shape.lineShift);
        if (__builtin_add_overflow(plane.lineBytes, paddingX, &plane.stride) ||
            !Append(result, plane)) {
            ThrowTooLarge(*format, width, height, paddingX);
        }
    }
    return result;
}

}  // namespace Orlix
