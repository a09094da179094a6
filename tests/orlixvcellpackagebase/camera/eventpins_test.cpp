// The list of event pins and the outputs made from it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "support/pinlistfixture.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto end = "End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd";
constexpr auto start = "Start.Type=Integer.EventName=FrameStart.ValueName=EventFrameStart";

class CameraEventPins : public PinListFixture {
protected:
    CameraEventPins()
        : PinListFixture({"EventPinSelector", "EventPinSelectorMax", "EventPinConfiguration",
                          "EventPinAdd", "EventPinRemove"}) {}
};

TEST_F(CameraEventPins, ANewEntryIsNotYetConfigured) {
    execute("EventPinAdd");
    EXPECT_EQ(text("EventPinConfiguration"), "<not yet configured>");
    EXPECT_EQ(number("EventPinSelector"), 0);
    EXPECT_EQ(maximum("EventPinSelector"), 0);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    execute("EventPinAdd");
    EXPECT_EQ(number("EventPinSelector"), 1);
    EXPECT_EQ(maximum("EventPinSelector"), 1);
}

TEST_F(CameraEventPins, AValidTextMakesAnOutput) {
    const Utils::LogCapture capture;
    add(end);
    EXPECT_THAT(outputs(), ElementsAre("Image", "End"));
    const auto output = node().getOutputDescriptors().at(1);
    EXPECT_EQ(output.description, "A camera event.");
    EXPECT_EQ(output.type, Utils::TypeInfo::getTypeInfo<Core::Integer>(true));
    EXPECT_TRUE(output.optional);
    EXPECT_EQ(output.maxJobCount, Core::unlimitedJobs);
    EXPECT_NE(output.updateGroup, node().getOutputDescriptors().at(0).updateGroup);
    EXPECT_EQ(text("EventPinConfiguration"), end);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera: (0,0): Error : Expected valid name not found.",
                            "6 Camera: Add camera event output: End of type Integer"));
}

TEST_F(CameraEventPins, OutputsHaveTheDeclaredType) {
    add("A.Type=Boolean.EventName=E.ValueName=V");
    add("B.Type=Float.EventName=E.ValueName=V");
    add("C.Type=String.EventName=E.ValueName=V");
    const auto descriptors = node().getOutputDescriptors();
    EXPECT_EQ(descriptors.at(1).type, Utils::TypeInfo::getTypeInfo<Core::Boolean>(true));
    EXPECT_EQ(descriptors.at(2).type, Utils::TypeInfo::getTypeInfo<Core::Float>(true));
    EXPECT_EQ(descriptors.at(3).type, Utils::TypeInfo::getTypeInfo<Core::String>(true));
}

TEST_F(CameraEventPins, AnInvalidTextLeavesTheEntryAndLogsLineAndColumnZero) {
    execute("EventPinAdd");
    const Utils::LogCapture capture;
    setText("EventPinConfiguration", "A.Type=integer");
    EXPECT_EQ(text("EventPinConfiguration"), "<not yet configured>");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera: (0,0): Error : Pin type 'integer' is not valid"));
}

TEST_F(CameraEventPins, TextsThatSayTooLittleOrTooMuchAreLogged) {
    execute("EventPinAdd");
    const Utils::LogCapture capture;
    setText("EventPinConfiguration", "A.EventName=E");
    setText("EventPinConfiguration", "A.Type=Float B.Type=Float");
    setText("EventPinConfiguration", "A.Type=Float.EventName=E");
    setText("EventPinConfiguration", "A.Type=Float.EventName=E.ValueName=V.ValueName=W");
    EXPECT_EQ(text("EventPinConfiguration"), "<not yet configured>");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera: Wrong number of event configurations found:0",
                            "3 Camera: Wrong number of event configurations found:2",
                            "3 Camera: Incomplete event configuration found",
                            "3 Camera: Incomplete event configuration found"));
}

TEST_F(CameraEventPins, AValueThatIsGivenTwiceFailsTheSetter) {
    execute("EventPinAdd");
    EXPECT_EQ(
        getFailure<std::runtime_error>([&] {
            node().setEventPinConfiguration("A.Type=Float.EventName=E.ValueName=V.ValueName=V");
        }),
        "Value 'V' cannot be applied multiple times.");
    EXPECT_EQ(text("EventPinConfiguration"), "<not yet configured>");
}

