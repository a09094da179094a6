// How vectors are written: into the caches, or past them. A picture that the caches can't hold
// would be fetched into them only to be overwritten and written back, which is a third of what
// memory has to carry. Past the caches go whole cache lines only, so that vectors have to be as
// long as those. Included once for each instruction set by the kernel files, hence the guard of its
// own kind.
#if defined(ORLIX_VECTORSTORES_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORLIX_VECTORSTORES_H
#undef ORLIX_VECTORSTORES_H
#else
#define ORLIX_VECTORSTORES_H
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D8 = hn::ScalableTag<std::uint8_t>;
using D16 = hn::ScalableTag<std::uint16_t>;
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;

// Streamed takes an address at the beginning of a cache line.
enum class Stores { Cached, Streamed };

constexpr std::size_t CacheLineBytes = 64;
constexpr bool HasStreams = hn::MaxLanes(D8()) == CacheLineBytes;

template <Stores Way>
HWY_INLINE void StoreBytes(V8 value, std::uint8_t* to) {
    if constexpr (Way == Stores::Streamed) {
        hn::Stream(value, D8(), to);
    } else {
        hn::StoreU(value, D8(), to);
    }
}

// Lines begin at any byte, so words are stored through bytes.
template <Stores Way = Stores::Cached>
HWY_INLINE void StoreWords(V16 value, std::uint8_t* to) {
    StoreBytes<Way>(hn::BitCast(D8(), value), to);
}

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
