// Events of the device, from the transport layer to their handlers.
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

constexpr const char* frameId = "EventExposureEndFrameID";
constexpr const char* timestamp = "EventExposureEndTimestamp";
constexpr const char* overrun = "EventOverrunTimestamp";

// What a call was for, and what the nodes showed then.
struct Call {
    std::string node;
    std::intptr_t userId = 0;
    std::int64_t value = 0;
    bool operator==(const Call&) const = default;
};

class Events : public CCameraEventHandler {
public:
    ~Events() override {
        if (ended != nullptr) {
            ended->fetch_add(1);
        }
    }
    void OnCameraEvent(CInstantCamera& camera, std::intptr_t userId, GenApi::INode* node) override {
        if (work) {
            work(camera);
        }
        calls.Add({node->GetName().str(), userId, CIntegerParameter(node).GetValueOrDefault(-1)});
    }

    std::function<void(CInstantCamera&)> work;
    std::atomic<int>* ended = nullptr;
    Record<Call> calls;
};

class CameraEvents : public CameraFixture {
protected:
    void SetUp() override { camera.GrabCameraEvents.SetValue(true); }
    void add(Events& handler, const char* node, std::intptr_t id = 0) {
        camera.RegisterCameraEventHandler(&handler, node, id, CameraEventRegistrationMode_Append,
                                          Cleanup_None, CameraEventAvailability_Optional);
    }

    Events events;
    Events others;
};

TEST_F(CameraEvents, CallTheHandlersOfTheNodesThatTheMessageChanges) {
    add(events, frameId, 1);
    open();
    add(events, timestamp, 2);
    add(others, overrun, 3);
    device->SendEvent(exposureEndEvent, 7, 700);
    device->SendEvent(overrunEvent, 900);
    ASSERT_TRUE(others.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Get(), (std::vector<Call>{{frameId, 1, 7}, {timestamp, 2, 700}}));
    EXPECT_EQ(others.calls.Get(), (std::vector<Call>{{overrun, 3, 900}}));
}

TEST_F(CameraEvents, AChangeOfTheNodeByOtherMeansIsNoEvent) {
    add(events, frameId);
    add(others, overrun);
    open();
    camera.GetNodeMap().InvalidateNodes();
    camera.GetNodeMap().GetNode(frameId)->InvalidateNode();
    device->SendEvent(overrunEvent, 1);
    ASSERT_TRUE(others.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Count(), 0U);
}

TEST_F(CameraEvents, AreNotDeliveredUnlessTheCameraIsSetToGrabThem) {
    camera.GrabCameraEvents.SetValue(false);
    add(events, frameId);
    open();
    device->SendEvent(exposureEndEvent, 1);
    camera.Close();
    camera.GrabCameraEvents.SetValue(true);
    camera.Open();
    device->SendEvent(exposureEndEvent, 2);
    ASSERT_TRUE(events.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Get()[0].value, 2);
}

TEST_F(CameraEvents, RunOnAThreadOfTheirOwn) {
    std::atomic<bool> same = true;
    const auto here = std::this_thread::get_id();
    std::atomic<std::thread::id> eventThread;
    events.work = [&](CInstantCamera&) {
        eventThread = std::this_thread::get_id();
        same = std::this_thread::get_id() == here;
    };
    std::atomic<std::thread::id> grabThread;
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        grabThread = std::this_thread::get_id();
    };
    add(events, frameId);
    grab();
    ASSERT_TRUE(device->Send());
    device->SendEvent(exposureEndEvent, 1);
    ASSERT_TRUE(events.calls.WaitFor(1));
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_FALSE(same);
    EXPECT_NE(eventThread.load(), grabThread.load());
}

TEST_F(CameraEvents, OfModeOneReplacesThosePresentAndOfModeZeroAppends) {
    open();
    add(events, frameId);
    add(events, timestamp);
    camera.RegisterCameraEventHandler(&others, frameId, 0, CameraEventRegistrationMode_ReplaceAll,
                                      Cleanup_None, CameraEventAvailability_Optional);
    add(others, overrun);
    device->SendEvent(exposureEndEvent, 1);
    device->SendEvent(overrunEvent, 2);
    ASSERT_TRUE(others.calls.WaitFor(2));
    EXPECT_EQ(events.calls.Count(), 0U);
}

