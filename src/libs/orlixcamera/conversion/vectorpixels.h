// Vectors of pixels: how each source format is loaded into them, and the drivers that walk a line.
// Included once for each instruction set by the kernel files, hence the guard of its own kind.
#if defined(ORLIX_VECTORPIXELS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORLIX_VECTORPIXELS_H
#undef ORLIX_VECTORPIXELS_H
#else
#define ORLIX_VECTORPIXELS_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/triples.h"

// Functions that are worth a call of their own where vectors are emulated by arrays: inlined, each
// of their operations becomes a loop, and the compiler drowns in them.
#undef ORLIX_VECTOR_FUNCTION
#if HWY_TARGET == HWY_EMU128
#define ORLIX_VECTOR_FUNCTION inline HWY_NOINLINE
#else
#define ORLIX_VECTOR_FUNCTION HWY_INLINE
#endif

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D8Half = hn::Rebind<std::uint8_t, D16>;

template <class V>
struct Grey {
    V value;
};

template <class V>
struct Colour {
    V r, g, b;
};

template <class V>
struct ColourAlpha {
    V r, g, b, a;
};

// The colours of any pixel: grey is all three.
template <class V>
HWY_INLINE V Red(const Grey<V>& pixel) {
    return pixel.value;
}
template <class V>
HWY_INLINE V Green(const Grey<V>& pixel) {
    return pixel.value;
}
template <class V>
HWY_INLINE V Blue(const Grey<V>& pixel) {
    return pixel.value;
}
template <class Pixel>
HWY_INLINE auto Red(const Pixel& pixel) {
    return pixel.r;
}
template <class Pixel>
HWY_INLINE auto Green(const Pixel& pixel) {
    return pixel.g;
}
template <class Pixel>
HWY_INLINE auto Blue(const Pixel& pixel) {
    return pixel.b;
}
// A source format: its bytes a pixel, and its pixels as 8-bit lanes (`Load`) or 16-bit lanes
// (`LoadWide`). An 8-bit source is widened with the job's shift up, a 16-bit source narrowed with
// its shift down.

// The low bytes of two vectors of words, in order.
ORLIX_VECTOR_FUNCTION V8 Narrow(V16 low, V16 high, int shift) {
    const D8 d;
    return hn::ConcatEven(d, hn::BitCast(d, hn::ShiftRightSame(high, shift)),
                          hn::BitCast(d, hn::ShiftRightSame(low, shift)));
}

HWY_INLINE V16 Widen(hn::Vec<D8Half> value, int shift) {
    return hn::ShiftLeftSame(hn::PromoteTo(D16(), value), shift);
}

// Lines begin at any byte, so words are loaded through bytes.
HWY_INLINE V16 LoadWords(const std::uint8_t* from) {
    return hn::BitCast(D16(), hn::LoadU(D8(), from));
}

struct Mono8 {
    static constexpr std::size_t Bytes = 1;
    static ORLIX_VECTOR_FUNCTION Grey<V8> Load(const std::uint8_t* from, int) {
        return {hn::LoadU(D8(), from)};
    }
    static ORLIX_VECTOR_FUNCTION Grey<V16> LoadWide(const std::uint8_t* from, int shift) {
        return {Widen(hn::LoadU(D8Half(), from), shift)};
    }
};

struct Mono16 {
    static constexpr std::size_t Bytes = 2;
    static ORLIX_VECTOR_FUNCTION Grey<V8> Load(const std::uint8_t* from, int shift) {
        return {Narrow(LoadWords(from), LoadWords(from + hn::Lanes(D8())), shift)};
    }
    static ORLIX_VECTOR_FUNCTION Grey<V16> LoadWide(const std::uint8_t* from, int) {
        return {LoadWords(from)};
    }
};

struct Rgb8 {
    static constexpr std::size_t Bytes = 3;
    static ORLIX_VECTOR_FUNCTION Colour<V8> Load(const std::uint8_t* from, int) {
        V8 r, g, b;
        LoadTriples(from, r, g, b);
        return {r, g, b};
    }
    static ORLIX_VECTOR_FUNCTION Colour<V16> LoadWide(const std::uint8_t* from, int shift) {
        hn::Vec<D8Half> r, g, b;
        hn::LoadInterleaved3(D8Half(), from, r, g, b);
        return {Widen(r, shift), Widen(g, shift), Widen(b, shift)};
    }
};

