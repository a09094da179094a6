#include "orlixcamera/conversion/samplekernel.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "orlixcamera/conversion/bayerconversion.h"
#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/sampleformats.h"
#include "orlixcamera/conversion/yuvconversion.h"

namespace Orlix {
namespace {

// What the lines become before the kernel of that form takes them.
struct RowPlan {
    EPixelType rowType;
    int readShift;   // of the samples as they are read or interpolated
    int innerShift;  // by the kernel that takes the rows
};

// Grey has one sample, and its bits are moved up where they are read. Colour of 8 bits is moved up
// by the kernel that widens it, and luma after it was computed.
RowPlan MakePlan(const ConversionJob& job, const SampleFormat& format) {
    const bool wide = BitDepth(job.destinationType) == 16;
    if (format.kind == SampleKind::Grey) {
        return {wide ? PixelType_Mono16 : PixelType_Mono8, job.shiftUp, 0};
    }
    if (!wide || BitDepth(job.sourceType) <= 8) {
        const bool bgr = format.kind == SampleKind::Bgr;
        return {bgr ? PixelType_BGR8Packed : PixelType_RGB8Packed, 0, job.shiftUp};
    }
    const bool luma = IsMono(job.destinationType);
    return {PixelType_RGB16Packed, luma ? 0 : job.shiftUp, luma ? job.shiftUp : 0};
}

// Planes whose samples are whole bytes or words are joined where they lie. Others are read first.
bool HasWholeSamples(EPixelType source) {
    return BitDepth(source) == 8 || BitDepth(source) == 16;
}

// False where the reader writes to the destination at once.
bool UsesRows(const ConversionJob& job, const SampleFormat& format) {
    const EPixelType rowType = MakePlan(job, format).rowType;
    switch (format.kind) {
        case SampleKind::Grey:
        case SampleKind::Rgb:
            return rowType != job.destinationType;
        case SampleKind::Bgr:
            return rowType != job.destinationType || BitDepth(rowType) == 16;
        case SampleKind::RgbPlanar:
            return rowType != job.destinationType || !HasWholeSamples(job.sourceType);
        default:
            return true;
    }
}

class SampleConversion {
public:
    SampleConversion(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows)
        : job_(job),
          format_(format),
          rows_(rows),
          plan_(MakePlan(job, format)),
          words_(BitDepth(plan_.rowType) == 16),
          read_(words_ ? format.packing.toWords : format.packing.toBytes) {}

    void Convert(std::uint32_t first, std::uint32_t end) const {
        if (format_.kind == SampleKind::Bayer) {
            const EPixelType rowType = GetBayerRowType();
            BayerConversion bayer(job_, format_, rows_, rowType, plan_.readShift);
            ConvertRows(first, end, rowType,
                        [&](std::uint32_t line, const LinePair& to, std::uint32_t lines) {
                            bayer.Convert(line, to, lines);
                        });
            return;
        }
        if (IsOneLine()) {
            read_(Source(0, first), std::size_t{job_.width} * (end - first),
                  DestinationOf(first)[0], plan_.readShift);
            return;
        }
        ConvertRows(first, end, plan_.rowType,
                    [this](std::uint32_t line, const LinePair& to, std::uint32_t lines) {
                        for (std::uint32_t row = 0; row < lines; ++row) {
                            ReadLine(line + row, to[row][0]);
                        }
                    });
    }

private:
    // Grey lines that follow each other without a gap in both pictures are read as one, which saves
    // a call and the end of a line for each.
    [[nodiscard]] bool IsOneLine() const {
        const std::uint64_t bits = std::uint64_t{job_.width} * BitsPerPixel(job_.sourceType);
        const std::size_t bytes = std::size_t{job_.width} * (words_ ? 2 : 1);
        return format_.kind == SampleKind::Grey && plan_.rowType == job_.destinationType &&
               bits % 8 == 0 && std::cmp_equal(job_.sourceStride[0], bits / 8) &&
               std::cmp_equal(job_.destinationStride[0], bytes);
    }

    // Pixels are made in the form of the destination where there is a function for that.
    [[nodiscard]] EPixelType GetBayerRowType() const {
        const bool direct = BitDepth(job_.destinationType) == BitDepth(plan_.rowType) &&
                            BayerConversion::FindDemosaic(job_.destinationType) != nullptr;
        return direct ? job_.destinationType : plan_.rowType;
    }

