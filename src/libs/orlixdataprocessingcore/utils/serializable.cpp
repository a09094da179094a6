#include "orlixdataprocessingcore/utils/serializable.h"

namespace Orlix::DataProcessing::Utils {

ISerializable::~ISerializable() = default;

}  // namespace Orlix::DataProcessing::Utils
