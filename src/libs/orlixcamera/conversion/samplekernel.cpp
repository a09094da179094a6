#include "orlixcamera/conversion/samplekernel.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/sampleformats.h"
#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix {
namespace {

// The pixel beyond an edge is the one two further in, which has the same place in the pattern; a
// picture of one line or column has nothing but itself.
std::size_t Mirror(std::ptrdiff_t index, std::size_t size) {
    const auto last = static_cast<std::ptrdiff_t>(size) - 1;
    const std::ptrdiff_t mirrored = index < 0 ? 1 : index > last ? last - 1 : index;
    return static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(mirrored, 0, last));
}

std::uint16_t MeanOf4(unsigned a, unsigned b, unsigned c, unsigned d) {
    return static_cast<std::uint16_t>((a + b + c + d + 2) >> 2U);
}
std::uint16_t MeanOf2(unsigned a, unsigned b) {
    return static_cast<std::uint16_t>((a + b + 1) >> 1U);
}

std::uint8_t ToByte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// Rounds half up for every sign.
int DivideToNearest(int dividend, int divisor) {
    const int twice = 2 * dividend + divisor;
    const int quotient = twice / (2 * divisor);
    return quotient - (twice % (2 * divisor) < 0 ? 1 : 0);
}

// The memory of one thread, for two lines at most.
struct Rows {
    std::vector<std::uint16_t> window[3];  // raw lines
    std::ptrdiff_t held[3] = {-1, -1, -1};
    std::vector<std::uint16_t> samples;
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> luma, blue, red;
};

Rows& RowsOfThisThread() {
    thread_local Rows rows;
    return rows;
}

class SampleConversion {
public:
    explicit SampleConversion(const ConversionJob& job)
        : job_(job), format_(*FindSampleFormat(job.sourceType)), width_(job.width) {
        const auto depth = static_cast<int>(BitDepth(job.sourceType));
        const auto outputDepth = static_cast<int>(BitDepth(job.destinationType));
        wide_ = outputDepth == 16 && (depth > 8 || format_.kind == SampleKind::Grey);
        colour_ = format_.kind != SampleKind::Grey;
        inner_ = FindConversionKernel(RowType(), job.destinationType);
        channels_ = colour_ ? 3 : 1;
        rows_.samples.resize(width_ * 3);
        rows_.bytes.resize(width_ * 2 * 3 * 2);
        rows_.luma.resize(width_);
        rows_.blue.resize(width_);
        rows_.red.resize(width_);
        std::fill(std::begin(rows_.held), std::end(rows_.held), -1);
    }

    void Convert(std::uint32_t first, std::uint32_t end) {
        const bool throughYuv = format_.kind == SampleKind::Yuv &&
                                (IsMono(job_.destinationType) || IsYuv(job_.destinationType));
        for (std::uint32_t line = first; line < end; line += 2) {
            const std::uint32_t lines = std::min(2U, end - line);
            if (throughYuv) {
                ConvertLumaAndChroma(line, lines);
            } else {
                ConvertRows(line, lines);
            }
        }
    }

private:
    [[nodiscard]] EPixelType RowType() const {
        if (colour_) {
            return wide_ ? PixelType_RGB16Packed : PixelType_RGB8Packed;
        }
        return wide_ ? PixelType_Mono16 : PixelType_Mono8;
    }

    [[nodiscard]] const std::uint8_t* Source(std::size_t plane, std::size_t line) const {
        return job_.source[plane] + static_cast<std::ptrdiff_t>(line) * job_.sourceStride[plane];
    }
    [[nodiscard]] std::uint8_t* Destination(std::size_t plane, std::size_t line) const {
        return job_.destination[plane] +
               static_cast<std::ptrdiff_t>(line) * job_.destinationStride[plane];
    }
    [[nodiscard]] bool IsFlipped() const { return job_.sourceStride[0] < 0; }

    // Two lines at most become rows, and those the lines of the destination.
    void ConvertRows(std::uint32_t line, std::uint32_t lines) {
        const std::size_t stride = width_ * channels_ * (wide_ ? 2 : 1);
        for (std::uint32_t row = 0; row < lines; ++row) {
            ReadLine(line + row);
            StoreRow(rows_.bytes.data() + row * stride);
        }
        ConversionJob inner = job_;
        inner.source = {rows_.bytes.data(), nullptr, nullptr};
        inner.sourceStride = {static_cast<std::ptrdiff_t>(stride), 0, 0};
        inner.height = lines;
        inner.shiftDown = 0;
        inner.shiftUp = colour_ && !wide_ ? job_.shiftUp : 0;
        const bool half = job_.destinationType == PixelType_YUV420Planar;
        for (std::size_t plane = 0; plane < 3; ++plane) {
            inner.destination[plane] = Destination(plane, plane > 0 && half ? line / 2 : line);
        }
        inner_(inner, 0, lines);
        if (ShiftsLuma()) {
            ShiftLines(line, lines);
        }
    }

