#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "genapi/pointer.h"
#include "orlixcamera/instantcamera/instantcamera_impl.h"
#include "orlixcamera/instantcamera/messages.h"
#include "orlixcamera/instantcamera/threadpriority.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix {

using Detail::CallGuarded;
using Detail::GrabRun;
using GenICam::RuntimeException;
using std::chrono::milliseconds;

namespace {

// A wait that begins anew; the end of grabbing ends it.
constexpr milliseconds loopWait{1000};

// Small frames come fast and need many buffers to bridge a busy moment; for large ones a few do,
// which then stay in the processor's caches.
std::size_t getBufferCount(const Detail::CameraSettings& settings, std::size_t payloadSize) {
    constexpr std::size_t always = 16;
    constexpr std::size_t bytesPerMiB = std::size_t{1} << 20U;
    const auto memory = static_cast<std::size_t>(settings.bufferMemory) * bytesPerMiB;
    const std::size_t fitting = memory / std::max<std::size_t>(payloadSize, 1);
    return std::min(static_cast<std::size_t>(settings.maxNumBuffer), std::max(always, fitting));
}

}  // namespace

std::shared_ptr<GrabRun> CInstantCamera::Impl::getRun() const {
    const std::scoped_lock lock(state_);
    return run_;
}

void CInstantCamera::Impl::StartGrabbing(Detail::GrabPlan plan) {
    Open();
    plan.deliverFailed = settings_->deliverFailedFrames;
    if (plan.strategy == GrabStrategy_LatestImages) {
        plan.queueSize = static_cast<std::size_t>(settings_->outputQueueSize);
    }
    std::shared_ptr<GrabRun> before;
    {
        const std::scoped_lock lock(state_);
        if (run_ != nullptr) {
            throw RuntimeException("The camera is grabbing already.", __FILE__, __LINE__);
        }
        before = lastRun_;
    }
    if (before != nullptr) {
        endRun(before);  // it has ended by itself, but may not have told of that to all
    }
    notify(&CConfigurationEventHandler::OnGrabStart, "OnGrabStart");
    std::shared_ptr<GrabRun> run;
    {
        const Detail::Control::Hold control(control_);
        run = start(plan);
    }
    tell(*run, GrabRun::Step::Started);
    run->SetStartTold();
}

std::shared_ptr<GrabRun> CInstantCamera::Impl::start(const Detail::GrabPlan& plan) {
    if (getRun() != nullptr || !settings_->isOpen) {
        throw RuntimeException(settings_->isOpen ? "The camera is grabbing already."
                                                 : "The camera was closed meanwhile.",
                               __FILE__, __LINE__);
    }
    const Detail::ExpectedFrames frames{readPayloadSize(), readGeometry()};
    prepareBuffers(frames.payloadSize);
    if (grabber_ == nullptr) {
        grabber_ = std::make_shared<Detail::StreamGrabber>(device_, counters_);
    }
    const auto run = std::make_shared<GrabRun>(plan, grabber_);
    // Known before it begins, for the first handler may be quick to stop it.
    setRun(run);
    lockTransport(true);
    bool acquires = false;
    try {
        run->Start(buffers_, frames);
        if (settings_->controlAcquisition) {
            acquires = true;  // also if it throws: the device may have heard it
            executeCommand("AcquisitionStart");
        }
        if (plan.loop == GrabLoop_ProvidedByInstantCamera) {
            startThread(run);
        }
    } catch (...) {
        abandon(*run, acquires);
        throw;
    }
    return run;
}

std::size_t CInstantCamera::Impl::readPayloadSize() const {
    const CIntegerParameter payload(GetMaps()->GetDevice(), "PayloadSize");
    if (!payload.IsReadable()) {
        throw RuntimeException(
            "Grabbing can't be started: the device doesn't tell the size of its frames in a "
            "feature 'PayloadSize'.",
            __FILE__, __LINE__);
    }
    return static_cast<std::size_t>(payload.GetValue());
}

