// Throughput of the image format converter, beside OpenCV where it is installed:
//   build/release/bin/convert_benchmark [--benchmark_filter=...]
// Names read converter/SOURCE/DESTINATION/threads and opencv/SOURCE/DESTINATION/threads. Both work
// on warm buffers of one size; the converter makes a new image from the pool each time, as a node
// does.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixeltypemapper.h"

#ifdef ORLIX_HAS_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace Orlix;

constexpr std::uint32_t Width = 1920;
constexpr std::uint32_t Height = 1200;

std::vector<std::uint8_t> MakeSource(EPixelType type) {
    std::vector<std::uint8_t> bytes(ComputeBufferSize(type, Width, Height));
    std::uint32_t state = 1;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    return bytes;
}

void SetCounters(benchmark::State& state, EPixelType source, EPixelType destination) {
    const auto pixels = static_cast<double>(Width) * Height;
    const std::uint64_t bytes =
        ComputeBufferSize(source, Width, Height) + ComputeBufferSize(destination, Width, Height);
    state.counters["pixels"] =
        benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void RunConverter(benchmark::State& state, EPixelType source, EPixelType destination,
                  std::int64_t threads) {
    const std::vector<std::uint8_t> bytes = MakeSource(source);
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(destination);
    converter.MaxNumThreads.SetValue(threads);
    for ([[maybe_unused]] auto _ : state) {
        COrlixImage image;
        converter.Convert(image, bytes.data(), bytes.size(), source, Width, Height, 0,
                          ImageOrientation_TopDown);
        benchmark::DoNotOptimize(image.GetBuffer());
        benchmark::ClobberMemory();
    }
    SetCounters(state, source, destination);
}

#ifdef ORLIX_HAS_OPENCV

// How the rival does the same, or what comes nearest.
struct Rival {
    enum class Kind { None, Colour, Depth, Planes } kind = Kind::None;
    int code = 0;
    double scale = 1;
};

int MatType(EPixelType type) {
    const int depth = BitDepth(type) == 8 ? CV_8U : CV_16U;
    const auto channels =
        IsPlanar(type) ? 1 : static_cast<int>(BitsPerPixel(type) / BitDepth(type));
    return CV_MAKETYPE(depth, channels);
}

void RunRival(benchmark::State& state, EPixelType source, EPixelType destination, Rival rival,
              int threads) {
    std::vector<std::uint8_t> bytes = MakeSource(source);
    const cv::Mat from(static_cast<int>(Height), static_cast<int>(Width), MatType(source),
                       bytes.data());
    cv::Mat to;
    std::vector<cv::Mat> planes;
    cv::setNumThreads(threads);
    for ([[maybe_unused]] auto _ : state) {
        if (rival.kind == Rival::Kind::Colour) {
            cv::cvtColor(from, to, rival.code);
        } else if (rival.kind == Rival::Kind::Depth) {
            from.convertTo(to, MatType(destination), rival.scale);
        } else {
            cv::split(from, planes);
        }
        benchmark::DoNotOptimize(to.data);
        benchmark::ClobberMemory();
    }
    SetCounters(state, source, destination);
}

#else

struct Rival {
    enum class Kind { None, Colour, Depth, Planes } kind = Kind::None;
    int code = 0;
    double scale = 1;
};

#endif

#ifdef ORLIX_HAS_OPENCV
#define ORLIX_CODE(name) cv::COLOR_##name
#else
#define ORLIX_CODE(name) 0
#endif

struct Pair {
    EPixelType source;
    EPixelType destination;
    Rival rival;
};

// The rival's I420 is of limited range, and its depth change rounds to nearest: nearly the same
// work.
const Pair Pairs[] = {
    {PixelType_Mono8, PixelType_BGRA8Packed, {Rival::Kind::Colour, ORLIX_CODE(GRAY2BGRA)}},
    {PixelType_Mono8, PixelType_RGB8Packed, {Rival::Kind::Colour, ORLIX_CODE(GRAY2RGB)}},
    {PixelType_Mono8, PixelType_Mono16, {Rival::Kind::Depth}},
    {PixelType_Mono16, PixelType_Mono8, {Rival::Kind::Depth, 0, 1.0 / 256}},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed, {Rival::Kind::Colour, ORLIX_CODE(RGB2BGRA)}},
    {PixelType_RGB8Packed, PixelType_BGR8Packed, {Rival::Kind::Colour, ORLIX_CODE(RGB2BGR)}},
    {PixelType_RGB8Packed, PixelType_Mono8, {Rival::Kind::Colour, ORLIX_CODE(RGB2GRAY)}},
    {PixelType_RGB8Packed, PixelType_RGB8Planar, {Rival::Kind::Planes}},
    {PixelType_RGB8Packed, PixelType_RGB16Packed, {Rival::Kind::Depth}},
    {PixelType_RGB8Packed, PixelType_YUV444Planar, {Rival::Kind::Colour, ORLIX_CODE(RGB2YUV)}},
    {PixelType_RGB8Packed, PixelType_YUV422Planar, {}},
    {PixelType_RGB8Packed, PixelType_YUV420Planar, {Rival::Kind::Colour, ORLIX_CODE(RGB2YUV_I420)}},
    {PixelType_RGBA8Packed, PixelType_BGRA8Packed, {Rival::Kind::Colour, ORLIX_CODE(RGBA2BGRA)}},
    {PixelType_BGRA8Packed, PixelType_BGR8Packed, {Rival::Kind::Colour, ORLIX_CODE(BGRA2BGR)}},
    {PixelType_BGRA8Packed, PixelType_Mono8, {Rival::Kind::Colour, ORLIX_CODE(BGRA2GRAY)}},
    {PixelType_RGB16Packed, PixelType_RGB8Packed, {Rival::Kind::Depth, 0, 1.0 / 256}},
    {PixelType_RGB16Packed, PixelType_Mono16, {Rival::Kind::Colour, ORLIX_CODE(RGB2GRAY)}},
    {PixelType_RGB16Packed, PixelType_BGRA8Packed, {}},
};

void Register(const Pair& pair, unsigned threads) {
    const std::string name = std::string("/") + CPixelTypeMapper::GetNameByPixelType(pair.source) +
                             "/" + CPixelTypeMapper::GetNameByPixelType(pair.destination) + "/" +
                             std::to_string(threads);
    benchmark::RegisterBenchmark(("converter" + name).c_str(), [=](benchmark::State& state) {
        RunConverter(state, pair.source, pair.destination, threads);
    })->UseRealTime();
#ifdef ORLIX_HAS_OPENCV
    if (pair.rival.kind != Rival::Kind::None) {
        benchmark::RegisterBenchmark(("opencv" + name).c_str(), [=](benchmark::State& state) {
            RunRival(state, pair.source, pair.destination, pair.rival, static_cast<int>(threads));
        })->UseRealTime();
    }
#endif
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned machine = std::max(1U, std::thread::hardware_concurrency());
    for (const Pair& pair : Pairs) {
        Register(pair, 1);
        if (machine > 1) {
            Register(pair, machine);
        }
    }
#ifdef ORLIX_HAS_OPENCV
    benchmark::AddCustomContext("rival", "OpenCV " CV_VERSION);
#else
    benchmark::AddCustomContext("rival", "none: OpenCV was not found when this was configured");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
