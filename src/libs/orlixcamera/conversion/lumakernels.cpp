// Kernels from colour to grey.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/lumakernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/weightedsums.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

// 8-bit colour to 16-bit grey: the luma of the 8-bit values, then moved up.
template <class Source>
struct WidenedLumaStep : StepForm<D8, Source::Bytes, 2> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        const V8 luma = Luma(Source::Load(from, 0));
        const V16 low = Widen(hn::LowerHalf(D8Half(), luma), job.shiftUp);
        const V16 high = Widen(hn::UpperHalf(D8Half(), luma), job.shiftUp);
        hn::StoreU(hn::BitCast(D8(), low), D8(), to[0]);
        hn::StoreU(hn::BitCast(D8(), high), D8(), to[0] + hn::Lanes(D8()));
    }
};

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
constexpr Weights LumaWeights{299, 587, 114};  // over 1000

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

// The luma of 16-bit words that are 32,768 too small, so that they are signed.
HWY_INLINE VI32 LumaOfSignedPairs(hn::Vec<DI16> redGreen, hn::Vec<DI16> blue) {
    const DI32 d;
    const DF32 floats;
    const VI32 sum = WeightedSum(redGreen, blue, LumaWeights, 32768 * 1000 + 500);
    // An eighth has 23 bits, which a float holds exactly. With half of it added, a quotient is at
    // least 0.004 away from a whole number; with 1/125 in two parts it is at most 2^-8 off.
    const auto eighth = hn::ConvertTo(floats, hn::ShiftRight<3>(sum));
    constexpr float High = 1.0F / 125.0F;
    constexpr auto Low = static_cast<float>(1.0 / 125.0 - static_cast<double>(High));
    const auto small = hn::MulAdd(eighth, hn::Set(floats, Low), hn::Set(floats, 0.5F / 125.0F));
    return hn::ConvertTo(d, hn::MulAdd(eighth, hn::Set(floats, High), small));
}

// 16-bit colour to 16-bit grey: the luma of the 16-bit values, then moved up, since some come with
// fewer bits.
struct WideLumaStep : StepForm<D16, Rgb16::Bytes, 2> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        const Colour<V16> pixel = Rgb16::LoadWide(from, 0);
        const V16 sign = hn::Set(D16(), 0x8000);
        const V16 r = hn::Xor(pixel.r, sign);
        const V16 g = hn::Xor(pixel.g, sign);
        const V16 b = hn::Xor(pixel.b, sign);
        // The word beside blue is multiplied by 0.
        const WordPairs pairs = MakePairs(r, g, b);
        const V16 luma = JoinLanes(LumaOfSignedPairs(pairs.redGreenEven, pairs.blueEven),
                                   LumaOfSignedPairs(pairs.redGreenOdd, pairs.blueOdd));
        hn::StoreU(hn::BitCast(D8(), hn::ShiftLeftSame(luma, job.shiftUp)), D8(), to[0]);
    }
};

struct ToMono16;

template <class Source, class Destination>
struct Plan {
    using Step = ByteStep<Source, Destination>;
};
template <class Source>
struct Plan<Source, ToMono16> {
    using Step = WidenedLumaStep<Source>;
};
template <>
struct Plan<Rgb16, ToMono16> {
    using Step = WideLumaStep;
};

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                                              \
    void Source##To##Destination##Lines(const ConversionJob& job, std::uint32_t first, \
                                        std::uint32_t end) {                           \
        ConvertLines<Plan<Source, To##Destination>::Step>(job, first, end);            \
    }
ORLIX_LUMA_KERNELS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
ORLIX_LUMA_KERNELS(ORLIX_DISPATCH_KERNEL)
}  // namespace Orlix
#endif
