#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"

namespace {

using namespace EmulatedTest;

struct Message {
    std::uint16_t id = 0;
    std::uint64_t timestamp = 0;
    std::vector<std::uint8_t> data;
    std::thread::id thread;
};

constexpr std::uint16_t frameStart = 0x9001;
constexpr std::uint16_t exposureEnd = 0x9002;
constexpr std::uint16_t frameEnd = 0x9003;
constexpr std::uint16_t overrun = 0x9004;
constexpr std::uint16_t eventOverrun = 0x9005;
constexpr std::uint16_t test = 0x9006;

class EventSink final : public Transport::IDeviceSink {
public:
    void OnEvent(const Transport::EventMessage& message) override {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return open_; });
        messages_.push_back({message.eventId,
                             message.timestamp,
                             {message.data, message.data + message.size},
                             std::this_thread::get_id()});
        came_.notify_all();
    }
    void OnLost() override {}

    [[nodiscard]] std::vector<Message> wait(std::size_t count) {
        std::unique_lock lock(mutex_);
        came_.wait_for(lock, patience, [&] { return messages_.size() >= count; });
        return messages_;
    }
    // The number of messages when one with this id is among them.
    [[nodiscard]] std::size_t waitFor(std::uint16_t id) {
        std::unique_lock lock(mutex_);
        const auto isWanted = [&](const Message& message) { return message.id == id; };
        EXPECT_TRUE(came_.wait_for(lock, patience, [&] {
            return std::any_of(messages_.begin(), messages_.end(), isWanted);
        }));
        return messages_.size();
    }
    // A closed one holds up whoever brings an event.
    void setOpen(bool open) {
        const std::scoped_lock lock(mutex_);
        open_ = open;
        opened_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::condition_variable opened_;
    std::vector<Message> messages_;
    bool open_ = true;
};

class EmulatedEvents : public testing::Test {
protected:
    EmulatedEvents() { camera.device->SetSink(&sink); }
    ~EmulatedEvents() override {
        sink.setOpen(true);
        camera.device->SetSink(nullptr);
    }

    void enable(const char* name) const {
        camera.features.set("EventSelector", name);
        camera.features.set("EventNotification", "On");
    }

    Layer layer{1};
    EventSink sink;
    StreamingCamera camera{layer};
};

TEST_F(EmulatedEvents, FrameTellsOfItsStartItsExposureAndItsEnd) {
    for (const char* name : {"FrameStart", "ExposureEnd", "FrameEnd"}) {
        enable(name);
    }
    camera.features.set("TriggerMode", "On");
    camera.start(2);
    camera.features.execute("TriggerSoftware");
    const Transport::StreamBuffer* const buffer = camera.wait();
    ASSERT_NE(buffer, nullptr);
    const std::vector<Message> messages = sink.wait(3);
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].id, frameStart);
    EXPECT_EQ(messages[0].timestamp, buffer->timestamp);
    EXPECT_EQ(messages[1].id, exposureEnd);
    EXPECT_EQ(messages[1].timestamp, buffer->timestamp + 50'000);
    EXPECT_EQ(messages[2].id, frameEnd);
    EXPECT_GE(messages[2].timestamp, messages[1].timestamp);
    for (const Message& message : messages) {
        ASSERT_EQ(message.data.size(), 16U);
        EXPECT_EQ(message.data[8], 1U) << "the number of the frame";
        EXPECT_NE(message.thread, std::this_thread::get_id());
    }
}

TEST_F(EmulatedEvents, DescriptionReadsTheMessages) {
    enable("ExposureEnd");
    camera.features.set("TriggerMode", "On");
    camera.start(1);
    EXPECT_FALSE(IsReadable(camera.features.mode("EventExposureEndTimestamp")));
    EXPECT_EQ(camera.features.integer("EventExposureEnd")->GetValue(), exposureEnd);
    CEventAdapterGeneric adapter(&camera.features.map());
    camera.features.execute("TriggerSoftware");
    const std::uint64_t start = camera.wait()->timestamp;
    const Message message = sink.wait(1).at(0);
    int calls = 0;
    Register(camera.features.node("EventExposureEnd"), [&](INode*) { ++calls; });
    Register(camera.features.node("EventExposureEndFrameID"), [&](INode*) { ++calls; });
    EXPECT_TRUE(adapter.DeliverMessage(message.id, message.data.data(),
                                       static_cast<std::int64_t>(message.data.size())));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(camera.features.integer("EventExposureEndFrameID")->GetValue(), 1);
    EXPECT_EQ(camera.features.integer("EventExposureEndTimestamp")->GetValue(),
              static_cast<std::int64_t>(start + 50'000));
}

TEST_F(EmulatedEvents, EveryEventHasItsPort) {
    CEventAdapterGeneric adapter(&camera.features.map());
    for (const auto& [id, name] :
         {std::pair{frameStart, "FrameStart"}, std::pair{exposureEnd, "ExposureEnd"},
          std::pair{frameEnd, "FrameEnd"}, std::pair{overrun, "Overrun"},
          std::pair{eventOverrun, "OverrunEvent"}, std::pair{test, "Test"}}) {
        const std::uint64_t time = 1000U + id;
        std::uint8_t bytes[8];
        std::memcpy(bytes, &time, sizeof bytes);
        EXPECT_TRUE(adapter.DeliverMessage(id, bytes, sizeof bytes));
        const std::string feature = std::string("Event") + name + "Timestamp";
        EXPECT_EQ(camera.features.integer(feature.c_str())->GetValue(),
                  static_cast<std::int64_t>(time));
    }
}

TEST_F(EmulatedEvents, EventThatIsOffIsNotTold) {
    enable("FrameEnd");
    camera.start(3);
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_NE(camera.wait(), nullptr);
    }
    enable("Test");
    camera.features.execute("AcquisitionStop");
    camera.features.execute("TestEventGenerate");
    for (const Message& message : sink.wait(4)) {
        EXPECT_TRUE(message.id == frameEnd || message.id == test);
    }
}

TEST_F(EmulatedEvents, TestEventComesOnCommand) {
    camera.features.execute("TestEventGenerate");
    enable("Test");
    camera.features.execute("TestEventGenerate");
    const std::vector<Message> messages = sink.wait(1);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].id, test);
    EXPECT_EQ(messages[0].data.size(), 8U);
    EXPECT_GT(messages[0].timestamp, 0U);
}

