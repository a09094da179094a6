// TIFF files through libtiff: the first picture of the file, in strips or tiles, with samples side
// by side or in planes.
#pragma once

#include "orlixcamera/codecs/decodedpicture.h"
#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// Any thread. The pixels go into memory of the image, which stays as it is. Throws CodecError;
// damage that libtiff would paint over is an error, too.
[[nodiscard]] DecodedPicture decodeTiff(const InputFile& file, const COrlixImageBase& image);

}  // namespace Orlix