    // Two lines at most become rows, and those the lines of the destination.
    template <class Read>
    void ConvertRows(std::uint32_t first, std::uint32_t end, EPixelType rowType,
                     const Read& read) const {
        const bool direct = rowType == job_.destinationType;
        const ConversionKernel kernel = FindConversionKernel(rowType, job_.destinationType);
        // In 64 bits, as in every loop of such steps: behind the last pair of the tallest picture
        // there is no number of 32.
        for (std::uint64_t next = first; next < end; next += 2) {
            const auto line = static_cast<std::uint32_t>(next);
            const std::uint32_t lines = std::min(2U, end - line);
            if (direct) {
                read(line, {DestinationOf(line), DestinationOf(line + lines - 1)}, lines);
            } else {
                read(line, {LinePlanes{rows_.PixelRow(0)}, LinePlanes{rows_.PixelRow(1)}}, lines);
                kernel(MakeRowJob(job_, rows_, line, lines, plan_.innerShift), 0, lines);
            }
        }
    }

    [[nodiscard]] const std::uint8_t* Source(std::size_t plane, std::size_t line) const {
        return job_.source[plane] + static_cast<std::ptrdiff_t>(line) * job_.sourceStride[plane];
    }
    [[nodiscard]] LinePlanes DestinationOf(std::uint32_t line) const {
        LinePlanes planes{};
        for (std::size_t plane = 0; plane < planes.size(); ++plane) {
            planes[plane] = job_.destination[plane] +
                            static_cast<std::ptrdiff_t>(line) * job_.destinationStride[plane];
        }
        return planes;
    }

    void ReadLine(std::uint32_t line, std::uint8_t* to) const {
        if (format_.kind == SampleKind::RgbPlanar) {
            ReadPlanes(line, to);
        } else if (format_.kind == SampleKind::Bgr && words_) {
            read_(Source(0, line), std::size_t{3} * job_.width, rows_.PixelRow(2), plan_.readShift);
            SwapWords(rows_.PixelRow(2), job_.width, to);
        } else {
            const std::size_t samples = format_.kind == SampleKind::Grey ? 1 : 3;
            read_(Source(0, line), samples * job_.width, to, plan_.readShift);
        }
    }

    void ReadPlanes(std::uint32_t line, std::uint8_t* to) const {
        Planes planes{Source(0, line), Source(1, line), Source(2, line)};
        if (!words_ && BitDepth(job_.sourceType) == 16) {
            JoinUpperPlanes(planes, job_.width, to);
            return;
        }
        if (!HasWholeSamples(job_.sourceType)) {
            for (std::size_t plane = 0; plane < planes.size(); ++plane) {
                std::uint8_t* const row = rows_.Window(plane);
                read_(planes[plane], job_.width, row, plan_.readShift);
                planes[plane] = row;
            }
        }
        (words_ ? JoinWordPlanes : JoinBytePlanes)(planes, job_.width, to);
    }

    const ConversionJob& job_;
    const SampleFormat& format_;
    const RowMemory& rows_;
    RowPlan plan_;
    bool words_;
    RowReader read_;
};

}  // namespace

ConversionJob MakeRowJob(const ConversionJob& job, const RowMemory& rows, std::uint32_t line,
                         std::uint32_t lines, int shiftUp) {
    ConversionJob inner = job;
    inner.source = {rows.PixelRow(0), nullptr, nullptr};
    inner.sourceStride = {rows.PixelRow(1) - rows.PixelRow(0), 0, 0};
    inner.height = lines;
    inner.shiftDown = 0;
    inner.shiftUp = shiftUp;
    const bool half = HasHalfTheLines(job.destinationType);
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const std::ptrdiff_t number = plane > 0 && half ? line / 2 : line;
        inner.destination[plane] = job.destination[plane] + number * job.destinationStride[plane];
    }
    return inner;
}

bool CanConvertBySamples(EPixelType source, EPixelType destination) noexcept {
    const SampleFormat* const format = FindSampleFormat(source);
    const std::uint32_t depth = BitDepth(destination);
    return format != nullptr && (depth == 8 || depth == 16) &&
           (!IsYuvKind(format->kind) || CanConvertYuv(destination));
}

bool UsesRows(const ConversionJob& job) noexcept {
    const SampleFormat& format = *FindSampleFormat(job.sourceType);
    return IsYuvKind(format.kind) ? ConvertYuvUsesRows(job, format) : UsesRows(job, format);
}

void ConvertBySamples(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    const SampleFormat& format = *FindSampleFormat(job.sourceType);
    std::uint8_t* const memory = job.rows == nullptr && UsesRows(job)
                                     ? RowsOfThisThread(RowMemory::Size(job.width))
                                     : job.rows;
    const RowMemory rows(memory, job.width);
    if (IsYuvKind(format.kind)) {
        ConvertYuv(job, format, rows, first, end);
    } else {
        SampleConversion(job, format, rows).Convert(first, end);
    }
}

}  // namespace Orlix
