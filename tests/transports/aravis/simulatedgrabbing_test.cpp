// Frames over a network that is not perfect, to the last one accounted for.
#include <unistd.h>

#include <thread>

#include "aravis/support/criticals.h"
#include "aravis/support/simulatedcameratest.h"
#include "gcbase/gcexception.h"
#include "genapi/genapi.h"
#include "orlixcamera/grabresultdata.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix::Aravis {
namespace {

class SimulatedGrabbing : public Testing::SimulatedCameraTest {
protected:
    struct Account {
        std::uint64_t whole = 0;
        std::uint64_t failed = 0;
        std::uint64_t lastId = 0;
        std::vector<std::string> errors;
    };

    void Open() {
        // So many frames may come before the first is taken.
        constexpr std::int64_t frames = 100;
        camera.MaxNumBuffer.SetValue(frames);
        SimulatedCameraTest::Open();
    }
    void OpenWithFewBuffers() {
        camera.MaxNumBuffer.SetValue(4);
        SimulatedCameraTest::Open();
    }

    // One by one: each begins when that before it is taken.
    enum class Pace : std::uint8_t { OfTheCamera, OneByOne };

    // Takes the frames of an acquisition that ends by itself, which has a buffer for each; those
    // that the network lost whole are gaps in the numbers.
    [[nodiscard]] Account GrabAll(std::uint64_t count, Pace pace = Pace::OfTheCamera) {
        LimitFrames(static_cast<std::int64_t>(count));
        Choose("TriggerSelector", "FrameStart");
        Choose("TriggerMode", pace == Pace::OneByOne ? "On" : "Off");
        const GenApi::CCommandPtr trigger(camera.GetNodeMap().GetNode("TriggerSoftware"));
        Account account;
        camera.StartGrabbing();
        CGrabResultPtr result;
        while (account.whole + account.failed < count) {
            if (pace == Pace::OneByOne) {
                trigger->Execute();
            }
            if (!camera.RetrieveResult(patience, result, TimeoutHandling_Return)) {
                break;
            }
            ++(result->GrabSucceeded() ? account.whole : account.failed);
            EXPECT_GT(result->GetFrameId(), account.lastId);
            account.lastId = result->GetFrameId();
            if (!result->GrabSucceeded()) {
                account.errors.emplace_back(result->GetErrorDescription().c_str());
            }
        }
        camera.StopGrabbing();
        return account;
    }

    // The smaller, the more of them have room in the socket while nobody receives.
    void MakeFrames(std::int64_t width, std::int64_t height, double rate) {
        Set("Width", width);
        Set("Height", height);
        CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable").SetValue(true);
        CFloatParameter(camera.GetNodeMap(), "AcquisitionFrameRate").SetValue(rate);
        CIntegerParameter(camera.GetTLNodeMap(), "PacketSize").SetValue(1500);
    }

