// Images of a camera behind a network.
#include "aravis/support/fakecameratest.h"
#include "aravis/support/toldmessages.h"
#include "gcbase/gcexception.h"
#include "genapi/genapi.h"
#include "orlixcamera/grabresultdata.h"
#include "orlixcamera/imageformatconverter.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Aravis {
namespace {

class Grabbing : public Testing::FakeCameraTest {
protected:
    // The camera sends nothing again, and a busy computer loses packets: those frames don't count.
    static void TakeWhole(CInstantCamera& camera, CGrabResultPtr& result) {
        do {
            ASSERT_TRUE(camera.RetrieveResult(patience, result));
        } while (!result->GrabSucceeded());
    }
};

TEST_F(Grabbing, FramesArriveWholeAndInOrder) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    CIntegerParameter(camera.GetNodeMap(), "Width").SetValue(320);
    CIntegerParameter(camera.GetNodeMap(), "Height").SetValue(200);
    // Twice, for each start makes a new stream.
    for (int run = 0; run < 2; ++run) {
        camera.StartGrabbing();
        std::uint64_t last = 0;
        CGrabResultPtr result;
        for (int frame = 0; frame < 20; ++frame) {
            TakeWhole(camera, result);
            EXPECT_GT(result->GetFrameId(), last);
            last = result->GetFrameId();
            EXPECT_EQ(result->GetWidth(), 320U);
            EXPECT_EQ(result->GetHeight(), 200U);
            EXPECT_EQ(result->GetPixelType(), PixelType_Mono8);
            EXPECT_EQ(result->GetPayloadSize(), 320U * 200U);
        }
        camera.StopGrabbing();
    }
}

TEST_F(Grabbing, FramesCanBeConverted) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.StartGrabbing();
    CGrabResultPtr result;
    TakeWhole(camera, result);
    CImageFormatConverter converter;
    converter.OutputPixelFormat.SetValue(PixelType_RGB8Packed);
    COrlixImage image;
    converter.Convert(image, result->GetBuffer(), result->GetImageSize(), result->GetPixelType(),
                      result->GetWidth(), result->GetHeight(), result->GetPaddingX(),
                      ImageOrientation_TopDown);
    const auto* const gray = static_cast<const std::uint8_t*>(result->GetBuffer());
    const auto* const color = static_cast<const std::uint8_t*>(image.GetBuffer());
    for (std::size_t index = 0; index < result->GetImageSize(); index += 997) {
        EXPECT_EQ(color[3 * index], gray[index]);
        EXPECT_EQ(color[3 * index + 2], gray[index]);
    }
}

TEST_F(Grabbing, CameraOfAnotherProgramIsInUseAndTellsItsAddress) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto holder = FindDevice("T1");
    const auto late = FindDevice("T1");
    CInstantCamera first(holder.get());
    first.Open();
    CInstantCamera second(late.get());
    try {
        second.Open();
        FAIL() << "a camera was opened twice";
    } catch (const GenICam::AccessException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "Device 'Fake (T1)' is in use by another program (127.0.0.1).");
    }
    first.Close();
    second.Open();
    EXPECT_TRUE(second.IsOpen());
}

TEST_F(Grabbing, LayerFeaturesShowAndSetHowFramesTravel) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    GenApi::INodeMap& layer = camera.GetTLNodeMap();
    CIntegerParameter packetSize(layer, "PacketSize");
    packetSize.SetValue(1000);
    EXPECT_EQ(packetSize.GetValue(), 1000);
    EXPECT_FALSE(CBooleanParameter(layer, "NegotiatePacketSize").GetValue());
    CIntegerParameter(layer, "SocketBufferSize").SetValue(2000000);
    CBooleanParameter(layer, "PacketResend").SetValue(false);
    camera.StartGrabbing();
    CGrabResultPtr result;
    for (int frame = 0; frame < 5; ++frame) {
        TakeWhole(camera, result);
    }
    EXPECT_EQ(packetSize.GetValue(), 1000);
    EXPECT_GT(CIntegerParameter(layer, "GrantedSocketBufferSize").GetValue(), 0);
    EXPECT_GE(CIntegerParameter(layer, "DeliveredFrames").GetValue(), 5);
    CIntegerParameter heartbeat(layer, "HeartbeatTimeout");
    EXPECT_GT(heartbeat.GetValue(), 0);
    // The camera would be lost with less than comes from this side.
    EXPECT_THROW(heartbeat.SetValue(900), GenICam::OutOfRangeException);
}

TEST_F(Grabbing, AddressesBeyond32BitsAreRefused) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    const GenApi::CPortPtr port(camera.GetNodeMap().GetNode("Device"));
    ASSERT_TRUE(port.IsValid());
    std::uint32_t word = 0;
    port->Read(&word, 0, sizeof word);
    EXPECT_THROW(port->Read(&word, std::int64_t{1} << 32, sizeof word),
                 GenICam::InvalidArgumentException);
    EXPECT_THROW(port->Write(&word, 0xFFFFFFFE, sizeof word), GenICam::InvalidArgumentException);
}

// What the kernel's limit leaves of the socket's buffer is told once for each wish.
TEST_F(Grabbing, SocketBufferThatTheKernelCutsIsToldWithTheSettingForMore) {
    const auto process = StartCamera("127.0.0.1", "T1");
    const auto device = FindDevice("T1");
    CInstantCamera camera(device.get());
    camera.Open();
    const Testing::ToldMessages told;
    CIntegerParameter size(camera.GetTLNodeMap(), "SocketBufferSize");
    const std::string hint = "To allow more: sysctl -w net.core.rmem_max=";
    for (const std::int64_t wanted : {2000000000, 1900000000}) {
        size.SetValue(wanted);
        for (int run = 0; run < 2; ++run) {
            camera.StartGrabbing();
            camera.StopGrabbing();
        }
        EXPECT_EQ(told.Count(hint + std::to_string(wanted)), 1U);
    }
    EXPECT_EQ(told.Count(hint), 2U);
}

}  // namespace
}  // namespace Orlix::Aravis
