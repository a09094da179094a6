// Frames over a network that is not perfect, to the last one accounted for.
#include <unistd.h>

#include <thread>

#include "aravis/support/simulatedcameratest.h"
#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
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

    // Takes the frames of an acquisition that ends by itself; those that the network lost whole are
    // gaps in the numbers.
    [[nodiscard]] Account GrabAll(std::uint64_t count) {
        LimitFrames(static_cast<std::int64_t>(count));
        Account account;
        camera.StartGrabbing();
        CGrabResultPtr result;
        while (account.whole + account.failed < count &&
               camera.RetrieveResult(patience, result, TimeoutHandling_Return)) {
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
    Start({"--loss", "1"});
    Open();
    MakeFrames(640, 480, 50);
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
    MakeFrames(640, 480, 50);
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

// Nobody takes frames until the acquisition is over: what the buffers
// didn't hold has found none.
TEST_F(SimulatedGrabbing, FramesThatFindNoBufferAreCounted) {
    Start();
    camera.MaxNumBuffer.SetValue(4);
    Open();
    MakeFrames(640, 480, 50);
    LimitFrames(20);
    camera.StartGrabbing();
    while (Statistic("StatisticLostForBuffer") + 4 < 20) {
        std::this_thread::yield();
    }
    CGrabResultPtr result;
    for (std::uint64_t frame = 1; frame <= 4; ++frame) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        EXPECT_TRUE(result->GrabSucceeded());
        EXPECT_EQ(result->GetFrameId(), frame);
    }
    camera.StopGrabbing();
    EXPECT_EQ(Statistic("StatisticSent"), 20);
    EXPECT_EQ(Statistic("StatisticDelivered"), 4);
    EXPECT_EQ(Statistic("StatisticLostForBuffer"), 16);
}

TEST_F(SimulatedGrabbing, DoubledAndLatePacketsDoNoHarm) {
    Start({"--duplicate", "5", "--reorder", "5"});
    Open();
    MakeFrames(640, 480, 50);
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

// The leader has the number of the frame.
TEST_F(SimulatedGrabbing, FramesThatLoseTheirLeaderHaveTheirPlaceAmongTheOthers) {
    Start({"--wire", "frame 5 to 45 every 10: drop leader", "--resends", "ignore"});
    camera.MaxNumBuffer.SetValue(4);
    Open();
    MakeFrames(320, 240, 25);
    const Account account = GrabAll(50);
    EXPECT_EQ(account.whole, 45U);
    EXPECT_EQ(account.failed, 5U);
    EXPECT_EQ(account.lastId, 50U);
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

TEST_F(SimulatedGrabbing, ChunksAreReadFromTheEndOfTheFrame) {
    Start();
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
                     "Device 'EmulatedCamera (S1)' is in use by a program at 127.0.0.1 "
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
