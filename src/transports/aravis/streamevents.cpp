#include "aravis/streamevents.h"

#include <chrono>
#include <exception>
#include <memory>

namespace Orlix::Aravis {

void StreamEvents::OnEvent(void* events, ArvStreamCallbackType type, ArvBuffer* buffer) noexcept {
    StreamEvents& self = **static_cast<std::shared_ptr<StreamEvents>*>(events);
    try {
        if (type == ARV_STREAM_CALLBACK_TYPE_INIT) {
            self.thread_.Enter();
            // Refused without the right to it, which is no matter.
            constexpr int niceLevel = -10;
            static_cast<void>(arv_make_thread_high_priority(niceLevel));
        } else if (type == ARV_STREAM_CALLBACK_TYPE_START_BUFFER) {
            self.begin();
        } else if (type == ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE && buffer != nullptr) {
            self.end(*buffer, arv_buffer_get_status(buffer));
        }
    } catch (const std::exception&) {
        // Without memory a frame has a less exact reason; the caller knows no exceptions.
    }
}

void StreamEvents::Forget(void* events) noexcept {
    delete static_cast<std::shared_ptr<StreamEvents>*>(events);
}

void StreamEvents::Watch(ArvStream* stream, Witness* witness) {
    const std::scoped_lock lock(mutex_);
    stream_ = stream;
    witness_ = witness;
}

// A frame has got its buffer. Whether the next one will have one is asked in time for its leader.
void StreamEvents::begin() {
    const std::scoped_lock lock(mutex_);
    if (stream_ == nullptr || witness_ == nullptr) {
        return;
    }
    witness_->NoteStart();
    tellQueue();
}

void StreamEvents::NoteQueue() {
    const std::scoped_lock lock(mutex_);
    if (stream_ != nullptr && witness_ != nullptr) {
        tellQueue();
    }
}

// Looked at and told under one lock: who looked first must not tell last.
void StreamEvents::tellQueue() {
    gint queued = 0;
    gint filled = 0;
    arv_stream_get_n_buffers(stream_, &queued, &filled);
    witness_->SetBuffers(queued > 0 ? Buffers::Queued : Buffers::None);
}

void StreamEvents::end(const ArvBuffer& buffer, ArvBufferStatus status) {
    const bool hasFailed =
        status != ARV_BUFFER_STATUS_SUCCESS && status != ARV_BUFFER_STATUS_ABORTED;
    const std::scoped_lock lock(mutex_);
    if (!hasFailed || stream_ == nullptr) {
        return;
    }
    const std::uint64_t lack = arv_stream_get_info_uint64_by_name(stream_, "n_missing_packets");
    lacks_[&buffer] = lack - lackBefore_;
    lackBefore_ = lack;
    changed_.notify_all();
}

std::uint64_t StreamEvents::TakeLack(const ArvBuffer& buffer) {
    constexpr std::chrono::milliseconds longest{100};
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, longest, [&] { return lacks_.contains(&buffer); })) {
        return 0;
    }
    return lacks_.extract(&buffer).mapped();
}

}  // namespace Orlix::Aravis
