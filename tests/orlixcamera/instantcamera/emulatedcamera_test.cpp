// The instant camera with an emulated one that has chunks, events and faults.
#include <cstring>
#include <set>

#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

class Events final : public CCameraEventHandler {
public:
    void OnCameraEvent(CInstantCamera&, std::intptr_t, GenApi::INode* node) override {
        values.Add(CIntegerParameter(node).GetValueOrDefault(-1));
    }
    Record<std::int64_t> values;
};

class EmulatedInstantCamera : public testing::Test {
protected:
    void SetUp() override {
        camera.GrabCameraEvents.SetValue(true);
        camera.Attach(device.get());
        camera.Open();
        set("Width", 64);
        set("Height", 48);
        CFloatParameter(camera.GetNodeMap(), "ExposureTime").SetValue(200);
        camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
    }
    void TearDown() override { static_cast<void>(camera.DetachDevice()); }

    void set(const char* name, std::int64_t value) {
        CIntegerParameter(camera.GetNodeMap(), name).SetValue(value);
    }
    void choose(const char* name, const char* value) {
        CEnumParameter(camera.GetNodeMap(), name).SetValue(value);
    }
    void setFaults(const char* script) {
        CStringParameter(camera.GetNodeMap(), "FaultScript").SetValue(script);
    }
    void start(std::size_t frames) {
        camera.StartGrabbing(frames, GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
    }
    [[nodiscard]] std::int64_t count(const char* name) {
        return CIntegerParameter(camera.GetStreamGrabberNodeMap(), name).GetValue();
    }
    void expectAccount() {
        EXPECT_EQ(count("StatisticSent"), count("StatisticDelivered") + count("StatisticFailed") +
                                              count("StatisticLostForBuffer") +
                                              count("StatisticSkipped"));
    }

    const std::shared_ptr<ICameraLayer> layer = CreateCameraLayer(CreateEmulatedCameras(1));
    const std::shared_ptr<ICameraDevice> device =
        layer->CreateDevice(layer->EnumerateDevices().at(0));
    Images images;
    Events events;
    CInstantCamera camera;
};

TEST_F(EmulatedInstantCamera, ChunksTellOfTheirOwnFrame) {
    CBooleanParameter(camera.GetNodeMap(), "ChunkModeActive").SetValue(true);
    for (const char* name : {"FrameID", "Timestamp", "ExposureTime", "Gain"}) {
        choose("ChunkSelector", name);
        static_cast<void>(CBooleanParameter(camera.GetNodeMap(), "ChunkEnable").TrySetValue(true));
    }
    start(20);
    ASSERT_TRUE(images.results.WaitFor(20));
    for (const CGrabResultPtr& result : images.results.Get()) {
        ASSERT_TRUE(result->GrabSucceeded()) << result->GetErrorDescription().c_str();
        ASSERT_TRUE(result->IsChunkDataAvailable());
        GenApi::INodeMap& chunks = result->GetChunkDataNodeMap();
        EXPECT_EQ(CIntegerParameter(chunks, "ChunkFrameID").GetValue(),
                  static_cast<std::int64_t>(result->GetFrameId()));
        EXPECT_EQ(CFloatParameter(chunks, "ChunkExposureTime").GetValue(), 200);
        EXPECT_GT(result->GetPayloadSize(), result->GetImageSize());
    }
}

TEST_F(EmulatedInstantCamera, EventsComeWithTheFrames) {
    choose("EventSelector", "ExposureEnd");
    choose("EventNotification", "On");
    camera.RegisterCameraEventHandler(&events, "EventExposureEndFrameID", 0,
                                      CameraEventRegistrationMode_ReplaceAll, Cleanup_None,
                                      CameraEventAvailability_Optional);
    start(5);
    ASSERT_TRUE(events.values.WaitFor(5));
    const auto values = events.values.Get();
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
    static_cast<void>(camera.DetachDevice());
    camera.DeregisterCameraEventHandler(&events, "EventExposureEndFrameID");
}

TEST_F(EmulatedInstantCamera, EachFaultOfAFrameIsCountedWithItsReason) {
    CBooleanParameter(camera.GetNodeMap(), "ChunkModeActive").SetValue(true);
    setFaults(
        "frame 2: missing packets 1; frame 3: wrong size -8; frame 4: bad trailer; "
        "frame 5: lost end; frame 6: cut chunk; frame 7: late 5 ms; frame 8: unknown chunk");
    start(10);
    ASSERT_TRUE(images.results.WaitFor(10));
    camera.StopGrabbing();
    std::set<std::uint64_t> failed;
    for (const CGrabResultPtr& result : images.results.Get()) {
        if (!result->GrabSucceeded()) {
            failed.insert(result->GetFrameId());
            EXPECT_NE(result->GetErrorDescription(), "");
        }
    }
    EXPECT_EQ(failed, (std::set<std::uint64_t>{2, 3, 4, 5, 6}));
    EXPECT_EQ(count("StatisticFailedMissingPackets"), 1);
    EXPECT_EQ(count("StatisticFailedWrongSize"), 1);
    EXPECT_EQ(count("StatisticFailedBadTrailer"), 2);
    EXPECT_EQ(count("StatisticFailedTimedOut"), 1);
    EXPECT_EQ(count("StatisticDelivered"), 5);
    expectAccount();
}

TEST_F(EmulatedInstantCamera, ARefusedStartIsTheCallersAndARefusedStopIsNot) {
    setFaults("once start: refuse; once stop: refuse");
    EXPECT_THROW(start(1), GenICam::AccessException);
    EXPECT_FALSE(camera.IsGrabbing());
    start(1);
    ASSERT_TRUE(images.results.WaitFor(1));
    camera.StopGrabbing();
    EXPECT_FALSE(camera.IsGrabbing());
    expectAccount();
}

TEST_F(EmulatedInstantCamera, LostWhileStartingStreamingOrStoppingCanBeUsedWhenItIsBack) {
    for (const char* script : {"once start: unplug for 1 ms", "once frame 3: unplug for 1 ms",
                               "once stop: unplug for 1 ms", "once write Width: unplug for 1 ms"}) {
        const bool isLostByItself = std::strstr(script, "frame") != nullptr;
        setFaults(script);
        images.results.Clear();
        try {
            set("Width", 64);
            camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
            while (camera.IsGrabbing() && (isLostByItself || images.results.Count() == 0)) {
                std::this_thread::yield();
            }
            camera.StopGrabbing();
        } catch (const GenICam::GenericException&) {
            // The camera went while something needed it.
        }
        while (!camera.IsCameraDeviceRemoved()) {
            std::this_thread::yield();  // the news comes on a thread of its own
        }
        static_cast<void>(camera.DetachDevice());
        camera.Attach(device.get());
        while (!camera.IsOpen()) {
            try {
                camera.Open();
            } catch (const GenICam::RuntimeException&) {
                std::this_thread::yield();  // not back yet
            }
        }
        setFaults("");
        set("Width", 64);
        set("Height", 48);
        images.results.Clear();
        start(1);
        ASSERT_TRUE(images.results.WaitFor(1));
        camera.StopGrabbing();
        expectAccount();
    }
}

}  // namespace
}  // namespace CameraTest
