// SIGINT and SIGTERM as a call on a thread of its own: the first one asks for an orderly end, the
// second one ends the process at once.
#pragma once

#include <functional>
#include <mutex>
#include <thread>

namespace Orlix::App {

// To be made before any other thread, since it blocks the two signals for all threads that are
// started later. One object at a time.
class SignalWatch {
public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    // What the first signal calls, on the watch's thread; at once if that signal has come already.
    // An empty function is nothing. Returns after a call in progress.
    void onSignal(std::function<void()> handler);

private:
    void watch();

    int signals_ = -1;
    int end_ = -1;
    std::mutex mutex_;
    std::function<void()> handler_;
    bool received_ = false;
    std::thread thread_;
};

}  // namespace Orlix::App
