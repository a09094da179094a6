#include "typemodule/typemodule.h"

#include "gcbase/gcexception.h"

// TYPEMODULE_PREFIX is "linked" or "loaded"; one source makes both modules.
#define TYPEMODULE_JOIN(prefix, name) prefix##name
#define TYPEMODULE_JOIN_VALUE(prefix, name) TYPEMODULE_JOIN(prefix, name)
#define TYPEMODULE_NAME(name) TYPEMODULE_JOIN_VALUE(TYPEMODULE_PREFIX, name)

namespace TypeModule {

ORLIX_REGISTER_VALUE_TYPE(Shared, Integer)
ORLIX_REGISTER_VALUE_TYPE(Foreign, Shared)

extern "C" {

__attribute__((visibility("default"))) void TYPEMODULE_NAME(MakeForeign)(int value,
                                                                         Variant* result) {
    *result = Variant(Foreign(value));
}

__attribute__((visibility("default"))) int TYPEMODULE_NAME(ReadShared)(const Variant* value) {
    return value->get<Shared>(true)->getDouble();
}

__attribute__((visibility("default"))) void TYPEMODULE_NAME(Fail)() {
    throw GenICam::TimeoutException("From a module.", __FILE__, __LINE__);
}

}  // extern "C"

}  // namespace TypeModule
