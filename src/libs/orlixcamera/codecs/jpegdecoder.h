// JPEG files through libjpeg-turbo: baseline and progressive, gray, YCbCr, RGB, CMYK and YCCK.
#pragma once

#include "orlixcamera/codecs/decodedpicture.h"
#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// Any thread. The pixels go into memory of the image, which stays as it is. Throws CodecError;
// damage that libjpeg would paint over with gray is an error, too.
[[nodiscard]] DecodedPicture decodeJpeg(const InputFile& file, const COrlixImageBase& image);

}  // namespace Orlix
