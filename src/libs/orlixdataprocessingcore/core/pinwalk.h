// Walks the values of a job beside a list of pins. Both ascend by name, so one walk finds them all,
// and in a map that is used again each pin costs one comparison.
#pragma once

#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::DataProcessing::Core {

template <typename Iterator>
class PinWalk {
public:
    PinWalk(Iterator begin, Iterator end) : place_(begin), end_(end) {}

    // Goes to the pin, whose name must not be below that of the last call. Whether it is there.
    bool goTo(const gcstring& pin) {
        for (; place_ != end_; ++place_) {
            const int order = place_->first.compare(pin);
            if (order >= 0) {
                return order == 0;
            }
        }
        return false;
    }

    // The pin, or the place before which it belongs.
    [[nodiscard]] Iterator place() const { return place_; }
    [[nodiscard]] auto& value() const { return place_->second; }
    void set(Iterator place) { place_ = place; }

private:
    Iterator place_;
    Iterator end_;
};

using ReadingWalk = PinWalk<PinValues::const_iterator>;

// A walk that makes the pins that are not there.
class WritingWalk {
public:
    explicit WritingWalk(PinValues& values)
        : values_(values), walk_(values.begin(), values.end()) {}

    [[nodiscard]] Utils::Variant& at(const gcstring& pin) {
        if (!walk_.goTo(pin)) {
            walk_.set(values_.emplace_hint(walk_.place(), pin, Utils::Variant()));
        }
        return walk_.value();
    }

private:
    PinValues& values_;
    PinWalk<PinValues::iterator> walk_;
};

inline void resetAll(PinValues& values) noexcept {
    for (auto& entry : values) {
        entry.second.reset();
    }
}

}  // namespace Orlix::DataProcessing::Core
