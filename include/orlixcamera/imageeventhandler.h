// Told of the frames that an instant camera grabs with a thread of its own.
#pragma once

#include <cstddef>

#include "orlixcamera/api.h"

namespace Orlix {

class CGrabResultPtr;
class CInstantCamera;

// The first two are called on the grab thread, one call at a time for each camera, with no lock of
// the library and of no node map held; what they throw is logged and swallowed. The handler may
// use the camera, stop it too. While it runs, frames wait in the buffers.
class ORLIXCAMERA_API CImageEventHandler {
public:
    // Frames that came before the next one are left out, as the strategy asks.
    virtual void OnImagesSkipped(CInstantCamera& /*camera*/, std::size_t /*skippedImages*/) {}
    // A frame, complete or failed: see CGrabResultData::GrabSucceeded. The result may be kept.
    virtual void OnImageGrabbed(CInstantCamera& /*camera*/, const CGrabResultPtr& /*result*/) {}
    // On the thread that registers or takes off.
    virtual void OnImageEventHandlerRegistered(CInstantCamera& /*camera*/) {}
    virtual void OnImageEventHandlerDeregistered(CInstantCamera& /*camera*/) {}
    // Asked for by a registration with cleanup; deletes the object.
    virtual void DestroyImageEventHandler(CInstantCamera& camera);

    CImageEventHandler(const CImageEventHandler&) = delete;
    CImageEventHandler& operator=(const CImageEventHandler&) = delete;
    virtual ~CImageEventHandler();

protected:
    CImageEventHandler();
};

}  // namespace Orlix
