// A slot that another thread runs, up to the point that the test lets it go on.
#pragma once

#include <atomic>
#include <future>

namespace Orlix::Test {

class SlowSlot {
public:
    void operator()() {
        entered_.set_value();
        released_.get_future().wait();
        isDone = true;
    }
    void waitUntilEntered() { entered_.get_future().wait(); }
    void release() { released_.set_value(); }
    std::atomic<bool> isDone{false};

private:
    std::promise<void> entered_;
    std::promise<void> released_;
};

}  // namespace Orlix::Test
