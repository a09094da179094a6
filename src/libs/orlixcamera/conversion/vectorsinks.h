// Destination formats of colour kernels: how a vector of pixels is stored.
// Included once for each instruction set by the kernel files, hence the guard of its own kind.
#if defined(ORLIX_VECTORSINKS_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ORLIX_VECTORSINKS_H
#undef ORLIX_VECTORSINKS_H
#else
#define ORLIX_VECTORSINKS_H
#endif

#include "orlixcamera/conversion/vectorpixels.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {

struct ToRgb8 {
    static constexpr std::size_t Bytes = 3;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples(Red(pixel), Green(pixel), Blue(pixel), to[0]);
    }
    static HWY_INLINE void Store(const Grey<V8>& pixel, const Line& to) {
        StoreThrice(pixel.value, to[0]);
    }
};

struct ToBgr8 {
    static constexpr std::size_t Bytes = 3;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples(Blue(pixel), Green(pixel), Red(pixel), to[0]);
    }
};

// For sources without alpha; pixels with it only change the places of their bytes.
struct ToBgra8 {
    static constexpr std::size_t Bytes = 4;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreOpaqueQuads(Blue(pixel), Green(pixel), Red(pixel), to[0]);
    }
};

struct ToRgb8Planar {
    static constexpr std::size_t Bytes = 1;
    static constexpr std::size_t Planes = 3;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        hn::StoreU(Red(pixel), D8(), to[0]);
        hn::StoreU(Green(pixel), D8(), to[1]);
        hn::StoreU(Blue(pixel), D8(), to[2]);
    }
};

// Lines begin at any byte, so words are stored through bytes.
HWY_INLINE void StoreWords(V16 value, std::uint8_t* to) {
    hn::StoreU(hn::BitCast(D8(), value), D8(), to);
}

struct ToRgb16 {
    static constexpr std::size_t Bytes = 6;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples(Red(pixel), Green(pixel), Blue(pixel), to[0]);
    }
};

struct ToRgb16Planar {
    static constexpr std::size_t Bytes = 2;
    static constexpr std::size_t Planes = 3;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreWords(Red(pixel), to[0]);
        StoreWords(Green(pixel), to[1]);
        StoreWords(Blue(pixel), to[2]);
    }
};

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
