// Lets one thread at a time change the state of a camera's device.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "orlixcamera/instantcamera/devicemaps.h"

namespace Orlix::Detail {

// Starting and stopping write to nodes of the device, and a callback of one of its nodes, which may
// stop the camera, is called with the map's lock held. So the map's lock is always taken first; the
// price is that callbacks of what starting and stopping write are all called with it held.
class Control {
public:
    // The maps of the device that is attached now; null before it was opened first. They change
    // only with the control held.
    using GetMaps = std::function<std::shared_ptr<DeviceMaps>()>;

    explicit Control(GetMaps getMaps) : getMaps_(std::move(getMaps)) {}
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    // Held while it lives. Recursive, for a callback of a node that starting writes may use the
    // camera.
    class Hold {
    public:
        explicit Hold(Control& control);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        Control& control_;
        std::shared_ptr<DeviceMaps> maps_;
    };

    // Keeps others out without a lock, for the one who holds it to make maps, which take locks of
    // their own. There are no maps yet, so that none who waits has a lock of theirs.
    class WithoutLock {
    public:
        explicit WithoutLock(Control& control);
        ~WithoutLock();
        WithoutLock(const WithoutLock&) = delete;
        WithoutLock& operator=(const WithoutLock&) = delete;

    private:
        Control& control_;
    };

private:
    const GetMaps getMaps_;
    std::recursive_mutex mutex_;
    std::condition_variable_any changed_;
    bool keptOut_ = false;
};

}  // namespace Orlix::Detail
