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
constexpr std::size_t PrefetchBytes = std::size_t{20} << 20U;

bool IsLargerThanCaches(const ConversionJob& job, EPixelType rowType, std::size_t planes) {
    const auto source = static_cast<std::size_t>(std::abs(job.sourceStride[0]));
    const std::size_t destination =
        planes * static_cast<std::size_t>(std::abs(job.destinationStride[0]));
    return rowType == job.destinationType && job.height * (source + destination) > PrefetchBytes;
}

constexpr std::size_t CacheLine = 64;

// The ends of a line have less than two vectors each; shorter lines are not parted.
constexpr std::size_t LineEnd = 2 * CacheLine;
constexpr std::size_t LongLine = 2 * LineEnd;

// Pixels that are made between two prefetches: an even number, and more than a vector has.
constexpr std::size_t PiecePixels = 512;

// A function that only prefetches looks to the compiler as if it did nothing, and calls of such are
// left out unless there is something in it that it knows nothing about.
[[gnu::noinline]] void Prefetch(const std::uint8_t* from, std::size_t bytes) {
    constexpr int Read = 0;
    constexpr int SecondCache = 2;
    for (std::size_t offset = 0; offset < bytes; offset += CacheLine) {
        __builtin_prefetch(from + offset, Read, SecondCache);
    }
    asm volatile("");
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
      read_(BitDepth(rowType) == 16 ? format.packing.toWords : format.packing.toBytes),
      sampleBytes_(BitDepth(rowType) / 8),
      planes_(IsPlanar(rowType) ? 3 : 1),
      shiftUp_(shiftUp),
      streams_(job.streams && rowType == job.destinationType),
      prefetch_(IsLargerThanCaches(job, rowType, IsPlanar(rowType) ? 3 : 1)),
      readsSource_(BitDepth(job.sourceType) == 8 && job.width >= LongLine) {
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

const std::uint8_t* BayerConversion::Source(std::size_t number) const {
    return job_.source[0] + static_cast<std::ptrdiff_t>(number) * job_.sourceStride[0];
}

// A row of samples with mirrored ends. Each line is read once for the four that need it.
const std::uint8_t* BayerConversion::RawRow(std::size_t number) {
    const std::size_t slot = number % RowMemory::Windows;
    std::uint8_t* row = rows_.Window(slot);
    if (held_[slot] != static_cast<std::ptrdiff_t>(number)) {
        ReadRow(number, row);
        held_[slot] = static_cast<std::ptrdiff_t>(number);
    }
    return row;
}

void BayerConversion::ReadRow(std::size_t number, std::uint8_t* row) {
    const std::uint8_t* from = Source(number);
    if (readsSource_) {
        const std::size_t behind = job_.width - LineEnd;
        std::memcpy(row, from, LineEnd);
        std::memcpy(row + behind, from + behind, LineEnd);
    } else if (prefetch_ && sampleBytes_ == 1) {
        unread_[unreadRows_++] = {from, row};
        return;
    } else {
        read_(from, job_.width, row, 0);
    }
    MirrorEnds(row);
}

// What is written to memory takes time to get there, in which the next samples are read: that is
// why a large picture's bytes are not read as whole lines before the first of their pixels is made;
// words, which take longer to write than to read, gain nothing by it.
void BayerConversion::ReadUpTo(std::size_t column) {
    // A pixel needs the sample behind it; and so many samples are whole bytes in any packing.
    constexpr std::size_t Step = CacheLine;
    const std::size_t end = std::min<std::size_t>(job_.width, (column / Step + 1) * Step);
    if (end <= readColumns_) {
        return;
    }
    const std::size_t offset = readColumns_ * BitsPerPixel(job_.sourceType) / 8;
    for (std::size_t number = 0; number < unreadRows_; ++number) {
        const auto [from, row] = unread_[number];
        read_(from + offset, end - readColumns_, row + readColumns_ * sampleBytes_, 0);
        MirrorEnds(row);
    }
    readColumns_ = end;
}

void BayerConversion::Interpolate(std::size_t line, const LinePair& to, std::size_t lines) {
    // The pattern begins at the first line in memory.
    const std::size_t place = job_.sourceStride[0] < 0 ? job_.height - 1 - line : line;
    const bool redFirst = place % 2 == format_.redLine;
    const std::uint32_t own = redFirst ? format_.redColumn : 1U - format_.redColumn;
    BayerLines bayer{{}, to, job_.width, redFirst, own, shiftUp_};
    Rows innerRows{};
    for (std::size_t row = 0; row < bayer.rows.size(); ++row) {
        // A line that stands alone has no fourth row.
        const std::size_t next = lines == 1 && row == 3 ? 2 : row;
        const std::size_t number =
            Mirror(static_cast<std::ptrdiff_t>(line + next) - 1, job_.height);
        bayer.rows[row] = RawRow(number);
        innerRows[row] = readsSource_ ? Source(number) : bayer.rows[row];
    }
    if (readsSource_ || prefetch_) {
        InterpolateInPieces(bayer, innerRows, line);
    } else {
        demosaic_(bayer);
    }
}

bool BayerConversion::BeginsCacheLine(const BayerLines& lines, std::size_t column) const {
    for (const LinePlanes& to : lines.to) {
        for (std::size_t plane = 0; plane < planes_; ++plane) {
            const std::uint8_t* at = to[plane] + column * pixelBytes_;
            if (reinterpret_cast<std::uintptr_t>(at) % CacheLine != 0) {
                return false;
            }
        }
    }
    return true;
}

// Whole vectors between the ends of a line. Those share their cache lines with other lines, and
// their outermost pixels may be changed later, so that they are never streamed; nor is a line that
// stands alone, which would be written twice.
BayerConversion::Inner BayerConversion::FindInner(const BayerLines& lines) const {
    if (lines.width < LongLine) {
        return {0, 0, false};
    }
    std::size_t begin = CacheLine;
    bool streams = false;
    if (streams_ && lines.to[0] != lines.to[1]) {
        while (begin < 2 * CacheLine && !BeginsCacheLine(lines, begin)) {
            ++begin;
        }
        streams = begin < 2 * CacheLine;
        begin = streams ? begin : CacheLine;
    }
    return {begin, begin + (lines.width - 2 - begin) / CacheLine * CacheLine, streams};
}

void BayerConversion::InterpolateInPieces(const BayerLines& lines, const Rows& innerRows,
                                          std::size_t line) {
    const Inner inner = FindInner(lines);
    BayerLines middle = lines;
    middle.rows = innerRows;
    middle.streams = inner.streams;
    if (!prefetch_) {
        // The ends of the rows have only just been written, and can't be read in other pieces than
        // they were written in before they are in the cache; so they come last.
        InterpolatePiece(middle, inner.begin, inner.end);
        InterpolatePiece(lines, 0, inner.begin);
        InterpolatePiece(lines, inner.end, lines.width);
        return;
    }
    std::size_t column = 0;
    while (column < lines.width) {
        const bool isInner = column >= inner.begin && column < inner.end;
        const std::size_t last = isInner                ? inner.end
                                 : column < inner.begin ? inner.begin
                                                        : lines.width;
        const std::size_t end = last - column < 2 * PiecePixels ? last : column + PiecePixels;
        PrefetchSource(line, column, end - column);
        if (!(isInner && inner.streams)) {
            PrefetchDestination(line, column, end - column);
        }
        ReadUpTo(end);
        InterpolatePiece(isInner ? middle : lines, column, end);
        column = end;
    }
    unreadRows_ = 0;
    readColumns_ = 0;
}

void BayerConversion::InterpolatePiece(BayerLines piece, std::size_t column,
                                       std::size_t end) const {
    if (column == end) {
        return;
    }
    piece.width = end - column;
    piece.ownColumn ^= static_cast<std::uint32_t>(column % 2);
    for (const std::uint8_t*& row : piece.rows) {
        row += column * sampleBytes_;
    }
    for (LinePlanes& to : piece.to) {
        for (std::size_t plane = 0; plane < planes_; ++plane) {
            to[plane] += column * pixelBytes_;
        }
    }
    demosaic_(piece);
}

// The two lines that the next pair has not read yet. The source is packed, so its place is the part
// of the line that the column is.
void BayerConversion::PrefetchSource(std::size_t line, std::size_t column,
                                     std::size_t columns) const {
    const std::size_t bits = BitsPerPixel(job_.sourceType);
    for (const std::size_t ahead : {3U, 4U}) {
        const std::uint8_t* from = Source(std::min(line + ahead, job_.height - 1UL));
        Prefetch(from + column * bits / 8, columns * bits / 8);
    }
}

void BayerConversion::PrefetchDestination(std::size_t line, std::size_t column,
                                          std::size_t columns) const {
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