TEST_F(EmulatedEvents, FrameWithoutABufferIsAnOverrun) {
    enable("Overrun");
    camera.features.set("AcquisitionMode", "SingleFrame");
    camera.start(0);
    const std::vector<Message> messages = sink.wait(1);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].id, overrun);
    EXPECT_EQ(camera.stream->GetStatistics().missedForBuffer, 1U);
}

TEST_F(EmulatedEvents, SlowSinkLosesEventsAndIsToldSo) {
    enable("Test");
    enable("EventOverrun");
    sink.setOpen(false);
    constexpr std::size_t many = 3000;
    for (std::size_t index = 0; index < many; ++index) {
        camera.features.execute("TestEventGenerate");
    }
    sink.setOpen(true);
    static_cast<void>(sink.wait(1024));
    camera.features.execute("TestEventGenerate");
    EXPECT_LT(sink.waitFor(eventOverrun), many);
}

TEST_F(EmulatedEvents, SlowSinkHoldsUpNeitherFramesNorRegistersNorClose) {
    enable("FrameEnd");
    sink.setOpen(false);
    camera.start(3);
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_NE(camera.wait(), nullptr);
    }
    EXPECT_EQ(camera.features.integer("Width")->GetValue(), 64);
    camera.stream->Stop();
    camera.device->Close();
    sink.setOpen(true);
}

TEST_F(EmulatedEvents, NoEventIsToldOnceTheSinkIsTakenAway) {
    enable("Test");
    for (int index = 0; index < 100; ++index) {
        camera.features.execute("TestEventGenerate");
    }
    camera.device->SetSink(nullptr);
    const std::size_t count = sink.wait(0).size();
    camera.features.execute("TestEventGenerate");
    camera.device->Close();
    EXPECT_EQ(sink.wait(0).size(), count);
}

TEST_F(EmulatedEvents, EventsOfAnOpeningEndWithIt) {
    enable("Test");
    sink.setOpen(false);
    for (int index = 0; index < 100; ++index) {
        camera.features.execute("TestEventGenerate");
    }
    camera.stream.reset();
    camera.device->Close();
    sink.setOpen(true);
    camera.device->Open();
    camera.features.execute("TestEventGenerate");
    const std::size_t count = sink.wait(1).size();
    EXPECT_LE(count, 2U) << "at most one was under way";
}

TEST_F(EmulatedEvents, DeviceMayBeClosedAndOpenedOftenWithEventsUnderWay) {
    enable("Test");
    camera.stream.reset();
    for (int round = 0; round < 100; ++round) {
        for (int index = 0; index < 10; ++index) {
            camera.features.execute("TestEventGenerate");
        }
        camera.device->Close();
        camera.device->Open();
    }
}

TEST_F(EmulatedEvents, DeviceMayEndWithinTheNewsOfAnEvent) {
    struct Sink final : Transport::IDeviceSink {
        void OnEvent(const Transport::EventMessage&) override {
            if (device != nullptr) {
                device.reset();
                ended.set_value();
            }
        }
        void OnLost() override {}
        std::shared_ptr<Transport::IDevice> device;
        std::promise<void> ended;
    } ending;
    camera.stream.reset();
    enable("Test");
    camera.device->Close();
    ending.device = layer.CreateDevice(layer.Enumerate()[0]);
    Transport::IDevice& device = *ending.device;
    device.Open();
    device.SetSink(&ending);
    const std::int64_t one = 1;
    device.Write(0x1640, &one, sizeof one);
    ending.ended.get_future().get();
    EXPECT_EQ(ending.device, nullptr);
}

}  // namespace
