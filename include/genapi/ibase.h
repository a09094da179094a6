// IBase, the root of all node interfaces, and the functions that judge an access mode.
// Node objects belong to their map and live as long as it; any thread may call.
#pragma once

#include "genapi/api.h"
#include "genapi/types.h"

namespace GenApi {

class GENAPI_API IBase {
public:
    // What may be done now. Reads the registers that decide it, under the map's lock; an exception
    // of a port leaves this call as it was thrown.
    [[nodiscard]] virtual EAccessMode GetAccessMode() const = 0;

protected:
    virtual ~IBase() = default;
};

[[nodiscard]] inline bool IsReadable(EAccessMode mode) {
    return mode == RO || mode == RW;
}
[[nodiscard]] inline bool IsWritable(EAccessMode mode) {
    return mode == WO || mode == RW;
}
[[nodiscard]] inline bool IsImplemented(EAccessMode mode) {
    return mode != NI;
}
[[nodiscard]] inline bool IsAvailable(EAccessMode mode) {
    return mode == WO || mode == RO || mode == RW;
}

// A null pointer is nothing that could be accessed.
[[nodiscard]] inline bool IsReadable(const IBase* base) {
    return base != nullptr && IsReadable(base->GetAccessMode());
}
[[nodiscard]] inline bool IsWritable(const IBase* base) {
    return base != nullptr && IsWritable(base->GetAccessMode());
}
[[nodiscard]] inline bool IsImplemented(const IBase* base) {
    return base != nullptr && IsImplemented(base->GetAccessMode());
}
[[nodiscard]] inline bool IsAvailable(const IBase* base) {
    return base != nullptr && IsAvailable(base->GetAccessMode());
}

// What is left when both must allow an access; RO with WO leaves nothing, so NA.
[[nodiscard]] inline EAccessMode Combine(EAccessMode a, EAccessMode b) {
    if (a == NI || b == NI) {
        return NI;
    }
    if (!IsAvailable(a) || !IsAvailable(b)) {
        return NA;
    }
    if (a == RW) {
        return b;
    }
    return (b == RW || a == b) ? a : NA;
}

}  // namespace GenApi
