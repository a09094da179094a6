// Names of pins and parameters, which are what a user sees, and the keys of saved recipes, which
// are spelled in lower camel case. The two vocabularies are never mixed.
#pragma once

#include "gcbase/gcstring.h"

namespace Plugin::OrlixVCellPackageBase::ImageLoadingNames {

extern const GenICam::gcstring imagePin;
extern const GenICam::gcstring imagePathPin;
extern const GenICam::gcstring runCountPin;

extern const GenICam::gcstring sourcePathParameter;
extern const GenICam::gcstring sortByParameter;
extern const GenICam::gcstring numberOfImagesParameter;
extern const GenICam::gcstring framesPerSecondParameter;
extern const GenICam::gcstring numberOfRunsParameter;
extern const GenICam::gcstring runContinuouslyParameter;
extern const GenICam::gcstring storeAbsolutePathParameter;

extern const GenICam::gcstring sourcePathKey;
extern const GenICam::gcstring sortByKey;
extern const GenICam::gcstring numberOfImagesKey;
extern const GenICam::gcstring framesPerSecondKey;
extern const GenICam::gcstring numberOfRunsKey;
extern const GenICam::gcstring runContinuouslyKey;

}  // namespace Plugin::OrlixVCellPackageBase::ImageLoadingNames
