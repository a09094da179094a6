// What the tests of the instant camera share: an attached scripted device, handlers that record,
// and waits for what a test knows will come.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "gcbase/gcexception.h"
#include "genapi/genapi.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/instantcamera/scripteddevice.h"

namespace CameraTest {

using namespace Orlix;

inline constexpr std::chrono::seconds patience{30};

// A value that one thread sets and another waits for.
class Gate {
public:
    void Open() {
        const std::scoped_lock lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    [[nodiscard]] bool Wait() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

// A list that grows on one thread and is waited for on another.
template <class Item>
class Record {
public:
    void Add(Item item) {
        const std::scoped_lock lock(mutex_);
        items_.push_back(std::move(item));
        changed_.notify_all();
    }
    [[nodiscard]] bool WaitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [&] { return items_.size() >= count; });
    }
    [[nodiscard]] std::vector<Item> Get() const {
        const std::scoped_lock lock(mutex_);
        return items_;
    }
    [[nodiscard]] std::size_t Count() const { return Get().size(); }
    void Clear() {
        const std::scoped_lock lock(mutex_);
        items_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Item> items_;
};

// Keeps what it is given, and does what the test wants besides.
class Images : public CImageEventHandler {
public:
    void OnImagesSkipped(CInstantCamera&, std::size_t skipped) override { skips.Add(skipped); }
    void OnImageGrabbed(CInstantCamera& camera, const CGrabResultPtr& result) override {
        if (work) {
            work(camera, result);
        }
        results.Add(keep ? result : CGrabResultPtr());
    }

    std::function<void(CInstantCamera&, const CGrabResultPtr&)> work;
    bool keep = true;
    Record<CGrabResultPtr> results;
    Record<std::size_t> skips;
};

// The names of its notifications in their order.
class States : public CConfigurationEventHandler {
public:
    void OnAttach(CInstantCamera&) override { note("OnAttach"); }
    void OnAttached(CInstantCamera&) override { note("OnAttached"); }
    void OnDetach(CInstantCamera&) override { note("OnDetach"); }
    void OnDetached(CInstantCamera&) override { note("OnDetached"); }
    void OnDestroy(CInstantCamera&) override { note("OnDestroy"); }
    void OnDestroyed(CInstantCamera&) override { note("OnDestroyed"); }
    void OnOpen(CInstantCamera&) override { note("OnOpen"); }
    void OnOpened(CInstantCamera&) override { note("OnOpened"); }
    void OnClose(CInstantCamera&) override { note("OnClose"); }
    void OnClosed(CInstantCamera&) override { note("OnClosed"); }
    void OnGrabStart(CInstantCamera&) override { note("OnGrabStart"); }
    void OnGrabStarted(CInstantCamera&) override { note("OnGrabStarted"); }
    void OnGrabStop(CInstantCamera&) override { note("OnGrabStop"); }
    void OnGrabStopped(CInstantCamera&) override { note("OnGrabStopped"); }
    void OnGrabError(CInstantCamera&, const char* text) override {
        note(std::string("OnGrabError: ") + text);
    }
    void OnCameraDeviceRemoved(CInstantCamera&) override { note("OnCameraDeviceRemoved"); }

    // Called with each name, which may throw.
    std::function<void(const std::string&)> work;
    Record<std::string> names;

private:
    void note(const std::string& name) {
        names.Add(name);
        if (work) {
            work(name);
        }
    }
};

template <class Exception = GenICam::GenericException, class Function>
std::string failureOf(Function&& function) {
    try {
        function();
    } catch (const Exception& error) {
        return error.GetDescription();
    }
    return "nothing was thrown";
}

// A camera with a scripted device; the first to go is the camera, then its handlers.
class CameraFixture : public testing::Test {
protected:
    void open() {
        camera.Attach(attached.get());
        camera.Open();
    }
    void grab(EGrabStrategy strategy = GrabStrategy_OneByOne) {
        camera.RegisterImageEventHandler(&images, RegistrationMode_Append, Cleanup_None);
        if (!camera.IsOpen()) {
            open();
        }
        camera.StartGrabbing(strategy, GrabLoop_ProvidedByInstantCamera);
    }
    [[nodiscard]] std::int64_t statistic(const char* name) {
        return CIntegerParameter(camera.GetStreamGrabberNodeMap(), name).GetValue();
    }

    // Sent equals the sum of all fates.
    void expectAccount(std::int64_t sent) {
        EXPECT_EQ(statistic("StatisticSent"), sent);
        EXPECT_EQ(statistic("StatisticDelivered") + statistic("StatisticFailed") +
                      statistic("StatisticLostForBuffer") + statistic("StatisticSkipped"),
                  sent);
        EXPECT_EQ(statistic("StatisticFailedMissingPackets") +
                      statistic("StatisticFailedWrongSize") +
                      statistic("StatisticFailedBadTrailer") +
                      statistic("StatisticFailedTimedOut") + statistic("StatisticFailedAborted"),
                  statistic("StatisticFailed"));
    }

    const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
    const std::shared_ptr<ICameraDevice> attached = CreateCameraDevice(device);
    Images images;
    States states;
    CInstantCamera camera;
};

}  // namespace CameraTest
