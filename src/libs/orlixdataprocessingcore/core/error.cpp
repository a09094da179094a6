#include "orlixdataprocessingcore/core/error.h"

namespace Orlix::DataProcessing::Core {

IError::~IError() = default;
IExceptionError::~IExceptionError() = default;

}  // namespace Orlix::DataProcessing::Core
