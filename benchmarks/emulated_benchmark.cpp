// Whether the emulated camera keeps the rate that it is asked for, at small and at large frames:
// the mean rate stands beside the rate asked. A thread takes the frames and gives the buffers back
// at once.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/transport/transport.h"

namespace {

using namespace Orlix;
using Transport::StreamBuffer;

// The registers that the benchmark needs; the description has them all.
constexpr std::int64_t payloadSizeAt = 0x1030;
constexpr std::int64_t framesSentAt = 0x1038;
constexpr std::int64_t widthAt = 0x1100;
constexpr std::int64_t heightAt = 0x1108;
constexpr std::int64_t acquisitionStartAt = 0x1208;
constexpr std::int64_t acquisitionStopAt = 0x1210;
constexpr std::int64_t exposureTimeAt = 0x1228;
constexpr std::int64_t frameRateEnableAt = 0x1230;
constexpr std::int64_t frameRateAt = 0x1238;
constexpr std::int64_t chunkModeActiveAt = 0x1500;
constexpr std::int64_t chunkEnableAt = 0x1508;

class Camera {
public:
    Camera() : device_(layer_->CreateDevice(layer_->Enumerate().front())) { device_->Open(); }

    void write(std::int64_t address, std::int64_t value) const {
        device_->Write(address, &value, sizeof value);
    }
    void write(std::int64_t address, double value) const {
        device_->Write(address, &value, sizeof value);
    }
    [[nodiscard]] std::int64_t read(std::int64_t address) const {
        std::int64_t value = 0;
        device_->Read(address, &value, sizeof value);
        return value;
    }
    [[nodiscard]] Transport::IDevice& device() const { return *device_; }

private:
    const std::shared_ptr<Transport::ILayer> layer_ = CreateEmulatedCameras(1);
    const std::shared_ptr<Transport::IDevice> device_;
};

struct Frames {
    std::int64_t width;
    std::int64_t height;
    double rate;  // asked; 0 for as fast as can be
    bool chunks;
};

void setUp(const Camera& camera, const Frames& frames) {
    camera.write(widthAt, frames.width);
    camera.write(heightAt, frames.height);
    camera.write(exposureTimeAt, 10.0);
    if (frames.rate > 0) {
        camera.write(frameRateAt, frames.rate);
        camera.write(frameRateEnableAt, std::int64_t{1});
    }
    if (frames.chunks) {
        constexpr std::int64_t chunkCount = 8;
        camera.write(chunkModeActiveAt, std::int64_t{1});
        for (std::int64_t chunk = 0; chunk < chunkCount; ++chunk) {
            camera.write(chunkEnableAt + 8 * chunk, std::int64_t{1});
        }
    }
}

void stream(benchmark::State& state, const Frames& frames) {
    const Camera camera;
    setUp(camera, frames);
    const auto payload = static_cast<std::size_t>(camera.read(payloadSizeAt));
    const auto stream = camera.device().OpenStream();
    std::array<std::vector<std::uint8_t>, 16> memory;
    std::array<StreamBuffer, 16> buffers;
    for (std::size_t index = 0; index < buffers.size(); ++index) {
        memory[index].resize(payload);
        buffers[index].data = memory[index].data();
        buffers[index].capacity = payload;
        stream->Queue(buffers[index]);
    }
    stream->Start(payload);
    camera.write(acquisitionStartAt, std::int64_t{1});
    std::uint64_t bytes = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::uint64_t firstId = 0;
    std::uint64_t lastId = 0;
    for ([[maybe_unused]] const auto& iteration : state) {
        StreamBuffer* const buffer = stream->Wait(std::chrono::seconds(10));
        if (buffer == nullptr) {
            state.SkipWithError("no frame came");
            break;
        }
        first = first == 0 ? buffer->timestamp : first;
        firstId = firstId == 0 ? buffer->frameId : firstId;
        last = buffer->timestamp;
        lastId = buffer->frameId;
        bytes += buffer->filled;
        stream->Queue(*buffer);
    }
    camera.write(acquisitionStopAt, std::int64_t{1});
    stream->Stop();
    const Transport::StreamStatistics statistics = stream->GetStatistics();
    const double seconds = static_cast<double>(last - first) * 1e-9;
    state.counters["asked_fps"] = frames.rate;
    state.counters["mean_fps"] = seconds > 0 ? static_cast<double>(lastId - firstId) / seconds : 0;
    state.counters["no_buffer"] = static_cast<double>(statistics.missedForBuffer);
    state.counters["unaccounted"] =
        static_cast<double>(camera.read(framesSentAt)) -
        static_cast<double>(statistics.delivered + statistics.failed + statistics.missedForBuffer);
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

void openCloseCamera(benchmark::State& state) {
    for ([[maybe_unused]] const auto& iteration : state) {
        const Camera camera;
        const auto stream = camera.device().OpenStream();
        stream->Start(static_cast<std::size_t>(camera.read(payloadSizeAt)));
        camera.write(acquisitionStartAt, std::int64_t{1});
    }
}

BENCHMARK_CAPTURE(stream, small_64x64_at_10000, Frames{64, 64, 10000, false})->UseRealTime();
BENCHMARK_CAPTURE(stream, small_64x64_chunks_at_10000, Frames{64, 64, 10000, true})->UseRealTime();
BENCHMARK_CAPTURE(stream, small_64x64_unlimited, Frames{64, 64, 0, false})->UseRealTime();
// 12.6 MB each: 2 GB a second.
BENCHMARK_CAPTURE(stream, large_4096x3072_at_159, Frames{4096, 3072, 159, false})->UseRealTime();
BENCHMARK_CAPTURE(stream, large_4096x3072_unlimited, Frames{4096, 3072, 0, false})->UseRealTime();
BENCHMARK(openCloseCamera)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