    static void Expect(const std::vector<std::string>& found,
                       const std::vector<const char*>& want) {
        EXPECT_EQ(found, std::vector<std::string>(want.begin(), want.end()));
    }
};

constexpr const char* missing = "Packets of the frame are missing.";

TEST_F(SimulatedGrabbing, LossOfOnePercentIsMadeGoodByResends) {
    Start({"--loss", "1", "--keep", "100"});
    Open();
    MakeFrames(320, 240, 50);
    const Account account = GrabAll(100);
    EXPECT_EQ(account.whole, 100U);
    EXPECT_EQ(account.failed, 0U);
    EXPECT_GT(Statistic("StatisticResentPackets"), 0);
    EXPECT_EQ(Statistic("StatisticSent"), 100);
    EXPECT_EQ(Statistic("StatisticDelivered"), 100);
    const auto counts = EndAndCount();
    EXPECT_EQ(counts["frames"], 100);
    EXPECT_GT(counts["droppedPackets"], 0);
}

TEST_F(SimulatedGrabbing, LossWithoutResendsLeavesFramesWithGapsAndNoneUnaccounted) {
    Start({"--loss", "1"});
    Open();
    MakeFrames(320, 240, 50);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(false);
    const Account account = GrabAll(100);
    EXPECT_GT(account.failed, 0U);
    EXPECT_EQ(account.whole + account.failed, 100U);
    EXPECT_EQ(Statistic("StatisticSent"), 100);
    EXPECT_EQ(Statistic("StatisticFailed"), static_cast<std::int64_t>(account.failed));
    EXPECT_EQ(CIntegerParameter(camera.GetTLNodeMap(), "FailedFrames").GetValue(),
              static_cast<std::int64_t>(account.failed));
    EXPECT_EQ(Statistic("StatisticDelivered"), static_cast<std::int64_t>(account.whole));
    const auto counts = EndAndCount();
    EXPECT_EQ(counts["frames"], 100);
    EXPECT_EQ(counts["resendRequests"], 0);
}

// Nobody takes frames: what the buffers don't hold finds none.
class WithoutBuffers : public SimulatedGrabbing, public testing::WithParamInterface<const char*> {};

TEST_P(WithoutBuffers, FramesAreCounted) {
    Start({"--loss", GetParam()});
    OpenWithFewBuffers();
    MakeFrames(160, 120, 50);
    camera.StartGrabbing();
    std::int64_t last = 0;
    while (last < 40) {
        const std::int64_t lost = Statistic("StatisticLostForBuffer");
        ASSERT_GE(lost, last);
        last = lost;
        std::this_thread::yield();
    }
    camera.StopGrabbing();
    const std::int64_t sent = Statistic("StatisticSent");
    EXPECT_EQ(Statistic("StatisticLostForBuffer"), sent - 4);
    EXPECT_EQ(CIntegerParameter(camera.GetTLNodeMap(), "DeliveredFrames").GetValue(), 4);
    camera.Close();
    EXPECT_EQ(EndAndCount()["frames"], sent);
}

TEST_F(SimulatedGrabbing, FramesThatWaitedAreHandedOutAfterThoseThatFoundNoBuffer) {
    Start();
    OpenWithFewBuffers();
    MakeFrames(160, 120, 50);
    camera.StartGrabbing();
    while (Statistic("StatisticLostForBuffer") < 10) {
        std::this_thread::yield();
    }
    CGrabResultPtr result;
    for (std::uint64_t frame = 1; frame <= 4; ++frame) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        EXPECT_TRUE(result->GrabSucceeded());
        EXPECT_EQ(result->GetFrameId(), frame);
    }
    // One that began without a buffer may be in between.
    do {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
    } while (!result->GrabSucceeded());
    EXPECT_GE(result->GetFrameId(), 15U);
    camera.StopGrabbing();
    const std::int64_t sent = Statistic("StatisticSent");
    camera.Close();
    EXPECT_EQ(EndAndCount()["frames"], sent);
}

INSTANTIATE_TEST_SUITE_P(WithLoss, WithoutBuffers, testing::Values("0", "1"),
                         [](const auto& tested) { return std::string("Of") + tested.param; });

// Every frame that the camera has begun by then has one fate.
class StopInMidStream : public SimulatedGrabbing, public testing::WithParamInterface<bool> {};

TEST_P(StopInMidStream, LeavesNoFrameUnaccounted) {
    Start({"--loss", "1"});
    Open();
    MakeFrames(160, 120, 100);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(GetParam());
    for (int run = 0; run < 3; ++run) {
        camera.StartGrabbing();
        CGrabResultPtr result;
        for (int frame = 0; frame < 20; ++frame) {
            ASSERT_TRUE(camera.RetrieveResult(patience, result));
        }
        camera.StopGrabbing();
    }
    const std::int64_t sent = Statistic("StatisticSent");
    camera.Close();
    EXPECT_EQ(EndAndCount()["frames"], sent);
}

INSTANTIATE_TEST_SUITE_P(Resends, StopInMidStream, testing::Bool(), [](const auto& tested) {
    return std::string(tested.param ? "On" : "Off");
});

TEST_F(SimulatedGrabbing, ResendsThatAreNeverAnsweredLeaveNoFrameUnaccounted) {
    Start({"--loss", "1", "--resends", "ignore"});
    Open();
    MakeFrames(320, 240, 20);
    const Account account = GrabAll(40);
    EXPECT_GT(account.failed, 0U);
    EXPECT_EQ(account.whole + account.failed, 40U);
    EXPECT_EQ(Statistic("StatisticSent"), 40);
    EXPECT_EQ(EndAndCount()["frames"], 40);
}

TEST_F(SimulatedGrabbing, PacketsThatNeverCameAreCountedOneByOne) {
    Start({"--loss", "1"});
    Open();
    MakeFrames(320, 240, 50);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(false);
    const Account account = GrabAll(50);
    EXPECT_EQ(account.whole + account.failed, 50U);
    const std::int64_t missingPackets =
        CIntegerParameter(camera.GetTLNodeMap(), "MissingPackets").GetValue();
    EXPECT_EQ(EndAndCount()["droppedPackets"], missingPackets);
}

