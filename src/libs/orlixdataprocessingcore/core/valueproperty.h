// The property "Value" of a scalar class: its whole value, error included.
#pragma once

#include "orlixdataprocessingcore/utils/propertyinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

template <typename T>
void registerValueProperty(Utils::ITypeInfoData& data) {
    const auto get = [](const void* object) { return Variant(*static_cast<const T*>(object)); };
    const auto set = [](void* object, const Variant& value) {
        *static_cast<T*>(object) = *value.get<T>(true);
    };
    data.addProperty(Utils::PropertyInfo("Value", get, set));
}

}  // namespace Orlix::DataProcessing::Core
