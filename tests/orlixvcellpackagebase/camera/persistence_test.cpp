// How Camera lives in a recipe.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "support/camerafixture.h"
#include "support/treesettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr auto end = "End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd";
constexpr auto exposure = "ExposureTime.Type=Float.ValueName=ChunkExposureTime";

class CameraSettings : public CameraFixture {
protected:
    std::shared_ptr<TreeSettings> save() {
        auto target = std::make_shared<TreeSettings>();
        node().saveSettings(target);
        return target;
    }
    void stage(StreamType type, const char* content) {
        node().setStreamType(type);
        node().setOFSStagedContent(content);
        node().executeOFSCommit();
    }

    const std::shared_ptr<TreeSettings> store = std::make_shared<TreeSettings>();
};

TEST_F(CameraSettings, NullStoreIsRefusedWithALine) {
    static_cast<void>(node());
    const Utils::LogCapture capture;
    using E = GenICam::InvalidArgumentException;
    EXPECT_EQ(getFailure<E>([this] { node().saveSettings(nullptr); }), "No settings passed.");
    EXPECT_EQ(getFailure<E>([this] { node().loadSettings(nullptr); }), "No settings passed.");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(StartsWith(failureLine("saveSettings", "No settings passed.")),
                            StartsWith(failureLine("loadSettings", "No settings passed."))));
}

TEST_F(CameraSettings, ARunningNodeIsNeitherLoadedNorSaved) {
    node().setActiveAssignmentProperties(makeInfo({{"ModelName", "M"}}));
    startWithoutGrabbing();
    const Utils::LogCapture capture;
    using E = GenICam::RuntimeException;
    EXPECT_EQ(getFailure<E>([&] { node().saveSettings(store); }),
              "vCell must not be running to save.");
    EXPECT_EQ(getFailure<E>([&] { node().loadSettings(store); }),
              "vCell must not be running to load.");
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(StartsWith(failureLine("saveSettings", "vCell must not be running to save.")),
                    StartsWith(failureLine("loadSettings", "vCell must not be running to load."))));
    EXPECT_FALSE(node().getActiveAssignmentProperties().IsSubset(makeInfo({{"ModelName", "N"}})));
    EXPECT_TRUE(node().getActiveAssignmentProperties().IsSubset(makeInfo({{"ModelName", "M"}})));
    node().stop();
}

TEST_F(CameraSettings, AFreshNodeSavesItsTwoModesOnly) {
    const auto saved = save();
    EXPECT_THAT(saved->keys(), ElementsAre("AcquisitionMode", "FixCorruptImages"));
    EXPECT_EQ(saved->getInteger(TreeSettings::path("AcquisitionMode")), 1);
    EXPECT_EQ(saved->getInteger(TreeSettings::path("FixCorruptImages")), 1);
}

