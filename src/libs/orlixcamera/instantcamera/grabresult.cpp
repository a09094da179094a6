#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/grabresultptr.h"
#include "orlixcamera/instantcamera/frameslot.h"
#include "orlixcamera/orliximage.h"

namespace Orlix {

using Transport::FrameFate;
using Transport::PayloadKind;

CGrabResultData& CGrabResultPtr::Checked() const {
    if (data_ == nullptr) {
        throw GenICam::LogicalErrorException("The pointer refers to no grab result.", __FILE__,
                                             __LINE__);
    }
    return *data_;
}

bool CGrabResultData::GrabSucceeded() const noexcept {
    return slot_.buffer.fate == FrameFate::Delivered;
}

gcstring CGrabResultData::GetErrorDescription() const {
    return slot_.buffer.error;
}

EPixelType CGrabResultData::GetPixelType() const noexcept {
    return slot_.buffer.pixelType;
}

std::uint32_t CGrabResultData::GetWidth() const noexcept {
    return slot_.buffer.width;
}

std::uint32_t CGrabResultData::GetHeight() const noexcept {
    return slot_.buffer.height;
}

std::uint32_t CGrabResultData::GetOffsetX() const noexcept {
    return slot_.buffer.offsetX;
}

std::uint32_t CGrabResultData::GetOffsetY() const noexcept {
    return slot_.buffer.offsetY;
}

std::size_t CGrabResultData::GetPaddingX() const noexcept {
    return slot_.buffer.paddingX;
}

void* CGrabResultData::GetBuffer() const noexcept {
    return slot_.buffer.data;
}

std::size_t CGrabResultData::GetBufferSize() const noexcept {
    return slot_.buffer.capacity;
}

std::size_t CGrabResultData::GetPayloadSize() const noexcept {
    return slot_.buffer.filled;
}

std::size_t CGrabResultData::GetImageSize() const {
    const Transport::StreamBuffer& buffer = slot_.buffer;
    const bool hasImage = buffer.kind != PayloadKind::ChunksOnly &&
                          buffer.pixelType != PixelType_Undefined && buffer.width != 0 &&
                          buffer.height != 0;
    return hasImage
               ? ComputeBufferSize(buffer.pixelType, buffer.width, buffer.height, buffer.paddingX)
               : 0;
}

std::uint64_t CGrabResultData::GetFrameId() const noexcept {
    return slot_.buffer.frameId;
}

std::uint64_t CGrabResultData::GetTimeStamp() const noexcept {
    return slot_.buffer.timestamp;
}

std::uint64_t CGrabResultData::GetRunNumber() const noexcept {
    return slot_.GetNumbers().run;
}

std::uint64_t CGrabResultData::GetImageNumber() const noexcept {
    return slot_.GetNumbers().imageNumber;
}

std::size_t CGrabResultData::GetNumberOfSkippedImages() const noexcept {
    return slot_.GetNumbers().skipped;
}

bool CGrabResultData::IsChunkDataAvailable() const noexcept {
    return slot_.HasChunks();
}

GenApi::INodeMap& CGrabResultData::GetChunkDataNodeMap() const {
    return slot_.GetChunkMap();
}

void COrlixImage::AttachGrabResultBuffer(const CGrabResultPtr& grabResult) {
    if (!grabResult.IsValid()) {
        throw GenICam::InvalidArgumentException(
            "An image needs a grab result, but the pointer refers to none.", __FILE__, __LINE__);
    }
    const CGrabResultData& result = *grabResult;
    if (!result.GrabSucceeded()) {
        const std::string text =
            "The grab result has no valid image. " + result.GetErrorDescription().str();
        throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
    }
    AttachBuffer(grabResult.GetOwner(), result.GetBuffer(), result.GetPayloadSize(),
                 result.GetPixelType(), result.GetWidth(), result.GetHeight(),
                 result.GetPaddingX());
}

}  // namespace Orlix
