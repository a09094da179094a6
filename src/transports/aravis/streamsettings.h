// What the layer's features set for the streams of a device, and what its streams have counted. Any
// thread may call.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {

struct StreamSettings {
    std::int64_t socketBufferSize = 0;  // 0 for one that fits the frames
    bool resend = true;
    std::int64_t packetTimeOut = 20;    // milliseconds until a missing packet is asked for
    std::int64_t frameRetention = 100;  // milliseconds without a packet until a frame is given up
    bool negotiatePacketSize = true;    // with the next start, unless somebody sets the size
};

// Bytes that a stream asked for, and what the kernel gave.
struct SocketBuffer {
    std::size_t wanted = 0;
    std::size_t granted = 0;

    [[nodiscard]] bool operator==(const SocketBuffer&) const noexcept = default;
};

// Of one device; shared by it and its streams.
class StreamState {
public:
    [[nodiscard]] StreamSettings GetSettings() const {
        const std::scoped_lock lock(mutex_);
        return settings_;
    }
    template <typename Change>
    void ChangeSettings(Change change) {
        const std::scoped_lock lock(mutex_);
        change(settings_);
    }

    // Of the stream that is open, else of the last. A stream calls nothing here with a lock held.
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const {
        const std::scoped_lock lock(mutex_);
        return live_ != nullptr ? live_->GetStatistics() : last_;
    }
    void Attach(const Transport::IStream& stream) {
        const std::scoped_lock lock(mutex_);
        live_ = &stream;
    }
    void Detach() {
        const std::scoped_lock lock(mutex_);
        last_ = live_->GetStatistics();
        live_ = nullptr;
    }
    [[nodiscard]] std::int64_t GetGrantedSocketBuffer() const {
        const std::scoped_lock lock(mutex_);
        return static_cast<std::int64_t>(socketBuffer_ ? socketBuffer_->granted : 0);
    }
    // Whether the last start asked for and got something else.
    bool SetSocketBuffer(const SocketBuffer& buffer) {
        const std::scoped_lock lock(mutex_);
        const bool isNews = socketBuffer_ != buffer;
        socketBuffer_ = buffer;
        return isNews;
    }

private:
    mutable std::mutex mutex_;
    StreamSettings settings_;
    const Transport::IStream* live_ = nullptr;
    Transport::StreamStatistics last_;
    std::optional<SocketBuffer> socketBuffer_;  // of the last start
};

}  // namespace Orlix::Aravis