TEST_F(CameraEventPins, ASecondTextForAnEntryWithAnOutputIsIgnored) {
    add(end);
    setText("EventPinConfiguration", start);
    EXPECT_EQ(text("EventPinConfiguration"), end);
    EXPECT_THAT(outputs(), ElementsAre("Image", "End"));
}

TEST_F(CameraEventPins, ANameThatAnotherEntryHasIsIgnored) {
    add(end);
    execute("EventPinAdd");
    setText("EventPinConfiguration", "End.Type=Float.EventName=E.ValueName=V");
    EXPECT_EQ(text("EventPinConfiguration"), "<not yet configured>");
    EXPECT_THAT(outputs(), ElementsAre("Image", "End"));
}

TEST_F(CameraEventPins, ANameOfAFixedOutputGetsNoOutputOfItsOwn) {
    execute("EventPinAdd");
    const Utils::LogCapture capture;
    setText("EventPinConfiguration", "Image.Type=Integer.EventName=E.ValueName=V");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(getLines(capture, category),
                testing::Contains("4 Camera: Unable to create output Image of type Integer"));
}

TEST_F(CameraEventPins, TheNameOfTheRepairsOutputIsTakenWhetherThatIsThereOrNot) {
    execute("EventPinAdd");
    const Utils::LogCapture capture;
    setText("EventPinConfiguration", "ImageCorrupt.Type=Integer.EventName=E.ValueName=V");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    EXPECT_THAT(
        getLines(capture, category),
        testing::Contains("4 Camera: Unable to create output ImageCorrupt of type Integer"));
    node().setFixCorruptImages(FixCorruptImages::On);
    EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));
    EXPECT_EQ(node().getOutputDescriptors().at(1).type,
              Utils::TypeInfo::getTypeInfo<Core::Boolean>(true));
}

