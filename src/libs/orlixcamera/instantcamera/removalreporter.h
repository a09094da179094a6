// Reports the loss of a device, on a thread that has no other work.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace Orlix::Detail {

// Any thread may call, but Quit and the destructor not that of the report.
class RemovalReporter {
public:
    // The report itself; may take its time and throw nothing.
    explicit RemovalReporter(std::function<void()> report);
    ~RemovalReporter();
    RemovalReporter(const RemovalReporter&) = delete;
    RemovalReporter& operator=(const RemovalReporter&) = delete;

    // A device is in use from now on, whose loss is to be reported.
    void Allow();
    // No report is begun any more; waits for none.
    void Forbid() noexcept;
    // As Forbid. A report that runs on another thread may be about to call its handlers, so it is
    // waited for, but not for long: it may wait for a lock of the caller.
    void Forget();
    // The device was lost. Nothing happens unless it is allowed, or the second time.
    void Post() noexcept;

    // Ends the thread; waits for a report that has begun.
    void Quit();

private:
    void run();

    const std::function<void()> report_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool allowed_ = false;
    bool pending_ = false;
    bool reporting_ = false;
    bool quit_ = false;
    std::thread thread_;  // since the first loss
};

}  // namespace Orlix::Detail
