// Kernels to 16-bit formats, and between 8 and 16 bits where the samples keep their order.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/widekernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/kernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"
#include "orlixcamera/conversion/weightedsums.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

struct ToMono16 : SinkForm<2, 1> {
    template <Stores Way = Stores::Cached>
    static HWY_INLINE void Store(const Grey<V16>& pixel, const Line& to) {
        StoreWords<Way>(pixel.value, to[0]);
    }
};

// The upper bits of words as bytes. Two loads and a store are all that bounds it, and there a
// processor with longer vectors than it has data paths does better with those of 32 bytes.
struct NarrowStep : StepForm<hn::CappedTag<std::uint8_t, 32>, 2, 1> {
    using Streamed = ByteStep<Mono16, ToMono8, Stores::Streamed>;
    using D = hn::CappedTag<std::uint8_t, 32>;

    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        const D d;
        const auto low = Shifted(from, job.shiftDown);
        const auto high = Shifted(from + Lanes(), job.shiftDown);
        hn::StoreU(hn::ConcatEven(d, high, low), d, to[0]);
    }

private:
    static HWY_INLINE hn::Vec<D> Shifted(const std::uint8_t* from, int shift) {
        const D d;
        const hn::Repartition<std::uint16_t, D> words;
        return hn::BitCast(d, hn::ShiftRightSame(hn::BitCast(words, hn::LoadU(d, from)), shift));
    }
};

// What a kernel does with the samples of a line: a pixel's, in general ...
template <class Source, class Destination>
struct Plan {
    using Step = WideStep<Source, Destination>;
    static constexpr std::size_t Samples = 1;
};
template <>
struct Plan<Mono16, ToMono8> {
    using Step = NarrowStep;
    static constexpr std::size_t Samples = 1;
};
// ... but where only the depth changes, the three samples of a pixel are like three pixels.
template <>
struct Plan<Rgb8, ToRgb16> {
    using Step = WideStep<Mono8, ToMono16>;
    static constexpr std::size_t Samples = 3;
};
template <>
struct Plan<Rgb16, ToRgb8> {
    using Step = NarrowStep;
    static constexpr std::size_t Samples = 3;
};

}  // namespace

#define ORLIX_KERNEL(Source, Destination)                                              \
    void Source##To##Destination##Lines(const ConversionJob& job, std::uint32_t first, \
                                        std::uint32_t end) {                           \
        using Pair = Plan<Source, To##Destination>;                                    \
        ConvertLines<Pair::Step, Pair::Samples>(job, first, end);                      \
    }
ORLIX_WIDE_KERNELS(ORLIX_KERNEL)
#undef ORLIX_KERNEL

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
ORLIX_WIDE_KERNELS(ORLIX_DISPATCH_KERNEL)
}  // namespace Orlix
#endif
