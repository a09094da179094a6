#include "orlixdataprocessingcore/utils/cowptr.h"

namespace Orlix::DataProcessing::Utils {

COWPtrBase::IObjectWrapper::~IObjectWrapper() = default;

}  // namespace Orlix::DataProcessing::Utils
