// Events of a device on their pins.
#include "support/cameraevents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "support/treesettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// How many jobs a node begins.
class Jobs {
public:
    explicit Jobs(Camera& node)
        : connection_(node.getExecutionStartedSignal()->connect(
                          [this](const std::shared_ptr<Core::IGraphUpdate>&) { ++count_; }),
                      true) {}
    [[nodiscard]] int count() const { return count_; }

private:
    std::atomic<int> count_ = 0;
    Utils::ScopedConnection connection_;
};

TEST_F(CameraEvents, AnIntegerIsAnUpdateOfItsOwn) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    const auto images = attach("Image");
    run();
    EXPECT_EQ(device->Get(CameraTest::Address::selector), 1);
    EXPECT_EQ(device->Get(CameraTest::Address::notification), 1);
    EXPECT_EQ(sendAndWait(*sink, 42).get<Core::Integer>(true)->get(), 42);
    EXPECT_EQ(sendAndWait(*sink, 43).get<Core::Integer>(true)->get(), 43);
    EXPECT_NE(sink->updates()[0], sink->updates()[1]);
    EXPECT_THAT(images->values(), IsEmpty());
    camera().stop();
}

TEST_F(CameraEvents, TheTypeIsThatOfTheNodeAndNotOfThePin) {
    add("F.Type=Integer.EventName=ExposureEnd.ValueName=EventHalf");
    const auto sink = attach("F");
    run();
    EXPECT_EQ(sendAndWait(*sink, 3).get<Core::Float>(true)->get(), 1.5);
    camera().stop();
}

TEST_F(CameraEvents, ABooleanAndAText) {
    add("B.Type=Boolean.EventName=ExposureEnd.ValueName=EventFlag");
    add("S.Type=String.EventName=ExposureEnd.ValueName=EventText");
    const auto flag = attach("B");
    const auto name = attach("S");
    run();
    EXPECT_TRUE(sendAndWait(*flag, 1).get<Core::Boolean>(true)->get());
    static_cast<void>(sendAndWait(*flag, 0x6968));
    name->waitForCount(2);
    EXPECT_EQ(name->values()[1].get<Core::String>(true)->get(), "hi");
    camera().stop();
}

TEST_F(CameraEvents, ANodeOfAnotherTypeSendsNothing) {
    add("K.Type=Integer.EventName=ExposureEnd.ValueName=EventKind");
    add("I.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto kind = attach("K");
    const auto sink = attach("I");
    run();
    static_cast<void>(sendAndWait(*sink, 7));
    static_cast<void>(sendAndWait(*sink, 7));
    EXPECT_THAT(kind->values(), IsEmpty());
    camera().stop();
}

TEST_F(CameraEvents, WithoutAnEventSelectorNothingHappensAndNothingIsReported) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    const Utils::LogCapture capture;
    allocate();
    start();
    device->SendEvent(CameraTest::exposureEndEvent, 1);
    camera().stop();
    destroyCamera();  // waits for the event thread
    EXPECT_THAT(sink->values(), IsEmpty());
    EXPECT_THAT(getLines(capture, category), testing::SizeIs(1));
}

TEST_F(CameraEvents, AnEventThatCantBeTurnedOnCostsItsPinOnly) {
    add("X.Type=Integer.EventName=NoSuchEvent.ValueName=EventExposureEndTimestamp");
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    const Utils::LogCapture capture;
    run();
    EXPECT_EQ(sendAndWait(*sink, 5).get<Core::Integer>(true)->get(), 5);
    camera().stop();
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre("6 Camera: Try to register event \"NoSuchEvent\" and output "
                    "\"EventExposureEndTimestamp\" as pin \"X\"",
                    "6 Camera: Set enumeration selector to 'NoSuchEvent'",
                    "5 Camera: Unable to turn on event notification for \"NoSuchEvent\"",
                    "6 Camera: Try to register event \"ExposureEnd\" and output "
                    "\"EventExposureEndFrameID\" as pin \"End\"",
                    "6 Camera: Set enumeration selector to 'ExposureEnd'",
                    "6 Camera: Turn event notification on", "6 Camera: RegisterCameraEventHandler",
                    "5 Camera " + toText(static_cast<const Camera*>(&camera())) +
                        ": Using camera \"Scripted#1\""));
}