struct Bgr8 {
    static constexpr std::size_t Bytes = 3;
    static ORLIX_VECTOR_FUNCTION Colour<V8> Load(const std::uint8_t* from, int shift) {
        const Colour<V8> swapped = Rgb8::Load(from, shift);
        return {swapped.b, swapped.g, swapped.r};
    }
    static ORLIX_VECTOR_FUNCTION Colour<V16> LoadWide(const std::uint8_t* from, int shift) {
        const Colour<V16> swapped = Rgb8::LoadWide(from, shift);
        return {swapped.b, swapped.g, swapped.r};
    }
};

struct Rgba8 {
    static constexpr std::size_t Bytes = 4;
    static ORLIX_VECTOR_FUNCTION ColourAlpha<V8> Load(const std::uint8_t* from, int) {
        V8 r, g, b, a;
        hn::LoadInterleaved4(D8(), from, r, g, b, a);
        return {r, g, b, a};
    }
    // No wide format has an alpha channel.
    static ORLIX_VECTOR_FUNCTION Colour<V16> LoadWide(const std::uint8_t* from, int shift) {
        hn::Vec<D8Half> r, g, b, a;
        hn::LoadInterleaved4(D8Half(), from, r, g, b, a);
        return {Widen(r, shift), Widen(g, shift), Widen(b, shift)};
    }
};

struct Bgra8 {
    static constexpr std::size_t Bytes = 4;
    static ORLIX_VECTOR_FUNCTION ColourAlpha<V8> Load(const std::uint8_t* from, int shift) {
        const ColourAlpha<V8> swapped = Rgba8::Load(from, shift);
        return {swapped.b, swapped.g, swapped.r, swapped.a};
    }
    static ORLIX_VECTOR_FUNCTION Colour<V16> LoadWide(const std::uint8_t* from, int shift) {
        const Colour<V16> swapped = Rgba8::LoadWide(from, shift);
        return {swapped.b, swapped.g, swapped.r};
    }
};

struct Rgb16 {
    static constexpr std::size_t Bytes = 6;
    static ORLIX_VECTOR_FUNCTION Colour<V8> Load(const std::uint8_t* from, int shift) {
        const Colour<V16> low = LoadWide(from, 0);
        const Colour<V16> high = LoadWide(from + 3 * hn::Lanes(D8()), 0);
        return {Narrow(low.r, high.r, shift), Narrow(low.g, high.g, shift),
                Narrow(low.b, high.b, shift)};
    }
    static ORLIX_VECTOR_FUNCTION Colour<V16> LoadWide(const std::uint8_t* from, int) {
        V16 r, g, b;
        LoadTriples(from, r, g, b);
        return {r, g, b};
    }
};

// The pointers to one line of each destination plane.
using Line = std::array<std::uint8_t*, 3>;

HWY_INLINE const std::uint8_t* SourceLine(const ConversionJob& job, std::uint32_t line) {
    return job.source[0] + static_cast<std::ptrdiff_t>(line) * job.sourceStride[0];
}

HWY_INLINE Line DestinationLine(const ConversionJob& job, std::uint32_t line) {
    Line pointers{};
    for (std::size_t plane = 0; plane < pointers.size(); ++plane) {
        pointers[plane] = job.destination[plane] +
                          static_cast<std::ptrdiff_t>(line) * job.destinationStride[plane];
    }
    return pointers;
}

HWY_INLINE Line Advance(const Line& line, std::size_t bytes) {
    return {line[0] + bytes, line[1] + bytes, line[2] + bytes};
}

// A step converts as many samples as a vector of type D has lanes, from one source line to one line
// of each destination plane. A sample has so many bytes there, and in each plane here.
template <class D, std::size_t FromBytes, std::size_t ToBytes, std::size_t PlaneCount = 1>
struct StepForm {
    static constexpr std::size_t MaxLanes = hn::MaxLanes(D());
    static constexpr std::size_t SourceBytes = FromBytes;
    static constexpr std::size_t Bytes = ToBytes;
    static constexpr std::size_t Planes = PlaneCount;

    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D()); }
};

// This one works on 8-bit lanes ...
template <class Source, class Sink, Stores Way = Stores::Cached>
struct ByteStep : StepForm<D8, Source::Bytes, Sink::Bytes, Sink::Planes> {
    using Streamed = ByteStep<Source, Sink, Stores::Streamed>;
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        Sink::template Store<Way>(Source::Load(from, job.shiftDown), to);
    }
};

// ... and this one on 16-bit lanes.
template <class Source, class Sink, Stores Way = Stores::Cached>
struct WideStep : StepForm<D16, Source::Bytes, Sink::Bytes, Sink::Planes> {
    using Streamed = WideStep<Source, Sink, Stores::Streamed>;
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        Sink::template Store<Way>(Source::LoadWide(from, job.shiftUp), to);
    }
};

