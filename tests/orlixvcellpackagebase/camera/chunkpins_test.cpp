// The list of chunk pins and the outputs made from it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "orlixdataprocessingcore/core/array.h"
#include "support/pinlistfixture.h"
#include "support/treesettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto exposure = "ExposureTime.Type=Float.ValueName=ChunkExposureTime";
constexpr auto gain =
    "Gain.Type=Float.SelectorName=GainSelector.SelectorValue=1.ValueName=ChunkGain";

template <typename T>
Utils::TypeInfo typeOf() {
    return Utils::TypeInfo::getTypeInfo<T>(true);
}

class CameraChunkPins : public PinListFixture {
protected:
    CameraChunkPins()
        : PinListFixture({"ChunkPinSelector", "ChunkPinSelectorMax", "ChunkPinValue", "ChunkPinAdd",
                          "ChunkPinRemove"}) {}
};

TEST_F(CameraChunkPins, ANewEntryIsEmptyAndIsNoError) {
    const Utils::LogCapture capture;
    execute("ChunkPinAdd");
    EXPECT_EQ(text("ChunkPinValue"), "");
    EXPECT_EQ(number("ChunkPinSelector"), 0);
    EXPECT_EQ(maximum("ChunkPinSelector"), 0);
    EXPECT_TRUE(isAvailable("ChunkPinRemove"));
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    execute("ChunkPinAdd");
    EXPECT_EQ(number("ChunkPinSelector"), 1);
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(CameraChunkPins, AnEmptyTextLeavesTheEntryAsItWas) {
    add(exposure);
    setText("ChunkPinValue", "");
    EXPECT_EQ(text("ChunkPinValue"), exposure);
}

TEST_F(CameraChunkPins, AValidTextMakesAnOutput) {
    const Utils::LogCapture capture;
    add(exposure);
    EXPECT_THAT(outputs(), ElementsAre("Image", "ExposureTime"));
    const auto output = node().getOutputDescriptors().at(1);
    EXPECT_EQ(output.description, "A chunk data pin.");
    EXPECT_EQ(output.type, typeOf<Core::Float>());
    EXPECT_TRUE(output.optional);
    EXPECT_EQ(output.maxJobCount, Core::unlimitedJobs);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("6 Camera: Add camera chunk data output: ExposureTime of type Float"));
}

TEST_F(CameraChunkPins, WritingTheSameTextAgainChangesNothing) {
    add(exposure);
    const SettingsChanges changes(node());
    setText("ChunkPinValue", exposure);
    EXPECT_EQ(changes.count(), 0);
    EXPECT_THAT(outputs(), ElementsAre("Image", "ExposureTime"));
}

TEST_F(CameraChunkPins, AnotherNameReplacesThePinInPlace) {
    add(exposure);
    setText("ChunkPinValue", gain);
    EXPECT_EQ(text("ChunkPinValue"), gain);
    EXPECT_THAT(outputs(), ElementsAre("Image", "Gain"));
}

TEST_F(CameraChunkPins, SeveralValuesMakeAnArray) {
    add("B.Type=Boolean.ValueName=X.ValueName=Y");
    add("F.Type=Float.ValueName=X.ValueName=Y");
    add("I.Type=Integer.ValueName=X.ValueName=Y.ValueName=Z");
    add("S.Type=String.ValueName=X.ValueName=Y");
    const auto descriptors = node().getOutputDescriptors();
    ASSERT_EQ(descriptors.size(), 5U);
    EXPECT_EQ(descriptors[1].type, typeOf<Core::Array<Core::Boolean>>());
    EXPECT_EQ(descriptors[2].type, typeOf<Core::Array<Core::Float>>());
    EXPECT_EQ(descriptors[3].type, typeOf<Core::Array<Core::Integer>>());
    EXPECT_EQ(descriptors[4].type, typeOf<Core::Array<Core::String>>());
}

TEST_F(CameraChunkPins, APinCalledImageIsRefusedByTheRebuild) {
    execute("ChunkPinAdd");
    const auto store = std::make_shared<TreeSettings>();
    store->setTexts("ChunkPinConfigurations", {"Image.Type=Integer.ValueName=X", exposure});
    const Utils::LogCapture capture;
    node().loadSettings(store);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("6 Camera: Add camera chunk data output: ExposureTime of type Float",
                            "4 Camera: Duplicate name 'Image' as pin."));
    EXPECT_THAT(outputs(), ElementsAre("Image", "ExposureTime"));
}

TEST_F(CameraChunkPins, ATextWithTheNameOfAnOutputIsIgnored) {
    execute("ChunkPinAdd");
    setText("ChunkPinValue", "Image.Type=Integer.ValueName=X");
    EXPECT_EQ(text("ChunkPinValue"), "");
}

