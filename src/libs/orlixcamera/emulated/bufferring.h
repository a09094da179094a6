// A queue of buffers that allocates only when it holds more than ever before. No lock of its own.
#pragma once

#include <cstddef>
#include <vector>

#include "orlixcamera/transport/transport.h"

namespace Orlix::Emulated {

class BufferRing {
public:
    void Push(Transport::StreamBuffer& buffer) {
        if (count_ == slots_.size()) {
            grow();
        }
        slots_[(first_ + count_) % slots_.size()] = &buffer;
        ++count_;
    }
    // Null if it is empty.
    [[nodiscard]] Transport::StreamBuffer* Pop() noexcept {
        if (count_ == 0) {
            return nullptr;
        }
        Transport::StreamBuffer* const buffer = slots_[first_];
        first_ = (first_ + 1) % slots_.size();
        --count_;
        return buffer;
    }
    [[nodiscard]] bool IsEmpty() const noexcept { return count_ == 0; }
    // So that Push doesn't allocate up to this many.
    void Reserve(std::size_t size) {
        while (slots_.size() < size) {
            grow();
        }
    }

private:
    void grow() {
        constexpr std::size_t smallest = 16;
        std::vector<Transport::StreamBuffer*> larger(slots_.empty() ? smallest : 2 * slots_.size());
        for (std::size_t index = 0; index < count_; ++index) {
            larger[index] = slots_[(first_ + index) % slots_.size()];
        }
        slots_.swap(larger);
        first_ = 0;
    }

    std::vector<Transport::StreamBuffer*> slots_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

}  // namespace Orlix::Emulated
