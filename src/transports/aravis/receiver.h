// One acquisition: an Aravis stream with the buffers that it fills. Made by Start of a stream and
// gone with its Stop, since Aravis can end its receiving thread in no other way.
#pragma once

#include <chrono>
#include <memory>
#include <unordered_map>

#include "aravis/connection.h"
#include "aravis/frame.h"
#include "aravis/receivingthread.h"
#include "aravis/streamsettings.h"
#include "aravis/streamsocket.h"

namespace Orlix::Aravis {

// Push and Pop may be called by one thread each at the same time; all else when nobody is inside.
class Receiver {
public:
    // Throws RuntimeException if Aravis has no stream for it.
    Receiver(std::shared_ptr<Connection> connection, std::shared_ptr<StreamState> state,
             std::size_t payloadSize);
    ~Receiver();
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    // The buffer belongs to the stream until it is popped or the receiver has ended.
    void Push(Transport::StreamBuffer& buffer);
    // A filled one, described, or null after the time. Counts it.
    [[nodiscard]] Transport::StreamBuffer* Pop(std::chrono::microseconds timeOut);
    // The counts of this receiver; also while End is under way.
    [[nodiscard]] Transport::StreamStatistics GetStatistics() const;
    // Ends receiving: afterwards nobody writes into a buffer. The frames that were begun are
    // counted as failed; those that nobody has popped are described as if somebody had.
    void End() noexcept;

private:
    struct Place {
        ObjectPtr<ArvBuffer> source;
        bool isHeld = false;  // by the stream
    };

    void createStream();
    void setProperties();
    [[nodiscard]] std::size_t chooseSocketBuffer() const;
    void checkSocketBuffer(std::size_t wanted, std::size_t granted) const;
    void countMissed(std::uint64_t lostFrames, Transport::FrameFate fate);
    void addLive(Transport::StreamStatistics& statistics) const;
    void drop(bool isQuiet) noexcept;
    [[nodiscard]] bool silence() const noexcept;
    void settle(Transport::StreamBuffer& buffer, ArvBuffer& source);
    [[nodiscard]] std::uint64_t underruns() const;
    [[nodiscard]] std::uint64_t missedLately() const;
    [[nodiscard]] bool lackEndsOnly();

    const std::shared_ptr<Connection> connection_;
    const std::shared_ptr<StreamState> state_;
    const std::size_t payloadSize_;
    const std::shared_ptr<ReceivingThread> thread_ = std::make_shared<ReceivingThread>();
    ObjectPtr<ArvStream> stream_;
    StreamSocket socket_;
    std::uint64_t packetsPerFrame_ = 1;
    FrameReader reader_;
    std::uint64_t seenFailures_ = 0;
    std::uint64_t seenMissing_ = 0;

    mutable std::mutex mutex_;  // buffers_, statistics_, and the end of stream_
    std::unordered_map<Transport::StreamBuffer*, Place> buffers_;
    Transport::StreamStatistics statistics_;
    std::uint64_t explainedUnderruns_ = 0;
};

}  // namespace Orlix::Aravis
