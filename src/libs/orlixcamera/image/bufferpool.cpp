#include "orlixcamera/bufferpool.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <string>

#include "gcbase/gcexception.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
// Retained buffers look allocated to the sanitizer, so it is told what may be touched.
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#endif

namespace Orlix {

namespace {

constexpr std::size_t stepsPerOctave = 8;
constexpr std::size_t smallestCapacity = 1024;
constexpr std::size_t classCount = stepsPerOctave * std::numeric_limits<std::size_t>::digits;
constexpr std::size_t defaultRetentionLimit = std::size_t{512} << 20U;

struct SizeClass {
    std::size_t index;
    std::size_t capacity;
};

// Rounds up to the next multiple of an eighth of the power of two below.
SizeClass classify(std::size_t size) {
    if (size <= smallestCapacity) {
        return {0, smallestCapacity};
    }
    const auto shift = static_cast<unsigned>(std::bit_width(size - 1)) - 4U;
    const std::size_t steps = ((size - 1) >> shift) + 1;
    return {shift * stepsPerOctave + (steps - stepsPerOctave), steps << shift};
}

// What stands in front of the pixels. The link members mean something only while the block waits
// in a free list, the control bytes only while somebody holds it.
struct alignas(BufferPool::Alignment) Block {
    std::array<std::byte, 64> control;  // place of the shared pointer's control block
    std::size_t classIndex;
    std::size_t capacity;
    std::uint64_t retiredAt;
    Block* newer;
    Block* older;

    void* Pixels() { return this + 1; }
};

// Free blocks of one size class. The newest is reused first, since its bytes are warm; the
// oldest is evicted first.
class FreeList {
public:
    [[nodiscard]] Block* Oldest() const { return oldest_; }

    void Push(Block* block) noexcept {
        block->newer = nullptr;
        block->older = newest_;
        (newest_ != nullptr ? newest_->newer : oldest_) = block;
        newest_ = block;
    }

    [[nodiscard]] Block* PopNewest() noexcept {
        Block* block = newest_;
        if (block != nullptr) {
            newest_ = block->older;
            (newest_ != nullptr ? newest_->newer : oldest_) = nullptr;
        }
        return block;
    }

