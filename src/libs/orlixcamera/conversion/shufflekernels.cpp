// Rows whose bytes or words change places: luma and chroma taken apart, planes joined, red and blue
// swapped.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/shufflekernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

// Steps for ConvertLine, which knows how a line ends.
struct TakeEven : StepForm<D8, 2, 1> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        const D8 d;
        const V8 low = hn::LoadU(d, from);
        hn::StoreU(hn::ConcatEven(d, hn::LoadU(d, from + Lanes()), low), d, to[0]);
    }
};

struct TakeOdd : StepForm<D8, 2, 1> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        const D8 d;
        const V8 low = hn::LoadU(d, from);
        hn::StoreU(hn::ConcatOdd(d, hn::LoadU(d, from + Lanes()), low), d, to[0]);
    }
};

// Pairs of bytes.
template <bool Odd>
struct Double : StepForm<D8, 2, 2> {
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D16()); }
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        const V16 pairs = LoadWords(from);
        const V16 low = hn::Set(D16(), 0xFF);
        StoreWords(Odd ? hn::Or(hn::AndNot(low, pairs), hn::ShiftRight<8>(pairs))
                       : hn::Or(hn::And(low, pairs), hn::ShiftLeft<8>(pairs)),
                   to[0]);
    }
};

struct SwapStep : StepForm<D8, 6, 6> {
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D16()); }
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        V16 a, b, c;
        LoadTriples(from, a, b, c);
        StoreTriples(c, b, a, to[0]);
    }
};

template <class Step>
HWY_INLINE void ConvertRow(const std::uint8_t* from, std::size_t samples, std::uint8_t* to) {
    ConvertLine<Step>(from, {to, nullptr, nullptr}, samples, ConversionJob());
}

template <bool Odd>
HWY_INLINE void DoubleRow(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    ConvertRow<Double<Odd>>(from, count / 2, to);
    if (count % 2 != 0) {
        to[count - 1] = from[count - 1 + (Odd ? 1 : 0)];
    }
}

// Three planes of so many bytes a sample.
struct BytePlanes {
    static constexpr std::size_t From = 1;
    static constexpr std::size_t To = 3;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D8()); }
    static HWY_INLINE void Join(const Planes& from, std::size_t at, std::uint8_t* to) {
        const D8 d;
        StoreTriples(hn::LoadU(d, from[0] + at), hn::LoadU(d, from[1] + at),
                     hn::LoadU(d, from[2] + at), to);
    }
};

struct WordPlanes {
    static constexpr std::size_t From = 2;
    static constexpr std::size_t To = 6;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D16()); }
    static HWY_INLINE void Join(const Planes& from, std::size_t at, std::uint8_t* to) {
        StoreTriples(LoadWords(from[0] + at), LoadWords(from[1] + at), LoadWords(from[2] + at), to);
    }
};

struct UpperPlanes {
    static constexpr std::size_t From = 2;
    static constexpr std::size_t To = 3;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D8()); }
    static HWY_INLINE V8 Upper(const std::uint8_t* from) {
        const D8 d;
        return hn::ConcatOdd(d, hn::LoadU(d, from + hn::Lanes(d)), hn::LoadU(d, from));
    }
    static HWY_INLINE void Join(const Planes& from, std::size_t at, std::uint8_t* to) {
        StoreTriples(Upper(from[0] + at), Upper(from[1] + at), Upper(from[2] + at), to);
    }
};

template <class Step>
HWY_NOINLINE void JoinShortRow(const Planes& from, std::size_t width, std::uint8_t* to) {
    constexpr std::size_t Lanes = hn::MaxLanes(D8());
    HWY_ALIGN std::uint8_t in[3][Lanes * 2] = {};
    HWY_ALIGN std::uint8_t out[Lanes * 6];
    for (std::size_t plane = 0; plane < 3; ++plane) {
        std::memcpy(in[plane], from[plane], width * Step::From);
    }
    Step::Join({in[0], in[1], in[2]}, 0, out);
    std::memcpy(to, out, width * Step::To);
}

template <class Step>
HWY_INLINE void JoinRow(const Planes& from, std::size_t width, std::uint8_t* to) {
    const std::size_t lanes = Step::Lanes();
    if (width < lanes) {
        JoinShortRow<Step>(from, width, to);
        return;
    }
    for (std::size_t pixel = 0; pixel + lanes <= width; pixel += lanes) {
        Step::Join(from, pixel * Step::From, to + pixel * Step::To);
    }
    Step::Join(from, (width - lanes) * Step::From, to + (width - lanes) * Step::To);
}

}  // namespace

void TakeEvenBytesRow(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    ConvertRow<TakeEven>(from, count, to);
}
void TakeOddBytesRow(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    ConvertRow<TakeOdd>(from, count, to);
}
void DoubleEvenBytesRow(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    DoubleRow<false>(from, count, to);
}
void DoubleOddBytesRow(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    DoubleRow<true>(from, count, to);
}
void SwapWordsRow(const std::uint8_t* from, std::size_t width, std::uint8_t* to) {
    ConvertRow<SwapStep>(from, width, to);
}
void JoinBytePlanesRow(const Planes& from, std::size_t width, std::uint8_t* to) {
    JoinRow<BytePlanes>(from, width, to);
}
void JoinWordPlanesRow(const Planes& from, std::size_t width, std::uint8_t* to) {
    JoinRow<WordPlanes>(from, width, to);
}
void JoinUpperPlanesRow(const Planes& from, std::size_t width, std::uint8_t* to) {
    JoinRow<UpperPlanes>(from, width, to);
}
void AverageBytesRow(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                     std::uint8_t* to) {
    const D8 d;
    std::size_t at = 0;
    for (; at + hn::Lanes(d) <= count; at += hn::Lanes(d)) {
        hn::StoreU(hn::AverageRound(hn::LoadU(d, a + at), hn::LoadU(d, b + at)), d, to + at);
    }
    for (; at < count; ++at) {
        to[at] = static_cast<std::uint8_t>((a[at] + b[at] + 1) >> 1);
    }
}

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {

#define ORLIX_DISPATCH(Name, From)                                    \
    HWY_EXPORT(Name##Row);                                            \
    void Name(const From from, std::size_t count, std::uint8_t* to) { \
        HWY_DYNAMIC_DISPATCH(Name##Row)(from, count, to);             \
    }
ORLIX_DISPATCH(TakeEvenBytes, std::uint8_t*)
ORLIX_DISPATCH(TakeOddBytes, std::uint8_t*)
ORLIX_DISPATCH(DoubleEvenBytes, std::uint8_t*)
ORLIX_DISPATCH(DoubleOddBytes, std::uint8_t*)
ORLIX_DISPATCH(SwapWords, std::uint8_t*)
ORLIX_DISPATCH(JoinBytePlanes, Planes&)
ORLIX_DISPATCH(JoinWordPlanes, Planes&)
ORLIX_DISPATCH(JoinUpperPlanes, Planes&)
#undef ORLIX_DISPATCH

HWY_EXPORT(AverageBytesRow);
void AverageBytes(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                  std::uint8_t* to) {
    HWY_DYNAMIC_DISPATCH(AverageBytesRow)(a, b, count, to);
}

}  // namespace Orlix
#endif
