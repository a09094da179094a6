// Bilinear interpolation of Bayer samples, two lines at a time, straight into the form of the
// destination.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/demosaickernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <type_traits>

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

template <class D>
HWY_INLINE hn::Vec<D> LoadSamples(D d, const std::uint8_t* from) {
    return hn::BitCast(d, hn::LoadU(D8(), from));
}

// The lowest bit of lanes where a + b is odd, and of those where it is even; all other bits are 0.
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
template <class V>
HWY_INLINE V OddSum(V a, V b, V mask) {
    return V{_mm512_ternarylogic_epi32(a.raw, b.raw, mask.raw, 0x28)};
}
template <class V>
HWY_INLINE V EvenSum(V a, V b, V mask) {
    return V{_mm512_ternarylogic_epi32(a.raw, b.raw, mask.raw, 0x82)};
}
#else
template <class V>
HWY_INLINE V OddSum(V a, V b, V mask) {
    return hn::And(hn::Xor(a, b), mask);
}
template <class V>
HWY_INLINE V EvenSum(V a, V b, V mask) {
    return hn::AndNot(hn::Xor(a, b), mask);
}
#endif

// The samples of a row, and their neighbours in it.
template <class V>
struct RawSamples {
    V here, left, right;
};

template <class D>
HWY_INLINE RawSamples<hn::Vec<D>> LoadRaw(D d, const std::uint8_t* from) {
    constexpr std::size_t Bytes = sizeof(hn::TFromD<D>);
    return {LoadSamples(d, from), LoadSamples(d, from - Bytes), LoadSamples(d, from + Bytes)};
}

// A mean of two, rounded to nearest and rounded down, and 1 where these are the same.
template <class V>
struct Mean {
    V rounded, down, isWhole;
};

template <class D>
HWY_INLINE Mean<hn::Vec<D>> MeanOfSides(D d, const RawSamples<hn::Vec<D>>& row) {
    const auto one = hn::Set(d, 1);
    const auto rounded = hn::AverageRound(row.left, row.right);
    return {rounded, hn::Sub(rounded, OddSum(row.left, row.right, one)),
            EvenSum(row.left, row.right, one)};
}

// (a + b + c + d + 2) >> 2, where `mean` is of a and b, and `other` the rounded mean of c and d.
// That is the rounded mean of both, but one of the two must be rounded down if either isn't whole.
template <class V>
HWY_INLINE V MeanOfFour(const Mean<V>& mean, V other, V c, V d) {
    return hn::AverageRound(mean.down, hn::Sub(other, OddSum(c, d, mean.isWhole)));
}

// The lanes with even numbers.
HWY_INLINE hn::Mask<D8> EvenLanes(D8 d) {
    return hn::MaskFromVec(hn::BitCast(d, hn::Set(D16(), 0x00FF)));
}
HWY_INLINE hn::Mask<D16> EvenLanes(D16 d) {
    return hn::MaskFromVec(hn::BitCast(d, hn::Set(hn::ScalableTag<std::uint32_t>(), 0x0000FFFF)));
}

template <Parity Lanes, class D>
HWY_INLINE hn::Mask<D> MaskOf(D d) {
    const auto even = EvenLanes(d);
    return Lanes == Parity::Even ? even : hn::Not(even);
}

// Means of four beside the same samples of a line: in its own lanes those of the cross around it,
// in the others those of the corners around the line next to it, whose own lanes these are. `far`
// is on the other side of that next line, `outer` on the other side of the line itself.
template <Parity OwnLanes, class D, class V = hn::Vec<D>>
HWY_INLINE V MeansBesideSides(D d, const Mean<V>& sides, V outer, V next,
                              const RawSamples<V>& far) {
    const auto own = MaskOf<OwnLanes>(d);
    const V a = hn::IfThenElse(own, outer, far.left);
    const V b = hn::IfThenElse(own, next, far.right);
    return MeanOfFour(sides, hn::AverageRound(a, b), a, b);
}

// What a line's pixels may be made of: `here` and the means of the neighbours in the line, in the
// column and, in the lanes of the line's own colour, in both and in the four corners.
template <class V>
struct Neighbourhood {
    V here, sides, ends, cross, corners;
};