TEST_F(SimulatedGrabbing, PacketsThatCameWhenAskedForAgainAreCounted) {
    Start({"--fault", "every 2 frames: resent packets 3", "--keep", "20"});
    Open();
    MakeFrames(320, 240, 20);
    // Nothing is asked for twice because its answer is late.
    CIntegerParameter(camera.GetTLNodeMap(), "PacketTimeout").SetValue(1000);
    CIntegerParameter(camera.GetTLNodeMap(), "FrameRetention").SetValue(5000);
    EXPECT_EQ(GrabAll(20).whole, 20U);
    EXPECT_EQ(Statistic("StatisticResentPackets"), 30);
    EXPECT_EQ(EndAndCount()["resentPackets"], 30);
}

TEST_F(SimulatedGrabbing, FrameThatTheNetworkLostWholeIsAGapAndNoFailure) {
    Start({"--wire", "frame 5: drop all, deny resends"});
    Open();
    MakeFrames(320, 240, 20);
    LimitFrames(10);
    camera.StartGrabbing();
    CGrabResultPtr result;
    std::vector<std::uint64_t> ids;
    while (ids.size() < 9 && camera.RetrieveResult(patience, result)) {
        EXPECT_TRUE(result->GrabSucceeded());
        ids.push_back(result->GetFrameId());
    }
    camera.StopGrabbing();
    EXPECT_EQ(ids, (std::vector<std::uint64_t>{1, 2, 3, 4, 6, 7, 8, 9, 10}));
    EXPECT_EQ(Statistic("StatisticLostForBuffer"), 0);
}

TEST_F(SimulatedGrabbing, DoubledAndLatePacketsDoNoHarm) {
    Start({"--duplicate", "5", "--reorder", "5", "--keep", "50"});
    Open();
    MakeFrames(320, 240, 50);
    EXPECT_EQ(GrabAll(50).whole, 50U);
}

TEST_F(SimulatedGrabbing, EveryFateHasItsOwnReason) {
    Start({"--fault",
           "frame 2: missing packets 2; frame 4: lost end; frame 6: wrong size -100; frame 8: "
           "resent packets 3",
           "--resends", "ignore"});
    Open();
    MakeFrames(320, 240, 10);
    const Account account = GrabAll(8);
    Expect(account.errors, {missing, "The end of the frame didn't come in time.",
                            "The frame has 76700 bytes, its image needs 76800.", missing});
    EXPECT_EQ(Statistic("StatisticFailedMissingPackets"), 2);
    EXPECT_EQ(Statistic("StatisticFailedTimedOut"), 1);
    EXPECT_EQ(Statistic("StatisticFailedWrongSize"), 1);
}

// Of the first frame nothing is known but what the camera is set to.
TEST_F(SimulatedGrabbing, FirstFrameOfAStartHasItsGeometryAndReasonThoughItFails) {
    for (const char* fault : {"frame 1: drop leader", "frame 1: drop packets 3 to 5"}) {
        Start({"--wire", fault, "--resends", "ignore"});
        Open();
        MakeFrames(320, 240, 10);
        Set("OffsetX", 16);
        Set("OffsetY", 8);
        LimitFrames(1);
        camera.StartGrabbing(1);
        CGrabResultPtr result;
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        EXPECT_FALSE(result->GrabSucceeded());
        EXPECT_STREQ(result->GetErrorDescription().c_str(), missing);
        EXPECT_EQ(result->GetPixelType(), PixelType_Mono8);
        EXPECT_EQ(result->GetWidth(), 320U);
        EXPECT_EQ(result->GetHeight(), 240U);
        EXPECT_EQ(result->GetOffsetX(), 16U);
        EXPECT_EQ(result->GetOffsetY(), 8U);
        camera.DetachDevice();
        static_cast<void>(EndAndCount());
    }
}

// The camera says of the trailer that it is gone, and not that it is bad.
TEST_F(SimulatedGrabbing, EndThatCanNotBeSentAgainIsALostOne) {
    Start({"--wire", "frame 2: drop trailer, deny resends"});
    Open();
    MakeFrames(320, 240, 10);
    Expect(GrabAll(4).errors, {"The end of the frame didn't come in time."});
    EXPECT_EQ(Statistic("StatisticFailedTimedOut"), 1);
    EXPECT_GT(EndAndCount()["deniedPackets"], 0);
}

