// The arithmetic of formulas. Integers wrap and never leave defined behaviour; whatever has no
// result says so. Pure functions.
#pragma once

#include "genapi/formula.h"

namespace GenApi::Detail {

// Thrown where an operation has no result; the engine adds the node's name.
struct FormulaFault {
    const char* reason;
};

[[nodiscard]] FormulaNumber applyAnyBinary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a,
                                           FormulaNumber b);

// Two integers with one of the operators that nearly all formulas consist of need no call.
[[nodiscard]] inline FormulaNumber applyBinary(Opcode opcode, Arithmetic arithmetic,
                                               FormulaNumber a, FormulaNumber b) {
    if (!a.isReal && !b.isReal) {
        const auto left = static_cast<std::uint64_t>(a.integer);
        const auto right = static_cast<std::uint64_t>(b.integer);
        const auto wrapped = [](std::uint64_t value) {
            return FormulaNumber::of(static_cast<std::int64_t>(value));
        };
        switch (opcode) {
            case Opcode::add:
                return wrapped(left + right);
            case Opcode::subtract:
                return wrapped(left - right);
            case Opcode::multiply:
                return wrapped(left * right);
            case Opcode::bitAnd:
                return wrapped(left & right);
            case Opcode::bitOr:
                return wrapped(left | right);
            case Opcode::equal:
                return wrapped(left == right ? 1 : 0);
            case Opcode::notEqual:
                return wrapped(left != right ? 1 : 0);
            case Opcode::greater:
                return wrapped(a.integer > b.integer ? 1 : 0);
            default:
                break;
        }
    }
    return applyAnyBinary(opcode, arithmetic, a, b);
}
[[nodiscard]] FormulaNumber applyUnary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a);
[[nodiscard]] FormulaNumber applyFunction(Function function, Arithmetic arithmetic,
                                          FormulaNumber a);
[[nodiscard]] FormulaNumber roundToDigits(FormulaNumber value, FormulaNumber digits);

}  // namespace GenApi::Detail
