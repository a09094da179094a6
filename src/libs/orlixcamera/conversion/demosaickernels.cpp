// Bilinear interpolation of Bayer samples, two lines at a time, straight into the form of the
// destination.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/demosaickernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"
#include "orlixcamera/conversion/weightedsums.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

template <class Sink>
struct LanesFor {
    using Tag = D8;
};
template <>
struct LanesFor<ToRgb16> {
    using Tag = D16;
};
template <>
struct LanesFor<ToRgb16Planar> {
    using Tag = D16;
};

// Samples of a row, the means of those left and right of each, and the bits in which the two
// differ.
template <class V>
struct RawSamples {
    V here, sides, differ;
};

template <class D>
HWY_INLINE hn::Vec<D> LoadSamples(D d, const std::uint8_t* from) {
    return hn::BitCast(d, hn::LoadU(D8(), from));
}

template <class D>
HWY_INLINE RawSamples<hn::Vec<D>> LoadRaw(D d, const std::uint8_t* from) {
    constexpr std::size_t Bytes = sizeof(hn::TFromD<D>);
    const auto left = LoadSamples(d, from - Bytes);
    const auto right = LoadSamples(d, from + Bytes);
    return {LoadSamples(d, from), hn::AverageRound(left, right), hn::Xor(left, right)};
}

// (a + b + c + d + 2) >> 2 from the rounded means x of a and b, and y of c and d. The mean of x and
// y is one too large where it was rounded up and x or y was before: `differ` has the lowest bit set
// where a and b, or c and d, differ there.
template <class D>
HWY_INLINE hn::Vec<D> MeanOfMeans(D d, hn::Vec<D> x, hn::Vec<D> y, hn::Vec<D> differ) {
    const auto excess = hn::And(hn::And(hn::Xor(x, y), differ), hn::Set(d, 1));
    return hn::Sub(hn::AverageRound(x, y), excess);
}

template <class V>
HWY_INLINE Colour<V> Swapped(const Colour<V>& pixel) {
    return {pixel.b, pixel.g, pixel.r};
}

// One line. In the place of red is the line's own colour, in that of blue the other one; `own`
// tells which pixels have the former.
template <class D>
HWY_INLINE Colour<hn::Vec<D>> Interpolate(D d, const RawSamples<hn::Vec<D>>& above,
                                          const RawSamples<hn::Vec<D>>& line,
                                          const RawSamples<hn::Vec<D>>& below, hn::Mask<D> own) {
    const auto ends = hn::AverageRound(above.here, below.here);
    const auto endsDiffer = hn::Xor(above.here, below.here);
    const auto cross = MeanOfMeans(d, ends, line.sides, hn::Or(endsDiffer, line.differ));
    const auto corners =
        MeanOfMeans(d, above.sides, below.sides, hn::Or(above.differ, below.differ));
    return {hn::IfThenElse(own, line.here, line.sides), hn::IfThenElse(own, cross, line.here),
            hn::IfThenElse(own, corners, ends)};
}

HWY_INLINE Colour<V8> Raise(const Colour<V8>& pixel, int) {
    return pixel;
}
HWY_INLINE Colour<V16> Raise(const Colour<V16>& pixel, int shift) {
    return {hn::ShiftLeftSame(pixel.r, shift), hn::ShiftLeftSame(pixel.g, shift),
            hn::ShiftLeftSame(pixel.b, shift)};
}

// The lanes with even numbers.
HWY_INLINE hn::Mask<D8> EvenLanes(D8 d) {
    return hn::MaskFromVec(hn::BitCast(d, hn::Set(D16(), 0x00FF)));
}
HWY_INLINE hn::Mask<D16> EvenLanes(D16 d) {
    return hn::MaskFromVec(hn::BitCast(d, hn::Set(hn::ScalableTag<std::uint32_t>(), 0x0000FFFF)));
}

