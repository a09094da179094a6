// Counts what the program allocates. One copy of the operators serves the whole program.
#pragma once

#include <cstddef>

namespace GenApiTest {

// Allocations of the calling thread since it began.
[[nodiscard]] std::size_t countOfAllocations() noexcept;

}  // namespace GenApiTest
