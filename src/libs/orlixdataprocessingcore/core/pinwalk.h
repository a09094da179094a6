// Walks the values of a job beside a list of pins. Both ascend by name, so one walk finds them all,
// and in a map that is used again each pin costs one comparison.
#pragma once

#include <cstddef>

#include "orlixdataprocessingcore/core/inode.h"

namespace Orlix::DataProcessing::Core {

template <typename Iterator>
class PinWalk {
public:
    PinWalk(Iterator begin, Iterator end) : place_(begin), end_(end) {}

    // Goes to the pin, whose name must not be below that of the last call. Whether it is there.
    bool goTo(const gcstring& pin) {
        for (; place_ != end_; ++place_) {
            if (isSame(place_->first, pin)) {
                return true;
            }
            const int order = place_->first.compare(pin);
            if (order >= 0) {
                return false;
            }
        }
        return false;
    }

    // The pin, or the place before which it belongs.
    [[nodiscard]] Iterator place() const { return place_; }
    [[nodiscard]] auto& value() const { return place_->second; }
    void set(Iterator place) { place_ = place; }

private:
    // Names are short: a loop that is compiled in takes less than a call.
    static bool isSame(const gcstring& a, const gcstring& b) noexcept {
        std::size_t length = a.size();
        if (length != b.size()) {
            return false;
        }
        const char* const first = a.c_str();
        const char* const second = b.c_str();
        while (length != 0 && first[length - 1] == second[length - 1]) {
            --length;
        }
        return length == 0;
    }

    Iterator place_;
    Iterator end_;
};

using ValueWalk = PinWalk<PinValues::iterator>;

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
    ValueWalk walk_;
};

inline void resetAll(PinValues& values) noexcept {
    for (auto& entry : values) {
        entry.second.reset();
    }
}

}  // namespace Orlix::DataProcessing::Core