TEST_F(CameraEventPins, TheOutputsOfTheNodeItselfAreNeverRemoved) {
    node().setFixCorruptImages(FixCorruptImages::On);
    add("Image.Type=Integer.EventName=E.ValueName=V");
    execute("EventPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));
    expectPortsOfAnEmptyList();
    add("ImageCorrupt.Type=Integer.EventName=E.ValueName=V");
    execute("EventPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "ImageCorrupt"));
    expectPortsOfAnEmptyList();
}

TEST_F(CameraEventPins, TheOutputOfAChunkPinOfTheSameNameIsLeftAlone) {
    execute("ChunkPinAdd");
    setText("ChunkPinValue", "X.Type=Float.ValueName=ChunkExposureTime");
    ASSERT_THAT(outputs(), ElementsAre("Image", "X"));
    add("X.Type=Integer.EventName=E.ValueName=V");
    execute("EventPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "X"));
    add("X.Type=Integer.EventName=E.ValueName=V");
    execute("ChunkPinRemove");
    setText("EventPinConfiguration", "X.Type=Integer.EventName=E.ValueName=W");
    EXPECT_THAT(outputs(), ElementsAre("Image", "X"));
    EXPECT_EQ(node().getOutputDescriptors().at(1).type,
              Utils::TypeInfo::getTypeInfo<Core::Integer>(true));
}

TEST_F(CameraEventPins, AnEntryWhoseNameIsTakenByTheNodeMayGetAnotherText) {
    const char* const second = "ImageCorrupt.Type=Integer.EventName=E.ValueName=W";
    add("ImageCorrupt.Type=Integer.EventName=E.ValueName=V");
    setText("EventPinConfiguration", second);
    EXPECT_EQ(text("EventPinConfiguration"), second);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
}

TEST_F(CameraEventPins, ATextForARunningNodeIsStoredWithoutAnOutput) {
    execute("EventPinAdd");
    startWithoutGrabbing();
    node().setEventPinConfiguration(end);
    EXPECT_EQ(node().getEventPinConfiguration(), end);
    EXPECT_THAT(outputs(), ElementsAre("Image"));
    node().stop();
}

TEST_F(CameraEventPins, OnlyAddAndRemoveTellObserversWithTheLockFree) {
    const SettingsChanges changes(node());
    node().executeEventPinAdd();
    EXPECT_EQ(changes.count(), 1);
    node().setEventPinConfiguration(end);
    EXPECT_EQ(changes.count(), 1);
    node().executeEventPinRemove();
    EXPECT_EQ(changes.count(), 2);
    EXPECT_FALSE(changes.anyUnderLock());
}

TEST_F(CameraEventPins, RemoveTakesTheOutputAndMovesLaterEntriesDown) {
    add(end);
    add(start);
    setNumber("EventPinSelector", 0);
    execute("EventPinRemove");
    EXPECT_THAT(outputs(), ElementsAre("Image", "Start"));
    EXPECT_EQ(entry(0), start);
    EXPECT_EQ(maximum("EventPinSelector"), 0);
    add(end);
    EXPECT_THAT(outputs(), testing::UnorderedElementsAre("Image", "Start", "End"));
}

TEST_F(CameraEventPins, RemovingTheLastEntryMakesThePortsUnavailable) {
    execute("EventPinAdd");
    expectEntryPorts(true);
    execute("EventPinRemove");
    expectPortsOfAnEmptyList();
    EXPECT_EQ(static_cast<std::int64_t>(node().getEventPinSelector()), -1);
}

TEST_F(CameraEventPins, RemoveFromARunningNodeChangesNothingAndTellsObservers) {
    expectThatRemoveInARunOnlyTells(&Camera::executeEventPinRemove,
                                    &Camera::getEventPinConfiguration, end);
}

class CameraLostOutputs : public ScriptedCamera {};

TEST_F(CameraLostOutputs, AnEventPinWhoseOutputIsGoneIsRemovedWithALine) {
    camera().executeEventPinAdd();
    camera().setEventPinConfiguration(end);
    camera().removeOutput("End");
    const Utils::LogCapture capture;
    camera().executeEventPinRemove();
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera: Unable to remove output \"End\"."));
    EXPECT_FALSE(isShown("EventPinSelector"));
}

// With the second pin the first is listed once more, and has no output to be removed then.
TEST_F(CameraLostOutputs, AllOutputsOfEventPinsCanBeRemovedAtOnce) {
    for (const char* text :
         {end, "Start.Type=Integer.EventName=FrameStart.ValueName=EventFrameStart"}) {
        camera().executeEventPinAdd();
        camera().setEventPinConfiguration(text);
    }
    EXPECT_THAT(camera().getOutputDescriptors(), testing::SizeIs(3));
    const Utils::LogCapture capture;
    camera().removeEventOutputs();
    EXPECT_THAT(camera().getOutputDescriptors(), testing::SizeIs(1));
    EXPECT_THAT(getLines(capture, category), ElementsAre("4 Camera: Unable to remove pin End"));
    camera().removeEventOutputs();
    EXPECT_THAT(getLines(capture, category), testing::SizeIs(1));
}

TEST_F(CameraLostOutputs, OnlyThoseOfEventPinsAreRemoved) {
    camera().executeChunkPinAdd();
    camera().setChunkPinValue("X.Type=Float.ValueName=ChunkExposureTime");
    for (const char* text :
         {"X.Type=Integer.EventName=E.ValueName=V", "Image.Type=Integer.EventName=E.ValueName=V"}) {
        camera().executeEventPinAdd();
        camera().setEventPinConfiguration(text);
    }
    camera().removeEventOutputs();
    EXPECT_THAT(camera().getOutputDescriptors(), testing::SizeIs(2));
}

TEST_F(CameraLostOutputs, AChunkPinWhoseOutputIsGoneIsRemovedWithALine) {
    camera().executeChunkPinAdd();
    camera().setChunkPinValue("Frame.Type=Integer.ValueName=ChunkFrameID");
    camera().removeOutput("Frame");
    const Utils::LogCapture capture;
    camera().executeChunkPinRemove();
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera: Unable to remove chunk data pin Frame"));
    EXPECT_FALSE(isShown("ChunkPinSelector"));
}

TEST_F(CameraEventPins, ASelectorBeyondTheListThrowsWhereAChunkPinIsEmpty) {
    EXPECT_EQ(getFailure<std::out_of_range>(
                  [&] { static_cast<void>(node().getEventPinConfiguration()); }),
              "invalid vector subscript");
    EXPECT_EQ(getFailure<std::out_of_range>([&] { node().setEventPinConfiguration(end); }),
              "invalid vector subscript");
    EXPECT_EQ(node().getChunkPinValue(), "");
    EXPECT_THAT(outputs(), ElementsAre("Image"));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
