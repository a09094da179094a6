// The simulated device behind its commands: its whole address space, who controls it, and what a
// write into one of its registers sets off. One thread at a time; that of the server.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "bootstrap.h"
#include "cameramemory.h"
#include "orlixcamera/emulated/camera.h"
#include "protocol.h"
#include "serveddescription.h"
#include "statistics.h"

namespace Orlix::Camsim {

using Clock = std::chrono::steady_clock;

// What the stream channel goes by.
struct StreamSettings {
    Endpoint destination;
    std::uint32_t packetSize = 1500;
    std::uint32_t packetDelay = 0;  // ticks
    bool doNotFragment = false;
    bool longIds = false;
};

struct MessageSettings {
    Endpoint destination;
    std::uint32_t timeout = 0;  // milliseconds
    std::uint32_t retries = 0;
};

// The channels of a device, told by it. Calls are short.
class IChannels {
public:
    virtual ~IChannels() = default;
    // The camera's session began or ended; 0 for none.
    virtual std::shared_ptr<Emulated::Holder> GetHolder() = 0;
    virtual void SetStream(Emulated::Session session, const StreamSettings& settings) = 0;
    virtual void FireTestPacket(const StreamSettings& settings) = 0;
    virtual void SetMessages(const MessageSettings& settings) = 0;
};

class Device {
public:
    Device(std::shared_ptr<Emulated::Camera> camera, const DeviceIdentity& identity,
           ServedDescription description, IChannels& channels, Statistics& statistics);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void SetSourcePorts(std::uint16_t streamPort, std::uint16_t messagePort);
    [[nodiscard]] Bootstrap& GetBootstrap() noexcept { return bootstrap_; }

    // Takes the user-defined name over from the camera, which keeps it.
    void RefreshName();

    // A range of whole words. Nothing where the device doesn't answer at all.
    [[nodiscard]] std::optional<Status> Read(const Endpoint& client, std::uint32_t address,
                                             MutableBytes out);
    [[nodiscard]] std::optional<Status> Write(const Endpoint& client, std::uint32_t address,
                                              Bytes bytes);

    // To be told of every command, since those of the program in control are its heartbeat.
    void Heard(const Endpoint& client, Clock::time_point now) noexcept;
    // Ends the control of a program that wasn't heard for too long.
    void CheckHeartbeat(Clock::time_point now);
    // When that will be.
    [[nodiscard]] std::optional<Clock::time_point> GetDeadline() const;

    [[nodiscard]] bool HasPower() const noexcept { return camera_->IsPlugged(); }
    [[nodiscard]] bool IsController(const Endpoint& client) const noexcept;
    // Whether control is held from there, by whatever port.
    [[nodiscard]] bool IsFromController(std::uint32_t address) const noexcept {
        return controller_ && controller_->address == address;
    }
    // After a loss of power: nothing is left of what programs set.
    void LosePower();

private:
    [[nodiscard]] Status readFile(std::uint32_t address, MutableBytes out) const;
    [[nodiscard]] std::optional<Status> writeBootstrap(const Endpoint& client,
                                                       std::uint32_t address, Bytes bytes);
    [[nodiscard]] std::optional<Status> writeWord(const Endpoint& client, std::uint32_t address,
                                                  std::uint32_t value);
    [[nodiscard]] std::optional<Status> writeControl(const Endpoint& client, std::uint32_t value);
    [[nodiscard]] std::optional<Status> takeControl(const Endpoint& client, std::uint32_t value);
    [[nodiscard]] Status writeUserName(std::uint32_t offset, Bytes bytes);
    void setController(const Endpoint& client, std::uint32_t value);
    void release();
    void apply(std::uint32_t address);
    void controlTimestamp(std::uint32_t value);
    [[nodiscard]] StreamSettings streamSettings() const;
    [[nodiscard]] MessageSettings messageSettings() const;

    const std::shared_ptr<Emulated::Camera> camera_;
    Bootstrap bootstrap_;
    CameraMemory memory_;
    const std::string file_;
    IChannels& channels_;
    Statistics& statistics_;
    Emulated::Session session_ = 0;
    std::optional<Endpoint> controller_;
    std::uint32_t privilege_ = 0;
    std::uint32_t switchoverKey_ = 0;
    Clock::time_point lastHeard_;
    Clock::time_point clockStart_{};
};

}  // namespace Orlix::Camsim
