// A set of numbers that mostly come one after the other: neighbours cost nothing. One thread at a
// time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace Orlix::Aravis {

class NumberSet {
public:
    void Add(std::uint64_t number) {
        const auto at = notBefore(number);
        if (at != spans_.end() && at->first <= number) {
            return;
        }
        const bool touchesNext = at != spans_.end() && at->first == number + 1;
        const bool touchesLast = at != spans_.begin() && (at - 1)->last + 1 == number;
        if (touchesLast && touchesNext) {
            (at - 1)->last = at->last;
            spans_.erase(at);
        } else if (touchesLast) {
            (at - 1)->last = number;
        } else if (touchesNext) {
            at->first = number;
        } else {
            spans_.insert(at, Span{number, number});
        }
    }
    void Remove(std::uint64_t number) {
        const auto at = notBefore(number);
        if (at == spans_.end() || at->first > number) {
            return;
        }
        const Span before{at->first, number - 1};
        at->first = number + 1;
        const bool isEmpty = at->first > at->last;
        if (before.first < number) {
            *at = isEmpty ? before : *at;
            if (!isEmpty) {
                spans_.insert(at, before);
            }
        } else if (isEmpty) {
            spans_.erase(at);
        }
    }
    // Takes out all that are smaller; returns how many they were.
    std::uint64_t TakeBelow(std::uint64_t number) {
        std::uint64_t taken = 0;
        while (!spans_.empty() && spans_.front().first < number) {
            Span& span = spans_.front();
            taken += std::min(span.last + 1, number) - span.first;
            span.first = number;
            if (span.first > span.last) {
                spans_.erase(spans_.begin());
            }
        }
        return taken;
    }
    [[nodiscard]] bool Has(std::uint64_t number) const {
        return std::any_of(spans_.begin(), spans_.end(), [number](const Span& span) {
            return span.first <= number && number <= span.last;
        });
    }
    [[nodiscard]] std::optional<std::uint64_t> FirstAbove(std::uint64_t number) const {
        for (const Span& span : spans_) {
            if (span.last > number) {
                return std::max(span.first, number + 1);
            }
        }
        return std::nullopt;
    }
    [[nodiscard]] std::uint64_t Count() const {
        std::uint64_t count = 0;
        for (const Span& span : spans_) {
            count += span.last - span.first + 1;
        }
        return count;
    }

private:
    struct Span {
        std::uint64_t first;
        std::uint64_t last;
    };
    // The first span that isn't wholly before the number.
    [[nodiscard]] std::vector<Span>::iterator notBefore(std::uint64_t number) {
        return std::partition_point(spans_.begin(), spans_.end(),
                                    [number](const Span& span) { return span.last < number; });
    }

    std::vector<Span> spans_;  // sorted, with gaps between them
};

}  // namespace Orlix::Aravis
