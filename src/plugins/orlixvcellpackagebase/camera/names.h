// Names of pins, of saved keys and of node maps, and the texts that stand for an absent device.
#pragma once

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase::CameraNames {

extern const GenICam::gcstring imagePin;
extern const GenICam::gcstring imageCorruptPin;

extern const GenICam::gcstring devicePropertiesKey;
extern const GenICam::gcstring eventConfigurationKey;
extern const GenICam::gcstring chunkPinConfigurationsKey;
extern const GenICam::gcstring acquisitionModeKey;
extern const GenICam::gcstring fixCorruptImagesKey;
extern const GenICam::gcstring featureStreamsKey;

extern const GenICam::gcstring cameraInstanceMap;
extern const GenICam::gcstring streamGrabberMap;
extern const GenICam::gcstring cameraDeviceMap;
extern const GenICam::gcstring transportLayerMap;

// Before anything was found or allocated, and after a device was given up.
inline constexpr char noDeviceListed[] = "No device listed";
inline constexpr char noDeviceSelected[] = "No device selected";
// An event pin that was added and has no text yet.
inline constexpr char notYetConfigured[] = "<not yet configured>";

}  // namespace Plugin::OrlixVCellPackageBase::CameraNames
