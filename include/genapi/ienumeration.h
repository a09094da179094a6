// IEnumeration and IEnumEntry: a choice among named values. Errors and threads as for IValue.
#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

// One choice, a node of its own named EnumEntry_<Enumeration>_<Entry>. Constant but for its access
// mode, which is RO while it can be chosen.
class GENAPI_API IEnumEntry : virtual public IValue {
public:
    [[nodiscard]] virtual std::int64_t GetValue() = 0;
    // The name that FromString of the enumeration takes.
    [[nodiscard]] virtual gcstring GetSymbolic() const = 0;
    // The number for float links; the integer where the description gives none.
    [[nodiscard]] virtual double GetNumericValue() = 0;
    // Whether the device leaves this value on its own.
    [[nodiscard]] virtual bool IsSelfClearing() = 0;
};

// Its text is the symbolic name of the current entry. An entry must be implemented and available to
// be written: an unknown name is an InvalidArgumentException, an unknown value an
// OutOfRangeException, an entry that is not available an AccessException. Reading a value that no
// entry has fails in the text view only.
class GENAPI_API IEnumeration : virtual public IValue {
public:
    // Entries in the description's order; those that are not implemented are left out.
    virtual void GetEntries(NodeList_t& Entries) = 0;
    virtual void GetSymbolics(StringList_t& Symbolics) = 0;
    virtual void SetIntValue(std::int64_t Value, bool Verify = true) = 0;
    [[nodiscard]] virtual std::int64_t GetIntValue(bool Verify = false,
                                                   bool IgnoreCache = false) = 0;
    // Null if there is no such entry.
    [[nodiscard]] virtual IEnumEntry* GetEntryByName(const gcstring& Symbolic) = 0;
    [[nodiscard]] virtual IEnumEntry* GetEntry(std::int64_t IntValue) = 0;
    // Null if no entry has the current value.
    [[nodiscard]] virtual IEnumEntry* GetCurrentEntry(bool Verify = false,
                                                      bool IgnoreCache = false) = 0;

    IEnumeration& operator=(const gcstring& Symbolic) {
        FromString(Symbolic);
        return *this;
    }
    gcstring operator*() { return ToString(); }

protected:
    IEnumeration() = default;
    IEnumeration(const IEnumeration&) = default;
    IEnumeration& operator=(const IEnumeration&) = default;
};

}  // namespace GenApi
