// The pins of a node and the sinks at its outputs.
#include <functional>
#include <stdexcept>
#include <string>

#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodetest.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

class NodePins : public NodeTest {};

Utils::TypeInfo integerType() {
    return Utils::TypeInfo::getTypeInfo<Integer>(true);
}

TEST_F(NodePins, AnInputTakesOneConnectionOfAFittingType) {
    EXPECT_TRUE(node->canConfigure("In"));
    EXPECT_THROW(static_cast<void>(
                     node->configureInputType("In", Utils::TypeInfo::getTypeInfo<String>(true))),
                 InvalidArgumentException);
    const auto handle = node->configureInputType("In", integerType());
    EXPECT_TRUE(node->isConfigured(handle));
    EXPECT_FALSE(node->canConfigure("In"));
    EXPECT_THROW(static_cast<void>(node->configureInputType("In", integerType())),
                 RuntimeException);
    node->unconfigureInputType(handle);
    EXPECT_FALSE(node->isConfigured(handle));
    EXPECT_THROW(node->unconfigureInputType(handle), InvalidArgumentException);
    EXPECT_THROW(node->unconfigureInputType(nullptr), InvalidArgumentException);
}

TEST_F(NodePins, AnUnknownPinIsNamedInTheException) {
    const auto sink = std::make_shared<TestSink>();
    try {
        static_cast<void>(node->attachOutputSink("Nowhere", sink));
        FAIL();
    } catch (const InvalidArgumentException& exception) {
        EXPECT_NE(gcstring(exception.GetDescription()).find("\"Nowhere\""), gcstring::npos);
    }
    EXPECT_THROW(static_cast<void>(node->canConfigure("Nowhere")), InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(node->isAutoResetEnabled("Nowhere")), InvalidArgumentException);
    EXPECT_THROW(node->removeInput("Nowhere"), InvalidArgumentException);
    EXPECT_THROW(node->removeOutput("Nowhere"), InvalidArgumentException);
}

// Tells what it throws for a pin of that name.
std::string refusalOf(const std::function<void()>& createPin) {
    try {
        createPin();
    } catch (const InvalidArgumentException& exception) {
        return exception.GetDescription();
    }
    return "";
}

TEST_F(NodePins, APinOfANameThatIsTakenOrEmptyIsNotMade) {
    Utils::ResettableProperty<Integer> property;
    const auto createInput = [&](const char* name) {
        return refusalOf(
            [&] { node->createInput(name, "", property, integer(0), false, unlimitedJobs); });
    };
    const auto createOutput = [&](const char* name) {
        return refusalOf([&] { node->createOutput(name, "", property, true, unlimitedJobs); });
    };
    EXPECT_EQ(createInput("In"), "Input \"In\" can't be made: the name is taken or empty.");
    EXPECT_EQ(createInput(""), "Input \"\" can't be made: the name is taken or empty.");
    EXPECT_EQ(createOutput("Out"), "Output \"Out\" can't be made: the name is taken or empty.");
    TestSource source;
    EXPECT_EQ(refusalOf([&] { source.createOutput("Out", "", integerType(), true, 1); }),
              "Output \"Out\" can't be made: the name is taken or empty.");
    EXPECT_EQ(node->getInputDescriptors().size(), 1U);
    EXPECT_EQ(node->getOutputDescriptors().size(), 1U);
}

TEST_F(NodePins, TellsOfAChangedAutoResetOnce) {
    std::vector<gcstring> changed;
    static_cast<void>(node->getAutoResetChangedSignal()->connect(
        [&](const gcstring& pin) { changed.push_back(pin); }));
    EXPECT_TRUE(node->isAutoResetEnabled("In"));
    node->setAutoResetEnabled("In", false);
    node->setAutoResetEnabled("In", false);
    EXPECT_FALSE(node->isAutoResetEnabled("In"));
    EXPECT_EQ(changed, std::vector<gcstring>{"In"});
}