    // Luma is computed before its bits move up.
    [[nodiscard]] bool ShiftsLuma() const {
        return colour_ && wide_ && job_.destinationType == PixelType_Mono16 && job_.shiftUp != 0;
    }
    void ShiftLines(std::uint32_t line, std::uint32_t lines) const {
        for (std::uint32_t row = line; row < line + lines; ++row) {
            std::uint8_t* to = Destination(0, row);
            for (std::size_t x = 0; x < width_; ++x, to += 2) {
                const unsigned word = (to[0] | unsigned{to[1]} << 8U) << job_.shiftUp;
                to[0] = static_cast<std::uint8_t>(word);
                to[1] = static_cast<std::uint8_t>(word >> 8U);
            }
        }
    }

    void StoreRow(std::uint8_t* to) const {
        const int up = (colour_ && !wide_) || ShiftsLuma() ? 0 : job_.shiftUp;
        for (std::size_t index = 0; index < width_ * channels_; ++index) {
            const unsigned value = unsigned{rows_.samples[index]} << up;
            if (wide_) {
                to[2 * index] = static_cast<std::uint8_t>(value);
                to[2 * index + 1] = static_cast<std::uint8_t>(value >> 8U);
            } else {
                to[index] = static_cast<std::uint8_t>(value);
            }
        }
    }

    void Read(const std::uint8_t* line, std::size_t count, std::uint16_t* samples) const {
        format_.read(line, count, samples);
        if (job_.shiftDown != 0) {
            for (std::size_t index = 0; index < count; ++index) {
                samples[index] = static_cast<std::uint16_t>(samples[index] >> job_.shiftDown);
            }
        }
    }

    // Fills the samples of a line: gray, or red, green and blue.
    void ReadLine(std::size_t line) {
        std::uint16_t* samples = rows_.samples.data();
        switch (format_.kind) {
            case SampleKind::Grey:
                return Read(Source(0, line), width_, samples);
            case SampleKind::Rgb:
                return Read(Source(0, line), 3 * width_, samples);
            case SampleKind::Bgr:
                Read(Source(0, line), 3 * width_, samples);
                for (std::size_t x = 0; x < width_; ++x) {
                    std::swap(samples[3 * x], samples[3 * x + 2]);
                }
                return;
            case SampleKind::RgbPlanar:
                return ReadPlanes(line);
            case SampleKind::Bayer:
                return Demosaic(line);
            case SampleKind::Yuv:
                return ReadColourOfYuv(line);
        }
    }

    void ReadPlanes(std::size_t line) {
        rows_.window[0].resize(width_);
        for (std::size_t plane = 0; plane < 3; ++plane) {
            Read(Source(plane, line), width_, rows_.window[0].data());
            for (std::size_t x = 0; x < width_; ++x) {
                rows_.samples[3 * x + plane] = rows_.window[0][x];
            }
        }
    }

    // A raw line, which is read once for the three lines that need it.
    const std::uint16_t* RawLine(std::ptrdiff_t line) {
        const std::size_t number = Mirror(line, job_.height);
        const std::size_t slot = number % 3;
        if (rows_.held[slot] != static_cast<std::ptrdiff_t>(number)) {
            rows_.window[slot].resize(width_);
            Read(Source(0, number), width_, rows_.window[slot].data());
            rows_.held[slot] = static_cast<std::ptrdiff_t>(number);
        }
        return rows_.window[slot].data();
    }

    // The line or column whose colour a pixel takes.
    [[nodiscard]] std::size_t Inner(std::size_t index, std::size_t size) const {
        return job_.copyInner && size >= 3 ? std::clamp<std::size_t>(index, 1, size - 2) : index;
    }

    void Demosaic(std::size_t wanted) {
        const std::size_t line = Inner(wanted, job_.height);
        const auto number = static_cast<std::ptrdiff_t>(line);
        const std::uint16_t* above = RawLine(number - 1);
        const std::uint16_t* below = RawLine(number + 1);
        const std::uint16_t* here = RawLine(number);
        // The pattern begins at the first line in memory.
        const std::size_t place = IsFlipped() ? job_.height - 1 - line : line;
        const bool redLine = place % 2 == format_.y;
        for (std::size_t x = 0; x < width_; ++x) {
            const std::size_t column = Inner(x, width_);
            DemosaicPixel(above, here, below, column, redLine, &rows_.samples[3 * x]);
        }
    }

