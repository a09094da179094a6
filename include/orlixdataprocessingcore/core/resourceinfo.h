// The properties by which a resource is found: keys and values with a strict order, so that maps
// of resources list them the same way every time.
#pragma once

#include <map>

#include "gcbase/gcstring.h"
#include "orlixcamera/infobase.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API ResourceInfo : public Orlix::CInfoBase {
public:
    ResourceInfo() = default;
    explicit ResourceInfo(const Orlix::CInfoBase& properties);

    // Lexicographic over the sorted pairs of key and value.
    bool operator<(const ResourceInfo& other) const;
};

}  // namespace Orlix::DataProcessing::Core
