// A camera that goes while something is under way, and control that goes to others.
#include <atomic>
#include <optional>
#include <thread>

#include "aravis/bigendian.h"
#include "aravis/bootstrap.h"
#include "aravis/support/commandproxy.h"
#include "aravis/support/simulatedcameratest.h"
#include "aravis/support/watch.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/grabresultdata.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {
namespace {

using Testing::Clock;
using Testing::PrintTime;

constexpr const char* removed = "Device 'EmulatedCamera (S1)' was removed.";

class SimulatedRemoval : public Testing::SimulatedCameraTest {
protected:
    void OpenWatched() {
        camera.RegisterConfiguration(&watch, RegistrationMode_Append, Cleanup_None);
        Open();
    }
    [[nodiscard]] Transport::IDevice& Device() { return *device_->GetTransportDevice(); }

    void WriteRegister(std::uint32_t place, std::uint32_t value) {
        std::uint8_t bytes[4] = {};
        PutNumber(bytes, sizeof bytes, value);
        Device().Write(place, bytes, sizeof bytes);
    }
    // The answer's status to a command of a program that isn't this one, 0 for success.
    static std::uint64_t WriteAsAnother(std::uint32_t place, std::uint32_t value) {
        UdpSocket socket;
        EXPECT_TRUE(socket.Connect(ParseAddress(SimulatedRemoval::address), gvcpPort));
        std::array<std::uint8_t, 16> command{0x42, 0x01, 0x00, 0x82, 0x00, 0x08, 0x00, 0x01};
        PutNumber(command.data() + 8, 4, place);
        PutNumber(command.data() + 12, 4, value);
        std::array<std::uint8_t, 64> answer{};
        EXPECT_TRUE(socket.Send(command));
        EXPECT_GE(socket.Receive(answer, std::chrono::milliseconds(patience)), 8U);
        return GetNumber(answer.data(), 2);
    }
    // Lets another program take control by the way that the standard has for it.
    void GiveControlAway() {
        constexpr std::uint32_t control = 0x2;
        constexpr std::uint32_t mayBeSwitchedOver = 0x4;
        WriteRegister(Bootstrap::controlPrivilege, control | mayBeSwitchedOver);
        ASSERT_EQ(WriteAsAnother(Bootstrap::controlPrivilege, control), 0U);
    }
    void FreeRun(double rate) {
        Set("Width", 64);
        Set("Height", 64);
        CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable").SetValue(true);
        CFloatParameter(camera.GetNodeMap(), "AcquisitionFrameRate").SetValue(rate);
    }
    void Take(int count) {
        CGrabResultPtr result;
        for (int frame = 0; frame < count; ++frame) {
            ASSERT_TRUE(camera.RetrieveResult(patience, result));
        }
    }
    void ExpectRemovedAtRead(std::uint32_t place) {
        std::uint8_t bytes[4] = {};
        try {
            Device().Read(place, bytes, sizeof bytes);
            FAIL() << "a camera that is gone was read";
        } catch (const GenICam::RuntimeException& error) {
            EXPECT_STREQ(error.GetDescription(), removed);
        }
    }

    Testing::Watch watch;