// A recipe with such an entry is not loaded to its end, but the entry is there.
TEST_F(CameraEvents, AValueNameThatIsGivenTwiceCostsItsEntryOnlyAndTheDeviceIsOpened) {
    const auto store = std::make_shared<TreeSettings>();
    store->setTexts("EventConfiguration",
                    {"A.Type=Integer.EventName=ExposureEnd.ValueName=V.ValueName=V",
                     "End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID"});
    EXPECT_EQ(getFailure<std::runtime_error>([&] { camera().loadSettings(store); }),
              "Value 'V' cannot be applied multiple times.");
    const Utils::LogCapture capture;
    run();
    camera().stop();
    EXPECT_TRUE(device->IsOpen());
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre("3 Camera: Unexpected error in Camera::OnOpened()",
                    "6 Camera: Try to register event \"ExposureEnd\" and output "
                    "\"EventExposureEndFrameID\" as pin \"End\"",
                    "6 Camera: Set enumeration selector to 'ExposureEnd'",
                    "6 Camera: Turn event notification on", "6 Camera: RegisterCameraEventHandler",
                    "5 Camera " + toText(static_cast<const Camera*>(&camera())) +
                        ": Using camera \"Scripted#1\""));
}

// The setting is for a closed camera.
TEST_F(CameraEvents, ACameraWhoseEventGrabbingCantBeSwitchedIsOnlyLogged) {
    static_cast<void>(camera());
    const auto other = Orlix::CreateCameraDevice(std::make_shared<CameraTest::ScriptedDevice>());
    Orlix::CInstantCamera open(other.get());
    open.Open();
    const Utils::LogCapture capture;
    camera().OnAttached(open);
    camera().OnDetached(open);
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(testing::MatchesRegex("3 Camera: Unable to turn GrabCameraEvents on\\. .+"),
                    testing::MatchesRegex("3 Camera: Unable to turn GrabCameraEvents off\\. .+")));
}

TEST_F(CameraEvents, AnotherOpeningReplacesTheHandlers) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    run();
    camera().stop();
    camera().freeResources();
    allocate();
    start();
    static_cast<void>(sendAndWait(*sink, 1));
    static_cast<void>(sendAndWait(*sink, 2));
    EXPECT_THAT(sink->values(), testing::SizeIs(2));
    camera().stop();
}

TEST_F(CameraEvents, GrabbingOfEventsIsSwitchedWithTheDevice) {
    GenApi::INodeMap& map = *camera().getNodeMapInfos().at(1).GetNodeMap();
    const GenApi::CBooleanPtr grabbing(map.GetNode("GrabCameraEvents"));
    EXPECT_FALSE(grabbing->GetValue());
    allocate();
    EXPECT_TRUE(grabbing->GetValue());
    camera().freeResources();
    EXPECT_FALSE(grabbing->GetValue());
}

TEST_F(CameraEvents, OneWhoseHandlerIsOfAnEarlierRunIsDropped) {
    extendDevice(
        R"(<SwissKnife Name="EventSum"><pVariable Name="V">ExposureEndFrameIDReg</pVariable>
        <pVariable Name="P">PayloadReg</pVariable><Formula>V + 0 * P</Formula></SwissKnife>)");
    add("F.Type=Float.EventName=ExposureEnd.ValueName=EventSum");
    const auto sink = attach("F");
    run();
    // The handler is inside when it reads the value from the device; then it waits for the lock.
    std::latch isInside(1);
    device->onAccess = [&, reader = std::this_thread::get_id()] {
        if (std::this_thread::get_id() != reader && !isInside.try_wait()) {
            isInside.count_down();
        }
    };
    {
        const GenApi::AutoLock guard(cameraMap().GetLock());
        device->SendEvent(CameraTest::exposureEndEvent, 1);
        isInside.wait();
        camera().stop();
        start();
    }
    EXPECT_EQ(sendAndWait(*sink, 2).get<Core::Float>(true)->get(), 2);
    EXPECT_THAT(sink->values(), testing::SizeIs(1));
    camera().stop();
}

TEST_F(CameraEvents, AStopReleasesAnEventThatWaitsForSpaceUnderTheNodesLock) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    sink->setSpace(false);
    run();
    for (int i = 0; i < 3; ++i) {
        device->SendEvent(CameraTest::exposureEndEvent, i);
    }
    sink->waitUntilRefused();
    camera().stop();
    EXPECT_EQ(camera().getState(), Core::NodeState::Stopped);
    camera().freeResources();
    EXPECT_THAT(sink->values(), IsEmpty());
}