    [[nodiscard]] Block* PopOldest() noexcept {
        Block* block = oldest_;
        if (block != nullptr) {
            oldest_ = block->newer;
            (oldest_ != nullptr ? oldest_->older : newest_) = nullptr;
        }
        return block;
    }

private:
    Block* newest_ = nullptr;
    Block* oldest_ = nullptr;
};

void freeChain(Block* chain) noexcept {
    while (chain != nullptr) {
        Block* next = chain->older;
        ASAN_UNPOISON_MEMORY_REGION(chain->Pixels(), chain->capacity);
        std::free(chain);
        chain = next;
    }
}

// Large pictures are walked from end to end, and pages of 4 KiB cost the processor a walk of its
// tables every few lines. Where the system leaves it to the program, it is asked for large ones;
// a system that has none gives small ones.
constexpr std::size_t hugePage = std::size_t{2} << 20U;

void* allocateMemory(std::size_t size) {
    if (size < 2 * hugePage) {
        return std::aligned_alloc(BufferPool::Alignment, size);
    }
    // Unlike aligned_alloc, this takes sizes that are no multiple of the alignment.
    void* memory = nullptr;
    if (posix_memalign(&memory, hugePage, size) != 0) {
        return nullptr;
    }
    static_cast<void>(madvise(memory, size / hugePage * hugePage, MADV_HUGEPAGE));
    return memory;
}

Block* allocateBlock(const SizeClass& wanted) {
    void* memory = allocateMemory(sizeof(Block) + wanted.capacity);
    if (memory == nullptr) {
        return nullptr;
    }
    auto* block = new (memory) Block;
    block->classIndex = wanted.index;
    block->capacity = wanted.capacity;
    return block;
}

[[noreturn]] void throwNoMemory(std::size_t size) {
    const std::string text =
        "Cannot allocate an image buffer of " + std::to_string(size) + " bytes.";
    throw GenICam::BadAllocException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

struct BufferPool::Impl {
    mutable std::mutex mutex;
    std::array<FreeList, classCount> free;
    std::size_t retentionLimit = defaultRetentionLimit;
    std::uint64_t clock = 0;
    BufferPoolStatistics statistics;

    Block* Take(const SizeClass& wanted);
    void Use(std::size_t capacity);
    void Retire(Block* block) noexcept;
    Block* EvictDownTo(std::size_t limit) noexcept;
    Block* EvictOldest() noexcept;
};

namespace {

// Puts the control block of a shared pointer in front of the pixels, and gives the whole block
// back to the pool when the control block dies, which is after the last holder let go.
template <typename T>
struct InBlockAllocator {
    using value_type = T;
    using Retire = void (*)(void* pool, Block* block) noexcept;

    void* pool;
    Retire retire;
    Block* block;

    InBlockAllocator(void* thePool, Retire theRetire, Block* theBlock) noexcept
        : pool(thePool), retire(theRetire), block(theBlock) {}
    template <typename U>
    InBlockAllocator(const InBlockAllocator<U>& other) noexcept
        : pool(other.pool), retire(other.retire), block(other.block) {}

    T* allocate(std::size_t count) {
        static_assert(sizeof(T) <= sizeof(Block::control));
        static_assert(alignof(T) <= alignof(Block));
        static_cast<void>(count);  // a shared pointer has one control block
        return reinterpret_cast<T*>(block->control.data());
    }
    void deallocate(T*, std::size_t) noexcept { retire(pool, block); }

    template <typename U>
    bool operator==(const InBlockAllocator<U>& other) const noexcept {
        return block == other.block;
    }
};

struct KeepAlive {
    void operator()(void*) const noexcept {}  // the allocator above does the work
};

}  // namespace

void BufferPool::Impl::Use(std::size_t capacity) {
    statistics.usedBytes += capacity;
    statistics.peakUsedBytes = std::max(statistics.peakUsedBytes, statistics.usedBytes);
}

Block* BufferPool::Impl::Take(const SizeClass& wanted) {
    {
        const std::scoped_lock lock(mutex);
        if (Block* block = free[wanted.index].PopNewest()) {
            ++statistics.reuses;
            statistics.retainedBytes -= wanted.capacity;
            Use(wanted.capacity);
            return block;
        }
    }
    // The system may take its time for a large block, so it is asked without the lock.
    Block* block = allocateBlock(wanted);
    if (block != nullptr) {
        const std::scoped_lock lock(mutex);
        ++statistics.allocations;
        Use(wanted.capacity);
    }
    return block;
}

void BufferPool::Impl::Retire(Block* block) noexcept {
    ASAN_POISON_MEMORY_REGION(block->Pixels(), block->capacity);
    Block* evicted = nullptr;
    {
        const std::scoped_lock lock(mutex);
        statistics.usedBytes -= block->capacity;
        statistics.retainedBytes += block->capacity;
        block->retiredAt = ++clock;
        free[block->classIndex].Push(block);
        evicted = EvictDownTo(retentionLimit);
    }
    freeChain(evicted);
}

Block* BufferPool::Impl::EvictDownTo(std::size_t limit) noexcept {
    Block* chain = nullptr;
    while (statistics.retainedBytes > limit) {
        Block* block = EvictOldest();
        if (block == nullptr) {
            break;
        }
        block->older = chain;
        chain = block;
    }
    return chain;
}

Block* BufferPool::Impl::EvictOldest() noexcept {
    FreeList* best = nullptr;
    for (FreeList& list : free) {
        if (list.Oldest() != nullptr &&
            (best == nullptr || list.Oldest()->retiredAt < best->Oldest()->retiredAt)) {
            best = &list;
        }
    }
    Block* block = best != nullptr ? best->PopOldest() : nullptr;
    if (block == nullptr) {
        return nullptr;
    }
    statistics.retainedBytes -= block->capacity;
    ++statistics.evictions;
    return block;
}

BufferPool::BufferPool() : impl_(std::make_unique<Impl>()) {}

BufferPool::~BufferPool() = default;

BufferPool& BufferPool::Instance() {
    static BufferPool* const pool = new BufferPool;
    return *pool;
}

std::shared_ptr<void> BufferPool::Allocate(std::size_t size) {
    // The system need not be asked for more than a process can address.
    constexpr std::size_t addressSpace = std::size_t{1} << 47U;
    if (size > addressSpace) {
        throwNoMemory(size);
    }
    Block* block = impl_->Take(classify(size));
    if (block == nullptr) {
        // Retained buffers of other sizes may be what is missing.
        Trim();
        block = impl_->Take(classify(size));
    }
    if (block == nullptr) {
        throwNoMemory(size);
    }
    ASAN_UNPOISON_MEMORY_REGION(block->Pixels(), size);
    const auto retire = [](void* pool, Block* released) noexcept {
        static_cast<Impl*>(pool)->Retire(released);
    };
    return {block->Pixels(), KeepAlive(), InBlockAllocator<void>(impl_.get(), retire, block)};
}

void BufferPool::SetRetentionLimit(std::size_t bytes) {
    Block* evicted = nullptr;
    {
        const std::scoped_lock lock(impl_->mutex);
        impl_->retentionLimit = bytes;
        evicted = impl_->EvictDownTo(bytes);
    }
    freeChain(evicted);
}

std::size_t BufferPool::GetRetentionLimit() const {
    const std::scoped_lock lock(impl_->mutex);
    return impl_->retentionLimit;
}

void BufferPool::Trim() {
    Block* evicted = nullptr;
    {
        const std::scoped_lock lock(impl_->mutex);
        evicted = impl_->EvictDownTo(0);
    }
    freeChain(evicted);
}

BufferPoolStatistics BufferPool::GetStatistics() const {
    const std::scoped_lock lock(impl_->mutex);
    return impl_->statistics;
}

void BufferPool::ResetPeak() {
    const std::scoped_lock lock(impl_->mutex);
    impl_->statistics.peakUsedBytes = impl_->statistics.usedBytes;
}

}  // namespace Orlix
