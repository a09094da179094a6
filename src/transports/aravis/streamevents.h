// What Aravis tells of a stream on the thread that receives. Shared by a receiver and that thread,
// which may outlive it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "aravis/glib.h"
#include "aravis/receivingthread.h"
#include "aravis/witness.h"

namespace Orlix::Aravis {

class StreamEvents : public std::enable_shared_from_this<StreamEvents> {
public:
    // For Aravis, with what `create` of CreateStream has got.
    static void OnEvent(void* events, ArvStreamCallbackType type, ArvBuffer* buffer) noexcept;
    static void Forget(void* events) noexcept;

    // The stream that `create` makes keeps the events until it calls Forget; null keeps nothing.
    [[nodiscard]] ArvStream* CreateStream(const std::function<ArvStream*(void*)>& create);
    // What the events are of; nothing from the return on if `stream` is null.
    void Watch(ArvStream* stream, Witness* witness, std::uint64_t packetsPerFrame);
    // Queues a buffer of the stream that is watched.
    void Push(ArvBuffer& buffer);
    // Of a frame that failed: the packets behind its first gap. Waits for Aravis to tell, which it
    // does when it has handed out the buffer already; 0 if it never does, and at once of a stream
    // without packets.
    [[nodiscard]] std::uint64_t TakeLack(const ArvBuffer& buffer);
    // Of the frames that have ended: the packets that never came. Brought up to date whenever no
    // frame is being received, or none but one that has just begun.
    [[nodiscard]] std::uint64_t GetMissingPackets();
    [[nodiscard]] const ReceivingThread& GetThread() const noexcept { return thread_; }

private:
    void begin();
    void tellQueue();
    [[nodiscard]] std::uint64_t count(const char* name) const;
    [[nodiscard]] std::uint64_t countPackets() const;
    void countMissing();
    void end(const ArvBuffer& buffer, ArvBufferStatus status);

    std::shared_ptr<StreamEvents> self_;  // while Aravis has a pointer to it
    ReceivingThread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    ArvStream* stream_ = nullptr;
    bool countsPackets_ = false;  // Aravis does of network cameras only
    Witness* witness_ = nullptr;
    std::uint64_t packetsPerFrame_ = 1;
    std::uint64_t openFrames_ = 0;
    std::uint64_t packetsAtStart_ = 0;  // of the last frame, with its first one
    std::uint64_t missingPackets_ = 0;
    std::uint64_t lackBefore_ = 0;
    std::unordered_map<const ArvBuffer*, std::uint64_t> lacks_;
};

}  // namespace Orlix::Aravis
