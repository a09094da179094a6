#include "genapi/formulamath.h"

#include <cmath>
#include <limits>

namespace GenApi::Detail {

namespace {

std::uint64_t bitsOf(std::int64_t value) {
    return static_cast<std::uint64_t>(value);
}
std::int64_t wrap(std::uint64_t value) {
    return static_cast<std::int64_t>(value);
}

// For the operators on bits, which doubles take part in as whole numbers.
std::int64_t whole(FormulaNumber value) {
    if (!value.isReal) {
        return value.integer;
    }
    if (!(value.real >= -0x1p63 && value.real < 0x1p63)) {
        throw FormulaFault{"a number is too large for an operation on bits"};
    }
    return static_cast<std::int64_t>(value.real);
}

FormulaNumber truth(bool value) {
    return FormulaNumber::of(std::int64_t{value ? 1 : 0});
}

std::int64_t integerPower(std::int64_t base, std::int64_t exponent) {
    if (exponent < 0) {
        if (base == 1) {
            return 1;
        }
        return base == -1 ? (exponent % 2 == 0 ? 1 : -1) : 0;
    }
    std::uint64_t result = 1;
    std::uint64_t square = bitsOf(base);
    for (; exponent > 0; exponent >>= 1) {
        if ((exponent & 1) != 0) {
            result *= square;
        }
        square *= square;
    }
    return wrap(result);
}

std::int64_t integerDivide(std::int64_t a, std::int64_t b, bool remainder) {
    if (b == 0) {
        throw FormulaFault{"a division by zero"};
    }
    if (b == -1) {
        // The one quotient that does not fit wraps.
        return remainder ? 0 : wrap(0 - bitsOf(a));
    }
    return remainder ? a % b : a / b;
}

std::int64_t shift(std::int64_t value, std::int64_t count, bool left) {
    if (count < 0 || count > 63) {
        throw FormulaFault{"a shift by a count outside of 0 to 63"};
    }
    return left ? wrap(bitsOf(value) << count) : value >> count;
}

template <typename Value>
bool compare(Opcode opcode, Value a, Value b) {
    switch (opcode) {
        case Opcode::equal:
            return a == b;
        case Opcode::notEqual:
            return a != b;
        case Opcode::less:
            return a < b;
        case Opcode::lessOrEqual:
            return a <= b;
        case Opcode::greater:
            return a > b;
        default:
            return a >= b;
    }
}

FormulaNumber integerBinary(Opcode opcode, std::int64_t a, std::int64_t b) {
    switch (opcode) {
        case Opcode::add:
            return FormulaNumber::of(wrap(bitsOf(a) + bitsOf(b)));
        case Opcode::subtract:
            return FormulaNumber::of(wrap(bitsOf(a) - bitsOf(b)));
        case Opcode::multiply:
            return FormulaNumber::of(wrap(bitsOf(a) * bitsOf(b)));
        case Opcode::divide:
            return FormulaNumber::of(integerDivide(a, b, false));
        case Opcode::remainder:
            return FormulaNumber::of(integerDivide(a, b, true));
        case Opcode::power:
            return FormulaNumber::of(integerPower(a, b));
        default:
            return truth(compare(opcode, a, b));
    }
}

double realQuotient(double a, double b, bool remainder) {
    if (b == 0) {
        throw FormulaFault{"a division by zero"};
    }
    return remainder ? std::fmod(a, b) : a / b;
}

FormulaNumber realBinary(Opcode opcode, double a, double b) {
    switch (opcode) {
        case Opcode::add:
            return FormulaNumber::of(a + b);
        case Opcode::subtract:
            return FormulaNumber::of(a - b);
        case Opcode::multiply:
            return FormulaNumber::of(a * b);
        case Opcode::divide:
            return FormulaNumber::of(realQuotient(a, b, false));
        case Opcode::remainder:
            return FormulaNumber::of(realQuotient(a, b, true));
        case Opcode::power:
            return FormulaNumber::of(std::pow(a, b));
        default:
            return truth(compare(opcode, a, b));
    }
}

double realFunction(Function function, double a) {
    switch (function) {
        case Function::atan:
            return std::atan(a);
        case Function::cos:
            return std::cos(a);
        case Function::sin:
            return std::sin(a);
        case Function::tan:
            return std::tan(a);
        case Function::abs:
            return std::fabs(a);
        case Function::exp:
            return std::exp(a);
        case Function::ln:
            return std::log(a);
        case Function::lg:
            return std::log10(a);
        case Function::sqrt:
            return std::sqrt(a);
        case Function::trunc:
            return std::trunc(a);
        case Function::floor:
            return std::floor(a);
        case Function::ceil:
            return std::ceil(a);
        case Function::round:
            return std::round(a);
        case Function::asin:
            return std::asin(a);
        case Function::acos:
            return std::acos(a);
        case Function::sgn:
            return a > 0 ? 1 : (a < 0 ? -1 : 0);
        case Function::neg:
            return -a;
    }
    return a;
}

bool staysInteger(Function function) {
    switch (function) {
        case Function::sgn:
        case Function::neg:
        case Function::abs:
        case Function::trunc:
        case Function::floor:
        case Function::ceil:
        case Function::round:
            return true;
        default:
            return false;
    }
}

std::int64_t integerFunction(Function function, std::int64_t a) {
    switch (function) {
        case Function::sgn:
            return a > 0 ? 1 : (a < 0 ? -1 : 0);
        case Function::neg:
            return wrap(0 - bitsOf(a));
        case Function::abs:
            return a < 0 ? wrap(0 - bitsOf(a)) : a;
        default:
            return a;
    }
}

}  // namespace

FormulaNumber applyAnyBinary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a,
                             FormulaNumber b) {
    switch (opcode) {
        case Opcode::bitAnd:
            return FormulaNumber::of(whole(a) & whole(b));
        case Opcode::bitOr:
            return FormulaNumber::of(whole(a) | whole(b));
        case Opcode::bitXor:
            return FormulaNumber::of(whole(a) ^ whole(b));
        case Opcode::shiftLeft:
            return FormulaNumber::of(shift(whole(a), whole(b), true));
        case Opcode::shiftRight:
            return FormulaNumber::of(shift(whole(a), whole(b), false));
        default:
            break;
    }
    const bool isReal = arithmetic == Arithmetic::real || a.isReal || b.isReal;
    return isReal ? realBinary(opcode, a.asReal(), b.asReal())
                  : integerBinary(opcode, a.integer, b.integer);
}