// One line of the pattern: the colour that it has besides green, and the lanes which have it.
template <bool HasRed, Parity OwnLanes>
struct PatternLine {
    static constexpr Parity Own = OwnLanes;
    using Next = PatternLine<!HasRed, Other(OwnLanes)>;
    using Shifted = PatternLine<HasRed, Other(OwnLanes)>;

    // The pixels in the place of `own` and of `other` colour.
    template <class V>
    static HWY_INLINE Colour<V> Arrange(V own, V green, V other) {
        return HasRed ? Colour<V>{own, green, other} : Colour<V>{other, green, own};
    }

    template <class D>
    static HWY_INLINE Colour<hn::Vec<D>> Colours(D d, const Neighbourhood<hn::Vec<D>>& line) {
        const auto own = MaskOf<OwnLanes>(d);
        return Arrange(hn::IfThenElse(own, line.here, line.sides),
                       hn::IfThenElse(own, line.cross, line.here),
                       hn::IfThenElse(own, line.corners, line.ends));
    }

    // Without bringing the colours together: the lanes of either kind have a luma of their own.
    static HWY_INLINE Grey<V8> Greys(const Neighbourhood<V8>& line) {
        const auto own = Arrange(line.here, line.cross, line.corners);
        const auto green = Arrange(line.sides, line.here, line.ends);
        const V8 ofOwn = hn::BitCast(D8(), LumaOf<OwnLanes>(own.r, own.g, own.b));
        const V8 ofGreen = hn::BitCast(D8(), LumaOf<Other(OwnLanes)>(green.r, green.g, green.b));
        // The luma is in the low bytes of words.
        return {OwnLanes == Parity::Even ? PairBytes<Parity::Even>(ofOwn, ofGreen)
                                         : PairBytes<Parity::Even>(ofGreen, ofOwn)};
    }
};

template <class Sink, class Pattern, class D>
HWY_INLINE auto Pixels(D d, const Neighbourhood<hn::Vec<D>>& line) {
    if constexpr (std::is_same_v<Sink, ToMono8>) {
        return Pattern::Greys(line);
    } else {
        return Pattern::Colours(d, line);
    }
}

HWY_INLINE Grey<V8> Raise(const Grey<V8>& pixel, int) {
    return pixel;
}
HWY_INLINE Colour<V8> Raise(const Colour<V8>& pixel, int) {
    return pixel;
}
HWY_INLINE Colour<V16> Raise(const Colour<V16>& pixel, int shift) {
    return {hn::ShiftLeftSame(pixel.r, shift), hn::ShiftLeftSame(pixel.g, shift),
            hn::ShiftLeftSame(pixel.b, shift)};
}

// A vector of pixels of both lines, from a column on. The first line is stored last, since a line
// that stands alone is there twice.
template <class Sink, class Pattern, Stores Way = Stores::Cached>
ORLIX_VECTOR_FUNCTION void ConvertBlock(const BayerLines& lines, std::size_t column,
                                        const Line& first, const Line& second) {
    const typename LanesFor<Sink>::Tag d;
    const std::size_t offset = column * sizeof(hn::TFromD<decltype(d)>);
    const auto above = LoadRaw(d, lines.rows[0] + offset);
    const auto one = LoadRaw(d, lines.rows[1] + offset);
    const auto two = LoadRaw(d, lines.rows[2] + offset);
    const auto below = LoadRaw(d, lines.rows[3] + offset);
    const auto sidesOne = MeanOfSides(d, one);
    const auto sidesTwo = MeanOfSides(d, two);
    const auto endsOne = hn::AverageRound(above.here, two.here);
    const auto endsTwo = hn::AverageRound(one.here, below.here);
    using V = decltype(one.here);
    // Grey has the operations to spare that bring the means of both lines together; colour, whose
    // stores put lanes into another order, gains nothing by it.
    V crossOne, cornersOne, crossTwo, cornersTwo;
    if constexpr (std::is_same_v<Sink, ToMono8>) {
        crossOne = MeansBesideSides<Pattern::Own>(d, sidesOne, above.here, two.here, below);
        crossTwo = MeansBesideSides<Pattern::Next::Own>(d, sidesTwo, below.here, one.here, above);
        cornersOne = crossTwo;
        cornersTwo = crossOne;
    } else {
        crossOne = MeanOfFour(sidesOne, endsOne, above.here, two.here);
        crossTwo = MeanOfFour(sidesTwo, endsTwo, one.here, below.here);
        cornersOne = MeanOfFour(sidesTwo, hn::AverageRound(above.left, above.right), above.left,
                                above.right);
        cornersTwo = MeanOfFour(sidesOne, hn::AverageRound(below.left, below.right), below.left,
                                below.right);
    }
    const Neighbourhood<V> upper = {one.here, sidesOne.rounded, endsOne, crossOne, cornersOne};
    const Neighbourhood<V> lower = {two.here, sidesTwo.rounded, endsTwo, crossTwo, cornersTwo};
    const int shift = lines.shiftUp;
    Sink::template Store<Way>(Raise(Pixels<Sink, typename Pattern::Next>(d, lower), shift), second);
    Sink::template Store<Way>(Raise(Pixels<Sink, Pattern>(d, upper), shift), first);
}

