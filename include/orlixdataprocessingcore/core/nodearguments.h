// Named arguments of one start, such as "AcquisitionMode". A value type.
#pragma once

#include <map>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class ORLIXDATAPROCESSINGCORE_API NodeArgumentCollection {
public:
    void setArgument(const GenICam::gcstring& name, const Utils::Variant& value);
    [[nodiscard]] bool hasArgument(const GenICam::gcstring& name) const;
    // Throws InvalidArgumentException that names an unknown argument.
    [[nodiscard]] Utils::Variant getArgumentValue(const GenICam::gcstring& name) const;

private:
    std::map<GenICam::gcstring, Utils::Variant> arguments_;
};

}  // namespace Orlix::DataProcessing::Core