FormulaNumber applyUnary(Opcode opcode, Arithmetic arithmetic, FormulaNumber a) {
    switch (opcode) {
        case Opcode::invert:
            return FormulaNumber::of(~whole(a));
        case Opcode::toTruth:
            return truth(a.isTrue());
        default:
            return applyFunction(Function::neg, arithmetic, a);
    }
}

FormulaNumber applyFunction(Function function, Arithmetic arithmetic, FormulaNumber a) {
    if (arithmetic == Arithmetic::integer && !a.isReal && staysInteger(function)) {
        return FormulaNumber::of(integerFunction(function, a.integer));
    }
    const double result = realFunction(function, a.asReal());
    if (std::isnan(result) && !std::isnan(a.asReal())) {
        throw FormulaFault{"a function of a number that it is not defined for"};
    }
    return FormulaNumber::of(result);
}

FormulaNumber roundToDigits(FormulaNumber value, FormulaNumber digits) {
    const std::int64_t count = whole(digits);
    constexpr std::int64_t most = 300;
    if (count < -most || count > most) {
        throw FormulaFault{"a rounding to more digits than a number has"};
    }
    const double scale = std::pow(10.0, static_cast<double>(count));
    const double scaled = value.asReal() * scale;
    // Beyond all digits there is nothing to round.
    return std::isfinite(scaled) ? FormulaNumber::of(std::round(scaled) / scale)
                                 : FormulaNumber::of(value.asReal());
}

}  // namespace GenApi::Detail
