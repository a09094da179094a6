// The operators and functions of formulas, as tables. Pure data.
#pragma once

#include <array>
#include <string_view>

#include "genapi/formula.h"

namespace GenApi::Detail {

struct Operator {
    std::string_view symbol;
    int binding;  // tighter operators have larger numbers
    Opcode opcode;
};

// The two-character ones first, so that they are found first. `&&`, `||`, `?:` and `**` have
// rules of their own.
inline constexpr std::array<Operator, 18> operators = {{
    {"<>", 4, Opcode::notEqual},
    {"!=", 4, Opcode::notEqual},
    {"==", 4, Opcode::equal},
    {"<=", 5, Opcode::lessOrEqual},
    {">=", 5, Opcode::greaterOrEqual},
    {"<<", 6, Opcode::shiftLeft},
    {">>", 6, Opcode::shiftRight},
    {"=", 4, Opcode::equal},
    {"<", 5, Opcode::less},
    {">", 5, Opcode::greater},
    {"|", 1, Opcode::bitOr},
    {"^", 2, Opcode::bitXor},
    {"&", 3, Opcode::bitAnd},
    {"+", 7, Opcode::add},
    {"-", 7, Opcode::subtract},
    {"*", 8, Opcode::multiply},
    {"/", 8, Opcode::divide},
    {"%", 8, Opcode::remainder},
}};

struct FunctionRow {
    std::string_view name;
    Function function;
};

inline constexpr std::array<FunctionRow, 17> functions = {{
    {"SGN", Function::sgn},
    {"NEG", Function::neg},
    {"ATAN", Function::atan},
    {"COS", Function::cos},
    {"SIN", Function::sin},
    {"TAN", Function::tan},
    {"ABS", Function::abs},
    {"EXP", Function::exp},
    {"LN", Function::ln},
    {"LG", Function::lg},
    {"SQRT", Function::sqrt},
    {"TRUNC", Function::trunc},
    {"FLOOR", Function::floor},
    {"CEIL", Function::ceil},
    {"ROUND", Function::round},
    {"ASIN", Function::asin},
    {"ACOS", Function::acos},
}};

}  // namespace GenApi::Detail