TEST_F(CameraEvents, OwnedHandlersEndWhenTheyAreReplacedAndWithTheCamera) {
    std::atomic<int> ended = 0;
    const auto make = [&] {
        auto* const handler = new Events;
        handler->ended = &ended;
        return handler;
    };
    open();
    {
        CInstantCamera other;
        for (int round = 1; round <= 3; ++round) {
            other.RegisterCameraEventHandler(make(), frameId, 0,
                                             CameraEventRegistrationMode_ReplaceAll, Cleanup_Delete,
                                             CameraEventAvailability_Optional);
            other.RegisterCameraEventHandler(make(), frameId, 0, CameraEventRegistrationMode_Append,
                                             Cleanup_Delete, CameraEventAvailability_Optional);
            EXPECT_EQ(ended, 2 * (round - 1));
        }
    }
    EXPECT_EQ(ended, 6);
}

TEST_F(CameraEvents, AnOwnedHandlerIsDestroyedAfterTheCallThatRunsAndNobodyWaits) {
    std::atomic<int> ended = 0;
    Gate entered;
    Gate leave;
    auto* const owned = new Events;
    owned->ended = &ended;
    owned->work = [&](CInstantCamera&) {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
    };
    camera.RegisterCameraEventHandler(owned, frameId, 0, CameraEventRegistrationMode_ReplaceAll,
                                      Cleanup_Delete, CameraEventAvailability_Optional);
    open();
    device->SendEvent(exposureEndEvent, 1);
    ASSERT_TRUE(entered.Wait());
    camera.RegisterCameraEventHandler(&events, frameId, 0, CameraEventRegistrationMode_ReplaceAll,
                                      Cleanup_None, CameraEventAvailability_Optional);
    EXPECT_EQ(ended, 0);
    leave.Open();
    device->SendEvent(exposureEndEvent, 2);
    ASSERT_TRUE(events.calls.WaitFor(1));
    EXPECT_EQ(ended, 1);
}

TEST_F(CameraEvents, ANodeThatMustBeThereIsMissedAtOnceOrWhenOpening) {
    open();
    EXPECT_EQ(failureOf<GenICam::InvalidArgumentException>([&] {
                  camera.RegisterCameraEventHandler(
                      &events, "EventNone", 0, CameraEventRegistrationMode_Append, Cleanup_None);
              }),
              "The camera has no node 'EventNone' that its event handler is registered for.");
    add(events, "EventNone");
    camera.Close();
    camera.RegisterCameraEventHandler(&events, "EventNone", 0, CameraEventRegistrationMode_Append,
                                      Cleanup_None, CameraEventAvailability_Mandatory);
    EXPECT_THROW(camera.Open(), GenICam::InvalidArgumentException);
    EXPECT_FALSE(camera.IsOpen());
}

TEST_F(CameraEvents, AHandlerThatCannotBeRegisteredStaysItsOwners) {
    struct Owned final : CCameraEventHandler {
        explicit Owned(bool& flag) : isDestroyed(flag) {}
        void DestroyCameraEventHandler(CInstantCamera&) override { isDestroyed = true; }
        bool& isDestroyed;
    };
    bool isDestroyed = false;
    Owned owned(isDestroyed);
    open();
    EXPECT_THROW(camera.RegisterCameraEventHandler(
                     &owned, "EventNone", 0, CameraEventRegistrationMode_Append, Cleanup_Delete),
                 GenICam::InvalidArgumentException);
    EXPECT_FALSE(isDestroyed);
}

TEST_F(CameraEvents, ANullHandlerIsRefused) {
    EXPECT_THROW(camera.RegisterCameraEventHandler(
                     nullptr, frameId, 0, CameraEventRegistrationMode_Append, Cleanup_Delete),
                 GenICam::InvalidArgumentException);
}

TEST_F(CameraEvents, RegistrationsHoldForTheNextDevice) {
    add(events, frameId);
    open();
    const auto next = std::make_shared<ScriptedDevice>();
    const auto nextAttached = CreateCameraDevice(next);
    camera.Attach(nextAttached.get());
    camera.Open();
    next->SendEvent(exposureEndEvent, 5);
    ASSERT_TRUE(events.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Get()[0].value, 5);
    static_cast<void>(camera.DetachDevice());
}

TEST_F(CameraEvents, AHandlerThatWasTakenOffIsNotCalled) {
    open();
    add(events, frameId);
    add(others, timestamp);
    EXPECT_FALSE(camera.DeregisterCameraEventHandler(&events, timestamp));
    EXPECT_TRUE(camera.DeregisterCameraEventHandler(&events, frameId));
    EXPECT_FALSE(camera.DeregisterCameraEventHandler(&events, frameId));
    device->SendEvent(exposureEndEvent, 1);
    ASSERT_TRUE(others.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Count(), 0U);
}

