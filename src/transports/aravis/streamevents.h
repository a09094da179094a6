// What Aravis tells of a stream on the thread that receives. Shared by a receiver and that thread,
// which may outlive it.
#pragma once

#include <condition_variable>
#include <mutex>
#include <unordered_map>

#include "aravis/glib.h"
#include "aravis/receivingthread.h"
#include "aravis/witness.h"

namespace Orlix::Aravis {

class StreamEvents {
public:
    // For Aravis, both with a std::shared_ptr<StreamEvents>*, which Forget deletes.
    static void OnEvent(void* events, ArvStreamCallbackType type, ArvBuffer* buffer) noexcept;
    static void Forget(void* events) noexcept;

    // What the events are of; nothing from the return of Watch(nullptr, nullptr) on.
    void Watch(ArvStream* stream, Witness* witness);
    // A buffer was queued.
    void NoteQueue();
    // Of a frame that failed: the packets behind its first gap. Waits for Aravis to tell, which it
    // does when it has handed out the buffer already; 0 if it never does.
    [[nodiscard]] std::uint64_t TakeLack(const ArvBuffer& buffer);
    [[nodiscard]] const ReceivingThread& GetThread() const noexcept { return thread_; }

private:
    void begin();
    void tellQueue();
    void end(const ArvBuffer& buffer, ArvBufferStatus status);

    ReceivingThread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    ArvStream* stream_ = nullptr;
    Witness* witness_ = nullptr;
    std::uint64_t lackBefore_ = 0;
    std::unordered_map<const ArvBuffer*, std::uint64_t> lacks_;
};

}  // namespace Orlix::Aravis
