// Luma and chroma of ITU-R BT.601 at full range, in whole numbers. The weights are the exact
// thousandths of the standard and every division rounds to nearest as exact arithmetic would, so
// that each instruction set gives the same bytes.
// Included once for each instruction set by the kernel files, hence the guard of its own kind.
#if defined(ORLIX_WEIGHTEDSUMS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORLIX_WEIGHTEDSUMS_H
#undef ORLIX_WEIGHTEDSUMS_H
#else
#define ORLIX_WEIGHTEDSUMS_H
#endif

#include "orlixcamera/conversion/vectorpixels.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DI8 = hn::ScalableTag<std::int8_t>;
using DI16 = hn::ScalableTag<std::int16_t>;
using VI16 = hn::Vec<DI16>;
using DI32 = hn::ScalableTag<std::int32_t>;
using DU32 = hn::ScalableTag<std::uint32_t>;
using DF32 = hn::ScalableTag<float>;
using VI32 = hn::Vec<DI32>;
using VU32 = hn::Vec<DU32>;

// The even and the odd bytes of a vector as words, and back.
HWY_INLINE V16 EvenBytes(V8 value) {
    return hn::And(hn::BitCast(D16(), value), hn::Set(D16(), 0xFF));
}
HWY_INLINE V16 OddBytes(V8 value) {
    return hn::ShiftRight<8>(hn::BitCast(D16(), value));
}
HWY_INLINE V8 JoinBytes(V16 even, V16 odd) {
    return hn::BitCast(D8(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

// The even byte of each word times `even` plus the odd one times `odd`, which must fit into a
// signed word. The vector instructions have this as one, which Highway doesn't name.
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || \
    HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
HWY_INLINE V16 WeighBytes(V8 bytes, std::int8_t even, std::int8_t odd) {
    const unsigned pair = static_cast<std::uint8_t>(even) | unsigned{static_cast<std::uint8_t>(odd)}
                                                                << 8U;
    const V16 weights = hn::Set(D16(), static_cast<std::uint16_t>(pair));
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return V16{_mm512_maddubs_epi16(bytes.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2
    return V16{_mm256_maddubs_epi16(bytes.raw, weights.raw)};
#else
    return V16{_mm_maddubs_epi16(bytes.raw, weights.raw)};
#endif
}
#else
ORLIX_VECTOR_FUNCTION V16 WeighBytes(V8 bytes, std::int8_t even, std::int8_t odd) {
    const DI16 words;
    const VI16 low = hn::Mul(hn::BitCast(words, EvenBytes(bytes)), hn::Set(words, even));
    const VI16 high = hn::Mul(hn::BitCast(words, OddBytes(bytes)), hn::Set(words, odd));
    return hn::BitCast(D16(), hn::Add(low, high));
}
#endif

// The sums of the products of pairs of words.
HWY_INLINE VI32 MultiplyPairs(hn::Vec<DI16> a, hn::Vec<DI16> b, VI32 sum) {
    VI32 other = hn::Zero(DI32());
    sum = hn::ReorderWidenMulAccumulate(DI32(), a, b, sum, other);
    return hn::RearrangeToOddPlusEven(sum, other);
}

// Small words, whose order is that of InterleaveLower and InterleaveUpper, as bytes.
HWY_INLINE V8 PackWords(V16 low, V16 high) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return V8{_mm512_packus_epi16(low.raw, high.raw)};
#elif HWY_TARGET == HWY_AVX2
    return V8{_mm256_packus_epi16(low.raw, high.raw)};
#else
    // The blocks of 16 bytes are the vector.
    return hn::ConcatEven(D8(), hn::BitCast(D8(), high), hn::BitCast(D8(), low));
#endif
}

// Which lanes of a vector are meant.
enum class Parity { Even, Odd };

constexpr Parity Other(Parity lanes) {
    return lanes == Parity::Even ? Parity::Odd : Parity::Even;
}

// Bytes of such lanes side by side: that of `first` in the even lane, that of `second` in the odd
// one.
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
template <Parity Lanes>
HWY_INLINE V8 PairBytes(V8 first, V8 second) {
    const __m512i swap =
        _mm512_broadcast_i32x4(_mm_set_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
    constexpr __mmask64 EvenLanes = 0x5555555555555555;
    return Lanes == Parity::Even
               ? V8{_mm512_mask_shuffle_epi8(first.raw, ~EvenLanes, second.raw, swap)}
               : V8{_mm512_mask_shuffle_epi8(second.raw, EvenLanes, first.raw, swap)};
}
#else
template <Parity Lanes>
HWY_INLINE V8 PairBytes(V8 first, V8 second) {
    const D8 d;
    const D16 words;
    if constexpr (Lanes == Parity::Even) {
        const V16 moved = hn::ShiftLeft<8>(hn::BitCast(words, second));
        return hn::OddEven(hn::BitCast(d, moved), first);
    } else {
        return hn::OddEven(second, hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(words, first))));
    }
}
#endif

// Luma in thousandths is 299 R + 587 G + 114 B, and the weights are 2 * 128 + 43, 4 * 128 + 75 and
// 114. The small ones give 59,660 at most with 500 for the half, and the large ones an eighth of
// all without its fraction, which fits into a word. Since 1000 = 8 * 125, its product with
// 2^22 / 125, rounded up to 33,555, gives the exact quotient. `blue` is 114 B + 500.
HWY_INLINE V16 LumaOfPairs(V8 redGreen, V16 blue) {
    const V16 small = hn::Add(WeighBytes(redGreen, 43, 75), blue);
    const V16 eighth = hn::Add(hn::ShiftRight<3>(small), WeighBytes(redGreen, 32, 64));
    return hn::ShiftRight<6>(hn::MulHigh(eighth, hn::Set(D16(), 33555)));
}

HWY_INLINE V8 Luma(const Grey<V8>& pixel) {
    return pixel.value;
}
template <class Pixel>
ORLIX_VECTOR_FUNCTION V8 Luma(const Pixel& pixel) {
    const D8 d;
    const V8 four = hn::Set(d, 4);
    const V16 low = LumaOfPairs(hn::InterleaveLower(d, pixel.r, pixel.g),
                                WeighBytes(hn::InterleaveLower(d, pixel.b, four), 114, 125));
    const V16 high = LumaOfPairs(hn::InterleaveUpper(d, pixel.r, pixel.g),
                                 WeighBytes(hn::InterleaveUpper(d, pixel.b, four), 114, 125));
    return PackWords(low, high);
}

// a * b / 2^15, rounded to nearest.
HWY_INLINE V16 MultiplyRounded(V16 a, std::int16_t b) {
    const DI16 d;
    return hn::BitCast(D16(), hn::MulFixedPoint15(hn::BitCast(d, a), hn::Set(d, b)));
}

// The luma of pixels in such lanes, as words. Blue stands alone here, so nothing adds the half on
// its way: products that round take the place of shifts. With the weights 8 * 37 + 3, 8 * 73 + 3
// and 114 the small ones give 30,600 at most and the rounded eighth 31,875, which are signed words.
// The quotient of 125 has six bits more before it is rounded; with 2^22 / 125 rounded down, to
// 33,554, it is exact for every sum.
template <Parity Lanes>
ORLIX_VECTOR_FUNCTION V16 LumaOf(V8 red, V8 green, V8 blue) {
    constexpr bool IsEven = Lanes == Parity::Even;
    constexpr std::int16_t Eighth = 1 << 12;
    constexpr std::int16_t SixtyFourth = 1 << 9;
    const V8 redGreen = PairBytes<Lanes>(red, green);
    const V16 small =
        hn::Add(WeighBytes(redGreen, 3, 3), WeighBytes(blue, IsEven ? 114 : 0, IsEven ? 0 : 114));
    const V16 eighth = hn::Add(MultiplyRounded(small, Eighth), WeighBytes(redGreen, 37, 73));
    return MultiplyRounded(hn::MulHigh(eighth, hn::Set(D16(), 33554)), SixtyFourth);
}

// The destination of grey, whatever the pixels are.
struct ToMono8 {
    static constexpr std::size_t Bytes = 1;
    static constexpr std::size_t Planes = 1;
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreBytes<Way>(Luma(pixel), to[0]);
    }
};

// The mean chroma of blocks of 2^K pixels, from the sums over a block: with own - green = E and
// green - other = D, blue chroma is 128.5 + (886 E + 299 D) / (1772 * 2^K) and red chroma
// 128.5 + (701 E + 114 D) / (1402 * 2^K), rounded down.
//
// A block of one or two pixels takes the short way. The first product is E over a power of 2. So
// the second need be known as a whole number only, and there it is (D + D * Short / 2^16) over a
// power of 2: exact for D up to +-700.
//
// For four pixels D may be larger. Whole multiples of the divisor in the first product are
// E / 2^(K+1); the rest f of E goes on. What is left to divide is taken apart once more so that it
// fits into a word: its divisor is Prime * 2^Shift, and 299 (114) is Whole * 2^Shift + Rest. The
// offset makes the dividend positive; the product with Factor gives the exact quotient by Prime for
// every word.
struct BlueDifference {
    static constexpr int Short = -21303;  // 299 / 886 = (1 + Short / 2^16) / 2
    static constexpr int ShortShift = 1;
    static constexpr int Weight = 886;
    static constexpr int Shift = 4;
    static constexpr int Whole = 19;
    static constexpr int Rest = -5;
    static constexpr int Prime = 443;
    static constexpr int Offset = 44;
    static constexpr int Factor = 2367;
    static constexpr int FactorShift = 4;
};
struct RedDifference {
    static constexpr int Short = 19726;  // 114 / 701 = (1 + Short / 2^16) / 8
    static constexpr int ShortShift = 3;
    static constexpr int Weight = 701;
    static constexpr int Shift = 3;
    static constexpr int Whole = 14;
    static constexpr int Rest = 2;
    static constexpr int Prime = 701;
    static constexpr int Offset = 21;
    static constexpr int Factor = 47867;
    static constexpr int FactorShift = 9;
};

HWY_INLINE VI16 Words(int value) {
    return hn::Set(DI16(), static_cast<std::int16_t>(value));
}

template <class Difference, int K>
HWY_INLINE VI16 ShortChroma(VI16 e, VI16 difference) {
    constexpr int S = Difference::ShortShift;
    constexpr int Bias = (1 << (S + K)) + (128 << (S + K + 1));
    const VI16 second = hn::Add(difference, hn::MulHigh(difference, Words(Difference::Short)));
    const VI16 first = hn::Add(hn::ShiftLeft<S>(e), Words(Bias));
    return hn::ShiftRight<S + K + 1>(hn::Add(first, second));
}

template <class Difference>
HWY_INLINE VI16 ChromaOfFour(VI16 e, VI16 difference) {
    const DI16 d;
    const VI16 f = hn::And(e, Words(7));
    const VI16 rest = hn::Add(hn::Mul(f, Words(Difference::Weight)),
                              hn::Mul(difference, Words(Difference::Rest)));
    const VI16 part =
        hn::ShiftRight<Difference::Shift>(hn::Add(rest, Words(4 * Difference::Weight)));
    const VI16 dividend = hn::Add(hn::Mul(difference, Words(Difference::Whole)), part);
    const V16 positive =
        hn::BitCast(D16(), hn::Add(dividend, Words(Difference::Offset * Difference::Prime)));
    const V16 factor = hn::Set(D16(), static_cast<std::uint16_t>(Difference::Factor));
    const V16 quotient = hn::ShiftRight<Difference::FactorShift>(hn::MulHigh(positive, factor));
    return hn::Add(hn::Add(hn::ShiftRight<3>(e), hn::BitCast(d, quotient)),
                   Words(128 - Difference::Offset));
}

template <class Difference, int K>
ORLIX_VECTOR_FUNCTION V16 ChromaOfSums(V16 own, V16 green, V16 other) {
    const DI16 d;
    const VI16 e = hn::BitCast(d, hn::Sub(own, green));
    const VI16 difference = hn::BitCast(d, hn::Sub(green, other));
    if constexpr (K < 2) {
        return hn::BitCast(D16(), hn::Min(ShortChroma<Difference, K>(e, difference), Words(255)));
    } else {
        return hn::BitCast(D16(), hn::Min(ChromaOfFour<Difference>(e, difference), Words(255)));
    }
}

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
