// PNG files through libspng: every colour type and depth, interlaced or not.
#pragma once

#include "orlixcamera/codecs/decodedpicture.h"
#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// Any thread. The pixels go into memory of the image, which stays as it is. Throws CodecError; a
// checksum that is wrong and a missing end are errors.
[[nodiscard]] DecodedPicture decodePng(const InputFile& file, const COrlixImageBase& image);

}  // namespace Orlix
