// Lines of a Bayer picture, demosaiced pair by pair. It owns nothing and belongs to one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/rowmemory.h"
#include "orlixcamera/conversion/sampleformats.h"

namespace Orlix {

// The planes of a line.
using LinePlanes = std::array<std::uint8_t*, 3>;
using LinePair = std::array<LinePlanes, 2>;

class BayerConversion {
public:
    // The pixels are made in `rowType`, for which there is a demosaic function.
    BayerConversion(const ConversionJob& job, const SampleFormat& format, const RowMemory& rows,
                    EPixelType rowType, int shiftUp);

    // Converts one or two lines.
    void Convert(std::uint32_t line, const LinePair& to, std::uint32_t lines);

    // Null for a form in which no line is made directly.
    [[nodiscard]] static Demosaic FindDemosaic(EPixelType rowType) noexcept;

private:
    using Rows = std::array<const std::uint8_t*, 4>;
    // Columns whose neighbours are all in the line, and how they are written.
    struct Inner {
        std::size_t begin, end;
        bool streams;
    };
    // A line whose samples are read piece by piece, as the pieces are interpolated.
    struct Unread {
        const std::uint8_t* from;
        std::uint8_t* row;
    };

    [[nodiscard]] const std::uint8_t* Source(std::size_t number) const;
    [[nodiscard]] const std::uint8_t* RawRow(std::size_t number);
    void ReadRow(std::size_t number, std::uint8_t* row);
    void ReadUpTo(std::size_t column);
    void MirrorEnds(std::uint8_t* row) const;
    void Interpolate(std::size_t line, const LinePair& to, std::size_t lines);
    void InterpolateInPieces(const BayerLines& lines, const Rows& innerRows, std::size_t line);
    void InterpolatePiece(BayerLines piece, std::size_t column, std::size_t end) const;
    [[nodiscard]] Inner FindInner(const BayerLines& lines) const;
    [[nodiscard]] bool BeginsCacheLine(const BayerLines& lines, std::size_t column) const;
    void PrefetchSource(std::size_t line, std::size_t column, std::size_t columns) const;
    void PrefetchDestination(std::size_t line, std::size_t column, std::size_t columns) const;
    void CopyInnerColumns(const LinePlanes& to) const;

    const ConversionJob& job_;
    const SampleFormat& format_;
    RowMemory rows_;
    Demosaic demosaic_;
    RowReader read_;
    std::size_t sampleBytes_;
    std::size_t pixelBytes_;
    std::size_t planes_;
    int shiftUp_;
    bool streams_;
    bool prefetch_;
    bool readsSource_;  // samples are bytes there, and only the ends of a line are copied
    std::array<std::ptrdiff_t, RowMemory::Windows> held_;
    std::array<Unread, RowMemory::Windows> unread_{};
    std::size_t unreadRows_ = 0;
    std::size_t readColumns_ = 0;  // of the unread rows
};

}  // namespace Orlix
