// One acquisition: an Aravis stream with the buffers that it fills. Made by Start of a stream and
// gone with its Stop, since Aravis can end its receiving thread in no other way.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>

#include "aravis/connection.h"
#include "aravis/frame.h"
#include "aravis/streamevents.h"
#include "aravis/streamsettings.h"
#include "aravis/streamsocket.h"
#include "aravis/witness.h"

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

    // What the user should know of it, or nothing.
    [[nodiscard]] const std::string& GetWarning() const noexcept { return warning_; }
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
        void* data = nullptr;
        std::size_t capacity = 0;
        bool isHeld = false;  // by the stream
    };

    void createStream();
    // Why there is no stream, or nothing.
    [[nodiscard]] std::string makeStream(const StreamSettings& settings);
    void setProperties();
    void watch();
    [[nodiscard]] std::size_t chooseSocketBuffer() const;
    void checkSocketBuffer(std::size_t wanted, std::size_t granted);
    [[nodiscard]] static bool isOf(const Place& place, const Transport::StreamBuffer& buffer);
    void popRest() noexcept;
    [[nodiscard]] Evidence evidenceOf(ArvBuffer& source);
    [[nodiscard]] std::uint64_t underruns() const;
    [[nodiscard]] std::uint64_t missedLately() const;
    [[nodiscard]] bool hasLongIds() const;
    [[nodiscard]] std::uint64_t tickFrequency() const;
    void addCounts(Transport::StreamStatistics& statistics) const;
    void endWitness() noexcept;
    void drop(bool isQuiet) noexcept;
    [[nodiscard]] bool silence() const noexcept;
    void settle() noexcept;
    void settleHeld();

    const std::shared_ptr<Connection> connection_;
    const std::shared_ptr<StreamState> state_;
    const std::size_t payloadSize_;
    const std::shared_ptr<StreamEvents> events_ = std::make_shared<StreamEvents>();
    ObjectPtr<ArvStream> stream_;
    StreamSocket socket_;
    std::unique_ptr<Witness> witness_;
    std::uint64_t packetsPerFrame_ = 1;
    FrameReader reader_;
    std::string warning_;

    mutable std::mutex mutex_;  // buffers_, statistics_, and the end of stream_
    std::unordered_map<Transport::StreamBuffer*, Place> buffers_;
    Transport::StreamStatistics statistics_;
    bool isSettled_ = false;  // all is in statistics_
};

}  // namespace Orlix::Aravis
