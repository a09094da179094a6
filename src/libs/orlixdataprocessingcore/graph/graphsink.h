// A host's sink as the graph attaches it: while the graph is brought to its end, a sink that is
// full holds nothing back.
#pragma once

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/outputsink.h"

namespace Orlix::DataProcessing::Core {

// The one listener of a host's sink that reads several pins: passes word of space on to all of
// them. Shared by the attachments of that sink; safe from any thread.
class SinkWaker final : public ISpaceListener, public std::enable_shared_from_this<SinkWaker> {
public:
    explicit SinkWaker(const std::shared_ptr<IOutputSink>& sink) : sink_(sink) {}

    [[nodiscard]] const std::shared_ptr<IOutputSink>& sink() const noexcept { return sink_; }

    // A null listener takes the reader out.
    void setListener(const void* reader, const std::weak_ptr<ISpaceListener>& listener) {
        bool isUsed = false;
        {
            std::lock_guard guard(mutex_);
            std::erase_if(listeners_, [&](const Entry& entry) { return entry.first == reader; });
            if (!listener.expired()) {
                listeners_.emplace_back(reader, listener);
            }
            isUsed = !listeners_.empty();
        }
        sink_->setSpaceListener(isUsed ? weak_from_this() : std::weak_ptr<SinkWaker>());
    }

    void onSpaceAvailable() override {
        std::vector<Entry> listeners;
        {
            std::lock_guard guard(mutex_);
            listeners = listeners_;
        }
        for (const Entry& entry : listeners) {
            if (const auto listener = entry.second.lock()) {
                listener->onSpaceAvailable();
            }
        }
    }

private:
    using Entry = std::pair<const void*, std::weak_ptr<ISpaceListener>>;

    const std::shared_ptr<IOutputSink> sink_;
    std::mutex mutex_;
    std::vector<Entry> listeners_;
};

// Shared by the graph and the producing node; safe from any thread as far as the host's sink is.
class GraphSink final : public IOutputSink {
public:
    explicit GraphSink(const std::shared_ptr<SinkWaker>& waker)
        : waker_(waker), sink_(waker->sink()) {}

    void put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) override {
        sink_->put(update, value);
    }
    void putLast(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) override {
        sink_->putLast(std::move(update), std::move(value));
    }
    void skip(const std::shared_ptr<IGraphUpdate>& update) override { sink_->skip(update); }
    [[nodiscard]] bool hasSpace() const override { return unlimited_ || sink_->hasSpace(); }
    void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) override {
        waker_->setListener(this, listener);
    }

    [[nodiscard]] const std::shared_ptr<SinkWaker>& waker() const noexcept { return waker_; }
    void setUnlimited(bool unlimited) noexcept { unlimited_ = unlimited; }

private:
    const std::shared_ptr<SinkWaker> waker_;
    const std::shared_ptr<IOutputSink> sink_;
    std::atomic<bool> unlimited_{false};
};

}  // namespace Orlix::DataProcessing::Core