// For frames that lose the part that tells of it. Who can't tell it can be grabbed from all the
// same.
Detail::FrameGeometry CInstantCamera::Impl::readGeometry() const {
    const auto maps = GetMaps();
    GenApi::INodeMap& map = maps->GetDevice();
    const auto read = [&map](const char* name) {
        const std::int64_t value = CIntegerParameter(map, name).GetValueOrDefault(0);
        return std::in_range<std::uint32_t>(value) ? static_cast<std::uint32_t>(value) : 0U;
    };
    try {
        const gcstring format = CEnumParameter(map, "PixelFormat").GetValueOrDefault("");
        return {CPixelTypeMapper::GetOrlixPixelTypeByName(format.c_str()), read("Width"),
                read("Height"), read("OffsetX"), read("OffsetY")};
    } catch (const GenICam::GenericException&) {
        return {};
    }
}

// A run that never was, of which nobody is told at the next stop.
void CInstantCamera::Impl::abandon(GrabRun& run, bool acquires) noexcept {
    run.Silence();
    run.SetFailed();
    run.Forbid();
    if (acquires) {
        stopAcquisition(run);
    }
    run.Stop();
    lockTransport(false);
    setRun(nullptr);
    const std::scoped_lock lock(state_);
    if (lastRun_.get() == &run) {
        lastRun_.reset();
    }
}

void CInstantCamera::Impl::setRun(std::shared_ptr<GrabRun> run) noexcept {
    settings_->isGrabbing = run != nullptr;
    const std::scoped_lock lock(state_);
    if (run != nullptr) {
        lastRun_ = run;
    }
    run_ = std::move(run);
}

// Calls of two runs never overlap, so the new thread waits for the old one first.
void CInstantCamera::Impl::startThread(const std::shared_ptr<GrabRun>& run) {
    const auto before = std::make_shared<std::thread>(std::move(grabThread_));
    try {
        grabThread_ = std::thread([this, run, before] {
            if (before->joinable()) {
                before->join();
            }
            grabLoop(run);
        });
    } catch (...) {
        grabThread_ = std::move(*before);
        throw;
    }
}

// Buffers of the last run are taken again, also those that somebody still holds.
void CInstantCamera::Impl::prepareBuffers(std::size_t payloadSize) {
    const std::size_t count = getBufferCount(*settings_, payloadSize);
    if (buffers_ == nullptr || buffers_->GetCount() != count ||
        buffers_->GetCapacity() != payloadSize) {
        dropBuffers();
        buffers_ = std::make_shared<Detail::BufferSet>(count, payloadSize,
                                                       GetMaps()->GetChunkMaps(), counters_);
    }
}

// The memory of one run is given back before that of the next is taken.
void CInstantCamera::Impl::dropBuffers() noexcept {
    buffers_.reset();
    if (grabber_ != nullptr) {
        grabber_->DropBuffers();
    }
    const std::scoped_lock lock(state_);
    lastRun_.reset();
}

void CInstantCamera::Impl::StopGrabbing() {
    std::shared_ptr<GrabRun> run;
    {
        const std::scoped_lock lock(state_);
        run = lastRun_;
    }
    if (run != nullptr) {
        endRun(run);
    }
}

// On the grab thread, too, when a run ends by itself.
void CInstantCamera::Impl::endRun(const std::shared_ptr<GrabRun>& run) {
    {
        // A start that is under way may fail yet, of which nobody is told.
        const Detail::Control::Hold control(control_);
    }
    // The thread that has started it may not have come to that yet.
    tell(*run, GrabRun::Step::Started);
    tell(*run, GrabRun::Step::Stop);
    {
        const Detail::Control::Hold control(control_);
        stop(*run);
    }
    tell(*run, GrabRun::Step::Stopped);
}

// What another thread has begun to tell is finished here, but for the call that it is in: nothing
// is told of the run when StopGrabbing has returned.
void CInstantCamera::Impl::tell(GrabRun& run, GrabRun::Step step, const char* text) {
    const auto call = [&](CConfigurationEventHandler& handler) {
        switch (step) {
            case GrabRun::Step::Started:
                return CallGuarded("OnGrabStarted", [&] { handler.OnGrabStarted(camera_); });
            case GrabRun::Step::Error:
                return CallGuarded("OnGrabError", [&] { handler.OnGrabError(camera_, text); });
            case GrabRun::Step::Stop:
                return CallGuarded("OnGrabStop", [&] { handler.OnGrabStop(camera_); });
            case GrabRun::Step::Stopped:
                return CallGuarded("OnGrabStopped", [&] { handler.OnGrabStopped(camera_); });
        }
    };
    while (const auto item = run.NextToTell(step, configurations_)) {
        item->Call(call);
    }
}

