// A device that does what a test tells it: it sends a frame, an event or the news of its loss when
// asked to. So a test waits for nothing but the camera.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/scripteddescription.h"
#include "orlixcamera/transport/transport.h"

namespace CameraTest {

namespace Transport = Orlix::Transport;
using Orlix::Transport::FrameFate;

// What the next frame is; its bytes are the chunk part, behind an image of `value`s.
struct Frame {
    FrameFate fate = FrameFate::Delivered;
    std::string error;
    std::uint8_t value = 0;
    Transport::PayloadKind kind = Transport::PayloadKind::Image;
    std::vector<std::uint8_t> chunks;
    std::uint32_t width = 8;
    std::uint32_t height = 4;
    std::size_t missingBytes = 0;
};

// Shared by the device and its stream, as the camera at the other end of the cable.
class ScriptedStream final : public Transport::IStream {
public:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<Transport::StreamBuffer*> queued;
        std::deque<Transport::StreamBuffer*> filled;
        Transport::StreamStatistics statistics;
        std::size_t streams = 0;
        std::uint64_t frameId = 0;
        std::size_t starts = 0;
        bool running = false;
        bool lost = false;
        bool refuseStart = false;
        std::size_t payloadSize = 0;
        std::size_t waiting = 0;  // calls of Wait with a time-out
    };

    explicit ScriptedStream(std::shared_ptr<State> state) : state_(std::move(state)) {
        const std::scoped_lock lock(state_->mutex);
        ++state_->streams;
        state_->statistics = {};
    }
    ~ScriptedStream() override {
        const std::scoped_lock lock(state_->mutex);
        --state_->streams;
        state_->queued.clear();
        state_->filled.clear();
    }

    void Queue(Transport::StreamBuffer& buffer) override {
        const std::scoped_lock lock(state_->mutex);
        state_->queued.push_back(&buffer);
        state_->changed.notify_all();
    }
    void Start(std::size_t payloadSize) override {
        const std::scoped_lock lock(state_->mutex);
        if (state_->lost || state_->refuseStart) {
            throw GenICam::RuntimeException("The stream refuses to start.", __FILE__, __LINE__);
        }
        state_->running = true;
        state_->frameId = 0;
        ++state_->starts;
        state_->payloadSize = payloadSize;
    }
    [[nodiscard]] Transport::StreamBuffer* Wait(std::chrono::milliseconds timeOut) override {
        std::unique_lock lock(state_->mutex);
        const std::size_t counts = timeOut > std::chrono::milliseconds(0) ? 1 : 0;
        state_->waiting += counts;
        state_->changed.notify_all();
        state_->changed.wait_for(lock, timeOut, [this] {
            return !state_->running || state_->lost || !state_->filled.empty();
        });
        state_->waiting -= counts;
        if (!state_->running) {
            return nullptr;
        }
        if (state_->filled.empty()) {
            if (state_->lost) {
                throw GenICam::RuntimeException("Device 'scripted' was removed.", __FILE__,
                                                __LINE__);
            }
            return nullptr;
        }
        Transport::StreamBuffer* const buffer = state_->filled.front();
        state_->filled.pop_front();
        return buffer;
    }
    void Stop() noexcept override {
        const std::scoped_lock lock(state_->mutex);
        state_->running = false;
        state_->changed.notify_all();
    }
    [[nodiscard]] Transport::StreamBuffer* TakeBack() noexcept override {
        const std::scoped_lock lock(state_->mutex);
        auto& from = state_->filled.empty() ? state_->queued : state_->filled;
        if (state_->running || from.empty()) {
            return nullptr;
        }
        Transport::StreamBuffer* const buffer = from.front();
        from.pop_front();
        return buffer;
    }
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const override {
        const std::scoped_lock lock(state_->mutex);
        return state_->statistics;
    }

private:
    const std::shared_ptr<State> state_;
};

template <class Number>
void append(std::vector<std::uint8_t>& bytes, Number number) {
    const auto* const raw = reinterpret_cast<const std::uint8_t*>(&number);
    bytes.insert(bytes.end(), raw, raw + sizeof number);
}

class ScriptedDevice final : public Transport::IDevice {
public:
    ScriptedDevice() {
        info_.SetPropertyValue("DeviceClass", "Scripted");
        info_.SetPropertyValue("FullName", "Scripted#1");
        info_.SetPropertyValue("SerialNumber", "1");
        memory_[Address::payload] = 64;
        memory_[Address::width] = 8;
    }
    ~ScriptedDevice() override { JoinLoss(); }

    // ---- What the test does

