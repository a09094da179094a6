// The way to one camera through Aravis, for one opening at a time.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "aravis/connection.h"
#include "aravis/heartbeat.h"
#include "aravis/messagechannel.h"
#include "aravis/notices.h"
#include "aravis/streamsettings.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

class Device final : public Transport::IDevice {
public:
    // `lost` is called on any thread when the camera is lost, before the sink is.
    Device(const Found& camera, std::function<void()> lost);
    ~Device() override;

    // The identity as it was when the device was created.
    [[nodiscard]] const CDeviceInfo& GetInfo() const noexcept override { return camera_.info; }
    void Open() override;
    void Close() noexcept override;
    // Also after the loss, until Close.
    [[nodiscard]] bool IsOpen() const noexcept override;

    void Read(std::int64_t address, void* buffer, std::size_t length) override;
    void Write(std::int64_t address, const void* buffer, std::size_t length) override;

    [[nodiscard]] std::shared_ptr<const std::string> GetDescription() override;
    // Of GigE Vision cameras; null text for USB.
    [[nodiscard]] std::shared_ptr<const std::string> GetLayerDescription() override;
    void ReadLayer(std::int64_t address, void* buffer, std::size_t length) override;
    void WriteLayer(std::int64_t address, const void* buffer, std::size_t length) override;

    [[nodiscard]] bool CheckAlive() override;
    void SetSink(Transport::IDeviceSink* sink) override;
    [[nodiscard]] std::unique_ptr<Transport::IStream> OpenStream() override;

private:
    // All that one opening has.
    struct Opening {
        explicit Opening(std::shared_ptr<Connection> opened);
        ~Opening();  // closes the connection
        Opening(const Opening&) = delete;
        Opening& operator=(const Opening&) = delete;

        const std::shared_ptr<Connection> connection;
        std::unique_ptr<Heartbeat> heartbeat;
        std::unique_ptr<MessageChannel> events;
    };

    [[nodiscard]] std::unique_ptr<Opening> open();
    [[nodiscard]] std::shared_ptr<Connection> connection() const;
    [[nodiscard]] bool isNetwork() const noexcept { return camera_.protocol == Protocol::GigE; }

    const Found camera_;
    const std::function<void()> lost_;
    const std::shared_ptr<Notices> notices_ = std::make_shared<Notices>();
    const std::shared_ptr<StreamState> streamState_ = std::make_shared<StreamState>();

    std::mutex control_;  // Open against Close; outside of mutex_
    mutable std::mutex mutex_;
    std::unique_ptr<Opening> opening_;
    std::weak_ptr<void> stream_;  // the one that is open
};

}  // namespace Orlix::Aravis
