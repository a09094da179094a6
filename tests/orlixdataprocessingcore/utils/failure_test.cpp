#include "orlixdataprocessingcore/utils/failure.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using namespace Orlix::DataProcessing::Core;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

CatId getCatIdNode() {
    static const CatId id = getCatId("test.Node");
    return id;
}

std::string addressOf(const void* object) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", object);
    return text;
}

// A node as its code uses the functions.
class Node {
public:
    LogSubject subject() const { return {"Test::Node", this, getCatIdNode()}; }

    static constexpr int line = __LINE__ + 1;  // of load
    void load() { logAndThrow<InvalidArgumentException>(subject(), "No settings passed.", "load"); }
    void parse(const char* text) {
        logAndThrow<RuntimeException>(subject(), text, "parse", MessageOrigin::RunTime);
    }
    template <typename Function>
    std::shared_ptr<IError> guard(Function function) {
        try {
            function();
        } catch (...) {
            logCaught(subject(), "loading.");
            return makeErrorOfCaught("Unknown exception.", "c:\\source\\node.cpp", 12);
        }
        return nullptr;
    }
};

TEST(LogAndThrow, WritesOneLineAndThrowsItsText) {
    LogCapture capture;
    Node node;
    const auto thrown =
        expectThrow<GenICam::InvalidArgumentException>([&] { node.load(); }, "No settings passed.");
    const auto lines = capture.getLines("test.Node");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Severitiy::Error);
    // No backslash is in the path, so it stays whole in both.
    const std::string path = "tests/orlixdataprocessingcore/utils/failure_test.cpp";
    EXPECT_EQ(thrown.sourceFile, path);
    EXPECT_EQ(lines[0].text.str(), "Node " + addressOf(&node) +
                                       ": Test::Node::load failed. Message: \"No settings "
                                       "passed.\" (" +
                                       path + ":" + std::to_string(Node::line) + ")");
}

TEST(LogAndThrow, ShowsATextOfTheRunTimeWithItsMark) {
    LogCapture capture;
    Node node;
    expectThrow<GenICam::RuntimeException>([&] { node.parse("100 %s wrong"); }, "100 %s wrong");
    ASSERT_EQ(capture.getLines().size(), 1U);
    const std::string text = capture.getLines()[0].text.str();
    EXPECT_NE(text.find("Test::Node::parse failed. Message: \"&100 %s wrong\" ("),
              std::string::npos)
        << text;
}

TEST(LogAndThrow, TakesAPlaceThatWasMadeEarlierAndCutsItsPath) {
    LogCapture capture;
    Node node;
    const CodePlace place("store", "c:\\source\\node.cpp", 12);
    const auto thrown = expectThrow<GenICam::RuntimeException>(
        [&] { logAndThrow<RuntimeException>(node.subject(), "No.", place); }, "No.");
    EXPECT_EQ(thrown.sourceFile, "node.cpp");
    ASSERT_EQ(capture.getLines().size(), 1U);
    EXPECT_EQ(
        capture.getLines()[0].text.str(),
        "Node " + addressOf(&node) + ": Test::Node::store failed. Message: \"No.\" (node.cpp:12)");
}

TEST(CatchLadder, ObjectWithoutAnAddressIsShownByItsNameAlone) {
    LogCapture capture;
    try {
        throw std::out_of_range("far out");
    } catch (...) {
        logCaught({"Node", nullptr, getCatIdNode()}, "loading");
    }
    ASSERT_EQ(capture.getLines().size(), 1U);
    EXPECT_EQ(capture.getLines()[0].text.str(),
              "Node: Exception caught while loading. Message: far out");
}

TEST(CutSourcePath, CutsAtTheLastBackslashOnly) {
    EXPECT_STREQ(cutSourcePath("c:\\a\\camera.cpp"), "camera.cpp");
    EXPECT_STREQ(cutSourcePath("src/plugins/camera.cpp"), "src/plugins/camera.cpp");
    EXPECT_STREQ(cutSourcePath("a\\"), "");
    EXPECT_STREQ(cutSourcePath(""), "");
}

TEST(CatchLadder, FirstLevelTakesGenICamExceptions) {
    LogCapture capture;
    Node node;
    const auto error = node.guard([] { throw GenICam::TimeoutException("Too late.", "f", 1); });
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "GenICamExceptionError");
    EXPECT_EQ(error->getDescription(), "Too late.");
    ASSERT_EQ(capture.getLines().size(), 1U);
    EXPECT_EQ(capture.getLines()[0].severity, Severitiy::Warning);
    EXPECT_EQ(capture.getLines()[0].text.str(),
              "Node " + addressOf(&node) + ": Exception caught while loading.. Message: Too late.");
}

TEST(CatchLadder, SecondLevelTakesStandardExceptions) {
    LogCapture capture;
    Node node;
    const auto error = node.guard([] { throw std::out_of_range("far out"); });
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "StdExceptionError");
    EXPECT_EQ(error->getDescription(), "far out");
    ASSERT_EQ(capture.getLines().size(), 1U);
    EXPECT_EQ(capture.getLines()[0].text.str(),
              "Node " + addressOf(&node) + ": Exception caught while loading.. Message: far out");
}

TEST(CatchLadder, ThirdLevelTakesEverythingElse) {
    LogCapture capture;
    Node node;
    const auto error = node.guard([] { throw 7; });
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "UnknownExceptionError");
    EXPECT_EQ(error->getDescription(), "Unknown exception.");
    const auto unknown = std::dynamic_pointer_cast<UnknownExceptionError>(error);
    ASSERT_NE(unknown, nullptr);
    EXPECT_EQ(unknown->getSourceFile(), "node.cpp");
    EXPECT_EQ(unknown->getSourceLine(), 12U);
    EXPECT_THROW(rethrowException(unknown->getException()), int);
    ASSERT_EQ(capture.getLines().size(), 1U);
    EXPECT_EQ(capture.getLines()[0].text.str(),
              "Node " + addressOf(&node) + ": Unknown exception caught while loading..");
}

}  // namespace
