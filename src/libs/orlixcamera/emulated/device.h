// The way to one emulated camera, for one holder of control at a time.
#pragma once

#include <memory>
#include <mutex>

#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

class Notices;

class Device final : public Transport::IDevice {
public:
    explicit Device(std::shared_ptr<Camera> camera);
    ~Device() override;

    // The identity as it was when the device was created.
    [[nodiscard]] const CDeviceInfo& GetInfo() const noexcept override { return info_; }
    void Open() override;
    void Close() noexcept override;
    // Also after the loss, until Close.
    [[nodiscard]] bool IsOpen() const noexcept override;

    void Read(std::int64_t address, void* buffer, std::size_t length) override;
    void Write(std::int64_t address, const void* buffer, std::size_t length) override;

    [[nodiscard]] std::shared_ptr<const std::string> GetDescription() override;
    // There is no layer between program and camera that had features.
    [[nodiscard]] std::shared_ptr<const std::string> GetLayerDescription() override;
    void ReadLayer(std::int64_t address, void* buffer, std::size_t length) override;
    void WriteLayer(std::int64_t address, const void* buffer, std::size_t length) override;

    void SetSink(Transport::IDeviceSink* sink) override;
    [[nodiscard]] std::unique_ptr<Transport::IStream> OpenStream() override;

private:
    [[nodiscard]] Session session() const noexcept;

    const std::shared_ptr<Camera> camera_;
    const CDeviceInfo info_;
    const std::shared_ptr<Notices> notices_;
    mutable std::mutex mutex_;
    Session session_ = 0;
};

}  // namespace Orlix::Emulated
