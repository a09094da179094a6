// A stream by itself, without the camera object's threads and queues in between.
#include <algorithm>
#include <new>

#include "aravis/support/simulatedcameratest.h"
#include "aravis/support/toldmessages.h"
#include "genapi/genapi.h"
#include "orlixcamera/messagesink.h"
#include "orlixcamera/transport/transport.h"
#include "support/allocations.h"

namespace Orlix::Aravis {
namespace {

using Transport::FrameFate;
using Transport::StreamBuffer;

constexpr std::chrono::milliseconds longest{20000};

class StreamTest : public Testing::SimulatedCameraTest {
protected:
    static constexpr std::int64_t width = 320;
    static constexpr std::int64_t height = 240;
    static constexpr auto payloadSize = static_cast<std::size_t>(width * height);

    // So many frames with the first StartFrames.
    void OpenStream(std::int64_t frames) {
        Open();
        Set("Width", width);
        Set("Height", height);
        CIntegerParameter(camera.GetTLNodeMap(), "PacketSize").SetValue(1500);
        LimitFrames(frames);
        stream = device_->GetTransportDevice()->OpenStream();
    }
    void Queue(std::size_t count) {
        memory_.resize(count, std::vector<std::uint8_t>(payloadSize));
        buffers_.resize(count);
        for (std::size_t index = 0; index < count; ++index) {
            buffers_[index].data = memory_[index].data();
            buffers_[index].capacity = payloadSize;
            stream->Queue(buffers_[index]);
        }
    }
    void StartFrames() {
        stream->Start(payloadSize);
        GenApi::CCommandPtr(camera.GetNodeMap().GetNode("AcquisitionStart"))->Execute();
    }
    [[nodiscard]] std::size_t TakeAllBack() {
        std::size_t count = 0;
        while (stream->TakeBack() != nullptr) {
            ++count;
        }
        return count;
    }
    void TearDown() override {
        stream = nullptr;
        SimulatedCameraTest::TearDown();
    }

    std::unique_ptr<Transport::IStream> stream;

private:
    std::vector<std::vector<std::uint8_t>> memory_;
    std::vector<StreamBuffer> buffers_;
};

TEST_F(StreamTest, EndsThoughAFrameCouldNotBeDescribedForWantOfMemory) {
    Start({"--fault", "frame 1: missing packets 2"});
    OpenStream(2);
    Queue(4);
    StartFrames();
    {
        const Orlix::Test::FailingNew failing(0);
        EXPECT_THROW(static_cast<void>(stream->Wait(longest)), std::bad_alloc);
    }
    StreamBuffer* const second = stream->Wait(longest);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->fate, FrameFate::Delivered) << second->error.c_str();
    stream->Stop();
    EXPECT_EQ(stream->GetStatistics().delivered, 1U);
    EXPECT_EQ(stream->GetStatistics().failed, 1U);
    EXPECT_EQ(TakeAllBack(), 3U);
}

TEST_F(StreamTest, BufferMayHaveOtherMemoryEachTimeItIsQueued) {
    Start();
    OpenStream(1000);
    CFloatParameter(camera.GetNodeMap(), "AcquisitionFrameRate").SetValue(20);
    CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable").SetValue(true);
    std::vector<std::uint8_t> first(payloadSize);
    std::vector<std::uint8_t> second(payloadSize);
    StreamBuffer buffer;
    buffer.data = first.data();
    buffer.capacity = first.size();
    stream->Queue(buffer);
    StartFrames();
    ASSERT_EQ(stream->Wait(longest), &buffer);
    std::fill(first.begin(), first.end(), std::uint8_t{0});
    buffer.data = second.data();
    // One that began without a buffer may be in between.
    do {
        stream->Queue(buffer);
        ASSERT_EQ(stream->Wait(longest), &buffer);
    } while (buffer.fate != FrameFate::Delivered);
    EXPECT_EQ(std::count(first.begin(), first.end(), 0), static_cast<std::ptrdiff_t>(payloadSize));
    EXPECT_LT(std::count(second.begin(), second.end(), 0), std::ptrdiff_t{payloadSize} / 2);
    stream->Stop();
}

// Who hears a message may do with the stream what he wants.
class StoppingSink {
public:
    explicit StoppingSink(Transport::IStream& stream) : before_(SetMessageSink(&stop)) {
        told = &stream;
    }
    ~StoppingSink() { SetMessageSink(before_); }
    StoppingSink(const StoppingSink&) = delete;
    StoppingSink& operator=(const StoppingSink&) = delete;

    inline static bool hasStopped = false;

private:
    static void stop(const char*) noexcept {
        told->Stop();
        hasStopped = true;
    }
    inline static Transport::IStream* told = nullptr;

    const MessageSink before_;
};

TEST_F(StreamTest, CanBeStoppedByWhoHearsOfItsSocketBuffer) {
    Start();
    OpenStream(1);
    CIntegerParameter(camera.GetTLNodeMap(), "SocketBufferSize").SetValue(2000000000);
    Queue(2);
    const StoppingSink sink(*stream);
    stream->Start(payloadSize);
    ASSERT_TRUE(StoppingSink::hasStopped);
    EXPECT_EQ(TakeAllBack(), 2U) << "the stream runs on";
}

// 53 packets of a frame, or 54 with long ids. The network is slow: frames are seen half received.
class MissingPackets : public StreamTest, public testing::WithParamInterface<bool> {};

TEST_P(MissingPackets, AreThoseOfTheFramesThatHaveEnded) {
    Start({"--wire", "frame 2: drop packets 11 to 20; frame 5: drop packets 1 to 5", "--link-speed",
           "5"});
    OpenStream(8);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(false);
    CBooleanParameter(camera.GetNodeMap(), "GevGVSPExtendedIDMode").SetValue(GetParam());
    Queue(8);
    StartFrames();
    std::uint64_t last = 0;
    for (int frame = 1; frame <= 8;) {
        frame += stream->Wait(std::chrono::milliseconds(1)) != nullptr ? 1 : 0;
        const std::uint64_t missing = stream->GetStatistics().missingPackets;
        EXPECT_GE(missing, last) << frame;
        EXPECT_TRUE(missing == 0 || missing == 10 || missing == 15) << missing;
        last = missing;
    }
    EXPECT_EQ(last, 15U);
    stream->Stop();
    EXPECT_EQ(stream->GetStatistics().missingPackets, 15U);
}

TEST_P(MissingPackets, AreNotHiddenByTheFrameThatIsCutOffByTheStop) {
    Start({"--wire", "frame 1: drop packets 11 to 20", "--link-speed", "2"});
    OpenStream(3);
    CBooleanParameter(camera.GetTLNodeMap(), "PacketResend").SetValue(false);
    CBooleanParameter(camera.GetNodeMap(), "GevGVSPExtendedIDMode").SetValue(GetParam());
    Queue(8);
    StartFrames();
    ASSERT_NE(stream->Wait(longest), nullptr);
    ASSERT_NE(stream->Wait(longest), nullptr);
    stream->Stop();
    EXPECT_EQ(stream->GetStatistics().missingPackets, 10U);
}

INSTANTIATE_TEST_SUITE_P(Ids, MissingPackets, testing::Bool(), [](const auto& tested) {
    return std::string(tested.param ? "Long" : "Short");
});

}  // namespace
}  // namespace Orlix::Aravis
