// The values that wait on one connection, oldest first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

struct WaitingValue {
    std::shared_ptr<IGraphUpdate> update;
    std::uint64_t sequenceNumber = 0;
    Utils::Variant value;  // invalid: the update has none for this pin
};

// A ring whose places are used again and again. It grows only if more is put in than there are
// places. Not safe by itself: the join's lock guards it.
class ValueRing {
public:
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] WaitingValue& front() noexcept { return places_[first_]; }
    [[nodiscard]] WaitingValue& back() noexcept { return places_[placeOf(size_ - 1)]; }

    void reserve(std::size_t capacity) {
        if (places_.size() < capacity) {
            grow(capacity);
        }
    }

    void push(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) {
        if (size_ == places_.size()) {
            grow(2 * size_ + 1);
        }
        ++size_;
        replaceBack(std::move(update), std::move(value));
    }

    void replaceBack(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) {
        WaitingValue& waiting = back();
        waiting.update = std::move(update);
        waiting.sequenceNumber = waiting.update->getSequenceNumber();
        waiting.value = std::move(value);
    }

    [[nodiscard]] WaitingValue pop() noexcept {
        WaitingValue waiting = std::move(places_[first_]);
        --size_;
        // A ring that has run empty begins anew at a place that is still in the cache.
        first_ = size_ == 0 || first_ + 1 == places_.size() ? 0 : first_ + 1;
        return waiting;
    }

private:
    [[nodiscard]] std::size_t placeOf(std::size_t index) const noexcept {
        const std::size_t place = first_ + index;
        return place < places_.size() ? place : place - places_.size();
    }

    void grow(std::size_t capacity) {
        std::vector<WaitingValue> places(capacity);
        for (std::size_t place = 0; place < size_; ++place) {
            places[place] = std::move(places_[(first_ + place) % places_.size()]);
        }
        places_ = std::move(places);
        first_ = 0;
    }

    std::vector<WaitingValue> places_;
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

}  // namespace Orlix::DataProcessing::Core
