#include "orlixcamera/conversion/pictures.h"

#include <cstring>
#include <string>

#include "gcbase/gcexception.h"

namespace Orlix {
namespace {

void CheckArguments(const SourceArguments& source) {
    if (!IsKnown(source.pixelType)) {
        ThrowBadSource(source, "a known pixel type is needed.");
    }
    if (source.width == 0 || source.height == 0) {
        ThrowBadSource(source, "width and height must be at least 1.");
    }
    if (source.data == nullptr) {
        ThrowBadSource(source, "the pointer to its pixels is null.");
    }
    if (source.orientation != ImageOrientation_TopDown &&
        source.orientation != ImageOrientation_BottomUp) {
        ThrowBadSource(source, "the orientation " + std::to_string(source.orientation) +
                                   " is neither 0 (top down) nor 1 (bottom up).");
    }
}

}  // namespace

SourcePicture CheckSource(const SourceArguments& source) {
    CheckArguments(source);
    SourcePicture picture{
        static_cast<const std::uint8_t*>(source.data),
        ComputePlanes(source.pixelType, source.width, source.height, source.paddingX), source.width,
        source.height, static_cast<EImageOrientation>(source.orientation)};
    if (source.size < picture.planes.size) {
        ThrowBadSource(source, "its buffer has " + std::to_string(source.size) + " bytes, but " +
                                   std::to_string(picture.planes.size) + " are needed.");
    }
    return picture;
}

std::size_t CheckOutputPadding(std::int64_t paddingX) {
    if (paddingX < 0) {
        const std::string text =
            "Can't convert an image: the parameter OutputPaddingX has the "
            "negative value " +
            std::to_string(paddingX) + ".";
        throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
    }
    return static_cast<std::size_t>(paddingX);
}

ConversionJob MakeJob(const SourcePicture& source, std::uint8_t* destination,
                      const ImagePlanes& output, EImageOrientation orientation) {
    ConversionJob job;
    job.width = source.width;
    job.height = source.height;
    for (std::size_t index = 0; index < source.planes.count; ++index) {
        const ImagePlane& plane = source.planes.planes[index];
        const auto stride = static_cast<std::ptrdiff_t>(plane.stride);
        const bool flip = orientation != source.orientation;
        const std::uint64_t firstLine = flip ? (plane.lines - 1) * plane.stride : 0;
        job.source[index] = source.data + plane.offset + firstLine;
        job.sourceStride[index] = flip ? -stride : stride;
    }
    // A plane that isn't there is the first one, so that a kernel may compute the place of a line
    // in all three.
    for (std::size_t index = 0; index < job.destination.size(); ++index) {
        const ImagePlane& plane = output.planes[index < output.count ? index : 0];
        job.destination[index] = destination + plane.offset;
        job.destinationStride[index] = static_cast<std::ptrdiff_t>(plane.stride);
    }
    return job;
}

void SetShift(ConversionJob& job, EPixelType source, EPixelType destination,
              OutputBitAlignmentEnums alignment) {
    const int difference =
        static_cast<int>(BitDepth(source)) - static_cast<int>(BitDepth(destination));
    job.sourceType = source;
    job.destinationType = destination;
    job.shiftDown = difference > 0 ? difference : 0;
    job.shiftUp = difference < 0 && alignment == OutputBitAlignment_MsbAligned ? -difference : 0;
}

void ClearPadding(const ConversionJob& job, const ImagePlanes& output, std::uint32_t first,
                  std::uint32_t end) {
    for (std::size_t index = 0; index < output.count; ++index) {
        const ImagePlane& plane = output.planes[index];
        const std::uint64_t padding = plane.stride - plane.lineBytes;
        if (padding == 0) {
            continue;
        }
        // A chroma plane has a line for each two of the picture.
        const std::uint32_t step = plane.lines < job.height ? 2 : 1;
        const LineSpan lines = LinesOfPlane(first, end, step);
        for (std::uint64_t line = lines.first; line < lines.end; ++line) {
            std::memset(job.destination[index] + line * plane.stride + plane.lineBytes, 0, padding);
        }
    }
}

}  // namespace Orlix
