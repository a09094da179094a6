// A camera object that devices are attached to: it opens them, grabs their frames and tells
// handlers of frames, events, changes of its state and the loss of the device.
//
//     Orlix::CInstantCamera camera;
//     camera.RegisterImageEventHandler(&handler, Orlix::RegistrationMode_Append,
//                                      Orlix::Cleanup_None);
//     camera.Attach(device.get());
//     camera.Open();
//     camera.StartGrabbing(Orlix::GrabStrategy_OneByOne, Orlix::GrabLoop_ProvidedByInstantCamera);
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameraenums.h"
#include "orlixcamera/cameraeventhandler.h"
#include "orlixcamera/configurationeventhandler.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/imageeventhandler.h"
#include "orlixcamera/nodeparameter.h"

namespace GenApi {
class INodeMap;
}

namespace Orlix {

// Threads: any function may be called on any thread, also from within a handler, but the
// destructor, which waits for the threads of the camera and so must not run on one of them.
//
// Handlers run with no lock held. StartGrabbing, StopGrabbing, Close and DetachDevice don't wait
// for a call that runs on the grab or the event thread, so the caller may hold a lock that such a
// call waits for; no call of that run is begun after they have returned. One counts as begun when
// the camera has decided on it, so a thread that was held up right then comes late: a frame and an
// event tell by their numbers where they belong, and a closed camera's node maps answer with
// exceptions. Calls for frames of two runs never overlap.
//
// Open, StartGrabbing and StopGrabbing hold the lock of the device's node map while they write to
// the device, so callbacks of the nodes they write, also those for outside of the lock, must not
// wait for another thread that uses the map.
//
// A lost device makes what needs it throw within a bounded time. StopGrabbing, Close and
// DetachDevice need it not, and do not throw for it.
class ORLIXCAMERA_API CInstantCamera {
private:
    class Impl;
    const std::unique_ptr<Impl> impl_;  // first, for the parameters below refer to it

public:
    CInstantCamera();
    // As Attach.
    explicit CInstantCamera(ICameraDevice* device, ECleanup cleanup = Cleanup_None);
    // Stops, closes, lets go of the device and waits for the threads.
    ~CInstantCamera();
    CInstantCamera(const CInstantCamera&) = delete;
    CInstantCamera& operator=(const CInstantCamera&) = delete;

    // ---- The device

    // Lets a device go that was attached before, and takes this one. With Cleanup_Delete the camera
    // gives up control of the device when it lets go; with Cleanup_None a device that was open
    // already stays open. The object itself is the caller's in both cases, and may end at any time
    // after DetachDevice. InvalidArgumentException for null. Fires OnAttach, OnAttached.
    void Attach(ICameraDevice* device, ECleanup cleanup = Cleanup_Delete);
    [[nodiscard]] bool IsDeviceAttached() const noexcept;
    // Closes where needed; returns the device, null without one. No removal is reported once it has
    // returned: it waits, no longer than a second, for the end of a report that has begun. Fires
    // OnDetach, OnDetached; what these throw leaves with the device detached.
    ICameraDevice* DetachDevice();
    // Empty without a device.
    [[nodiscard]] CDeviceInfo GetDeviceInfo() const;
    // True from the loss of an open device until Close.
    [[nodiscard]] bool IsCameraDeviceRemoved() const noexcept;

    // Takes control of the device and makes its node maps. A camera that is open already stays so.
    // Fires OnOpen, OnOpened; if the latter throws, or opening fails, the camera is closed again
    // and the exception leaves. RuntimeException without a device; AccessException if it is in use.
    void Open();
    [[nodiscard]] bool IsOpen() const noexcept;
    // Stops grabbing where needed. Nothing happens if it is not open. Fires OnClose, OnClosed.
    void Close();

    // ---- Node maps

    // Of the camera object itself: settings that stay from device to device, and can be changed
    // while it is not open. Valid as long as the object.
    [[nodiscard]] GenApi::INodeMap& GetInstantCameraNodeMap() const;
    // Of the device, its transport layer and its stream. The maps exist from the first Open until
    // the next Attach or the end of the camera, and answer with exceptions while it is closed;
    // RuntimeException if there is none yet.
    [[nodiscard]] GenApi::INodeMap& GetNodeMap() const;
    [[nodiscard]] GenApi::INodeMap& GetTLNodeMap() const;
    [[nodiscard]] GenApi::INodeMap& GetStreamGrabberNodeMap() const;

