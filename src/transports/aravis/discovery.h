// Looks for cameras again and again on a thread of its own, since one look takes a second. Shared
// by the layers; its thread keeps what it needs and may outlive it by one look. Any thread may
// call.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "aravis/found.h"

namespace Orlix::Aravis {

class Discovery {
public:
    Discovery();
    ~Discovery();
    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    // What the last look has found; the first call waits for the first look.
    [[nodiscard]] std::vector<Found> GetCameras(Protocol protocol) const;
    // The same, and those of before that have gone.
    [[nodiscard]] std::vector<Found> GetKnown(Protocol protocol) const;
    // Called on the thread of the discovery. When it returns, no call of the function before is
    // under way, but for one that runs on this very thread.
    void SetChanged(Protocol protocol, std::function<void()> changed);
    // The open camera of that full name was lost: it leaves the list, and a look begins at once.
    void Lose(const gcstring& fullName);

private:
    class State;

    const std::shared_ptr<State> state_;
};

}  // namespace Orlix::Aravis
