#include "orlixdataprocessingcore/core/image.h"

#include <cstring>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/copycounter.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/utils/propertyinfo.h"

namespace Orlix::DataProcessing::Core {

Image::Image() = default;

Image::Image(const Orlix::COrlixImage& image, const std::shared_ptr<IBufferProvider>& provider,
             bool forceCopy)
    : provider_(provider) {
    if (image.IsValid() && (forceCopy || !image.OwnsBuffer())) {
        copyPixels(image);
    } else {
        image_ = image;
    }
}

Image::Image(const std::shared_ptr<IError>& error) : error_(error) {}

Image::~Image() = default;

bool Image::hasError(bool) const {
    return error_.isSet();
}

std::shared_ptr<IError> Image::getError(bool) const {
    return error_.get();
}

void Image::setError(const std::shared_ptr<IError>& error) {
    error_.set(error);
    image_.Release();
}

void* Image::getData() {
    if (!image_.IsValid()) {
        return nullptr;
    }
    if (!image_.OwnsBuffer() || !image_.IsUnique()) {
        const Orlix::COrlixImage shared(image_);
        copyPixels(shared);
    }
    // The use count is only read, which orders nothing; counting up and down does, so that what
    // former holders on other threads have read is read before this one writes.
    const Orlix::COrlixImage order(image_);
    return image_.GetBuffer();
}

namespace {

// The provider is the host's, and may have no buffer left.
std::shared_ptr<void> allocate(IBufferProvider* provider, std::size_t size) {
    if (provider == nullptr) {
        return Orlix::BufferPool::Instance().Allocate(size);
    }
    std::shared_ptr<void> buffer = provider->getBuffer(size);
    if (buffer == nullptr) {
        const std::string text =
            "The buffer provider gave no buffer of " + std::to_string(size) + " bytes.";
        throw GenICam::BadAllocException(text.c_str(), __FILE__, __LINE__);
    }
    return buffer;
}

}  // namespace

void Image::copyPixels(const Orlix::COrlixImage& source) {
    const std::size_t size = source.GetImageSize();
    std::shared_ptr<void> buffer = allocate(provider_.get(), size);
    void* data = buffer.get();
    std::memcpy(data, source.GetBuffer(), size);
    Orlix::PixelCopyCounter::Add(size);
    image_.AttachBuffer(std::move(buffer), data, size, source.GetPixelType(), source.GetWidth(),
                        source.GetHeight(), source.GetPaddingX(), source.GetOrientation());
}

namespace {

template <auto Get>
Variant getAsInteger(const void* object) {
    const auto value = (static_cast<const Image*>(object)->*Get)();
    return Variant(Integer(static_cast<std::int64_t>(value)));
}

}  // namespace

void Image::registerProperties(Utils::ITypeInfoData& data) {
    using Utils::PropertyInfo;
    data.addProperty(PropertyInfo("Width", &getAsInteger<&Image::getWidth>, nullptr));
    data.addProperty(PropertyInfo("Height", &getAsInteger<&Image::getHeight>, nullptr));
    data.addProperty(PropertyInfo("PixelType", &getAsInteger<&Image::getPixelType>, nullptr));
    data.addProperty(PropertyInfo("ImageSize", &getAsInteger<&Image::getImageSize>, nullptr));
    data.addProperty(PropertyInfo("LinePadding", &getAsInteger<&Image::getLinePadding>, nullptr));
}

}  // namespace Orlix::DataProcessing::Core
