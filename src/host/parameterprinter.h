// Text and JSON forms of single parameter values.
#pragma once

#include <string>

#include "host/jsontext.h"
#include "orlixhost/parametertree.h"

namespace Orlix::Host {

// Without any locale; floats with as many digits as they need to be read back.
[[nodiscard]] std::string parameterText(const ParameterValue& value);
[[nodiscard]] Json parameterJson(const ParameterValue& value);

}  // namespace Orlix::Host
