// The values that wait on one connection, in the order of their arrival.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/graph/skiprun.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

struct WaitingValue {
    std::shared_ptr<IGraphUpdate> update;  // null behind the first skip of a run
    std::uint64_t sequenceNumber = 0;
    Utils::Variant value;          // invalid: the update has none for this pin, which is a skip
    std::unique_ptr<SkipRun> run;  // of more skips than one, which take one place; may be null
};

// A ring whose places are used again and again. It grows only if more is put in than there are
// places. Not safe by itself: the join's lock guards it.
class ValueRing {
public:
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] WaitingValue& front() noexcept { return places_[first_]; }

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
        WaitingValue& waiting = back();
        waiting.update = std::move(update);
        waiting.sequenceNumber = waiting.update->getSequenceNumber();
        waiting.value = std::move(value);
    }

    // Puts a skip at the end without another place, of which only the number is kept. False if
    // there is no skip to put it behind.
    [[nodiscard]] bool appendSkip(std::uint64_t number) {
        if (empty() || back().value.isValid()) {
            return false;
        }
        WaitingValue& last = back();
        if (!last.run) {
            last.run = std::make_unique<SkipRun>(last.sequenceNumber);
        }
        last.run->append(number);
        return true;
    }

    // The oldest update; of a run, its first one. An update that is null there stays as it is.
    void pop(std::shared_ptr<IGraphUpdate>& update, Utils::Variant& value) noexcept {
        WaitingValue& waiting = front();
        if (waiting.update) {
            update = std::move(waiting.update);
        }
        if (waiting.run && !waiting.run->isLast()) {
            waiting.run->popFront();
            waiting.sequenceNumber = waiting.run->front();
            return;
        }
        waiting.run.reset();
        value = std::move(waiting.value);
        freePlace();
    }

    // A whole run at once.
    [[nodiscard]] WaitingValue popPlace() noexcept {
        WaitingValue waiting = std::move(front());
        freePlace();
        return waiting;
    }

private:
    void freePlace() noexcept {
        --size_;
        // A ring that has run empty begins anew at a place that is still in the cache.
        first_ = size_ == 0 || first_ + 1 == places_.size() ? 0 : first_ + 1;
    }

    [[nodiscard]] WaitingValue& back() noexcept {
        const std::size_t place = first_ + size_ - 1;
        return places_[place < places_.size() ? place : place - places_.size()];
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
