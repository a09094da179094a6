#include "orlixdataprocessingcore/utils/iobject.h"

namespace Orlix::DataProcessing::Utils {

IObject::~IObject() = default;

}  // namespace Orlix::DataProcessing::Utils
