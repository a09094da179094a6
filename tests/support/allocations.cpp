#include "support/allocations.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "gcbase/gcexception.h"

namespace {

std::atomic<std::uint64_t> allocations{0};
thread_local std::uint64_t ownAllocations = 0;
// Allocations of this thread until one fails; below 0, none does.
thread_local int countdown = -1;
thread_local bool alignedFails = false;

void count() noexcept {
    allocations.fetch_add(1, std::memory_order_relaxed);
    ++ownAllocations;
}

void* allocate(std::size_t size) noexcept {
    count();
    if (countdown >= 0 && countdown-- == 0) {
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

void* orThrow(void* memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) {
    count();
    const auto unit = static_cast<std::size_t>(alignment);
    return orThrow(alignedFails ? nullptr
                                : std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
}

}  // namespace

void* operator new(std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new[](std::size_t size) {
    return orThrow(allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
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
// Of an object whose constructor has thrown.
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace Orlix::Test {

std::uint64_t countAllocations() noexcept {
    return allocations.load();
}

std::uint64_t countAllocationsOfThisThread() noexcept {
    return ownAllocations;
}

FailingNew::FailingNew(int number) noexcept {
    countdown = number;
}

FailingNew::~FailingNew() {
    countdown = -1;
}

bool FailingNew::hasFailed() noexcept {
    return countdown < 0;
}

FailingAlignedNew::FailingAlignedNew() noexcept {
    alignedFails = true;
}

FailingAlignedNew::~FailingAlignedNew() {
    alignedFails = false;
}

std::set<std::string> failEachAllocation(const std::function<void()>& function) {
    std::set<std::string> texts;
    for (int number = 0;; ++number) {
        std::string text;
        bool hasFailed = false;
        try {
            const FailingNew failing(number);
            function();
            hasFailed = FailingNew::hasFailed();
        } catch (const GenICam::BadAllocException& exception) {
            text = exception.GetDescription();
            hasFailed = true;
        } catch (const std::bad_alloc&) {
            ADD_FAILURE() << "a bare std::bad_alloc of allocation " << number;
            return texts;
        }
        if (!hasFailed) {
            return texts;
        }
        if (!text.empty()) {
            texts.insert(text);
        }
    }
}

}  // namespace Orlix::Test
