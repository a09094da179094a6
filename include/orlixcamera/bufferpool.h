// The process-wide pool that pixel buffers come from. Whoever holds the returned pointer owns the
// memory; when the last holder lets go, on whatever thread, it returns to the pool. Every function
// may be called on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orlixcamera/api.h"

namespace Orlix {

struct BufferPoolStatistics {
    std::uint64_t allocations = 0;  // buffers taken from the system
    std::uint64_t reuses = 0;       // buffers served from retained memory
    std::uint64_t evictions = 0;    // retained buffers given back to the system
    std::size_t usedBytes = 0;      // capacity of the buffers that somebody holds
    std::size_t peakUsedBytes = 0;  // the most of them since the last ResetPeak
    std::size_t retainedBytes = 0;  // capacity of the buffers that wait for reuse
};

// Buffers are sorted into size classes, eight to a power of two, so that a request wastes at most
// an eighth of the address range and pictures of nearly one size share their memory. What is
// retained is bounded; the longest unused buffer goes first. A frame costs no system allocation
// at all once a buffer of its class is retained, for the pointer's control block lives in front
// of the pixels.
class ORLIXCAMERA_API BufferPool {
public:
    static constexpr std::size_t Alignment = 64;  // one cache line, and the widest vector register

    // The one pool. It is never destroyed, since buffers may be let go while the process ends.
    [[nodiscard]] static BufferPool& Instance();

    BufferPool(const BufferPool&) = delete;
    BufferPool& operator=(const BufferPool&) = delete;

    // At least `size` bytes of undefined content, aligned to `Alignment`; a size of 0 is allowed.
    // Throws BadAllocException if the system has no memory left.
    [[nodiscard]] std::shared_ptr<void> Allocate(std::size_t size);

    // The most that is retained for reuse; buffers in use don't count. Trims at once.
    void SetRetentionLimit(std::size_t bytes);
    [[nodiscard]] std::size_t GetRetentionLimit() const;

    // Gives all retained buffers back to the system.
    void Trim();

    [[nodiscard]] BufferPoolStatistics GetStatistics() const;
    void ResetPeak();

private:
    BufferPool();
    ~BufferPool();

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orlix
