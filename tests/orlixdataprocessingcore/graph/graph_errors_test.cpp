// Errors travel with the values, and what is wrong with a graph is said at once.
#include <memory>

#include "orlixdataprocessingcore/graph/testgraphs.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Core {
namespace {

using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;

TEST(GraphErrors, AFailedJobFailsItsUpdateOnlyAndTheGraphRunsOn) {
    const Utils::LogCapture log;
    auto source = std::make_shared<TestSource>();
    auto node = std::make_shared<TestNode>();
    auto sink = std::make_shared<TestSink>();
    node->work = [](TestNode& self) {
        if (self.in() == 2) {
            throw RuntimeException("two", __FILE__, __LINE__);
        }
        TestNode::sum(self);
    };
    Graph graph;
    buildChain(graph, source, {node}, sink);
    graph.start({});
    for (int value = 1; value <= 3; ++value) {
        source->send(value);
    }
    graph.stop(StopMode::Drain);
    const auto entries = sink->entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_FALSE(entries[0].value.get<Integer>(true)->hasError(true));
    EXPECT_EQ(entries[1].value.get<Integer>(true)->getError(true)->getDescription(), "two");
    EXPECT_FALSE(entries[2].value.get<Integer>(true)->hasError(true));
    EXPECT_EQ(graph.statistics().failedJobs, 1U);
    EXPECT_EQ(graph.statistics().executedJobs, 3U);
}

class GraphBuilding : public testing::Test {
protected:
    GraphBuilding() {
        graph.addNode("Source", source);
        graph.addNode("A", node);
    }
    void expectRefusal(const char* fromNode, const char* fromPin, const char* toNode,
                       const char* toPin, const char* text) {
        try {
            graph.connect(fromNode, fromPin, toNode, toPin);
            FAIL() << text;
        } catch (const InvalidArgumentException& exception) {
            EXPECT_NE(gcstring(exception.GetDescription()).find(text), gcstring::npos)
                << exception.GetDescription();
        }
    }

