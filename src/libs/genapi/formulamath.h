// The arithmetic of formulas. Integers wrap and never leave defined behaviour; whatever has no
// result says so. Pure functions.
#pragma once

#include "genapi/formula.h"

namespace GenApi::Detail {

// Thrown where an operation has no result; the engine adds the node's name.
struct FormulaFault {
    const char* reason;
};

[[nodiscard]] FormulaNumber applyBinary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a,
                                        FormulaNumber b);
[[nodiscard]] FormulaNumber applyUnary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a);
[[nodiscard]] FormulaNumber applyFunction(Function function, Arithmetic arithmetic,
                                          FormulaNumber a);
[[nodiscard]] FormulaNumber roundToDigits(FormulaNumber value, FormulaNumber digits);

}  // namespace GenApi::Detail
