// Formulas in their compiled form: instructions for a stack of numbers, made once at load. Jumps
// keep branches that are not taken from being worked out. Immutable; any thread may read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi::Detail {

// A number as it was made: exact while it is an integer.
struct FormulaNumber {
    bool isReal = false;
    // Which of the two is there, `isReal` says.
    union {
        std::int64_t integer = 0;
        double real;
    };

    [[nodiscard]] static FormulaNumber of(std::int64_t value) {
        FormulaNumber number;
        number.integer = value;
        return number;
    }
    [[nodiscard]] static FormulaNumber of(double value) {
        FormulaNumber number;
        number.isReal = true;
        number.real = value;
        return number;
    }
    [[nodiscard]] double asReal() const { return isReal ? real : static_cast<double>(integer); }
    [[nodiscard]] bool isTrue() const { return isReal ? real != 0 : integer != 0; }
};

enum class Opcode : std::uint8_t {
    pushInteger,  // operand: the number's index
    pushReal,
    pushVariable,
    pushArgument,  // what is converted
    pushTruth,     // operand: 0 or 1
    jump,          // operand: the target
    jumpIfFalse,
    jumpIfTrue,
    toTruth,
    negate,
    invert,
    add,
    subtract,
    multiply,
    divide,
    remainder,
    power,
    shiftLeft,
    shiftRight,
    bitAnd,
    bitOr,
    bitXor,
    equal,
    notEqual,
    less,
    lessOrEqual,
    greater,
    greaterOrEqual,
    call1,  // operand: the function
    call2
};

enum class Function : std::uint8_t {
    sgn,
    neg,
    atan,
    cos,
    sin,
    tan,
    abs,
    exp,
    ln,
    lg,
    sqrt,
    trunc,
    floor,
    ceil,
    round,
    asin,
    acos
};

struct Instruction {
    Opcode opcode;
    std::uint32_t operand = 0;
};

// What a formula's element decides: integers stay integers, or everything is a double.
enum class Arithmetic : std::uint8_t { integer, real };

struct Program {
    Arithmetic arithmetic = Arithmetic::integer;
    std::vector<Instruction> code;
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
    std::uint32_t stackDepth = 0;

    [[nodiscard]] bool exists() const { return !code.empty(); }
};

}  // namespace GenApi::Detail
