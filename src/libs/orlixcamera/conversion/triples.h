// Three channels from and to memory where they lie side by side. Highway's own way through blocks
// of 16 bytes costs many shuffles on long vectors; instruction sets that look up bytes (or words)
// in a whole vector need two look-ups for each vector.
// Included once for each instruction set by the kernel files, hence the guard of its own kind.
#if defined(ORLIX_TRIPLES_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORLIX_TRIPLES_H
#undef ORLIX_TRIPLES_H
#else
#define ORLIX_TRIPLES_H
#endif

#include <hwy/highway.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "orlixcamera/conversion/vectorstores.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX3

// For each lane of one of three vectors in memory: which lane of which channel it is. The table
// addresses channel 0 and 1 as one list; lanes of channel 2 are in the mask.
template <class Lane, std::size_t Lanes>
struct TripleTable {
    alignas(64) std::array<Lane, Lanes> from{};
    std::uint64_t third = 0;
};

// To memory: vector `Part` of three takes its lanes from the channels.
template <class Lane, std::size_t Lanes, std::size_t Part>
constexpr TripleTable<Lane, Lanes> MakeStoreTable() {
    TripleTable<Lane, Lanes> table;
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
        const std::size_t place = Part * Lanes + lane;
        const std::size_t channel = place % 3;
        table.from[lane] = static_cast<Lane>(place / 3 + (channel == 1 ? Lanes : 0));
        table.third |= channel == 2 ? std::uint64_t{1} << lane : 0;
    }
    return table;
}

// From memory: channel `Part` takes its lanes from the three vectors.
template <class Lane, std::size_t Lanes, std::size_t Part>
constexpr TripleTable<Lane, Lanes> MakeLoadTable() {
    TripleTable<Lane, Lanes> table;
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
        const std::size_t place = 3 * lane + Part;
        table.from[lane] = static_cast<Lane>(place % (2 * Lanes));
        table.third |= place >= 2 * Lanes ? std::uint64_t{1} << lane : 0;
    }
    return table;
}

template <class Lane, std::size_t Lanes, std::size_t Part>
inline constexpr auto StoreTable = MakeStoreTable<Lane, Lanes, Part>();
template <class Lane, std::size_t Lanes, std::size_t Part>
inline constexpr auto LoadTable = MakeLoadTable<Lane, Lanes, Part>();

HWY_INLINE __m512i LookUpWords(__m512i a, __m512i b, __m512i c,
                               const TripleTable<std::uint16_t, 32>& table) {
    const __m512i from = _mm512_load_si512(table.from.data());
    const __m512i both = _mm512_permutex2var_epi16(a, from, b);
    return _mm512_mask_permutexvar_epi16(both, static_cast<__mmask32>(table.third), from, c);
}

HWY_INLINE void LoadTriples(const std::uint8_t* from, V16& a, V16& b, V16& c) {
    const __m512i x = _mm512_loadu_si512(from);
    const __m512i y = _mm512_loadu_si512(from + 64);
    const __m512i z = _mm512_loadu_si512(from + 128);
    a = V16{LookUpWords(x, y, z, LoadTable<std::uint16_t, 32, 0>)};
    b = V16{LookUpWords(x, y, z, LoadTable<std::uint16_t, 32, 1>)};
    c = V16{LookUpWords(x, y, z, LoadTable<std::uint16_t, 32, 2>)};
}

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreTriples(V16 a, V16 b, V16 c, std::uint8_t* to) {
    StoreBytes<Way>(V8{LookUpWords(a.raw, b.raw, c.raw, StoreTable<std::uint16_t, 32, 0>)}, to);
    StoreBytes<Way>(V8{LookUpWords(a.raw, b.raw, c.raw, StoreTable<std::uint16_t, 32, 1>)},
                    to + 64);
    StoreBytes<Way>(V8{LookUpWords(a.raw, b.raw, c.raw, StoreTable<std::uint16_t, 32, 2>)},
                    to + 128);
}

#else

// Lines begin at any byte, and words are loaded from any; the emulation needs them aligned, as the
// language does.
HWY_INLINE void LoadTriples(const std::uint8_t* from, V16& a, V16& b, V16& c) {
#if HWY_TARGET == HWY_EMU128
    HWY_ALIGN std::uint16_t words[3 * hn::MaxLanes(D16())];
    std::memcpy(words, from, sizeof(words));
#else
    const auto* words = reinterpret_cast<const std::uint16_t*>(from);
#endif
    hn::LoadInterleaved3(D16(), words, a, b, c);
}

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreTriples(V16 a, V16 b, V16 c, std::uint8_t* to) {
#if HWY_TARGET == HWY_EMU128
    HWY_ALIGN std::uint16_t words[3 * hn::MaxLanes(D16())];
    hn::StoreInterleaved3(a, b, c, D16(), words);
    std::memcpy(to, words, sizeof(words));
#else
    hn::StoreInterleaved3(a, b, c, D16(), reinterpret_cast<std::uint16_t*>(to));
#endif
}

