// What a frame costs between the transport layer and its handler, with and without chunks, how long
// an emulated camera takes from nothing to grabbing, and what rates it keeps. There is no rival in
// these: what is measured is this library alone.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "instantdevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/copycounter.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/orliximage.h"

namespace {

using namespace Orlix;
using InstantCamera::Chunks;

void readChunks(const CGrabResultPtr& result) {
    GenApi::INodeMap& map = result->GetChunkDataNodeMap();
    benchmark::DoNotOptimize(CIntegerParameter(map, "ChunkFrameID").GetValue(false, false));
    benchmark::DoNotOptimize(CIntegerParameter(map, "ChunkTimestamp").GetValue(false, false));
    benchmark::DoNotOptimize(CFloatParameter(map, "ChunkExposureTime").GetValue(false, false));
}

double threadSeconds() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Measures its own thread, from one call to a later one.
class Meter final : public CImageEventHandler {
public:
    Meter(std::size_t frames, bool chunks) : frames_(frames), chunks_(chunks) {}

    void OnImageGrabbed(CInstantCamera&, const CGrabResultPtr& result) override {
        if (count_ == 0) {
            first_ = threadSeconds();
        }
        COrlixImage image;
        image.AttachGrabResultBuffer(result);
        benchmark::DoNotOptimize(image.GetBuffer());
        if (chunks_) {
            readChunks(result);
        }
        if (++count_ == frames_) {
            seconds_ = threadSeconds() - first_;
            done_ = true;
            done_.notify_all();
        }
    }
    [[nodiscard]] double WaitForSeconds() {
        done_.wait(false);
        return seconds_;
    }

private:
    const std::size_t frames_;
    const bool chunks_;
    std::size_t count_ = 0;
    double first_ = 0;
    double seconds_ = 0;
    std::atomic<bool> done_{false};
};

// CPU time of the grab thread for each frame, from the filled buffer through the handler to the
// buffer that is queued again.
void frameToHandler(benchmark::State& state, Chunks chunks) {
    constexpr std::size_t frames = 100000;
    const auto device = CreateCameraDevice(InstantCamera::createDevice(chunks));
    static_cast<void>(PixelCopyCounter::Reset());
    for (auto _ : state) {
        Meter meter(frames, chunks == Chunks::Three);
        CInstantCamera camera(device.get());
        camera.RegisterImageEventHandler(&meter, RegistrationMode_Append, Cleanup_None);
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        state.SetIterationTime(meter.WaitForSeconds() / double(frames - 1));
    }
    state.counters["copied bytes"] = static_cast<double>(PixelCopyCounter::Read());
}
BENCHMARK_CAPTURE(frameToHandler, without_chunks, Chunks::None)->UseManualTime()->Iterations(5);
BENCHMARK_CAPTURE(frameToHandler, three_chunks, Chunks::Three)->UseManualTime()->Iterations(5);

// From a closed device of a layer to a camera that grabs.
void openAttachStart(benchmark::State& state) {
    const auto layer = CreateCameraLayer(CreateEmulatedCameras(1));
    const CDeviceInfo info = layer->EnumerateDevices().at(0);
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        CInstantCamera camera;
        const auto device = layer->CreateDevice(info);
        camera.Attach(device.get());
        camera.Open();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        static_cast<void>(camera.DetachDevice());
    }
}
BENCHMARK(openAttachStart)->UseManualTime()->Unit(benchmark::kMillisecond);

// An emulated camera at a rate that is asked for, for about a second.
void emulatedRate(benchmark::State& state, std::int64_t width, std::int64_t height, double rate) {
    const auto layer = CreateCameraLayer(CreateEmulatedCameras(1));
    const auto device = layer->CreateDevice(layer->EnumerateDevices().at(0));
    const auto frames = static_cast<std::size_t>(rate);
    double mean = 0;
    double lost = 0;
    for (auto _ : state) {
        CInstantCamera camera(device.get());
        camera.Open();
        GenApi::INodeMap& map = camera.GetNodeMap();
        CIntegerParameter(map, "Width").SetValue(width);
        CIntegerParameter(map, "Height").SetValue(height);
        CFloatParameter(map, "ExposureTime").SetValue(10);
        CBooleanParameter(map, "AcquisitionFrameRateEnable").SetValue(true);
        CFloatParameter(map, "AcquisitionFrameRate").SetValue(rate);
        Meter meter(frames, false);
        camera.RegisterImageEventHandler(&meter, RegistrationMode_Append, Cleanup_None);
        const auto begin = std::chrono::steady_clock::now();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        static_cast<void>(meter.WaitForSeconds());
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        mean = double(frames) / taken.count();
        camera.StopGrabbing();
        lost = static_cast<double>(
            CIntegerParameter(camera.GetStreamGrabberNodeMap(), "StatisticLostForBuffer")
                .GetValue());
        static_cast<void>(camera.DetachDevice());
    }
    state.counters["asked/s"] = rate;
    state.counters["mean/s"] = mean;
    state.counters["lost"] = lost;
    state.counters["GB/s"] = mean * double(width) * double(height) * 1e-9;
}
BENCHMARK_CAPTURE(emulatedRate, 64x64, 64, 64, 10000)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(emulatedRate, 4096x3072, 4096, 3072, 160)->UseManualTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
