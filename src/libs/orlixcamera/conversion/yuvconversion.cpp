#include "orlixcamera/conversion/yuvconversion.h"

#include <algorithm>
#include <cstring>

#include "orlixcamera/conversion/conversiontable.h"

namespace Orlix {
namespace {

struct DirectRow {
    EPixelType destination;
    YuvConversion uyvy, yuyv, semiplanar;
};
constexpr DirectRow DirectRows[] = {
    {PixelType_RGB8Packed, UyvyLineToRgb8, YuyvLineToRgb8, SemiplanarLineToRgb8},
    {PixelType_BGR8Packed, UyvyLineToBgr8, YuyvLineToBgr8, SemiplanarLineToBgr8},
    {PixelType_BGRA8Packed, UyvyLineToBgra8, YuyvLineToBgra8, SemiplanarLineToBgra8},
    {PixelType_RGB8Planar, UyvyLineToRgb8Planar, YuyvLineToRgb8Planar, SemiplanarLineToRgb8Planar},
};

YuvConversion FindConversion(SampleKind kind, EPixelType destination) {
    const auto* row =
        std::find_if(std::begin(DirectRows), std::end(DirectRows),
                     [=](const DirectRow& each) { return each.destination == destination; });
    if (row == std::end(DirectRows)) {
        return nullptr;
    }
    return kind == SampleKind::Uyvy   ? row->uyvy
           : kind == SampleKind::Yuyv ? row->yuyv
                                      : row->semiplanar;
}

class YuvLines {
public:
    YuvLines(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows)
        : job_(job), format_(format), rows_(rows) {}

    void ConvertToColour(std::uint32_t first, std::uint32_t end) const {
        const YuvConversion direct = FindConversion(format_.kind, job_.destinationType);
        if (direct != nullptr) {
            for (std::uint32_t line = first; line < end; ++line) {
                YuvLine inner = MakeLine(
                    line, {Destination(0, line), Destination(1, line), Destination(2, line)});
                inner.streams = job_.streams;
                direct(inner);
            }
            return;
        }
        const YuvConversion toRow = FindConversion(format_.kind, PixelType_RGB8Packed);
        const auto widen = FindConversionKernel(PixelType_RGB8Packed, job_.destinationType);
        for (std::uint32_t line = first; line < end; ++line) {
            toRow(MakeLine(line, {rows_.PixelRow(0)}));
            widen(MakeRowJob(job_, rows_, line, 1, job_.shiftUp), 0, 1);
        }
    }

    // Luma stays luma, and chroma chroma: nothing is lost on a way through colours.
    void ConvertToLuma(std::uint32_t first, std::uint32_t end) const {
        const auto widen = FindConversionKernel(PixelType_Mono8, PixelType_Mono16);
        for (std::uint32_t line = first; line < end; ++line) {
            if (BitDepth(job_.destinationType) == 16) {
                StoreLuma(line, rows_.PixelRow(0));
                widen(MakeRowJob(job_, rows_, line, 1, job_.shiftUp), 0, 1);
            } else {
                StoreLuma(line, Destination(0, line));
            }
        }
    }

    void ConvertToPlanes(std::uint32_t first, std::uint32_t end) const {
        ConvertToLuma(first, end);
        const std::uint32_t step = HasHalfTheLines(job_.destinationType) ? 2 : 1;
        for (std::uint64_t start = first; start < end; start += step) {
            const auto line = static_cast<std::uint32_t>(start);
            const std::uint32_t number = line / step;
            const std::uint8_t* chroma = ChromaOf(line, 0);
            if (step == 2 && start + 1 < end) {
                AverageBytes(chroma, ChromaOf(line + 1, 1), 2 * Pairs(), rows_.Window(2));
                chroma = rows_.Window(2);
            }
            const bool full = job_.destinationType == PixelType_YUV444Planar;
            const std::size_t count = full ? job_.width : Pairs();
            (full ? DoubleEvenBytes : TakeEvenBytes)(chroma, count, Destination(1, number));
            (full ? DoubleOddBytes : TakeOddBytes)(chroma, count, Destination(2, number));
        }
    }

private:
    [[nodiscard]] std::size_t Pairs() const { return (std::size_t{job_.width} + 1) / 2; }
    [[nodiscard]] const std::uint8_t* Source(std::size_t plane, std::size_t line) const {
        return job_.source[plane] + static_cast<std::ptrdiff_t>(line) * job_.sourceStride[plane];
    }
    [[nodiscard]] std::uint8_t* Destination(std::size_t plane, std::size_t line) const {
        return job_.destination[plane] +
               static_cast<std::ptrdiff_t>(line) * job_.destinationStride[plane];
    }

