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

#include "orlixcamera/cameralayer.h"
#include "orlixcamera/copycounter.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/orliximage.h"
#include "orlixcamera/transport/transport.h"

namespace {

using namespace Orlix;
using Transport::StreamBuffer;

constexpr const char* description = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" ModelName="Instant"
    VendorName="Orlix" StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1"
    SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="3E6E1B0C-6C8B-4C0E-9D54-2B1A6A2F7D11"
    VersionGuid="37C0D7F2-1C5A-4D4B-8E0F-53A4A2C9E612">
  <Category Name="Root"><pFeature>PayloadSize</pFeature></Category>
  <Integer Name="PayloadSize"><Value>8192</Value></Integer>
  <IntReg Name="ChunkFrameID"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>FrameID</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="ChunkTimestamp"><Address>0</Address><Length>8</Length><AccessMode>RO</AccessMode>
    <pPort>Timestamp</pPort><Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <FloatReg Name="ChunkExposureTime"><Address>0</Address><Length>8</Length>
    <AccessMode>RO</AccessMode><pPort>ExposureTime</pPort><Endianess>LittleEndian</Endianess>
  </FloatReg>
  <Port Name="Device"/>
  <Port Name="FrameID"><ChunkID>A1</ChunkID></Port>
  <Port Name="Timestamp"><ChunkID>A2</ChunkID></Port>
  <Port Name="ExposureTime"><ChunkID>A3</ChunkID></Port>
</RegisterDescription>
)";

constexpr std::size_t imageBytes = 4096;

void append(std::vector<std::uint8_t>& bytes, const void* data, std::size_t size) {
    const auto* const raw = static_cast<const std::uint8_t*>(data);
    bytes.insert(bytes.end(), raw, raw + size);
}

// An image of 64x64 and, if asked for, three chunks behind it.
std::vector<std::uint8_t> makeFrame(bool withChunks) {
    std::vector<std::uint8_t> bytes(imageBytes, 100);
    if (withChunks) {
        const auto end = [&](std::uint32_t id, std::uint32_t length) {
            append(bytes, &id, sizeof id);
            append(bytes, &length, sizeof length);
        };
        end(1, imageBytes);
        for (std::uint32_t id = 0xA1; id <= 0xA3; ++id) {
            const double value = 5;
            append(bytes, &value, sizeof value);
            end(id, sizeof value);
        }
    }
    return bytes;
}

// Has a frame ready whenever a buffer is queued.
class InstantStream final : public Transport::IStream {
public:
    explicit InstantStream(bool withChunks) : frame_(makeFrame(withChunks)), chunks_(withChunks) {}

    void Queue(StreamBuffer& buffer) override {
        const std::scoped_lock lock(mutex_);
        queued_.push_back(&buffer);
    }
    void Start(std::size_t) override { running_ = true; }
    [[nodiscard]] StreamBuffer* Wait(std::chrono::milliseconds) override {
        const std::scoped_lock lock(mutex_);
        if (!running_ || queued_.empty()) {
            return nullptr;
        }
        StreamBuffer& buffer = *queued_.back();
        queued_.pop_back();
        if (buffer.fate != Transport::FrameFate::Delivered) {
            std::memcpy(buffer.data, frame_.data(), frame_.size());
        }
        buffer.fate = Transport::FrameFate::Delivered;
        buffer.kind =
            chunks_ ? Transport::PayloadKind::ImageWithChunks : Transport::PayloadKind::Image;
        buffer.chunkByteOrder = Transport::ChunkByteOrder::LittleEndian;
        buffer.filled = frame_.size();
        buffer.frameId = ++statistics_.delivered;
        buffer.pixelType = PixelType_Mono8;
        buffer.width = 64;
        buffer.height = 64;
        return &buffer;
    }
    void Interrupt() noexcept override {}
    void Stop() noexcept override { running_ = false; }
    [[nodiscard]] StreamBuffer* TakeBack() noexcept override {
        const std::scoped_lock lock(mutex_);
        if (queued_.empty()) {
            return nullptr;
        }
        StreamBuffer* const buffer = queued_.back();
        queued_.pop_back();
        return buffer;
    }
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const override {
        const std::scoped_lock lock(mutex_);
        return statistics_;
    }

private:
    const std::vector<std::uint8_t> frame_;
    const bool chunks_;
    mutable std::mutex mutex_;
    std::vector<StreamBuffer*> queued_;
    std::atomic<bool> running_{false};
    Transport::StreamStatistics statistics_;
};

class InstantDevice final : public Transport::IDevice {
public:
    explicit InstantDevice(bool withChunks) : chunks_(withChunks) {}

    [[nodiscard]] const CDeviceInfo& GetInfo() const noexcept override { return info_; }
    void Open() override {}
    void Close() noexcept override {}
    [[nodiscard]] bool IsOpen() const noexcept override { return false; }
    void Read(std::int64_t, void* buffer, std::size_t length) override {
        std::memset(buffer, 0, length);
    }
    void Write(std::int64_t, const void*, std::size_t) override {}
    [[nodiscard]] std::shared_ptr<const std::string> GetDescription() override {
        return std::make_shared<const std::string>(description);
    }
    [[nodiscard]] std::shared_ptr<const std::string> GetLayerDescription() override {
        return nullptr;
    }
    void ReadLayer(std::int64_t, void*, std::size_t) override {}
    void WriteLayer(std::int64_t, const void*, std::size_t) override {}
    void SetSink(Transport::IDeviceSink*) override {}
    [[nodiscard]] std::unique_ptr<Transport::IStream> OpenStream() override {
        return std::make_unique<InstantStream>(chunks_);
    }

private:
    const bool chunks_;
    CDeviceInfo info_;
};

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
void frameToHandler(benchmark::State& state, bool withChunks) {
    constexpr std::size_t frames = 100000;
    const auto device = CreateCameraDevice(std::make_shared<InstantDevice>(withChunks));
    static_cast<void>(PixelCopyCounter::Reset());
    for (auto _ : state) {
        Meter meter(frames, withChunks);
        CInstantCamera camera(device.get());
        camera.RegisterImageEventHandler(&meter, RegistrationMode_Append, Cleanup_None);
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        state.SetIterationTime(meter.WaitForSeconds() / double(frames - 1));
    }
    state.counters["copied bytes"] = static_cast<double>(PixelCopyCounter::Read());
}
BENCHMARK_CAPTURE(frameToHandler, without_chunks, false)->UseManualTime()->Iterations(5);
BENCHMARK_CAPTURE(frameToHandler, three_chunks, true)->UseManualTime()->Iterations(5);

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
