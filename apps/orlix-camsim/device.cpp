#include "device.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/registertable.h"

namespace Orlix::Camsim {
namespace {

constexpr std::uint32_t wordSize = 4;
constexpr std::uint32_t userNameSize = 16;
constexpr std::uint32_t portMask = 0xFFFF;
constexpr unsigned keyShift = 16;

// The file ends with a whole word.
std::string padded(std::string file) {
    file.resize((file.size() + wordSize - 1) / wordSize * wordSize);
    return file;
}

}  // namespace

Device::Device(std::shared_ptr<Emulated::Camera> camera, const DeviceIdentity& identity,
               ServedDescription description, IChannels& channels, Statistics& statistics)
    : camera_(std::move(camera)),
      bootstrap_(identity),
      memory_(camera_),
      file_(padded(std::move(description.bytes))),
      channels_(channels),
      statistics_(statistics) {
    constexpr std::size_t urlSize = 512;
    constexpr std::uint32_t oneEntry = 1U << 26;
    constexpr std::uint32_t versions = 1U << 26 | 1U << 8 | 1U << 2;  // 1.0.0, schema 1.1
    bootstrap_.SetText(Reg::firstUrl, urlSize, description.url);
    bootstrap_.SetValue(Reg::manifest, oneEntry);
    bootstrap_.SetValue(Reg::manifest + 2 * wordSize, versions);
    bootstrap_.SetValue(Reg::manifest + 3 * wordSize, Reg::firstUrl);
}

Device::~Device() {
    release();
}

void Device::SetSourcePorts(std::uint16_t streamPort, std::uint16_t messagePort) {
    bootstrap_.SetValue(Reg::streamSource, streamPort);
    bootstrap_.SetValue(Reg::messageSource, messagePort);
}

std::optional<Status> Device::Read(const Endpoint& client, std::uint32_t address,
                                   MutableBytes out) {
    const bool isExclusive = (privilege_ & Bit::exclusive) != 0;
    const bool isControl = address == Reg::control && out.size() == wordSize;
    if (isExclusive && !IsController(client) && !isControl) {
        return Status::AccessDenied;
    }
    if (Bootstrap::Contains(address)) {
        RefreshName();
        return bootstrap_.Read(address, out);
    }
    if (address >= fileBase) {
        return readFile(address, out);
    }
    if (address < cameraBase) {
        return Status::InvalidAddress;
    }
    return memory_.Read(session_, address - cameraBase, out);
}

std::optional<Status> Device::Write(const Endpoint& client, std::uint32_t address, Bytes bytes) {
    if (address == Reg::control && bytes.size() == wordSize) {
        return writeControl(client, Get<std::uint32_t>(bytes.data()));
    }
    if (!IsController(client)) {
        return Status::AccessDenied;
    }
    if (Bootstrap::Contains(address)) {
        return writeBootstrap(client, address, bytes);
    }
    if (address >= fileBase) {
        return address - fileBase < file_.size() ? Status::WriteProtect : Status::InvalidAddress;
    }
    if (address < cameraBase) {
        return Status::InvalidAddress;
    }
    return memory_.Write(session_, address - cameraBase, bytes);
}

Status Device::readFile(std::uint32_t address, MutableBytes out) const {
    const std::size_t offset = address - fileBase;
    if (offset >= file_.size() || out.size() > file_.size() - offset) {
        return Status::InvalidAddress;
    }
    std::memcpy(out.data(), &file_[offset], out.size());
    return Status::Success;
}

// A range is checked as a whole before its first word is written.
std::optional<Status> Device::writeBootstrap(const Endpoint& client, std::uint32_t address,
                                             Bytes bytes) {
    for (std::uint32_t offset = 0; offset < bytes.size(); offset += wordSize) {
        Status status = bootstrap_.CheckWrite(address + offset);
        if (status == Status::Success) {
            status =
                bootstrap_.CheckValue(address + offset, Get<std::uint32_t>(bytes.data() + offset));
        }
        if (status != Status::Success) {
            return status;
        }
    }
    if (address >= Reg::userName && address < Reg::discoveryEnd) {
        return writeUserName(address - Reg::userName, bytes);
    }
    for (std::uint32_t offset = 0; offset < bytes.size(); offset += wordSize) {
        const auto status =
            writeWord(client, address + offset, Get<std::uint32_t>(bytes.data() + offset));
        if (status != Status::Success) {
            return status;
        }
    }
    return Status::Success;
}

std::optional<Status> Device::writeWord(const Endpoint& client, std::uint32_t address,
                                        std::uint32_t value) {
    switch (address) {
        case Reg::control:
            return writeControl(client, value);
        case Reg::timestampControl:
            controlTimestamp(value);
            return Status::Success;
        case Reg::switchoverKey:
            switchoverKey_ = value & portMask;
            return Status::Success;
        case Reg::heartbeat:
            value = std::max(value, shortestHeartbeat);
            break;
        default:
            break;
    }
    const bool fires = address == Reg::packetSize && (value & Bit::fireTestPacket) != 0;
    bootstrap_.SetValue(address, fires ? value & ~Bit::fireTestPacket : value);
    apply(address);
    if (fires && streamSettings().destination.port != 0) {
        channels_.FireTestPacket(streamSettings());
    }
    return Status::Success;
}

void Device::apply(std::uint32_t address) {
    if (address >= Reg::messagePort && address < Reg::streamPort) {
        channels_.SetMessages(messageSettings());
    } else if ((address >= Reg::streamPort && address < Reg::manifest) ||
               address == Reg::gvspConfiguration) {
        channels_.SetStream(session_, streamSettings());
    }
}

std::optional<Status> Device::writeControl(const Endpoint& client, std::uint32_t value) {
    constexpr std::uint32_t privileges = Bit::exclusive | Bit::controlled;
    const bool releases = (value & (privileges | Bit::mayBeSwitchedOver)) == 0;
    if (!controller_) {
        return releases ? Status::Success : takeControl(client, value);
    }
    if (!IsController(client)) {
        const bool switches = (privilege_ & Bit::mayBeSwitchedOver) != 0 && !releases &&
                              value >> keyShift == switchoverKey_;
        if (!switches) {
            return Status::AccessDenied;
        }
    }
    if (releases) {
        release();
        return Status::Success;
    }
    if ((value & privileges) == 0) {
        return Status::InvalidParameter;
    }
    setController(client, value);
    return Status::Success;
}

// The camera of a fault script may refuse, or not be there.
std::optional<Status> Device::takeControl(const Endpoint& client, std::uint32_t value) {
    if ((value & (Bit::exclusive | Bit::controlled)) == 0) {
        return Status::InvalidParameter;
    }
    try {
        session_ = camera_->Take(TextOf(client), channels_.GetHolder());
    } catch (const GenICam::AccessException&) {
        return Status::AccessDenied;
    } catch (const GenICam::GenericException&) {
        return std::nullopt;
    }
    setController(client, value);
    return Status::Success;
}

void Device::setController(const Endpoint& client, std::uint32_t value) {
    controller_ = client;
    lastHeard_ = Clock::now();
    privilege_ = value & (Bit::exclusive | Bit::controlled | Bit::mayBeSwitchedOver);
    bootstrap_.SetValue(Reg::control, privilege_);
    bootstrap_.SetValue(Reg::primaryPort, client.port);
    bootstrap_.SetValue(Reg::primaryAddress, client.address);
}

// The channels belong to who has control.
void Device::release() {
    controller_.reset();
    privilege_ = 0;
    switchoverKey_ = 0;
    for (const std::uint32_t address :
         {Reg::control, Reg::primaryPort, Reg::primaryAddress, Reg::streamPort, Reg::messagePort,
          Reg::gvcpConfiguration}) {
        bootstrap_.SetValue(address, 0);
    }
    channels_.SetStream(session_, streamSettings());
    channels_.SetMessages(messageSettings());
    camera_->Release(std::exchange(session_, 0));
}

void Device::LosePower() {
    release();
    bootstrap_.PowerUp();
}

bool Device::IsController(const Endpoint& client) const noexcept {
    return controller_ == client;
}

void Device::Heard(const Endpoint& client, Clock::time_point now) noexcept {
    if (IsController(client)) {
        lastHeard_ = now;
    }
}

std::optional<Clock::time_point> Device::GetDeadline() const {
    const bool isOff = (bootstrap_.Value(Reg::gvcpConfiguration) & Bit::heartbeatOff) != 0;
    if (!controller_ || isOff) {
        return std::nullopt;
    }
    return lastHeard_ + std::chrono::milliseconds(bootstrap_.Value(Reg::heartbeat));
}

void Device::CheckHeartbeat(Clock::time_point now) {
    const auto deadline = GetDeadline();
    if (deadline && now >= *deadline) {
        ++statistics_.controlLosses;
        release();
    }
}

// The camera keeps the name itself; a name of its own length is cut to what has room here.
void Device::RefreshName() {
    std::array<char, 64> name{};
    try {
        camera_->Peek(Emulated::At::userDefinedName, name.data(), name.size());
    } catch (const GenICam::GenericException&) {
        return;  // it has just lost its power
    }
    bootstrap_.SetText(Reg::userName, userNameSize,
                       std::string(name.data(), strnlen(name.data(), name.size())));
}

Status Device::writeUserName(std::uint32_t offset, Bytes bytes) {
    if (offset + bytes.size() > userNameSize) {
        return Status::InvalidAddress;
    }
    std::array<std::uint8_t, 64> name{};
    static_cast<void>(bootstrap_.Read(Reg::userName, MutableBytes(name).first(userNameSize)));
    std::copy(bytes.begin(), bytes.end(), name.begin() + offset);
    const auto status =
        memory_.Write(session_, static_cast<std::uint32_t>(Emulated::At::userDefinedName), name);
    return status.value_or(Status::Error);
}

void Device::controlTimestamp(std::uint32_t value) {
    if ((value & Bit::resetTimestamp) != 0) {
        clockStart_ = Clock::now();
    }
    if ((value & Bit::latchTimestamp) != 0) {
        const std::uint64_t frequency = std::uint64_t{bootstrap_.Value(Reg::tickFrequencyHigh)}
                                            << 32 |
                                        bootstrap_.Value(Reg::tickFrequencyLow);
        const std::uint64_t ticks =
            TicksOf(static_cast<std::uint64_t>((Clock::now() - clockStart_).count()), frequency);
        bootstrap_.SetValue(Reg::timestampHigh, static_cast<std::uint32_t>(ticks >> 32));
        bootstrap_.SetValue(Reg::timestampLow, static_cast<std::uint32_t>(ticks));
    }
}

StreamSettings Device::streamSettings() const {
    const std::uint32_t packet = bootstrap_.Value(Reg::packetSize);
    StreamSettings settings;
    settings.destination = {bootstrap_.Value(Reg::streamAddress),
                            static_cast<std::uint16_t>(bootstrap_.Value(Reg::streamPort))};
    settings.packetSize = packet & portMask;
    settings.packetDelay = bootstrap_.Value(Reg::packetDelay);
    settings.doNotFragment = (packet & Bit::doNotFragment) != 0;
    settings.longIds = (bootstrap_.Value(Reg::gvspConfiguration) & Bit::longBlockIds) != 0;
    return settings;
}

MessageSettings Device::messageSettings() const {
    return {{bootstrap_.Value(Reg::messageAddress),
             static_cast<std::uint16_t>(bootstrap_.Value(Reg::messagePort))},
            bootstrap_.Value(Reg::messageTimeout),
            bootstrap_.Value(Reg::messageRetries)};
}

}  // namespace Orlix::Camsim
