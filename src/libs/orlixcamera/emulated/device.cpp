#include "orlixcamera/emulated/device.h"

#include <unistd.h>

#include <condition_variable>
#include <string>
#include <thread>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/description.h"
#include "orlixcamera/emulated/stream.h"

namespace Orlix::Emulated {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

class LossNotice : public std::enable_shared_from_this<LossNotice> {
public:
    void SetSink(Transport::IDeviceSink* sink) {
        std::unique_lock lock(mutex_);
        sink_ = sink;
        if (caller_ != std::this_thread::get_id()) {
            callEnded_.wait(lock, [this] { return caller_ == std::thread::id(); });
        }
    }

    // The thread keeps this object, and nothing else.
    void Send(std::uint64_t opening) {
        std::thread([self = shared_from_this(), opening] { self->call(opening); }).detach();
    }

    // News of an opening that was closed meanwhile would be taken for that of the next.
    [[nodiscard]] std::uint64_t BeginOpening() {
        const std::scoped_lock lock(mutex_);
        return ++opening_;
    }

private:
    void call(std::uint64_t opening) noexcept {
        std::unique_lock lock(mutex_);
        // A loss soon after that of the opening before waits for its turn.
        callEnded_.wait(lock, [this] { return caller_ == std::thread::id(); });
        if (sink_ == nullptr || opening != opening_) {
            return;
        }
        Transport::IDeviceSink* const sink = sink_;
        caller_ = std::this_thread::get_id();
        lock.unlock();
        sink->OnLost();
        lock.lock();
        caller_ = std::thread::id();
        callEnded_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable callEnded_;
    Transport::IDeviceSink* sink_ = nullptr;
    std::uint64_t opening_ = 0;
    std::thread::id caller_;
};

namespace {

[[noreturn]] void throwNoLayerMemory() {
    throw InvalidArgumentException("Emulated devices have no memory of a transport layer.",
                                   __FILE__, __LINE__);
}

std::string holderText() {
    return "process " + std::to_string(getpid()) + " (127.0.0.1)";
}

}  // namespace

Device::Device(std::shared_ptr<Camera> camera)
    : camera_(std::move(camera)),
      info_(camera_->GetInfo()),
      notice_(std::make_shared<LossNotice>()) {}

Device::~Device() {
    Close();
    notice_->SetSink(nullptr);
}

void Device::Open() {
    const std::scoped_lock lock(mutex_);
    if (session_ != 0) {
        const std::string text = "Device '" + camera_->GetLabel() + "' is open already.";
        throw RuntimeException(text.c_str(), __FILE__, __LINE__);
    }
    session_ = camera_->Take(holderText(), [notice = notice_, opening = notice_->BeginOpening()] {
        notice->Send(opening);
    });
}

void Device::Close() noexcept {
    const std::scoped_lock lock(mutex_);
    camera_->Release(std::exchange(session_, 0));
}

bool Device::IsOpen() const noexcept {
    return session() != 0;
}

void Device::Read(std::int64_t address, void* buffer, std::size_t length) {
    camera_->Read(session(), address, buffer, length);
}

void Device::Write(std::int64_t address, const void* buffer, std::size_t length) {
    camera_->Write(session(), address, buffer, length);
}

std::shared_ptr<const std::string> Device::GetDescription() {
    return GetDescriptionFile();
}

std::shared_ptr<const std::string> Device::GetLayerDescription() {
    return nullptr;
}

void Device::ReadLayer(std::int64_t, void*, std::size_t) {
    throwNoLayerMemory();
}

void Device::WriteLayer(std::int64_t, const void*, std::size_t) {
    throwNoLayerMemory();
}

void Device::SetSink(Transport::IDeviceSink* sink) {
    notice_->SetSink(sink);
}

std::unique_ptr<Transport::IStream> Device::OpenStream() {
    return std::make_unique<Stream>(camera_, session());
}

Session Device::session() const noexcept {
    const std::scoped_lock lock(mutex_);
    return session_;
}

}  // namespace Orlix::Emulated
