// Chunk values of real frames on their pins.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/array.h"
#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixvcellpackagebase/camera.h"
#include "support/emulatedpool.h"
#include "support/recordingsink.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::Eq;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto category = "orlix.dataprocessing.vcell.Camera";

// What the jobs of a camera have for a pin: a value, an empty one, or no entry at all. The last two
// are the same to a sink.
class EntryWatch {
public:
    enum class Entry { None, Empty, Value };

    EntryWatch(Camera& camera, const char* pin)
        : pin_(pin),
          connection_(camera.getExecutionFinishingSignal()->connect(
                          [this](const auto& /*update*/, const Core::FinishedValues& finished) {
                              note(finished);
                          }),
                      true) {}

    [[nodiscard]] std::vector<Entry> entries() {
        const std::scoped_lock lock(mutex_);
        return entries_;
    }

private:
    void note(const Core::FinishedValues& finished) {
        const std::scoped_lock lock(mutex_);
        const auto found = finished.find(pin_);
        if (found == finished.end()) {
            entries_.push_back(Entry::None);
        } else {
            entries_.push_back(found->second->isValid() ? Entry::Value : Entry::Empty);
        }
    }

    const gcstring pin_;
    std::mutex mutex_;
    std::vector<Entry> entries_;
    Utils::ScopedConnection connection_;
};

MATCHER_P(AreAll, entry, "") {
    return testing::ExplainMatchResult(AllOf(testing::Not(IsEmpty()), Each(Eq(entry))), arg,
                                       result_listener);
}

using Entry = EntryWatch::Entry;

class CameraChunkValues : public testing::Test {
protected:
    // One pin, and all chunks of the camera switched on.
    void open(const char* pin, const std::string& configuration, const std::string& more = "") {
        camera.executeChunkPinAdd();
        camera.setChunkPinValue(configuration.c_str());
        camera.setStreamType(StreamType::CameraDevice);
        camera.setOFSStagedContent(("Width=64\nHeight=64\n" + more).c_str());
        camera.executeOFSCommit();
        ASSERT_THAT(camera.allocateResources(), IsEmpty());
        if (chunksOn) {
            switchChunksOn();
        }
        imageHandle = camera.attachOutputSink("Image", images);
        pinHandle = camera.attachOutputSink(pin, values);
    }
    void switchChunksOn() {
        GenApi::INodeMap& map = *camera.getNodeMapInfos().at(3).GetNodeMap();
        GenApi::CBooleanPtr(map.GetNode("ChunkModeActive"))->SetValue(true);
        const GenApi::CEnumerationPtr selector(map.GetNode("ChunkSelector"));
        GenApi::NodeList_t entries;
        selector->GetEntries(entries);
        for (auto* entry : entries) {
            selector->FromString(GenApi::CEnumEntryPtr(entry)->GetSymbolic());
            const GenApi::CBooleanPtr enable(map.GetNode("ChunkEnable"));
            if (GenApi::IsWritable(map.GetNode("ChunkEnable"))) {
                enable->SetValue(true);
            }
        }
    }
    // What the node logs while two frames are handed on.
    std::vector<std::string> linesOfTwoFrames() {
        const Utils::LogCapture capture;
        camera.start(Core::NodeArgumentCollection());
        images->waitForCount(2);
        camera.stop();
        return getLines(capture, category);
    }
    std::string missing(const std::string& pin) {
        return "5 Camera " + toText(&camera) + ": Failed to get chunk data value for \"" + pin +
               "\" pin.";
    }
    // The first value of the pin.
    Utils::Variant grab() {
        camera.start(Core::NodeArgumentCollection());
        values->waitForCount(1);
        camera.stop();
        return values->values().at(0);
    }

    bool chunksOn = true;
    EmulatedPool emulated;
    Camera camera{emulated.pool};
    const std::shared_ptr<RecordingSink> images = std::make_shared<RecordingSink>();
    const std::shared_ptr<RecordingSink> values = std::make_shared<RecordingSink>();
    std::shared_ptr<Core::IHandle> imageHandle;
    std::shared_ptr<Core::IHandle> pinHandle;
};

TEST_F(CameraChunkValues, AFloatTravelsInTheUpdateOfItsImage) {
    open("T", "T.Type=Float.ValueName=ChunkExposureTime", "ExposureTime=1234");
    const Utils::Variant value = grab();
    EXPECT_EQ(value.get<Core::Float>(true)->get(), 1234.0);
    EXPECT_EQ(values->updates().at(0), images->updates().at(0));
}

TEST_F(CameraChunkValues, AnInteger) {
    open("N", "N.Type=Integer.ValueName=ChunkFrameID");
    EXPECT_EQ(grab().get<Core::Integer>(true)->get(), 1);
}

