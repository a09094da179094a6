// Told of the events that a camera sends, such as the end of an exposure.
#pragma once

#include <cstdint>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"

namespace GenApi {
class INode;
}

namespace Orlix {

using GenICam::gcstring;
class CInstantCamera;

// A handler is registered for a node of the camera's map that tells of an event, and called when a
// message has changed it. One call at a time for each camera, on its event thread, with no lock of
// the library and of no node map held; what it throws is logged and swallowed. The nodes show the
// last message, so a handler that is slower than its camera reads a later event's values.
class ORLIXCAMERA_API CCameraEventHandler {
public:
    virtual void OnCameraEvent(CInstantCamera& /*camera*/, std::intptr_t /*userProvidedId*/,
                               GenApi::INode* /*node*/) {}
    // On the thread that registers or takes off.
    virtual void OnCameraEventHandlerRegistered(CInstantCamera& /*camera*/,
                                                const gcstring& /*nodeName*/,
                                                std::intptr_t /*userProvidedId*/) {}
    virtual void OnCameraEventHandlerDeregistered(CInstantCamera& /*camera*/,
                                                  const gcstring& /*nodeName*/,
                                                  std::intptr_t /*userProvidedId*/) {}
    // Asked for by a registration with cleanup; deletes the object. May be called on any thread,
    // never while a call of this handler runs.
    virtual void DestroyCameraEventHandler(CInstantCamera& camera);

    CCameraEventHandler(const CCameraEventHandler&) = delete;
    CCameraEventHandler& operator=(const CCameraEventHandler&) = delete;
    virtual ~CCameraEventHandler();

protected:
    CCameraEventHandler();
};

}  // namespace Orlix