TEST_F(CameraEvents, AStormIsBoundedAndCounted) {
    Gate leave;
    events.work = [&](CInstantCamera&) { EXPECT_TRUE(leave.Wait()); };
    add(events, frameId);
    open();
    constexpr std::int64_t storm = 5000;
    for (std::int64_t event = 0; event < storm; ++event) {
        device->SendEvent(exposureEndEvent, event);
    }
    const std::int64_t lost = statistic("StatisticEventsLost");
    EXPECT_GE(lost, storm - 1025);
    leave.Open();
    ASSERT_TRUE(events.calls.WaitFor(static_cast<std::size_t>(storm - lost)));
    EXPECT_EQ(statistic("StatisticEventsLost"), lost);
}

TEST_F(CameraEvents, ThoseLostBeforeAnythingWasGrabbedAreCounted) {
    Gate leave;
    events.work = [&](CInstantCamera&) { EXPECT_TRUE(leave.Wait()); };
    add(events, frameId);
    open();
    for (std::int64_t event = 0; event < 2000; ++event) {
        device->SendEvent(exposureEndEvent, event);
    }
    const std::int64_t lost = statistic("StatisticEventsLost");
    EXPECT_GT(lost, 0);
    camera.StartGrabbing();
    EXPECT_EQ(statistic("StatisticEventsLost"), lost);
    camera.Close();
    leave.Open();
    EXPECT_EQ(CIntegerParameter(camera.GetInstantCameraNodeMap(), "TotalEventsLost").GetValue(),
              lost);
    EXPECT_TRUE(camera.DeregisterCameraEventHandler(&events, frameId));  // waits for its call
}

// The map's lock holds the event thread up when it has taken a message: one more than fits is kept.
TEST_F(CameraEvents, OneThatWasTakenInAnEarlierOpeningIsNotToldInTheNext) {
    constexpr std::int64_t fitting = 1024;
    add(events, frameId);
    open();
    {
        const GenApi::AutoLock guard(camera.GetNodeMap().GetLock());
        std::int64_t sent = 0;
        while (sent - statistic("StatisticEventsLost") <= fitting) {
            device->SendEvent(exposureEndEvent, ++sent);
        }
        camera.Close();
        camera.Open();
    }
    device->SendEvent(exposureEndEvent, -1);
    ASSERT_TRUE(events.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Get(), (std::vector<Call>{{frameId, 0, -1}}));
}

TEST_F(CameraEvents, AreNumberedAsTheyArriveAndAHandlerIsToldItsOwn) {
    Gate entered;
    Gate leave;
    Record<std::uint64_t> numbers;
    events.work = [&](CInstantCamera& sender) {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
        numbers.Add(sender.GetEventNumber());
    };
    add(events, frameId);
    open();
    EXPECT_EQ(camera.GetLastEventNumber(), 0U);
    device->SendEvent(exposureEndEvent, 1);
    ASSERT_TRUE(entered.Wait());
    device->SendEvent(overrunEvent, 2);
    device->SendEvent(exposureEndEvent, 3);
    EXPECT_EQ(camera.GetLastEventNumber(), 3U);
    leave.Open();
    ASSERT_TRUE(events.calls.WaitFor(2));
    EXPECT_EQ(numbers.Get(), (std::vector<std::uint64_t>{1, 3}));
}

TEST_F(CameraEvents, AllHandlersCanBeTakenOffAtOnce) {
    std::atomic<int> ended = 0;
    auto* const owned = new Events;
    owned->ended = &ended;
    open();
    camera.RegisterCameraEventHandler(owned, frameId, 0, CameraEventRegistrationMode_Append,
                                      Cleanup_Delete, CameraEventAvailability_Optional);
    add(events, frameId);
    camera.DeregisterCameraEventHandlers();
    EXPECT_EQ(ended, 1);
    add(others, frameId);
    device->SendEvent(exposureEndEvent, 1);
    ASSERT_TRUE(others.calls.WaitFor(1));
    EXPECT_EQ(events.calls.Count(), 0U);
    EXPECT_FALSE(camera.DeregisterCameraEventHandler(&events, frameId));
}

TEST_F(CameraEvents, AnExceptionOfAHandlerIsSwallowedAndTheNextOneIsCalled) {
    events.work = [](CInstantCamera&) { throw std::string("of no known type"); };
    add(events, frameId);
    add(others, frameId);
    open();
    device->SendEvent(exposureEndEvent, 1);
    EXPECT_TRUE(others.calls.WaitFor(1));
}

}  // namespace
}  // namespace CameraTest
