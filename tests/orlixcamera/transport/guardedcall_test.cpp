#include "orlixcamera/transport/guardedcall.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

#include "orlixcamera/transport/announcer.h"

namespace Orlix::Transport {
namespace {

// A call on a thread of its own that lasts until it is let go.
class LongCall {
public:
    LongCall(GuardedCall& call, std::mutex& mutex)
        : thread_([this, &call, &mutex] {
              GuardedCall::Lock lock(mutex);
              call.Make(lock, [this] {
                  begun_.set_value();
                  mayEnd_.get_future().wait();
                  hasEnded = true;
              });
          }) {
        begun_.get_future().wait();
    }
    ~LongCall() { thread_.join(); }
    LongCall(const LongCall&) = delete;
    LongCall& operator=(const LongCall&) = delete;

    void LetGo() { mayEnd_.set_value(); }

    bool hasEnded = false;  // with the lock

private:
    std::promise<void> begun_;
    std::promise<void> mayEnd_;
    std::thread thread_;
};

class GuardedCallTest : public testing::Test {
protected:
    std::mutex mutex;
    GuardedCall call;
};

TEST_F(GuardedCallTest, ItsEndIsAwaitedByOthers) {
    LongCall other(call, mutex);
    GuardedCall::Lock lock(mutex);
    EXPECT_FALSE(other.hasEnded);
    other.LetGo();
    call.AwaitEnd(lock);
    EXPECT_TRUE(other.hasEnded);
}

TEST_F(GuardedCallTest, NextOneWaitsForItsTurn) {
    LongCall other(call, mutex);
    GuardedCall::Lock lock(mutex);
    other.LetGo();
    call.AwaitTurn(lock);
    call.Make(lock, [&] { EXPECT_TRUE(other.hasEnded); });
    EXPECT_TRUE(lock.owns_lock());
}

TEST_F(GuardedCallTest, WhoIsCalledDoesNotWaitForHimself) {
    GuardedCall::Lock lock(mutex);
    bool isCalled = false;
    call.Make(lock, [&] {
        GuardedCall::Lock own(mutex);
        call.AwaitEnd(own);
        isCalled = true;
    });
    EXPECT_TRUE(isCalled);
}

TEST(Announcer, FunctionThatThrowsCanBeTakenAway) {
    Announcer announcer;
    announcer.Set([] { throw std::runtime_error("no"); });
    std::thread([&] { EXPECT_THROW(announcer.Tell(), std::runtime_error); }).join();
    announcer.Set({});
    announcer.Tell();
}

}  // namespace
}  // namespace Orlix::Transport
