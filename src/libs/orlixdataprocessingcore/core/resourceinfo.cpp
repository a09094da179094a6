#include "orlixdataprocessingcore/core/resourceinfo.h"

namespace Orlix::DataProcessing::Core {

ResourceInfo::ResourceInfo(const Orlix::CInfoBase& properties) : Orlix::CInfoBase(properties) {}

bool ResourceInfo::operator<(const ResourceInfo& other) const {
    return properties() < other.properties();
}

}  // namespace Orlix::DataProcessing::Core
