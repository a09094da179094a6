#include "orlixcamera/instantcamera/removalreporter.h"

#include <chrono>
#include <utility>

#include "orlixcamera/instantcamera/messages.h"

namespace Orlix::Detail {

namespace {

constexpr std::chrono::seconds longestWait{1};

}  // namespace

RemovalReporter::RemovalReporter(std::function<void()> report) : report_(std::move(report)) {}

RemovalReporter::~RemovalReporter() {
    Quit();
}

void RemovalReporter::Quit() {
    {
        const std::scoped_lock lock(mutex_);
        quit_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void RemovalReporter::Allow() {
    const std::scoped_lock lock(mutex_);
    allowed_ = true;
    pending_ = false;  // of a device that was in use before, and is back or replaced
}

void RemovalReporter::Forbid() noexcept {
    const std::scoped_lock lock(mutex_);
    allowed_ = false;
    pending_ = false;
}

void RemovalReporter::Forget() {
    Forbid();
    std::unique_lock lock(mutex_);
    if (thread_.get_id() != std::this_thread::get_id()) {
        changed_.wait_for(lock, longestWait, [this] { return !reporting_; });
    }
}

void RemovalReporter::Post() noexcept {
    const std::scoped_lock lock(mutex_);
    if (!allowed_) {
        return;
    }
    allowed_ = false;
    pending_ = true;
    try {
        if (!thread_.joinable()) {
            thread_ = std::thread([this] { run(); });
        }
    } catch (...) {
        Tell("The loss of a device can't be reported: " + TextOfCurrentException());
    }
    changed_.notify_all();
}

void RemovalReporter::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return pending_ || quit_; });
        if (quit_) {
            return;
        }
        pending_ = false;
        reporting_ = true;
        lock.unlock();
        report_();
        lock.lock();
        reporting_ = false;
        changed_.notify_all();
    }
}

}  // namespace Orlix::Detail
