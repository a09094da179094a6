// Told of what happens to an instant camera: attaching, opening, grabbing, loss of the device.
#pragma once

#include "orlixcamera/api.h"

namespace Orlix {

class CInstantCamera;

// Each pair is called before and after the step, on the thread that takes it, with no lock of the
// library held; of a run that ends in the same moment for two reasons, OnGrabStarted to
// OnGrabStopped come in this order, but on either thread, and a handler that is still in one of
// them may be called for the next. A run that is begun while the camera is being closed ends
// without a call. An exception of OnAttached, OnOpened or OnDetached leaves the operation; all
// others are logged and swallowed.
class ORLIXCAMERA_API CConfigurationEventHandler {
public:
    virtual void OnAttach(CInstantCamera& /*camera*/) {}
    virtual void OnAttached(CInstantCamera& /*camera*/) {}
    virtual void OnDetach(CInstantCamera& /*camera*/) {}
    virtual void OnDetached(CInstantCamera& /*camera*/) {}
    virtual void OnDestroy(CInstantCamera& /*camera*/) {}
    virtual void OnDestroyed(CInstantCamera& /*camera*/) {}
    virtual void OnOpen(CInstantCamera& /*camera*/) {}
    virtual void OnOpened(CInstantCamera& /*camera*/) {}
    virtual void OnClose(CInstantCamera& /*camera*/) {}
    virtual void OnClosed(CInstantCamera& /*camera*/) {}
    virtual void OnGrabStart(CInstantCamera& /*camera*/) {}
    virtual void OnGrabStarted(CInstantCamera& /*camera*/) {}
    virtual void OnGrabStop(CInstantCamera& /*camera*/) {}
    virtual void OnGrabStopped(CInstantCamera& /*camera*/) {}
    virtual void OnGrabError(CInstantCamera& /*camera*/, const char* /*errorMessage*/) {}
    // On a thread of the library that is neither the grab nor the event thread; once for each loss.
    virtual void OnCameraDeviceRemoved(CInstantCamera& /*camera*/) {}
    virtual void OnConfigurationRegistered(CInstantCamera& /*camera*/) {}
    virtual void OnConfigurationDeregistered(CInstantCamera& /*camera*/) {}
    // Asked for by a registration with cleanup; ends the object.
    virtual void DestroyConfiguration(CInstantCamera& camera);

    CConfigurationEventHandler(const CConfigurationEventHandler&) = delete;
    CConfigurationEventHandler& operator=(const CConfigurationEventHandler&) = delete;
    virtual ~CConfigurationEventHandler();

protected:
    CConfigurationEventHandler();
};

}  // namespace Orlix