TEST_F(CameraSettings, KeysAreSavedInTheirOrder) {
    node().setActiveAssignmentProperties(makeInfo({{"ModelName", "M"}, {"DeviceClass", "C"}}));
    execute("EventPinAdd");
    setText("EventPinConfiguration", end);
    execute("ChunkPinAdd");
    setText("ChunkPinValue", exposure);
    node().setAcquisitionMode(AcquisitionMode::SingleFrame);
    node().setFixCorruptImages(FixCorruptImages::On);
    stage(StreamType::CameraDevice, "Width=640");
    stage(StreamType::CameraInstance, "MaxNumBuffer=3");

    const auto saved = save();
    EXPECT_THAT(saved->keys(),
                ElementsAre("DeviceProperties", "EventConfiguration", "ChunkPinConfigurations",
                            "AcquisitionMode", "FixCorruptImages", "FeatureStreams"));
    EXPECT_THAT(saved->keys("DeviceProperties"), ElementsAre("DeviceClass", "ModelName"));
    EXPECT_EQ(saved->getString(TreeSettings::path("DeviceProperties", gcstring("ModelName"))), "M");
    EXPECT_THAT(saved->texts("EventConfiguration"), ElementsAre(end));
    EXPECT_THAT(saved->texts("ChunkPinConfigurations"), ElementsAre(exposure));
    EXPECT_EQ(saved->getInteger(TreeSettings::path("AcquisitionMode")), 0);
    EXPECT_EQ(saved->getInteger(TreeSettings::path("FixCorruptImages")), 0);
    EXPECT_THAT(saved->keys("FeatureStreams"), ElementsAre("@CameraInstance", "@CameraDevice"));
    EXPECT_EQ(saved->getString(TreeSettings::path("FeatureStreams", gcstring("@CameraDevice"))),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nWidth\t640\n");
}

// Whatever the pins are called: what a node has saved, another one loads.
TEST_F(CameraSettings, APinThatIsNamedLikeTheRepairsOutputIsSavedAndLoaded) {
    constexpr auto corruptEvent = "ImageCorrupt.Type=Integer.EventName=E.ValueName=V";
    constexpr auto corruptChunk = "ImageCorrupt.Type=Float.ValueName=ChunkGain";
    node().setFixCorruptImages(FixCorruptImages::On);
    execute("EventPinAdd");
    setText("EventPinConfiguration", corruptEvent);
    const auto saved = save();
    saved->setTexts("ChunkPinConfigurations", {corruptChunk});
    for (int round = 0; round < 2; ++round) {
        node().loadSettings(saved);
        EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));
        EXPECT_EQ(node().getFixCorruptImages(), FixCorruptImages::On);
        EXPECT_THAT(save()->texts("EventConfiguration"), ElementsAre(corruptEvent));
        EXPECT_THAT(save()->texts("ChunkPinConfigurations"), ElementsAre(corruptChunk));
    }
    node().setFixCorruptImages(FixCorruptImages::Off);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
}

TEST_F(CameraSettings, AModeThatNoModeCanHoldStaysAWrongOneAndTheRestIsLoaded) {
    store->setTexts("ChunkPinConfigurations", {exposure});
    store->setInteger(TreeSettings::path("AcquisitionMode"), (std::int64_t{1} << 32) + 1);
    store->setInteger(TreeSettings::path("FixCorruptImages"), -(std::int64_t{1} << 32));
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    node().loadSettings(store);
    EXPECT_EQ(node().getAcquisitionMode(), static_cast<AcquisitionMode>(INT32_MAX));
    EXPECT_EQ(node().getFixCorruptImages(), static_cast<FixCorruptImages>(INT32_MIN));
    EXPECT_THAT(outputs(), ElementsAre("Image", "ExposureTime"));
    EXPECT_EQ(maximum("ChunkPinSelector"), 0);
    EXPECT_TRUE(isAvailable("ChunkPinValue"));
    EXPECT_EQ(changes, 3);  // of the two modes, and of the load
    const Utils::LogCapture capture;
    node().start(Orlix::DataProcessing::Core::NodeArgumentCollection());
    node().stop();
    EXPECT_THAT(getLines(capture, category), ElementsAre("3 Camera " + toText(&node()) +
                                                         ": Couldn't determine acquisition mode."));
}

TEST_F(CameraSettings, AStoreWithoutAnyKeyGivesTheDefaults) {
    node().setActiveAssignmentProperties(makeInfo({{"ModelName", "M"}}));
    execute("EventPinAdd");
    execute("ChunkPinAdd");
    node().setAcquisitionMode(AcquisitionMode::SingleFrame);
    node().setFixCorruptImages(FixCorruptImages::On);
    stage(StreamType::CameraDevice, "Width=640");
    EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));

    node().loadSettings(store);
    EXPECT_THAT(save()->keys(), ElementsAre("AcquisitionMode", "FixCorruptImages"));
    EXPECT_EQ(node().getAcquisitionMode(), AcquisitionMode::Continuous);
    EXPECT_EQ(node().getFixCorruptImages(), FixCorruptImages::Off);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_EQ(node().getOFSStagedContent(), "");
    EXPECT_FALSE(isAvailable("EventPinSelector"));
    EXPECT_FALSE(isAvailable("ChunkPinSelector"));
    // Load never makes these unavailable.
    EXPECT_TRUE(isAvailable("DevicePropertySelector"));
}

