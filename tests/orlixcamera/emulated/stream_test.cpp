#include <gtest/gtest.h>

#include <algorithm>
#include <future>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"
#include "support/sleeper.h"

namespace {

using namespace EmulatedTest;
using Orlix::EPixelType;
using Transport::FrameFate;
using Transport::StreamBuffer;

using Bytes = std::vector<std::uint8_t>;

// A wait that isn't ended by what the test does is not ended at all.
constexpr std::chrono::hours endless{24};

class EmulatedStream : public testing::Test {
protected:
    // One picture with the settings as they are.
    Bytes snap() {
        camera.features.set("AcquisitionMode", "SingleFrame");
        camera.start(1);
        const StreamBuffer* const buffer = camera.wait();
        camera.stream->Stop();
        if (buffer == nullptr || buffer->fate != FrameFate::Delivered) {
            ADD_FAILURE() << "no picture came";
            return Bytes(64);
        }
        const auto* data = static_cast<const std::uint8_t*>(buffer->data);
        return {data, data + buffer->filled};
    }

    Layer layer{2};
    StreamingCamera camera{layer};
};

TEST_F(EmulatedStream, FramesComeInOrderWithAllThatIsKnownOfThem) {
    camera.features.integer("OffsetX")->SetValue(32);
    camera.features.integer("OffsetY")->SetValue(2);
    camera.start(3);
    std::uint64_t lastTime = 0;
    for (std::uint64_t id = 0; id < 50;) {
        StreamBuffer* const buffer = camera.wait();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->fate, FrameFate::Delivered);
        EXPECT_GT(buffer->frameId, id);
        EXPECT_GT(buffer->timestamp, lastTime);
        EXPECT_EQ(buffer->pixelType, Orlix::PixelType_Mono8);
        EXPECT_EQ(buffer->width, 64U);
        EXPECT_EQ(buffer->height, 48U);
        EXPECT_EQ(buffer->offsetX, 32U);
        EXPECT_EQ(buffer->offsetY, 2U);
        EXPECT_EQ(buffer->filled, 64U * 48U);
        id = buffer->frameId;
        lastTime = buffer->timestamp;
        camera.stream->Queue(*buffer);
    }
    camera.stream->Stop();
    EXPECT_EQ(camera.takeBackAll(), 3U);
}

TEST_F(EmulatedStream, EveryFrameHasOneFate) {
    camera.features.set("AcquisitionMode", "MultiFrame");
    camera.features.integer("AcquisitionFrameCount")->SetValue(10);
    camera.queue(1, 16);
    camera.start(2);
    const StreamBuffer* const tooSmall = camera.wait();
    ASSERT_NE(tooSmall, nullptr);
    EXPECT_EQ(tooSmall->fate, FrameFate::WrongSize);
    EXPECT_EQ(tooSmall->error, "The frame has 3072 bytes, its buffer has room for 16.");
    for (int index = 0; index < 2; ++index) {
        const StreamBuffer* const buffer = camera.wait();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->fate, FrameFate::Delivered);
    }
    camera.waitForEnd();
    camera.stream->Stop();
    const auto statistics = camera.stream->GetStatistics();
    EXPECT_EQ(statistics.delivered, 2U);
    EXPECT_EQ(statistics.failed, 1U);
    EXPECT_EQ(statistics.missedForBuffer, 7U);
}

TEST_F(EmulatedStream, SoftwareTriggerBringsOneFrameEach) {
    camera.features.set("TriggerMode", "On");
    camera.start(2);
    EXPECT_EQ(camera.stream->Wait(std::chrono::milliseconds(0)), nullptr);
    for (std::uint64_t id = 1; id <= 5; ++id) {
        camera.features.execute("TriggerSoftware");
        StreamBuffer* const buffer = camera.wait();
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(buffer->frameId, id);
        camera.stream->Queue(*buffer);
    }
    camera.stream->Stop();
    EXPECT_EQ(camera.stream->GetStatistics().delivered, 5U);
}

