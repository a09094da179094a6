// Names of pins and parameters of ImageFormatConverter; a saved recipe has the same ones.
#pragma once

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase::ImageFormatConverterNames {

extern const GenICam::gcstring imagePin;

extern const GenICam::gcstring outputPixelFormat;
extern const GenICam::gcstring outputBitAlignment;
extern const GenICam::gcstring outputOrientation;
extern const GenICam::gcstring outputPaddingX;
extern const GenICam::gcstring maxNumThreads;

}  // namespace Plugin::OrlixVCellPackageBase::ImageFormatConverterNames
