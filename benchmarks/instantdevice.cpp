#include "instantdevice.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace InstantCamera {
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
std::vector<std::uint8_t> makeFrame(Chunks chunks) {
    std::vector<std::uint8_t> bytes(imageBytes, 100);
    if (chunks == Chunks::Three) {
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
    explicit InstantStream(Chunks chunks) : frame_(makeFrame(chunks)), chunks_(chunks) {}

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
        buffer.kind = chunks_ == Chunks::Three ? Transport::PayloadKind::ImageWithChunks
                                               : Transport::PayloadKind::Image;
        buffer.chunkByteOrder = Transport::ChunkByteOrder::LittleEndian;
        buffer.filled = frame_.size();
        buffer.frameId = ++statistics_.delivered;
        buffer.pixelType = PixelType_Mono8;
        buffer.width = 64;
        buffer.height = 64;
        return &buffer;
    }
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
    const Chunks chunks_;
    mutable std::mutex mutex_;
    std::vector<StreamBuffer*> queued_;
    std::atomic<bool> running_{false};
    Transport::StreamStatistics statistics_;
};

class InstantDevice final : public Transport::IDevice {
public:
    InstantDevice(Chunks chunks, CDeviceInfo info) : chunks_(chunks), info_(std::move(info)) {}

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
    const Chunks chunks_;
    const CDeviceInfo info_;
};

CDeviceInfo makeInfo() {
    CDeviceInfo info;
    info.SetPropertyValue("FullName", "Instant#1");
    info.SetPropertyValue("DeviceClass", "Instant");
    return info;
}

class InstantLayer final : public Transport::ILayer {
public:
    explicit InstantLayer(Chunks chunks) : chunks_(chunks) {
        info_.SetPropertyValue("DeviceClass", "Instant");
    }

    [[nodiscard]] const CInfoBase& GetInfo() const noexcept override { return info_; }
    [[nodiscard]] std::vector<CDeviceInfo> Enumerate() override { return {makeInfo()}; }
    [[nodiscard]] std::shared_ptr<Transport::IDevice> CreateDevice(
        const CDeviceInfo& info) override {
        return std::make_shared<InstantDevice>(chunks_, info);
    }
    void SetDevicesChanged(std::function<void()>) override {}

private:
    const Chunks chunks_;
    CInfoBase info_;
};

}  // namespace

std::shared_ptr<Transport::IDevice> createDevice(Chunks chunks) {
    return std::make_shared<InstantDevice>(chunks, makeInfo());
}

std::shared_ptr<Transport::ILayer> createLayer(Chunks chunks) {
    return std::make_shared<InstantLayer>(chunks);
}

}  // namespace InstantCamera