TEST_F(CameraSettings, EntriesThatAreNotYetConfiguredAreLeftOutOfAnArrayThatMayBeEmpty) {
    execute("EventPinAdd");
    execute("EventPinAdd");
    const auto saved = save();
    EXPECT_THAT(saved->texts("EventConfiguration"), IsEmpty());
    node().loadSettings(saved);
    EXPECT_FALSE(isAvailable("EventPinSelector"));
    execute("EventPinAdd");
    setText("EventPinConfiguration", end);
    execute("EventPinAdd");
    EXPECT_THAT(save()->texts("EventConfiguration"), ElementsAre(end));
}

TEST_F(CameraSettings, ChunkEntriesKeepTheirOrderAlsoEmptyOnes) {
    store->setTexts("ChunkPinConfigurations", {"B.Type=Float.ValueName=Y", "", exposure});
    node().loadSettings(store);
    EXPECT_THAT(save()->texts("ChunkPinConfigurations"),
                ElementsAre("B.Type=Float.ValueName=Y", "", exposure));
    EXPECT_THAT(outputs(), ElementsAre("Image", "B", "ExposureTime"));
    EXPECT_EQ(number("ChunkPinSelector"), 0);
    EXPECT_EQ(maximum("ChunkPinSelector"), 2);
}

TEST_F(CameraSettings, PropertiesKeepTheOrderOfTheStoreAndAnyKey) {
    const auto section = store->createSection(TreeSettings::path("DeviceProperties"));
    section->setString(TreeSettings::path("Z"), "1");
    section->setString(TreeSettings::path(""), "2");
    section->setString(TreeSettings::path("a.b[1]"), "3");
    node().loadSettings(store);
    EXPECT_EQ(text("DevicePropertyKey"), "Z");
    EXPECT_EQ(maximum("DevicePropertySelector"), 2);
    EXPECT_THAT(save()->keys("DeviceProperties"), ElementsAre("Z", "", "a.b[1]"));
}

TEST_F(CameraSettings, OfTwoPropertiesWithOneKeyTheLaterValueStays) {
    for (const char* value : {"1", "2"}) {
        execute("DevicePropertyAdd");
        node().setDevicePropertySelector(
            static_cast<std::uint64_t>(maximum("DevicePropertySelector")));
        node().setDevicePropertyKey("A");
        node().setDevicePropertyValue(value);
    }
    const auto saved = save();
    EXPECT_THAT(saved->keys("DeviceProperties"), ElementsAre("A"));
    EXPECT_EQ(saved->getString(TreeSettings::path("DeviceProperties", gcstring("A"))), "2");
}

TEST_F(CameraSettings, ActiveSetsThatAreEmptyMakeAnEmptySection) {
    stage(StreamType::CameraDevice, "");
    const auto saved = save();
    EXPECT_THAT(saved->keys("FeatureStreams"), IsEmpty());
    EXPECT_TRUE(saved->contains(TreeSettings::path("FeatureStreams")));
}

TEST_F(CameraSettings, TheActivePortShowsTheSelectedSetAndNotTheOneLoadedLast) {
    const auto section = store->createSection(TreeSettings::path("FeatureStreams"));
    section->setString(TreeSettings::path("@CameraDevice"), "Width\t640\n");
    section->setString(TreeSettings::path("@Unknown"), "skipped");
    node().loadSettings(store);
    EXPECT_EQ(text("ConfigurationSetActive"), "");
    node().setStreamType(StreamType::CameraDevice);
    EXPECT_EQ(text("ConfigurationSetActive"), "Width\t640\n");
    EXPECT_THAT(save()->keys("FeatureStreams"), ElementsAre("@CameraDevice"));
}

TEST_F(CameraSettings, AModeThatIsNoneIsKept) {
    store->setInteger(TreeSettings::path("AcquisitionMode"), 5);
    store->setInteger(TreeSettings::path("FixCorruptImages"), 7);
    node().loadSettings(store);
    EXPECT_EQ(save()->getInteger(TreeSettings::path("AcquisitionMode")), 5);
    EXPECT_EQ(save()->getInteger(TreeSettings::path("FixCorruptImages")), 7);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    node().loadSettings(std::make_shared<TreeSettings>());
    EXPECT_EQ(save()->getInteger(TreeSettings::path("FixCorruptImages")), 1);
}

