// What the faults of a script look like through the seam.
#include <gtest/gtest.h>

#include <future>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"
#include "orlixcamera/emulatedcameras.h"
#include "support/sleeper.h"

namespace {

using namespace EmulatedTest;
using namespace std::chrono_literals;
using Transport::FrameFate;
using Transport::StreamBuffer;

struct Sink final : Transport::IDeviceSink {
    void OnEvent(const Transport::EventMessage& message) override {
        if (++events == wanted) {
            enough.set_value(message.eventId);
        }
    }
    void OnLost() override { lost.set_value(); }

    int events = 0;
    int wanted = 0;
    std::promise<std::uint16_t> enough;
    std::promise<void> lost;
};

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const GenICam::GenericException& error) {
        return error.GetDescription();
    }
    return "no error";
}

class EmulatedFaults : public testing::Test {
protected:
    ~EmulatedFaults() override { camera.device->SetSink(nullptr); }

    void script(const char* text) const { camera.features.set("FaultScript", text); }
    void startFrames(std::size_t count) {
        camera.features.set("AcquisitionMode", "MultiFrame");
        camera.features.integer("AcquisitionFrameCount")
            ->SetValue(static_cast<std::int64_t>(count));
        camera.start(count);
    }
    void waitFor(bool plugged) {
        while (layer.Enumerate().empty() == plugged) {
            std::this_thread::yield();
        }
    }

    Layer layer{1};
    Sink sink;
    StreamingCamera camera{layer};
};

TEST_F(EmulatedFaults, EveryFrameHasTheFateOfTheScriptAndItsReason) {
    script(
        "frame 2: missing packets 2\n"
        "frame 3: wrong size -16; frame 4: wrong size +16\n"
        "frame 5: bad trailer; frame 6: lost end\n"
        "frame 7: resent packets 4");
    startFrames(8);
    const std::vector<std::pair<FrameFate, std::string>> wanted = {
        {FrameFate::Delivered, ""},
        {FrameFate::MissingPackets, "2 of 3 packets of the frame are missing."},
        {FrameFate::WrongSize, "The frame has 3056 bytes instead of 3072."},
        {FrameFate::WrongSize, "The frame has 3088 bytes instead of 3072."},
        {FrameFate::BadTrailer, "The device marked the trailer of the frame as invalid."},
        {FrameFate::TimedOut, "The end of the frame didn't come in time."},
        {FrameFate::Delivered, ""},
        {FrameFate::Delivered, ""},
    };
    for (const auto& [fate, error] : wanted) {
        const StreamBuffer* const buffer = camera.wait();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->fate, fate) << buffer->frameId;
        EXPECT_EQ(buffer->error, error.c_str());
        EXPECT_LE(buffer->filled, buffer->capacity);
    }
    const auto statistics = camera.stream->GetStatistics();
    EXPECT_EQ(statistics.delivered, 3U);
    EXPECT_EQ(statistics.failed, 5U);
    EXPECT_EQ(statistics.missingPackets, 2U);
    EXPECT_EQ(statistics.resentPackets, 4U);
    EXPECT_EQ(camera.features.integer("DeviceStreamFramesSent")->GetValue(), 8);
}

TEST_F(EmulatedFaults, SentFramesAreTheSumOfAllFates) {
    script("every 3 frames: missing packets 1; every 7 frames: lost end");
    camera.features.set("AcquisitionMode", "MultiFrame");
    camera.features.integer("AcquisitionFrameCount")->SetValue(500);
    camera.features.set("ExposureTime", "1");
    camera.start(8);  // so many are received in any case
    while (camera.features.integer("Acquiring")->GetValue() != 0) {
        if (StreamBuffer* const buffer = camera.stream->Wait(1ms)) {
            camera.stream->Queue(*buffer);
        }
    }
    camera.stream->Stop();
    const auto statistics = camera.stream->GetStatistics();
    EXPECT_GT(statistics.failed, 0U);
    EXPECT_EQ(statistics.delivered + statistics.failed + statistics.missedForBuffer, 500U);
    EXPECT_EQ(camera.features.integer("DeviceStreamFramesSent")->GetValue(), 500);
}

