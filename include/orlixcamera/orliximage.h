// An image: pixel format, size and a handle of the pixel buffer. The handle is cheap; its copies
// share the buffer, and nothing copies pixels but CopyImage. A handle may be used by one thread at
// a time; handles of one buffer may live on different threads as long as none writes pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"
#include "orlixcamera/imageorientation.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

class CGrabResultPtr;

// What every image offers. An image is valid or empty; an empty one has an undefined pixel type,
// the size 0 and no buffer. Sizes in bytes are 64 bits wide.
class ORLIXCAMERA_API COrlixImageBase {
public:
    virtual ~COrlixImageBase();

    [[nodiscard]] virtual bool IsValid() const noexcept = 0;
    [[nodiscard]] virtual EPixelType GetPixelType() const noexcept = 0;
    [[nodiscard]] virtual std::uint32_t GetWidth() const noexcept = 0;
    [[nodiscard]] virtual std::uint32_t GetHeight() const noexcept = 0;
    // Bytes behind the pixels of each row.
    [[nodiscard]] virtual std::size_t GetPaddingX() const noexcept = 0;
    [[nodiscard]] virtual EImageOrientation GetOrientation() const noexcept = 0;
    // The bytes that pixels and padding take; the buffer may be larger.
    [[nodiscard]] virtual std::size_t GetImageSize() const noexcept = 0;

    // Null for an empty image. Writing through it shows in every handle of the same buffer.
    [[nodiscard]] virtual void* GetBuffer() noexcept = 0;
    [[nodiscard]] virtual const void* GetBuffer() const noexcept = 0;

    // The memory of a new pixel buffer: at least `size` bytes of undefined content, aligned to
    // BufferPool::Alignment. Reset, CopyImage, Load and the converter take theirs from here. It is
    // the pool's unless a derived class has a source of its own; the image stays as it is. Throws
    // BadAllocException.
    [[nodiscard]] virtual std::shared_ptr<void> AllocateBuffer(std::size_t size) const;

    // Makes a valid image of undefined pixels in a new buffer; the previous buffer is let go
    // first. Throws InvalidArgumentException for a size of 0 and for an undefined pixel type.
    virtual void Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                       std::size_t paddingX = 0,
                       EImageOrientation orientation = ImageOrientation_TopDown) = 0;

    // Refers to `size` bytes at `data` without copying; `owner` is held as long as any handle
    // needs them. Throws InvalidArgumentException if they are too few for the picture, and leaves
    // the image as it was.
    virtual void AttachBuffer(std::shared_ptr<void> owner, void* data, std::size_t size,
                              EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                              std::size_t paddingX = 0,
                              EImageOrientation orientation = ImageOrientation_TopDown) = 0;

    // Lets go of the buffer; the image is empty afterwards.
    virtual void Release() noexcept = 0;

    // The bytes from one row to the next, for planar formats those of the first plane. False for
    // an empty image.
    [[nodiscard]] bool GetStride(std::size_t& strideBytes) const;

    // Replaces this image by a deep copy, in a new buffer. The bytes count as copied.
    // Throws InvalidArgumentException if the source is empty or its size or format is invalid, or
    // `bufferSize` too small, and leaves the image as it was.
    void CopyImage(const COrlixImageBase& source);
    void CopyImage(const void* buffer, std::size_t bufferSize, EPixelType pixelType,
                   std::uint32_t width, std::uint32_t height, std::size_t paddingX,
                   EImageOrientation orientation = ImageOrientation_TopDown);

    // Reads a BMP, JPEG, PNG or TIFF file; the content tells which, not the name. The path is in
    // UTF-8. The pixel format is the nearest of the following to what the file holds, in rows
    // without padding, the top one first, in a new buffer:
    //
    //   gray of up to 8 bits, palette of grays in a BMP   Mono8
    //   gray of 16 bits, with alpha or not                Mono16
    //   RGB of 8 bits, palette, CMYK, YCbCr               RGB8Packed
    //   RGB of 16 bits, with alpha or not                 RGB16Packed
    //   RGB or gray or palette of 8 bits with alpha       RGBA8Packed
    //   BMP of 16 or 24 bits, or 32 bits without alpha,
    //   and BMP with a palette of colours                 BGR8Packed
    //   BMP with alpha                                    BGRA8Packed
    //
    // So samples keep their depth, and alpha is kept where a format has room for both. Throws
    // RuntimeException that names the file, its format and the cause; the image is then as it was.
    void Load(const GenICam::gcstring& path);

    // Writes the image; the extension of the path tells the format. See imagefile.h.
    void Save(const GenICam::gcstring& path) const;

