#include "aravis/frame.h"

#include <gtest/gtest.h>

#include <array>

namespace Orlix::Aravis {
namespace {

TEST(FrameCounter, CountsFromOneWhateverTheFirstNumberIs) {
    FrameCounter counter;
    EXPECT_EQ(counter.Count(400), 1U);
    EXPECT_EQ(counter.Count(401), 2U);
}

TEST(FrameCounter, GapsAreLostFrames) {
    FrameCounter counter;
    static_cast<void>(counter.Count(1));
    EXPECT_EQ(counter.Count(5), 5U);
}

TEST(FrameCounter, ShortNumbersBeginAnewAtOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65534));
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.Count(1), 3U);
    FrameCounter other;
    static_cast<void>(other.Count(65535));
    EXPECT_EQ(other.Count(3), 4U);
}

TEST(FrameCounter, LongNumbersDoNot) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.Count(65536), 2U);
}

TEST(FrameCounter, CameraThatBeginsAnewLosesNothing) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    EXPECT_EQ(counter.Count(1), 2U);
}

TEST(FrameCounter, AFrameWhoseNumberGotLostIsTheNextOne) {
    FrameCounter counter;
    static_cast<void>(counter.Count(20));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    EXPECT_EQ(counter.Count(22), 3U);
    EXPECT_EQ(counter.CountUnknown(), 4U);
    EXPECT_EQ(counter.Count(25), 6U);
}

TEST(FrameCounter, AFrameWhoseNumberGotLostMayBeTheOneThatBeginsAnew) {
    FrameCounter counter;
    static_cast<void>(counter.Count(65535));
    EXPECT_EQ(counter.CountUnknown(), 2U);
    EXPECT_EQ(counter.Count(2), 3U);
}

TEST(FrameCounter, TheFirstFrameMayLackItsNumber) {
    FrameCounter counter;
    EXPECT_EQ(counter.CountUnknown(), 1U);
    EXPECT_EQ(counter.Count(65531), 2U) << "cameras may begin with any number";
}

// Buffers as Aravis leaves them, filled by its own camera.
class FrameReaderTest : public testing::Test {
protected:
    static constexpr int width = 32;
    static constexpr int height = 8;
    static constexpr std::size_t size = width * height;

    void SetUp() override {
        const ObjectPtr<ArvFakeCamera> camera(arv_fake_camera_new("T1"));
        arv_fake_camera_write_register(camera.get(), ARV_FAKE_CAMERA_REGISTER_WIDTH, width);
        arv_fake_camera_write_register(camera.get(), ARV_FAKE_CAMERA_REGISTER_HEIGHT, height);
        arv_fake_camera_fill_buffer(camera.get(), good_.get(), nullptr);
        ASSERT_EQ(arv_buffer_get_status(good_.get()), ARV_BUFFER_STATUS_SUCCESS);
        frame.capacity = memory_.size();
    }
    // As Aravis leaves it for a frame whose kind it doesn't know.
    [[nodiscard]] static ObjectPtr<ArvBuffer> MakeEmpty() {
        return ObjectPtr<ArvBuffer>(arv_buffer_new_allocate(size));
    }
    void ReadGood(FrameReader& reader, Evidence evidence = Evidence::None) {
        reader.Read(*good_, frame, evidence);
    }
    void SetTime(std::uint64_t nanoseconds) { arv_buffer_set_timestamp(good_.get(), nanoseconds); }
    void ExpectGeometry() const {
        EXPECT_EQ(frame.pixelType, PixelType_Mono8);
        EXPECT_EQ(frame.width, static_cast<std::uint32_t>(width));
        EXPECT_EQ(frame.height, static_cast<std::uint32_t>(height));
        EXPECT_EQ(frame.kind, Transport::PayloadKind::Image);
    }

    Transport::StreamBuffer frame;

private:
    std::array<std::uint8_t, size> memory_{};
    ObjectPtr<ArvBuffer> good_{arv_buffer_new_full(size, memory_.data(), nullptr, nullptr)};
};

TEST_F(FrameReaderTest, WholeFrameHasItsOwnGeometryAndSize) {
    FrameReader reader(Protocol::GigE, size);
    ReadGood(reader);
    EXPECT_EQ(frame.fate, Transport::FrameFate::Delivered);
    EXPECT_EQ(frame.error, "");
    EXPECT_EQ(frame.filled, size);
    EXPECT_EQ(frame.frameId, 1U);
    EXPECT_GT(frame.timestamp, 0U);
    ExpectGeometry();
}

