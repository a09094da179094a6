// The registration of the core's own types, in an order that has bases first.
#pragma once

#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::DataProcessing::Utils {

struct CoreTypes {
    // Whichever static initialiser of the process comes first registers the core's types.
    static void ensureRegistered() { TypeInfo::registerCoreTypes(); }
    // Called once, before any other type is registered. A failure is logged and leaves that type
    // unregistered. Returns true, for the initialiser of a static.
    static bool registerAll() noexcept;

private:
    template <typename T, typename... Bases>
    static void add(TypeInfo::Factory factory = nullptr) noexcept;
    template <typename T>
    static void addScalar() noexcept;
    static void addErrors() noexcept;
    static void addArrays() noexcept;
};

}  // namespace Orlix::DataProcessing::Utils
