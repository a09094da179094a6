// Converts images from one pixel format to another. The converter owns its parameters and nothing
// else. One thread at a time may set parameters; any number may convert while nobody sets one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orlixcamera/api.h"
#include "orlixcamera/imageorientation.h"
#include "orlixcamera/parameter.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

class COrlixImage;
class COrlixImageBase;

// Where the bits of a sample go that gets more bits than it had.
enum OutputBitAlignmentEnums : std::uint32_t {
    OutputBitAlignment_LsbAligned = 0,  // the value stays what it is
    OutputBitAlignment_MsbAligned = 1,  // the value is shifted up to the most significant bit
};

enum OutputOrientationEnums : std::uint32_t {
    OutputOrientation_BottomUp = 0,
    OutputOrientation_TopDown = 1,
    OutputOrientation_Unchanged = 2,  // that of the source
};

// What stands in for the neighbours that a Bayer pixel at the edge of the picture lacks.
enum BayerBorderEnums : std::uint32_t {
    // The outermost line or column of pixels takes the colour of the one further in.
    BayerBorder_CopyInner = 0,
    // The interpolation is bilinear up to the edge: the missing sample is the one two pixels
    // further in, which has the same place in the pattern.
    BayerBorder_Repeat = 1,
};

// The life of a converter is that of its owner; it holds no memory and no thread between calls.
// The calling thread does: where pixels are made by way of rows it keeps those for its next
// conversion, until it ends. They have about 26 bytes for each pixel of the widest line so far and
// each thread that took part.
// docs/pixel-formats.md has the formula of each conversion.
class ORLIXCAMERA_API CImageFormatConverter {
public:
    CImageFormatConverter();
    CImageFormatConverter(const CImageFormatConverter&) = delete;
    CImageFormatConverter& operator=(const CImageFormatConverter&) = delete;
    ~CImageFormatConverter();

    // Initially BGRA8Packed, which screens and user interfaces take as it is.
    CEnumParameterT<EPixelType> OutputPixelFormat;
    // Initially LsbAligned, so that a number stays the same number.
    CEnumParameterT<OutputBitAlignmentEnums> OutputBitAlignment;
    // Bytes of 0 at the end of each line, in planar formats of each line of each plane.
    // Initially 0.
    CIntegerParameter OutputPaddingX;
    // Initially Unchanged: a picture stays as it is.
    CEnumParameterT<OutputOrientationEnums> OutputOrientation;
    // Initially CopyInner.
    CEnumParameterT<BayerBorderEnums> BayerBorder;
    // Threads that one conversion may use, from 1 to those of the machine, which is the initial
    // value. With 1 all is done by the caller.
    CIntegerParameter MaxNumThreads;

    // True if the converted image would be the same as the source, so that there is no need to
    // convert it.
    [[nodiscard]] bool ImageHasDestinationFormat(EPixelType sourcePixelType,
                                                 std::size_t sourcePaddingX,
                                                 EImageOrientation sourceOrientation) const;
    [[nodiscard]] bool ImageHasDestinationFormat(const COrlixImageBase& source) const;

    // True if there is a conversion from the format to the output pixel format.
    [[nodiscard]] bool IsSupportedInputFormat(EPixelType sourcePixelType) const noexcept;

    // Makes `destination` an image in a new buffer of its own, converted from the `sourceSize`
    // bytes at `source`. The bytes may lie in the buffer of `destination`: it is let go last.
    // Throws InvalidArgumentException for a null pointer, a width or height of 0, an undefined or
    // unknown pixel type, a pair of formats without a conversion and a source that is too small,
    // OutOfRangeException for a picture whose bytes, there or here, are too many for 64 bits and
    // for a negative padding, and BadAllocException; `destination` is then as it was.
    void Convert(COrlixImage& destination, const void* source, std::size_t sourceSize,
                 EPixelType sourcePixelType, std::uint32_t width, std::uint32_t height,
                 std::size_t sourcePaddingX, EImageOrientation sourceOrientation) const;
    void Convert(COrlixImage& destination, const COrlixImageBase& source) const;
};

}  // namespace Orlix
