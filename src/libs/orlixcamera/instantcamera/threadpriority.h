// Gives the calling thread a real-time priority.
#pragma once

namespace Orlix::Detail {

// 0 leaves the thread as it is. A system that refuses is told of, by the name of the thread, and
// the thread goes on without.
void SetThreadPriority(int priority, const char* threadName) noexcept;

}  // namespace Orlix::Detail
