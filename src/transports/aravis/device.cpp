#include "aravis/device.h"

#include <string>
#include <system_error>
#include <utility>

#include "aravis/bootstrap.h"
#include "aravis/layermemory.h"
#include "aravis/messages.h"
#include "aravis/stream.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

namespace {

[[noreturn]] void throwState(const Found& camera, const char* state) {
    const std::string text = "Device '" + camera.label + "' " + state + ".";
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

[[noreturn]] void throwNoLayerMemory() {
    throw InvalidArgumentException("USB3 Vision devices have no memory of a transport layer.",
                                   __FILE__, __LINE__);
}

}  // namespace

Device::Device(const Found& camera, std::function<void()> lost)
    : camera_(camera), lost_(std::move(lost)) {}

Device::~Device() {
    Close();
    notices_->SetSink(nullptr);
}

Device::Opening::Opening(std::shared_ptr<Connection> opened) : connection(std::move(opened)) {}

// The heartbeat is the last to go: whoever waits for a camera that dies now waits for what it
// finds.
Device::Opening::~Opening() {
    connection->CheckAlive();
    events.reset();
    connection->Close();
}

void Device::Open() {
    const std::scoped_lock control(control_);
    if (IsOpen()) {
        throwState(camera_, "is open already");
    }
    try {
        auto opening = open();
        const std::scoped_lock lock(mutex_);
        opening_ = std::move(opening);
    } catch (const std::system_error& error) {
        throwState(camera_, (std::string("can't be opened: ") + error.what()).c_str());
    }
}

std::unique_ptr<Device::Opening> Device::open() {
    const std::uint64_t number = notices_->BeginOpening();
    auto opening = std::make_unique<Opening>(
        Connection::Open(camera_, [notices = notices_, number, lost = lost_] {
            lost();
            notices->TellLoss(number);
        }));
    opening->heartbeat = std::make_unique<Heartbeat>(opening->connection);
    // The camera may have lost its power since the last time.
    streamState_->ChangeSettings(
        [](StreamSettings& settings) { settings.negotiatePacketSize = true; });
    if (isNetwork()) {
        opening->events = MessageChannel::Open(
            opening->connection,
            [notices = notices_, number](const Transport::EventMessage& message) {
                notices->TellEvent(number, message);
            });
    } else {
        Tell("Device '" + camera_.label +
             "' is reached by USB3 Vision, whose events are not available here.");
    }
    return opening;
}

void Device::Close() noexcept {
    const std::scoped_lock control(control_);
    std::unique_ptr<Opening> opening;
    {
        const std::scoped_lock lock(mutex_);
        opening = std::move(opening_);
    }
    notices_->EndOpening();
}

bool Device::IsOpen() const noexcept {
    const std::scoped_lock lock(mutex_);
    return opening_ != nullptr;
}

std::shared_ptr<Connection> Device::connection() const {
    const std::scoped_lock lock(mutex_);
    if (opening_ == nullptr) {
        throwState(camera_, "isn't open");
    }
    return opening_->connection;
}

void Device::Read(std::int64_t address, void* buffer, std::size_t length) {
    connection()->Read(address, buffer, length);
}

void Device::Write(std::int64_t address, const void* buffer, std::size_t length) {
    connection()->Write(address, buffer, length);
    if (isNetwork() && Bootstrap::Touches(Bootstrap::streamPacketSize, address, length)) {
        // Who sets the size of packets means it.
        streamState_->ChangeSettings(
            [](StreamSettings& settings) { settings.negotiatePacketSize = false; });
    }
}

std::shared_ptr<const std::string> Device::GetDescription() {
    return connection()->GetDescription();
}

std::shared_ptr<const std::string> Device::GetLayerDescription() {
    return isNetwork() ? Aravis::GetLayerDescription() : nullptr;
}

void Device::ReadLayer(std::int64_t address, void* buffer, std::size_t length) {
    if (!isNetwork()) {
        throwNoLayerMemory();
    }
    ReadLayerMemory(*connection(), *streamState_, address, buffer, length);
}

void Device::WriteLayer(std::int64_t address, const void* buffer, std::size_t length) {
    if (!isNetwork()) {
        throwNoLayerMemory();
    }
    WriteLayerMemory(*connection(), *streamState_, address, buffer, length);
}

bool Device::CheckAlive() {
    const auto open = connection();
    open->CheckAlive();
    return !open->IsLost();
}

void Device::SetSink(Transport::IDeviceSink* sink) {
    notices_->SetSink(sink);
}

std::unique_ptr<Transport::IStream> Device::OpenStream() {
    auto open = connection();
    if (open->IsLost()) {
        open->ThrowGone();
    }
    auto place = std::make_shared<char>();
    {
        const std::scoped_lock lock(mutex_);
        if (!stream_.expired()) {
            throwState(camera_, "streams already");
        }
        stream_ = place;
    }
    return std::make_unique<Stream>(std::move(open), streamState_, std::move(place));
}

}  // namespace Orlix::Aravis