TEST_F(CameraChunkPins, APinWithoutAValueNameGetsNoOutput) {
    const Utils::LogCapture capture;
    add("A.Type=Integer");
    EXPECT_EQ(text("ChunkPinValue"), "A.Type=Integer");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera: Unable to create output A of type Integer"));
}

TEST_F(CameraChunkPins, ABadPropertyOfADeclaredPinIsStoredAndReportedTwice) {
    const Utils::LogCapture capture;
    add("A.Type=Integer.EventName=X");
    EXPECT_EQ(text("ChunkPinValue"), "A.Type=Integer.EventName=X");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    const std::string line =
        "3 Camera: (0,0): Error : Pin property 'EventName' cannot be combined with pin mapping "
        "type 'ChunkData'.";
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(line, line, "4 Camera: Unable to create output A of type Integer"));
}

// The property is there by then, without a value.
TEST_F(CameraChunkPins, AValueNameThatIsNoNameMakesNoPin) {
    const Utils::LogCapture capture;
    add("A.Type=Float.ValueName=1X");
    EXPECT_EQ(text("ChunkPinValue"), "A.Type=Float.ValueName=1X");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(getLines(capture, category),
                testing::Contains("4 Camera: Unable to create output A of type Float"));
}

TEST_F(CameraChunkPins, ATextThatDeclaresNothingIsDropped) {
    execute("ChunkPinAdd");
    const Utils::LogCapture capture;
    setText("ChunkPinValue", "A.Type=integer");
    EXPECT_EQ(text("ChunkPinValue"), "");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera: (0,0): Error : Pin type 'integer' is not valid"));
}

TEST_F(CameraChunkPins, ASingleBadEntryEndsTheReadingOfAllLaterOnesUntilItIsRemoved) {
    const auto store = std::make_shared<TreeSettings>();
    store->setTexts("ChunkPinConfigurations", {exposure, "A:", gain});
    const Utils::LogCapture capture;
    node().loadSettings(store);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera: (1,0): Error : Unexpected content. Expected dot.",
                            "4 Camera: Unable to create output ExposureTime of type Float"));
    setNumber("ChunkPinSelector", 1);
    execute("ChunkPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "ExposureTime", "Gain"));
}

TEST_F(CameraChunkPins, AnEntryThatBeginsWithADotContinuesThePinBeforeIt) {
    const auto store = std::make_shared<TreeSettings>();
    store->setTexts("ChunkPinConfigurations", {"A.Type=Integer", ".ValueName=X"});
    node().loadSettings(store);
    EXPECT_THAT(outputs(), ElementsAre("Image", "A"));
}

TEST_F(CameraChunkPins, AValueThatIsGivenTwiceFailsTheSetter) {
    add(exposure);
    EXPECT_EQ(getFailure<std::runtime_error>(
                  [&] { node().setChunkPinValue("A.Type=Float.ValueName=V.ValueName=V"); }),
              "Value 'V' cannot be applied multiple times.");
    EXPECT_EQ(text("ChunkPinValue"), exposure);
}

TEST_F(CameraChunkPins, ATextForARunningNodeIsDropped) {
    execute("ChunkPinAdd");
    startWithoutGrabbing();
    node().setChunkPinValue(exposure);
    EXPECT_EQ(node().getChunkPinValue(), "");
    node().stop();
}

TEST_F(CameraChunkPins, RemoveTakesTheOutputAndKeepsTheRest) {
    add(exposure);
    add(gain);
    setNumber("ChunkPinSelector", 0);
    execute("ChunkPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "Gain"));
    EXPECT_EQ(entry(0), gain);
    execute("ChunkPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    expectPortsOfAnEmptyList();
    EXPECT_EQ(static_cast<std::int64_t>(node().getChunkPinSelector()), -1);
}

TEST_F(CameraChunkPins, RemoveFromARunningNodeChangesNothingAndTellsObservers) {
    expectThatRemoveInARunOnlyTells(&Camera::executeChunkPinRemove, &Camera::getChunkPinValue,
                                    exposure);
}

TEST_F(CameraChunkPins, EveryChangeTellsObserversOnceWithTheLockFree) {
    const SettingsChanges changes(node());
    node().executeChunkPinAdd();
    node().setChunkPinValue(exposure);
    node().executeChunkPinRemove();
    EXPECT_EQ(changes.count(), 3);
    EXPECT_FALSE(changes.anyUnderLock());
}

TEST_F(CameraChunkPins, TheNameOfTheRepairsOutputIsKeptInTheListOrNotTakenWithTheRepairOn) {
    constexpr auto configuration = "ImageCorrupt.Type=Integer.ValueName=ChunkFrameID";
    const Utils::LogCapture capture;
    add(configuration);
    EXPECT_EQ(text("ChunkPinValue"), configuration);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera: Unable to create output ImageCorrupt of type Integer"));
    node().setFixCorruptImages(FixCorruptImages::On);
    add(configuration);
    EXPECT_EQ(text("ChunkPinValue"), "");
    EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
