// Choices in the calls of an instant camera. The numbers are part of the interface.
#pragma once

namespace Orlix {

// Who ends an object that is handed to an instant camera.
enum ECleanup {
    Cleanup_None = 0,    // the caller, after the object has been taken off or the camera is gone
    Cleanup_Delete = 1,  // the camera, through the object's own hook
};

// What becomes of the image or configuration handlers that are registered already.
enum ERegistrationMode {
    RegistrationMode_ReplaceAll = 0,
    RegistrationMode_Append = 1,
};

// The same for handlers of camera events. Mind that the numbers are the other way round.
enum ECameraEventRegistrationMode {
    CameraEventRegistrationMode_Append = 0,
    CameraEventRegistrationMode_ReplaceAll = 1,
};

// Whether a camera must have the node that a handler of camera events is registered for.
enum ECameraEventAvailability {
    CameraEventAvailability_Mandatory = 0,  // opening and registering fail without it
    CameraEventAvailability_Optional = 1,   // without it the handler isn't called
};

// Which frames are handed over.
enum EGrabStrategy {
    // All, in the order of their arrival. When all buffers wait or are held, frames are lost.
    GrabStrategy_OneByOne = 0,
    // The last one that came; older ones that nobody took are skipped.
    GrabStrategy_LatestImageOnly = 1,
    // The last ones that came, as many as OutputQueueSize; older ones are skipped.
    GrabStrategy_LatestImages = 2,
    // The next that comes after it was asked for.
    GrabStrategy_UpcomingImage = 3,
};

enum EGrabLoop {
    GrabLoop_ProvidedByInstantCamera = 0,  // a thread of the camera calls the image handlers
    GrabLoop_ProvidedByUser = 1,           // the caller takes frames with RetrieveResult
};

enum ETimeoutHandling {
    TimeoutHandling_Return = 0,
    TimeoutHandling_ThrowException = 1,
};

}  // namespace Orlix
