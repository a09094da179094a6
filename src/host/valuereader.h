// What the host reads of a value on a pin.
#pragma once

#include <memory>

#include "host/jsontext.h"

namespace Orlix::DataProcessing::Core {
class IError;
class Image;
}  // namespace Orlix::DataProcessing::Core

namespace Orlix::DataProcessing::Utils {
class Variant;
}

namespace Orlix::Host {

// Null for a value without an error; an array has the error of its first element that has one.
[[nodiscard]] std::shared_ptr<DataProcessing::Core::IError> errorOf(
    const DataProcessing::Utils::Variant& value);

// Null for a value that is no image.
[[nodiscard]] const DataProcessing::Core::Image* imageOf(
    const DataProcessing::Utils::Variant& value);

// Null for an empty image, a number that is not finite and a value of an unknown class. The value
// carries no error.
[[nodiscard]] Json valueAsJson(const DataProcessing::Utils::Variant& value);

}  // namespace Orlix::Host
