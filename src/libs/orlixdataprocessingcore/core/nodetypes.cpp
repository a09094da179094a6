// Enters the types of the node contract into the registry. Bases stand before what derives from
// them; the order within one file is the order of registration.
#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Core {

ORLIX_REGISTER_TYPE(INode, Utils::IObject)
ORLIX_REGISTER_TYPE(NodeBase, INode)
ORLIX_REGISTER_TYPE(SimpleNode, NodeBase)
ORLIX_REGISTER_TYPE(AdvancedNode, NodeBase)
ORLIX_REGISTER_TYPE(INodeMapContainer, Utils::IObject)
ORLIX_REGISTER_TYPE(ITlResource, Utils::IObject)
ORLIX_REGISTER_TYPE(IDeviceResource, Utils::IObject)

}  // namespace Orlix::DataProcessing::Core
