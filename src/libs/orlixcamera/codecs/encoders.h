// The encoders of the file formats. Each writes a valid image of a pixel type that `can...` tells
// it accepts. Any thread; they throw CodecError.
#pragma once

#include "orlixcamera/codecs/outputfile.h"
#include "orlixcamera/imagefile.h"
#include "orlixcamera/orliximage.h"

namespace Orlix {

[[nodiscard]] bool canEncodeBmp(EPixelType pixelType);
[[nodiscard]] bool canEncodeJpeg(EPixelType pixelType);
[[nodiscard]] bool canEncodePng(EPixelType pixelType);
[[nodiscard]] bool canEncodeTiff(EPixelType pixelType);

void encodeBmp(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options);
void encodeJpeg(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options);
void encodePng(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options);
void encodeTiff(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options);

}  // namespace Orlix
