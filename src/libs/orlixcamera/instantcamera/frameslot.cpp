#include "orlixcamera/instantcamera/frameslot.h"

#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/instantcamera/bufferset.h"

namespace Orlix::Detail {

using Transport::FrameFate;
using Transport::PayloadKind;

namespace {

// The bytes that the frame's image needs; 0 where nobody knows, for a device may have formats of
// its own.
std::uint64_t leastBytesOf(const Transport::StreamBuffer& frame) {
    try {
        return ComputeBufferSize(frame.pixelType, frame.width, frame.height, frame.paddingX);
    } catch (const GenICam::GenericException&) {
        return 0;
    }
}

}  // namespace

// Puts the control block of the result into the slot. The slot goes back when the control block
// dies, which is after the last holder let go and not a step earlier.
template <class T>
struct FrameSlot::ControlBlockAllocator {
    using value_type = T;

    explicit ControlBlockAllocator(FrameSlot& owner) noexcept : slot(&owner) {}
    template <class U>
    ControlBlockAllocator(const ControlBlockAllocator<U>& other) noexcept : slot(other.slot) {}

    [[nodiscard]] T* allocate(std::size_t) noexcept {
        static_assert(sizeof(T) <= sizeof(FrameSlot::controlBlock_));
        return reinterpret_cast<T*>(slot->controlBlock_.data());
    }
    void deallocate(T*, std::size_t) noexcept { slot->giveBack(); }

    template <class U>
    bool operator==(const ControlBlockAllocator<U>& other) const noexcept {
        return slot == other.slot;
    }

    FrameSlot* slot;
};

FrameSlot::FrameSlot(std::size_t capacity, std::shared_ptr<ChunkMaps> chunkMaps)
    : memory_(BufferPool::Instance().Allocate(capacity)), chunkMaps_(std::move(chunkMaps)) {
    buffer.data = memory_.get();
    buffer.capacity = capacity;
    buffer.user = this;
}

FrameSlot::~FrameSlot() {
    if (chunkMap_ != nullptr) {
        chunkMaps_->Give(std::move(chunkMap_));
    }
}

void FrameSlot::Examine() {
    hasChunks_ = false;
    if (buffer.fate != FrameFate::Delivered) {
        return;
    }
    if (buffer.filled > buffer.capacity) {
        fail(FrameFate::WrongSize, "The frame has " + std::to_string(buffer.filled) +
                                       " bytes, its buffer has room for " +
                                       std::to_string(buffer.capacity) + ".");
        return;
    }
    if (buffer.kind != PayloadKind::ChunksOnly && buffer.pixelType != PixelType_Undefined) {
        const std::uint64_t needed = leastBytesOf(buffer);
        if (needed > buffer.filled) {
            fail(FrameFate::WrongSize, "The frame has " + std::to_string(buffer.filled) +
                                           " bytes, its image needs " + std::to_string(needed) +
                                           ".");
            return;
        }
    }
    if (buffer.kind != PayloadKind::Image) {
        hasChunks_ = HasChunkLayout(buffer);
        if (!hasChunks_) {
            fail(FrameFate::BadTrailer, "The chunks of the frame can't be taken apart.");
        }
    }
}

// Complete ones have told of themselves.
void FrameSlot::Assume(const FrameGeometry& geometry) noexcept {
    const bool isComplete =
        buffer.fate == FrameFate::Delivered || buffer.fate == FrameFate::BadTrailer;
    if (isComplete || buffer.kind == PayloadKind::ChunksOnly ||
        buffer.pixelType != PixelType_Undefined) {
        return;
    }
    buffer.pixelType = geometry.pixelType;
    buffer.width = geometry.width;
    buffer.height = geometry.height;
    buffer.offsetX = geometry.offsetX;
    buffer.offsetY = geometry.offsetY;
}

void FrameSlot::fail(FrameFate fate, std::string why) {
    buffer.fate = fate;
    buffer.error = gcstring(why);
}

CGrabResultPtr FrameSlot::HandOut(std::shared_ptr<BufferSet> set, FrameNumbers numbers) {
    set_ = std::move(set);
    numbers_ = numbers;
    set_->CountHeld(1);
    return CGrabResultPtr(std::shared_ptr<CGrabResultData>(
        &result_, [](CGrabResultData*) {}, ControlBlockAllocator<CGrabResultData>(*this)));
}

void FrameSlot::giveBack() noexcept {
    if (chunksAttached_) {
        chunkMap_->Detach();
        chunksAttached_ = false;
    }
    // The set, and this with it, may end here.
    const std::shared_ptr<BufferSet> set = std::move(set_);
    set->CountHeld(-1);
    set->Return(*this);
}

GenApi::INodeMap& FrameSlot::GetChunkMap() {
    const std::scoped_lock lock(chunkMutex_);
    if (chunkMap_ == nullptr) {
        chunkMap_ = chunkMaps_->Take();
    }
    if (hasChunks_ && !chunksAttached_) {
        chunkMap_->Attach(buffer);
        chunksAttached_ = true;
    }
    return chunkMap_->Get();
}

}  // namespace Orlix::Detail
