#include "host/startwatch.h"

#include <gtest/gtest.h>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::Host {
namespace {

using namespace DataProcessing::Core;

enum class Start { Succeeds, Fails };

class TestNode final : public AdvancedNode {
public:
    explicit TestNode(Start start) : AdvancedNode(createResourcePool()), start_(start) {
        setLock(std::make_shared<DataProcessing::Threading::RecursiveCLock>());
    }
    ~TestNode() override { cleanup(); }

    bool isForwardingUpdates() const override { return false; }
    void loadSettings(const std::shared_ptr<ISettings>&) override {}
    void saveSettings(const std::shared_ptr<ISettings>&) override {}

protected:
    void onStarting(const NodeArgumentCollection&) override {
        if (start_ == Start::Fails) {
            throw GenICam::RuntimeException("No.", __FILE__, __LINE__);
        }
    }
    void onStopping() override {}

private:
    const Start start_;
};

class StartWatchTest : public testing::Test {
protected:
    void startAllUntilOneFails() {
        try {
            for (const auto& node : nodes_) {
                node->start({});
            }
        } catch (const GenICam::RuntimeException&) {
        }
    }

    std::vector<std::shared_ptr<INode>> nodes_{std::make_shared<TestNode>(Start::Succeeds),
                                               std::make_shared<TestNode>(Start::Fails),
                                               std::make_shared<TestNode>(Start::Succeeds)};
};

TEST_F(StartWatchTest, BeforeTheStartNoneHasFailed) {
    const StartWatch watch(nodes_);
    EXPECT_EQ(watch.failedNode(), nodes_.size());
}

TEST_F(StartWatchTest, NamesTheNodeThatBeganAndNeverRan) {
    const StartWatch watch(nodes_);
    startAllUntilOneFails();
    EXPECT_EQ(watch.failedNode(), 1U);
}

TEST_F(StartWatchTest, NodeThatRanAndWasStoppedHasNotFailed) {
    const StartWatch watch(nodes_);
    startAllUntilOneFails();
    // As a graph does after a failure.
    nodes_[0]->stop();
    EXPECT_EQ(watch.failedNode(), 1U);
}

TEST_F(StartWatchTest, WhatHappenedBeforeItDoesNotCount) {
    startAllUntilOneFails();
    const StartWatch watch(nodes_);
    EXPECT_EQ(watch.failedNode(), nodes_.size());
}

TEST_F(StartWatchTest, HoldsNoNode) {
    const long before = nodes_[0].use_count();
    const StartWatch watch(nodes_);
    EXPECT_EQ(nodes_[0].use_count(), before);
}

TEST_F(StartWatchTest, NodesMayChangeAndGoAfterItsEnd) {
    { const StartWatch watch(nodes_); }
    startAllUntilOneFails();
    nodes_.clear();
}

}  // namespace
}  // namespace Orlix::Host
