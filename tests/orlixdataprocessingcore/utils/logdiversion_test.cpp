#include "orlixdataprocessingcore/utils/logdiversion.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace Orlix::DataProcessing::Utils {
namespace {

class LogDiversionTest : public testing::Test {
protected:
    void log(const char* text) const { createLogEntry(Severitiy::Warning, category_, "%s", text); }
    [[nodiscard]] std::vector<std::string> logged() const {
        std::vector<std::string> texts;
        for (const LogLine& line : capture_.getLines()) {
            texts.push_back(line.text.str());
        }
        return texts;
    }

    using Texts = std::vector<std::string>;

    const CatId category_ = getCatId("test.diversion");
    const LogCapture capture_;
    Texts taken_;
    const LogSink take_ = [this](const LogLine& line) { taken_.push_back(line.text.str()); };
};

TEST_F(LogDiversionTest, TakesTheLinesOfItsThreadWhileItLives) {
    {
        const LogDiversion diversion(take_);
        log("mine");
        std::thread([this] { log("another's"); }).join();
    }
    log("later");
    EXPECT_EQ(taken_, Texts{"mine"});
    EXPECT_EQ(logged(), (Texts{"another's", "later"}));
}

TEST_F(LogDiversionTest, LinesKeepSeverityAndCategory) {
    LogLine taken;
    const LogDiversion diversion([&](const LogLine& line) { taken = line; });
    log("mine");
    EXPECT_EQ(taken.severity, Severitiy::Warning);
    EXPECT_EQ(taken.category, "test.diversion");
}

TEST_F(LogDiversionTest, TheInnerOneTakesFirstAndItsOwnLinesGoToTheOuterOne) {
    const LogDiversion outer(take_);
    {
        const LogDiversion inner(
            [this](const LogLine& line) { log(("inner: " + line.text.str()).c_str()); });
        log("one");
    }
    log("two");
    EXPECT_EQ(taken_, (Texts{"inner: one", "two"}));
    EXPECT_EQ(logged(), Texts());
}

TEST_F(LogDiversionTest, LinesBelowTheLevelAreLeftOutAsEver) {
    setLogLevel(Severitiy::Error);
    const LogDiversion diversion(take_);
    log("quiet");
    EXPECT_EQ(taken_, Texts());
}

}  // namespace
}  // namespace Orlix::DataProcessing::Utils
