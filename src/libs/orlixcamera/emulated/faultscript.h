// A fault script: what goes wrong with an emulated camera, and when. docs/fault-scripts.md
// describes the language. Plain values; any thread may parse.
//
//     frame 10: missing packets 3
//     frame 20 to 40 every 5: wrong size -16, late 5 ms
//     once start: unplug for 500 ms
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orlixcamera/api.h"

namespace Orlix::Emulated {

// When a rule counts.
enum class Occasion : std::uint8_t {
    Frame,  // at frames of an acquisition
    Open,   // the device is opened
    Start,  // an acquisition is started
    Stop,   // an acquisition is stopped
    Idle,   // no acquisition was active for some time
    After,  // some time after the camera was plugged in, or got the script
    Every,  // the same, again and again
    Read,   // a register is read
    Write,  // a register is written
};

// What a rule does.
enum class Fault : std::uint8_t {
    MissingPackets,
    ResentPackets,
    WrongSize,
    BadTrailer,
    LostEnd,
    CutChunk,
    UnknownChunk,
    Late,
    Events,
    Refuse,
    TimeOut,
    InUse,
    Unplug,
};

struct FaultRule {
    std::uint32_t camera = 0;  // 0 means every camera
    bool once = false;
    Occasion occasion = Occasion::Frame;
    std::uint64_t firstFrame = 0;
    std::uint64_t lastFrame = 0;
    std::uint64_t frameStep = 1;
    std::chrono::nanoseconds time{0};  // of Idle, After and Every
    std::string feature;               // of Read and Write
    Fault fault = Fault::Refuse;
    std::int64_t amount = 0;               // packets, bytes or events
    std::chrono::nanoseconds duration{0};  // of Late and TimeOut; of Unplug, 0 means for good
    std::string holder;                    // of InUse
};

// Throws InvalidArgumentException that names line, column, what was expected and what is there.
[[nodiscard]] ORLIXCAMERA_API std::vector<FaultRule> ParseFaultScript(std::string_view script);

}  // namespace Orlix::Emulated