    // Blocks are counted in memory, from the other end of a flipped picture.
    [[nodiscard]] std::size_t ChromaLine(std::size_t line) const {
        if (!HasHalfTheLines(format_.pixelType)) {
            return line;
        }
        const std::size_t blocks = (std::size_t{job_.height} + 1) / 2;
        const bool flipped = job_.sourceStride[0] < 0;
        return flipped ? blocks - 1 - (job_.height - 1 - line) / 2 : line / 2;
    }

    [[nodiscard]] YuvLine MakeLine(std::uint32_t line,
                                   const std::array<std::uint8_t*, 3>& to) const {
        const std::uint8_t* luma = Source(0, line);
        const bool apart = format_.kind == SampleKind::Semiplanar;
        return {luma, apart ? Source(1, ChromaLine(line)) : luma, to, job_.width, false};
    }

    void StoreLuma(std::uint32_t line, std::uint8_t* to) const {
        const std::uint8_t* from = Source(0, line);
        if (format_.kind == SampleKind::Semiplanar) {
            std::memcpy(to, from, job_.width);
        } else {
            (format_.kind == SampleKind::Uyvy ? TakeOddBytes : TakeEvenBytes)(from, job_.width, to);
        }
    }

    // Blue and red chroma of a line in turn, in place or in a window.
    [[nodiscard]] const std::uint8_t* ChromaOf(std::uint32_t line, std::size_t window) const {
        if (format_.kind == SampleKind::Semiplanar) {
            return Source(1, ChromaLine(line));
        }
        std::uint8_t* to = rows_.Window(window);
        const auto take = format_.kind == SampleKind::Uyvy ? TakeEvenBytes : TakeOddBytes;
        take(Source(0, line), 2 * Pairs(), to);
        return to;
    }

    const ConversionJob& job_;
    const SampleFormat& format_;
    const RowMemory& rows_;
};

}  // namespace

bool CanConvertYuv(EPixelType destination) noexcept {
    return !IsYuv(destination) || destination == PixelType_YUV444Planar ||
           destination == PixelType_YUV422Planar || destination == PixelType_YUV420Planar;
}

bool ConvertYuvUsesRows(const ConversionJob& job, const SampleFormat& format) {
    if (IsYuv(job.destinationType)) {
        return format.kind != SampleKind::Semiplanar || HasHalfTheLines(job.destinationType);
    }
    if (IsMono(job.destinationType)) {
        return BitDepth(job.destinationType) == 16;
    }
    return FindConversion(format.kind, job.destinationType) == nullptr;
}

bool HasHalfTheLines(EPixelType pixelType) noexcept {
    // Those with a quarter of the columns have as many bits, but no planes.
    return IsYuv(pixelType) && BitsPerPixel(pixelType) == 12;
}

void ConvertYuv(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows,
                std::uint32_t first, std::uint32_t end) {
    const YuvLines lines(job, format, rows);
    if (IsYuv(job.destinationType)) {
        lines.ConvertToPlanes(first, end);
    } else if (IsMono(job.destinationType)) {
        lines.ConvertToLuma(first, end);
    } else {
        lines.ConvertToColour(first, end);
    }
}

}  // namespace Orlix