    // Whether the camera delivers events of the device; a feature of its own node map.
    CBooleanParameter GrabCameraEvents;
    // The most buffers, see the tool tip, and how many frames GrabStrategy_LatestImages keeps.
    CIntegerParameter MaxNumBuffer;
    CIntegerParameter OutputQueueSize;

    // ---- Handlers. A null handler is an InvalidArgumentException. With Cleanup_Delete the camera
    // owns the handler and destroys it when it was replaced or taken off, or the camera ends, never
    // while a call of it runs; nobody waits for that. A handler that the camera doesn't own may be
    // deleted by the caller next, so replacing it and taking it off wait for the end of a call that
    // runs on another thread. Taking off returns false for a handler that is not registered.

    void RegisterImageEventHandler(CImageEventHandler* handler, ERegistrationMode mode,
                                   ECleanup cleanup);
    bool DeregisterImageEventHandler(CImageEventHandler* handler);
    void RegisterConfiguration(CConfigurationEventHandler* handler, ERegistrationMode mode,
                               ECleanup cleanup);
    bool DeregisterConfiguration(CConfigurationEventHandler* handler);
    // Called for each message of the device that changes the node of that name. Registrations stay
    // when the camera is closed, and hold for the next device too. With
    // CameraEventAvailability_Mandatory an open camera without the node is an
    // InvalidArgumentException, here or in Open.
    void RegisterCameraEventHandler(
        CCameraEventHandler* handler, const gcstring& nodeName, std::intptr_t userProvidedId,
        ECameraEventRegistrationMode mode, ECleanup cleanup,
        ECameraEventAvailability availability = CameraEventAvailability_Mandatory);
    bool DeregisterCameraEventHandler(CCameraEventHandler* handler, const gcstring& nodeName);
    // Takes all of them off, as if each were replaced.
    void DeregisterCameraEventHandlers();
    // Messages of devices are counted as they arrive, from 1: the number of the last one, and,
    // within OnCameraEvent, of the one that the call is for. A message whose number is not above
    // what the first function told at a moment arrived before that moment.
    [[nodiscard]] std::uint64_t GetLastEventNumber() const noexcept;
    [[nodiscard]] std::uint64_t GetEventNumber() const noexcept;

    // ---- Grabbing. Opens the camera where needed. RuntimeException if it is grabbing already.

    // Without an end; fires OnGrabStart, OnGrabStarted, after what is left to tell of a run that
    // has ended by itself. When it throws nothing is being grabbed.
    void StartGrabbing(EGrabStrategy strategy = GrabStrategy_OneByOne,
                       EGrabLoop grabLoop = GrabLoop_ProvidedByUser);
    // Stops by itself when that many frames, at least one, were handed over.
    void StartGrabbing(std::size_t maxImages, EGrabStrategy strategy = GrabStrategy_OneByOne,
                       EGrabLoop grabLoop = GrabLoop_ProvidedByUser);
    [[nodiscard]] bool IsGrabbing() const noexcept;
    // Counts the runs of this object from 1, those too whose start failed with the stream; that of
    // the last, which may be over, and 0 before the first.
    [[nodiscard]] std::uint64_t GetRunNumber() const noexcept;
    // Nothing happens if it is not grabbing. Fires OnGrabStop, OnGrabStopped: where a run ends by
    // itself at the same time, each handler is told once, by one of the two threads, in this order.
    // Frames that nobody took are dropped and counted.
    void StopGrabbing();
    // The next frame. False, and no result, after the time-out with TimeoutHandling_Return, or if
    // grabbing is stopped meanwhile or not begun; TimeoutException with the other choice.
    // RuntimeException if the device is lost, or a thread of the camera takes the frames.
    bool RetrieveResult(unsigned int timeoutMilliseconds, CGrabResultPtr& result,
                        ETimeoutHandling timeoutHandling = TimeoutHandling_ThrowException);
};

}  // namespace Orlix
