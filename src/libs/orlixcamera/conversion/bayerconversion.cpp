#include "orlixcamera/conversion/bayerconversion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Orlix {
namespace {

// The pixel beyond an edge is the one two further in, which has the same place in the pattern; a
// picture of one line or column has nothing but itself.
std::size_t Mirror(std::ptrdiff_t index, std::size_t size) {
    const auto last = static_cast<std::ptrdiff_t>(size) - 1;
    const std::ptrdiff_t mirrored = index < 0 ? 1 : index > last ? last - 1 : index;
    return static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(mirrored, 0, last));
}

struct DemosaicRow {
    EPixelType rowType;
    Demosaic demosaic;
};
constexpr DemosaicRow DemosaicRows[] = {
    {PixelType_RGB8Packed, DemosaicToRgb8},
    {PixelType_BGR8Packed, DemosaicToBgr8},
    {PixelType_BGRA8Packed, DemosaicToBgra8},
    {PixelType_RGB8Planar, DemosaicToRgb8Planar},
    {PixelType_Mono8, DemosaicToMono8},
    {PixelType_RGB16Packed, DemosaicToRgb16},
    {PixelType_RGB16Planar, DemosaicToRgb16Planar},
};

// Pictures that are larger than the caches wait for memory at the beginning of each line, if nobody
// asks for it before; smaller ones only lose time by asking.
constexpr std::size_t PrefetchBytes = std::size_t{24} << 20U;

bool IsLargerThanCaches(const ConversionJob& job, EPixelType rowType, std::size_t planes) {
    const auto source = static_cast<std::size_t>(std::abs(job.sourceStride[0]));
    const std::size_t destination =
        planes * static_cast<std::size_t>(std::abs(job.destinationStride[0]));
    return rowType == job.destinationType && job.height * (source + destination) > PrefetchBytes;
}

// Pixels that are made between two prefetches: an even number, and more than a vector has.
constexpr std::size_t PiecePixels = 512;

// A function that only prefetches looks to the compiler as if it did nothing, and calls of such are
// left out unless it knows nothing about them.
[[gnu::noipa]] void Prefetch(const std::uint8_t* from, std::size_t bytes) {
    constexpr int Read = 0;
    constexpr int SecondCache = 2;
    for (std::size_t offset = 0; offset < bytes; offset += 64) {
        __builtin_prefetch(from + offset, Read, SecondCache);
    }
}

}  // namespace

Demosaic BayerConversion::FindDemosaic(EPixelType rowType) noexcept {
    const auto* found =
        std::find_if(std::begin(DemosaicRows), std::end(DemosaicRows),
                     [=](const DemosaicRow& row) { return row.rowType == rowType; });
    return found != std::end(DemosaicRows) ? found->demosaic : nullptr;
}

BayerConversion::BayerConversion(const ConversionJob& job, const SampleFormat& format,
                                 const RowMemory& rows, EPixelType rowType, int shiftUp)
    : job_(job),
      format_(format),
      rows_(rows),
      demosaic_(FindDemosaic(rowType)),
      read_(BitDepth(rowType) == 16 ? format.toWords : format.toBytes),
      sampleBytes_(BitDepth(rowType) / 8),
      planes_(IsPlanar(rowType) ? 3 : 1),
      shiftUp_(shiftUp),
      prefetch_(IsLargerThanCaches(job, rowType, IsPlanar(rowType) ? 3 : 1)) {
    pixelBytes_ = BitsPerPixel(rowType) / 8 / planes_;
    held_.fill(-1);
}

void BayerConversion::MirrorEnds(std::uint8_t* row) const {
    const std::size_t width = job_.width;
    std::memcpy(row - sampleBytes_, row + Mirror(-1, width) * sampleBytes_, sampleBytes_);
    std::memcpy(row + width * sampleBytes_,
                row + Mirror(static_cast<std::ptrdiff_t>(width), width) * sampleBytes_,
                sampleBytes_);
}

// Each line is read once for the four that need it.
const std::uint8_t* BayerConversion::RawRow(std::ptrdiff_t line) {
    const std::size_t number = Mirror(line, job_.height);
    const std::size_t slot = number % RowMemory::Windows;
    std::uint8_t* row = rows_.Window(slot);
    if (held_[slot] != static_cast<std::ptrdiff_t>(number)) {
        const auto offset = static_cast<std::ptrdiff_t>(number) * job_.sourceStride[0];
        read_(job_.source[0] + offset, job_.width, row, 0);
        MirrorEnds(row);
        held_[slot] = static_cast<std::ptrdiff_t>(number);
    }
    return row;
}

