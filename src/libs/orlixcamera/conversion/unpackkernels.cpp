// Readers of rows: samples of any packing become bytes or words.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orlixcamera/conversion/unpackkernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orlixcamera/conversion/rowkernels.h"
#include "orlixcamera/conversion/vectorpixels.h"
#include "orlixcamera/conversion/vectorsinks.h"

HWY_BEFORE_NAMESPACE();
namespace Orlix::HWY_NAMESPACE {
namespace {

// A packing has a table of the two bytes in which each of eight samples lies, as a word for each,
// and says what becomes of the words. The eight are a block of whole bytes.
struct BlockTable {
    std::array<std::uint8_t, 16> bytes{};
};

// Samples that follow each other bit by bit, lowest first: each is moved up to the same place of
// its word by a factor, then down.
template <std::size_t Bits>
struct BitPacking {
    static constexpr std::size_t BlockBytes = Bits;
    static constexpr std::size_t Depth = Bits;
    // The highest place in a byte where a sample begins.
    static constexpr int Place = Bits == 10 ? 6 : Bits == 12 ? 4 : 8 - static_cast<int>(Bits);
    static constexpr BlockTable Table() {
        BlockTable table;
        for (std::size_t sample = 0; sample < 8; ++sample) {
            const std::size_t byte = sample * Bits / 8;
            table.bytes[2 * sample] = static_cast<std::uint8_t>(byte);
            // Small samples are in one byte; the other is any that is there.
            table.bytes[2 * sample + 1] = static_cast<std::uint8_t>(Bits < 8 ? byte : byte + 1);
        }
        return table;
    }
    static HWY_INLINE V16 Raise(V16 words) {
        constexpr auto factor = [](std::size_t sample) {
            const auto place = static_cast<int>(sample * Bits % 8);
            return static_cast<std::uint16_t>(1U << (Place - place));
        };
        HWY_ALIGN static constexpr std::uint16_t factors[] = {
            factor(0), factor(1), factor(2), factor(3), factor(4), factor(5), factor(6), factor(7)};
        return hn::Mul(words, hn::LoadDup128(D16(), factors));
    }
    static HWY_INLINE V16 Values(V16 words) {
        const V16 values = hn::ShiftRight<Place>(Raise(words));
        return Bits < 8 ? hn::And(values, hn::Set(D16(), (1U << Bits) - 1)) : values;
    }
    // With 10 and 12 bits the upper byte is what the raised word has there.
    static HWY_INLINE V16 UpperBytes(V16 words) { return Raise(words); }
};

// Two samples in three bytes: the upper bits of each have a byte of their own, and the lower bits
// share the byte between, those of the first sample in its lower half.
template <std::size_t Bits>
struct TriplePacking {
    static constexpr std::size_t BlockBytes = 12;
    static constexpr std::size_t Depth = Bits;
    static constexpr BlockTable Table() {
        BlockTable table;
        for (std::size_t sample = 0; sample < 8; ++sample) {
            const std::size_t triple = sample / 2 * 3;
            table.bytes[2 * sample] = static_cast<std::uint8_t>(triple + 1);
            table.bytes[2 * sample + 1] = static_cast<std::uint8_t>(triple + sample % 2 * 2);
        }
        return table;
    }
    static HWY_INLINE V16 Values(V16 words) {
        constexpr std::uint16_t Low = (1U << (Bits - 8)) - 1;
        HWY_ALIGN static constexpr std::uint16_t factors[] = {16, 1, 16, 1, 16, 1, 16, 1};
        const V16 shared = hn::ShiftRight<4>(hn::Mul(words, hn::LoadDup128(D16(), factors)));
        const V16 upper = hn::AndNot(hn::Set(D16(), Low), hn::ShiftRight<16 - Bits>(words));
        return hn::Or(upper, hn::And(shared, hn::Set(D16(), Low)));
    }
    static HWY_INLINE V16 UpperBytes(V16 words) { return words; }
};

// The table for a whole vector. `Stride` is how far apart the blocks are where it is used, and
// `Lanes` how many bytes its look-up reaches: a vector's, or each 16 bytes for themselves.
template <class Packing, std::size_t Stride>
struct VectorTable {
    static constexpr std::size_t Size = hn::MaxLanes(D8());
    static constexpr std::array<std::uint8_t, Size> Make() {
        std::array<std::uint8_t, Size> made{};
        for (std::size_t lane = 0; lane < Size; ++lane) {
            made[lane] =
                static_cast<std::uint8_t>(lane / 16 * Stride + Packing::Table().bytes[lane % 16]);
        }
        return made;
    }
    HWY_ALIGN static constexpr std::array<std::uint8_t, Size> bytes = Make();
};

// The words of as many samples as a vector of words has, and how many bytes are read for them.
template <class Packing>
struct Gather {
    static constexpr bool Small = Packing::Depth < 8;
#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX3
    static constexpr std::size_t Reach = Small ? 16 : 4 * Packing::BlockBytes;
#elif HWY_TARGET == HWY_AVX2
    static constexpr std::size_t Reach = Small ? 16 : 16 + Packing::BlockBytes;
#else
    static constexpr std::size_t Reach = 16;
#endif

