// Where the camera library says what it has no caller to tell: an exception of a handler that it
// swallowed, a thread priority that the system refused.
#pragma once

#include "orlixcamera/api.h"

namespace Orlix {

// May be called on any thread, at the same time on several; must not throw.
using MessageSink = void (*)(const char* message) noexcept;

// Replaces the sink of the process and returns the one before. The first one writes lines to
// standard error; null is silence.
ORLIXCAMERA_API MessageSink SetMessageSink(MessageSink sink) noexcept;

// For transport back ends: to the sink of the process.
ORLIXCAMERA_API void TellMessage(const char* message) noexcept;

}  // namespace Orlix