TEST_F(EmulatedFaults, MissingPacketsLeaveAHoleInThePicture) {
    script("frame 1: missing packets 1");
    camera.features.set("TestPattern", "White");
    startFrames(1);
    const auto* const data = static_cast<const std::uint8_t*>(camera.wait()->data);
    EXPECT_EQ(data[1439], 255);
    EXPECT_EQ(data[1440], 0);
    EXPECT_EQ(data[2879], 0);
    EXPECT_EQ(data[2880], 255);
}

TEST_F(EmulatedFaults, CutChunkIsAFrameThatTheAdapterRefuses) {
    script("frame 2: cut chunk");
    camera.features.set("ChunkModeActive", "1");
    camera.features.set("ChunkEnable", "1");
    startFrames(2);
    for (const bool whole : {true, false}) {
        const StreamBuffer* const buffer = camera.wait();
        EXPECT_EQ(buffer->fate, FrameFate::Delivered);
        EXPECT_EQ(
            CChunkAdapterGEV().CheckBufferLayout(static_cast<const std::uint8_t*>(buffer->data),
                                                 static_cast<std::int64_t>(buffer->filled)),
            whole);
    }
}

TEST_F(EmulatedFaults, UnknownChunkComesBesideTheOthers) {
    camera.features.set("ChunkModeActive", "1");
    camera.features.set("ChunkEnable", "1");
    const std::size_t before = camera.payload();
    script("frame 1: unknown chunk");
    EXPECT_EQ(camera.payload(), before + 20);
    startFrames(2);
    CChunkAdapterGEV adapter(&camera.features.map());
    AttachStatistics_t counts;
    for (const int chunks : {3, 2}) {
        const StreamBuffer* const buffer = camera.wait();
        adapter.AttachBuffer(static_cast<std::uint8_t*>(buffer->data),
                             static_cast<std::int64_t>(buffer->filled), &counts);
        EXPECT_EQ(counts.NumChunks, chunks);
        EXPECT_EQ(counts.NumAttachedChunks, 1);
    }
}