// The leader has the number of the frame.
TEST_F(SimulatedGrabbing, FramesThatLoseTheirLeaderHaveTheirPlaceAmongTheOthers) {
    Start({"--wire", "frame 5 to 25 every 10: drop leader", "--resends", "ignore"});
    OpenWithFewBuffers();
    MakeFrames(320, 240, 25);
    CIntegerParameter(camera.GetTLNodeMap(), "FrameRetention").SetValue(1000);
    // The few buffers still tell of the frames before.
    const Account account = GrabAll(30, Pace::OneByOne);
    EXPECT_EQ(account.whole, 27U);
    EXPECT_EQ(account.failed, 3U);
    EXPECT_EQ(account.lastId, 30U);
}

// With a long retention: nothing is waited for that has come. One by one, since without resends the
// next frame ends one that is marked, if they are received in one go.
class MarkedFrames : public SimulatedGrabbing, public testing::WithParamInterface<bool> {};

TEST_P(MarkedFrames, AreToldAsSuch) {
    Start({"--fault",
           "frame 2: bad trailer; frame 4: wrong size +100; frame 5: wrong size +3000; "
           "frame 6: wrong size +70000; frame 8: bad trailer"});
    Open();
    MakeFrames(320, 240, 10);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(GetParam());
    CIntegerParameter(camera.GetTLNodeMap(), "FrameRetention").SetValue(10000);
    const Account account = GrabAll(9, Pace::OneByOne);
    constexpr const char* bad = "The device marked the trailer of the frame as invalid.";
    constexpr const char* tooLong = "The frame has more bytes than its buffer.";
    Expect(account.errors, {bad, tooLong, tooLong, tooLong, bad});
    EXPECT_EQ(Statistic("StatisticFailedBadTrailer"), 2);
    EXPECT_EQ(Statistic("StatisticFailedWrongSize"), 3);
}

INSTANTIATE_TEST_SUITE_P(Resends, MarkedFrames, testing::Bool(), [](const auto& tested) {
    return std::string(tested.param ? "On" : "Off");
});

TEST_F(SimulatedGrabbing, FrameThatIsTooLongIsToldAsSuchThoughItsEndGotLost) {
    Start({"--fault", "frame 2: wrong size +3000", "--wire", "frame 2: drop trailer", "--resends",
           "ignore"});
    Open();
    MakeFrames(320, 240, 10);
    Expect(GrabAll(4).errors, {"The frame has more bytes than its buffer."});
}

// Frames in a row, taken late: each has its own reason.
TEST_F(SimulatedGrabbing, LostEndsAreToldFromGapsThoughSeveralFramesWait) {
    Start({"--fault", "frame 1: lost end; frame 2: missing packets 2; frame 3: lost end",
           "--resends", "ignore"});
    Open();
    MakeFrames(320, 240, 10);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(false);
    LimitFrames(4);
    camera.StartGrabbing();
    WaitUntilSent(4);
    std::vector<std::string> errors;
    CGrabResultPtr result;
    for (int frame = 0; frame < 4; ++frame) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        errors.emplace_back(result->GetErrorDescription().c_str());
    }
    Expect(errors, {"The end of the frame didn't come in time.", missing,
                    "The end of the frame didn't come in time.", ""});
}

TEST_F(SimulatedGrabbing, SizeOfPacketsIsNegotiatedWheneverThatIsWished) {
    Start();
    Open();
    MakeFrames(320, 240, 50);
    CIntegerParameter packetSize(camera.GetTLNodeMap(), "PacketSize");
    CBooleanParameter negotiate(camera.GetTLNodeMap(), "NegotiatePacketSize");
    EXPECT_FALSE(negotiate.GetValue());  // the size was set
    EXPECT_EQ(GrabAll(2).whole, 2U);
    EXPECT_EQ(packetSize.GetValue(), 1500);
    for (int round = 0; round < 2; ++round) {
        negotiate.SetValue(true);
        EXPECT_EQ(GrabAll(2).whole, 2U);
        EXPECT_GT(packetSize.GetValue(), 1500);
        EXPECT_FALSE(negotiate.GetValue());
        packetSize.SetValue(1500);
    }
    camera.Close();
    camera.Open();
    EXPECT_TRUE(CBooleanParameter(camera.GetTLNodeMap(), "NegotiatePacketSize").GetValue());
}