// Its handler can't come to the lock before the run has begun.
TEST_F(CameraEvents, OneThatCameBeforeTheRunIsNotPutOutInIt) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto sink = attach("End");
    extendDevice(eventFeatures);
    allocate();
    {
        const GenApi::AutoLock guard(cameraMap().GetLock());
        device->SendEvent(CameraTest::exposureEndEvent, 1);
        start();
    }
    EXPECT_EQ(sendAndWait(*sink, 2).get<Core::Integer>(true)->get(), 2);
    EXPECT_THAT(sink->values(), testing::SizeIs(1));
    camera().stop();
}

TEST_F(CameraEvents, ARunWithoutGrabbingHasEventsToo) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    camera().setAcquisitionMode(static_cast<AcquisitionMode>(5));
    const auto sink = attach("End");
    run();
    EXPECT_EQ(sendAndWait(*sink, 2).get<Core::Integer>(true)->get(), 2);
    camera().stop();
}

// The pin is there again, but for an event that this opening can't turn on.
TEST_F(CameraEvents, HandlersOfAnEarlierOpeningAreCalledNoMore) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    run();
    camera().stop();
    camera().freeResources();
    camera().executeEventPinRemove();
    add("End.Type=Integer.EventName=NoSuchEvent.ValueName=EventExposureEndTimestamp");
    const Jobs jobs(camera());
    allocate();
    start();
    // When the last one shows in the map, the handlers of those before it were called.
    const GenApi::CIntegerPtr shown(
        camera().getNodeMapInfos().at(3).GetNodeMap()->GetNode("EventExposureEndFrameID"));
    for (int i = 1; i <= 100; ++i) {
        device->SendEvent(CameraTest::exposureEndEvent, i);
    }
    while (!GenApi::IsReadable(shown) || shown->GetValue() != 100) {
        std::this_thread::yield();
    }
    camera().stop();
    EXPECT_EQ(jobs.count(), 0);
}

TEST_F(CameraEvents, APinThatIsGoneSinceTheOpeningMakesNoUpdates) {
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    add("Frame.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto frames = attach("Frame");
    run();
    camera().stop();
    camera().setEventPinSelector(0);
    camera().executeEventPinRemove();
    const Jobs jobs(camera());
    start();
    static_cast<void>(sendAndWait(*frames, 1));
    static_cast<void>(sendAndWait(*frames, 2));
    camera().stop();
    EXPECT_EQ(jobs.count(), 2);
    // A pin of another kind may take the name.
    camera().executeChunkPinAdd();
    camera().setChunkPinValue("End.Type=Float.ValueName=ChunkExposureTime");
    const auto ends = attach("End");
    start();
    static_cast<void>(sendAndWait(*frames, 3));
    static_cast<void>(sendAndWait(*frames, 4));
    camera().stop();
    EXPECT_EQ(jobs.count(), 4);
    EXPECT_THAT(ends->values(), IsEmpty());
}

TEST_F(CameraEvents, AnEventForANameThatIsTakenIsNotTurnedOn) {
    camera().executeChunkPinAdd();
    camera().setChunkPinValue("X.Type=Float.ValueName=ChunkExposureTime");
    for (const char* const name : {"Image", "ImageCorrupt", "X"}) {
        add((name + std::string(".Type=Integer.EventName=ExposureEnd.ValueName="
                                "EventExposureEndFrameID"))
                .c_str());
    }
    extendDevice(eventFeatures);
    const Utils::LogCapture capture;
    allocate();
    EXPECT_EQ(device->Get(CameraTest::Address::notification), 0);
    const auto tried = testing::StartsWith("6 Camera: Try to register event \"ExposureEnd\"");
    EXPECT_THAT(getLines(capture, category), ElementsAre(tried, tried, tried, testing::_));
}

TEST_F(CameraEvents, AValueThatTheDeviceLacksCostsItsPinOnly) {
    add("N.Type=Integer.EventName=ExposureEnd.ValueName=NoSuchValue");
    add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
    const auto none = attach("N");
    const auto sink = attach("End");
    run();
    static_cast<void>(sendAndWait(*sink, 7));
    static_cast<void>(sendAndWait(*sink, 8));
    camera().stop();
    EXPECT_THAT(none->values(), IsEmpty());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
