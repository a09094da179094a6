// Throughput of the image format converter beside its rivals, and a table of the ratios at the end:
//   build/release/bin/convert_benchmark [--benchmark_filter=...]
// Names read SOURCE/DESTINATION/SIZE/WHO. Everything runs on warm buffers and one thread, and CPU
// time is compared; "two threads" is measured by the clock. The converter takes a new image from
// the pool each time, as a node does. What two threads could gain at most in large pictures is
// shown by a copy past the caches that reads and writes as many bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "convertrivals.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/conversion/parallelstrips.h"
#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

using namespace Orlix;
using Benchmarks::Picture;
using Benchmarks::Rival;

struct Size {
    std::uint32_t width, height;
};
constexpr std::uint32_t LargeWidth = 4096;
constexpr Size Sizes[] = {{1920, 1200}, {LargeWidth, 3000}};

// A conversion, and how many times as fast as the best rival it must be; 0 where that is open.
struct Row {
    EPixelType source;
    EPixelType destination;
    double goal;
};

const Row Rows[] = {
    {PixelType_BayerRG8, PixelType_BGR8Packed, 3},
    {PixelType_BayerRG8, PixelType_RGB8Packed, 3},
    {PixelType_BayerRG8, PixelType_Mono8, 3},
    {PixelType_BayerRG10p, PixelType_BGR8Packed, 4},
    {PixelType_BayerRG12p, PixelType_BGR8Packed, 4},
    {PixelType_BayerRG12Packed, PixelType_BGR8Packed, 4},
    {PixelType_BayerRG16, PixelType_RGB16Packed, 2},
    {PixelType_BayerRG12, PixelType_RGB16Packed, 2},
    {PixelType_BayerRG10, PixelType_RGB16Packed, 2},
    {PixelType_Mono10p, PixelType_Mono16, 0.8},
    {PixelType_Mono12p, PixelType_Mono16, 0.8},
    {PixelType_Mono12Packed, PixelType_Mono16, 0.8},
    {PixelType_Mono10p, PixelType_Mono8, 0.8},
    {PixelType_Mono12p, PixelType_Mono8, 0.8},
    {PixelType_Mono12Packed, PixelType_Mono8, 0.8},
    {PixelType_RGB8Packed, PixelType_Mono8, 1.3},
    {PixelType_BGRA8Packed, PixelType_Mono8, 0},
    {PixelType_RGB8Packed, PixelType_BGR8Packed, 1},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed, 1},
    {PixelType_RGB8Packed, PixelType_RGB8Planar, 1},
    {PixelType_RGBA8Packed, PixelType_BGRA8Packed, 0},
    {PixelType_BGRA8Packed, PixelType_BGR8Packed, 0},
    {PixelType_Mono8, PixelType_RGB8Packed, 1},
    {PixelType_Mono8, PixelType_BGRA8Packed, 0},
    {PixelType_Mono16, PixelType_Mono8, 1},
    {PixelType_RGB16Packed, PixelType_RGB8Packed, 1},
    {PixelType_RGB8Packed, PixelType_RGB16Packed, 0},
    {PixelType_RGB16Packed, PixelType_Mono16, 0},
    {PixelType_YUV422Packed, PixelType_BGR8Packed, 1},
    {PixelType_YUV422_YUYV_Packed, PixelType_BGR8Packed, 1},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, PixelType_BGR8Packed, 1},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, PixelType_BGR8Packed, 1},
    {PixelType_YUV422Packed, PixelType_BGRA8Packed, 0},
    {PixelType_RGB8Packed, PixelType_YUV444Planar, 1},
    {PixelType_RGB8Packed, PixelType_YUV422Planar, 1},
    {PixelType_RGB8Packed, PixelType_YUV420Planar, 1},
};

constexpr const char* Ours = "converter";
constexpr const char* TwoThreads = "two threads";
constexpr const char* Copy = "copy past the caches";
constexpr const char* CopyOfTwo = "copy past the caches, two threads";

std::string PairName(const Row& row, const Size& size) {
    return std::string(CPixelTypeMapper::GetNameByPixelType(row.source)) + "/" +
           CPixelTypeMapper::GetNameByPixelType(row.destination) + "/" +
           std::to_string(size.width) + "x" + std::to_string(size.height);
}

