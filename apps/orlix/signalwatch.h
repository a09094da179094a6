// SIGINT, SIGTERM and SIGHUP as a call on a thread of its own: the first one asks for an orderly
// end, the second one ends the process at once. What comes right behind the first is no second one:
// whoever ends a group of processes, as timeout does, asks both the process and its group. A SIGHUP
// that the program was started to ignore, as nohup does, stays ignored.
#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

#include "orlixhost/filedescriptor.h"

namespace Orlix::App {

// Keeps signals from the thread that makes it, and from those that this one starts, until its end.
class SignalBlock {
public:
    explicit SignalBlock(const sigset_t& signals);
    ~SignalBlock();
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

private:
    sigset_t before_{};
};

// To be made before any other thread, since it blocks the signals for all threads that are
// started later, and to be destroyed on the thread that made it. One object at a time.
class SignalWatch {
public:
    // Signals belong together that come so soon after the first.
    explicit SignalWatch(std::chrono::milliseconds together = std::chrono::milliseconds(200));
    // Passes over signals that are still on their way.
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    friend class SignalHandler;

    // An empty function is nothing. Returns after a call in progress.
    void setHandler(std::function<void()> handler);
    void watch();
    void handle(int signal);
    [[nodiscard]] int readSignal() const;

    const std::chrono::milliseconds together_;
    const SignalBlock block_;
    const Host::FileDescriptor signals_;
    const Host::FileDescriptor end_;
    std::mutex mutex_;
    std::function<void()> handler_;
    bool received_ = false;
    std::chrono::steady_clock::time_point first_;
    std::thread thread_;
};

// What the first signal calls, on the watch's thread, for as long as this object lives; at once if
// that signal has come already. The end waits for a call in progress.
class SignalHandler {
public:
    SignalHandler(SignalWatch& watch, std::function<void()> handler);
    ~SignalHandler();
    SignalHandler(const SignalHandler&) = delete;
    SignalHandler& operator=(const SignalHandler&) = delete;

private:
    SignalWatch& watch_;
};

}  // namespace Orlix::App