    static HWY_INLINE V16 Words(const std::uint8_t* from) {
        const D8 d;
        if constexpr (Small) {
            // All blocks are within 16 bytes.
            const V8 table = hn::Load(d, VectorTable<Packing, Packing::BlockBytes>::bytes.data());
            return hn::BitCast(D16(), hn::TableLookupBytes(hn::LoadDup128(d, from), table));
        } else {
#if HWY_TARGET == HWY_AVX3_DL
            const V8 table = hn::Load(d, VectorTable<Packing, Packing::BlockBytes>::bytes.data());
            return V16{_mm512_permutexvar_epi8(table.raw, LoadReach(from))};
#else
            const V8 table = hn::Load(d, VectorTable<Packing, 0>::bytes.data());
            return hn::BitCast(D16(), hn::TableLookupBytes(Blocks(from), table));
#endif
        }
    }

private:
#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX3
    // No byte behind the samples is touched, so that the end of a line needs no buffer.
    static HWY_INLINE __m512i LoadReach(const std::uint8_t* from) {
        return _mm512_maskz_loadu_epi8((std::uint64_t{1} << Reach) - 1, from);
    }
#endif

    // Each block at the beginning of 16 bytes.
    static HWY_INLINE V8 Blocks(const std::uint8_t* from) {
#if HWY_TARGET == HWY_AVX3
        alignas(64) static constexpr auto places = [] {
            std::array<std::uint16_t, 32> words{};
            for (std::size_t word = 0; word < 32; ++word) {
                words[word] = static_cast<std::uint16_t>(
                    (word / 8 * (Packing::BlockBytes / 2) + word % 8) % 32);
            }
            return words;
        }();
        return V8{_mm512_permutexvar_epi16(_mm512_load_si512(places.data()), LoadReach(from))};
#elif HWY_TARGET == HWY_AVX2
        const hn::Half<D8> half;
        return hn::Combine(D8(), hn::LoadU(half, from + Packing::BlockBytes),
                           hn::LoadU(half, from));
#else
        return hn::LoadU(D8(), from);
#endif
    }
};

// Rows of words.
template <class Packing>
struct ToWords {
    static constexpr std::size_t Bytes = 2;
    static constexpr std::size_t Reach = Gather<Packing>::Reach;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D16()); }
    static HWY_INLINE void Convert(const std::uint8_t* from, std::uint8_t* to, int shiftUp) {
        const V16 values = Packing::Values(Gather<Packing>::Words(from));
        StoreWords(hn::ShiftLeftSame(values, shiftUp), to);
    }
};

