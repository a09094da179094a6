// Kernels from colour to planes of luma and chroma.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/yuvkernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/weightedsums.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

struct Chroma {
    V16 blue, red;
};

// From the sums over 2^K pixels.
template <int K>
HWY_INLINE Chroma ChromaOf(const Colour<V16>& sums) {
    return {ChromaOfSums<BlueDifference, K>(sums.b, sums.g, sums.r),
            ChromaOfSums<RedDifference, K>(sums.r, sums.g, sums.b)};
}

// Chroma for each pixel.
struct FullChroma {
    static constexpr std::size_t Bytes = 1;
    static constexpr std::size_t Planes = 3;
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreBytes<Way>(Luma(pixel), to[0]);
        const auto even = ChromaOf<0>({EvenBytes(pixel.r), EvenBytes(pixel.g), EvenBytes(pixel.b)});
        const auto odd = ChromaOf<0>({OddBytes(pixel.r), OddBytes(pixel.g), OddBytes(pixel.b)});
        StoreBytes<Way>(JoinBytes(even.blue, odd.blue), to[1]);
        StoreBytes<Way>(JoinBytes(even.red, odd.red), to[2]);
    }
};

// The sums of neighbouring pixels, one word a pair.
HWY_INLINE Colour<V16> SumOfNeighbours(const Colour<V8>& pixel) {
    return {WeighBytes(pixel.r, 1, 1), WeighBytes(pixel.g, 1, 1), WeighBytes(pixel.b, 1, 1)};
}

HWY_INLINE Colour<V16> Sum(const Colour<V16>& a, const Colour<V16>& b) {
    return {hn::Add(a.r, b.r), hn::Add(a.g, b.g), hn::Add(a.b, b.b)};
}

HWY_INLINE void StoreNarrow(V16 value, std::uint8_t* to) {
    const hn::RebindToSigned<D16> words;
    hn::StoreU(hn::DemoteTo(D8Half(), hn::BitCast(words, value)), D8Half(), to);
}

// Chroma of blocks of two pixels in each of so many lines.
template <int Lines>
HWY_INLINE void StoreChroma(const Colour<V16>& sums, std::uint8_t* u, std::uint8_t* v) {
    const auto chroma = ChromaOf<Lines>(sums);
    StoreNarrow(chroma.blue, u);
    StoreNarrow(chroma.red, v);
}

// The lines that a block of chroma covers: one, or two for 4:2:0, where the two are one line at
// the end of a picture of odd height.
struct BlockLines {
    std::array<const std::uint8_t*, 2> from;
    std::array<std::uint8_t*, 2> luma;
    std::array<std::uint8_t*, 2> chroma;  // blue, red
};

// Stores the luma of a line and gives its sums.
template <class Source>
HWY_INLINE Colour<V16> ConvertBlockLuma(const BlockLines& block, std::size_t line,
                                        const ConversionJob& job) {
    const auto loaded = Source::Load(block.from[line], job.shiftDown);
    const Colour<V8> pixel{Red(loaded), Green(loaded), Blue(loaded)};
    hn::StoreU(Luma(pixel), D8(), block.luma[line]);
    return SumOfNeighbours(pixel);
}

template <class Source, int Lines>
HWY_INLINE void ConvertBlocks(const BlockLines& block, const ConversionJob& job) {
    Colour<V16> sums = ConvertBlockLuma<Source>(block, 0, job);
    if constexpr (Lines == 2) {
        sums = Sum(sums, ConvertBlockLuma<Source>(block, 1, job));
    }
    StoreChroma<Lines>(sums, block.chroma[0], block.chroma[1]);
}

template <std::size_t SourceBytes>
HWY_INLINE BlockLines At(const BlockLines& block, std::size_t pixel) {
    return {{block.from[0] + pixel * SourceBytes, block.from[1] + pixel * SourceBytes},
            {block.luma[0] + pixel, block.luma[1] + pixel},
            {block.chroma[0] + pixel / 2, block.chroma[1] + pixel / 2}};
}

// The pixels of a line that don't fill a vector. The pixel at an odd end is there twice, so that
// its block has the mean of what there is.
template <class Source, int Lines>
HWY_NOINLINE void ConvertLastBlocks(const BlockLines& block, std::size_t pixels,
                                    const ConversionJob& job) {
    constexpr std::size_t Lanes = hn::MaxLanes(D8());
    HWY_ALIGN std::uint8_t in[2][Lanes * Source::Bytes] = {};
    HWY_ALIGN std::uint8_t luma[2][Lanes];
    HWY_ALIGN std::uint8_t chroma[2][Lanes];
    for (std::size_t line = 0; line < Lines; ++line) {
        std::memcpy(in[line], block.from[line], pixels * Source::Bytes);
        if (pixels % 2 != 0) {
            std::memcpy(in[line] + pixels * Source::Bytes,
                        block.from[line] + (pixels - 1) * Source::Bytes, Source::Bytes);
        }
    }
    ConvertBlocks<Source, Lines>({{in[0], in[1]}, {luma[0], luma[1]}, {chroma[0], chroma[1]}}, job);
    for (std::size_t line = 0; line < Lines; ++line) {
        std::memcpy(block.luma[line], luma[line], pixels);
    }
    for (std::size_t plane = 0; plane < 2; ++plane) {
        std::memcpy(block.chroma[plane], chroma[plane], (pixels + 1) / 2);
    }
}

template <class Source, int Lines>
HWY_INLINE void ConvertBlockLines(const BlockLines& block, const ConversionJob& job) {
    const std::size_t lanes = hn::Lanes(D8());
    const std::size_t width = job.width;
    std::size_t pixel = 0;
    for (; pixel + lanes <= width; pixel += lanes) {
        ConvertBlocks<Source, Lines>(At<Source::Bytes>(block, pixel), job);
    }
    if (pixel < width) {
        ConvertLastBlocks<Source, Lines>(At<Source::Bytes>(block, pixel), width - pixel, job);
    }
}

template <class Source, int Lines>
HWY_INLINE void ConvertSubsampled(const ConversionJob& job, std::uint32_t first,
                                  std::uint32_t end) {
    for (std::uint64_t start = first; start < end; start += Lines) {
        const auto line = static_cast<std::uint32_t>(start);
        const std::uint32_t next = std::min(line + (Lines - 1), end - 1);
        const Line to = DestinationLine(job, line);
        const auto chromaLine = static_cast<std::ptrdiff_t>(line / Lines);
        const BlockLines lines{{SourceLine(job, line), SourceLine(job, next)},
                               {to[0], DestinationLine(job, next)[0]},
                               {job.destination[1] + chromaLine * job.destinationStride[1],
                                job.destination[2] + chromaLine * job.destinationStride[2]}};
        ConvertBlockLines<Source, Lines>(lines, job);
    }
}

template <class Source>
void ConvertToYuv444(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    ConvertLines<ByteStep<Source, FullChroma>>(job, first, end);
}
template <class Source>
void ConvertToYuv422(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    ConvertSubsampled<Source, 1>(job, first, end);
}
template <class Source>
void ConvertToYuv420(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    ConvertSubsampled<Source, 2>(job, first, end);
}

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                                              \
    void Source##To##Destination##Lines(const ConversionJob& job, std::uint32_t first, \
                                        std::uint32_t end) {                           \
        ConvertTo##Destination<Source>(job, first, end);                               \
    }
ORLIX_YUV_KERNELS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
ORLIX_YUV_KERNELS(ORLIX_DISPATCH_KERNEL)
}  // namespace Orlix
#endif
