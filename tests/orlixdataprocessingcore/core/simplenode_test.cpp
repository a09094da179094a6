#include "orlixdataprocessingcore/core/simplenode.h"

#include "orlixdataprocessingcore/core/testnodes.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

class SimpleNodeTest : public testing::Test {
protected:
    void attach() { handle = node->attachOutputSink("Out", sink); }

    std::shared_ptr<TestNode> node = std::make_shared<TestNode>();
    std::shared_ptr<TestSink> sink = std::make_shared<TestSink>();
    std::shared_ptr<IHandle> handle;
};

TEST_F(SimpleNodeTest, ReadsItsInputPropertyAndSendsItsOutputProperty) {
    attach();
    node->start({});
    EXPECT_EQ(runOnce(*node, {{"In", integer(5)}}), StartExecutionResult::Executed);
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{5});
}

TEST_F(SimpleNodeTest, PassesTheUpdateOfItsInputOn) {
    attach();
    node->start({});
    const auto update = makeUpdate();
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}, update));
    EXPECT_EQ(sink->entries().at(0).update, update);
    EXPECT_TRUE(node->isForwardingUpdates());
}

TEST_F(SimpleNodeTest, SharesTheValueThatItForwards) {
    attach();
    node->work = [](TestNode& self) { self.output.setValue(self.properties[0].getValue()); };
    node->start({});
    const auto value = integer(5);
    static_cast<void>(runOnce(*node, {{"In", value}}));
    const auto entries = sink->entries();
    const auto& out = entries.at(0).value;
    EXPECT_EQ(out.get<Integer>(true), std::as_const(value).get<Integer>(true));
}

TEST_F(SimpleNodeTest, AnInputWithoutValueGetsTheDefault) {
    attach();
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    static_cast<void>(runOnce(*node, {}));
    EXPECT_EQ(sink->values(), (std::vector<std::int64_t>{5, 0}));
}

TEST_F(SimpleNodeTest, AnOutputThatIsLeftUnsetIsSkipped) {
    attach();
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    node->work = [](TestNode&) {};
    static_cast<void>(runOnce(*node, {{"In", integer(6)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{5});
    EXPECT_EQ(sink->skips(), 1U);
}

TEST_F(SimpleNodeTest, HoldsNoValueBetweenItsJobs) {
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    EXPECT_FALSE(node->properties[0].isSet());
    EXPECT_FALSE(node->output.isSet());
}

TEST_F(SimpleNodeTest, AJobThatThrowsSendsAnErrorValueAndNotThePreviousOne) {
    const Utils::LogCapture log;
    attach();
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    node->work = [](TestNode& self) {
        self.out(7);
        throw GenICam::RuntimeException("broken", __FILE__, __LINE__);
    };
    EXPECT_EQ(runOnce(*node, {{"In", integer(6)}}), StartExecutionResult::Executed);
    const auto entries = sink->entries();
    const auto* const value = entries.at(1).value.get<Integer>(true);
    ASSERT_TRUE(value->hasError(true));
    EXPECT_EQ(value->getError(true)->getDescription(), "broken");
    EXPECT_EQ(value->getError(true)->getName(), "GenICamExceptionError");
}

TEST_F(SimpleNodeTest, AFailedJobIsInTheErrorSetUntilAJobSucceeds) {
    const Utils::LogCapture log;
    node->work = [](TestNode&) { throw std::runtime_error("broken"); };
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    ASSERT_TRUE(node->hasError());
    EXPECT_EQ((*node->getErrors().begin())->getDescription(), "broken");
    static_cast<void>(runOnce(*node, {}));
    EXPECT_EQ(node->getErrors().size(), 1U);
    node->work = TestNode::sum;
    static_cast<void>(runOnce(*node, {}));
    EXPECT_FALSE(node->hasError());
}

TEST_F(SimpleNodeTest, AFailedJobIsInTheErrorSetUntilTheNextStart) {
    const Utils::LogCapture log;
    node->work = [](TestNode&) { throw 5; };
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    node->stop();
    EXPECT_TRUE(node->hasError());
    node->start({});
    EXPECT_FALSE(node->hasError());
}

TEST_F(SimpleNodeTest, EachFailedJobWritesOneLineAtSeverityThree) {
    const Utils::LogCapture log;
    node->work = [](TestNode&) { throw std::runtime_error("broken"); };
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    const auto lines = log.getLines("orlix.dataprocessing.core.Node");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Utils::Severitiy::Error);
    EXPECT_NE(lines[0].text.find("Job failed. Message: broken"), gcstring::npos);
}

TEST_F(SimpleNodeTest, AnInputOfAWrongTypeFailsTheJob) {
    const Utils::LogCapture log;
    attach();
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", Utils::Variant(String("text"))}}));
    EXPECT_TRUE(node->hasError());
    EXPECT_TRUE(sink->entries().at(0).value.get<Integer>(true)->hasError(true));
}

TEST_F(SimpleNodeTest, DescribesItsPins) {
    const auto inputs = node->getInputDescriptors();
    ASSERT_EQ(inputs.size(), 1U);
    EXPECT_EQ(inputs[0].name, "In");
    EXPECT_EQ(inputs[0].type, Utils::TypeInfo::getTypeInfo<Integer>(true));
    EXPECT_FALSE(inputs[0].optional);
    const auto outputs = node->getOutputDescriptors();
    ASSERT_EQ(outputs.size(), 1U);
    EXPECT_TRUE(outputs[0].optional);
    EXPECT_EQ(outputs[0].maxJobCount, unlimitedJobs);
}

TEST_F(SimpleNodeTest, AfterTheCleanupNoJobTouchesTheProperties) {
    node->start({});
    node->cleanup();
    node->cleanup();
    EXPECT_EQ(runOnce(*node, {{"In", integer(5)}}), StartExecutionResult::NotRunning);
    EXPECT_EQ(node->getState(), NodeState::Stopped);
}

TEST_F(SimpleNodeTest, TheSmallestLimitOfItsInputsIsThatOfItsJobs) {
    node = std::make_shared<TestNode>(std::vector<gcstring>{"X", "Y"});
    EXPECT_EQ(node->getMaxInputJobCount(), unlimitedJobs);
    node->remakeInput("X", 0, false, 7);
    node->remakeInput("Y", 1, false, 3);
    EXPECT_EQ(node->getMaxInputJobCount(), 3U);
    node->removeInput("Y");
    EXPECT_EQ(node->getMaxInputJobCount(), 7U);
}

// Refuses its first connection.
class ChoosyNode final : public TestNode {
public:
    ~ChoosyNode() override { cleanup(); }

protected:
    void onInputTypeConfigured(const gcstring&, const Utils::TypeInfo&) override {
        if (std::exchange(isFirst_, false)) {
            throw GenICam::RuntimeException("Not this one.", __FILE__, __LINE__);
        }
    }

private:
    bool isFirst_ = true;
};

TEST_F(SimpleNodeTest, AnInputWhoseNodeRefusesAConnectionIsFreeForAnother) {
    ChoosyNode choosy;
    const auto type = Utils::TypeInfo::getTypeInfo<Integer>(true);
    EXPECT_THROW(static_cast<void>(choosy.configureInputType("In", type)),
                 GenICam::RuntimeException);
    EXPECT_TRUE(choosy.canConfigure("In"));
    handle = choosy.configureInputType("In", type);
    EXPECT_TRUE(choosy.isConfigured(handle));
    EXPECT_FALSE(choosy.canConfigure("In"));
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