    void TearDown() override {
        camera.DetachDevice();
        camera.DeregisterConfiguration(&watch);
    }
};

TEST_F(SimulatedRemoval, AccessUnderWayEndsWithTheCamera) {
    Start();
    OpenWatched();
    Pause();
    const auto begin = Clock::now();
    ExpectRemovedAtRead(0);
    PrintTime("read under way ended", begin);
    watch.WaitForLoss();
    ExpectRemovedAtRead(0);
    PrintTime("read ended, loss was told and the next read failed", begin);
}

TEST_F(SimulatedRemoval, StopRightAfterTheDeathOfTheLinkEnds) {
    Start();
    OpenWatched();
    FreeRun(50);
    camera.StartGrabbing();
    Take(5);
    const auto begin = Clock::now();
    Kill();
    camera.StopGrabbing();
    PrintTime("stopped", begin);
    camera.Close();
    PrintTime("closed", begin);
}

TEST_F(SimulatedRemoval, CameraThatIsSilentForLongIsLostAndCanBeOpenedAgain) {
    Start({"--wire", "on signal: silence"});
    OpenWatched();
    FreeRun(50);
    camera.StartGrabbing();
    Take(1);
    BeginFaults();
    watch.WaitForLoss();
    ExpectRemovedAtRead(0);
    camera.DetachDevice();
    EXPECT_THROW(Open(), GenICam::GenericException);
    camera.DetachDevice();
    EndFaults();
    // It keeps its dead controller for some time.
    for (bool isBack = false; !isBack;) {
        try {
            Open();
            camera.StartGrabbing();
            CGrabResultPtr result;
            isBack = camera.RetrieveResult(patience, result);
        } catch (const GenICam::GenericException&) {
            camera.DetachDevice();
        }
    }
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
}

TEST_F(SimulatedRemoval, CameraThatIsBackWithoutAControllerIsLost) {
    Start({"--wire", "on signal: reset for 100 ms"});
    OpenWatched();
    BeginFaults();
    watch.WaitForLoss();
    EXPECT_TRUE(camera.IsCameraDeviceRemoved());
}

TEST_F(SimulatedRemoval, CameraThatIsPulledOutInTheMidstOfAFrameIsLost) {
    Start({"--fault", "frame 5: unplug"});
    OpenWatched();
    FreeRun(50);
    camera.StartGrabbing();
    Take(4);
    watch.WaitForLoss();
    CGrabResultPtr result;
    EXPECT_THROW(
        {
            while (camera.RetrieveResult(patience, result)) {
            }
        },
        GenICam::RuntimeException);
    camera.StopGrabbing();
}

TEST_F(SimulatedRemoval, ControlThatAnotherProgramTookIsLost) {
    Start();
    OpenWatched();
    GiveControlAway();
    watch.WaitForLoss();
    ExpectRemovedAtRead(0);
}

// Before the heartbeat comes to look.
TEST_F(SimulatedRemoval, RefusedAccessTellsOfControlThatAnotherTook) {
    Start();
    OpenWatched();
    GiveControlAway();
    try {
        WriteRegister(Bootstrap::streamPacketDelay, 0);
        FAIL() << "a register was written without control";
    } catch (const GenICam::RuntimeException& error) {
        EXPECT_STREQ(error.GetDescription(), removed);
    }
}

// An access that the camera refuses for another reason is no loss of control.
TEST_F(SimulatedRemoval, RefusedAccessAloneIsNoLoss) {
    Start();
    OpenWatched();
    EXPECT_THROW(WriteRegister(Bootstrap::primaryPort, 1), GenICam::AccessException);
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    std::uint8_t bytes[4] = {};
    EXPECT_NO_THROW(Device().Read(0, bytes, sizeof bytes));
}

// Aravis gives one sign of life a second, by far too few for this.
TEST_F(SimulatedRemoval, ControlIsKeptWithAShortHeartbeatTimeOutOfTheCamera) {
    Start();
    OpenWatched();
    Set("GevHeartbeatTimeout", 900);
    FreeRun(20);
    camera.StartGrabbing();
    Take(60);
    camera.StopGrabbing();
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    camera.Close();
    EXPECT_EQ(EndAndCount()["controlLosses"], 0);
}

// Some cameras tell other programs, and other sockets of this one, nothing while they have a
// controller.
class ControllerOnly : public SimulatedRemoval {
protected:
    // Before the camera, whose commands come over another port.
    void StartBehindProxy() {
        constexpr std::uint16_t port = 3999;
        proxy_.emplace(ParseAddress(address), port,
                       [this](const CommandProxy::Command& command) { return judge(command); });
        Start({"--port", std::to_string(port)});
        OpenWatched();
    }
    void TearDown() override {
        SimulatedRemoval::TearDown();
        proxy_.reset();
    }

    std::atomic<bool> gone{false};
    std::atomic<bool> answersAll{false};
    std::atomic<bool> slow{false};
    std::atomic<unsigned int> ofOthers{0};  // commands that were passed on
    std::atomic<unsigned int> looks{0};     // of the controller at its control

private:
    using CommandProxy = Testing::CommandProxy;

