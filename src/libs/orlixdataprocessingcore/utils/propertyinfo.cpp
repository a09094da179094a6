#include "orlixdataprocessingcore/utils/propertyinfo.h"

#include <string>

#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

namespace {

[[noreturn]] void throwForProperty(const gcstring& name, const char* problem) {
    const std::string message = "Property \"" + name.str() + "\" " + problem;
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

}  // namespace

Variant PropertyInfo::getValue(const IObject& object, const gcstring& path) const {
    const void* owner = type_cast(object.getRawPointer(), object.getTypeInfo(false), owner_);
    if (owner == nullptr) {
        throwForProperty(name_, "does not belong to the type of the given object.");
    }
    Variant value = getter_(owner);
    if (path.empty()) {
        return value;
    }
    const auto [name, rest] = TypeInfo::splitPath(path);
    return value.getValueType().getProperty(name).getValue(*value.get<IObject>(true), rest);
}

void PropertyInfo::setValue(IObject& object, const gcstring& path, const Variant& value) const {
    void* owner = type_cast(object.getRawPointer(), object.getTypeInfo(false), owner_);
    if (owner == nullptr) {
        throwForProperty(name_, "does not belong to the type of the given object.");
    }
    if (setter_ == nullptr) {
        throwForProperty(name_, "is read-only.");
    }
    if (path.empty()) {
        setter_(owner, value);
        return;
    }
    // The outer value is read, changed and written back as a whole.
    const auto [name, rest] = TypeInfo::splitPath(path);
    Variant outer = getter_(owner);
    outer.getValueType().getProperty(name).setValue(*outer.get<IObject>(true), rest, value);
    setter_(owner, outer);
}

}  // namespace Orlix::DataProcessing::Utils
