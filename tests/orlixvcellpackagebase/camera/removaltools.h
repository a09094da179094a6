// What the tests of a device that vanishes share.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixvcellpackagebase/camera.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

inline constexpr auto removedText =
    "vCell has stopped working because the camera has been disconnected.";

// Waits on the signals of a node until something holds.
class Watch {
public:
    explicit Watch(Camera& camera)
        : errors_(camera.getErrorChangedSignal()->connect(
                      [this](const Core::ErrorSet&, const Core::ErrorSet&) { wake(); }),
                  true),
          maps_(camera.getNodeMapsChangedSignal()->connect([this] {
              ++mapChanges_;
              wake();
          }),
                true) {}

    [[nodiscard]] int mapChanges() const { return mapChanges_; }

    // The condition may take the node's lock, under which the end of an error is told: it is asked
    // with the mutex free.
    template <typename Condition>
    void waitUntil(Condition condition) {
        std::unique_lock lock(mutex_);
        for (;;) {
            const std::uint64_t seen = changes_;
            lock.unlock();
            if (condition()) {
                return;
            }
            lock.lock();
            changed_.wait(lock, [&] { return changes_ != seen; });
        }
    }

private:
    void wake() {
        const std::lock_guard guard(mutex_);
        ++changes_;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t changes_ = 0;
    std::atomic<int> mapChanges_{0};
    Utils::ScopedConnection errors_;
    Utils::ScopedConnection maps_;
};

inline std::vector<std::string> errorsOf(Camera& camera) {
    std::vector<std::string> texts;
    for (const auto& error : camera.getErrors()) {
        texts.push_back(error->getName().str() + ": " + error->getDescription().str());
    }
    return texts;
}

}  // namespace Plugin::OrlixVCellPackageBase
