// What a thread knows of the emissions that it is in the middle of. Shared by the signals of all
// signatures.
#pragma once

#include <cstdint>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils::Detail {

// The calls that an emission has taken up and not finished; chained per thread, so that a thread
// that waits can tell which calls wait for it in turn.
class ORLIXDATAPROCESSINGCORE_API EmissionFrame {
public:
    EmissionFrame() noexcept;
    EmissionFrame(const EmissionFrame&) = delete;
    EmissionFrame& operator=(const EmissionFrame&) = delete;

    // Whether the calling thread runs the slot of that connection.
    [[nodiscard]] static bool isRunning(const void* connection) noexcept;
    // Adds `step` to the parked calls of each connection of that list, once for every call that
    // the calling thread has taken up and not begun. Called with the signal's lock held.
    static void park(const void* list, std::int64_t step) noexcept;

protected:
    ~EmissionFrame();
    [[nodiscard]] virtual bool isRunningHere(const void* connection) const = 0;
    virtual void parkHere(const void* list, std::int64_t step) const = 0;

private:
    EmissionFrame* previous_;
};

}  // namespace Orlix::DataProcessing::Utils::Detail
