// The registers of a device, or of its transport layer, as the port of a node map.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "genapi/portimpl.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Detail {

enum class Memory : std::uint8_t { Device, Layer };

// Nothing is available while the camera is closed.
class DevicePort final : public GenApi::CPortImpl {
public:
    DevicePort(std::shared_ptr<Transport::IDevice> device, Memory memory)
        : device_(std::move(device)), memory_(memory) {}

    void SetOpen(bool open) { open_ = open; }

    [[nodiscard]] GenApi::EAccessMode GetAccessMode() const override {
        return open_ ? GenApi::RW : GenApi::NA;
    }
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const auto length = static_cast<std::size_t>(Length);
        if (memory_ == Memory::Device) {
            device_->Read(Address, pBuffer, length);
        } else {
            device_->ReadLayer(Address, pBuffer, length);
        }
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const auto length = static_cast<std::size_t>(Length);
        if (memory_ == Memory::Device) {
            device_->Write(Address, pBuffer, length);
        } else {
            device_->WriteLayer(Address, pBuffer, length);
        }
    }

private:
    const std::shared_ptr<Transport::IDevice> device_;
    const Memory memory_;
    std::atomic<bool> open_{true};
};

}  // namespace Orlix::Detail
