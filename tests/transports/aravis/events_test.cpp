// Events of a camera behind a network, from its message channel to the handler.
#include <unistd.h>

#include <condition_variable>
#include <mutex>

#include "aravis/support/simulatedcameratest.h"
#include "genapi/inode.h"
#include "orlixcamera/cameraeventhandler.h"
#include "orlixcamera/grabresultdata.h"

namespace Orlix::Aravis {
namespace {

class Events : public Testing::SimulatedCameraTest {
protected:
    class Record final : public CCameraEventHandler {
    public:
        void OnCameraEvent(CInstantCamera&, std::intptr_t, GenApi::INode* node) override {
            const std::scoped_lock lock(mutex_);
            values_.push_back(CIntegerParameter(node).GetValueOrDefault(-1));
            changed_.notify_all();
        }
        [[nodiscard]] std::vector<std::int64_t> WaitFor(std::size_t count) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return values_.size() >= count; });
            return values_;
        }

    private:
        std::mutex mutex_;
        std::condition_variable changed_;
        std::vector<std::int64_t> values_;
    };

    // The numbers of the frames whose exposure ended, as their events tell them.
    std::vector<std::int64_t> GrabWithEvents(const std::vector<std::string>& options,
                                             const char* node) {
        Start(options);
        camera.GrabCameraEvents.SetValue(true);
        camera.RegisterCameraEventHandler(&record_, node, 0, CameraEventRegistrationMode_Append,
                                          Cleanup_None, CameraEventAvailability_Optional);
        Open();
        Choose("EventSelector", "ExposureEnd");
        Choose("EventNotification", "On");
        CBooleanParameter(camera.GetNodeMap(), "AcquisitionFrameRateEnable").SetValue(true);
        CFloatParameter(camera.GetNodeMap(), "AcquisitionFrameRate").SetValue(50);
        LimitFrames(10);
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        auto values = record_.WaitFor(10);
        camera.StopGrabbing();
        camera.DeregisterCameraEventHandler(&record_, node);
        return values;
    }

    static void ExpectSuccessive(const std::vector<std::int64_t>& values) {
        ASSERT_EQ(values.size(), 10U);
        for (std::size_t index = 1; index < values.size(); ++index) {
            EXPECT_EQ(values[index], values[index - 1] + 1);
        }
    }

    Record record_;
};

constexpr const char* frameId = "EventExposureEndFrameID";

TEST_F(Events, ComeWithTheirData) {
    ExpectSuccessive(GrabWithEvents({}, frameId));
    const auto counts = EndAndCount();
    EXPECT_EQ(counts["events"], 10);
    EXPECT_EQ(counts["lostEvents"], 0);
}

// All in ticks of a clock that isn't one of nanoseconds.
TEST_F(Events, HaveTheTimesOfTheirFrames) {
    constexpr const char* time = "EventFrameStartTimestamp";
    Start({"--tick-frequency", "125000000"});
    camera.GrabCameraEvents.SetValue(true);
    camera.RegisterCameraEventHandler(&record_, time, 0, CameraEventRegistrationMode_Append,
                                      Cleanup_None, CameraEventAvailability_Optional);
    Open();
    Choose("EventSelector", "FrameStart");
    Choose("EventNotification", "On");
    LimitFrames(3);
    camera.StartGrabbing(3);
    std::vector<std::int64_t> frames;
    CGrabResultPtr result;
    while (camera.IsGrabbing()) {
        ASSERT_TRUE(camera.RetrieveResult(patience, result));
        frames.push_back(static_cast<std::int64_t>(result->GetTimeStamp()));
    }
    EXPECT_EQ(record_.WaitFor(frames.size()), frames);
    camera.DeregisterCameraEventHandler(&record_, time);
}

TEST_F(Events, ComeSeveralInOnePacketWithLongIds) {
    ExpectSuccessive(GrabWithEvents({"--event-ids", "64", "--event-batch", "5"}, frameId));
}

TEST_F(Events, ComeWithoutDataToo) {
    const auto values = GrabWithEvents({"--events", "plain"}, "EventExposureEnd");
    EXPECT_EQ(values.size(), 10U);
}

}  // namespace
}  // namespace Orlix::Aravis