// The noise that all pictures begin with, in memory as images have it.
const std::uint8_t* Noise() {
    static const std::shared_ptr<void> memory = [] {
        const std::size_t size = std::size_t{4096} * 3000 * 6;
        const std::shared_ptr<void> made = BufferPool::Instance().Allocate(size);
        auto* bytes = static_cast<std::uint8_t*>(made.get());
        std::uint32_t state = 1;
        for (std::size_t at = 0; at < size; ++at) {
            state = state * 1664525U + 1013904223U;
            bytes[at] = static_cast<std::uint8_t>(state >> 24U);
        }
        return made;
    }();
    return static_cast<const std::uint8_t*>(memory.get());
}

void RunConverter(benchmark::State& state, const Row& row, const Size& size, std::int64_t threads) {
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(row.destination);
    converter.MaxNumThreads.SetValue(threads);
    const std::size_t bytes = ComputeBufferSize(row.source, size.width, size.height);
    const auto convert = [&] {
        COrlixImage image;
        converter.Convert(image, Noise(), bytes, row.source, size.width, size.height, 0,
                          ImageOrientation_TopDown);
        benchmark::DoNotOptimize(image.GetBuffer());
    };
    // The pool may have given the image's memory back while rivals had theirs.
    convert();
    for ([[maybe_unused]] auto _ : state) {
        convert();
        benchmark::ClobberMemory();
    }
}

void RunRival(benchmark::State& state, const Rival& rival) {
    rival.convert();
    for ([[maybe_unused]] auto _ : state) {
        rival.convert();
        benchmark::ClobberMemory();
    }
}

constexpr std::size_t Page = 4096;
constexpr std::size_t VectorBytes = 16;

#ifdef __SSE2__
// Writes a page of a value that depends on all that was read.
void CopyPage(const std::uint8_t* from, std::size_t read, std::uint8_t* to) {
    __m128i all = _mm_setzero_si128();
    for (std::size_t at = 0; at < read; at += VectorBytes) {
        all = _mm_or_si128(all, _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at)));
    }
    for (std::size_t at = 0; at < Page; at += VectorBytes) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + at), all);
    }
}
void FinishCopy() {
    _mm_sfence();
}
#else
// Other processors have no such stores that a program could ask for: theirs go through the caches.
void CopyPage(const std::uint8_t* from, std::size_t read, std::uint8_t* to) {
    std::uint8_t all = 0;
    for (std::size_t at = 0; at < read; ++at) {
        all = static_cast<std::uint8_t>(all | from[at]);
    }
    std::memset(to, all, Page);
}
void FinishCopy() {}
#endif

// Reads and writes so many bytes, a page and its share at a time.
void CopyPastCaches(const std::uint8_t* from, std::size_t read, std::uint8_t* to,
                    std::size_t written) {
    const std::size_t share = read / (written / Page) / VectorBytes * VectorBytes;
    for (std::size_t page = 0; page < written / Page; ++page) {
        CopyPage(from + page * share, share, to + page * Page);
    }
    FinishCopy();
}

void RunCopy(benchmark::State& state, const Row& row, const Size& size, std::size_t threads) {
    const std::size_t read = ComputeBufferSize(row.source, size.width, size.height);
    const std::size_t written = ComputeBufferSize(row.destination, size.width, size.height);
    const std::shared_ptr<void> memory = BufferPool::Instance().Allocate(written);
    auto* to = static_cast<std::uint8_t*>(memory.get());
    // Whole cache lines on either side.
    const std::size_t readPart = read / threads / 64 * 64;
    const std::size_t writtenPart = written / threads / 64 * 64;
    std::memset(to, 1, written);
    for ([[maybe_unused]] auto _ : state) {
        RunStrips(threads, [&](std::size_t part) {
            CopyPastCaches(Noise() + part * readPart, readPart, to + part * writtenPart,
                           writtenPart);
        });
    }
}

void RegisterCopies(const Row& row, const Size& size, const std::string& name) {
    const auto add = [&](const char* who, std::size_t threads) {
        benchmark::RegisterBenchmark(
            (name + who).c_str(),
            [=](benchmark::State& state) { RunCopy(state, row, size, threads); })
            ->Unit(benchmark::kMicrosecond)
            ->UseRealTime();
    };
    add(Copy, 1);
    add(CopyOfTwo, 2);
}

