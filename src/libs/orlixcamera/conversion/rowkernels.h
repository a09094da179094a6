// What the row stages of samplekernel.cpp are made of: functions that turn one line of samples (or
// two, or the four that a demosaiced pair of lines needs) into another form. Each runs on the best
// instruction set of the machine, touches no byte beyond what it is given unless it says so, and
// owns nothing; any thread may call it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Orlix {

// Reads `count` samples from the beginning of a line into bytes (the most significant 8 bits of
// each) or into words, moved up by `shiftUp`. Bytes of 8 bits or more are never moved up.
using RowReader = void (*)(const std::uint8_t* line, std::size_t count, std::uint8_t* to,
                           int shiftUp);

// unpackkernels.cpp: two readers for each packing, and the bits that a sample takes in its line.
// Bits are samples that follow each other bit by bit; Triples are two samples in three bytes; Words
// have their unused upper bits cleared.
#define ORLIX_PACKINGS(PACKING) \
    PACKING(Bits1, 1)           \
    PACKING(Bits2, 2)           \
    PACKING(Bits4, 4)           \
    PACKING(Bits10, 10)         \
    PACKING(Bits12, 12)         \
    PACKING(Triples10, 12)      \
    PACKING(Triples12, 12)      \
    PACKING(Bytes, 8)           \
    PACKING(Words10, 16)        \
    PACKING(Words12, 16)        \
    PACKING(Words16, 16)

#define ORLIX_DECLARE_READERS(Name, sampleBits)                                          \
    void Read##Name##To8(const std::uint8_t* line, std::size_t count, std::uint8_t* to,  \
                         int shiftUp);                                                   \
    void Read##Name##To16(const std::uint8_t* line, std::size_t count, std::uint8_t* to, \
                          int shiftUp);
ORLIX_PACKINGS(ORLIX_DECLARE_READERS)
#undef ORLIX_DECLARE_READERS

// Two lines of raw samples that become colour. A row of samples may be read one sample before its
// first, which is there and is the first's neighbour, and a vector beyond its end, where it only
// has to be memory, but for the last sample's neighbour.
struct BayerLines {
    std::array<const std::uint8_t*, 4> rows;  // the one above, the two, the one below
    // The planes of both lines. A line that stands alone is there twice; its rows are the first
    // three.
    std::array<std::array<std::uint8_t*, 3>, 2> to;
    std::size_t width;
    bool redFirst;            // the first line has red pixels
    std::uint32_t ownColumn;  // the first column of the first line that isn't green
    int shiftUp;              // of words, after the interpolation
    // The lines go past the caches. Each plane's first pixel begins a cache line, and there are as
    // many pixels as whole vectors have; instruction sets without such vectors don't care.
    bool streams = false;
};
using Demosaic = void (*)(const BayerLines& lines);

// demosaickernels.cpp: by form of the lines; those to 16 bits take words
#define ORLIX_DEMOSAICS(DEMOSAIC) \
    DEMOSAIC(Rgb8)                \
    DEMOSAIC(Bgr8)                \
    DEMOSAIC(Bgra8)               \
    DEMOSAIC(Rgb8Planar)          \
    DEMOSAIC(Mono8)               \
    DEMOSAIC(Rgb16)               \
    DEMOSAIC(Rgb16Planar)

#define ORLIX_DECLARE_DEMOSAIC(Name) void DemosaicTo##Name(const BayerLines& lines);
ORLIX_DEMOSAICS(ORLIX_DECLARE_DEMOSAIC)
#undef ORLIX_DECLARE_DEMOSAIC

// A line of luma and chroma that becomes colour. In packed formats `luma` has both.
struct YuvLine {
    const std::uint8_t* luma;
    const std::uint8_t* chroma;  // blue and red, for each pair of pixels
    std::array<std::uint8_t*, 3> to;
    std::size_t width;
    bool streams;  // past the caches where that is possible
};
using YuvConversion = void (*)(const YuvLine& line);

// yuvsourcekernels.cpp: by order of luma and chroma, and by form of the line
#define ORLIX_YUV_SOURCES(KERNEL) \
    KERNEL(Uyvy, Rgb8)            \
    KERNEL(Uyvy, Bgr8)            \
    KERNEL(Uyvy, Bgra8)           \
    KERNEL(Uyvy, Rgb8Planar)      \
    KERNEL(Yuyv, Rgb8)            \
    KERNEL(Yuyv, Bgr8)            \
    KERNEL(Yuyv, Bgra8)           \
    KERNEL(Yuyv, Rgb8Planar)      \
    KERNEL(Semiplanar, Rgb8)      \
    KERNEL(Semiplanar, Bgr8)      \
    KERNEL(Semiplanar, Bgra8)     \
    KERNEL(Semiplanar, Rgb8Planar)

#define ORLIX_DECLARE_YUV(Source, Destination) \
    void Source##LineTo##Destination(const YuvLine& line);
ORLIX_YUV_SOURCES(ORLIX_DECLARE_YUV)
#undef ORLIX_DECLARE_YUV

// shufflekernels.cpp: bytes and words that change places.
// `count` bytes, every other one, beginning with the first (even) or second (odd).
void TakeEvenBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
void TakeOddBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
// The same, each byte twice; `count` is that of the bytes that are written.
void DoubleEvenBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
void DoubleOddBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to);
// (a + b + 1) >> 1 of bytes.
void AverageBytes(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                  std::uint8_t* to);
// Blue and red words of `width` pixels change places. The rows are different ones.
void SwapWords(const std::uint8_t* from, std::size_t width, std::uint8_t* to);
// Three planes side by side, pixel by pixel.
using Planes = std::array<const std::uint8_t*, 3>;
void JoinBytePlanes(const Planes& from, std::size_t width, std::uint8_t* to);
void JoinWordPlanes(const Planes& from, std::size_t width, std::uint8_t* to);
// The upper bytes of planes of words.
void JoinUpperPlanes(const Planes& from, std::size_t width, std::uint8_t* to);

}  // namespace Orlix
