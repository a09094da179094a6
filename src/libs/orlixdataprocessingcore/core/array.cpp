#include "orlixdataprocessingcore/core/array.h"

namespace Orlix::DataProcessing::Core {

IArray::~IArray() = default;

}  // namespace Orlix::DataProcessing::Core
