// What a module that is built apart from the test program gives and takes. The classes are
// compiled, with hidden symbols, by each module that includes this.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace TypeModule {

using Orlix::DataProcessing::Core::Integer;
using Orlix::DataProcessing::Utils::Variant;

// Registered by the test program and by each module.
class Shared : public Integer {
    ORLIX_OBJECT(Shared)
public:
    Shared() = default;
    explicit Shared(int value) : Integer(value) {}
    virtual int getDouble() const { return static_cast<int>(get()) * 2; }
};

// Registered by the modules only.
class Foreign : public Shared {
    ORLIX_OBJECT(Foreign)
public:
    Foreign() = default;
    explicit Foreign(int value) : Shared(value) {}
    int getDouble() const override { return -2 * static_cast<int>(get()); }
};

// The entry points of a module, named linkedMakeForeign or loadedMakeForeign and so on.
using MakeForeign = void(int value, Variant* result);
using ReadShared = int(const Variant* value);
using Fail = void();

}  // namespace TypeModule

// Of the module that the test program is linked with.
extern "C" {
TypeModule::MakeForeign linkedMakeForeign;
TypeModule::ReadShared linkedReadShared;
TypeModule::Fail linkedFail;
}
