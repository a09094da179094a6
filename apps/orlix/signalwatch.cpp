#include "signalwatch.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace Orlix::App {
namespace {

// What a shell expects of a program that a signal has ended.
constexpr int exitCodeOfSignal = 128;

Host::FileDescriptor opened(int file) {
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), "can not watch signals");
    }
    return Host::FileDescriptor(file);
}

bool isIgnored(int signal) {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

const sigset_t& stopSignals() {
    static const sigset_t signals = [] {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGTERM);
        if (!isIgnored(SIGHUP)) {
            sigaddset(&set, SIGHUP);
        }
        return set;
    }();
    return signals;
}

}  // namespace

SignalBlock::SignalBlock(const sigset_t& signals) {
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

SignalBlock::~SignalBlock() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

SignalWatch::SignalWatch(std::chrono::milliseconds together)
    : together_(together),
      block_(stopSignals()),
      signals_(opened(::signalfd(-1, &stopSignals(), SFD_CLOEXEC | SFD_NONBLOCK))),
      end_(opened(::eventfd(0, EFD_CLOEXEC))),
      thread_([this] { watch(); }) {}

SignalWatch::~SignalWatch() {
    const std::uint64_t one = 1;
    while (::write(end_.get(), &one, sizeof one) < 0 && errno == EINTR) {
    }
    thread_.join();
    // What came too late must not end the process when the block goes.
    while (readSignal() != 0) {
    }
}

void SignalWatch::setHandler(std::function<void()> handler) {
    const std::lock_guard lock(mutex_);
    handler_ = std::move(handler);
    if (received_ && handler_) {
        handler_();
    }
}

void SignalWatch::watch() {
    std::array<pollfd, 2> sources = {{{signals_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
    for (;;) {
        if (::poll(sources.data(), sources.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;  // the events are those of an earlier call
            }
            return;
        }
        if ((sources[1].revents & POLLIN) != 0) {
            return;
        }
        if (const int signal = readSignal(); signal != 0) {
            handle(signal);
        }
    }
}

void SignalWatch::handle(int signal) {
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(mutex_);
    if (!std::exchange(received_, true)) {
        first_ = now;
        if (handler_) {
            handler_();
        }
    } else if (now - first_ >= together_) {
        // Whoever asks twice does not want to wait for the orderly end.
        ::_exit(exitCodeOfSignal + signal);
    }
}

// 0 if there is none.
int SignalWatch::readSignal() const {
    signalfd_siginfo info{};
    const bool isRead =
        ::read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info);
    return isRead ? static_cast<int>(info.ssi_signo) : 0;
}

SignalHandler::SignalHandler(SignalWatch& watch, std::function<void()> handler) : watch_(watch) {
    watch_.setHandler(std::move(handler));
}

SignalHandler::~SignalHandler() {
    watch_.setHandler({});
}

}  // namespace Orlix::App
