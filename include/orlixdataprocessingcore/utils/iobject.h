// Root of all classes that tell their registered type at run time, across module borders. The
// operations are const queries of a constant and safe from any thread.
#pragma once

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

class TypeInfo;

// The order of the virtual operations is part of the interface. ORLIX_OBJECT of typeinfo.h
// implements the first three for a class.
class ORLIXDATAPROCESSINGCORE_API IObject {
public:
    // The dynamic type. If it is not registered: an exception, or an invalid TypeInfo.
    [[nodiscard]] virtual TypeInfo getTypeInfo(bool throwOnError) const = 0;
    // The address of the dynamic object, as type_cast wants it beside getTypeInfo.
    [[nodiscard]] virtual const void* getRawPointer() const = 0;
    [[nodiscard]] virtual void* getRawPointer() = 0;

    // Here, since the end of every handle comes by.
    virtual ~IObject() = default;

protected:
    IObject() = default;
    IObject(const IObject&) = default;
    IObject(IObject&&) = default;
    IObject& operator=(const IObject&) = default;
    IObject& operator=(IObject&&) = default;
};

}  // namespace Orlix::DataProcessing::Utils
