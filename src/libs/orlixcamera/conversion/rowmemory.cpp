#include "orlixcamera/conversion/rowmemory.h"

#include <memory>
#include <new>

namespace Orlix {
namespace {

constexpr std::align_val_t CacheLine{64};

struct Free {
    void operator()(std::uint8_t* bytes) const noexcept { ::operator delete(bytes, CacheLine); }
};

struct Held {
    std::unique_ptr<std::uint8_t, Free> bytes;
    std::size_t size = 0;
};

}  // namespace

std::uint8_t* RowsOfThisThread(std::size_t size) {
    thread_local Held held;
    if (held.size < size) {
        held.size = 0;
        held.bytes.reset();
        held.bytes.reset(static_cast<std::uint8_t*>(::operator new(size, CacheLine)));
        held.size = size;
    }
    return held.bytes.get();
}

}  // namespace Orlix
