// Nodes and sinks that the tests of nodes and graphs are built of.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/core/settings.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::DataProcessing::Core {

using UpdatePtr = std::shared_ptr<IGraphUpdate>;

inline UpdatePtr makeUpdate() {
    return getDefaultUpdateFactory()->createUpdate(nullptr, nullptr);
}

inline Utils::Variant integer(std::int64_t value) {
    return Utils::Variant(Integer(value));
}

// A source that does what the test tells it to, on the test's threads.
class TestSource : public AdvancedNode {
public:
    explicit TestSource(const std::vector<gcstring>& outputs = {"Out"},
                        const std::shared_ptr<IResourcePool>& pool = nullptr)
        : AdvancedNode(pool) {
        for (const gcstring& output : outputs) {
            createOutput(output, "", Utils::TypeInfo::getTypeInfo<Integer>(true), true,
                         unlimitedJobs);
        }
    }
    ~TestSource() override { cleanup(); }

    void loadSettings(const std::shared_ptr<ISettings>&) override {}
    void saveSettings(const std::shared_ptr<ISettings>&) override {}

    using AdvancedNode::createJob;
    using AdvancedNode::createOutput;
    using AdvancedNode::getLock;
    using AdvancedNode::removeOutput;
    using AdvancedNode::setUpdateGroup;
    using AdvancedNode::takeOnlyUpdatesOfTheRun;
    using AdvancedNode::waitUntilSpaceAvailable;
    using NodeBase::abort;

    UpdatePtr send(PinValues values) {
        auto update = makeUpdate();
        createJob(update, std::move(values), {});
        return update;
    }
    UpdatePtr send(std::int64_t value) { return send(PinValues{{"Out", integer(value)}}); }

    std::function<void()> starting = [] {};
    std::function<void()> stopping = [] {};

protected:
    void onStarting(const NodeArgumentCollection&) override { starting(); }
    void onStopping() override { stopping(); }
};

// One or two integers in, one out: their sum, unless the test puts another function in.
class TestNode : public SimpleNode {
public:
    explicit TestNode(const std::vector<gcstring>& inputs = {"In"}, bool optional = false)
        : SimpleNode(nullptr), properties(inputs.size()) {
        for (std::size_t index = 0; index < inputs.size(); ++index) {
            createInput(inputs[index], "", properties[index], integer(0), optional, unlimitedJobs);
        }
        createOutput("Out", "", output, true, unlimitedJobs);
    }
    ~TestNode() override { cleanup(); }

    void loadSettings(const std::shared_ptr<ISettings>&) override {}
    void saveSettings(const std::shared_ptr<ISettings>&) override {}

    void execute() override { work(*this); }

    // As a node does whose pins follow its settings.
    void remakeInput(const gcstring& name, std::size_t index = 0, bool optional = false,
                     std::uint64_t maxJobCount = unlimitedJobs) {
        removeInput(name);
        createInput(name, "", properties[index], integer(0), optional, maxJobCount);
    }

    [[nodiscard]] std::int64_t in(std::size_t index = 0) const {
        return properties[index].getValue()->get();
    }
    void out(std::int64_t value) { output.setValue(Integer(value)); }
    static void sum(TestNode& node) {
        std::int64_t result = 0;
        for (std::size_t index = 0; index < node.properties.size(); ++index) {
            result += node.in(index);
        }
        node.out(result);
    }

    using NodeBase::abort;
    using NodeBase::getLock;
    using NodeBase::getMaxInputJobCount;
    using NodeBase::removeInput;
    using NodeBase::removeOutput;
    using NodeBase::resetError;
    using NodeBase::setError;
    using NodeBase::setLock;
    using SimpleNode::createInput;
    using SimpleNode::createOutput;

    std::vector<Utils::ResettableProperty<Integer>> properties;
    Utils::ResettableProperty<Integer> output;
    std::function<void(TestNode&)> work = sum;
    std::function<void()> starting = [] {};
    std::function<void()> stopping = [] {};

protected:
    void onStarting(const NodeArgumentCollection&) override { starting(); }
    void onStopping() override { stopping(); }
};

// Collects what comes, and can be told to be full.
class TestSink : public IOutputSink {
public:
    struct Entry {
        UpdatePtr update;
        Utils::Variant value;  // invalid for a skip
    };

    void put(const UpdatePtr& update, const Utils::Variant& value) override { add(update, value); }
    void skip(const UpdatePtr& update) override { add(update, Utils::Variant()); }
    [[nodiscard]] bool hasSpace() const override {
        std::lock_guard guard(mutex_);
        return !full_;
    }
    void setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) override {
        std::lock_guard guard(mutex_);
        listener_ = listener;
    }

    void setFull(bool full) {
        std::shared_ptr<ISpaceListener> listener;
        {
            std::lock_guard guard(mutex_);
            full_ = full;
            listener = listener_.lock();
        }
        if (!full && listener) {
            listener->onSpaceAvailable();
        }
    }
    [[nodiscard]] bool hasListener() const {
        std::lock_guard guard(mutex_);
        return !listener_.expired();
    }

    // Waits for as many values and skips.
    [[nodiscard]] std::vector<Entry> waitFor(std::size_t count) const {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [&] { return entries_.size() >= count; });
        return entries_;
    }
    [[nodiscard]] std::vector<Entry> entries() const { return waitFor(0); }
    // The values that have come, skips left out.
    [[nodiscard]] std::vector<std::int64_t> values(std::size_t waitForCount = 0) const {
        std::vector<std::int64_t> result;
        for (const Entry& entry : waitFor(waitForCount)) {
            if (entry.value.isValid()) {
                result.push_back(entry.value.get<Integer>(true)->get());
            }
        }
        return result;
    }
    [[nodiscard]] std::size_t skips() const {
        std::size_t count = 0;
        for (const Entry& entry : entries()) {
            count += entry.value.isValid() ? 0U : 1U;
        }
        return count;
    }

private:
    void add(const UpdatePtr& update, const Utils::Variant& value) {
        {
            std::lock_guard guard(mutex_);
            entries_.push_back({update, value});
        }
        arrived_.notify_all();
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<Entry> entries_;
    bool full_ = false;
    std::weak_ptr<ISpaceListener> listener_;
};

// Gives a node one job.
inline StartExecutionResult runOnce(INode& node, const PinValues& values,
                                    const UpdatePtr& update = makeUpdate()) {
    return node.startExecution([&](UpdatePtr& jobUpdate, PinValues& jobValues) {
        jobUpdate = update;
        jobValues = values;
        return true;
    });
}

}  // namespace Orlix::DataProcessing::Core
