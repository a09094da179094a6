// SIGINT, SIGTERM and SIGHUP as a call on a thread of its own: the first one asks for an orderly
// end, the second one ends the process at once. A SIGHUP that the program was started to ignore, as
// nohup does, stays ignored.
#pragma once

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
    SignalWatch();
    // Passes over signals that are still on their way.
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    friend class SignalHandler;

    // An empty function is nothing. Returns after a call in progress.
    void setHandler(std::function<void()> handler);
    void watch();
    [[nodiscard]] int readSignal() const;

    const SignalBlock block_;
    const Host::FileDescriptor signals_;
    const Host::FileDescriptor end_;
    std::mutex mutex_;
    std::function<void()> handler_;
    bool received_ = false;
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
