// Turns rows of TIFF samples into rows of pixels. Pure but for the tables that an object holds;
// one object serves one picture.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orlixcamera/codecs/tifffile.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

class TiffRows {
public:
    // Throws CodecError if no pixel type fits the layout.
    TiffRows(const TiffFile& file, const TiffLayout& layout);

    [[nodiscard]] EPixelType PixelType() const { return pixelType_; }

    // True if the samples of a row are its pixels already.
    [[nodiscard]] bool IsStoredAsDelivered() const;

    // Samples side by side.
    void Convert(const unsigned char* source, unsigned char* target, std::uint32_t pixels) const;
    // Samples of one plane; those of all planes make the pixel.
    void ConvertPlane(unsigned plane, const unsigned char* source, unsigned char* target,
                      std::uint32_t pixels) const;
    // How many planes matter.
    [[nodiscard]] unsigned PlaneCount() const;

private:
    enum class Form { Gray, Palette, Light, Ink };

    void ChooseForm();
    void ChoosePixelType(bool hasAlpha);
    void ReadPalette(const TiffFile& file);
    void ConvertGray(const unsigned char* source, unsigned char* target,
                     std::uint32_t pixels) const;
    void ConvertPalette(const unsigned char* source, unsigned char* target,
                        std::uint32_t pixels) const;
    void ConvertGrayAlpha(const unsigned char* source, unsigned char* target,
                          std::uint32_t pixels) const;
    void KeepFirstSamples(const unsigned char* source, unsigned char* target,
                          std::uint32_t pixels) const;
    [[nodiscard]] std::size_t SourceBytes() const;
    [[nodiscard]] std::size_t TargetBytes() const { return BitsPerPixel(pixelType_) / 8; }

    TiffLayout layout_;
    Form form_ = Form::Gray;
    EPixelType pixelType_ = PixelType_Undefined;
    std::vector<std::array<unsigned char, 3>> palette_;
};

}  // namespace Orlix
