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

// The bytes of a pixel in each plane, and the planes.
template <std::size_t PixelBytes, std::size_t PlaneCount>
struct SinkForm {
    static constexpr std::size_t Bytes = PixelBytes;
    static constexpr std::size_t Planes = PlaneCount;
};

struct ToRgb8 : SinkForm<3, 1> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples<Way>(Red(pixel), Green(pixel), Blue(pixel), to[0]);
    }
    template <Stores Way = Stores::Cached>
    static HWY_INLINE void Store(const Grey<V8>& pixel, const Line& to) {
        StoreThrice<Way>(pixel.value, to[0]);
    }
};

struct ToBgr8 : SinkForm<3, 1> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples<Way>(Blue(pixel), Green(pixel), Red(pixel), to[0]);
    }
};

// For sources without alpha; pixels with it only change the places of their bytes.
struct ToBgra8 : SinkForm<4, 1> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreOpaqueQuads<Way>(Blue(pixel), Green(pixel), Red(pixel), to[0]);
    }
};

struct ToRgb8Planar : SinkForm<1, 3> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreBytes<Way>(Red(pixel), to[0]);
        StoreBytes<Way>(Green(pixel), to[1]);
        StoreBytes<Way>(Blue(pixel), to[2]);
    }
};

struct ToRgb16 : SinkForm<6, 1> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreTriples<Way>(Red(pixel), Green(pixel), Blue(pixel), to[0]);
    }
};

struct ToRgb16Planar : SinkForm<2, 3> {
    template <Stores Way = Stores::Cached, class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        StoreWords<Way>(Red(pixel), to[0]);
        StoreWords<Way>(Green(pixel), to[1]);
        StoreWords<Way>(Blue(pixel), to[2]);
    }
};

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