// Rows of bytes, from the words of two vectors.
template <class Packing>
struct ToBytes {
    static constexpr std::size_t Bytes = 1;
    static constexpr std::size_t Half = hn::MaxLanes(D16()) / 8 * Packing::BlockBytes;
    static constexpr std::size_t Reach = Half + Gather<Packing>::Reach;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(D8()); }
    static HWY_INLINE void Convert(const std::uint8_t* from, std::uint8_t* to, int shiftUp) {
        const D8 d;
        const V16 low = Gather<Packing>::Words(from);
        const V16 high = Gather<Packing>::Words(from + Half);
        if constexpr (Packing::Depth < 8) {
            const V16 lowValues = hn::ShiftLeftSame(Packing::Values(low), shiftUp);
            const V16 highValues = hn::ShiftLeftSame(Packing::Values(high), shiftUp);
            hn::StoreU(Narrow(lowValues, highValues, 0), d, to);
        } else {
            hn::StoreU(hn::ConcatOdd(d, hn::BitCast(d, Packing::UpperBytes(high)),
                                     hn::BitCast(d, Packing::UpperBytes(low))),
                       d, to);
        }
    }
};

// The end of a line goes through buffers, since a vector reads beyond the bytes of its samples.
template <class Packing, class Step>
HWY_NOINLINE void ReadLastSamples(const std::uint8_t* from, std::size_t count, std::uint8_t* to,
                                  int shiftUp) {
    constexpr std::size_t Block = Packing::BlockBytes;
    constexpr std::size_t MaxLanes = hn::MaxLanes(D8());
    // Fewer samples are left than a step reaches over and does.
    constexpr std::size_t Most = Step::Reach * 8 / Block + 2 * MaxLanes;
    HWY_ALIGN std::uint8_t in[Most * Block / 8 + Step::Reach] = {};
    HWY_ALIGN std::uint8_t out[Most * Step::Bytes];
    std::memcpy(in, from, (count * Block + 7) / 8);
    for (std::size_t sample = 0; sample < count; sample += Step::Lanes()) {
        Step::Convert(in + sample / 8 * Block, out + sample * Step::Bytes, shiftUp);
    }
    std::memcpy(to, out, count * Step::Bytes);
}

// How many steps have all the bytes in the line that they read.
template <class Packing, class Step>
HWY_INLINE std::size_t WholeSteps(std::size_t count, std::size_t bytes) {
    const std::size_t stepBytes = Step::Lanes() / 8 * Packing::BlockBytes;
    const std::size_t readable = bytes < Step::Reach ? 0 : (bytes - Step::Reach) / stepBytes + 1;
    return std::min(count / Step::Lanes(), readable);
}

template <class Packing, class Step>
HWY_INLINE void ReadPacked(const std::uint8_t* line, std::size_t count, std::uint8_t* to,
                           int shiftUp) {
    const std::size_t stepBytes = Step::Lanes() / 8 * Packing::BlockBytes;
    const std::size_t madeBytes = Step::Lanes() * Step::Bytes;
    const std::size_t bytes = (count * Packing::BlockBytes + 7) / 8;
    const std::size_t steps = WholeSteps<Packing, Step>(count, bytes);
    std::size_t step = 0;
    for (; step + 2 <= steps; step += 2) {
        Step::Convert(line, to, shiftUp);
        Step::Convert(line + stepBytes, to + madeBytes, shiftUp);
        line += 2 * stepBytes;
        to += 2 * madeBytes;
    }
    for (; step < steps; ++step) {
        Step::Convert(line, to, shiftUp);
        line += stepBytes;
        to += madeBytes;
    }
    const std::size_t read = steps * Step::Lanes();
    if (read < count) {
        ReadLastSamples<Packing, Step>(line, count - read, to, shiftUp);
    }
}

// A sample in a word of its own; bits above the depth don't count.
template <std::size_t Depth>
struct MaskedWords {
    static HWY_INLINE V16 Load(const std::uint8_t* from) {
        return hn::And(LoadWords(from), hn::Set(D16(), (1U << Depth) - 1));
    }
};

