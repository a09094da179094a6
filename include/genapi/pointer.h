// Smart pointers that ask a node for one of its interfaces. They own nothing: nodes live as long as
// their map. A node without the interface, and a null node, give an invalid pointer.
#pragma once

#include "genapi/iboolean.h"
#include "genapi/icategory.h"
#include "genapi/icommand.h"
#include "genapi/ienumeration.h"
#include "genapi/ifloat.h"
#include "genapi/iinteger.h"
#include "genapi/inode.h"
#include "genapi/iport.h"
#include "genapi/iportconstruct.h"
#include "genapi/iregister.h"
#include "genapi/iselector.h"
#include "genapi/istring.h"

namespace GenApi {

namespace Detail {
// Raises LogicalErrorException "NULL pointer dereferenced".
[[noreturn]] GENAPI_API void ThrowNullPointer();
}  // namespace Detail

template <typename Interface>
class CPointer {
public:
    CPointer() noexcept = default;
    CPointer(IBase* base) : pointer_(dynamic_cast<Interface*>(base)) {}

    CPointer& operator=(IBase* base) {
        pointer_ = dynamic_cast<Interface*>(base);
        return *this;
    }
    void Release() noexcept { pointer_ = nullptr; }
    [[nodiscard]] bool IsValid() const noexcept { return pointer_ != nullptr; }
    [[nodiscard]] explicit operator bool() const noexcept { return pointer_ != nullptr; }
    // Null if invalid; for handing on.
    operator Interface*() const noexcept { return pointer_; }

    [[nodiscard]] Interface* operator->() const {
        if (pointer_ == nullptr) {
            Detail::ThrowNullPointer();
        }
        return pointer_;
    }
    [[nodiscard]] Interface& operator*() const { return *operator->(); }

private:
    Interface* pointer_ = nullptr;
};

using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CIntegerPtr = CPointer<IInteger>;
using CFloatPtr = CPointer<IFloat>;
using CBooleanPtr = CPointer<IBoolean>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CCommandPtr = CPointer<ICommand>;
using CStringPtr = CPointer<IString>;
using CRegisterPtr = CPointer<IRegister>;
using CCategoryPtr = CPointer<ICategory>;
using CSelectorPtr = CPointer<ISelector>;
using CPortPtr = CPointer<IPort>;
using CPortConstructPtr = CPointer<IPortConstruct>;

}  // namespace GenApi
