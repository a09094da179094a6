// Calls to somebody who may be taken away meanwhile, made without the lock under which he is known.
// That lock and the one who is called are the owner's; this knows who is calling. Any thread may
// call, with the lock held.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace Orlix::Transport {

class GuardedCall {
public:
    using Lock = std::unique_lock<std::mutex>;

    // Waits until no call is under way. Who is to be called is to be asked then.
    void AwaitTurn(Lock& lock) {
        changed_.wait(lock, [this] { return caller_ == std::thread::id(); });
    }
    // Calls, with the lock released. It has ended, too, if it throws.
    template <typename Call>
    void Make(Lock& lock, const Call& call) {
        const Turn turn(*this, lock);
        call();
    }
    // Waits until no call is under way, but for one on this very thread.
    void AwaitEnd(Lock& lock) {
        changed_.wait(lock, [this] {
            return caller_ == std::thread::id() || caller_ == std::this_thread::get_id();
        });
    }

private:
    class Turn {
    public:
        Turn(GuardedCall& call, Lock& lock) : call_(call), lock_(lock) {
            call_.caller_ = std::this_thread::get_id();
            lock_.unlock();
        }
        ~Turn() {
            lock_.lock();
            call_.caller_ = std::thread::id();
            call_.changed_.notify_all();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        GuardedCall& call_;
        Lock& lock_;
    };

    std::condition_variable changed_;
    std::thread::id caller_;
};

}  // namespace Orlix::Transport
