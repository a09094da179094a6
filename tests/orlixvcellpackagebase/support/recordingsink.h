// An output sink that keeps what it gets. All members may be called from any thread.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Plugin::OrlixVCellPackageBase {

class RecordingSink final : public Orlix::DataProcessing::Core::IOutputSink {
public:
    using Update = std::shared_ptr<Orlix::DataProcessing::Core::IGraphUpdate>;
    using Variant = Orlix::DataProcessing::Utils::Variant;

    void put(const Update& update, const Variant& value) override {
        const std::lock_guard guard(mutex_);
        updates_.push_back(update);
        values_.push_back(value);
        changed_.notify_all();
    }
    void skip(const Update& update) override { static_cast<void>(update); }

    [[nodiscard]] bool hasSpace() const override {
        const std::lock_guard guard(mutex_);
        if (!hasSpace_) {
            refused_.push_back(std::this_thread::get_id());
            changed_.notify_all();
        }
        return hasSpace_;
    }
    void setSpaceListener(
        const std::weak_ptr<Orlix::DataProcessing::Core::ISpaceListener>& listener) override {
        const std::lock_guard guard(mutex_);
        listener_ = listener;
    }

    void setSpace(bool hasSpace) {
        std::shared_ptr<Orlix::DataProcessing::Core::ISpaceListener> listener;
        {
            const std::lock_guard guard(mutex_);
            hasSpace_ = hasSpace;
            listener = listener_.lock();
        }
        if (hasSpace && listener != nullptr) {
            listener->onSpaceAvailable();
        }
    }

    // Until another thread has found no space here.
    void waitUntilRefused() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] {
            return std::any_of(refused_.begin(), refused_.end(), [](std::thread::id asker) {
                return asker != std::this_thread::get_id();
            });
        });
    }
    void waitForCount(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return values_.size() >= count; });
    }

    [[nodiscard]] std::vector<Variant> values() const {
        const std::lock_guard guard(mutex_);
        return values_;
    }
    [[nodiscard]] std::vector<Update> updates() const {
        const std::lock_guard guard(mutex_);
        return updates_;
    }

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool hasSpace_ = true;
    mutable std::vector<std::thread::id> refused_;
    std::weak_ptr<Orlix::DataProcessing::Core::ISpaceListener> listener_;
    std::vector<Update> updates_;
    std::vector<Variant> values_;
};

}  // namespace Plugin::OrlixVCellPackageBase
