// Keeps a sink at the output of a given name, whatever the node makes of that output.
#pragma once

#include <memory>
#include <mutex>

#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/graph/graphnode.h"

namespace Orlix::DataProcessing::Core {

// A node may remove an output and make it anew at any time, also in a run. The sink then moves to
// the new one. While there is none, the sink hears of each update that it has no value, as if the
// pin had been left out: a join behind it goes on, and nobody is held back.
//
// renew() is safe from any thread; the node is called with no lock held. attach() and detach()
// belong to whoever builds the graph and takes it apart, while nobody renews.
class OutputAttachment {
public:
    OutputAttachment(const std::shared_ptr<GraphNode>& node, const gcstring& pin,
                     const std::shared_ptr<IOutputSink>& sink);

    [[nodiscard]] const GraphNode* node() const noexcept { return node_.get(); }
    [[nodiscard]] const gcstring& pin() const noexcept { return pin_; }

    // Throws what the node throws.
    void attach();
    // To be called after each change of the node's outputs. Never throws.
    void renew();
    void detach();

private:
    [[nodiscard]] bool mustFollow();
    void follow();
    [[nodiscard]] bool isHeld(const std::shared_ptr<IHandle>& handle) const;
    void release(std::shared_ptr<IHandle>& handle);

    const std::shared_ptr<GraphNode> node_;
    const gcstring pin_;
    const std::shared_ptr<IOutputSink> sink_;
    const std::shared_ptr<IOutputSink> standIn_;  // at another output, while ours is gone

    std::mutex mutex_;
    bool isFollowing_ = false;  // some thread is at it and owns the handles
    bool hasChanged_ = false;   // since that thread has looked

    std::shared_ptr<IHandle> own_;
    std::shared_ptr<IHandle> other_;  // of the stand-in
};

}  // namespace Orlix::DataProcessing::Core
