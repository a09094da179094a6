// Kernels to 8-bit colour that do more than move bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/colourkernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
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
