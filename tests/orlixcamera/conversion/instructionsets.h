// The instruction sets that kernels are built for, and a choice of one of them for all kernels of
// the process while a scope lasts.
#pragma once

#include <hwy/targets.h>

#include <cstdint>
#include <vector>

namespace Orlix::Test {

// Asking the processor takes its time on a virtual machine.
inline std::int64_t SupportedSets() {
    static const std::int64_t supported = hwy::SupportedTargets();
    return supported;
}

// Those that this machine can run, the one without vectors (0) included.
inline std::vector<std::int64_t> InstructionSets() {
    std::vector<std::int64_t> sets{0};
    for (const std::int64_t set : {HWY_SSSE3, HWY_SSE4, HWY_AVX2, HWY_AVX3, HWY_AVX3_DL}) {
        if ((SupportedSets() & set) != 0) {
            sets.push_back(set);
        }
    }
    return sets;
}

class InstructionSetScope {
public:
    explicit InstructionSetScope(std::int64_t set) { hwy::GetChosenTarget().Update(set); }
    ~InstructionSetScope() { hwy::GetChosenTarget().Update(SupportedSets()); }
    InstructionSetScope(const InstructionSetScope&) = delete;
    InstructionSetScope& operator=(const InstructionSetScope&) = delete;
};

}  // namespace Orlix::Test