TEST_F(EmulatedStream, TriggerOfTheAcquisitionLetsItsFramesFlow) {
    camera.features.set("TriggerSelector", "AcquisitionStart");
    camera.features.set("TriggerMode", "On");
    camera.start(2);
    EXPECT_EQ(camera.stream->Wait(std::chrono::milliseconds(0)), nullptr);
    camera.features.execute("TriggerSoftware");
    EXPECT_NE(camera.wait(), nullptr);
    EXPECT_NE(camera.wait(), nullptr);
}

TEST_F(EmulatedStream, NumbersBeginAnewWithEachAcquisition) {
    camera.features.set("AcquisitionMode", "SingleFrame");
    camera.start(2);
    EXPECT_EQ(camera.wait()->frameId, 1U);
    camera.waitForEnd();
    EXPECT_EQ(camera.features.mode("Width"), RW);
    camera.features.execute("AcquisitionStart");
    EXPECT_EQ(camera.wait()->frameId, 1U);
}

TEST_F(EmulatedStream, MovingPatternMovesAndStaticOneStays) {
    for (const auto& [pattern, moves] :
         {std::pair{"GreyDiagonalRamp", false}, std::pair{"GreyDiagonalRampMoving", true},
          std::pair{"GreyVerticalRampMoving", true}}) {
        camera.features.set("TestPattern", pattern);
        camera.start(2);
        const auto* first = static_cast<const std::uint8_t*>(camera.wait()->data);
        const auto* second = static_cast<const std::uint8_t*>(camera.wait()->data);
        EXPECT_EQ(std::equal(first, first + 64 * 48, second), !moves) << pattern;
        EXPECT_EQ(second[0], first[moves ? 64 * 2 : 0]) << pattern;
        camera.stream->Stop();
        camera.features.execute("AcquisitionStop");
    }
}

TEST_F(EmulatedStream, RampFollowsOffsetAndReversal) {
    camera.features.integer("OffsetX")->SetValue(10);
    camera.features.integer("OffsetY")->SetValue(20);
    camera.features.set("TestPattern", "GreyHorizontalRamp");
    EXPECT_EQ(snap()[5], 15);
    camera.features.set("ReverseX", "1");
    EXPECT_EQ(snap()[5], 10 + 63 - 5);
    camera.features.set("TestPattern", "GreyVerticalRamp");
    EXPECT_EQ(snap()[64 * 3], 23);
    camera.features.set("ReverseY", "1");
    EXPECT_EQ(snap()[64 * 3], 20 + 47 - 3);
}

TEST_F(EmulatedStream, SamplesArePackedAsTheFormatSays) {
    camera.features.set("TestPattern", "GreyHorizontalRamp");
    camera.features.integer("OffsetX")->SetValue(0x10);
    const auto begin = [&](const char* format, std::size_t count) {
        camera.features.set("PixelFormat", format);
        Bytes bytes = snap();
        bytes.resize(count);
        return bytes;
    };
    // Levels 0x1010, 0x1111, 0x1212 and 0x1313 of 16 bits.
    EXPECT_EQ(begin("Mono8", 4), (Bytes{0x10, 0x11, 0x12, 0x13}));
    EXPECT_EQ(begin("Mono16", 4), (Bytes{0x10, 0x10, 0x11, 0x11}));
    EXPECT_EQ(begin("Mono12", 4), (Bytes{0x01, 0x01, 0x11, 0x01}));
    EXPECT_EQ(begin("Mono12p", 3), (Bytes{0x01, 0x11, 0x11}));
    EXPECT_EQ(begin("Mono12Packed", 3), (Bytes{0x10, 0x11, 0x11}));
    EXPECT_EQ(begin("Mono10Packed", 3), (Bytes{0x10, 0x00, 0x11}));
    // 0x040, 0x044, 0x048, 0x04C of 10 bits, lowest first.
    EXPECT_EQ(begin("Mono10p", 5), (Bytes{0x40, 0x10, 0x81, 0x04, 0x13}));
    EXPECT_EQ(begin("RGB8", 6), (Bytes{0x10, 0x10, 0x10, 0x11, 0x11, 0x11}));
    EXPECT_EQ(begin("BGRa8", 8), (Bytes{0x10, 0x10, 0x10, 0xFF, 0x11, 0x11, 0x11, 0xFF}));
    EXPECT_EQ(begin("YUV422_8_UYVY", 4), (Bytes{0x80, 0x10, 0x80, 0x11}));
    EXPECT_EQ(begin("YUV422_8", 4), (Bytes{0x10, 0x80, 0x11, 0x80}));
}

