// Export marker of the camera library. Classes that are thrown, cast or used across module
// borders carry it; everything else stays hidden.
#pragma once

#define ORLIXCAMERA_API __attribute__((visibility("default")))
