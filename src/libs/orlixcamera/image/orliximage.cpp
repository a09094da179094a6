#include "orlixcamera/orliximage.h"

#include <cstring>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/copycounter.h"

namespace Orlix {

using GenICam::InvalidArgumentException;

namespace {

// The bytes that such a picture takes. An undefined pixel type throws in ComputeBufferSize.
std::size_t requireGeometry(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                            std::size_t paddingX) {
    if (width == 0 || height == 0) {
        const std::string text = "An image can not have a size of " + std::to_string(width) +
                                 " x " + std::to_string(height) + " pixels.";
        throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
    return ComputeBufferSize(pixelType, width, height, paddingX);
}

void requireBytes(const void* data, std::size_t available, std::size_t needed) {
    if (data == nullptr) {
        throw InvalidArgumentException("An image needs a buffer, but a null pointer was passed.",
                                       __FILE__, __LINE__);
    }
    if (available < needed) {
        const std::string text = "The image needs a buffer of " + std::to_string(needed) +
                                 " bytes, but the one passed has " + std::to_string(available) +
                                 " bytes.";
        throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
}

}  // namespace

COrlixImageBase::~COrlixImageBase() = default;

std::shared_ptr<void> COrlixImageBase::AllocateBuffer(std::size_t size) const {
    return BufferPool::Instance().Allocate(size);
}

bool COrlixImageBase::GetStride(std::size_t& strideBytes) const {
    if (!IsValid()) {
        return false;
    }
    strideBytes = ComputeStride(GetPixelType(), GetWidth(), GetPaddingX());
    return true;
}

void COrlixImageBase::CopyImage(const COrlixImageBase& source) {
    if (!source.IsValid()) {
        throw InvalidArgumentException("An empty image can not be copied.", __FILE__, __LINE__);
    }
    CopyImage(source.GetBuffer(), source.GetImageSize(), source.GetPixelType(), source.GetWidth(),
              source.GetHeight(), source.GetPaddingX(), source.GetOrientation());
}

void COrlixImageBase::CopyImage(const void* buffer, std::size_t bufferSize, EPixelType pixelType,
                                std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                                EImageOrientation orientation) {
    const std::size_t size = requireGeometry(pixelType, width, height, paddingX);
    requireBytes(buffer, bufferSize, size);
    // The old buffer is kept until the end, for the source may lie in it.
    std::shared_ptr<void> copy = AllocateBuffer(size);
    std::memcpy(copy.get(), buffer, size);
    PixelCopyCounter::Add(size);
    void* const data = copy.get();
    AttachBuffer(std::move(copy), data, size, pixelType, width, height, paddingX, orientation);
}

COrlixImage::COrlixImage(COrlixImage&& other) noexcept
    : owner_(std::move(other.owner_)), content_(std::exchange(other.content_, {})) {}

COrlixImage& COrlixImage::operator=(COrlixImage&& other) noexcept {
    owner_ = std::exchange(other.owner_, {});
    content_ = std::exchange(other.content_, {});
    return *this;
}

COrlixImage::~COrlixImage() = default;

void COrlixImage::Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                        std::size_t paddingX, EImageOrientation orientation) {
    const std::size_t size = requireGeometry(pixelType, width, height, paddingX);
    // Letting go first makes the pool hand the same memory back if nobody else holds it.
    Release();
    std::shared_ptr<void> buffer = AllocateBuffer(size);
    void* const data = buffer.get();
    AttachBuffer(std::move(buffer), data, size, pixelType, width, height, paddingX, orientation);
}

void COrlixImage::AttachBuffer(std::shared_ptr<void> owner, void* data, std::size_t size,
                               EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                               std::size_t paddingX, EImageOrientation orientation) {
    const std::size_t needed = requireGeometry(pixelType, width, height, paddingX);
    requireBytes(data, size, needed);
    owner_ = std::move(owner);
    content_ = {data, size, needed, paddingX, pixelType, width, height, orientation};
}

void COrlixImage::AttachUserBuffer(void* data, std::size_t size, EPixelType pixelType,
                                   std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                                   EImageOrientation orientation) {
    AttachBuffer(nullptr, data, size, pixelType, width, height, paddingX, orientation);
}

void COrlixImage::Release() noexcept {
    content_ = {};
    owner_.reset();
}

}  // namespace Orlix
