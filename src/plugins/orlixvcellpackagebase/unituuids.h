// Two identities of which each node's unit has a pair of its own, made when the library is loaded,
// before the texts of the unit. Included by the unit of each node and by nothing else.
#pragma once

#include "orlixdataprocessingcore/utils/uuid.h"

namespace Plugin::OrlixVCellPackageBase {

[[maybe_unused]] static const Orlix::DataProcessing::Utils::Uuid firstUuid(
    "8fcfdd35-ba34-4bf8-b6a3-6737d7612e95");
[[maybe_unused]] static const Orlix::DataProcessing::Utils::Uuid secondUuid(
    "b44bfc48-0086-420c-abb8-2ff57522d61a");

}  // namespace Plugin::OrlixVCellPackageBase