// The packets for trying that are larger don't get through.
TEST_F(SimulatedGrabbing, SizeOfPacketsIsNoMoreThanTheNetworkCarries) {
    for (const int most : {1500, 900}) {
        const Testing::SmallPackets network(most);
        Start();
        Open();
        Set("Width", 320);
        Set("Height", 240);
        EXPECT_EQ(GrabAll(3).whole, 3U);
        const std::int64_t size = CIntegerParameter(camera.GetTLNodeMap(), "PacketSize").GetValue();
        EXPECT_LE(size, most);
        EXPECT_GT(size, most / 2);
        camera.DetachDevice();
        EXPECT_GT(EndAndCount()["sendErrors"], 0) << "larger ones were not tried";
    }
}

// The camera goes on meanwhile: what it sends then is lost, and nothing else. With a buffer for
// every frame, so that none is lost for want of one.
TEST_F(SimulatedGrabbing, ShortSilencesCostFramesAndNoCamera) {
    constexpr std::uint64_t frames = 100;
    Start({"--wire", "on signal: silence for 100 ms"});
    Open();
    MakeFrames(64, 64, 100);
    LimitFrames(frames);
    // A camera that doesn't get a processor all the time loses nothing by a silence.
    constexpr int enough = 3;
    int gaps = 0;
    for (int run = 0; run < 20 && gaps < enough; ++run) {
        camera.StartGrabbing();
        CGrabResultPtr result;
        for (std::uint64_t last = 0; last < frames / 2; last = result->GetFrameId()) {
            ASSERT_TRUE(camera.RetrieveResult(patience, result));
            EXPECT_GT(result->GetFrameId(), last);
            gaps += result->GetFrameId() > last + 1 ? 1 : 0;
            if (last == 0) {
                BeginFaults();
            }
        }
        camera.StopGrabbing();
        EXPECT_EQ(Statistic("StatisticLostForBuffer"), 0);
    }
    EXPECT_GE(gaps, enough);
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
}

TEST_F(SimulatedGrabbing, LongFrameNumbersCountOn) {
    Start({"--first-block", "65530"});
    Open();
    CBooleanParameter(camera.GetNodeMap(), "GevGVSPExtendedIDMode").SetValue(true);
    MakeFrames(320, 240, 50);
    const Account account = GrabAll(12);
    EXPECT_EQ(account.whole, 12U);
    EXPECT_EQ(account.lastId, 12U);
}

TEST_F(SimulatedGrabbing, ZippedDescriptionIsRead) {
    Start({"--zip", "--user-name", "Left"});
    Open();
    EXPECT_EQ(camera.GetDeviceInfo().GetUserDefinedName(), "Left");
    EXPECT_EQ(camera.GetDeviceInfo().GetFriendlyName(), "Left (S1)");
    MakeFrames(320, 240, 50);
    EXPECT_EQ(GrabAll(3).whole, 3U);
}

// With the kind of payload that cameras of GigE Vision 2.0 say, and with that of those before.
class ChunksOfEveryVersion : public SimulatedGrabbing,
                             public testing::WithParamInterface<const char*> {};

TEST_P(ChunksOfEveryVersion, AreReadFromTheEndOfTheFrame) {
    Start({"--payload-type", GetParam()});
    Open();
    MakeFrames(320, 240, 50);
    CBooleanParameter(camera.GetNodeMap(), "ChunkModeActive").SetValue(true);
    for (const char* chunk : {"FrameID", "Timestamp", "ExposureTime"}) {
        Choose("ChunkSelector", chunk);
        CBooleanParameter enable(camera.GetNodeMap(), "ChunkEnable");
        if (enable.IsWritable()) {
            enable.SetValue(true);
        }
    }
    LimitFrames(5);
    camera.StartGrabbing(5);
    CGrabResultPtr result;
    std::int64_t frame = 0;
    while (camera.IsGrabbing()) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        ASSERT_TRUE(result->GrabSucceeded()) << result->GetErrorDescription().c_str();
        ASSERT_TRUE(result->IsChunkDataAvailable());
        EXPECT_EQ(result->GetImageSize(), 320U * 240U);
        GenApi::INodeMap& chunks = result->GetChunkDataNodeMap();
        const std::int64_t id = CIntegerParameter(chunks, "ChunkFrameID").GetValue();
        EXPECT_GT(id, frame);
        frame = id;
        EXPECT_EQ(
            static_cast<std::uint64_t>(CIntegerParameter(chunks, "ChunkTimestamp").GetValue()),
            result->GetTimeStamp());
        EXPECT_EQ(CFloatParameter(chunks, "ChunkExposureTime").GetValue(),
                  CFloatParameter(camera.GetNodeMap(), "ExposureTime").GetValue());
    }
}

