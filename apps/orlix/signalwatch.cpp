#include "signalwatch.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace Orlix::App {
namespace {

// What a shell expects of a program that a signal has ended.
constexpr int exitCodeOfSignal = 128;

int checked(int descriptor, const char* what) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return descriptor;
}

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

}  // namespace

SignalWatch::SignalWatch() {
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ =
        checked(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "can not watch signals");
    end_ = checked(::eventfd(0, EFD_CLOEXEC), "can not watch signals");
    thread_ = std::thread([this] { watch(); });
}

SignalWatch::~SignalWatch() {
    const std::uint64_t one = 1;
    if (::write(end_, &one, sizeof one) == static_cast<ssize_t>(sizeof one)) {
        thread_.join();
    } else {
        thread_.detach();
    }
    ::close(signals_);
    ::close(end_);
}

void SignalWatch::onSignal(std::function<void()> handler) {
    const std::lock_guard lock(mutex_);
    handler_ = std::move(handler);
    if (received_ && handler_) {
        handler_();
    }
}

void SignalWatch::watch() {
    std::array<pollfd, 2> sources = {{{signals_, POLLIN, 0}, {end_, POLLIN, 0}}};
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
        signalfd_siginfo info{};
        if ((sources[0].revents & POLLIN) == 0 ||
            ::read(signals_, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
            continue;
        }
        const std::lock_guard lock(mutex_);
        if (std::exchange(received_, true)) {
            // Whoever asks twice does not want to wait for the orderly end.
            ::_exit(exitCodeOfSignal + static_cast<int>(info.ssi_signo));
        }
        if (handler_) {
            handler_();
        }
    }
}

}  // namespace Orlix::App
