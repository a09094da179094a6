// Kernels to 8-bit colour that do more than move bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/colourkernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

struct ToRgb8 {
    static constexpr std::size_t Bytes = 3;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        hn::StoreInterleaved3(Red(pixel), Green(pixel), Blue(pixel), D8(), to[0]);
    }
};

struct ToBgr8 {
    static constexpr std::size_t Bytes = 3;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        hn::StoreInterleaved3(Blue(pixel), Green(pixel), Red(pixel), D8(), to[0]);
    }
};

struct ToBgra8 {
    static constexpr std::size_t Bytes = 4;
    static constexpr std::size_t Planes = 1;
    template <class Pixel>
    static HWY_INLINE void Store(const Pixel& pixel, const Line& to) {
        hn::StoreInterleaved4(Blue(pixel), Green(pixel), Red(pixel), Alpha(pixel), D8(), to[0]);
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

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                                              \
    void Source##To##Destination##Lines(const ConversionJob& job, std::uint32_t first, \
                                        std::uint32_t end) {                           \
        ConvertLines<ByteStep<Source, To##Destination>>(job, first, end);              \
    }
ORLIX_COLOUR_KERNELS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
ORLIX_COLOUR_KERNELS(ORLIX_DISPATCH_KERNEL)
}  // namespace Orlix
#endif