void CInstantCamera::Impl::stop(GrabRun& run) noexcept {
    run.Forbid();
    if (getRun().get() != &run) {
        return;
    }
    if (settings_->controlAcquisition) {
        stopAcquisition(run);
    }
    run.Stop();
    lockTransport(false);
    setRun(nullptr);
}

// A device that is lost has stopped anyway. The news of that may be still on its way, and a command
// would be waited for much longer than a sign of life.
void CInstantCamera::Impl::stopAcquisition(const GrabRun& run) noexcept {
    try {
        if (!settings_->isRemoved && device_->CheckAlive()) {
            executeCommand("AcquisitionStop");
        }
    } catch (...) {
        if (!settings_->isRemoved && !run.HasFailed()) {
            Detail::Tell("The acquisition can't be stopped: " + Detail::TextOfCurrentException());
        }
    }
}

void CInstantCamera::Impl::executeCommand(const char* name) {
    const GenApi::CCommandPtr command = GetMaps()->GetDevice().GetNode(name);
    if (GenApi::IsWritable(command)) {
        command->Execute();
    }
}

void CInstantCamera::Impl::lockTransport(bool locked) noexcept {
    try {
        CIntegerParameter parameter(GetMaps()->GetDevice(), "TLParamsLocked");
        if (parameter.IsWritable()) {
            parameter.SetValue(locked ? 1 : 0);
        }
    } catch (...) {
        if (!settings_->isRemoved) {
            Detail::Tell("The transport parameters can't be locked: " +
                         Detail::TextOfCurrentException());
        }
    }
}

void CInstantCamera::Impl::grabLoop(const std::shared_ptr<GrabRun>& run) {
    Detail::SetThreadPriority(static_cast<int>(settings_->grabThreadPriority), "grab");
    try {
        while (run->IsAllowed() && !run->IsComplete()) {
            if (const CGrabResultPtr frame = run->TakeFrame(loopWait)) {
                handOver(*run, frame);
            }
        }
    } catch (...) {
        run->SetFailed();
        const std::string text = Detail::TextOfCurrentException();
        run->WaitUntilStartTold();
        tell(*run, GrabRun::Step::Error, text.c_str());
    }
    run->WaitUntilStartTold();
    if (run->IsAllowed()) {
        endRun(run);
    }
}

// The call of the first handler has begun as soon as it is allowed, even if the run ends meanwhile:
// the frame tells its run. The others are asked for anew, since each may stop the camera.
void CInstantCamera::Impl::handOver(GrabRun& run, const CGrabResultPtr& frame) {
    bool allowed = run.CountAndAllow(*frame);
    const std::size_t skipped = frame->GetNumberOfSkippedImages();
    const auto handlers = imageHandlers_.Get();
    for (const auto& item : *handlers) {
        item->Call([&](CImageEventHandler& handler) {
            if (skipped != 0 && allowed) {
                CallGuarded("OnImagesSkipped", [&] { handler.OnImagesSkipped(camera_, skipped); });
                allowed = run.IsAllowed();
            }
            if (allowed) {
                CallGuarded("OnImageGrabbed", [&] { handler.OnImageGrabbed(camera_, frame); });
                allowed = run.IsAllowed();
            }
        });
    }
}

bool CInstantCamera::Impl::RetrieveResult(unsigned int timeoutMilliseconds, CGrabResultPtr& result,
                                          ETimeoutHandling timeoutHandling) {
    result.Release();
    const auto run = getRun();
    if (run == nullptr) {
        return false;
    }
    if (run->GetPlan().loop != GrabLoop_ProvidedByUser) {
        throw RuntimeException("A thread of the camera takes the frames already.", __FILE__,
                               __LINE__);
    }
    try {
        result = run->TakeFrame(milliseconds(timeoutMilliseconds));
    } catch (...) {
        run->SetFailed();
        endRun(run);
        throw;
    }
    if (run->IsComplete()) {
        endRun(run);
    } else if (!result.IsValid() && run->IsAllowed() &&
               timeoutHandling == TimeoutHandling_ThrowException) {
        const std::string text =
            "No frame came within " + std::to_string(timeoutMilliseconds) + " milliseconds.";
        throw GenICam::TimeoutException(text.c_str(), __FILE__, __LINE__);
    }
    return result.IsValid();
}

}  // namespace Orlix
