// Replaces operator new of the test program: counts its calls, and lets them fail on one thread.
#pragma once

#include <cstdint>

namespace Orlix::Test {

// Calls of any form of operator new by any thread so far. Under the sanitizers, which have an
// operator of their own, it is always 0, and none fails.
[[nodiscard]] std::uint64_t CountNews() noexcept;
[[nodiscard]] bool CanCountNews() noexcept;

// While one lives, operator new for aligned memory fails on this thread.
class FailingNewScope {
public:
    FailingNewScope() noexcept;
    ~FailingNewScope();
    FailingNewScope(const FailingNewScope&) = delete;
    FailingNewScope& operator=(const FailingNewScope&) = delete;
};

}  // namespace Orlix::Test
