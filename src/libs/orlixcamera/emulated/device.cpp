#include "orlixcamera/emulated/device.h"

#include <unistd.h>

#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/description.h"
#include "orlixcamera/emulated/notices.h"
#include "orlixcamera/emulated/stream.h"

namespace Orlix::Emulated {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

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
      notices_(std::make_shared<Notices>()) {}

Device::~Device() {
    Close();
    notices_->Finish();
}

void Device::Open() {
    const std::scoped_lock lock(mutex_);
    if (session_ != 0) {
        const std::string text = "Device '" + camera_->GetLabel() + "' is open already.";
        throw RuntimeException(text.c_str(), __FILE__, __LINE__);
    }
    session_ = camera_->Take(holderText(), notices_->BeginOpening());
}

void Device::Close() noexcept {
    const std::scoped_lock lock(mutex_);
    camera_->Release(std::exchange(session_, 0));
    notices_->EndOpening();
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
    notices_->SetSink(sink);
}

std::unique_ptr<Transport::IStream> Device::OpenStream() {
    return std::make_unique<Stream>(camera_, session());
}

Session Device::session() const noexcept {
    const std::scoped_lock lock(mutex_);
    return session_;
}

}  // namespace Orlix::Emulated
