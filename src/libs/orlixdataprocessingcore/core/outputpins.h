// The outputs of one node and the sinks behind them. Delivery works on an immutable table of
// routes, so that no lock is held while a sink is called.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/outputsink.h"

namespace Orlix::DataProcessing::Core {

struct OutputRoute {
    gcstring pin;
    Utils::TypeInfo type;
    std::vector<std::shared_ptr<IOutputSink>> sinks;  // in the order of their attachment
    bool isGone = false;  // the pin is removed: no value leaves here, and each update is told so
};

// Where values go, as of one moment. Immutable; an exception of a sink is logged and concerns no
// other sink.
struct OutputRoutes {
    std::vector<OutputRoute> routes;  // by ascending name, as the values of a job are
    std::uint64_t smallestJobCount = unlimitedJobs;

    [[nodiscard]] bool hasSpace() const;
    // Every sink gets the value of its pin, or hears that there is none.
    // Takes the update and the value of the last sink away; the other values stay.
    void deliver(std::shared_ptr<IGraphUpdate>&& update, PinValues& values) const;
    void skip(const std::shared_ptr<IGraphUpdate>& update) const;
};

// Owned by the node; safe from any thread. Unknown names throw GenICam::InvalidArgumentException. A
// delivery that is under way when a sink is detached may still reach it.
//
// A pin may be removed and made anew at any time, also in a run. Its sinks stay attached: until
// then they hear of each update that it has no value, so that nobody waits for one, and not a
// single update passes them by.
class OutputPins {
public:
    OutputPins();

    void add(const OutputDescriptor& descriptor);
    void remove(const gcstring& name);
    void setUpdateGroup(const gcstring& name, const gcstring& group);
    [[nodiscard]] std::vector<OutputDescriptor> descriptors() const;

    [[nodiscard]] std::shared_ptr<IHandle> attach(const gcstring& name,
                                                  const std::shared_ptr<IOutputSink>& sink,
                                                  const std::weak_ptr<ISpaceListener>& listener);
    void detach(const std::shared_ptr<IHandle>& handle);
    void detachAll();
    [[nodiscard]] bool isAttached(const std::shared_ptr<IHandle>& handle) const;

    [[nodiscard]] std::shared_ptr<const OutputRoutes> routes() const;
    // Changes with every change of the routes, so that a holder of a table knows when to renew it.
    [[nodiscard]] std::uint64_t version() const noexcept {
        return version_.load(std::memory_order_acquire);
    }

private:
    struct Attachment {
        std::shared_ptr<IHandle> handle;
        std::shared_ptr<IOutputSink> sink;
    };
    struct Pin {
        OutputDescriptor descriptor;
        std::vector<Attachment> attachments;
        bool isGone = false;  // removed, but for its sinks
    };

    [[nodiscard]] std::vector<Pin>::iterator find(const gcstring& name);
    void eraseUnused();
    [[nodiscard]] bool holds(const std::shared_ptr<IOutputSink>& sink) const;
    void rebuildRoutes();

    mutable std::mutex mutex_;
    std::vector<Pin> pins_;  // in the order of their declaration
    std::shared_ptr<const OutputRoutes> routes_;
    std::atomic<std::uint64_t> version_{1};
};

}  // namespace Orlix::DataProcessing::Core
