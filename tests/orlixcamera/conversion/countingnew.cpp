#include "orlixcamera/conversion/countingnew.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace Orlix::Test {
namespace {

std::atomic<std::uint64_t> news{0};
thread_local bool fails = false;

}  // namespace

std::uint64_t CountNews() noexcept {
    return news.load();
}

FailingNewScope::FailingNewScope() noexcept {
    fails = true;
}
FailingNewScope::~FailingNewScope() {
    fails = false;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

bool CanCountNews() noexcept {
    return false;
}

}  // namespace Orlix::Test

#else

bool CanCountNews() noexcept {
    return true;
}

namespace {

void* Allocate(std::size_t size) {
    ++news;
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* Allocate(std::size_t size, std::align_val_t alignment) {
    ++news;
    const auto unit = static_cast<std::size_t>(alignment);
    void* const memory =
        fails ? nullptr : std::aligned_alloc(unit, (size + unit - 1) / unit * unit);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace
}  // namespace Orlix::Test

void* operator new(std::size_t size) {
    return Orlix::Test::Allocate(size);
}
void* operator new[](std::size_t size) {
    return Orlix::Test::Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return Orlix::Test::Allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return Orlix::Test::Allocate(size, alignment);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

#endif