    Graph graph;
    std::shared_ptr<TestSource> source = std::make_shared<TestSource>();
    std::shared_ptr<TestNode> node = std::make_shared<TestNode>();
};

TEST_F(GraphBuilding, NamesAreUniqueAndNotEmpty) {
    EXPECT_THROW(graph.addNode("A", std::make_shared<TestNode>()), InvalidArgumentException);
    EXPECT_THROW(graph.addNode("", std::make_shared<TestNode>()), InvalidArgumentException);
    EXPECT_THROW(graph.addNode("B", nullptr), InvalidArgumentException);
    EXPECT_EQ(graph.getNode("A"), node);
    EXPECT_THROW(static_cast<void>(graph.getNode("B")), InvalidArgumentException);
}

TEST_F(GraphBuilding, AnUnknownEndIsNamed) {
    expectRefusal("Nobody", "Out", "A", "In", "\"Nobody\"");
    expectRefusal("Source", "Off", "A", "In", "\"Source.Off\"");
    expectRefusal("Source", "Out", "A", "Off", "\"A.Off\"");
}

TEST_F(GraphBuilding, AnInputTakesOneConnection) {
    graph.connect("Source", "Out", "A", "In");
    expectRefusal("Source", "Out", "A", "In", "taken");
}

TEST_F(GraphBuilding, TypesHaveToFit) {
    class TextSource : public TestSource {
    public:
        TextSource() : TestSource(std::vector<gcstring>{}) {
            createOutput("Text", "", Utils::TypeInfo::getTypeInfo<String>(true), true,
                         unlimitedJobs);
        }
    };
    graph.addNode("Text", std::make_shared<TextSource>());
    expectRefusal("Text", "Text", "A", "In", "String");
    EXPECT_TRUE(node->canConfigure("In"));
}

TEST_F(GraphBuilding, ACycleIsRefused) {
    graph.addNode("B", std::make_shared<TestNode>(std::vector<gcstring>{"In", "Back"}));
    graph.connect("A", "Out", "B", "In");
    expectRefusal("B", "Out", "A", "In", "cycle");
    expectRefusal("B", "Out", "B", "Back", "cycle");
}

TEST_F(GraphBuilding, AnInputThatHasToBeConnectedIsNamed) {
    try {
        graph.validate();
        FAIL();
    } catch (const RuntimeException& exception) {
        EXPECT_NE(gcstring(exception.GetDescription()).find("\"A.In\""), gcstring::npos);
    }
    EXPECT_THROW(graph.start({}), RuntimeException);
    EXPECT_FALSE(graph.isRunning());
    graph.connect("Source", "Out", "A", "In");
    graph.validate();
}

TEST_F(GraphBuilding, AnOptionalInputMayStayOpen) {
    Graph other;
    other.addNode("A", std::make_shared<TestNode>(std::vector<gcstring>{"In"}, true));
    other.validate();
}

TEST_F(GraphBuilding, NothingIsBuiltWhileItRuns) {
    graph.connect("Source", "Out", "A", "In");
    graph.start({});
    EXPECT_THROW(graph.addNode("B", std::make_shared<TestNode>()), RuntimeException);
    EXPECT_THROW(graph.connect("Source", "Out", "A", "In"), RuntimeException);
    EXPECT_THROW(graph.start({}), RuntimeException);
    EXPECT_THROW(graph.freeResources(), RuntimeException);
}

TEST_F(GraphBuilding, AnOutputThatWasMadeAnewIsConnectedAgainAtTheStart) {
    auto sink = std::make_shared<TestSink>();
    graph.connect("Source", "Out", "A", "In");
    graph.attachSink("Source", "Out", sink);
    source->removeOutput("Out");
    EXPECT_THROW(graph.start({}), InvalidArgumentException);
    source->createOutput("Out", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true,
                         unlimitedJobs);
    graph.start({});
    source->send(1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{1});
    EXPECT_EQ(graph.statistics().executedJobs, 1U);
}

TEST_F(GraphBuilding, AnInputThatWasMadeAnewIsConnectedAgainAtTheStart) {
    auto sink = std::make_shared<TestSink>();
    graph.connect("Source", "Out", "A", "In");
    graph.attachSink("A", "Out", sink);
    node->remakeInput("In");
    graph.start({});
    source->send(1);
    graph.stop(StopMode::Drain);
    EXPECT_EQ(sink->values(), std::vector<std::int64_t>{1});
    EXPECT_FALSE(node->canConfigure("In"));
}

TEST_F(GraphBuilding, AnInputThatWasMadeAnewIsStillConnectedForTheValidation) {
    graph.connect("Source", "Out", "A", "In");
    node->remakeInput("In");
    graph.validate();
}

class ScarceNode : public TestNode {
public:
    explicit ScarceNode(std::vector<std::string>& calls, const char* name, bool fails)
        : calls_(calls), name_(name), fails_(fails) {}
    ~ScarceNode() override { cleanup(); }

protected:
    std::vector<std::shared_ptr<IError>> allocateAdditionalResources(
        const std::shared_ptr<IResourcePool>&, bool) override {
        calls_.push_back("allocate " + name_);
        if (fails_) {
            throw RuntimeException("none left", __FILE__, __LINE__);
        }
        return {};
    }
    void freeAdditionalResources(bool) override { calls_.push_back("free " + name_); }

private:
    std::vector<std::string>& calls_;
    std::string name_;
    bool fails_;
};

TEST(GraphResources, AreAllocatedConsumersFirstAndAFailureUndoesAll) {
    std::vector<std::string> calls;
    Graph graph;
    graph.addNode("First", std::make_shared<ScarceNode>(calls, "first", true));
    graph.addNode("Second", std::make_shared<ScarceNode>(calls, "second", false));
    graph.connect("First", "Out", "Second", "In");
    const AllocationFailure failure = graph.allocateResources();
    EXPECT_EQ(failure.node, "First");
    ASSERT_EQ(failure.errors.size(), 1U);
    EXPECT_EQ(failure.errors[0]->getDescription(), "none left");
    EXPECT_EQ(calls, (std::vector<std::string>{"allocate second", "allocate first", "free first",
                                               "free second"}));
}

TEST(GraphStatistics, NameConnectionsAndCountTheirValues) {
    auto source = std::make_shared<TestSource>();
    Graph graph;
    buildChain(graph, source, {std::make_shared<TestNode>()});
    graph.start({});
    source->send(1);
    source->send(2);
    graph.stop(StopMode::Drain);
    const auto connection = graph.statistics().connections.at(0);
    EXPECT_EQ(connection.from, "Source.Out");
    EXPECT_EQ(connection.to, "A.In");
    EXPECT_EQ(connection.delivered, 2U);
    EXPECT_EQ(connection.queued, 0U);
    EXPECT_EQ(connection.capacity, 16U);
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