void BayerConversion::Interpolate(std::size_t line, const LinePair& to, std::size_t lines) {
    const auto number = static_cast<std::ptrdiff_t>(line);
    const std::uint8_t* above = RawRow(number - 1);
    const std::uint8_t* first = RawRow(number);
    const std::uint8_t* second = RawRow(number + 1);
    const std::uint8_t* below = lines == 2 ? RawRow(number + 2) : second;
    // The pattern begins at the first line in memory.
    const std::size_t place = job_.sourceStride[0] < 0 ? job_.height - 1 - line : line;
    const bool redFirst = place % 2 == format_.redLine;
    const std::uint32_t own = redFirst ? format_.redColumn : 1U - format_.redColumn;
    const BayerLines bayer{{above, first, second, below},
                           {to[0], lines == 2 ? to[1] : to[0]},
                           job_.width,
                           redFirst,
                           own,
                           shiftUp_};
    if (prefetch_) {
        InterpolateInPieces(bayer, line);
    } else {
        demosaic_(bayer);
    }
}

void BayerConversion::InterpolateInPieces(const BayerLines& lines, std::size_t line) const {
    BayerLines piece = lines;
    for (std::size_t column = 0; column < lines.width; column += piece.width) {
        const std::size_t left = lines.width - column;
        piece.width = left < 2 * PiecePixels ? left : PiecePixels;
        PrefetchNextPair(line, column, piece.width);
        demosaic_(piece);
        for (const std::uint8_t*& row : piece.rows) {
            row += piece.width * sampleBytes_;
        }
        for (LinePlanes& to : piece.to) {
            for (std::size_t plane = 0; plane < planes_; ++plane) {
                to[plane] += piece.width * pixelBytes_;
            }
        }
    }
}

// The source is packed, so its place is the part of the line that the column is.
void BayerConversion::PrefetchNextPair(std::size_t line, std::size_t column,
                                       std::size_t columns) const {
    const std::size_t bits = BitsPerPixel(job_.sourceType);
    for (const std::size_t ahead : {3U, 4U}) {
        const auto number = static_cast<std::ptrdiff_t>(std::min(line + ahead, job_.height - 1UL));
        const std::uint8_t* from = job_.source[0] + number * job_.sourceStride[0];
        Prefetch(from + column * bits / 8, columns * bits / 8);
    }
    for (const std::size_t ahead : {2U, 3U}) {
        const auto number = static_cast<std::ptrdiff_t>(std::min(line + ahead, job_.height - 1UL));
        for (std::size_t plane = 0; plane < planes_; ++plane) {
            const std::uint8_t* to =
                job_.destination[plane] + number * job_.destinationStride[plane];
            Prefetch(to + column * pixelBytes_, columns * pixelBytes_);
        }
    }
}

void BayerConversion::CopyInnerColumns(const LinePlanes& to) const {
    const std::size_t last = (std::size_t{job_.width} - 1) * pixelBytes_;
    for (std::size_t plane = 0; plane < planes_; ++plane) {
        std::memcpy(to[plane], to[plane] + pixelBytes_, pixelBytes_);
        std::memcpy(to[plane] + last, to[plane] + last - pixelBytes_, pixelBytes_);
    }
}

void BayerConversion::Convert(std::uint32_t line, const LinePair& to, std::uint32_t lines) {
    const auto inner = [&](std::uint32_t wanted) {
        const bool copy = job_.copyInner && job_.height >= 3;
        return copy ? std::clamp<std::uint32_t>(wanted, 1, job_.height - 2) : wanted;
    };
    if (lines == 2 && inner(line) == line && inner(line + 1) == line + 1) {
        Interpolate(line, to, 2);
    } else {
        for (std::uint32_t row = 0; row < lines; ++row) {
            Interpolate(inner(line + row), {to[row], to[row]}, 1);
        }
    }
    if (job_.copyInner && job_.width >= 3) {
        for (std::uint32_t row = 0; row < lines; ++row) {
            CopyInnerColumns(to[row]);
        }
    }
}

}  // namespace Orlix
