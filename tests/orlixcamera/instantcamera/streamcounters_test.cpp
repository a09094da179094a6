// Which fate a frame is counted with, and in which opening.
#include "orlixcamera/instantcamera/streamcounters.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>

#include "orlixcamera/instantcamera/scripteddevice.h"

namespace CameraTest {
namespace {

using Orlix::Detail::StreamCounters;
using Orlix::Detail::StreamCounts;

class StreamCounting : public testing::Test {
protected:
    StreamCounting() { counters.BeginOpening(); }
    void fill(std::uint64_t frames) { state_->statistics.delivered += frames; }

    const std::shared_ptr<ScriptedStream::State> state_ = std::make_shared<ScriptedStream::State>();
    StreamCounters counters;
    ScriptedStream stream{state_};
};

TEST_F(StreamCounting, FramesWithoutAFateAreAbortedWhenTheirRunEnds) {
    counters.Attach(stream);
    const StreamCounters::Run run = counters.BeginRun();
    fill(3);
    counters.Count(run, FrameFate::Delivered);
    counters.EndRun();
    EXPECT_EQ(counters.Get().delivered, 1U);
    EXPECT_EQ(counters.Get().aborted, 2U);
    EXPECT_EQ(counters.Get().failed, 2U);
    EXPECT_EQ(counters.Get().sent, 3U);
}

TEST_F(StreamCounting, WhatALateThreadCountsIsNotCountedTwice) {
    counters.Attach(stream);
    const StreamCounters::Run first = counters.BeginRun();
    fill(2);
    counters.EndRun();
    counters.Count(first, FrameFate::Delivered);
    const StreamCounters::Run second = counters.BeginRun();
    fill(1);
    counters.CountSkipped(first);
    counters.CountSkipped(second);
    counters.EndRun();
    EXPECT_EQ(counters.Get().delivered, 0U);
    EXPECT_EQ(counters.Get().skipped, 1U);
    EXPECT_EQ(counters.Get().aborted, 2U);
    EXPECT_EQ(counters.Get().sent, 3U);
}

TEST_F(StreamCounting, WhatALateThreadCountsDoesNotReachTheNextOpening) {
    counters.Attach(stream);
    const StreamCounters::Run run = counters.BeginRun();
    fill(1);
    counters.EndRun();
    counters.Detach();
    counters.EndOpening();
    state_->statistics = {};
    counters.BeginOpening();
    counters.Attach(stream);
    static_cast<void>(counters.BeginRun());
    counters.Count(run, FrameFate::Delivered);
    EXPECT_EQ(counters.Get().delivered, 0U);
    EXPECT_EQ(counters.GetTotal().sent, 1U);
    EXPECT_EQ(counters.GetTotal().aborted, 1U);
}

TEST_F(StreamCounting, WhatIsLostWithoutAStreamCountsToo) {
    counters.CountEventLost();
    EXPECT_EQ(counters.GetTotal().eventsLost, 1U);
    counters.Attach(stream);
    EXPECT_EQ(counters.Get().eventsLost, 1U);
    counters.Detach();
    counters.EndOpening();
    EXPECT_EQ(counters.Get().eventsLost, 1U);
    EXPECT_EQ(counters.GetTotal().eventsLost, 1U);
    counters.BeginOpening();
    EXPECT_EQ(counters.Get().eventsLost, 0U);
    EXPECT_EQ(counters.GetTotal().eventsLost, 1U);
}

// A back end may take locks of its own to tell, which the thread that counts may hold.
TEST_F(StreamCounting, AFrameIsCountedWhileTheStreamIsAsked) {
    class Asked final : public Transport::IStream {
    public:
        void Queue(Transport::StreamBuffer&) override {}
        void Start(std::size_t) override {}
        Transport::StreamBuffer* Wait(std::chrono::milliseconds) override { return nullptr; }
        void Stop() noexcept override {}
        Transport::StreamBuffer* TakeBack() noexcept override { return nullptr; }
        [[nodiscard]] Transport::StreamStatistics GetStatistics() const override {
            onAsked();
            return {};
        }
        std::function<void()> onAsked = [] {};
    };
    Asked asked;
    counters.Attach(asked);
    const StreamCounters::Run run = counters.BeginRun();
    asked.onAsked = [&] {
        std::async(std::launch::async, [&] { counters.Count(run, FrameFate::Delivered); }).get();
    };
    EXPECT_EQ(counters.Get().delivered, 0U);
    EXPECT_EQ(counters.GetTotal().delivered, 1U);
    counters.EndRun();
    counters.Detach();
    EXPECT_EQ(counters.Get().delivered, 3U);
}

}  // namespace
}  // namespace CameraTest
