// A thread of a test that is to wait inside a call. No call tells that somebody is inside it, but
// the system tells that a thread sleeps.
#pragma once

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>

namespace Orlix::Test {

// Outlives the thread.
class Sleeper {
public:
    // By the thread itself, as the last before its call.
    void GoIn() noexcept {
        id_ = ::gettid();
        id_.notify_all();
    }
    // By another: returns when the thread sleeps, or has ended since its call didn't wait.
    void WaitUntilAsleep() const {
        id_.wait(0);
        while (isAwake()) {
            std::this_thread::yield();
        }
    }

private:
    [[nodiscard]] bool isAwake() const {
        std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
        std::string text;
        // The state is behind the name, which may have any characters.
        return std::getline(file, text) && text.compare(text.rfind(')') + 2, 1, "S") != 0;
    }

    std::atomic<pid_t> id_{0};
};

}  // namespace Orlix::Test