TEST_F(EmulatedStream, BayerPatternBeginsWithItsColoursInEveryOrientation) {
    // The sixth bar of the sensor is red.
    camera.features.integer("OffsetX")->SetValue(5 * 512 + 32);
    camera.features.set("TestPattern", "ColorBar");
    for (const char* reverse : {"0", "1"}) {
        camera.features.set("ReverseX", reverse);
        camera.features.set("ReverseY", reverse);
        for (const auto& [format, place] : {std::pair{"BayerRG8", 0}, std::pair{"BayerGR8", 1},
                                            std::pair{"BayerGB8", 64}, std::pair{"BayerBG8", 65}}) {
            camera.features.set("PixelFormat", format);
            const Bytes picture = snap();
            for (const int cell : {0, 1, 64, 65}) {
                EXPECT_EQ(picture[static_cast<std::size_t>(cell)], cell == place ? 255 : 0)
                    << format << cell << reverse;
            }
        }
    }
}

TEST_F(EmulatedStream, WhiteIsWhiteInEveryFormat) {
    camera.features.set("TestPattern", "White");
    NodeList_t entries;
    camera.features.enumeration("PixelFormat")->GetEntries(entries);
    for (INode* node : entries) {
        const CEnumEntryPtr entry(node);
        camera.features.enumeration("PixelFormat")->FromString(entry->GetSymbolic());
        const Bytes picture = snap();
        const auto type = static_cast<EPixelType>(entry->GetValue());
        ASSERT_EQ(picture.size(), Orlix::ComputeBufferSize(type, 64, 48)) << entry->GetSymbolic();
        const std::uint8_t last = picture.back();
        const std::uint32_t depth = Orlix::BitDepth(type);
        const bool inWords = !Orlix::IsPacked(type) && depth > 8;
        const int white = inWords ? (1 << (depth - 8)) - 1 : 0xFF;
        const bool endsWithChroma = Orlix::IsPlanar(type) && Orlix::IsYuv(type);
        const bool lumaFirst = type == Orlix::PixelType_YUV422_YUYV_Packed;
        EXPECT_EQ(last, endsWithChroma || lumaFirst ? 0x80 : white) << entry->GetSymbolic();
        // The low bits of two samples share a byte in the older packing.
        const int second = type == Orlix::PixelType_Mono10Packed ? 0x33 : lumaFirst ? 0x80 : white;
        EXPECT_EQ(picture[1], second) << entry->GetSymbolic();
    }
}

TEST_F(EmulatedStream, ExposureAndGainMakeTheSceneBrighter) {
    const auto mean = [&] {
        std::uint64_t sum = 0;
        for (const std::uint8_t value : snap()) {
            sum += value;
        }
        return sum;
    };
    camera.features.set("ExposureTime", "1000");
    const auto dark = mean();
    camera.features.set("ExposureTime", "4000");
    const auto brighter = mean();
    camera.features.set("Gain", "12");
    const auto brightest = mean();
    EXPECT_GT(dark, 0U);
    EXPECT_GT(brighter, 3 * dark);
    EXPECT_GT(brightest, 3 * dark);
    EXPECT_GT(brightest, brighter);
}

