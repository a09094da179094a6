#include "aravis/streamevents.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace Orlix::Aravis {

void StreamEvents::OnEvent(void* events, ArvStreamCallbackType type, ArvBuffer* buffer) noexcept {
    StreamEvents& self = *static_cast<StreamEvents*>(events);
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

// The last step of a stream that goes, or of one that Aravis has begun to make and given up.
void StreamEvents::Forget(void* events) noexcept {
    const auto last = std::move(static_cast<StreamEvents*>(events)->self_);
}

// A stream that Aravis refuses at once it doesn't forget.
ArvStream* StreamEvents::CreateStream(const std::function<ArvStream*(void*)>& create) {
    const auto self = shared_from_this();
    self_ = self;
    ArvStream* const stream = create(this);
    if (stream == nullptr) {
        self_.reset();
    }
    return stream;
}

void StreamEvents::Watch(ArvStream* stream, Witness* witness, std::uint64_t packetsPerFrame) {
    const std::scoped_lock lock(mutex_);
    stream_ = stream;
    countsPackets_ = stream != nullptr && ARV_IS_GV_STREAM(stream);
    witness_ = witness;
    packetsPerFrame_ = packetsPerFrame;
    changed_.notify_all();
}

// What was told of the frame before in this buffer is of no use any more.
void StreamEvents::Push(ArvBuffer& buffer) {
    const std::scoped_lock lock(mutex_);
    lacks_.erase(&buffer);
    g_object_ref(&buffer);  // the stream's
    arv_stream_push_buffer(stream_, &buffer);
    tellQueue();
}

// A frame has got its buffer. Whether the next one will have one is asked in time for its leader.
void StreamEvents::begin() {
    const std::scoped_lock lock(mutex_);
    if (!countsPackets_) {
        return;
    }
    ++openFrames_;
    packetsAtStart_ = countPackets();
    if (witness_ != nullptr) {
        witness_->NoteStart(count("n_underruns"));
    }
    tellQueue();
}

// Looked at and told under one lock: who looked first must not tell last.
void StreamEvents::tellQueue() {
    if (witness_ == nullptr) {
        return;
    }
    gint queued = 0;
    gint filled = 0;
    arv_stream_get_n_buffers(stream_, &queued, &filled);
    witness_->SetBuffers(queued > 0 ? Buffers::Queued : Buffers::None);
}

void StreamEvents::end(const ArvBuffer& buffer, ArvBufferStatus status) {
    const bool hasFailed =
        status != ARV_BUFFER_STATUS_SUCCESS && status != ARV_BUFFER_STATUS_ABORTED;
    const std::scoped_lock lock(mutex_);
    if (!countsPackets_) {
        return;
    }
    openFrames_ -= openFrames_ > 0 ? 1 : 0;
    countMissing();
    if (hasFailed) {
        const std::uint64_t lack = count("n_missing_packets");
        lacks_[&buffer] = lack - lackBefore_;
        lackBefore_ = lack;
        changed_.notify_all();
    }
}

std::uint64_t StreamEvents::count(const char* name) const {
    return arv_stream_get_info_uint64_by_name(stream_, name);
}

// Those that were of use.
std::uint64_t StreamEvents::countPackets() const {
    return count("n_received_packets") - count("n_duplicated_packets") -
           count("n_ignored_packets") - count("n_error_packets");
}

// Of a frame that failed Aravis counts all behind the first gap. The packets of frames that haven't
// ended are known only if it is none, or one that has begun with the very packet that ended the
// frame before.
void StreamEvents::countMissing() {
    const std::uint64_t packets = countPackets();
    const bool areOpenOnesKnown =
        openFrames_ == 0 || (openFrames_ == 1 && packets == packetsAtStart_);
    if (!areOpenOnesKnown) {
        return;
    }
    const std::uint64_t expected =
        (count("n_completed_buffers") + count("n_failures")) * packetsPerFrame_;
    const std::uint64_t came = packets - openFrames_;
    missingPackets_ = std::min(count("n_missing_packets"), expected > came ? expected - came : 0);
}

std::uint64_t StreamEvents::GetMissingPackets() {
    const std::scoped_lock lock(mutex_);
    return missingPackets_;
}

std::uint64_t StreamEvents::TakeLack(const ArvBuffer& buffer) {
    constexpr std::chrono::milliseconds longest{100};
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, longest, [&] { return !countsPackets_ || lacks_.contains(&buffer); });
    const auto told = lacks_.extract(&buffer);
    return told.empty() ? 0 : told.mapped();
}

}  // namespace Orlix::Aravis
