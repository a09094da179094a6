#include "orlixdataprocessingcore/failingnew.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "gcbase/gcexception.h"

namespace {

// Allocations of this thread until one fails; below 0, none does.
thread_local int countdown = -1;

void* allocate(std::size_t size) noexcept {
    if (countdown >= 0 && countdown-- == 0) {
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size) {
    void* memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
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
// Of an object whose constructor has thrown.
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace Orlix::Test {

FailingNew::FailingNew(int number) noexcept {
    countdown = number;
}

FailingNew::~FailingNew() {
    countdown = -1;
}

bool FailingNew::hasFailed() noexcept {
    return countdown < 0;
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
