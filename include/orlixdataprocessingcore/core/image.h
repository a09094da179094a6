// A picture on a pin: a handle of a pixel buffer, or an error, or nothing.
//
// Copies of an Image share the pixels, also the copy that a COWPtr makes before a write: setting
// an error on a shared image costs nothing. Only getData(), the one way to write pixels, makes
// them private first, in a buffer of the provider, and only if they are shared or not owned; the
// bytes count in Orlix::PixelCopyCounter. So an image that travels is copied where it is written.
#pragma once

#include <cstdint>
#include <memory>

#include "orlixcamera/orliximage.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class IBufferProvider;

using Orlix::EPixelType;

class ORLIXDATAPROCESSINGCORE_API Image : public IValue {
    ORLIX_OBJECT(Image)

public:
    // Empty: no pixels and no error.
    Image();
    // Shares the pixels of an image that keeps its memory alive; copies them, into a buffer of the
    // provider, if the caller only lent the memory (a user buffer) or `forceCopy` says so. The
    // provider is kept for later copies; without one, buffers come from Orlix::BufferPool.
    Image(const Orlix::COrlixImage& image, const std::shared_ptr<IBufferProvider>& provider,
          bool forceCopy);
    explicit Image(const std::shared_ptr<IError>& error);
    Image(const Image&) = default;
    Image(Image&&) noexcept = default;
    Image& operator=(const Image&) = default;
    Image& operator=(Image&&) noexcept = default;
    ~Image() override;

    bool hasError(bool includeElements) const override;
    std::shared_ptr<IError> getError(bool includeElements) const override;
    void setError(const std::shared_ptr<IError>& error) override;

    // Whether there are pixels. Without, the type is undefined, sizes are 0, the data is null.
    [[nodiscard]] bool isValid() const noexcept { return image_.IsValid(); }
    [[nodiscard]] EPixelType getPixelType() const noexcept { return image_.GetPixelType(); }
    [[nodiscard]] std::uint32_t getWidth() const noexcept { return image_.GetWidth(); }
    [[nodiscard]] std::uint32_t getHeight() const noexcept { return image_.GetHeight(); }
    // In bytes: all of the image, and behind the pixels of each line.
    [[nodiscard]] std::uint64_t getImageSize() const noexcept { return image_.GetImageSize(); }
    [[nodiscard]] std::uint64_t getLinePadding() const noexcept { return image_.GetPaddingX(); }
    [[nodiscard]] const void* getDataConst() const noexcept { return image_.GetBuffer(); }

    // Writable pixels, private to this image from now on. Null without pixels.
    [[nodiscard]] void* getData();

    // The handle of the pixels, for encoders and converters; only for reading. A copy of it makes
    // the pixels shared.
    [[nodiscard]] const Orlix::COrlixImage& getOrlixImage() const noexcept { return image_; }

    // The properties "Width", "Height", "PixelType", "ImageSize" and "LinePadding", read-only.
    static void registerProperties(Utils::ITypeInfoData& data);

private:
    void copyPixels(const Orlix::COrlixImage& source);

    ErrorState error_;
    Orlix::COrlixImage image_;
    std::shared_ptr<IBufferProvider> provider_;
};

}  // namespace Orlix::DataProcessing::Core
