// Reflection of one property of a registered type: its value can be read and set by name, as a
// Variant. Immutable once registered.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

using GenICam::gcstring;

class IObject;
class Variant;

class ORLIXDATAPROCESSINGCORE_API PropertyInfo {
public:
    // Both get the address of the object in the type that has the property.
    using Getter = Variant (*)(const void* object);
    using Setter = void (*)(void* object, const Variant& value);

    // A null setter makes the property read-only.
    PropertyInfo(const gcstring& name, Getter getter, Setter setter)
        : name_(name), getter_(getter), setter_(setter) {}

    [[nodiscard]] const gcstring& getName() const noexcept { return name_; }
    [[nodiscard]] bool isWritable() const noexcept { return setter_ != nullptr; }

    // With a path, the property of the value that it names; see TypeInfo::splitPath. The object
    // is of the type that has the property or derived from it.
    [[nodiscard]] Variant getValue(const IObject& object, const gcstring& path = gcstring()) const;
    // Throws RuntimeException that names the property if it is read-only.
    void setValue(IObject& object, const gcstring& path, const Variant& value) const;

    // The type that has the property; set when it is registered.
    [[nodiscard]] const TypeInfo& getOwner() const noexcept { return owner_; }
    void setOwner(const TypeInfo& owner) noexcept { owner_ = owner; }

private:
    gcstring name_;
    TypeInfo owner_;
    Getter getter_;
    Setter setter_;
};

}  // namespace Orlix::DataProcessing::Utils