TEST_F(NodePins, SinksAreServedInTheOrderOfTheirAttachment) {
    struct OrderSink : TestSink {
        OrderSink(std::vector<int>& allNumbers, int ownNumber)
            : numbers(allNumbers), number(ownNumber) {}
        void put(const UpdatePtr&, const Utils::Variant&) override { numbers.push_back(number); }
        std::vector<int>& numbers;
        int number;
    };
    std::vector<int> order;
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<OrderSink>(order, 1)));
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<OrderSink>(order, 2)));
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(NodePins, ASinkThatIsAttachedTwiceGetsEveryValueTwice) {
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", sink));
    static_cast<void>(node->attachOutputSink("Out", sink));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(5)}}));
    EXPECT_EQ(sink->values(), (std::vector<std::int64_t>{5, 5}));
    const auto entries = sink->entries();
    EXPECT_EQ(entries[0].update, entries[1].update);
}

TEST_F(NodePins, ADetachedSinkGetsNothingAndHasNoListener) {
    const auto sink = std::make_shared<TestSink>();
    const auto handle = node->attachOutputSink("Out", sink);
    EXPECT_TRUE(node->isOutputSinkAttached(handle));
    EXPECT_TRUE(sink->hasListener());
    node->detachOutputSink(handle);
    EXPECT_FALSE(node->isOutputSinkAttached(handle));
    EXPECT_FALSE(sink->hasListener());
    EXPECT_THROW(node->detachOutputSink(handle), InvalidArgumentException);
    node->start({});
    static_cast<void>(runOnce(*node, {}));
    EXPECT_TRUE(sink->entries().empty());
}

TEST_F(NodePins, ARemovedOutputTellsItsSinksThatThereIsNoValueUntilItIsMadeAnew) {
    TestSource source({"A", "B"});
    const auto sink = std::make_shared<TestSink>();
    const auto handle = source.attachOutputSink("A", sink);
    int changes = 0;
    static_cast<void>(source.getOutputsChangedSignal()->connect([&] { ++changes; }));
    source.start({});
    source.removeOutput("A");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(source.getOutputDescriptors().size(), 1U);
    EXPECT_TRUE(source.isOutputSinkAttached(handle));
    source.send(PinValues{{"A", integer(1)}, {"B", integer(2)}});
    EXPECT_EQ(sink->skips(), 1U);
    source.createOutput("A", "", integerType(), true, unlimitedJobs);
    source.send(PinValues{{"A", integer(3)}});
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{3});
}

TEST_F(NodePins, ASinkOfARemovedOutputCanBeDetachedAndNoneAttached) {
    const auto sink = std::make_shared<TestSink>();
    const auto handle = node->attachOutputSink("Out", sink);
    node->removeOutput("Out");
    EXPECT_THROW(static_cast<void>(node->attachOutputSink("Out", sink)), InvalidArgumentException);
    EXPECT_THROW(node->removeOutput("Out"), InvalidArgumentException);
    EXPECT_TRUE(sink->hasListener());
    node->detachOutputSink(handle);
    EXPECT_FALSE(sink->hasListener());
    EXPECT_FALSE(node->isOutputSinkAttached(handle));
}

TEST_F(NodePins, ADetachedSinkKeepsItsListenerWhileItReadsAnotherPin) {
    TestSource source({"A", "B"});
    const auto sink = std::make_shared<TestSink>();
    const auto a = source.attachOutputSink("A", sink);
    const auto b = source.attachOutputSink("B", sink);
    source.removeOutput("A");
    source.detachOutputSink(a);
    EXPECT_TRUE(sink->hasListener());
    source.detachOutputSink(b);
    EXPECT_FALSE(sink->hasListener());
}

TEST_F(NodePins, ASinkThatThrowsConcernsNoOther) {
    struct ThrowingSink : TestSink {
        void put(const UpdatePtr&, const Utils::Variant&) override { throw 5; }
    };
    const Utils::LogCapture log;
    const auto sink = std::make_shared<TestSink>();
    static_cast<void>(node->attachOutputSink("Out", std::make_shared<ThrowingSink>()));
    static_cast<void>(node->attachOutputSink("Out", sink));
    node->start({});
    static_cast<void>(runOnce(*node, {{"In", integer(3)}}));
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{3});
    EXPECT_FALSE(node->hasError());
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
