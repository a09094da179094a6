// Configuration sets without a device: staging, committing, clearing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "gcbase/gcexception.h"
#include "support/camerafixture.h"
#include "support/treesettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::StartsWith;

const std::string header = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

class CameraConfigurationSets : public CameraFixture {
protected:
    void select(const char* set) {
        GenApi::CEnumerationPtr(feature("ConfigurationSetSelector"))->FromString(set);
    }
    std::string active() { return text("ConfigurationSetActive"); }
    std::string staged() { return text("ConfigurationSetStaged"); }
};

TEST_F(CameraConfigurationSets, ALineIsCommittedWithHeaderAndTab) {
    setText("ConfigurationSetStaged", "Width=640");
    execute("ConfigurationSetCommit");
    EXPECT_EQ(active(), header + "Width\t640\n");
    EXPECT_EQ(staged(), "Width=640");
}

TEST_F(CameraConfigurationSets, AnInvalidTextFailsTheCommitAndChangesNothing) {
    node().setOFSStagedContent("Width=640");
    node().executeOFSCommit();
    node().setOFSStagedContent("Width");
    const Utils::LogCapture capture;
    const char* message =
        "The provided configuration set could not be committed because it is invalid.";
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { node().executeOFSCommit(); }), message);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(StartsWith(failureLine("modifyOFSStagedContent", message))));
    EXPECT_EQ(active(), header + "Width\t640\n");
    EXPECT_EQ(staged(), "Width");
}

TEST_F(CameraConfigurationSets, TheFailureReachesWhoeverWritesTheCommand) {
    setText("ConfigurationSetStaged", "?");
    EXPECT_THROW(execute("ConfigurationSetCommit"), GenICam::RuntimeException);
}

TEST_F(CameraConfigurationSets, ACommitWithoutAStagedEntryDoesNothing) {
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    execute("ConfigurationSetCommit");
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(active(), "No device listed");
}

TEST_F(CameraConfigurationSets, ASetThatWasLookedAtCountsAsStaged) {
    EXPECT_EQ(staged(), "");
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    execute("ConfigurationSetCommit");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(active(), "");
}

TEST_F(CameraConfigurationSets, ASwitchOfTheSelectorShowsTheTextsOfTheNewSet) {
    node().setOFSStagedContent("A=1");
    node().executeOFSCommit();
    select("StreamGrabber");
    EXPECT_EQ(active(), "");
    EXPECT_EQ(staged(), "");
    setText("ConfigurationSetStaged", "B=2");
    execute("ConfigurationSetCommit");
    EXPECT_EQ(active(), header + "B\t2\n");
    select("CameraInstance");
    EXPECT_EQ(active(), header + "A\t1\n");
    EXPECT_EQ(staged(), "A=1");
}

TEST_F(CameraConfigurationSets, FetchIsAvailableForTheCameraInstanceAloneWithoutADevice) {
    for (const char* set : {"StreamGrabber", "CameraDevice", "DeviceTransportLayer"}) {
        select(set);
        EXPECT_FALSE(isAvailable("ConfigurationSetFetch")) << set;
    }
    select("CameraInstance");
    EXPECT_TRUE(isAvailable("ConfigurationSetFetch"));
}

TEST_F(CameraConfigurationSets, FetchOfASetWithoutANodeMapLeavesTheStagedText) {
    node().setStreamType(StreamType::CameraDevice);
    node().setOFSStagedContent("A=1");
    node().executeOFSFetch();
    EXPECT_EQ(staged(), "A=1");
}

TEST_F(CameraConfigurationSets, AfterAClearACommitDoesNothingUntilTheTextIsTouched) {
    node().setOFSStagedContent("A=1");
    node().executeOFSCommit();
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    node().executeOFSClear();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(active(), "");
    node().executeOFSCommit();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(staged(), "");
    node().executeOFSCommit();
    EXPECT_EQ(changes, 2);
}

TEST_F(CameraConfigurationSets, TextsTellObserversWithTheLockFree) {
    bool owned = false;
    int changes = 0;
    GenApi::CLock& lock = map().GetLock();
    const auto connection = node().getSettingsChangedSignal()->connect([&] {
        ++changes;
        owned = owned || lock.IsOwned();
    });
    node().setOFSStagedContent("A=1");
    node().executeOFSCommit();
    node().executeOFSClear();
    EXPECT_EQ(changes, 3);
    EXPECT_FALSE(owned);
}

TEST_F(CameraConfigurationSets, AfterALoadTheReadOfTheStagedTextLetsACommitEmptyTheSet) {
    const auto store = std::make_shared<TreeSettings>();
    store->createSection(TreeSettings::path("FeatureStreams"))
        ->setString(TreeSettings::path("@CameraInstance"), "A\t1\n");
    node().loadSettings(store);
    EXPECT_EQ(active(), "A\t1\n");
    node().executeOFSCommit();
    EXPECT_EQ(active(), "A\t1\n");
    EXPECT_EQ(staged(), "");
    node().executeOFSCommit();
    EXPECT_EQ(active(), "");
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
