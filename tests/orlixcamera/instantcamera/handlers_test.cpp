// Registering and taking off image and configuration handlers, and the locks under which handlers
// and their callers may meet.
#include <future>

#include "orlixcamera/instantcamera/cameratest.h"
#include "orlixcamera/messagesink.h"
#include "support/sleeper.h"

namespace CameraTest {
namespace {

// Counts its end.
template <class Base>
class Owned : public Base {
public:
    explicit Owned(std::atomic<int>& ended) : ended_(ended) {}
    ~Owned() override { ++ended_; }

private:
    std::atomic<int>& ended_;
};

class EventCounter : public CCameraEventHandler {
public:
    void OnCameraEvent(CInstantCamera&, std::intptr_t, GenApi::INode* node) override { work(node); }
    std::function<void(GenApi::INode*)> work;
};

class Handlers : public CameraFixture {};

TEST_F(Handlers, ANullHandlerIsRefused) {
    EXPECT_THROW(camera.RegisterImageEventHandler(nullptr, RegistrationMode_Append, Cleanup_None),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(camera.RegisterConfiguration(nullptr, RegistrationMode_Append, Cleanup_None),
                 GenICam::InvalidArgumentException);
}

TEST_F(Handlers, OfModeOneAreAppendedAndOfModeZeroReplaceThosePresent) {
    static_assert(RegistrationMode_ReplaceAll == 0 && RegistrationMode_Append == 1);
    static_assert(CameraEventRegistrationMode_Append == 0 &&
                  CameraEventRegistrationMode_ReplaceAll == 1);
    States second;
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    camera.RegisterConfiguration(&second, RegistrationMode_Append, Cleanup_None);
    camera.Attach(attached.get());
    EXPECT_EQ(states.names.Count(), 2U);
    EXPECT_EQ(second.names.Count(), 2U);
    camera.RegisterConfiguration(&second, RegistrationMode_ReplaceAll, Cleanup_None);
    camera.Open();
    EXPECT_EQ(states.names.Count(), 2U);
    EXPECT_EQ(second.names.Count(), 4U);
    camera.Close();
    EXPECT_TRUE(camera.DeregisterConfiguration(&second));
    EXPECT_FALSE(camera.DeregisterConfiguration(&second));
}

TEST_F(Handlers, OwnedOnesEndWhenTakenOffReplacedOrWithTheCamera) {
    std::atomic<int> ended = 0;
    {
        CInstantCamera other;
        auto* const image = new Owned<Images>(ended);
        other.RegisterImageEventHandler(image, RegistrationMode_Append, Cleanup_Delete);
        EXPECT_TRUE(other.DeregisterImageEventHandler(image));
        EXPECT_EQ(ended, 1);
        other.RegisterConfiguration(new Owned<States>(ended), RegistrationMode_Append,
                                    Cleanup_Delete);
        other.RegisterConfiguration(new Owned<States>(ended), RegistrationMode_ReplaceAll,
                                    Cleanup_Delete);
        EXPECT_EQ(ended, 2);
        other.RegisterImageEventHandler(new Owned<Images>(ended), RegistrationMode_Append,
                                        Cleanup_Delete);
    }
    EXPECT_EQ(ended, 4);
}

// The one that is replaced takes its successor off, before that was told of its registration.
TEST_F(Handlers, AnOwnedOneThatIsTakenOffRightAwayEndsAfterItWasTold) {
    struct Successor final : Owned<CConfigurationEventHandler> {
        Successor(std::atomic<int>& ended, int& told) : Owned(ended), told_(told) {}
        void OnConfigurationRegistered(CInstantCamera&) override { ++told_; }
        int& told_;
    };
    struct Replaced final : CConfigurationEventHandler {
        void OnConfigurationDeregistered(CInstantCamera& sender) override {
            EXPECT_TRUE(sender.DeregisterConfiguration(successor));
        }
        CConfigurationEventHandler* successor = nullptr;
    };
    std::atomic<int> ended = 0;
    int told = 0;
    Replaced replaced;
    replaced.successor = new Successor(ended, told);
    camera.RegisterConfiguration(&replaced, RegistrationMode_Append, Cleanup_None);
    camera.RegisterConfiguration(replaced.successor, RegistrationMode_ReplaceAll, Cleanup_Delete);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(ended, 1);
}

TEST_F(Handlers, TakingOffWaitsForACallOfAHandlerThatTheCameraDoesNotOwn) {
    Gate entered;
    std::atomic<bool> left = false;
    Gate leave;
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
        left = true;
    };
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(entered.Wait());
    Orlix::Test::Sleeper sleeper;
    auto takingOff = std::async(std::launch::async, [&] {
        sleeper.GoIn();
        const bool taken = camera.DeregisterImageEventHandler(&images);
        return taken && left;
    });
    sleeper.WaitUntilAsleep();
    EXPECT_EQ(takingOff.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    leave.Open();
    EXPECT_TRUE(takingOff.get());
}

TEST_F(Handlers, AHandlerMayTakeItselfOff) {
    images.work = [&](CInstantCamera& sender, const CGrabResultPtr&) {
        EXPECT_TRUE(sender.DeregisterImageEventHandler(&images));
    };
    grab();
    ASSERT_TRUE(device->Send());
    EXPECT_TRUE(images.results.WaitFor(1));
}

TEST_F(Handlers, WhatTheyThrowIsTold) {
    static std::vector<std::string>* told = nullptr;
    std::vector<std::string> messages;
    told = &messages;
    const MessageSink before =
        SetMessageSink([](const char* message) noexcept { told->push_back(message); });
    states.work = [](const std::string& name) {
        if (name == "OnOpen") {
            throw GenICam::RuntimeException("not me", __FILE__, __LINE__);
        }
    };
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    open();
    SetMessageSink(before);
    EXPECT_EQ(messages, (std::vector<std::string>{"Exception caught in OnOpen. Message: not me"}));
    EXPECT_TRUE(camera.IsOpen());
}

// The caller holds the lock that a handler on the grab thread and one on the event thread wait for:
// starting, stopping, closing and detaching return all the same, and no call begins afterwards.
TEST_F(Handlers, WaitForALockThatTheCallerHoldsWhileItStopsClosesAndDetaches) {
    std::mutex nodeLock;
    Gate imageEntered;
    Gate eventEntered;
    std::atomic<int> imageCalls = 0;
    std::atomic<int> eventCalls = 0;
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        ++imageCalls;
        imageEntered.Open();
        const std::scoped_lock lock(nodeLock);
    };
    EventCounter events;
    events.work = [&](GenApi::INode* node) {
        ++eventCalls;
        eventEntered.Open();
        const std::scoped_lock lock(nodeLock);
        // A call that comes late finds a closed camera.
        EXPECT_THROW(static_cast<void>(CIntegerParameter(node).GetValue()),
                     GenICam::GenericException);
        EXPECT_THROW(
            static_cast<void>(CIntegerParameter(camera.GetNodeMap(), "PayloadSize").GetValue()),
            GenICam::GenericException);
    };
    camera.GrabCameraEvents.SetValue(true);
    camera.RegisterCameraEventHandler(&events, "EventOverrunTimestamp", 0,
                                      CameraEventRegistrationMode_Append, Cleanup_None);
    {
        const std::scoped_lock lock(nodeLock);
        grab();
        ASSERT_TRUE(device->Send());
        ASSERT_TRUE(device->Send());
        device->SendEvent(overrunEvent, 1);
        device->SendEvent(overrunEvent, 2);
        ASSERT_TRUE(imageEntered.Wait());
        ASSERT_TRUE(eventEntered.Wait());
        camera.StopGrabbing();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        ASSERT_TRUE(device->Send());
        camera.StopGrabbing();
        camera.Close();
        EXPECT_EQ(camera.DetachDevice(), attached.get());
    }
    ASSERT_TRUE(images.results.WaitFor(1));
    EXPECT_TRUE(camera.DeregisterCameraEventHandler(&events, "EventOverrunTimestamp"));
    EXPECT_EQ(imageCalls, 1);
    EXPECT_EQ(eventCalls, 1);
}

TEST_F(Handlers, OfTwoRunsNeverOverlap) {
    std::mutex nodeLock;
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    Gate entered;
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        most = std::max(most.load(), ++inside);
        entered.Open();
        { const std::scoped_lock lock(nodeLock); }
        --inside;
    };
    {
        const std::scoped_lock lock(nodeLock);
        grab();
        ASSERT_TRUE(device->Send());
        ASSERT_TRUE(entered.Wait());
        for (int run = 0; run < 20; ++run) {
            camera.StopGrabbing();
            camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
            ASSERT_TRUE(device->Send());
        }
    }
    ASSERT_TRUE(images.results.WaitFor(2));
    EXPECT_EQ(most, 1);
}

// Handlers use what would deadlock if a lock of the library or of a map were held around them.
TEST_F(Handlers, RunWithNoLockOfTheLibraryOrOfAMapHeld) {
    const auto elsewhere = [](auto function) { std::async(std::launch::async, function).get(); };
    const auto useAll = [&] {
        elsewhere([&] {
            EXPECT_TRUE(camera.IsDeviceAttached());
            static_cast<void>(camera.GetDeviceInfo());
            static_cast<void>(camera.MaxNumBuffer.GetValue());
            Images other;
            camera.RegisterImageEventHandler(&other, RegistrationMode_Append, Cleanup_None);
            camera.DeregisterImageEventHandler(&other);
            if (camera.IsOpen()) {
                EXPECT_EQ(CIntegerParameter(camera.GetNodeMap(), "PayloadSize").GetValue(), 64);
                static_cast<void>(statistic("StatisticSent"));
            }
        });
    };
    states.work = [&](const std::string& name) {
        if (name != "OnDetached" && name != "OnAttach") {
            useAll();
        }
    };
    images.work = [&](CInstantCamera&, const CGrabResultPtr&) {
        useAll();
        elsewhere([&] { camera.StopGrabbing(); });
    };
    EventCounter events;
    Gate called;
    events.work = [&](GenApi::INode*) {
        useAll();
        elsewhere([&] { camera.StopGrabbing(); });
        called.Open();
    };
    camera.GrabCameraEvents.SetValue(true);
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    camera.RegisterCameraEventHandler(&events, "EventOverrunTimestamp", 0,
                                      CameraEventRegistrationMode_Append, Cleanup_None);
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(images.results.WaitFor(1));
    device->SendEvent(overrunEvent, 1);
    EXPECT_TRUE(called.Wait());
    EXPECT_TRUE(camera.DeregisterCameraEventHandler(&events, "EventOverrunTimestamp"));
    static_cast<void>(camera.DetachDevice());
    EXPECT_TRUE(camera.DeregisterConfiguration(&states));
}

}  // namespace
}  // namespace CameraTest
