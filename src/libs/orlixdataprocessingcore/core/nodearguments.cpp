#include "orlixdataprocessingcore/core/nodearguments.h"

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Core {

void NodeArgumentCollection::setArgument(const GenICam::gcstring& name,
                                         const Utils::Variant& value) {
    arguments_.insert_or_assign(name, value);
}

bool NodeArgumentCollection::hasArgument(const GenICam::gcstring& name) const {
    return arguments_.count(name) != 0;
}

Utils::Variant NodeArgumentCollection::getArgumentValue(const GenICam::gcstring& name) const {
    const auto argument = arguments_.find(name);
    if (argument == arguments_.end()) {
        throw GenICam::InvalidArgumentException(
            ("There is no argument \"" + name.str() + "\".").c_str(), __FILE__, __LINE__);
    }
    return argument->second;
}

}  // namespace Orlix::DataProcessing::Core
