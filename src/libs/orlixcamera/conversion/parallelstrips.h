// Runs the strips of one picture at once. Nothing is kept between calls; any thread may call.
#pragma once

#include <atomic>
#include <cstddef>

#include "orlixcamera/api.h"

namespace Orlix {

using StripFunction = void (*)(void* context, std::size_t strip);

// Calls `run` once for each strip below `count`, on at most `count` threads, the caller's among
// them, and returns when all have returned. While it waits, the calling thread takes up no work but
// these strips: it may hold locks that other work needs. `run` must not throw.
ORLIXCAMERA_API void CallStrips(std::size_t count, StripFunction run, void* context);

// The same for a callable. What the caller wrote before is seen by each strip, and what the strips
// wrote by the caller: the two atomics say so in code of our own, since a thread checker can't look
// into the library that starts the threads.
template <class Body>
void RunStrips(std::size_t count, const Body& body) {
    struct Shared {
        const Body& body;
        std::atomic<bool> begun{false};
        std::atomic<std::size_t> ended{0};
    };
    Shared shared{body};
    shared.begun.store(true, std::memory_order_release);
    CallStrips(
        count,
        [](void* context, std::size_t strip) {
            auto& seen = *static_cast<Shared*>(context);
            while (!seen.begun.load(std::memory_order_acquire)) {
            }
            seen.body(strip);
            seen.ended.fetch_add(1, std::memory_order_release);
        },
        &shared);
    while (shared.ended.load(std::memory_order_acquire) != count) {
    }
}

}  // namespace Orlix