    void SetPayload(std::int64_t bytes) { Set(Address::payload, bytes); }
    [[nodiscard]] std::int64_t Get(std::int64_t address) {
        const std::scoped_lock lock(mutex_);
        return memory_[address];
    }
    void Set(std::int64_t address, std::int64_t value) {
        const std::scoped_lock lock(mutex_);
        memory_[address] = value;
    }
    // False if no buffer is queued; the frame is lost then.
    bool Send(const Frame& frame = {}) {
        const std::scoped_lock lock(stream->mutex);
        ++stream->frameId;
        if (!stream->running || stream->queued.empty()) {
            ++stream->statistics.missedForBuffer;
            return false;
        }
        Transport::StreamBuffer& buffer = *stream->queued.front();
        stream->queued.pop_front();
        fill(buffer, frame);
        ++(buffer.fate == FrameFate::Delivered ? stream->statistics.delivered
                                               : stream->statistics.failed);
        stream->filled.push_back(&buffer);
        stream->changed.notify_all();
        return true;
    }
    // Until a thread waits for a frame.
    void WaitForWaiting() const {
        std::unique_lock lock(stream->mutex);
        stream->changed.wait(lock, [&] { return stream->waiting != 0; });
    }
    void WaitForQueued(std::size_t count) const {
        std::unique_lock lock(stream->mutex);
        stream->changed.wait(lock, [&] { return stream->queued.size() >= count; });
    }
    void SendEvent(std::uint16_t id, std::int64_t first, std::int64_t second = 0) {
        std::vector<std::uint8_t> data;
        append(data, first);
        append(data, second);
        const std::scoped_lock lock(sinkMutex_);
        if (sink_ != nullptr) {
            sink_->OnEvent({id, 0, data.data(), data.size()});
        }
    }
    // Pulls the cable; the news comes on a thread of its own.
    void Lose() {
        {
            const std::scoped_lock lock(mutex_);
            lost_ = true;
        }
        {
            const std::scoped_lock lock(stream->mutex);
            stream->lost = true;
            stream->changed.notify_all();
        }
        JoinLoss();
        loss_ = std::thread([this] {
            const std::scoped_lock lock(sinkMutex_);
            if (sink_ != nullptr) {
                sink_->OnLost();
            }
        });
    }
    void JoinLoss() {
        if (loss_.joinable()) {
            loss_.join();
        }
    }
    void Recover() {
        JoinLoss();
        const std::scoped_lock lock(mutex_, stream->mutex);
        lost_ = false;
        stream->lost = false;
    }

    const std::shared_ptr<ScriptedStream::State> stream = std::make_shared<ScriptedStream::State>();
    std::string description = scriptedDescription;
    bool sendAtStart = false;        // a frame with each start of the acquisition
    std::function<void()> onAccess;  // before each access to a register; what it throws passes
    std::function<void(std::int64_t)> afterWrite;  // with its address; what it throws passes
    std::function<void()> beforeDescription;
    std::atomic<bool> answers = true;  // when asked for a sign of life
    std::atomic<int> asked = 0;

    // ---- What the camera does

    [[nodiscard]] const Orlix::CDeviceInfo& GetInfo() const noexcept override { return info_; }
    void Open() override {
        requireReachable();
        const std::scoped_lock lock(mutex_);
        open_ = true;
    }
    void Close() noexcept override {
        const std::scoped_lock lock(mutex_);
        open_ = false;
    }
    [[nodiscard]] bool IsOpen() const noexcept override {
        const std::scoped_lock lock(mutex_);
        return open_;
    }
    void Read(std::int64_t address, void* buffer, std::size_t length) override {
        requireReachable();
        tellOfAccess();
        const std::scoped_lock lock(mutex_);
        std::memcpy(buffer, &memory_[address], length);
    }
    void Write(std::int64_t address, const void* buffer, std::size_t length) override {
        requireReachable();
        tellOfAccess();
        const std::scoped_lock lock(mutex_);
        std::memcpy(&memory_[address], buffer, length);
        if (address == Address::start || address == Address::stop) {
            ++memory_[1000 + address];  // counts the commands
        }
        if (address == Address::start && sendAtStart) {
            Send();
        }
        if (afterWrite) {
            afterWrite(address);
        }
    }
    [[nodiscard]] bool CheckAlive() override {
        ++asked;
        return answers;
    }
    [[nodiscard]] std::shared_ptr<const std::string> GetDescription() override {
        if (beforeDescription) {
            beforeDescription();
        }
        return std::make_shared<const std::string>(description);
    }
    [[nodiscard]] std::shared_ptr<const std::string> GetLayerDescription() override {
        return nullptr;
    }
    void ReadLayer(std::int64_t, void*, std::size_t) override {}
    void WriteLayer(std::int64_t, const void*, std::size_t) override {}
    void SetSink(Transport::IDeviceSink* sink) override {
        const std::scoped_lock lock(sinkMutex_);
        sink_ = sink;
    }
    [[nodiscard]] std::unique_ptr<Transport::IStream> OpenStream() override {
        requireReachable();
        return std::make_unique<ScriptedStream>(stream);
    }

private:
    void requireReachable() const {
        const std::scoped_lock lock(mutex_);
        if (lost_) {
            throw GenICam::RuntimeException("Device 'scripted' was removed.", __FILE__, __LINE__);
        }
    }

    void tellOfAccess() const {
        if (onAccess) {
            onAccess();
        }
    }

    void fill(Transport::StreamBuffer& buffer, const Frame& frame) const {
        const std::size_t imageSize = std::size_t{frame.width} * frame.height;
        auto* const bytes = static_cast<std::uint8_t*>(buffer.data);
        std::memset(bytes, frame.value, std::min(imageSize, buffer.capacity));
        std::copy(frame.chunks.begin(), frame.chunks.end(), bytes + imageSize);
        buffer.fate = frame.fate;
        buffer.error = GenICam::gcstring(frame.error);
        buffer.kind = frame.kind;
        buffer.chunkByteOrder = Transport::ChunkByteOrder::LittleEndian;
        buffer.filled = imageSize + frame.chunks.size() - frame.missingBytes;
        buffer.frameId = stream->frameId;
        buffer.timestamp = 1000 * stream->frameId;
        buffer.pixelType = Orlix::PixelType_Mono8;
        buffer.width = frame.width;
        buffer.height = frame.height;
    }

    Orlix::CDeviceInfo info_;
    mutable std::mutex mutex_;
    std::map<std::int64_t, std::int64_t> memory_;
    bool open_ = false;
    bool lost_ = false;
    std::mutex sinkMutex_;
    Transport::IDeviceSink* sink_ = nullptr;
    std::thread loss_;
};

}  // namespace CameraTest
