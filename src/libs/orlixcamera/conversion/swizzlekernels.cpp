// Kernels that only move the bytes of 8-bit pixels: they look up each byte of a block of the
// destination in a block of the source, which is faster than taking the channels apart
// and putting them together again.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/swizzlekernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

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

#if HWY_TARGET == HWY_AVX3_DL

// A vector of the destination is looked up in one or two vectors of the source. As many pixels as a
// vector has bytes are whole vectors on either side.
template <std::size_t Size>
struct Part {
    alignas(Size) std::array<std::uint8_t, Size> from{};
    std::uint64_t opaque = 0;
    std::size_t first = 0;  // where the vectors begin in the bytes of the pixels
    std::size_t second = 0;
    bool two = false;
};

struct Span {
    std::size_t low, high;
};

// The places of the lowest and the highest byte that a part needs.
template <std::size_t Size>
constexpr Span FindSpan(const Swizzle& order, std::size_t number) {
    Span span{Size * order.sourceBytes, 0};
    for (std::size_t place = Size * number; place < Size * (number + 1); ++place) {
        const std::uint8_t from = order.from[place % order.destinationBytes];
        if (from != Opaque) {
            const std::size_t byte = place / order.destinationBytes * order.sourceBytes + from;
            span = {std::min(span.low, byte), std::max(span.high, byte)};
        }
    }
    return span;
}

// Vectors begin at a whole number of vectors where that does, since most others are in two cache
// lines.
template <std::size_t Size>
constexpr Part<Size> PlaceVectors(const Swizzle& order, std::size_t number) {
    const auto [low, high] = FindSpan<Size>(order, number);
    const std::size_t whole = low / Size * Size;
    Part<Size> part;
    part.two = high - low >= Size;
    if (!part.two) {
        part.first = high < whole + Size ? whole : std::min(low, Size * (order.sourceBytes - 1));
    } else {
        part.first = high < whole + 2 * Size ? whole : low;
        part.second =
            high / Size * Size <= part.first + Size ? high / Size * Size : high - (Size - 1);
    }
    return part;
}

template <std::size_t Size>
constexpr Part<Size> MakePart(const Swizzle& order, std::size_t number) {
    Part<Size> part = PlaceVectors<Size>(order, number);
    for (std::size_t lane = 0; lane < Size; ++lane) {
        const std::size_t place = Size * number + lane;
        const std::uint8_t from = order.from[place % order.destinationBytes];
        if (from == Opaque) {
            part.opaque |= std::uint64_t{1} << lane;
            continue;
        }
        const std::size_t byte = place / order.destinationBytes * order.sourceBytes + from;
        const std::size_t index =
            byte < part.first + Size ? byte - part.first : byte - part.second + Size;
        part.from[lane] = static_cast<std::uint8_t>(index);
    }
    return part;
}

template <const Swizzle& Order, std::size_t Size, std::size_t Number>
inline constexpr auto PartOf = MakePart<Size>(Order, Number);

// Whole cache lines go past the caches. Into them this processor writes 64 bytes in two parts, and
// gets on better with vectors of 32.
constexpr std::size_t VectorSize(Stores way) {
    return way == Stores::Streamed ? 64 : 32;
}

HWY_INLINE void StoreVector(__m512i value, std::uint8_t* to) {
    hn::Stream(V8{value}, D8(), to);
}
HWY_INLINE void StoreVector(__m256i value, std::uint8_t* to) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}

template <const Swizzle& Order, std::size_t Number>
HWY_INLINE __m512i LookUpLong(const std::uint8_t* from) {
    constexpr const auto& part = PartOf<Order, 64, Number>;
    const __m512i table = _mm512_load_si512(part.from.data());
    const __m512i first = _mm512_loadu_si512(from + part.first);
    if constexpr (part.two) {
        return _mm512_permutex2var_epi8(first, table, _mm512_loadu_si512(from + part.second));
    } else if constexpr (part.opaque != 0) {
        return _mm512_mask_permutexvar_epi8(_mm512_set1_epi8(-1), ~part.opaque, table, first);
    } else {
        return _mm512_permutexvar_epi8(table, first);
    }
}

HWY_INLINE __m256i LoadShort(const std::uint8_t* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

template <const Swizzle& Order, std::size_t Number>
HWY_INLINE __m256i LookUpShort(const std::uint8_t* from) {
    constexpr const auto& part = PartOf<Order, 32, Number>;
    const __m256i table = LoadShort(part.from.data());
    const __m256i first = LoadShort(from + part.first);
    if constexpr (part.two) {
        return _mm256_permutex2var_epi8(first, table, LoadShort(from + part.second));
    } else if constexpr (part.opaque != 0) {
        return _mm256_mask_permutexvar_epi8(_mm256_set1_epi8(-1),
                                            static_cast<__mmask32>(~part.opaque), table, first);
    } else {
        return _mm256_permutexvar_epi8(table, first);
    }
}

template <const Swizzle& Order, Stores Way = Stores::Cached>
struct SwizzleStep {
    using Streamed = SwizzleStep<Order, Stores::Streamed>;
    static constexpr std::size_t MaxLanes = VectorSize(Way);
    static constexpr std::size_t SourceBytes = Order.sourceBytes;
    static constexpr std::size_t Bytes = Order.destinationBytes;
    static constexpr std::size_t Planes = 1;

    static HWY_INLINE std::size_t Lanes() { return MaxLanes; }
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        StoreParts(from, to[0], std::make_index_sequence<Bytes>());
    }

private:
    template <std::size_t... Numbers>
    static HWY_INLINE void StoreParts(const std::uint8_t* from, std::uint8_t* to,
                                      std::index_sequence<Numbers...>) {
        if constexpr (Way == Stores::Streamed) {
            (StoreVector(LookUpLong<Order, Numbers>(from), to + MaxLanes * Numbers), ...);
        } else {
            (StoreVector(LookUpShort<Order, Numbers>(from), to + MaxLanes * Numbers), ...);
        }
    }
};

template <const Swizzle& Order>
HWY_INLINE void SwizzleLines(const ConversionJob& job, std::uint32_t first, std::uint32_t end) {
    ConvertLines<SwizzleStep<Order>>(job, first, end);
}

#else

// Bytes are looked up within blocks of so many.
constexpr std::size_t BlockBytes = 16;

// Where both pixels have four bytes, blocks fill a vector; otherwise one block is done at a time,
// and moves on by fewer bytes than it is long.
constexpr bool FillsVectors(const Swizzle& swizzle) {
    return swizzle.sourceBytes == 4 && swizzle.destinationBytes == 4;
}

template <const Swizzle& Order>
using TagFor = std::conditional_t<FillsVectors(Order), D8, hn::CappedTag<std::uint8_t, BlockBytes>>;

// The pixels of a block that are whole in the source and in the destination.
constexpr std::size_t BlockPixels(const Swizzle& swizzle) {
    return BlockBytes / std::max(swizzle.sourceBytes, swizzle.destinationBytes);
}

// An entry with the sign bit gives 255.
template <class D>
HWY_INLINE hn::Vec<D> LookUp(D d, hn::Vec<D> block, hn::Vec<D> table) {
    const hn::RebindToSigned<D> bytes;
    const auto opaque = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(bytes, table)));
    return hn::Or(hn::TableLookupBytesOr0(block, table), opaque);
}

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
    return hn::LoadDup128(TagFor<Order>(), table);
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

#endif

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
