#include "orlixdataprocessingcore/utils/log.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Orlix::DataProcessing::Utils;

TEST(Log, ALineHasItsSeverityCategoryAndText) {
    LogCapture capture;
    const CatId category = getCatId("test.log.Line");
    createLogEntry(Severitiy::Information, category, "%s has %i of %.1f", "it", 3, 0.5);
    const auto lines = capture.getLines("test.log.Line");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Severitiy::Information);
    EXPECT_EQ(lines[0].category, "test.log.Line");
    EXPECT_EQ(lines[0].text, "it has 3 of 0.5");
}

TEST(Log, SeveritiesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(Severitiy::Error), 3);
    EXPECT_EQ(static_cast<int>(Severitiy::Warning), 4);
    EXPECT_EQ(static_cast<int>(Severitiy::Information), 5);
    EXPECT_EQ(static_cast<int>(Severitiy::Debug), 6);
    EXPECT_EQ(static_cast<int>(Severitiy::Trace), 7);
}

TEST(Log, OneNameHasOneHandle) {
    EXPECT_EQ(getCatId("test.log.Same"), getCatId("test.log.Same"));
    EXPECT_NE(getCatId("test.log.Same"), getCatId("test.log.Other"));
}

TEST(Log, LongLinesAreKeptWhole) {
    LogCapture capture;
    const std::string text(5000, 'x');
    createLogEntry(Severitiy::Error, getCatId("test.log.Long"), "<%s>", text.c_str());
    const auto lines = capture.getLines("test.log.Long");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text.str(), "<" + text + ">");
}

TEST(Log, LinesBehindTheLevelAreLeftOut) {
    std::vector<std::string> texts;
    setLogSink([&](const LogLine& line) { texts.push_back(line.text.str()); });
    const CatId category = getCatId("test.log.Level");
    EXPECT_EQ(getLogLevel(), Severitiy::Warning);
    createLogEntry(Severitiy::Information, category, "left out");
    createLogEntry(Severitiy::Warning, category, "warning");
    setLogLevel(Severitiy::Error);
    createLogEntry(Severitiy::Warning, category, "left out");
    createLogEntry(Severitiy::Error, category, "error");
    setLogLevel(Severitiy::Warning);
    setLogSink(nullptr);
    EXPECT_EQ(texts, (std::vector<std::string>{"warning", "error"}));
}

TEST(Log, LinesGoToStderrWithoutASink) {
    testing::internal::CaptureStderr();
    createLogEntry(Severitiy::Warning, getCatId("test.log.Stderr"), "to be seen");
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("to be seen"), std::string::npos) << text;
    EXPECT_NE(text.find("test.log.Stderr"), std::string::npos) << text;
}

TEST(Log, CapturesNest) {
    LogCapture outer;
    {
        LogCapture inner;
        createLogEntry(Severitiy::Trace, getCatId("test.log.Nest"), "inner");
        EXPECT_EQ(inner.getLines().size(), 1U);
    }
    createLogEntry(Severitiy::Trace, getCatId("test.log.Nest"), "outer");
    ASSERT_EQ(outer.getLines().size(), 1U);
    outer.clear();
    EXPECT_TRUE(outer.getLines().empty());
}

TEST(Log, ThreadsLogAtOnce) {
    LogCapture capture;
    const auto logMany = [] {
        for (int i = 0; i < 200; ++i) {
            createLogEntry(Severitiy::Debug, getCatId("test.log.Threads"), "line %i", i);
        }
    };
    std::thread first(logMany);
    std::thread second(logMany);
    first.join();
    second.join();
    EXPECT_EQ(capture.getLines("test.log.Threads").size(), 400U);
}

TEST(Log, ASinkMayLogItself) {
    int count = 0;
    setLogSink([&](const LogLine&) {
        if (++count == 1) {
            createLogEntry(Severitiy::Error, getCatId("test.log.Sink"), "from the sink");
        }
    });
    createLogEntry(Severitiy::Error, getCatId("test.log.Sink"), "first");
    setLogSink(nullptr);
    EXPECT_EQ(count, 2);
}

}  // namespace