TEST_F(EmulatedFaults, LateFrameComesAfterItsTime) {
    script("frame 2: late 30 ms");
    startFrames(2);
    const std::uint64_t first = camera.wait()->timestamp;
    const StreamBuffer* const late = camera.wait();
    EXPECT_EQ(late->fate, FrameFate::Delivered);
    EXPECT_GT(late->timestamp, first);
    const auto start = std::chrono::steady_clock::time_point(
        std::chrono::nanoseconds(static_cast<std::int64_t>(late->timestamp)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
}

TEST_F(EmulatedFaults, EventStormTellsSoManyTestEvents) {
    script("frame 1: events 500, events 1000000000");
    camera.features.set("EventSelector", "Test");
    camera.features.set("EventNotification", "On");
    sink.wanted = 500;
    camera.device->SetSink(&sink);
    startFrames(1);
    EXPECT_EQ(sink.enough.get_future().get(), 0x9006);
}

TEST_F(EmulatedFaults, RefusedRegisterSaysSo) {
    script("write ExposureTime: refuse; once write Gain: refuse; read DeviceUserID: refuse");
    EXPECT_EQ(errorOf([&] { camera.features.set("ExposureTime", "77"); }),
              "Write of register 'ExposureTime' of device 'EmulatedCamera (EMU-0001)' is refused.");
    EXPECT_THROW(camera.features.set("Gain", "1"), GenICam::AccessException);
    camera.features.set("Gain", "1");
    EXPECT_THROW(static_cast<void>(camera.features.get("DeviceUserID")), GenICam::AccessException);
    script("");
    camera.features.set("ExposureTime", "77");
}

TEST_F(EmulatedFaults, RegisterTimesOutAndALossEndsTheWait) {
    script("write ExposureTime: time out 5 ms; write Gain: time out 1000 s");
    EXPECT_EQ(errorOf([&] { camera.features.set("ExposureTime", "77"); }),
              "Write of register 'ExposureTime' of device 'EmulatedCamera (EMU-0001)' timed out.");
    EXPECT_THROW(camera.features.set("ExposureTime", "77"), GenICam::TimeoutException);
    Orlix::Test::Sleeper sleeper;
    auto writing = std::async(std::launch::async, [&] {
        return errorOf([&] {
            const double value = 1;
            sleeper.GoIn();
            camera.device->Write(0x1300, &value, sizeof value);
        });
    });
    sleeper.WaitUntilAsleep();
    layer.Unplug(0);
    EXPECT_EQ(writing.get(), "Device 'EmulatedCamera (EMU-0001)' was removed.");
}

TEST_F(EmulatedFaults, DeviceCanBeInUseByAnother) {
    script("once open: in use by \"line 4 (10.0.0.7)\"");
    camera.stream.reset();
    camera.device->Close();
    EXPECT_EQ(errorOf([&] { camera.device->Open(); }),
              "Device 'EmulatedCamera (EMU-0001)' is in use by line 4 (10.0.0.7).");
    EXPECT_FALSE(camera.device->IsOpen());
    camera.device->Open();
    EXPECT_TRUE(camera.device->IsOpen());
}

TEST_F(EmulatedFaults, OpeningMayTimeOut) {
    script("once open: time out 5 ms");
    camera.stream.reset();
    camera.device->Close();
    EXPECT_EQ(errorOf([&] { camera.device->Open(); }),
              "Device 'EmulatedCamera (EMU-0001)' can't be reached.");
    camera.device->Open();
}

TEST_F(EmulatedFaults, UnplugWhileStreamingCutsTheFrame) {
    script("frame 3: unplug");
    camera.device->SetSink(&sink);
    camera.start(5);
    EXPECT_EQ(camera.wait()->fate, FrameFate::Delivered);
    EXPECT_EQ(camera.wait()->fate, FrameFate::Delivered);
    const StreamBuffer* const cut = camera.wait();
    EXPECT_EQ(cut->fate, FrameFate::Aborted);
    EXPECT_EQ(cut->error, "The device was lost during the frame.");
    EXPECT_EQ(cut->filled, 64U * 48 / 2);
    EXPECT_THROW(static_cast<void>(camera.wait()), GenICam::RuntimeException);
    sink.lost.get_future().get();
    EXPECT_TRUE(layer.Enumerate().empty());
    camera.stream->Stop();
    EXPECT_EQ(camera.takeBackAll(), 2U);
}

TEST_F(EmulatedFaults, UnplugAtAFrameThatFindsNoBufferIsOneToo) {
    script("frame 2: unplug");
    camera.device->SetSink(&sink);
    camera.start(1);
    EXPECT_EQ(camera.wait()->fate, FrameFate::Delivered);
    ASSERT_EQ(sink.lost.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(layer.Enumerate().empty());
    EXPECT_EQ(camera.stream->GetStatistics().missedForBuffer, 1U);
}

TEST_F(EmulatedFaults, UnplugWhileStartingFailsTheCommand) {
    script("start: unplug");
    camera.device->SetSink(&sink);
    EXPECT_EQ(errorOf([&] { camera.start(2); }), "Device 'EmulatedCamera (EMU-0001)' was removed.");
    sink.lost.get_future().get();
    camera.stream->Stop();
}

TEST_F(EmulatedFaults, UnplugWhileStoppingFailsTheCommand) {
    script("stop: unplug");
    camera.device->SetSink(&sink);
    camera.start(2);
    ASSERT_NE(camera.wait(), nullptr);
    EXPECT_EQ(errorOf([&] { camera.features.execute("AcquisitionStop"); }),
              "Device 'EmulatedCamera (EMU-0001)' was removed.");
    sink.lost.get_future().get();
    camera.stream->Stop();
}

TEST_F(EmulatedFaults, UnplugWhenIdleNeedsNoCall) {
    camera.device->SetSink(&sink);
    script("idle 1 ms: unplug");
    sink.lost.get_future().get();
    EXPECT_TRUE(layer.Enumerate().empty());
}

TEST_F(EmulatedFaults, AcquisitionIsNotIdle) {
    camera.features.set("TriggerMode", "On");
    camera.start(1);
    camera.device->SetSink(&sink);
    script("idle 1 ms: unplug");
    camera.features.execute("TriggerSoftware");
    EXPECT_EQ(camera.wait()->fate, FrameFate::Delivered);
    EXPECT_EQ(layer.Enumerate().size(), 1U);
    camera.features.execute("AcquisitionStop");
    sink.lost.get_future().get();
}

TEST_F(EmulatedFaults, CameraComesBackAfterItsTimeAndKeepsItsScript) {
    script("once start: unplug for 1 ms; write Width: refuse");
    EXPECT_THROW(camera.start(2), GenICam::RuntimeException);
    camera.stream.reset();
    camera.device->Close();
    waitFor(true);
    camera.device->Open();
    camera.features.map().InvalidateNodes();
    EXPECT_THROW(camera.features.integer("Width")->SetValue(64), GenICam::AccessException);
    camera.features.execute("AcquisitionStart");
}

// The agenda does what is due in the order of its times, so the last task comes behind the end of
// the first unplug.
TEST(EmulatedUnplug, ForATimeDoesNotEndALaterOneThatIsForGood) {
    Orlix::Emulated::Place place;
    place.agenda = std::make_shared<Orlix::Emulated::Agenda>();
    place.plugChanged = [] {};
    const auto agenda = place.agenda;
    const auto camera =
        std::make_shared<Orlix::Emulated::Camera>(Orlix::Emulated::Identity(), std::move(place));
    EXPECT_TRUE(camera->Unplug(1ms));
    static_cast<void>(camera->Plug());  // or the time is over already
    EXPECT_TRUE(camera->Unplug());
    std::promise<void> over;
    agenda->Add(Orlix::Emulated::Clock::now() + 1ms, [&] { over.set_value(); });
    over.get_future().wait();
    EXPECT_FALSE(camera->IsPlugged());
}

TEST_F(EmulatedFaults, LayerTellsOfEveryUnplugAndReplug) {
    std::promise<void> fourTimes;
    int changes = 0;
    layer.SetDevicesChanged([&] {
        if (++changes == 4) {
            fourTimes.set_value();
        }
    });
    layer.LoadFaults("every 2 ms: unplug for 1 ms");
    fourTimes.get_future().get();
    layer.LoadFaults("");
    layer.SetDevicesChanged({});
}

TEST_F(EmulatedFaults, RuleAfterSomeTimeCountsAnewWithEachPlug) {
    layer.LoadFaults("after 1 ms: unplug for 1 ms");
    for (int round = 0; round < 3; ++round) {
        waitFor(false);
        waitFor(true);
    }
}

TEST_F(EmulatedFaults, MistakeInAScriptIsRefusedAndTheOldOneStays) {
    script("write Gain: refuse");
    EXPECT_EQ(errorOf([&] { script("frame 1: lost"); }),
              "Fault script, line 1, column 14: expected 'end', found the end.");
    EXPECT_EQ(camera.features.get("FaultScript"), "write Gain: refuse");
    EXPECT_THROW(camera.features.set("Gain", "1"), GenICam::AccessException);
}

TEST_F(EmulatedFaults, RuleForAnotherCameraDoesNothingHere) {
    script("camera 2 write Gain: refuse");
    camera.features.set("Gain", "1");
    script("camera 1 write Gain: refuse");
    EXPECT_THROW(camera.features.set("Gain", "2"), GenICam::AccessException);
}

TEST_F(EmulatedFaults, FramesAreCountedAnewWithEachAcquisitionUnlessTheRuleCountsOnce) {
    script("frame 1: lost end; once frame 2: lost end");
    for (const FrameFate second : {FrameFate::TimedOut, FrameFate::Delivered}) {
        startFrames(2);
        EXPECT_EQ(camera.wait()->fate, FrameFate::TimedOut);
        EXPECT_EQ(camera.wait()->fate, second);
        camera.waitForEnd();
        camera.stream->Stop();
    }
}

TEST(EmulatedFaultOption, LayerTakesAScriptForAllItsCameras) {
    EXPECT_THROW(static_cast<void>(
                     Orlix::CreateEmulatedCameras({.count = 2, .faultScript = "frame 1 lost end"})),
                 GenICam::InvalidArgumentException);
    const auto layer =
        Orlix::CreateEmulatedCameras({.count = 2, .faultScript = "camera 2 open: in use"});
    const auto devices = layer->Enumerate();
    ASSERT_EQ(devices.size(), 2U);
    layer->CreateDevice(devices[0])->Open();
    EXPECT_THROW(layer->CreateDevice(devices[1])->Open(), GenICam::AccessException);
}

}  // namespace