TEST_F(EmulatedStream, StopEndsAWaitAndAnExposure) {
    struct FirstEvent final : Transport::IDeviceSink {
        void OnEvent(const Transport::EventMessage&) override { came.set_value(); }
        void OnLost() override {}
        std::promise<void> came;
    };
    FirstEvent exposureStart;
    camera.features.real("ExposureTime")->SetValue(1e7);
    camera.features.set("EventSelector", "FrameStart");
    camera.features.set("EventNotification", "On");
    camera.device->SetSink(&exposureStart);
    camera.start(2);
    Orlix::Test::Sleeper sleeper;
    auto waiting = std::async(std::launch::async, [&] {
        sleeper.GoIn();
        return camera.stream->Wait(endless);
    });
    exposureStart.came.get_future().wait();
    sleeper.WaitUntilAsleep();
    camera.stream->Stop();
    camera.device->SetSink(nullptr);
    EXPECT_EQ(waiting.get(), nullptr);
    EXPECT_EQ(camera.wait(), nullptr);
    EXPECT_EQ(camera.takeBackAll(), 2U);
    EXPECT_EQ(camera.stream->GetStatistics().delivered, 0U);
}

TEST_F(EmulatedStream, LossEndsTheStreamWithAnErrorAndGivesTheBuffersBack) {
    camera.features.set("TriggerMode", "On");
    camera.start(3);
    Orlix::Test::Sleeper sleeper;
    auto waiting = std::async(std::launch::async, [&] {
        sleeper.GoIn();
        static_cast<void>(camera.stream->Wait(endless));
    });
    sleeper.WaitUntilAsleep();
    layer.Unplug(0);
    EXPECT_THROW(waiting.get(), GenICam::RuntimeException);
    camera.stream->Stop();
    EXPECT_EQ(camera.takeBackAll(), 3U);
    EXPECT_THROW(camera.stream->Start(camera.buffers[0].capacity), GenICam::RuntimeException);
    EXPECT_THROW(static_cast<void>(camera.device->OpenStream()), GenICam::RuntimeException);
}

TEST_F(EmulatedStream, ClosingTheDeviceEndsTheStreamToo) {
    camera.start(1);
    camera.device->Close();
    camera.stream->Stop();
    EXPECT_THROW(camera.stream->Start(1), GenICam::RuntimeException);
}

TEST_F(EmulatedStream, DeviceHasOneStreamAtATime) {
    EXPECT_THROW(static_cast<void>(camera.device->OpenStream()), GenICam::RuntimeException);
    camera.stream.reset();
    EXPECT_NE(camera.device->OpenStream(), nullptr);
}

TEST_F(EmulatedStream, CamerasStreamAtOnceEachForItself) {
    StreamingCamera other(layer, 1);
    other.features.set("TestPattern", "White");
    camera.features.set("TestPattern", "Black");
    camera.start(3);
    other.start(3);
    for (int index = 0; index < 3; ++index) {
        EXPECT_EQ(*static_cast<const std::uint8_t*>(camera.wait()->data), 0);
        EXPECT_EQ(*static_cast<const std::uint8_t*>(other.wait()->data), 255);
    }
}

TEST_F(EmulatedStream, StopAndStartManyTimesLeaveNothingBehind) {
    camera.queue(4, camera.payload());
    for (int round = 0; round < 200; ++round) {
        camera.stream->Start(camera.payload());
        camera.features.execute("AcquisitionStart");
        if (round % 2 == 0) {
            StreamBuffer* const buffer = camera.wait();
            ASSERT_NE(buffer, nullptr);
            camera.stream->Queue(*buffer);
        }
        camera.features.execute("AcquisitionStop");
        camera.stream->Stop();
        std::size_t count = 0;
        std::array<StreamBuffer*, 4> buffers{};
        while (StreamBuffer* const buffer = camera.stream->TakeBack()) {
            ASSERT_LT(count, buffers.size());
            buffers[count++] = buffer;
        }
        ASSERT_EQ(count, 4U);
        for (StreamBuffer* buffer : buffers) {
            camera.stream->Queue(*buffer);
        }
    }
}

}  // namespace
