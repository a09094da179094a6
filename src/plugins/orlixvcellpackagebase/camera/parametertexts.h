// The texts and first states of the parameters of Camera but for those of pins, category by
// category in the order in which they are made. Odd wordings are what users, dialogs and documents
// know, and stay.
#pragma once

#include "camera/parametertext.h"

namespace Plugin::OrlixVCellPackageBase::CameraTexts {

inline constexpr CategoryText acquisitionControl{
    "AcquisitionControl", "Acquisition Control",
    "Contains Camera vCell parameters for controlling image acquisition.", ""};

inline constexpr CategoryText deviceEnumerationControl{
    "DeviceEnumerationControl", "Device Enumeration Control",
    "Contains Camera vCell parameters for controlling device enumeration.",
    "Camera vCell parameters for controlling device enumeration. The devices found by the "
    "enumeration can be assigned to a Camera vCell. Also, you can specify properties that a device "
    "must fulfil in order to be assigned."};

inline constexpr CategoryText selectedDeviceInformation{
    "SelectedDeviceInformation", "Selected Device Information",
    "Contains parameters with information about the camera selected by the camera vCell.", ""};

inline constexpr CategoryText eventOutputControl{
    "EventOutputControl", "Event Output Control",
    "Contains parameters for configuring event output pins.", ""};

inline constexpr CategoryText chunkOutputControl{
    "ChunkOutputControl", "Chunk Data Output Control",
    "Contains parameters for configuring chunk data output pins.", ""};

inline constexpr CategoryText configurationSetPersistence{
    "ConfigurationSetPersistence", "Configuration Set Persistence",
    "Contains parameters for saving the settings of a camera device and related settings "
    "persistently in a recipe after you have configured the parameters.",
    "Contains parameters for saving the settings of a camera device and related settings "
    "persistently in a recipe after you have configured the parameters. Camera settings aren’t "
    "saved automatically when you save a recipe because the camera devices assigned to a Camera "
    "vCell may not be connected at the time the recipe is saved or the settings of the camera "
    "device may be in an undefined state, e.g., because they have been changed by another program "
    "in the meantime."};

// AcquisitionControl

inline constexpr ParameterText acquisitionMode{"AcquisitionMode",
                                               "Acquisition Mode",
                                               "Beginner",
                                               {true, true},
                                               "Sets the image acquisition mode.",
                                               "Sets the image acquisition mode."};

inline constexpr ParameterText fixCorruptImages{
    "FixCorruptImages",
    "Fix Corrupt Images",
    "Beginner",
    {true, true},
    "Enables the Fix Corrupt Images feature.",
    "Enables the Fix Corrupt Images feature. Images marked as failed by the orlix acquisition "
    "engine, e.g., because of image content lost in transfer, are corrected and provided at the "
    "ouptput by using a best effort approach."};

// SelectedDeviceInformation

inline constexpr ParameterText selectedDeviceModelName{
    "SelectedDeviceModelName",
    "Selected Device Model Name",
    "Beginner",
    {false, false},
    "Name of the selected device model.",
    "Name of the selected device model. This value only is set when the Camera vCell resources are "
    "allocated, e.g., when the recipe is started."};

inline constexpr ParameterText selectedDeviceSerialNumber{
    "SelectedDeviceSerialNumber",
    "Selected Device Serial Number",
    "Beginner",
    {false, false},
    "Serial number of the selected device.",
    "Serial number of the selected device. This value only is set when the Camera vCell resources "
    "are allocated, e.g., when the recipe is started."};

inline constexpr ParameterText selectedDeviceVendorName{
    "SelectedDeviceVendorName",
    "Selected Device Vendor Name",
    "Beginner",
    {false, false},
    "Name of the vendor of the selected device.",
    "Name of the vendor of the selected device. This value only is set when the Camera vCell "
    "resources are allocated, e.g., when the recipe is started."};

inline constexpr ParameterText selectedDeviceUserDefinedName{
    "SelectedDeviceUserDefinedName",
    "Selected Device User Defined Name",
    "Beginner",
    {false, false},
    "User-defined name of the selected device.",
    "User-defined name of the selected device. This value only is set when the Camera vCell "
    "resources are allocated, e.g., when the recipe is started."};

// DeviceEnumerationControl

inline constexpr ParameterText deviceListUpdate{
    "DeviceListUpdate",
    "Device List Update",
    "Beginner",
    {true, true},
    "Updates the internal device list.",
    "Updates the internal device list by performing a device enumeration. This allows you to "
    "review certain information about the individual cameras to help you pick the desired camera."};

inline constexpr ParameterText deviceSelector{
    "DeviceSelector",
    "Device Selector",
    "Beginner",
    {false, true},
    "Device that will be selected when the Device Choose command is executed.",
    "Device that will be selected when the Device Choose command is executed. Using the Device "
    "Update List command refreshes the devices you can select."};

inline constexpr ParameterText deviceModelName{
    "DeviceModelName",
    "Device Model Name",
    "Beginner",
    {false, false},
    "Name of the device model.",
    "Name of the device model. This value only changes when the Device Update List command is "
    "executed or when you change the device selected by the Device Selector parameter."};

inline constexpr ParameterText deviceVendorName{
    "DeviceVendorName",
    "Device Vendor Name",
    "Beginner",
    {false, false},
    "Name of the device vendor.",
    "Name of the device vendor. This value only changes when the Device Update List command is "
    "executed or when you change the device selected by the Device Selector parameter."};

inline constexpr ParameterText deviceSerialNumber{
    "DeviceSerialNumber",
    "Device Serial Number",
    "Beginner",
    {false, false},
    "Serial number of the device.",
    "Serial number of the device. This value only changes when the Device Update List command is "
    "executed or when you change the device selected by the Device Selector parameter."};

inline constexpr ParameterText deviceUserDefinedName{
    "DeviceUserDefinedName",
    "Device User Defined Name",
    "Beginner",
    {false, false},
    "User-defined ID of the device.",
    "User-defined ID of the device. This value only changes when the Device Update List command is "
    "executed or when you change the device selected by the Device Selector parameter."};

inline constexpr ParameterText deviceChoose{
    "DeviceChoose",
    "Device Choose",
    "Beginner",
    {false, false},
    "Assigns the camera selected by the Device Selector parameter to the Camera vCell and updates "
    "the properties of the device.",
    "Assigns the camera selected by the Device Selector parameter to the Camera vCell and updates "
    "the properties of the device. After selecting a camera, an exclusive connection to the camera "
    "is established when the resources for the Camera vCell are allocated, e.g., when the recipe "
    "is started."};

inline constexpr ParameterText devicePropertySelector{
    "DevicePropertySelector",
    "Device Property Selector",
    "Beginner",
    {false, true},
    "Device property whose values are displayed and can be edited.",
    "Device property whose values are displayed and can be edited."};

inline constexpr ParameterText devicePropertyKey{
    "DevicePropertyKey",
    "Device Property Key",
    "Beginner",
    {false, true},
    "Key of the orlix device's info property selected by the Device Property Selector parameter.",
    "Key of the orlix device's info property selected by the Device Property Selector parameter. "
    "See the orlix CDeviceInfo or Orlix::Key namespace documentation for more information."};

inline constexpr ParameterText devicePropertyValue{
    "DevicePropertyValue",
    "Device Property Value",
    "Beginner",
    {false, true},
    "Value of the orlix device's info property selected by the Device Property Selector parameter.",
    "Value of the orlix device's info property selected by the Device Property Selector parameter. "
    "See the orlix CDeviceInfo or Orlix::Key namespace documentation for more information."};

inline constexpr ParameterText devicePropertyAdd{
    "DevicePropertyAdd",
    "Device Property Add",
    "Beginner",
    {true, false},
    "Adds an empty device property.",
    "Adds an empty device property. This can be used to specify another property that a device "
    "must fulfil in order to be selected."};

inline constexpr ParameterText devicePropertyRemove{"DevicePropertyRemove",
                                                    "Device Property Remove",
                                                    "Beginner",
                                                    {false, false},
                                                    "Removes the selected device property.",
                                                    "Removes the selected device property."};

// ConfigurationSetPersistence

inline constexpr ParameterText configurationSetSelector{
    "ConfigurationSetSelector",
    "Configuration Set Selector",
    "Expert",
    {false, true},
    "Sets which configuration set you want to work with.",
    "Sets which configuration set you want to work with."};

inline constexpr ParameterText configurationSetFetch{
    "ConfigurationSetFetch",
    "Configuration Set Fetch",
    "Expert",
    {false, true},
    "Fetches the selected configuration set from the camera device and stores it in Configuration "
    "Set Staged.",
    "Fetches the selected configuration set from the camera device and stores it in Configuration "
    "Set Staged. You can fetch one set at a time.\nFor the majority of sets, this command is only "
    "available after the camera device has been allocated as an exclusive resource.\nFor certain "
    "device types, e.g., CXP frame grabbers, this command is only available for some configuration "
    "sets. In those cases where it is not available, you need to create the configuration set "
    "manually. For more information, see the Configuration Set Staged parameter."};

inline constexpr ParameterText configurationSetStaged{
    "ConfigurationSetStaged",
    "Configuration Set Staged",
    "Expert",
    {false, true},
    "Configuration set that will be stored in the recipe when the Configuration Set Commit command "
    "is executed.",
    "Configuration set that will be stored in the recipe when the Configuration Set Commit command "
    "is executed. If required, you can inspect or manually modify the parameter settings by "
    "copying the text to a text editor and back into Configuration Set Staged. In the text editor, "
    "you will see that each line of text contains the name and the value of a parameter separated "
    "by a tab or = character. Lines starting with # are treated as comments."};

inline constexpr ParameterText configurationSetCommit{
    "ConfigurationSetCommit",
    "Configuration Set Commit",
    "Expert",
    {false, true},
    "Applies the configuration set and stores the settings in Configuration Set Active.",
    "Applies the configuration set and stores the settings in Configuration Set Active. If a "
    "camera has already been allocated, the parameter settings are transferred immediately to the "
    "camera. If the transfer fails, the parameter settings will not be stored in Configuration Set "
    "Active. If no camera is allocated, the settings will be transferred to the camera when it is "
    "allocated. If this transfer fails, the recipe can't be started. Some camera parameters, e.g., "
    "those in the Camera Instance configuration set, can only be changed while the camera is "
    "closed. In this case, the parameters stored in Configuration Set Active are transferred to "
    "the camera when it is allocated before opening the camera."};

inline constexpr ParameterText configurationSetActive{
    "ConfigurationSetActive",
    "Configuration Set Active",
    "Expert",
    {false, false},
    "Configuration set stored in the recipe.",
    "Configuration set stored in the recipe. The parameter settings are applied to the camera "
    "device when the Camera vCell has allocated a device as an exclusive resource."};

inline constexpr ParameterText configurationSetClear{
    "ConfigurationSetClear",
    "Configuration Set Clear",
    "Expert",
    {false, true},
    "Clears the content of the Configuration Set Active and Configuration Set Staged parameters.",
    "Clears the content of the Configuration Set Active and Configuration Set Staged parameters. "
    "No parameters are changed if the camera device is allocated after clearing Configuration Set "
    "Active."};

// Entries of the enumerations, in the order in which they are added

inline constexpr EntryText acquisitionModeSingleFrame{
    "SingleFrame", "Single Frame",
    "The Camera vCell acquires only one image and stops the acquisition after that image.",
    "The Camera vCell acquires only one image and stops the acquisition after that image. The "
    "recipe will not be stopped automatically."};

inline constexpr EntryText acquisitionModeContinuous{
    "Continuous", "Continuous", "The Camera vCell acquires images continuously.",
    "The Camera vCell acquires images continuously. The actual number of images acquired depends "
    "on the settings of the camera device."};

inline constexpr EntryText fixCorruptImagesOn{"On", "On",
                                              "The Fix Corrupt Images feature is enabled.",
                                              "The Fix Corrupt Images feature is enabled."};

inline constexpr EntryText fixCorruptImagesOff{"Off", "Off",
                                               "The Fix Corrupt Images feature is disabled.",
                                               "The Fix Corrupt Images feature is disabled."};

inline constexpr EntryText configurationSetSelectorCameraDevice{
    "CameraDevice", "Camera",
    "The parameters of the camera device are used for any subsequent tasks.",
    "The parameters of the camera device are used for any subsequent tasks."};

inline constexpr EntryText configurationSetSelectorCameraInstance{
    "CameraInstance", "Camera Instance",
    "The parameters of the Instant Camera class are used for any subsequent tasks.",
    "The parameters of the Instant Camera class are used for any subsequent tasks."};

inline constexpr EntryText configurationSetSelectorDeviceTransportLayer{
    "DeviceTransportLayer", "Device Transport Layer",
    "The parameters of the device/host transport layer are used for any subsequent tasks.",
    "The parameters of the device/host transport layer are used for any subsequent tasks."};

inline constexpr EntryText configurationSetSelectorStreamGrabber{
    "StreamGrabber", "Stream Grabber",
    "The parameters of the stream grabber are used for any subsequent tasks.",
    "The parameters of the stream grabber are used for any subsequent tasks."};

}  // namespace Plugin::OrlixVCellPackageBase::CameraTexts
