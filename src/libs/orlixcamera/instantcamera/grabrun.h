// One run of grabbing, from StartGrabbing to its end: which frames are handed over, and whether a
// handler may still be called. Threads that are late keep it alive.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "orlixcamera/cameraenums.h"
#include "orlixcamera/configurationeventhandler.h"
#include "orlixcamera/instantcamera/handlerlist.h"
#include "orlixcamera/instantcamera/streamgrabber.h"

namespace Orlix::Detail {

struct GrabPlan {
    EGrabStrategy strategy = GrabStrategy_OneByOne;
    EGrabLoop loop = GrabLoop_ProvidedByInstantCamera;
    std::size_t maxImages = 0;  // 0 for no limit
    std::size_t queueSize = 1;  // frames that wait, with the strategies of the latest images
    bool deliverFailed = true;
};

// TakeFrame is called by one thread or several, also while Start is under way, which it waits for;
// Start and Stop by those who control the camera, one at a time.
class GrabRun {
public:
    GrabRun(GrabPlan plan, std::shared_ptr<StreamGrabber> grabber);
    ~GrabRun();
    GrabRun(const GrabRun&) = delete;
    GrabRun& operator=(const GrabRun&) = delete;

    [[nodiscard]] const GrabPlan& GetPlan() const noexcept { return plan_; }

    void Start(std::shared_ptr<BufferSet> buffers, const ExpectedFrames& frames);
    // No call of a handler is begun from now on; waits for none.
    void Forbid() noexcept;
    // Ends the stream too.
    void Stop() noexcept;
    // Whether a call of a handler may begin now.
    [[nodiscard]] bool IsAllowed() const;

    // What configuration handlers are told of a run, in this order; an error only while calls are
    // allowed.
    enum class Step : std::uint8_t { Started, Error, Stop, Stopped };
    using ConfigurationRegistration = Registration<CConfigurationEventHandler>;
    // The handler to be told of the step next; null if there is none, or the step is over. Several
    // threads may tell at once: each handler is told of a step once, and who gets null leaves none
    // to be told by others later.
    [[nodiscard]] std::shared_ptr<ConfigurationRegistration> NextToTell(
        Step step, const HandlerList<ConfigurationRegistration>& handlers);
    // Nobody is told of anything any more.
    void Silence() noexcept;
    // The thread that started the run has told of that, or was taken its part.
    void SetStartTold() noexcept;
    // For the grab thread, which may wait: until then, or until the run is forbidden.
    void WaitUntilStartTold();

    // The next frame; invalid after the time-out or the end. Throws what the stream throws.
    [[nodiscard]] CGrabResultPtr TakeFrame(std::chrono::milliseconds timeOut);
    // Whether the frame, which TakeFrame gave, may still be handed to handlers; it is counted by
    // that.
    [[nodiscard]] bool CountAndAllow(const CGrabResultData& frame);
    // The stream has thrown, so that the device may be lost.
    void SetFailed() noexcept { failed_ = true; }
    [[nodiscard]] bool HasFailed() const noexcept { return failed_; }
    // Whether all frames that were asked for have been handed out by TakeFrame.
    [[nodiscard]] bool IsComplete() const;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] bool collectsLatest() const noexcept;
    [[nodiscard]] bool waitForStart(Clock::time_point deadline);
    [[nodiscard]] FrameSlot* takeWanted(Clock::time_point deadline);
    [[nodiscard]] FrameSlot* takeUpcoming(Clock::time_point deadline);
    [[nodiscard]] FrameSlot* takeLatest(Clock::time_point deadline, std::size_t& skipped);
    void collect() noexcept;
    void put(FrameSlot& slot);
    [[nodiscard]] FrameSlot* popOldest() noexcept;
    void skip(FrameSlot& slot);
    void count(Transport::FrameFate fate) { grabber_->GetCounters().Count(number_, fate); }
    void dropCollected() noexcept;

    const GrabPlan plan_;
    const std::shared_ptr<StreamGrabber> grabber_;
    std::shared_ptr<BufferSet> buffers_;
    StreamCounters::Run number_ = 0;

    std::atomic<bool> failed_{false};
    mutable std::mutex mutex_;
    bool allowed_ = true;
    bool started_ = false;
    bool silent_ = false;
    bool startTold_ = false;
    Step step_ = Step::Started;  // that handlers are told of, in the order of the list
    std::shared_ptr<const std::vector<std::shared_ptr<ConfigurationRegistration>>> toTell_;
    std::size_t told_ = 0;
    std::size_t handedOut_ = 0;
    bool upcomingQueued_ = false;

    // The strategies of the latest images: a thread that calls nobody empties the stream.
    std::thread collector_;
    std::condition_variable collected_;  // or started, or told so, or forbidden
    std::vector<FrameSlot*> latest_;     // a ring
    std::size_t oldest_ = 0;
    std::size_t waiting_ = 0;
    std::size_t skipped_ = 0;
    std::exception_ptr failure_;
};

}  // namespace Orlix::Detail