// A line shorter than a vector goes through buffers, since neither picture may be touched beyond
// its end.
template <class Step>
HWY_NOINLINE void ConvertShortLine(const std::uint8_t* from, const Line& to, std::size_t samples,
                                   const ConversionJob& job) {
    HWY_ALIGN std::uint8_t in[Step::MaxLanes * Step::SourceBytes] = {};
    HWY_ALIGN std::uint8_t out[3][Step::MaxLanes * Step::Bytes];
    std::memcpy(in, from, samples * Step::SourceBytes);
    Step::Convert(in, {out[0], out[1], out[2]}, job);
    for (std::size_t plane = 0; plane < Step::Planes; ++plane) {
        std::memcpy(to[plane], out[plane], samples * Step::Bytes);
    }
}

// The last vector ends with the line and overlaps the one before: the two pictures never share
// memory, so that converting a sample twice does no harm.
template <class Step>
HWY_INLINE void ConvertLine(const std::uint8_t* from, const Line& to, std::size_t samples,
                            const ConversionJob& job) {
    const std::size_t lanes = Step::Lanes();
    if (samples < lanes) {
        ConvertShortLine<Step>(from, to, samples, job);
        return;
    }
    const auto convertAt = [&](std::size_t sample) HWY_ATTR {
        Step::Convert(from + sample * Step::SourceBytes, Advance(to, sample * Step::Bytes), job);
    };
    std::size_t sample = 0;
    for (; sample + lanes <= samples; sample += lanes) {
        convertAt(sample);
    }
    if (sample < samples) {
        convertAt(samples - lanes);
    }
}

// Where a vector of each plane begins a cache line: a sample before the first whole vector, or
// `lanes` if there is none.
template <class Step>
HWY_INLINE std::size_t FirstStreamed(const Line& to, std::size_t lanes) {
    const auto isAligned = [](const std::uint8_t* at) {
        return reinterpret_cast<std::uintptr_t>(at) % CacheLineBytes == 0;
    };
    for (std::size_t sample = 0; sample < lanes; ++sample) {
        const Line at = Advance(to, sample * Step::Bytes);
        if (isAligned(at[0]) && (Step::Planes == 1 || (isAligned(at[1]) && isAligned(at[2])))) {
            return sample;
        }
    }
    return lanes;
}

// Past the caches but for the ends, which share their cache lines with other lines. Nothing that
// went there is written again: that would fetch it.
template <class Step>
HWY_INLINE void StreamLine(const std::uint8_t* from, const Line& to, std::size_t samples,
                           const ConversionJob& job) {
    using Streamed = typename Step::Streamed;
    const std::size_t lanes = Streamed::Lanes();
    std::size_t sample = FirstStreamed<Step>(to, lanes);
    if (sample == lanes || samples < 2 * lanes) {
        ConvertLine<Step>(from, to, samples, job);
        return;
    }
    if (sample > 0) {
        ConvertLine<Step>(from, to, sample, job);
    }
    for (; sample + lanes <= samples; sample += lanes) {
        Streamed::Convert(from + sample * Step::SourceBytes, Advance(to, sample * Step::Bytes),
                          job);
    }
    if (sample < samples) {
        ConvertLine<Step>(from + sample * Step::SourceBytes, Advance(to, sample * Step::Bytes),
                          samples - sample, job);
    }
}

// Whether the lines follow each other without a gap in all planes, so that they may be taken for
// one: that saves the end of each.
template <class Step>
HWY_INLINE bool AreOneLine(const ConversionJob& job, std::size_t samples) {
    const auto isWhole = [=](std::ptrdiff_t stride, std::size_t bytes) {
        return stride == static_cast<std::ptrdiff_t>(samples * bytes);
    };
    bool whole = isWhole(job.sourceStride[0], Step::SourceBytes);
    for (std::size_t plane = 0; plane < Step::Planes; ++plane) {
        whole = whole && isWhole(job.destinationStride[plane], Step::Bytes);
    }
    return whole;
}

template <class Step, std::size_t SamplesPerPixel = 1>
HWY_INLINE void ConvertLines(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    std::size_t samples = std::size_t{job.width} * SamplesPerPixel;
    if (AreOneLine<Step>(job, samples)) {
        samples *= end - first;
        end = first + 1;
    }
    if constexpr (HasStreams && requires { typename Step::Streamed; }) {
        if (job.streams) {
            for (std::uint32_t line = first; line < end; ++line) {
                StreamLine<Step>(SourceLine(job, line), DestinationLine(job, line), samples, job);
            }
            return;
        }
    }
    for (std::uint32_t line = first; line < end; ++line) {
        ConvertLine<Step>(SourceLine(job, line), DestinationLine(job, line), samples, job);
    }
}

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
