// What an instant camera is made of. The device part is in instantcamera_impl.cpp, grabbing in
// grabbing.cpp, the handlers in handlers.cpp.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "orlixcamera/instantcamera.h"
#include "orlixcamera/instantcamera/cameramap.h"
#include "orlixcamera/instantcamera/control.h"
#include "orlixcamera/instantcamera/devicemaps.h"
#include "orlixcamera/instantcamera/eventdelivery.h"
#include "orlixcamera/instantcamera/grabrun.h"
#include "orlixcamera/instantcamera/handlerlist.h"
#include "orlixcamera/instantcamera/removalreporter.h"
#include "orlixcamera/instantcamera/streamgrabber.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix {

// Two locks. `control_` lets one thread at a time change the state of the device; it is taken
// behind the lock of the device's map, held while the transport works, and never while a handler is
// called or waited for. `state_` is a leaf that guards the members below it.
class CInstantCamera::Impl final : private Transport::IDeviceSink {
public:
    explicit Impl(CInstantCamera& camera);
    ~Impl() = default;
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // ---- instantcamera_impl.cpp
    // Ends everything, threads and handlers too; nothing may be called afterwards.
    void End();
    void Attach(ICameraDevice* device, ECleanup cleanup);
    ICameraDevice* DetachDevice();
    void Open();
    void Close();
    [[nodiscard]] bool IsDeviceAttached() const noexcept;
    [[nodiscard]] CDeviceInfo GetDeviceInfo() const;
    [[nodiscard]] std::shared_ptr<Detail::DeviceMaps> GetMaps() const;

    // ---- grabbing.cpp
    // Those parts of the plan that are settings are filled in here.
    void StartGrabbing(Detail::GrabPlan plan);
    void StopGrabbing();
    bool RetrieveResult(unsigned int timeoutMilliseconds, CGrabResultPtr& result,
                        ETimeoutHandling timeoutHandling);

    // ---- handlers.cpp
    void RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode,
                                   ECleanup cleanup);
    bool DeregisterImageEventHandler(CImageEventHandler* handler);
    void RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode,
                               ECleanup cleanup);
    bool DeregisterConfiguration(CConfigurationEventHandler* handler);
    void RegisterCameraEventHandler(CCameraEventHandler* handler, const gcstring& nodeName,
                                    std::intptr_t userProvidedId, ECameraEventRegistrationMode mode,
                                    ECleanup cleanup, ECameraEventAvailability availability);
    bool DeregisterCameraEventHandler(CCameraEventHandler* handler, const gcstring& nodeName);
    void DeregisterCameraEventHandlers();

    [[nodiscard]] Detail::CameraSettings& GetSettings() const noexcept { return *settings_; }
    [[nodiscard]] GenApi::INodeMap& GetCameraMap() const { return cameraMap_->Get(); }
    [[nodiscard]] const Detail::EventDelivery& GetEvents() const noexcept { return events_; }
    [[nodiscard]] std::uint64_t GetRunNumber() const { return counters_->GetLastRun(); }

private:
    using ImageRegistration = Detail::Registration<CImageEventHandler>;
    using ConfigurationRegistration = Detail::Registration<CConfigurationEventHandler>;
    using Notification = void (CConfigurationEventHandler::*)(CInstantCamera&);

    // Transport::IDeviceSink, on threads of the transport layer; they only post.
    void OnEvent(const Transport::EventMessage& message) override;
    void OnLost() override;

    // ---- instantcamera_impl.cpp, with control_ held but for the last two
    [[nodiscard]] bool openDevice();  // false if it was open already
    // Makes the maps if there are none.
    void connect(const std::shared_ptr<Transport::IDevice>& device,
                 std::shared_ptr<Detail::DeviceMaps>& maps);
    void disconnect(Transport::IDevice& device, Detail::DeviceMaps* maps);
    void closeDevice() noexcept;
    void letGo() noexcept;
    void invalidateMaps();
    [[nodiscard]] std::shared_ptr<Detail::DeviceMaps> findMaps() const;

    // ---- grabbing.cpp
    // Null while nothing is being grabbed.
    [[nodiscard]] std::shared_ptr<Detail::GrabRun> getRun() const;
    // With control_ held.
    [[nodiscard]] std::shared_ptr<Detail::GrabRun> start(const Detail::GrabPlan& plan);
    void stop(Detail::GrabRun& run) noexcept;  // with control_ held
    void stopAcquisition(const Detail::GrabRun& run) noexcept;
    void abandon(Detail::GrabRun& run, bool acquires) noexcept;
    [[nodiscard]] std::size_t readPayloadSize() const;
    [[nodiscard]] Detail::FrameGeometry readGeometry() const;
    void dropBuffers() noexcept;
    void prepareBuffers(std::size_t payloadSize);  // with control_ held
    void setRun(std::shared_ptr<Detail::GrabRun> run) noexcept;
    void startThread(const std::shared_ptr<Detail::GrabRun>& run);
    void endRun(const std::shared_ptr<Detail::GrabRun>& run);
    void tell(Detail::GrabRun& run, Detail::GrabRun::Step step, const char* text = "");
    void grabLoop(const std::shared_ptr<Detail::GrabRun>& run);
    void handOver(Detail::GrabRun& run, const CGrabResultPtr& frame);
    void executeCommand(const char* name);
    void lockTransport(bool locked) noexcept;

    // ---- handlers.cpp
    void notify(Notification notification, const char* name);  // swallows
    void notifyStrictly(Notification notification);            // throws
    void bindEventHandlers(const std::shared_ptr<Detail::DeviceMaps>& maps);
    void reportRemoval() noexcept;

    CInstantCamera& camera_;
    const std::shared_ptr<Detail::CameraSettings> settings_;
    const std::shared_ptr<Detail::StreamCounters> counters_;
    const std::unique_ptr<Detail::RegisterMap> cameraMap_;
    Detail::HandlerList<ImageRegistration> imageHandlers_;
    Detail::HandlerList<ConfigurationRegistration> configurations_;
    Detail::EventRegistrations eventHandlers_;

    Detail::Control control_{[this] { return findMaps(); }};
    std::shared_ptr<Detail::StreamGrabber> grabber_;  // these with control_ held
    std::shared_ptr<Detail::BufferSet> buffers_;
    std::thread grabThread_;  // the last; each waits for the one before
    ECleanup cleanup_ = Cleanup_None;
    bool openedHere_ = false;

    mutable std::mutex state_;
    ICameraDevice* attached_ = nullptr;
    std::shared_ptr<Transport::IDevice> device_;
    std::shared_ptr<Detail::DeviceMaps> maps_;  // since the first opening of this attachment
    std::shared_ptr<Detail::GrabRun> run_;      // that goes on
    std::shared_ptr<Detail::GrabRun> lastRun_;  // that was started last

    Detail::EventDelivery events_;
    Detail::RemovalReporter removal_;
};

}  // namespace Orlix