    void DemosaicPixel(const std::uint16_t* above, const std::uint16_t* here,
                       const std::uint16_t* below, std::size_t x, bool redLine,
                       std::uint16_t* rgb) const {
        const std::size_t left = Mirror(static_cast<std::ptrdiff_t>(x) - 1, width_);
        const std::size_t right = Mirror(static_cast<std::ptrdiff_t>(x) + 1, width_);
        const std::size_t own = redLine ? 0 : 2;
        const bool redColumn = x % 2 == format_.x;
        if (redColumn == redLine) {
            rgb[own] = here[x];
            rgb[1] = MeanOf4(above[x], below[x], here[left], here[right]);
            rgb[2 - own] = MeanOf4(above[left], above[right], below[left], below[right]);
        } else {
            rgb[own] = MeanOf2(here[left], here[right]);
            rgb[1] = here[x];
            rgb[2 - own] = MeanOf2(above[x], below[x]);
        }
    }

    // Luma of a line, and its chroma for each pair of pixels.
    void ReadYuv(std::size_t line) {
        const std::size_t pairs = (width_ + 1) / 2;
        const std::uint8_t* from = Source(0, line);
        if (!IsPlanar(format_.pixelType)) {
            for (std::size_t x = 0; x < width_; ++x) {
                rows_.luma[x] = from[2 * x + format_.x];
            }
            for (std::size_t pair = 0; pair < pairs; ++pair) {
                rows_.blue[pair] = from[4 * pair + format_.y];
                rows_.red[pair] = from[4 * pair + format_.y + 2];
            }
            return;
        }
        std::memcpy(rows_.luma.data(), from, width_);
        const std::uint8_t* chroma = Source(1, ChromaLine(line));
        for (std::size_t pair = 0; pair < pairs; ++pair) {
            rows_.blue[pair] = chroma[2 * pair];
            rows_.red[pair] = chroma[2 * pair + 1];
        }
    }

    // Blocks are counted in memory, from the other end of a flipped picture.
    [[nodiscard]] std::size_t ChromaLine(std::size_t line) const {
        if (format_.pixelType != PixelType_YCbCr420_8_YY_CbCr_Semiplanar) {
            return line;
        }
        const std::size_t blocks = (std::size_t{job_.height} + 1) / 2;
        return IsFlipped() ? blocks - 1 - (job_.height - 1 - line) / 2 : line / 2;
    }

    void ReadColourOfYuv(std::size_t line) {
        ReadYuv(line);
        for (std::size_t x = 0; x < width_; ++x) {
            const int y = rows_.luma[x];
            const int u = rows_.blue[x / 2] - 128;
            const int v = rows_.red[x / 2] - 128;
            std::uint16_t* rgb = &rows_.samples[3 * x];
            rgb[0] = ToByte(y + DivideToNearest(701 * v, 500));
            rgb[1] = ToByte(y + DivideToNearest(-101004 * u - 209599 * v, 293500));
            rgb[2] = ToByte(y + DivideToNearest(886 * u, 500));
        }
    }

    // Luma stays luma, and chroma chroma: nothing is lost on a way through colours.
    void ConvertLumaAndChroma(std::uint32_t line, std::uint32_t lines) {
        for (std::uint32_t row = line; row < line + lines; ++row) {
            ReadYuv(row);
            StoreLuma(Destination(0, row));
            if (IsYuv(job_.destinationType)) {
                StoreChroma(line, row, lines);
            }
        }
    }

    void StoreLuma(std::uint8_t* to) const {
        if (BitDepth(job_.destinationType) == 8) {
            std::memcpy(to, rows_.luma.data(), width_);
            return;
        }
        for (std::size_t x = 0; x < width_; ++x) {
            const unsigned word = unsigned{rows_.luma[x]} << job_.shiftUp;
            to[2 * x] = static_cast<std::uint8_t>(word);
            to[2 * x + 1] = static_cast<std::uint8_t>(word >> 8U);
        }
    }

    void StoreChroma(std::uint32_t line, std::uint32_t row, std::uint32_t lines) const {
        const bool half = job_.destinationType == PixelType_YUV420Planar;
        const bool full = job_.destinationType == PixelType_YUV444Planar;
        const std::size_t columns = full ? width_ : (width_ + 1) / 2;
        const std::vector<std::uint8_t>* chroma[] = {&rows_.blue, &rows_.red};
        for (std::size_t plane = 1; plane < 3; ++plane) {
            std::uint8_t* to = Destination(plane, half ? line / 2 : row);
            for (std::size_t x = 0; x < columns; ++x) {
                const std::uint8_t value = (*chroma[plane - 1])[full ? x / 2 : x];
                const bool second = half && row > line && lines == 2;
                to[x] = second ? static_cast<std::uint8_t>(MeanOf2(to[x], value)) : value;
            }
        }
    }

    const ConversionJob& job_;
    const SampleFormat& format_;
    std::size_t width_;
    Rows& rows_ = RowsOfThisThread();
    bool wide_ = false;
    bool colour_ = false;
    std::size_t channels_ = 1;
    ConversionKernel inner_ = nullptr;
};

}  // namespace

void ConvertBySamples(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    SampleConversion(job).Convert(first, end);
}

}  // namespace Orlix
