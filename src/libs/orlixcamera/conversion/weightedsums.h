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

using DI16 = hn::ScalableTag<std::int16_t>;
using DI32 = hn::ScalableTag<std::int32_t>;
using DU32 = hn::ScalableTag<std::uint32_t>;
using DF32 = hn::ScalableTag<float>;
using VI32 = hn::Vec<DI32>;
using VU32 = hn::Vec<DU32>;

// Words of even and of odd lanes as pairs for the pairwise multiplication: red beside green, and
// blue beside nothing. No lane leaves its place, so that no shuffle is needed.
struct WordPairs {
    hn::Vec<DI16> redGreenEven, blueEven, redGreenOdd, blueOdd;
};

ORLIX_VECTOR_FUNCTION WordPairs MakePairs(V16 r, V16 g, V16 b) {
    const DU32 d;
    const DI16 words;
    const VU32 low = hn::Set(d, 0xFFFF);
    const VU32 r32 = hn::BitCast(d, r);
    const VU32 g32 = hn::BitCast(d, g);
    const VU32 b32 = hn::BitCast(d, b);
    return {hn::BitCast(words, hn::Or(hn::And(r32, low), hn::ShiftLeft<16>(g32))),
            hn::BitCast(words, hn::And(b32, low)),
            hn::BitCast(words, hn::Or(hn::ShiftRight<16>(r32), hn::AndNot(low, g32))),
            hn::BitCast(words, hn::ShiftRight<16>(b32))};
}

struct Weights {
    std::int16_t r, g, b;
};
inline constexpr Weights LumaWeights{299, 587, 114};    // over 1000
inline constexpr Weights BlueWeights{-299, -587, 886};  // over 1772
inline constexpr Weights RedWeights{701, -587, -114};   // over 1402

HWY_INLINE VI32 MultiplyPairs(hn::Vec<DI16> a, hn::Vec<DI16> b, VI32 sum) {
    VI32 other = hn::Zero(DI32());
    sum = hn::ReorderWidenMulAccumulate(DI32(), a, b, sum, other);
    return hn::RearrangeToOddPlusEven(sum, other);
}

// weights * (r, g, b) + bias for signed words.
ORLIX_VECTOR_FUNCTION VI32 WeightedSum(hn::Vec<DI16> redGreen, hn::Vec<DI16> blue,
                                       const Weights& weights, std::int32_t bias) {
    const DI32 d;
    const DI16 words;
    const auto high = static_cast<std::uint32_t>(static_cast<std::uint16_t>(weights.g)) << 16U;
    const auto low = static_cast<std::uint32_t>(static_cast<std::uint16_t>(weights.r));
    const auto pair = hn::BitCast(words, hn::Set(DU32(), high | low));
    const auto single = hn::BitCast(
        words, hn::Set(DU32(), static_cast<std::uint32_t>(static_cast<std::uint16_t>(weights.b))));
    return MultiplyPairs(blue, single, MultiplyPairs(redGreen, pair, hn::Set(d, bias)));
}

// Two vectors of small whole numbers, of even and odd lanes, as one vector of words.
HWY_INLINE V16 JoinLanes(VI32 even, VI32 odd) {
    return hn::BitCast(D16(), hn::Or(even, hn::ShiftLeft<16>(odd)));
}

// The luma of words of up to 255.
ORLIX_VECTOR_FUNCTION V16 LumaOfWords(const WordPairs& pairs) {
    // A sum is at most 255,500, and 1000 = 8 * 125: an eighth fits into a word, and its product
    // with 2^22 / 125, rounded up to 33,555, gives the exact quotient.
    const VI32 even = WeightedSum(pairs.redGreenEven, pairs.blueEven, LumaWeights, 500);
    const VI32 odd = WeightedSum(pairs.redGreenOdd, pairs.blueOdd, LumaWeights, 500);
    const V16 eighth = JoinLanes(hn::ShiftRight<3>(even), hn::ShiftRight<3>(odd));
    return hn::ShiftRight<6>(hn::MulHigh(eighth, hn::Set(D16(), 33555)));
}

// How a chroma value is made from the sum over the pixels of a block.
struct BlueDifference {
    static constexpr Weights Factors = BlueWeights;
    static constexpr std::int32_t Bias = 227702;  // 128.5 * 1772
    static constexpr int Shift = 2;               // 1772 = 4 * 443
    static constexpr float Divisor = 443.0F;
};
struct RedDifference {
    static constexpr Weights Factors = RedWeights;
    static constexpr std::int32_t Bias = 180157;  // 128.5 * 1402
    static constexpr int Shift = 1;               // 1402 = 2 * 701
    static constexpr float Divisor = 701.0F;
};

// The mean chroma of blocks of 2^BlockShift pixels. After the shift a number has at most 18 bits,
// so it is exact as a float; with the half added a quotient is nowhere nearer to a whole number
// than 1/1402, far more than a float can be wrong.
template <class Difference, int BlockShift>
ORLIX_VECTOR_FUNCTION VI32 ChromaOfPairs(hn::Vec<DI16> redGreen, hn::Vec<DI16> blue) {
    const DI32 d;
    const DF32 floats;
    const VI32 sum =
        WeightedSum(redGreen, blue, Difference::Factors, Difference::Bias * (1 << BlockShift));
    const auto number = hn::ConvertTo(floats, hn::ShiftRight<Difference::Shift + BlockShift>(sum));
    const auto quotient = hn::MulAdd(number, hn::Set(floats, 1.0F / Difference::Divisor),
                                     hn::Set(floats, 0.5F / Difference::Divisor));
    return hn::Min(hn::ConvertTo(d, quotient), hn::Set(d, 255));
}

// The same for all lanes of a vector of words.
template <class Difference, int BlockShift>
HWY_INLINE V16 ChromaOfWords(const WordPairs& pairs) {
    return JoinLanes(ChromaOfPairs<Difference, BlockShift>(pairs.redGreenEven, pairs.blueEven),
                     ChromaOfPairs<Difference, BlockShift>(pairs.redGreenOdd, pairs.blueOdd));
}

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

template <class Pixel>
ORLIX_VECTOR_FUNCTION WordPairs EvenPairs(const Pixel& pixel) {
    return MakePairs(EvenBytes(pixel.r), EvenBytes(pixel.g), EvenBytes(pixel.b));
}
template <class Pixel>
ORLIX_VECTOR_FUNCTION WordPairs OddPairs(const Pixel& pixel) {
    return MakePairs(OddBytes(pixel.r), OddBytes(pixel.g), OddBytes(pixel.b));
}

HWY_INLINE V8 Luma(const Grey<V8>& pixel) {
    return pixel.value;
}
template <class Pixel>
HWY_INLINE V8 Luma(const Pixel& pixel) {
    return JoinBytes(LumaOfWords(EvenPairs(pixel)), LumaOfWords(OddPairs(pixel)));
}

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
