#include "orlixcamera/instantcamera/control.h"

namespace Orlix::Detail {

namespace {

void lockMap(const std::shared_ptr<DeviceMaps>& maps) {
    if (maps != nullptr) {
        maps->GetDevice().GetLock().Lock();
    }
}

void unlockMap(const std::shared_ptr<DeviceMaps>& maps) {
    if (maps != nullptr) {
        maps->GetDevice().GetLock().Unlock();
    }
}

}  // namespace

Control::Hold::Hold(Control& control) : control_(control) {
    for (;;) {
        maps_ = control.getMaps_();
        lockMap(maps_);
        control.mutex_.lock();
        control.changed_.wait(control.mutex_, [&] { return !control.keptOut_; });
        if (control.getMaps_() == maps_) {
            return;
        }
        control.mutex_.unlock();
        unlockMap(maps_);
    }
}

Control::Hold::~Hold() {
    control_.mutex_.unlock();
    unlockMap(maps_);
}

Control::WithoutLock::WithoutLock(Control& control) : control_(control) {
    control_.keptOut_ = true;
    control_.mutex_.unlock();
}

Control::WithoutLock::~WithoutLock() {
    control_.mutex_.lock();
    control_.keptOut_ = false;
    control_.changed_.notify_all();
}

}  // namespace Orlix::Detail