// A vector of pixels of both lines, from a column on. The first line is stored last, since a line
// that stands alone is there twice.
template <class Sink, bool RedFirst, Stores Way = Stores::Cached>
ORLIX_VECTOR_FUNCTION void ConvertBlock(const BayerLines& lines, std::size_t column,
                                        const Line& first, const Line& second,
                                        hn::Mask<typename LanesFor<Sink>::Tag> own) {
    const typename LanesFor<Sink>::Tag d;
    const std::size_t offset = column * sizeof(hn::TFromD<decltype(d)>);
    const auto above = LoadRaw(d, lines.rows[0] + offset);
    const auto one = LoadRaw(d, lines.rows[1] + offset);
    const auto two = LoadRaw(d, lines.rows[2] + offset);
    const auto below = LoadRaw(d, lines.rows[3] + offset);
    const auto upper = Raise(Interpolate(d, above, one, two, own), lines.shiftUp);
    const auto lower = Raise(Interpolate(d, one, two, below, hn::Not(own)), lines.shiftUp);
    Sink::template Store<Way>(RedFirst ? Swapped(lower) : lower, second);
    Sink::template Store<Way>(RedFirst ? upper : Swapped(upper), first);
}

// Lines that are shorter than a vector.
template <class Sink, bool RedFirst>
HWY_NOINLINE void ConvertShortLines(const BayerLines& lines,
                                    hn::Mask<typename LanesFor<Sink>::Tag> own) {
    constexpr std::size_t Bytes = hn::MaxLanes(typename LanesFor<Sink>::Tag()) * Sink::Bytes;
    HWY_ALIGN std::uint8_t out[2][3][Bytes];
    ConvertBlock<Sink, RedFirst>(lines, 0, {out[0][0], out[0][1], out[0][2]},
                                 {out[1][0], out[1][1], out[1][2]}, own);
    for (const std::size_t line : {1U, 0U}) {
        for (std::size_t plane = 0; plane < Sink::Planes; ++plane) {
            std::memcpy(lines.to[line][plane], out[line][plane], lines.width * Sink::Bytes);
        }
    }
}

// The last vector ends with the line; at an odd column the pattern is the other way round.
template <class Sink, bool RedFirst>
HWY_INLINE void ConvertPair(const BayerLines& lines) {
    const typename LanesFor<Sink>::Tag d;
    const std::size_t lanes = hn::Lanes(d);
    const auto even = EvenLanes(d);
    const auto own = lines.ownColumn == 0 ? even : hn::Not(even);
    if (lines.width < lanes) {
        ConvertShortLines<Sink, RedFirst>(lines, own);
        return;
    }
    std::size_t column = 0;
    if constexpr (HasStreams) {
        for (; lines.streams && column < lines.width; column += lanes) {
            ConvertBlock<Sink, RedFirst, Stores::Streamed>(
                lines, column, Advance(lines.to[0], column * Sink::Bytes),
                Advance(lines.to[1], column * Sink::Bytes), own);
        }
    }
    for (; column + lanes <= lines.width; column += lanes) {
        ConvertBlock<Sink, RedFirst>(lines, column, Advance(lines.to[0], column * Sink::Bytes),
                                     Advance(lines.to[1], column * Sink::Bytes), own);
    }
    if (column < lines.width) {
        column = lines.width - lanes;
        ConvertBlock<Sink, RedFirst>(lines, column, Advance(lines.to[0], column * Sink::Bytes),
                                     Advance(lines.to[1], column * Sink::Bytes),
                                     column % 2 == 0 ? own : hn::Not(own));
    }
}

}  // namespace

#define ORLIX_KERNEL(Name)                                                                         \
    void DemosaicTo##Name##Lines(const BayerLines& lines) {                                        \
        lines.redFirst ? ConvertPair<To##Name, true>(lines) : ConvertPair<To##Name, false>(lines); \
    }
ORLIX_DEMOSAICS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
#define ORLIX_DISPATCH(Name)                                  \
    HWY_EXPORT(DemosaicTo##Name##Lines);                      \
    void DemosaicTo##Name(const BayerLines& lines) {          \
        HWY_DYNAMIC_DISPATCH(DemosaicTo##Name##Lines)(lines); \
    }
ORLIX_DEMOSAICS(ORLIX_DISPATCH)
#undef ORLIX_DISPATCH
}  // namespace Orlix
#endif