// Aravis makes nanoseconds of ticks and rounds down.
TEST_F(FrameReaderTest, TimesAreTicksOfTheDevice) {
    struct Case {
        std::uint64_t frequency;
        std::uint64_t nanoseconds;
        std::uint64_t ticks;
    };
    constexpr std::uint64_t year = 31'536'000;  // seconds
    const std::array cases = {
        Case{0, 12345, 12345},
        Case{1'000'000'000, 12345, 12345},
        Case{125'000'000, 16, 2},
        Case{3, 333'333'333, 1},
        Case{3, 666'666'666, 2},
        Case{3, 1'000'000'000, 3},
        Case{125'000'000, year * 1'000'000'000 + 8, year * 125'000'000 + 1},
        Case{10'000'000'000, 999'999'999, 9'999'999'990},
    };
    for (const Case& one : cases) {
        FrameReader reader(Protocol::GigE, size);
        reader.SetTickFrequency(one.frequency);
        SetTime(one.nanoseconds);
        ReadGood(reader);
        EXPECT_EQ(frame.timestamp, one.ticks) << one.frequency;
    }
}

TEST_F(FrameReaderTest, OrderOfTheChunksIsThatOfTheProtocol) {
    FrameReader network(Protocol::GigE, size);
    ReadGood(network);
    EXPECT_EQ(frame.chunkByteOrder, Transport::ChunkByteOrder::BigEndian);
    FrameReader usb(Protocol::Usb3, size);
    ReadGood(usb);
    EXPECT_EQ(frame.chunkByteOrder, Transport::ChunkByteOrder::LittleEndian);
}

TEST_F(FrameReaderTest, WhatWasSeenBesideAWholeFrameDecidesItsFate) {
    struct Case {
        Evidence evidence;
        Transport::FrameFate fate;
        const char* text;
    };
    const std::array cases = {
        Case{Evidence::EndOnly, Transport::FrameFate::Delivered, ""},
        Case{Evidence::BadTrailer, Transport::FrameFate::BadTrailer,
             "The device marked the trailer of the frame as invalid."},
        Case{Evidence::TooLong, Transport::FrameFate::WrongSize,
             "The frame has more bytes than its buffer."},
    };
    FrameReader reader(Protocol::GigE, size);
    for (const Case& one : cases) {
        ReadGood(reader, one.evidence);
        EXPECT_EQ(frame.fate, one.fate);
        EXPECT_EQ(frame.error, one.text);
        ExpectGeometry();
    }
}

TEST_F(FrameReaderTest, FailedFrameHasTheGeometryOfTheLastGoodOne) {
    FrameReader reader(Protocol::GigE, size);
    ReadGood(reader);
    frame.width = 0;
    frame.pixelType = PixelType_Undefined;
    reader.Read(*MakeEmpty(), frame, Evidence::TooLong);
    EXPECT_EQ(frame.fate, Transport::FrameFate::BadTrailer);
    EXPECT_EQ(frame.error, "The kind of the frame's payload is not supported.");
    ExpectGeometry();
}

TEST_F(FrameReaderTest, FailedFrameMayFillNoMoreThanItsBuffer) {
    FrameReader reader(Protocol::GigE, 2 * size);
    reader.Read(*MakeEmpty(), frame, Evidence::None);
    EXPECT_EQ(frame.filled, size);
    EXPECT_EQ(frame.width, 0U) << "no good frame has told it";
    FrameReader smaller(Protocol::GigE, size / 2);
    smaller.Read(*MakeEmpty(), frame, Evidence::None);
    EXPECT_EQ(frame.filled, size / 2);
}

// A buffer as Aravis leaves it that got packets without the leader.
TEST(FrameReader, FramesWithoutALeaderDoNotDisturbTheNumbersOfOthers) {
    FrameReader reader(Protocol::GigE, 16);
    std::uint8_t memory[16] = {};
    const ObjectPtr<ArvBuffer> source(arv_buffer_new_full(sizeof memory, memory, nullptr, nullptr));
    Transport::StreamBuffer frame;
    frame.capacity = sizeof memory;
    const auto numberOf = [&](guint64 blockId) {
        FrameReader::Forget(*source);
        if (blockId != 0) {
            arv_buffer_set_frame_id(source.get(), blockId);
        }
        reader.Read(*source, frame, Evidence::None);
        return frame.frameId;
    };
    EXPECT_EQ(numberOf(30), 1U);
    EXPECT_EQ(numberOf(0), 2U);
    EXPECT_EQ(numberOf(32), 3U);
}

}  // namespace
}  // namespace Orlix::Aravis
