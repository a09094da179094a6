// Lines of luma and chroma become colour, exactly and at full range.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/yuvsourcekernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"
#include "orlixcamera/conversion/weightedsums.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

// Luma of a vector of pixels, and blue and red chroma in turn, a pair for two pixels.
struct LumaChroma {
    V8 luma, chroma;
};

// Sources: how many bytes a pixel has in either place, and how the two are taken apart.
struct Uyvy {
    static constexpr std::size_t LumaBytes = 2;
    static constexpr std::size_t ChromaBytes = 0;
    static HWY_INLINE LumaChroma Load(const std::uint8_t* luma, const std::uint8_t*) {
        const D8 d;
        const V8 low = hn::LoadU(d, luma);
        const V8 high = hn::LoadU(d, luma + hn::Lanes(d));
        return {hn::ConcatOdd(d, high, low), hn::ConcatEven(d, high, low)};
    }
};
struct Yuyv {
    static constexpr std::size_t LumaBytes = 2;
    static constexpr std::size_t ChromaBytes = 0;
    static HWY_INLINE LumaChroma Load(const std::uint8_t* luma, const std::uint8_t* chroma) {
        const LumaChroma swapped = Uyvy::Load(luma, chroma);
        return {swapped.chroma, swapped.luma};
    }
};
struct Semiplanar {
    static constexpr std::size_t LumaBytes = 1;
    static constexpr std::size_t ChromaBytes = 1;
    static HWY_INLINE LumaChroma Load(const std::uint8_t* luma, const std::uint8_t* chroma) {
        return {hn::LoadU(D8(), luma), hn::LoadU(D8(), chroma)};
    }
};

HWY_INLINE VI16 Centred(V16 chroma) {
    return hn::Sub(hn::BitCast(DI16(), chroma), Words(128));
}

// round(1.402 v), which is v + 0.402 v: 13,173 / 2^15 rounds every v as 0.402 does.
HWY_INLINE VI16 RedOf(VI16 v) {
    return hn::Add(v, hn::MulFixedPoint15(v, Words(13173)));
}

// round(1.772 u), which is 2 u - 0.228 u: 7,471 / 2^15 rounds every u as 0.228 does, but for the
// tie of -125, which has to go up.
HWY_INLINE VI16 BlueOf(VI16 u) {
    const VI16 near = hn::Add(hn::Add(u, u), hn::MulFixedPoint15(u, Words(-7471)));
    const VI16 tie = hn::VecFromMask(DI16(), hn::Eq(u, Words(-125)));
    return hn::Sub(near, tie);
}

// round(-(101,004 u + 209,599 v) / 293,500). In units of 2^-20 the weights are 360,854 and 748,827:
// with the bias below every pair of u and v is rounded as exact arithmetic does. Each weight is 64
// times a word and a rest.
HWY_INLINE VI32 GreenOfPairs(VI16 pairs) {
    const auto weights = [](int blue, int red) HWY_ATTR {
        const unsigned low = static_cast<std::uint16_t>(blue);
        const unsigned high = static_cast<std::uint16_t>(red);
        return hn::BitCast(DI16(), hn::Set(DU32(), high << 16U | low));
    };
    const VI32 large = MultiplyPairs(pairs, weights(-5638, -11700), hn::Zero(DI32()));
    const VI32 all =
        MultiplyPairs(pairs, weights(-22, -27),
                      hn::Add(hn::ShiftLeft<6>(large), hn::Set(DI32(), (1 << 19) + 14)));
    return hn::ShiftRight<20>(all);
}

HWY_INLINE VI16 GreenOf(VI16 u, VI16 v) {
    const DU32 d;
    const auto low = hn::Set(d, 0xFFFF);
    const auto u32 = hn::BitCast(d, u);
    const auto v32 = hn::BitCast(d, v);
    const auto even = hn::Or(hn::And(u32, low), hn::ShiftLeft<16>(v32));
    const auto odd = hn::Or(hn::ShiftRight<16>(u32), hn::AndNot(low, v32));
    const VI32 evenGreen = GreenOfPairs(hn::BitCast(DI16(), even));
    const VI32 oddGreen = GreenOfPairs(hn::BitCast(DI16(), odd));
    const auto joined = hn::Or(hn::And(hn::BitCast(d, evenGreen), low),
                               hn::ShiftLeft<16>(hn::BitCast(d, oddGreen)));
    return hn::BitCast(DI16(), joined);
}

