// Runs: their numbers, and what configuration handlers are told of how they begin and end.
#include <future>
#include <optional>

#include "orlixcamera/instantcamera/cameratest.h"
#include "orlixcamera/messagesink.h"

namespace CameraTest {
namespace {

using Names = std::vector<std::string>;

class GrabRuns : public CameraFixture {
protected:
    void SetUp() override {
        camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
        camera.RegisterConfiguration(&second, RegistrationMode_Append, Cleanup_None);
    }
    // The second ends before the camera.
    void TearDown() override { camera.DeregisterConfiguration(&second); }
    void grabOne() {
        camera.StartGrabbing(1, GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    }
    [[nodiscard]] static std::size_t count(const States& told, const std::string& name) {
        const Names names = told.names.Get();
        return static_cast<std::size_t>(std::count(names.begin(), names.end(), name));
    }

    States second;
};

TEST_F(GrabRuns, AreCountedAndFramesTellTheirs) {
    EXPECT_EQ(camera.GetRunNumber(), 0U);
    open();
    for (std::uint64_t run = 1; run <= 3; ++run) {
        camera.StartGrabbing();
        EXPECT_EQ(camera.GetRunNumber(), run);
        ASSERT_TRUE(device->Send());
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(1000, result));
        EXPECT_EQ(result->GetRunNumber(), run);
        camera.StopGrabbing();
        EXPECT_EQ(camera.GetRunNumber(), run);
        EXPECT_EQ(result->GetRunNumber(), run);
    }
}

TEST_F(GrabRuns, AHandlerThatComesLateSeesThatItsFrameIsOfARunThatIsOver) {
    Gate entered;
    Gate leave;
    Record<std::pair<std::uint64_t, std::uint64_t>> numbers;
    images.work = [&](CInstantCamera& sender, const CGrabResultPtr& result) {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
        numbers.Add({result->GetRunNumber(), sender.GetRunNumber()});
    };
    grab();
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(entered.Wait());
    camera.StopGrabbing();
    camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    ASSERT_TRUE(device->Send());
    leave.Open();
    ASSERT_TRUE(numbers.WaitFor(2));
    EXPECT_EQ(numbers.Get()[0], (std::pair<std::uint64_t, std::uint64_t>(1, 2)));
    EXPECT_EQ(numbers.Get()[1], (std::pair<std::uint64_t, std::uint64_t>(2, 2)));
}

TEST_F(GrabRuns, NobodyIsToldOfTheEndOfOneThatNeverBegan) {
    open();
    states.names.Clear();
    device->stream->refuseStart = true;
    EXPECT_THROW(camera.StartGrabbing(), GenICam::RuntimeException);
    camera.StopGrabbing();
    static_cast<void>(camera.DetachDevice());
    EXPECT_EQ(states.names.Get(),
              (Names{"OnGrabStart", "OnClose", "OnClosed", "OnDetach", "OnDetached"}));
}

TEST_F(GrabRuns, AStartThatFailsStopsTheAcquisitionThatItHasBegun) {
    std::vector<std::string> told;
    static std::vector<std::string>* messages = nullptr;
    messages = &told;
    open();
    device->afterWrite = [](std::int64_t address) {
        if (address == Address::start || address == Address::stop) {
            throw GenICam::TimeoutException("no acknowledge", __FILE__, __LINE__);
        }
    };
    const MessageSink before =
        SetMessageSink([](const char* message) noexcept { messages->push_back(message); });
    EXPECT_EQ(failureOf<GenICam::TimeoutException>([&] {
                  camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
              }),
              "no acknowledge");
    SetMessageSink(before);
    EXPECT_EQ(device->Get(1000 + Address::start), 1);
    EXPECT_EQ(device->Get(1000 + Address::stop), 1);
    EXPECT_EQ(told, (std::vector<std::string>{}));
    device->afterWrite = nullptr;
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_TRUE(CIntegerParameter(camera.GetNodeMap(), "Width").IsWritable());
    camera.StartGrabbing();
    EXPECT_TRUE(camera.IsGrabbing());
}

TEST_F(GrabRuns, AStartThatFailsBeforeTheAcquisitionStopsNone) {
    open();
    device->stream->refuseStart = true;
    EXPECT_THROW(camera.StartGrabbing(), GenICam::RuntimeException);
    EXPECT_EQ(device->Get(1000 + Address::stop), 0);
}

// The grab thread is inside the call of the first handler when the run is stopped.
TEST_F(GrabRuns, NothingIsToldOfOneThatEndsByItselfOnceStoppingHasReturned) {
    Gate entered;
    Gate leave;
    std::optional<CInstantCamera> other(std::in_place);
    states.work = [&](const std::string& name) {
        if (name == "OnGrabStop") {
            entered.Open();
            EXPECT_TRUE(leave.Wait());
        }
    };
    other->RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    other->RegisterConfiguration(&second, RegistrationMode_Append, Cleanup_None);
    other->Attach(attached.get());
    other->Open();
    states.names.Clear();
    second.names.Clear();
    other->StartGrabbing(1, GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(entered.Wait());
    other->StopGrabbing();
    const Names whole{"OnGrabStart", "OnGrabStarted", "OnGrabStop", "OnGrabStopped"};
    EXPECT_EQ(states.names.Get(), whole);
    EXPECT_EQ(second.names.Get(), whole);
    leave.Open();
    other.reset();  // waits for the grab thread
    EXPECT_EQ(count(states, "OnGrabStop"), 1U);
    EXPECT_EQ(count(second, "OnGrabStop"), 1U);
    EXPECT_EQ(count(states, "OnGrabStopped"), 1U);
    EXPECT_EQ(count(second, "OnGrabStopped"), 1U);
}

// The grab thread is inside the call of the first handler when the next run begins.
TEST_F(GrabRuns, TheNextOneBeginsWhenAllWereToldOfTheEndOfTheLast) {
    Gate entered;
    Gate leave;
    std::optional<CInstantCamera> other(std::in_place);
    std::atomic<bool> isFirst{true};
    states.work = [&](const std::string& name) {
        if (name == "OnGrabStopped" && isFirst.exchange(false)) {
            entered.Open();
            EXPECT_TRUE(leave.Wait());
        }
    };
    other->RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    other->RegisterConfiguration(&second, RegistrationMode_Append, Cleanup_None);
    other->Attach(attached.get());
    other->Open();
    second.names.Clear();
    other->StartGrabbing(1, GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(entered.Wait());
    other->StartGrabbing();
    EXPECT_EQ(second.names.Get(), (Names{"OnGrabStart", "OnGrabStarted", "OnGrabStop",
                                         "OnGrabStopped", "OnGrabStart", "OnGrabStarted"}));
    leave.Open();
    other.reset();  // waits for the grab thread
    EXPECT_EQ(count(second, "OnGrabStopped"), 2U);
}

TEST_F(GrabRuns, OfTwoStartsAtOnceOneIsRefusedAndTheOtherRunGoesOn) {
    open();
    camera.StartGrabbing();
    camera.StopGrabbing();
    for (int round = 0; round < 300; ++round) {
        std::atomic<int> ready = 0;
        const auto start = [&] {
            ++ready;
            while (ready < 2) {
            }
            return failureOf([&] { camera.StartGrabbing(); });
        };
        auto other = std::async(std::launch::async, start);
        const std::string here = start();
        const std::string there = other.get();
        ASSERT_TRUE(camera.IsGrabbing());
        const std::string both = here < there ? here + there : there + here;
        ASSERT_EQ(both, "The camera is grabbing already.nothing was thrown");
        camera.StopGrabbing();
    }
}

TEST_F(GrabRuns, NoErrorIsToldOnceStoppingHasReturned) {
    Gate entered;
    Gate leave;
    std::optional<CInstantCamera> other(std::in_place);
    states.work = [&](const std::string& name) {
        if (name.starts_with("OnGrabError")) {
            entered.Open();
            EXPECT_TRUE(leave.Wait());
        }
    };
    other->RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    other->RegisterConfiguration(&second, RegistrationMode_Append, Cleanup_None);
    other->Attach(attached.get());
    other->StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    device->Lose();
    ASSERT_TRUE(entered.Wait());
    EXPECT_EQ(other->DetachDevice(), attached.get());
    const Names told = second.names.Get();
    EXPECT_EQ(count(second, "OnGrabStopped"), 1U);
    leave.Open();
    other.reset();
    EXPECT_EQ(second.names.Get(), told);
    EXPECT_EQ(count(second, "OnGrabError: Device 'scripted' was removed."), 0U);
}

TEST_F(GrabRuns, OfOneThatEndsAtOnceItsBeginningIsToldFirst) {
    open();
    images.keep = false;
    device->sendAtStart = true;
    for (std::size_t run = 1; run <= 200; ++run) {
        states.names.Clear();
        second.names.Clear();
        grabOne();
        ASSERT_TRUE(states.names.WaitFor(4));
        ASSERT_TRUE(second.names.WaitFor(4));
        const Names whole{"OnGrabStart", "OnGrabStarted", "OnGrabStop", "OnGrabStopped"};
        ASSERT_EQ(states.names.Get(), whole);
        ASSERT_EQ(second.names.Get(), whole);
    }
}

TEST_F(GrabRuns, AConfigurationHandlerMayTakeItselfOffAndTheNextIsTold) {
    states.work = [&](const std::string& name) {
        if (name == "OnOpened") {
            EXPECT_TRUE(camera.DeregisterConfiguration(&states));
        }
    };
    open();
    EXPECT_EQ(second.names.Get(), (Names{"OnAttach", "OnAttached", "OnOpen", "OnOpened"}));
}

TEST_F(GrabRuns, ADeviceIsAskedForASignOfLifeBeforeItsAcquisitionIsStopped) {
    open();
    camera.StartGrabbing();
    camera.StopGrabbing();
    EXPECT_EQ(device->asked, 1);
    EXPECT_EQ(device->Get(1000 + Address::stop), 1);
    device->answers = false;
    camera.StartGrabbing();
    camera.StopGrabbing();
    EXPECT_EQ(device->asked, 2);
    EXPECT_EQ(device->Get(1000 + Address::stop), 1);
    EXPECT_FALSE(camera.IsGrabbing());
}

}  // namespace
}  // namespace CameraTest