// Lines that are shorter than a vector.
template <class Sink, class Pattern>
HWY_NOINLINE void ConvertShortLines(const BayerLines& lines) {
    constexpr std::size_t Bytes = hn::MaxLanes(typename LanesFor<Sink>::Tag()) * Sink::Bytes;
    HWY_ALIGN std::uint8_t out[2][3][Bytes];
    ConvertBlock<Sink, Pattern>(lines, 0, {out[0][0], out[0][1], out[0][2]},
                                {out[1][0], out[1][1], out[1][2]});
    for (const std::size_t line : {1U, 0U}) {
        for (std::size_t plane = 0; plane < Sink::Planes; ++plane) {
            std::memcpy(lines.to[line][plane], out[line][plane], lines.width * Sink::Bytes);
        }
    }
}

template <class Sink, class Pattern, Stores Way = Stores::Cached>
HWY_INLINE void ConvertAt(const BayerLines& lines, std::size_t column) {
    ConvertBlock<Sink, Pattern, Way>(lines, column, Advance(lines.to[0], column * Sink::Bytes),
                                     Advance(lines.to[1], column * Sink::Bytes));
}

// The last vector ends with the line; at an odd column the pattern is the other way round.
template <class Sink, class Pattern>
HWY_INLINE void ConvertPair(const BayerLines& lines) {
    const std::size_t lanes = hn::Lanes(typename LanesFor<Sink>::Tag());
    if (lines.width < lanes) {
        ConvertShortLines<Sink, Pattern>(lines);
        return;
    }
    std::size_t column = 0;
    if constexpr (HasStreams) {
        for (; lines.streams && column < lines.width; column += lanes) {
            ConvertAt<Sink, Pattern, Stores::Streamed>(lines, column);
        }
    }
    for (; column + lanes <= lines.width; column += lanes) {
        ConvertAt<Sink, Pattern>(lines, column);
    }
    if (column < lines.width) {
        column = lines.width - lanes;
        column % 2 == 0 ? ConvertAt<Sink, Pattern>(lines, column)
                        : ConvertAt<Sink, typename Pattern::Shifted>(lines, column);
    }
}

template <class Sink, bool HasRed>
HWY_INLINE void ConvertPairFrom(const BayerLines& lines) {
    lines.ownColumn == 0 ? ConvertPair<Sink, PatternLine<HasRed, Parity::Even>>(lines)
                         : ConvertPair<Sink, PatternLine<HasRed, Parity::Odd>>(lines);
}

}  // namespace

#define ORLIX_KERNEL(Name)                                        \
    void DemosaicTo##Name##Lines(const BayerLines& lines) {       \
        lines.redFirst ? ConvertPairFrom<To##Name, true>(lines)   \
                       : ConvertPairFrom<To##Name, false>(lines); \
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