TEST_F(CameraChunkValues, ABoolean) {
    open("B", "B.Type=Boolean.ValueName=ChunkTriggered");
    EXPECT_FALSE(grab().get<Core::Boolean>(true)->get());
}

TEST_F(CameraChunkValues, ABooleanThatIsTrue) {
    open("B", "B.Type=Boolean.ValueName=ChunkTriggered",
         "TriggerSelector=FrameStart\nTriggerMode=On\nTriggerSource=Software");
    camera.start(Core::NodeArgumentCollection());
    GenApi::INodeMap& map = *camera.getNodeMapInfos().at(3).GetNodeMap();
    GenApi::CCommandPtr(map.GetNode("TriggerSoftware"))->Execute();
    values->waitForCount(1);
    camera.stop();
    EXPECT_TRUE(values->values().at(0).get<Core::Boolean>(true)->get());
}

TEST_F(CameraChunkValues, AText) {
    open("S", "S.Type=String.ValueName=ChunkSceneName", "TestPattern=GreyDiagonalRamp");
    EXPECT_EQ(grab().get<Core::String>(true)->get(), "GreyDiagonalRamp");
}

TEST_F(CameraChunkValues, ASelectorValueThatThereIsNotCostsThePinItsEntryAndLogsALine) {
    EntryWatch watch(camera, "G");
    open("G",
         "G.Type=Float.SelectorName=ChunkGainSelector.SelectorValue=Nowhere.ValueName="
         "ChunkGain");
    const Utils::LogCapture capture;
    camera.start(Core::NodeArgumentCollection());
    images->waitForCount(2);
    camera.stop();
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
    EXPECT_THAT(getLines(capture, category),
                Contains("5 Camera " + toText(&camera) +
                         ": Failed to get chunk data value for \"G\" pin."));
}

TEST_F(CameraChunkValues, AMissingSelectorValueDoesTheSame) {
    EntryWatch watch(camera, "G");
    open("G", "G.Type=Float.SelectorName=ChunkGainSelector.ValueName=ChunkGain");
    const Utils::LogCapture capture;
    camera.start(Core::NodeArgumentCollection());
    images->waitForCount(1);
    camera.stop();
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
    EXPECT_THAT(getLines(capture, category),
                Contains("5 Camera " + toText(&camera) +
                         ": Failed to get chunk data value for \"G\" pin."));
}

// A bad text leaves the property behind it without a value; that of the pin is made all the same.
TEST_F(CameraChunkValues, ASelectorNameThatIsNoNameCostsThePinItsEntryAndLogsALine) {
    EntryWatch watch(camera, "A");
    const Utils::LogCapture capture;
    open("A", "A.Type=Float.SelectorValue=1.ValueName=X.SelectorName=1X");
    const std::string refused = "3 Camera: (0,0): Error : A pin name must not start with a digit.";
    EXPECT_THAT(getLines(capture, category),
                testing::IsSupersetOf(
                    {refused, refused,
                     std::string("6 Camera: Add camera chunk data output: A of type Float")}));
    EXPECT_THAT(linesOfTwoFrames(), AllOf(SizeIs(testing::Ge(2U)), Each(Eq(missing("A")))));
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
}

TEST_F(CameraChunkValues, AValueNameThatNoChunkHasIsAnEmptyValueWithoutALine) {
    EntryWatch watch(camera, "A");
    open("A", "A.Type=Float.ValueName=NoSuchChunk");
    EXPECT_THAT(linesOfTwoFrames(), IsEmpty());
    EXPECT_THAT(values->values(), IsEmpty());
    EXPECT_THAT(watch.entries(), AreAll(Entry::Empty));
}

TEST_F(CameraChunkValues, ANodeOfAnotherKindIsSkipped) {
    open("A", "A.Type=String.ValueName=ChunkSelector");
    EXPECT_THAT(linesOfTwoFrames(), IsEmpty());
    EXPECT_THAT(values->values(), IsEmpty());
}

TEST_F(CameraChunkValues, ANodeOfAnotherKindIsSkippedInAnArrayToo) {
    open("A", "A.Type=Integer.ValueName=ChunkFrameID.ValueName=ChunkSelector.ValueName=NoSuch");
    const Utils::Variant value = grab();
    const auto* array = value.get<Core::Array<Core::Integer>>(true);
    ASSERT_EQ(array->getSize(), 3U);
    EXPECT_EQ(array->at(0).get(), 1);
    EXPECT_EQ(array->at(1).get(), 0);
    EXPECT_EQ(array->at(2).get(), 0);
}

TEST_F(CameraChunkValues, ASelectorValueWithoutASelectorIsIgnored) {
    open("N", "N.Type=Integer.SelectorValue=Nowhere.ValueName=ChunkFrameID");
    EXPECT_EQ(grab().get<Core::Integer>(true)->get(), 1);
}

