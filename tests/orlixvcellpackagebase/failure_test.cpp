#include "failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "gcbase/gcexception.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;

constexpr auto categoryName = "orlix.dataprocessing.test";

TEST(Failure, LogsOneLineAndThrowsTheSameText) {
    const int self = 0;
    const FailingNode node{"Camera", &self, Utils::getCatId(categoryName)};
    const CodePlace place{"Plugin::X::y", "src/x.cpp", 12};
    const Utils::LogCapture capture;
    try {
        logAndThrow<GenICam::RuntimeException>(node, "Something is 100%s wrong.", place);
    } catch (const GenICam::RuntimeException& exception) {
        EXPECT_STREQ(exception.GetDescription(), "Something is 100%s wrong.");
        EXPECT_STREQ(exception.GetSourceFileName(), "src/x.cpp");
        EXPECT_EQ(exception.GetSourceLine(), 12U);
    }
    EXPECT_THAT(getLines(capture, categoryName),
                ElementsAre("3 Camera " + toText(&self) +
                            ": Plugin::X::y failed. Message: \"Something is 100%s wrong.\" "
                            "(src/x.cpp:12)"));
}

TEST(Failure, SourcePathIsCutBehindItsLastBackslashOnly) {
    EXPECT_STREQ(getBaseName("a\\b\\camera.cpp"), "camera.cpp");
    EXPECT_STREQ(getBaseName("a/b/camera.cpp"), "a/b/camera.cpp");
    EXPECT_STREQ(getBaseName("camera.cpp"), "camera.cpp");
}

TEST(Failure, PlaceHasTheFunctionWithItsNamespaces) {
    const CodePlace place = ORLIX_HERE("Camera::loadSettings");
    EXPECT_STREQ(place.function, "Plugin::OrlixVCellPackageBase::Camera::loadSettings");
    EXPECT_STREQ(place.file, "tests/orlixvcellpackagebase/failure_test.cpp");
    EXPECT_EQ(place.line, __LINE__ - 3);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
