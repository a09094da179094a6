// Counts what a test program allocates and lets allocations fail, to see what becomes of a program
// without memory. A program that links this allocates through these operators, also in its
// libraries and under the sanitizers, which still see each malloc.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

namespace Orlix::Test {

// Calls of any form of operator new so far, by any thread and by the calling one.
[[nodiscard]] std::uint64_t countAllocations() noexcept;
[[nodiscard]] std::uint64_t countAllocationsOfThisThread() noexcept;

// The allocation of the calling thread with that number fails, counted from 0 and from here; those
// behind it succeed.
class FailingNew {
public:
    explicit FailingNew(int number) noexcept;
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Whether that allocation has come.
    [[nodiscard]] static bool hasFailed() noexcept;
};

// While one lives, every allocation of aligned memory fails on this thread.
class FailingAlignedNew {
public:
    FailingAlignedNew() noexcept;
    ~FailingAlignedNew();
    FailingAlignedNew(const FailingAlignedNew&) = delete;
    FailingAlignedNew& operator=(const FailingAlignedNew&) = delete;
};

// Runs the function again and again, each time with another allocation failing, until it gets
// through without a failure. Gives the texts of the exceptions; only BadAllocException is expected.
std::set<std::string> failEachAllocation(const std::function<void()>& function);

}  // namespace Orlix::Test
