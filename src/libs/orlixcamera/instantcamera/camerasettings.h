// What can be set on an instant camera, and the states that decide whether it can be set now.
// Shared by the camera and its own maps; every member may be used on any thread.
#pragma once

#include <atomic>
#include <cstdint>

namespace Orlix::Detail {

inline constexpr std::int64_t defaultBufferCount = 512;
inline constexpr std::int64_t largestBufferCount = 4096;
inline constexpr std::int64_t largestBufferMemory = 1 << 20;
inline constexpr std::int64_t highestPriority = 99;

struct CameraSettings {
    std::atomic<std::int64_t> maxNumBuffer{defaultBufferCount};
    std::atomic<std::int64_t> bufferMemory{8};  // MiB
    std::atomic<std::int64_t> outputQueueSize{1};
    std::atomic<std::int64_t> grabThreadPriority{0};
    std::atomic<std::int64_t> eventThreadPriority{0};
    std::atomic<bool> grabCameraEvents{false};
    std::atomic<bool> controlAcquisition{true};
    std::atomic<bool> deliverFailedFrames{true};

    std::atomic<bool> isOpen{false};
    std::atomic<bool> isGrabbing{false};
    std::atomic<bool> isRemoved{false};
};

}  // namespace Orlix::Detail
