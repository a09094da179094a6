// For tests that wait for the loss of a camera.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>

#include "orlixcamera/configurationeventhandler.h"
#include "orlixcamera/instantcamera.h"

namespace Orlix::Aravis::Testing {

using Clock = std::chrono::steady_clock;

// For people, not for the test: how long it took depends on the machine.
inline void PrintTime(const char* what, Clock::time_point since) {
    std::printf("    %s after %.3f s\n", what,
                std::chrono::duration<double>(Clock::now() - since).count());
}

// Outlives the camera that it is registered with.
class Watch final : public CConfigurationEventHandler {
public:
    void OnCameraDeviceRemoved(CInstantCamera&) override {
        const std::scoped_lock lock(mutex_);
        ++losses_;
        changed_.notify_all();
    }
    void WaitForLoss() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return losses_ > 0; });
        losses_ = 0;
    }
    [[nodiscard]] bool IsLossWithin(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, time, [this] { return losses_ > 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int losses_ = 0;
};

}  // namespace Orlix::Aravis::Testing