protected:
    COrlixImageBase() = default;
    COrlixImageBase(const COrlixImageBase&) = default;
    COrlixImageBase& operator=(const COrlixImageBase&) = default;
};

// The image that nodes, converter and camera hand around.
class ORLIXCAMERA_API COrlixImage : public COrlixImageBase {
public:
    COrlixImage() noexcept = default;
    // Shares the buffer. A moved-from image is empty.
    COrlixImage(const COrlixImage&) = default;
    COrlixImage(COrlixImage&& other) noexcept;
    COrlixImage& operator=(const COrlixImage&) = default;
    COrlixImage& operator=(COrlixImage&& other) noexcept;
    ~COrlixImage() override;

    [[nodiscard]] bool IsValid() const noexcept override { return content_.data != nullptr; }
    [[nodiscard]] EPixelType GetPixelType() const noexcept override { return content_.pixelType; }
    [[nodiscard]] std::uint32_t GetWidth() const noexcept override { return content_.width; }
    [[nodiscard]] std::uint32_t GetHeight() const noexcept override { return content_.height; }
    [[nodiscard]] std::size_t GetPaddingX() const noexcept override { return content_.paddingX; }
    [[nodiscard]] EImageOrientation GetOrientation() const noexcept override {
        return content_.orientation;
    }
    [[nodiscard]] std::size_t GetImageSize() const noexcept override { return content_.imageSize; }
    [[nodiscard]] void* GetBuffer() noexcept override { return content_.data; }
    [[nodiscard]] const void* GetBuffer() const noexcept override { return content_.data; }
    // The bytes that may be touched at GetBuffer().
    [[nodiscard]] std::size_t GetAllocatedBufferSize() const noexcept { return content_.size; }

    void Reset(EPixelType pixelType, std::uint32_t width, std::uint32_t height,
               std::size_t paddingX = 0,
               EImageOrientation orientation = ImageOrientation_TopDown) override;
    void AttachBuffer(std::shared_ptr<void> owner, void* data, std::size_t size,
                      EPixelType pixelType, std::uint32_t width, std::uint32_t height,
                      std::size_t paddingX = 0,
                      EImageOrientation orientation = ImageOrientation_TopDown) override;
    void Release() noexcept override;

    // As AttachBuffer, but the caller keeps the memory alive for all handles that share it.
    void AttachUserBuffer(void* data, std::size_t size, EPixelType pixelType, std::uint32_t width,
                          std::uint32_t height, std::size_t paddingX = 0,
                          EImageOrientation orientation = ImageOrientation_TopDown);

    // Refers to the image of a frame without copying, and keeps the result alive. Throws
    // InvalidArgumentException for an invalid pointer, RuntimeException with its description for a
    // frame that failed, and leaves the image as it was.
    void AttachGrabResultBuffer(const CGrabResultPtr& grabResult);

    // True if the handle keeps its memory alive; false for an empty image or a user buffer.
    [[nodiscard]] bool OwnsBuffer() const noexcept { return owner_ != nullptr; }
    // True if no other handle shares an owned buffer, so that writing shows nowhere else.
    [[nodiscard]] bool IsUnique() const noexcept { return owner_.use_count() == 1; }

private:
    struct Content {
        void* data = nullptr;
        std::size_t size = 0;
        std::size_t imageSize = 0;
        std::size_t paddingX = 0;
        EPixelType pixelType = PixelType_Undefined;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        EImageOrientation orientation = ImageOrientation_TopDown;
    };

    std::shared_ptr<void> owner_;
    Content content_;
};

}  // namespace Orlix
