// Values that carry an error in place of their data.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

class IError;

// A value of the given type with this error. An invalid Variant for a type whose values can't carry
// one: the pin then has no value in that job.
[[nodiscard]] Utils::Variant makeErrorValue(const Utils::TypeInfo& type,
                                            const std::shared_ptr<IError>& error);

}  // namespace Orlix::DataProcessing::Core