void Register(const Row& row, const Size& size) {
    const std::string name = PairName(row, size) + "/";
    benchmark::RegisterBenchmark((name + Ours).c_str(), [=](benchmark::State& state) {
        RunConverter(state, row, size, 1);
    })->Unit(benchmark::kMicrosecond);
    // The rivals are made when they run, so that only one has memory at a time.
    const Picture picture{row.source, size.width, size.height, Noise()};
    const std::size_t count = Benchmarks::MakeRivals(picture, row.destination).size();
    for (std::size_t index = 0; index < count; ++index) {
        const std::string rival = Benchmarks::MakeRivals(picture, row.destination)[index].name;
        benchmark::RegisterBenchmark((name + rival).c_str(), [=](benchmark::State& state) {
            RunRival(state, Benchmarks::MakeRivals(picture, row.destination)[index]);
        })->Unit(benchmark::kMicrosecond);
    }
    if (CImageFormatConverter().MaxNumThreads.GetMax() > 1) {
        benchmark::RegisterBenchmark(
            (name + TwoThreads).c_str(),
            [=](benchmark::State& state) { RunConverter(state, row, size, 2); })
            ->Unit(benchmark::kMicrosecond)
            ->UseRealTime();
        if (size.width == LargeWidth) {
            RegisterCopies(row, size, name);
        }
    }
}

// Keeps the times of the runs for the table, which is all that is printed.
class TableReporter : public benchmark::ConsoleReporter {
public:
    TableReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) {
                continue;
            }
            const std::string& name = run.run_name.function_name;
            const double iterations = static_cast<double>(run.iterations);
            times_[name].cpu.push_back(run.cpu_accumulated_time / iterations);
            times_[name].clock.push_back(run.real_accumulated_time / iterations);
        }
    }

    void PrintTable() {
        std::printf(
            "\nns a pixel, the best CPU time of all repetitions; ratio: best rival over converter; "
            "threads: one "
            "over two, by the clock, and the same of a copy past the caches\n\n"
            "| from | to | size | converter | rivals | ratio | goal | threads | copy |\n"
            "|---|---|---|---|---|---|---|---|---|\n");
        for (const Row& row : Rows) {
            for (const Size& size : Sizes) {
                PrintRow(row, size);
            }
        }
    }

private:
    struct Times {
        std::vector<double> cpu, clock;
    };

    // What else runs on the machine only adds to a time.
    static double Best(const std::vector<double>& values) {
        return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
    }

    void PrintRow(const Row& row, const Size& size) {
        const std::string name = PairName(row, size) + "/";
        const Times& ours = times_[name + Ours];
        if (ours.cpu.empty()) {
            return;
        }
        const double perPixel = 1e9 / (double{1} * size.width * size.height);
        std::string rivals;
        double best = 0;
        for (const char* rival : {"memcpy", "loop and OpenCV", "OpenCV", "libyuv"}) {
            const double time = Best(times_[name + rival].cpu);
            if (time > 0) {
                char text[80];
                std::snprintf(text, sizeof(text), "%s%s %.3f", rivals.empty() ? "" : ", ", rival,
                              time * perPixel);
                rivals += text;
                best = best > 0 ? std::min(best, time) : time;
            }
        }
        const double time = Best(ours.cpu);
        std::printf("| `%s` | `%s` | %u × %u | %.3f | %s | %.2f | %.1f | %.2f | %.2f |\n",
                    CPixelTypeMapper::GetNameByPixelType(row.source),
                    CPixelTypeMapper::GetNameByPixelType(row.destination), size.width, size.height,
                    time * perPixel, rivals.empty() ? "none" : rivals.c_str(), best / time,
                    row.goal, Gain(name, Ours, TwoThreads), Gain(name, Copy, CopyOfTwo));
    }

    // By the clock; 0 where one of the two was not measured.
    double Gain(const std::string& name, const char* one, const char* two) {
        const double time = Best(times_[name + two].clock);
        return time > 0 ? Best(times_[name + one].clock) / time : 0;
    }

    std::map<std::string, Times> times_;
};

}  // namespace

int main(int argc, char** argv) {
    for (const Row& row : Rows) {
        for (const Size& size : Sizes) {
            Register(row, size);
        }
    }
    benchmark::AddCustomContext("rivals", Benchmarks::DescribeRivals());
    benchmark::Initialize(&argc, argv);
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintTable();
    benchmark::Shutdown();
    return 0;
}
