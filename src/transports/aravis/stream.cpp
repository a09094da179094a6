#include "aravis/stream.h"

#include <algorithm>
#include <utility>

#include "aravis/messages.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using std::chrono::milliseconds;
using Transport::StreamBuffer;
using Transport::StreamStatistics;
using Clock = std::chrono::steady_clock;

namespace {

// How long a thread is inside Aravis at most, which can't be woken there.
constexpr milliseconds slice{20};

StreamStatistics add(const StreamStatistics& first, const StreamStatistics& second) {
    StreamStatistics sum;
    sum.delivered = first.delivered + second.delivered;
    sum.failed = first.failed + second.failed;
    sum.missedForBuffer = first.missedForBuffer + second.missedForBuffer;
    sum.resentPackets = first.resentPackets + second.resentPackets;
    sum.missingPackets = first.missingPackets + second.missingPackets;
    return sum;
}

}  // namespace

// A thread that uses the receiver without the lock, which Stop waits for, however it leaves.
class Stream::Visit {
public:
    Visit(Stream& stream, std::unique_lock<std::mutex>& lock) : stream_(stream), lock_(lock) {
        ++stream_.inside_;
        lock_.unlock();
    }
    ~Visit() {
        lock_.lock();
        --stream_.inside_;
        stream_.changed_.notify_all();
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

private:
    Stream& stream_;
    std::unique_lock<std::mutex>& lock_;
};

Stream::Stream(std::shared_ptr<Connection> connection, std::shared_ptr<StreamState> state,
               std::shared_ptr<void> place)
    : connection_(std::move(connection)), state_(std::move(state)), place_(std::move(place)) {
    state_->Attach(*this);
}

Stream::~Stream() {
    Stop();
    state_->Detach();
}

void Stream::Queue(StreamBuffer& buffer) {
    const std::scoped_lock lock(mutex_);
    buffer.fate = Transport::FrameFate::Aborted;
    buffer.filled = 0;
    held_.push_back(&buffer);
    try {
        if (receiver_ != nullptr) {
            receiver_->Push(buffer);
        }
    } catch (...) {
        held_.pop_back();  // it stays the caller's
        throw;
    }
}

// Told without a lock: who hears it may stop the stream.
void Stream::Start(std::size_t payloadSize) {
    const std::string warning = start(payloadSize);
    if (!warning.empty()) {
        Tell(warning);
    }
}

std::string Stream::start(std::size_t payloadSize) {
    const std::scoped_lock control(control_);
    {
        const std::scoped_lock lock(mutex_);
        if (receiver_ != nullptr) {
            throw GenICam::RuntimeException("The stream is started already.", __FILE__, __LINE__);
        }
    }
    auto receiver = std::make_shared<Receiver>(connection_, state_, payloadSize);
    const std::scoped_lock lock(mutex_);
    for (StreamBuffer* const buffer : held_) {
        receiver->Push(*buffer);
    }
    receiver_ = std::move(receiver);
    return receiver_->GetWarning();
}

StreamBuffer* Stream::Wait(milliseconds timeOut) {
    const Clock::time_point deadline = Clock::now() + timeOut;
    std::unique_lock lock(mutex_);
    while (true) {
        if (receiver_ == nullptr) {
            return nullptr;
        }
        const bool isGone = !connection_->IsUsable();
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        StreamBuffer* const buffer =
            pop(lock, isGone ? milliseconds(0) : std::clamp(left, milliseconds(0), slice));
        if (buffer != nullptr && receiver_ != nullptr) {
            takeOut(*buffer);
            return buffer;
        }
        if (buffer == nullptr && receiver_ != nullptr && isGone) {
            lock.unlock();
            connection_->ThrowGone();
        }
        if (left <= milliseconds(0)) {
            return nullptr;
        }
    }
}

StreamBuffer* Stream::pop(std::unique_lock<std::mutex>& lock, milliseconds timeOut) {
    Receiver& receiver = *receiver_;
    const Visit visit(*this, lock);
    return receiver.Pop(timeOut);
}

void Stream::takeOut(StreamBuffer& buffer) noexcept {
    const auto at = std::find(held_.begin(), held_.end(), &buffer);
    if (at != held_.end()) {
        held_.erase(at);
    }
}

void Stream::Stop() noexcept {
    const std::scoped_lock control(control_);
    std::shared_ptr<Receiver> receiver;
    {
        std::unique_lock lock(mutex_);
        receiver = std::exchange(receiver_, nullptr);
        if (receiver == nullptr) {
            return;
        }
        ending_ = receiver;
        changed_.wait(lock, [this] { return inside_ == 0; });
    }
    receiver->End();
    const std::scoped_lock lock(mutex_);
    before_ = add(before_, receiver->GetStatistics());
    ending_ = nullptr;
}

StreamBuffer* Stream::TakeBack() noexcept {
    const std::scoped_lock lock(mutex_);
    if (receiver_ != nullptr || ending_ != nullptr || held_.empty()) {
        return nullptr;
    }
    StreamBuffer* const buffer = held_.front();
    held_.pop_front();
    return buffer;
}

StreamStatistics Stream::GetStatistics() const {
    const std::scoped_lock lock(mutex_);
    const Receiver* const last = receiver_ != nullptr ? receiver_.get() : ending_.get();
    return last != nullptr ? add(before_, last->GetStatistics()) : before_;
}

}  // namespace Orlix::Aravis