TEST_F(CameraChunkValues, NodesOfTwoKindsInOneArrayCostThePinItsEntry) {
    EntryWatch watch(camera, "A");
    open("A", "A.Type=Float.ValueName=ChunkExposureTime.ValueName=ChunkFrameID");
    EXPECT_THAT(linesOfTwoFrames(), AllOf(SizeIs(testing::Ge(2U)), Each(Eq(missing("A")))));
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
}

TEST_F(CameraChunkValues, APinThatFailsCostsTheOthersNothing) {
    EntryWatch watch(camera, "B");
    camera.executeChunkPinAdd();
    camera.setChunkPinValue("N.Type=Integer.ValueName=ChunkFrameID");
    open("B", "B.Type=Float.SelectorName=ChunkGainSelector.ValueName=ChunkGain");
    const auto numbers = std::make_shared<RecordingSink>();
    const auto handle = camera.attachOutputSink("N", numbers);
    camera.start(Core::NodeArgumentCollection());
    numbers->waitForCount(1);
    camera.stop();
    EXPECT_EQ(numbers->values()[0].get<Core::Integer>(true)->get(), 1);
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
}

TEST_F(CameraChunkValues, PinsThatShareASelectorHaveEachItsOwnValue) {
    camera.executeChunkPinAdd();
    camera.setChunkPinValue(
        "Blue.Type=Float.SelectorName=ChunkGainSelector.SelectorValue=Blue.ValueName=ChunkGain");
    open("Red",
         "Red.Type=Float.SelectorName=ChunkGainSelector.SelectorValue=Red.ValueName=ChunkGain",
         "GainSelector=Red\nGain=3\nGainSelector=Blue\nGain=6");
    const auto blue = std::make_shared<RecordingSink>();
    const auto handle = camera.attachOutputSink("Blue", blue);
    EXPECT_EQ(grab().get<Core::Float>(true)->get(), 3.0);
    EXPECT_EQ(blue->values().at(0).get<Core::Float>(true)->get(), 6.0);
}

TEST_F(CameraChunkValues, AFrameWithoutChunksLeavesThePinOut) {
    EntryWatch watch(camera, "T");
    chunksOn = false;
    open("T", "T.Type=Float.ValueName=ChunkExposureTime");
    camera.start(Core::NodeArgumentCollection());
    images->waitForCount(2);
    camera.stop();
    EXPECT_THAT(watch.entries(), AreAll(Entry::None));
}

TEST_F(CameraChunkValues, AnArrayHoldsTheLastValueFirstAndDefaultsBehindIt) {
    open("A", "A.Type=Integer.ValueName=ChunkTimestamp.ValueName=ChunkFrameID");
    const Utils::Variant value = grab();
    const auto* array = value.get<Core::Array<Core::Integer>>(true);
    ASSERT_EQ(array->getSize(), 2U);
    EXPECT_EQ(array->at(0).get(), 1);
    EXPECT_EQ(array->at(1).get(), 0);
}

TEST_F(CameraChunkValues, AChunkThatTheFrameLacksIsAValueWithAnError) {
    open("G", "G.Type=Float.ValueName=ChunkGain");
    GenApi::INodeMap& map = *camera.getNodeMapInfos().at(3).GetNodeMap();
    GenApi::CEnumerationPtr(map.GetNode("ChunkSelector"))->FromString("Gain");
    GenApi::CBooleanPtr(map.GetNode("ChunkEnable"))->SetValue(false);
    const Utils::Variant value = grab();
    const auto error = value.get<Core::Float>(true)->getError(false);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "InvalidValueError");
    EXPECT_EQ(error->getDescription(), "Failed to get chunk data value.");
}

TEST_F(CameraChunkValues, AChunkOfAnArrayThatTheFrameLacksIsAnElementWithAnError) {
    open("G", "G.Type=Float.ValueName=ChunkExposureTime.ValueName=ChunkGain");
    GenApi::INodeMap& map = *camera.getNodeMapInfos().at(3).GetNodeMap();
    GenApi::CEnumerationPtr(map.GetNode("ChunkSelector"))->FromString("Gain");
    GenApi::CBooleanPtr(map.GetNode("ChunkEnable"))->SetValue(false);
    const Utils::Variant value = grab();
    const auto* array = value.get<Core::Array<Core::Float>>(true);
    EXPECT_EQ(array->getError(false), nullptr);
    const auto error = array->at(0).getError(false);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->getName(), "InvalidValueError");
    EXPECT_EQ(error->getDescription(), "Failed to get chunk data value.");
    EXPECT_EQ(array->at(1).get(), 0.0);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
