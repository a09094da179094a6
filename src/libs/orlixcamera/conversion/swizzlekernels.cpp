// Kernels that only move the bytes of 8-bit pixels: they look up each byte of a block of the
// destination in a block of the source, which is faster than taking the channels apart
// and putting them together again.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/swizzlekernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <type_traits>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

// An entry for a byte that is 255 whatever the source holds.
constexpr std::uint8_t Opaque = 0x80;

// Where each byte of a destination pixel is found in the source pixel.
struct Swizzle {
    std::size_t sourceBytes;
    std::size_t destinationBytes;
    std::uint8_t from[4];
};

// Bytes are looked up within blocks of so many. Longer ones would do, but most of their places in
// memory are in two cache lines.
#if HWY_TARGET == HWY_AVX3_DL
constexpr std::size_t BlockBytes = 32;
#else
constexpr std::size_t BlockBytes = 16;
#endif

// Where both pixels have four bytes, blocks fill a vector; otherwise one block is done at a time,
// and moves on by fewer bytes than it is long.
constexpr bool FillsVectors(const Swizzle& swizzle) {
    return BlockBytes == 16 && swizzle.sourceBytes == 4 && swizzle.destinationBytes == 4;
}

template <const Swizzle& Order>
using TagFor = std::conditional_t<FillsVectors(Order), D8, hn::CappedTag<std::uint8_t, BlockBytes>>;

// The pixels of a block that are whole in the source and in the destination.
constexpr std::size_t BlockPixels(const Swizzle& swizzle) {
    return BlockBytes / std::max(swizzle.sourceBytes, swizzle.destinationBytes);
}

// An entry with the sign bit gives 255.
#if HWY_TARGET == HWY_AVX3_DL
template <class D>
HWY_INLINE hn::Vec<D> LookUp(D, hn::Vec<D> block, hn::Vec<D> table) {
    const __mmask32 opaque = _mm256_movepi8_mask(table.raw);
    return {_mm256_mask_permutexvar_epi8(_mm256_set1_epi8(-1), ~opaque, table.raw, block.raw)};
}
#else
template <class D>
HWY_INLINE hn::Vec<D> LookUp(D d, hn::Vec<D> block, hn::Vec<D> table) {
    const hn::RebindToSigned<D> bytes;
    const auto opaque = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(bytes, table)));
    return hn::Or(hn::TableLookupBytesOr0(block, table), opaque);
}
#endif

// The table of a block. What follows the block's last pixel doesn't matter: the next block
// overwrites it.
template <const Swizzle& Order>
HWY_INLINE hn::Vec<TagFor<Order>> MakeTable() {
    HWY_ALIGN std::uint8_t table[BlockBytes] = {};
    for (std::size_t index = 0; index < BlockPixels(Order) * Order.destinationBytes; ++index) {
        const std::uint8_t from = Order.from[index % Order.destinationBytes];
        const std::size_t pixel = index / Order.destinationBytes;
        table[index] =
            from == Opaque ? Opaque : static_cast<std::uint8_t>(pixel * Order.sourceBytes + from);
    }
#if HWY_TARGET == HWY_AVX3_DL
    return hn::Load(TagFor<Order>(), table);
#else
    return hn::LoadDup128(TagFor<Order>(), table);
#endif
}

template <const Swizzle& Order>
HWY_INLINE void SwizzlePixel(const std::uint8_t* from, std::uint8_t* to) {
    for (std::size_t index = 0; index < Order.destinationBytes; ++index) {
        const std::uint8_t byte = Order.from[index];
        to[index] = byte == Opaque ? std::uint8_t{255} : from[byte];
    }
}

template <const Swizzle& Order>
HWY_INLINE void SwizzleLine(const std::uint8_t* from, std::uint8_t* to, std::size_t width) {
    const TagFor<Order> d;
    const auto table = MakeTable<Order>();
    const std::size_t pixels = BlockPixels(Order) * hn::Lanes(d) / BlockBytes;
    // A step reads and writes whole vectors, which may reach beyond its own pixels.
    const std::size_t shorter = std::min(Order.sourceBytes, Order.destinationBytes);
    const std::size_t reach = (hn::Lanes(d) + shorter - 1) / shorter;
    std::size_t pixel = 0;
    for (; pixel + reach <= width; pixel += pixels) {
        const auto block = hn::LoadU(d, from + pixel * Order.sourceBytes);
        hn::StoreU(LookUp(d, block, table), d, to + pixel * Order.destinationBytes);
    }
    for (; pixel < width; ++pixel) {
        SwizzlePixel<Order>(from + pixel * Order.sourceBytes, to + pixel * Order.destinationBytes);
    }
}

template <const Swizzle& Order>
HWY_INLINE void SwizzleLines(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    for (std::uint32_t line = first; line < end; ++line) {
        SwizzleLine<Order>(SourceLine(job, line), DestinationLine(job, line)[0], job.width);
    }
}

// Named as the kernels that use them.
constexpr Swizzle Rgb8ToBgra8Order{3, 4, {2, 1, 0, Opaque}};
constexpr Swizzle Rgb8ToBgr8Order{3, 3, {2, 1, 0}};
constexpr Swizzle Bgr8ToBgra8Order{3, 4, {0, 1, 2, Opaque}};
constexpr Swizzle Rgba8ToBgra8Order{4, 4, {2, 1, 0, 3}};
constexpr Swizzle Rgba8ToBgr8Order{4, 3, {2, 1, 0}};
constexpr Swizzle Rgba8ToRgb8Order{4, 3, {0, 1, 2}};

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                                              \
    void Source##To##Destination##Lines(const ConversionJob& job, std::uint32_t first, \
                                        std::uint32_t end) {                           \
        SwizzleLines<Source##To##Destination##Order>(job, first, end);                 \
    }
ORLIX_SWIZZLE_KERNELS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
ORLIX_SWIZZLE_KERNELS(ORLIX_DISPATCH_KERNEL)
}  // namespace Orlix
#endif