#endif

#if HWY_TARGET == HWY_AVX3_DL

HWY_INLINE __m512i LookUpBytes(__m512i a, __m512i b, __m512i c,
                               const TripleTable<std::uint8_t, 64>& table) {
    const __m512i from = _mm512_load_si512(table.from.data());
    const __m512i both = _mm512_permutex2var_epi8(a, from, b);
    return _mm512_mask_permutexvar_epi8(both, static_cast<__mmask64>(table.third), from, c);
}

HWY_INLINE void LoadTriples(const std::uint8_t* from, V8& a, V8& b, V8& c) {
    const __m512i x = _mm512_loadu_si512(from);
    const __m512i y = _mm512_loadu_si512(from + 64);
    const __m512i z = _mm512_loadu_si512(from + 128);
    a = V8{LookUpBytes(x, y, z, LoadTable<std::uint8_t, 64, 0>)};
    b = V8{LookUpBytes(x, y, z, LoadTable<std::uint8_t, 64, 1>)};
    c = V8{LookUpBytes(x, y, z, LoadTable<std::uint8_t, 64, 2>)};
}

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreTriples(V8 a, V8 b, V8 c, std::uint8_t* to) {
    StoreBytes<Way>(V8{LookUpBytes(a.raw, b.raw, c.raw, StoreTable<std::uint8_t, 64, 0>)}, to);
    StoreBytes<Way>(V8{LookUpBytes(a.raw, b.raw, c.raw, StoreTable<std::uint8_t, 64, 1>)}, to + 64);
    StoreBytes<Way>(V8{LookUpBytes(a.raw, b.raw, c.raw, StoreTable<std::uint8_t, 64, 2>)},
                    to + 128);
}

// One channel three times.
template <Stores Way, std::size_t Part>
HWY_INLINE void StoreThird(V8 value, std::uint8_t* to) {
    alignas(64) static constexpr auto from = [] {
        std::array<std::uint8_t, 64> places{};
        for (std::size_t lane = 0; lane < 64; ++lane) {
            places[lane] = static_cast<std::uint8_t>((Part * 64 + lane) / 3);
        }
        return places;
    }();
    StoreBytes<Way>(V8{_mm512_permutexvar_epi8(_mm512_load_si512(from.data()), value.raw)},
                    to + Part * 64);
}

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreThrice(V8 value, std::uint8_t* to) {
    StoreThird<Way, 0>(value, to);
    StoreThird<Way, 1>(value, to);
    StoreThird<Way, 2>(value, to);
}

// Part of four vectors of pixels of four bytes, the last of which is 255.
template <Stores Way, std::size_t Part>
HWY_INLINE void StoreOpaqueQuarter(V8 a, V8 b, V8 c, std::uint8_t* to) {
    alignas(64) static constexpr auto from = [] {
        std::array<std::uint8_t, 64> places{};
        for (std::size_t lane = 0; lane < 64; ++lane) {
            const std::size_t pixel = Part * 16 + lane / 4;
            places[lane] = static_cast<std::uint8_t>(pixel + (lane % 4 == 1 ? 64 : 0));
        }
        return places;
    }();
    constexpr __mmask64 Third = 0x4444444444444444;
    const __m512i places = _mm512_load_si512(from.data());
    const __m512i two = _mm512_permutex2var_epi8(a.raw, places, b.raw);
    const __m512i three = _mm512_mask_permutexvar_epi8(two, Third, places, c.raw);
    StoreBytes<Way>(V8{_mm512_or_si512(three, _mm512_set1_epi32(static_cast<int>(0xFF000000)))},
                    to + Part * 64);
}

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreOpaqueQuads(V8 a, V8 b, V8 c, std::uint8_t* to) {
    StoreOpaqueQuarter<Way, 0>(a, b, c, to);
    StoreOpaqueQuarter<Way, 1>(a, b, c, to);
    StoreOpaqueQuarter<Way, 2>(a, b, c, to);
    StoreOpaqueQuarter<Way, 3>(a, b, c, to);
}

#else

template <Stores Way = Stores::Cached>
HWY_INLINE void StoreOpaqueQuads(V8 a, V8 b, V8 c, std::uint8_t* to) {
    hn::StoreInterleaved4(a, b, c, hn::Set(D8(), 255), D8(), to);
}
HWY_INLINE void LoadTriples(const std::uint8_t* from, V8& a, V8& b, V8& c) {
    hn::LoadInterleaved3(D8(), from, a, b, c);
}
template <Stores Way = Stores::Cached>
HWY_INLINE void StoreTriples(V8 a, V8 b, V8 c, std::uint8_t* to) {
    hn::StoreInterleaved3(a, b, c, D8(), to);
}
template <Stores Way = Stores::Cached>
HWY_INLINE void StoreThrice(V8 value, std::uint8_t* to) {
    hn::StoreInterleaved3(value, value, value, D8(), to);
}

#endif

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