template <std::size_t Depth>
struct WordsToWords : StepForm<D16, 2, 2> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        StoreWords(hn::ShiftLeftSame(MaskedWords<Depth>::Load(from), job.shiftUp), to[0]);
    }
};

template <std::size_t Depth>
struct WordsToBytes : StepForm<D8, 2, 1> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to, const ConversionJob&) {
        const V16 low = hn::ShiftRight<Depth - 8>(MaskedWords<Depth>::Load(from));
        const V16 high =
            hn::ShiftRight<Depth - 8>(MaskedWords<Depth>::Load(from + hn::Lanes(D8())));
        hn::StoreU(Narrow(low, high, 0), D8(), to[0]);
    }
};

// A sample in a byte of its own.
struct BytesToWords : StepForm<D16, 1, 2> {
    static HWY_INLINE void Convert(const std::uint8_t* from, const Line& to,
                                   const ConversionJob& job) {
        StoreWords(Widen(hn::LoadU(D8Half(), from), job.shiftUp), to[0]);
    }
};

void ReadBytes(const std::uint8_t* line, std::size_t count, std::uint8_t* to, int) {
    std::memcpy(to, line, count);
}

template <class Step>
HWY_INLINE void ReadWords(const std::uint8_t* line, std::size_t count, std::uint8_t* to,
                          int shiftUp) {
    ConversionJob job;
    job.shiftUp = shiftUp;
    ConvertLine<Step>(line, {to, nullptr, nullptr}, count, job);
}

}  // namespace

#define ORLIX_READER(Name, Body)                                                        \
    void Read##Name##Row(const std::uint8_t* line, std::size_t count, std::uint8_t* to, \
                         int shiftUp) {                                                 \
        Body(line, count, to, shiftUp);                                                 \
    }
#define ORLIX_PACKED(Name, Packing)                                  \
    ORLIX_READER(Name##To8, (ReadPacked<Packing, ToBytes<Packing>>)) \
    ORLIX_READER(Name##To16, (ReadPacked<Packing, ToWords<Packing>>))
#define ORLIX_WORDS(Name, Depth)                              \
    ORLIX_READER(Name##To8, (ReadWords<WordsToBytes<Depth>>)) \
    ORLIX_READER(Name##To16, (ReadWords<WordsToWords<Depth>>))
ORLIX_PACKED(Bits1, BitPacking<1>)
ORLIX_PACKED(Bits2, BitPacking<2>)
ORLIX_PACKED(Bits4, BitPacking<4>)
ORLIX_PACKED(Bits10, BitPacking<10>)
ORLIX_PACKED(Bits12, BitPacking<12>)
ORLIX_PACKED(Triples10, TriplePacking<10>)
ORLIX_PACKED(Triples12, TriplePacking<12>)
ORLIX_READER(BytesTo8, ReadBytes)
ORLIX_READER(BytesTo16, ReadWords<BytesToWords>)
ORLIX_WORDS(Words10, 10)
ORLIX_WORDS(Words12, 12)
ORLIX_WORDS(Words16, 16)
#undef ORLIX_WORDS
#undef ORLIX_PACKED
#undef ORLIX_READER

}  // namespace Orlix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Orlix {
#define ORLIX_DISPATCH(Name)                                                                      \
    HWY_EXPORT(Read##Name##Row);                                                                  \
    void Read##Name(const std::uint8_t* line, std::size_t count, std::uint8_t* to, int shiftUp) { \
        HWY_DYNAMIC_DISPATCH(Read##Name##Row)(line, count, to, shiftUp);                          \
    }
#define ORLIX_DISPATCH_BOTH(Name, sampleBits) \
    ORLIX_DISPATCH(Name##To8)                 \
    ORLIX_DISPATCH(Name##To16)
ORLIX_PACKINGS(ORLIX_DISPATCH_BOTH)
#undef ORLIX_DISPATCH_BOTH
#undef ORLIX_DISPATCH
}  // namespace Orlix
#endif
