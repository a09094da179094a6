// BMP files, with a reader of our own: 1, 4, 8, 16, 24 and 32 bits, both row orders, colour masks,
// palettes and run lengths.
#pragma once

#include "orlixcamera/codecs/decodedpicture.h"
#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// Any thread. The pixels go into memory of the image, which stays as it is. Throws CodecError.
[[nodiscard]] DecodedPicture decodeBmp(const InputFile& file, const COrlixImageBase& image);

}  // namespace Orlix