TEST_F(CameraSettings, AModeThatIsNoneShowsAtTheNextStart) {
    store->setInteger(TreeSettings::path("AcquisitionMode"), 5);
    node().loadSettings(store);
    const Utils::LogCapture capture;
    node().start(Orlix::DataProcessing::Core::NodeArgumentCollection());
    node().stop();
    EXPECT_THAT(getLines(capture, category), ElementsAre("3 Camera " + toText(&node()) +
                                                         ": Couldn't determine acquisition mode."));
}

// Of both kinds of pins, since both are parsed while the store is read.
TEST_F(CameraSettings, AValueNameThatIsGivenTwiceEndsTheLoadWithItsEntryInTheList) {
    constexpr auto bad = "A.Type=Float.EventName=E.ValueName=V.ValueName=V";
    constexpr auto badChunk = "A.Type=Float.ValueName=V.ValueName=V";
    const char* message = "Value 'V' cannot be applied multiple times.";
    store->setTexts("EventConfiguration", {end, bad});
    store->setInteger(TreeSettings::path("AcquisitionMode"), 0);
    EXPECT_EQ(getFailure<std::runtime_error>([&] { node().loadSettings(store); }), message);
    EXPECT_THAT(save()->texts("EventConfiguration"), ElementsAre(end, bad));
    EXPECT_EQ(node().getAcquisitionMode(), AcquisitionMode::Continuous);
    EXPECT_THAT(outputs(), ElementsAre("Image", "End"));

    const auto other = std::make_shared<TreeSettings>();
    other->setTexts("ChunkPinConfigurations", {exposure, badChunk});
    EXPECT_EQ(getFailure<std::runtime_error>([&] { node().loadSettings(other); }), message);
    EXPECT_THAT(save()->texts("ChunkPinConfigurations"), ElementsAre(exposure, badChunk));
    // Neither failure left the lock behind.
    EXPECT_FALSE(map().GetLock().IsOwned());
}

TEST_F(CameraSettings, SettersThatALoadCallsTellObserversUnderTheLockAndTheLoadWithItFree) {
    node().setAcquisitionMode(AcquisitionMode::SingleFrame);
    node().setFixCorruptImages(FixCorruptImages::On);
    std::vector<bool> owned;
    GenApi::CLock& lock = map().GetLock();
    const auto connection =
        node().getSettingsChangedSignal()->connect([&] { owned.push_back(lock.IsOwned()); });
    node().loadSettings(store);
    EXPECT_THAT(owned, ElementsAre(true, true, false));
}

TEST_F(CameraSettings, AFailureOfTheStoreLeavesWhatWasReadAndResetsTheRest) {
    node().setAcquisitionMode(AcquisitionMode::SingleFrame);
    store->createSection(TreeSettings::path("DeviceProperties"))
        ->setString(TreeSettings::path("A"), "1");
    store->setTexts("ChunkPinConfigurations", {exposure});
    store->setInteger(TreeSettings::path("ChunkPinConfigurations", std::size_t{0}), 3);
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { node().loadSettings(store); }),
              "a value of another kind");
    EXPECT_TRUE(node().getActiveAssignmentProperties().IsSubset(makeInfo({{"A", "1"}})));
    EXPECT_EQ(node().getAcquisitionMode(), AcquisitionMode::Continuous);
}

TEST_F(CameraSettings, OutputsOfFormerPinsStayWithoutTheirKeys) {
    execute("EventPinAdd");
    setText("EventPinConfiguration", end);
    execute("ChunkPinAdd");
    setText("ChunkPinValue", exposure);
    node().loadSettings(store);
    EXPECT_THAT(outputs(), ElementsAre("Image", "End", "ExposureTime"));
    store->setTexts("ChunkPinConfigurations", {});
    node().loadSettings(store);
    EXPECT_THAT(outputs(), ElementsAre("Image", "End"));
}

TEST_F(CameraSettings, LoadTellsObserversAtItsEndWithTheLockFree) {
    int changes = 0;
    bool owned = true;
    GenApi::CLock& lock = map().GetLock();
    const auto connection = node().getSettingsChangedSignal()->connect([&] {
        ++changes;
        owned = lock.IsOwned();
    });
    node().loadSettings(store);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(owned);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