    CommandProxy::Way judge(const CommandProxy::Command& command) {
        constexpr std::uint64_t discovery = 0x02;
        constexpr std::uint64_t writeRegister = 0x82;
        constexpr std::uint64_t readMemory = 0x84;
        const bool isStranger = controller_ != 0 && command.sender != controller_;
        if (gone || (isStranger && command.kind != discovery && !answersAll)) {
            return CommandProxy::Way::Drop;
        }
        if (command.address == Bootstrap::controlPrivilege) {
            ofOthers += isStranger ? 1 : 0;
            looks += !isStranger && command.kind == readMemory ? 1 : 0;
        }
        if (slow) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
        if (command.kind == writeRegister && command.address == Bootstrap::controlPrivilege) {
            controller_ =
                (command.value & Bootstrap::privilegeMask) != 0 ? command.sender : std::uint16_t{0};
        }
        return CommandProxy::Way::Forward;
    }

    std::uint16_t controller_ = 0;
    std::optional<CommandProxy> proxy_;
};

TEST_F(ControllerOnly, CameraStaysAndEndsWhenItIsAsked) {
    StartBehindProxy();
    FreeRun(50);
    camera.StartGrabbing();
    Take(100);  // longer than a silent camera has
    camera.StopGrabbing();
    EXPECT_TRUE(Device().CheckAlive());
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    EXPECT_THROW(WriteRegister(Bootstrap::primaryPort, 1), GenICam::AccessException);
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    camera.Close();
    EXPECT_NO_THROW(camera.Open());
}

TEST_F(ControllerOnly, LossIsNoticed) {
    StartBehindProxy();
    gone = true;
    watch.WaitForLoss();
    ExpectRemovedAtRead(0);
}

TEST_F(ControllerOnly, CheckFindsASilentCameraLost) {
    StartBehindProxy();
    gone = true;
    EXPECT_FALSE(Device().CheckAlive());
}

// To find the size of packets takes many commands, and the camera's own question waits for them.
TEST_F(ControllerOnly, SlowAnswersAtTheStartOfAStreamAreNoSilence) {
    StartBehindProxy();
    FreeRun(20);
    slow = true;
    const auto begun = Clock::now();
    camera.StartGrabbing();
    PrintTime("started", begun);
    Take(5);
    camera.StopGrabbing();
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
}

// It was only busy when it was asked whether it answers others. Their questions come in both ways
// of watching it, but the controller's own between them in one only.
TEST_F(ControllerOnly, CameraThatAnswersOthersLaterIsWatchedLikeAnyOther) {
    StartBehindProxy();
    answersAll = true;
    unsigned int before = 0;
    bool isWatchedByOthers = false;
    for (int round = 0; round < 20 && !isWatchedByOthers; ++round) {
        before = looks;
        const unsigned int first = ofOthers;
        for (int wait = 0; ofOthers < first + 3; ++wait) {
            ASSERT_LT(wait, 1000);
            ASSERT_FALSE(watch.IsLossWithin(std::chrono::milliseconds(20)));
        }
        isWatchedByOthers = looks == before;
    }
    EXPECT_TRUE(isWatchedByOthers);
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
}

TEST_F(SimulatedRemoval, DeviceThatIsClosedInMidStreamEndsIt) {
    Start();
    OpenWatched();
    FreeRun(50);
    LimitFrames(1000);
    const auto stream = Device().OpenStream();
    std::vector<std::uint8_t> memory(64 * 64);
    Transport::StreamBuffer buffer;
    buffer.data = memory.data();
    buffer.capacity = memory.size();
    stream->Queue(buffer);
    stream->Start(memory.size());
    Device().Close();
    try {
        static_cast<void>(stream->Wait(std::chrono::milliseconds(patience)));
        FAIL() << "a device that is closed streams";
    } catch (const GenICam::RuntimeException& error) {
        EXPECT_STREQ(error.GetDescription(), "Device 'EmulatedCamera (S1)' isn't open.");
    }
    stream->Stop();
    EXPECT_EQ(stream->TakeBack(), &buffer);
    EXPECT_EQ(stream->TakeBack(), nullptr);
}

}  // namespace
}  // namespace Orlix::Aravis
