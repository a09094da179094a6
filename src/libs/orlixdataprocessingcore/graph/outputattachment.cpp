#include "orlixdataprocessingcore/graph/outputattachment.h"

#include <algorithm>
#include <utility>

#include "orlixdataprocessingcore/core/nodelog.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Reads another output in place of one that is gone: for each of its updates it tells that there is
// no value.
class SkippingSink final : public IOutputSink {
public:
    explicit SkippingSink(const std::shared_ptr<IOutputSink>& sink) : sink_(sink) {}

    void put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant&) override {
        sink_->skip(update);
    }
    void skip(const std::shared_ptr<IGraphUpdate>& update) override { sink_->skip(update); }
    [[nodiscard]] bool hasSpace() const override { return sink_->hasSpace(); }
    void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) override {
        sink_->setSpaceListener(listener);
    }

private:
    const std::shared_ptr<IOutputSink> sink_;
};

}  // namespace

OutputAttachment::OutputAttachment(const std::shared_ptr<GraphNode>& node, const gcstring& pin,
                                   const std::shared_ptr<IOutputSink>& sink)
    : node_(node), pin_(pin), sink_(sink), standIn_(std::make_shared<SkippingSink>(sink)) {}

void OutputAttachment::attach() {
    own_ = node_->node().attachOutputSink(pin_, sink_);
}

void OutputAttachment::detach() {
    release(other_);
    release(own_);
}

// Two threads at a time would attach the sink twice.
void OutputAttachment::renew() {
    {
        std::lock_guard guard(mutex_);
        hasChanged_ = true;
        if (std::exchange(isFollowing_, true)) {
            return;  // the other thread looks again
        }
    }
    while (mustFollow()) {
        // An output that goes away meanwhile is told of by another signal.
        guarded(node_->sharedNode().get(), "connecting an output anew", [&] { follow(); });
    }
}

bool OutputAttachment::mustFollow() {
    std::lock_guard guard(mutex_);
    isFollowing_ = std::exchange(hasChanged_, false);
    return isFollowing_;
}

void OutputAttachment::follow() {
    if (isHeld(own_)) {
        return;
    }
    INode& node = node_->node();
    const auto outputs = node.getOutputDescriptors();
    const bool isThere =
        std::any_of(outputs.begin(), outputs.end(),
                    [this](const OutputDescriptor& output) { return output.name == pin_; });
    if (isThere) {
        release(other_);  // first: no update may come twice
        own_ = node.attachOutputSink(pin_, sink_);
    } else if (!outputs.empty() && !isHeld(other_)) {
        other_ = node.attachOutputSink(outputs.front().name, standIn_);
    }
}

bool OutputAttachment::isHeld(const std::shared_ptr<IHandle>& handle) const {
    return handle && node_->node().isOutputSinkAttached(handle);
}

void OutputAttachment::release(std::shared_ptr<IHandle>& handle) {
    if (isHeld(handle)) {
        node_->node().detachOutputSink(handle);
    }
    handle.reset();
}

}  // namespace Orlix::DataProcessing::Core
