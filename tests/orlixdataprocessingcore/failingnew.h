// Lets one allocation of the calling thread fail, to see what becomes of a program without memory.
// The whole test program allocates through the operators of failingnew.cpp, also under the
// sanitizers, which still see each malloc.
#pragma once

#include <functional>
#include <set>
#include <string>

namespace Orlix::Test {

// The allocation with that number fails, counted from 0 and from here; those behind it succeed.
class FailingNew {
public:
    explicit FailingNew(int number) noexcept;
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Whether that allocation has come.
    [[nodiscard]] static bool hasFailed() noexcept;
};

// Runs the function again and again, each time with another allocation failing, until it gets
// through without a failure. Gives the texts of the exceptions; only BadAllocException is expected.
std::set<std::string> failEachAllocation(const std::function<void()>& function);

}  // namespace Orlix::Test
