// The run length form of BMP pictures with a palette of 4 or 8 bits.
#pragma once

#include "orlixcamera/codecs/bmpheader.h"
#include "orlixcamera/codecs/decodedpicture.h"
#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// Fills the picture; pixels that the file skips get the first colour. Throws CodecError if the
// file ends early or a run leaves its row; with 4 bits, a byte of two pixels may do so by its
// second.
void decodeBmpRuns(const InputFile& file, const BmpHeader& header, const DecodedPicture& picture);

}  // namespace Orlix