INSTANTIATE_TEST_SUITE_P(PayloadType, ChunksOfEveryVersion, testing::Values("0x4001", "5"),
                         [](const auto& tested) { return std::string("Is") + tested.param; });

// A clock that is slower than one of nanoseconds, and none that divides into them.
TEST_F(SimulatedGrabbing, TimesOfFramesAreThoseOfTheirChunks) {
    Start({"--tick-frequency", "123456789"});
    Open();
    MakeFrames(320, 240, 50);
    CBooleanParameter(camera.GetNodeMap(), "ChunkModeActive").SetValue(true);
    Choose("ChunkSelector", "Timestamp");
    CBooleanParameter(camera.GetNodeMap(), "ChunkEnable").SetValue(true);
    LimitFrames(5);
    camera.StartGrabbing(5);
    CGrabResultPtr result;
    while (camera.IsGrabbing()) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        ASSERT_TRUE(result->GrabSucceeded()) << result->GetErrorDescription().c_str();
        EXPECT_EQ(
            static_cast<std::uint64_t>(
                CIntegerParameter(result->GetChunkDataNodeMap(), "ChunkTimestamp").GetValue()),
            result->GetTimeStamp());
    }
}

// Smaller than what the camera may send, and without a picture.
TEST_F(SimulatedGrabbing, FramesOfChunksOnlyHaveTheirChunks) {
    Start({"--chunks-only"});
    Open();
    MakeFrames(320, 240, 50);
    CBooleanParameter(camera.GetNodeMap(), "ChunkModeActive").SetValue(true);
    Choose("ChunkSelector", "FrameID");
    CBooleanParameter(camera.GetNodeMap(), "ChunkEnable").SetValue(true);
    LimitFrames(3);
    camera.StartGrabbing(3);
    CGrabResultPtr result;
    for (std::int64_t frame = 1; camera.IsGrabbing(); ++frame) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        ASSERT_TRUE(result->GrabSucceeded()) << result->GetErrorDescription().c_str();
        ASSERT_TRUE(result->IsChunkDataAvailable());
        EXPECT_EQ(result->GetPayloadSize(), 16U);
        EXPECT_EQ(CIntegerParameter(result->GetChunkDataNodeMap(), "ChunkFrameID").GetValue(),
                  frame);
    }
}

// Raw data, a file, a picture as JPEG, and what no version knows.
class FramesOfOtherKinds : public SimulatedGrabbing,
                           public testing::WithParamInterface<const char*> {};

TEST_P(FramesOfOtherKinds, FailWithAReasonEachAndMakeNoNoise) {
    const Testing::Criticals criticals;
    Start({"--payload-type", GetParam()});
    Open();
    MakeFrames(320, 240, 50);
    constexpr const char* unknown = "The kind of the frame's payload is not supported.";
    Expect(GrabAll(3).errors, {unknown, unknown, unknown});
    EXPECT_EQ(criticals.Count(), 0);
}

INSTANTIATE_TEST_SUITE_P(PayloadType, FramesOfOtherKinds,
                         testing::Values("0x2", "0x3", "0x6", "0x9", "0x7000"),
                         [](const auto& tested) { return std::string("Is") + tested.param; });

TEST_F(SimulatedGrabbing, ProgramInControlIsNamedWithItsAddress) {
    Start();
    Open();
    const auto late = FindDevice(serialNumber);
    CInstantCamera second(late.get());
    try {
        second.Open();
        FAIL() << "a camera was opened twice";
    } catch (const GenICam::AccessException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "Device 'EmulatedCamera (S1)' is in use by another program at 127.0.0.1 "
                     "(127.0.0.1).");
    }
}

// The camera's memory knows words; texts have any length.
TEST_F(SimulatedGrabbing, BytesBesideAShortWriteStayAsTheyAre) {
    Start({"--user-name", "abcdefghijk"});
    Open();
    Transport::IDevice& device = *device_->GetTransportDevice();
    constexpr std::int64_t userName = 0xE8;
    device.Write(userName + 3, "XYZ", 3);
    char text[16] = {};
    device.Read(userName, text, sizeof text);
    EXPECT_STREQ(text, "abcXYZghijk");
    char part[5] = {};
    device.Read(userName + 1, part, 4);
    EXPECT_STREQ(part, "bcXY");
}

}  // namespace
}  // namespace Orlix::Aravis
