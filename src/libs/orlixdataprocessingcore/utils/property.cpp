#include "orlixdataprocessingcore/utils/property.h"

namespace Orlix::DataProcessing::Utils {

IReadOnlyProperty::~IReadOnlyProperty() = default;
IProperty::~IProperty() = default;
IResettableProperty::~IResettableProperty() = default;

}  // namespace Orlix::DataProcessing::Utils
