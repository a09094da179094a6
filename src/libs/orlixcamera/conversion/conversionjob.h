// What a conversion kernel is given: where the lines of both pictures lie. A kernel owns nothing;
// several threads may run one kernel at once on different lines of one job.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orlixcamera/pixeltype.h"

namespace Orlix {

// Line n of the destination is made from line n of the source: a change of the orientation is a
// negative stride. A kernel may read any line of the source, so that one with a neighbourhood needs
// no other interface.
struct ConversionJob {
    std::array<const std::uint8_t*, 3> source{};  // the first line of each plane
    std::array<std::ptrdiff_t, 3> sourceStride{};
    std::array<std::uint8_t*, 3> destination{};
    std::array<std::ptrdiff_t, 3> destinationStride{};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    // How the value of a sample moves: at most one of the two is not 0.
    int shiftDown = 0;
    int shiftUp = 0;
    EPixelType sourceType = PixelType_Undefined;
    EPixelType destinationType = PixelType_Undefined;
    // The outermost pixels of a Bayer picture take the colour of those further in.
    bool copyInner = false;
    // The pictures are larger than the caches, and what the destination gets may go past them.
    bool streams = false;
    // Memory for the rows of a kernel that makes such; see RowMemory. Null where it has none.
    std::uint8_t* rows = nullptr;
};

// Converts the lines from `first` up to but without `end`. `first` is even, and so is `end` unless
// it is the height, so that no 2 x 2 block is parted. Never throws, and never allocates if the job
// has rows.
using ConversionKernel = void (*)(const ConversionJob& job, std::uint32_t first, std::uint32_t end);

}  // namespace Orlix
