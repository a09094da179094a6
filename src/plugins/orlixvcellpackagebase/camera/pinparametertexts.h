// The texts and first states of the parameters of event pins and chunk pins, in the order in which
// they are made. Odd wordings are what users, dialogs and documents know, and stay.
#pragma once

#include "camera/parametertext.h"

namespace Plugin::OrlixVCellPackageBase::CameraTexts {

// EventOutputControl

inline constexpr ParameterText eventPinSelector{"EventPinSelector",
                                                "Event Pin Selector",
                                                "Beginner",
                                                {false, true},
                                                "Event output pin that can be configured.",
                                                "Event output pin that can be configured."};

inline constexpr ParameterText eventPinConfiguration{
    "EventPinConfiguration",
    "Event Pin Configuration",
    "Beginner",
    {false, true},
    "String that maps a camera's event to the vCell's output pin.",
    "String that maps a camera's event to the vCell's output pin. The pin name must be unique. Use "
    "the following syntax: "
    "ExposureEnd.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndThis is an example "
    "configuration string that adds an output pin called Event that outputs the EventExposureEnd "
    "value of the ExposureEnd event.For more information, see the Tarvek Product Documentation."};

inline constexpr ParameterText eventPinAdd{
    "EventPinAdd",
    "Event Pin Add",
    "Beginner",
    {true, false},
    "Adds an event output pin.",
    "Adds a event output pin that you can configure. The corresponding event notification has to "
    "be enabled on the camera."};

inline constexpr ParameterText eventPinRemove{"EventPinRemove",
                                              "Event Pin Remove",
                                              "Beginner",
                                              {false, false},
                                              "Removes the selected event output pin.",
                                              "Removes the selected event output pin."};

// ChunkOutputControl

inline constexpr ParameterText chunkPinSelector{"ChunkPinSelector",
                                                "Chunk Pin Selector",
                                                "Beginner",
                                                {false, true},
                                                "Chunk data output pin that can be configured.",
                                                "Chunk data output pin that can be configured."};

inline constexpr ParameterText chunkPinValue{
    "ChunkPinValue",
    "Chunk Pin Configuration",
    "Beginner",
    {false, true},
    "String that maps a camera's data chunk to the vCell's output pin.",
    "String that maps a camera's data chunk to the vCell's output pin. The pin name must be "
    "unique. Use the following syntax: ExposureTime.Type=Float.ValueName=ChunkExposureTimeThis is "
    "an example configuration string that adds an output pin called ExposureTime that outputs the "
    "ChunkExposureTime chunk.For more information, see the Tarvek Product Documentation."};

inline constexpr ParameterText chunkPinAdd{
    "ChunkPinAdd",
    "Chunk Pin Add",
    "Beginner",
    {true, false},
    "Adds a chunk data output pin.",
    "Adds a chunk data output pin that you can configure. The corresponding data chunk has to be "
    "enabled on the camera."};

inline constexpr ParameterText chunkPinRemove{"ChunkPinRemove",
                                              "Chunk Pin Remove",
                                              "Beginner",
                                              {false, false},
                                              "Removes the selected chunk data output pin.",
                                              "Removes the selected chunk data output pin."};

}  // namespace Plugin::OrlixVCellPackageBase::CameraTexts
