// A host's sink as the graph attaches it: while the graph is brought to its end, a sink that is
// full holds nothing back.
#pragma once

#include <atomic>
#include <memory>

#include "orlixdataprocessingcore/core/outputsink.h"

namespace Orlix::DataProcessing::Core {

// Shared by the graph and the producing node; safe from any thread as far as the host's sink is.
class GraphSink final : public IOutputSink {
public:
    explicit GraphSink(const std::shared_ptr<IOutputSink>& sink) : sink_(sink) {}

    void put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) override {
        sink_->put(update, value);
    }
    void skip(const std::shared_ptr<IGraphUpdate>& update) override { sink_->skip(update); }
    [[nodiscard]] bool hasSpace() const override { return unlimited_ || sink_->hasSpace(); }
    void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) override {
        sink_->setSpaceListener(listener);
    }

    void setUnlimited(bool unlimited) noexcept { unlimited_ = unlimited; }

private:
    const std::shared_ptr<IOutputSink> sink_;
    std::atomic<bool> unlimited_{false};
};

}  // namespace Orlix::DataProcessing::Core