// Luma of even and odd pixels with what chroma adds to both.
HWY_INLINE V8 AddToLuma(VI16 even, VI16 odd, VI16 chroma) {
    const VI16 low = Words(0);
    const VI16 high = Words(255);
    const VI16 first = hn::Min(hn::Max(hn::Add(even, chroma), low), high);
    const VI16 second = hn::Min(hn::Max(hn::Add(odd, chroma), low), high);
    return JoinBytes(hn::BitCast(D16(), first), hn::BitCast(D16(), second));
}

ORLIX_VECTOR_FUNCTION Colour<V8> ColourOf(const LumaChroma& pixel) {
    const VI16 u = Centred(EvenBytes(pixel.chroma));
    const VI16 v = Centred(OddBytes(pixel.chroma));
    const VI16 even = hn::BitCast(DI16(), EvenBytes(pixel.luma));
    const VI16 odd = hn::BitCast(DI16(), OddBytes(pixel.luma));
    return {AddToLuma(even, odd, RedOf(v)), AddToLuma(even, odd, GreenOf(u, v)),
            AddToLuma(even, odd, BlueOf(u))};
}

template <class Source, class Sink, Stores Way = Stores::Cached>
HWY_INLINE void ConvertAt(const YuvLine& line, std::size_t pixel) {
    const LumaChroma loaded = Source::Load(line.luma + pixel * Source::LumaBytes,
                                           line.chroma + pixel * Source::ChromaBytes);
    Sink::template Store<Way>(ColourOf(loaded), Advance(line.to, pixel * Sink::Bytes));
}

// Pixels that don't fill a vector, from an even one on. Their last pair is whole in memory.
template <class Source, class Sink>
HWY_NOINLINE void ConvertFewPixels(const YuvLine& line, std::size_t pixel, std::size_t pixels) {
    constexpr std::size_t Lanes = hn::MaxLanes(D8());
    HWY_ALIGN std::uint8_t luma[Lanes * 2] = {};
    HWY_ALIGN std::uint8_t chroma[Lanes] = {};
    HWY_ALIGN std::uint8_t out[3][Lanes * Sink::Bytes];
    const std::size_t paired = pixels + pixels % 2;
    const std::size_t lumaPixels = Source::LumaBytes == 2 ? paired : pixels;
    std::memcpy(luma, line.luma + pixel * Source::LumaBytes, lumaPixels * Source::LumaBytes);
    std::memcpy(chroma, line.chroma + pixel * Source::ChromaBytes, paired * Source::ChromaBytes);
    ConvertAt<Source, Sink>({luma, chroma, {out[0], out[1], out[2]}, Lanes, false}, 0);
    for (std::size_t plane = 0; plane < Sink::Planes; ++plane) {
        std::memcpy(line.to[plane] + pixel * Sink::Bytes, out[plane], pixels * Sink::Bytes);
    }
}

template <class Source, class Sink>
HWY_INLINE void ConvertYuvLine(const YuvLine& line) {
    const std::size_t lanes = hn::Lanes(D8());
    std::size_t pixel = 0;
    if constexpr (HasStreams) {
        const std::size_t begin = line.streams ? FirstStreamed<Sink>(line.to, lanes) : lanes;
        if (begin < lanes && begin % 2 == 0 && line.width >= 2 * lanes) {
            if (begin > 0) {
                ConvertFewPixels<Source, Sink>(line, 0, begin);
            }
            for (pixel = begin; pixel + lanes <= line.width; pixel += lanes) {
                ConvertAt<Source, Sink, Stores::Streamed>(line, pixel);
            }
        }
    }
    for (; pixel + lanes <= line.width; pixel += lanes) {
        ConvertAt<Source, Sink>(line, pixel);
    }
    if (pixel < line.width) {
        ConvertFewPixels<Source, Sink>(line, pixel, line.width - pixel);
    }
}

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                        \
    void Source##LineTo##Destination##Row(const YuvLine& line) { \
        ConvertYuvLine<Source, To##Destination>(line);           \
    }
ORLIX_YUV_SOURCES(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
#define ORLIX_DISPATCH(Source, Destination)                           \
    HWY_EXPORT(Source##LineTo##Destination##Row);                     \
    void Source##LineTo##Destination(const YuvLine& line) {           \
        HWY_DYNAMIC_DISPATCH(Source##LineTo##Destination##Row)(line); \
    }
ORLIX_YUV_SOURCES(ORLIX_DISPATCH)
#undef ORLIX_DISPATCH
}  // namespace Orlix
#endif
