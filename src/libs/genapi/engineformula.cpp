// Nodes with formulas: reading, writing and ranges of converters, and the machine that runs the
// compiled form. Every variable is read at most once, and only when it is needed.
#include <algorithm>
#include <cmath>
#include <limits>

#include "genapi/engine.h"
#include "genapi/engineerror.h"
#include "genapi/formulamath.h"

namespace GenApi::Detail {

namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr double largest = std::numeric_limits<double>::max();

bool isConverter(Kind kind) {
    return kind == Kind::converter || kind == Kind::intConverter;
}

}  // namespace

// ---- Access.

EAccessMode Engine::formulaAccess(NodeId id, Ask ask) {
    const FormulaDetail& detail = d_->formulas[node(id).detail];
    const bool converter = isConverter(node(id).kind);
    const std::size_t mark = denialCount_;
    bool isOpen = false;
    for (std::uint32_t i = 0; i < detail.variables.count; ++i) {
        const NodeId variable = d_->variables[detail.variables.begin + i].node;
        const EAccessMode mode = coreAccess(variable, Ask::reading);
        if (IsReadable(mode)) {
            continue;
        }
        if (converter || mode == WO) {
            return deny(id, Denial::link, variable, NA);
        }
        isOpen = true;
    }
    if (!isOpen) {
        variablesSeen_[node(id).detail] = moment_;
    }
    if (converter) {
        const EAccessMode target = coreAccess(node(id).value, ask);
        return detail.write.exists() ? target : Combine(target, RO);
    }
    if (isOpen) {
        // Whether a variable that is not there matters, only the formula can tell.
        try {
            (void)formulaValue(id, CacheUse::allowed);
        } catch (const GenICam::GenericException&) {
            if (mustTravel_) {
                throw;
            }
            return NA;
        }
        denialCount_ = mark;
    }
    return RO;
}

// ---- Values.

FormulaNumber Engine::targetValue(NodeId id, CacheUse use) {
    return valueTypeOf(node(id).kind) == ValueType::real ? FormulaNumber::of(real(id, use))
                                                         : FormulaNumber::of(integer(id, use));
}

FormulaNumber Engine::formulaValue(NodeId id, CacheUse use) {
    const FormulaDetail& detail = d_->formulas[node(id).detail];
    const FormulaNumber argument =
        isConverter(node(id).kind) ? targetValue(node(id).value, use) : FormulaNumber{};
    return evaluate(id, detail.read, argument, use);
}

FormulaNumber Engine::converted(NodeId id, FormulaNumber value) {
    return evaluate(id, d_->formulas[node(id).detail].write, value);
}

std::int64_t Engine::integerResult(NodeId id, FormulaNumber value) const {
    if (!value.isReal) {
        return value.integer;
    }
    if (!(value.real >= -0x1p63 && value.real < 0x1p63)) {
        GENAPI_THROW(OutOfRangeException,
                     says(id,
                          "can not be evaluated: the result of its formula is no 64-bit "
                          "integer."));
    }
    return static_cast<std::int64_t>(value.real);
}

FormulaNumber Engine::variableValue(const FormulaVariable& variable, Check check, CacheUse use) {
    using Member = FormulaVariable::Member;
    const NodeId id = variable.node;
    const bool isReal = valueTypeOf(node(id).kind) == ValueType::real;
    switch (variable.member) {
        case Member::value:
            break;
        case Member::entry:
            return FormulaNumber::of(d_->entries[node(variable.entry).detail].value);
        case Member::minimum:
            return isReal ? FormulaNumber::of(realMinimum(id)) : FormulaNumber::of(minimum(id));
        case Member::maximum:
            return isReal ? FormulaNumber::of(realMaximum(id)) : FormulaNumber::of(maximum(id));
        case Member::increment:
            return isReal ? FormulaNumber::of(realIncrement(id)) : FormulaNumber::of(increment(id));
    }
    if (check == Check::access) {
        requireLink(id);
    }
    return isReal ? FormulaNumber::of(real(id, use)) : FormulaNumber::of(integer(id, use));
}

// ---- The machine.

FormulaNumber Engine::evaluateOrFault(NodeId id, const Program& program, FormulaNumber argument,
                                      CacheUse use) {
    const std::size_t variables = d_->formulas[node(id).detail].variables.count;
    const std::size_t frame = formulaTop_;
    formulaTop_ = frame + variables + program.stackDepth + 1;
    // Grows to what the deepest nest of formulas needs, and then no more.
    if (formulaStack_.size() < formulaTop_) {
        formulaStack_.resize(formulaTop_);
        formulaKnown_.resize(formulaTop_);
    }
    for (std::size_t i = 0; i < variables; ++i) {
        formulaKnown_[frame + i] = false;
    }
    struct Release {
        std::size_t& top;
        std::size_t frame;
        ~Release() { top = frame; }
    };
    const Release release{formulaTop_, frame};
    return run(id, program, argument, frame, use);
}

FormulaNumber Engine::evaluate(NodeId id, const Program& program, FormulaNumber argument,
                               CacheUse use) {
    try {
        return evaluateOrFault(id, program, argument, use);
    } catch (const FormulaFault& fault) {
        GENAPI_THROW(RuntimeException, says(id, std::string("can not be evaluated: ") +
                                                    fault.reason + " in its formula."));
    }
}

// An end of a range that the formula is not defined for, as zero under a fraction, is none.
std::optional<FormulaNumber> Engine::evaluateEnd(NodeId id, FormulaNumber end) {
    try {
        return evaluateOrFault(id, d_->formulas[node(id).detail].read, end, CacheUse::allowed);
    } catch (const FormulaFault&) {
        return std::nullopt;
    }
}

FormulaNumber Engine::run(NodeId id, const Program& program, FormulaNumber argument,
                          std::size_t frame, CacheUse use) {
    const FormulaVariable* const variables =
        d_->variables.data() + d_->formulas[node(id).detail].variables.begin;
    const std::size_t depth = frame + d_->formulas[node(id).detail].variables.count;
    const bool isReal = program.arithmetic == Arithmetic::real;
    // Reading a variable may run another formula and let the stack grow elsewhere.
    FormulaNumber* stack = formulaStack_.data();
    FormulaNumber* top = stack + depth;
    const auto push = [&](FormulaNumber value) {
        *top++ = isReal && !value.isReal ? FormulaNumber::of(value.asReal()) : value;
    };
    const Instruction* const code = program.code.data();
    const std::size_t count = program.code.size();
    for (std::size_t at = 0; at < count; ++at) {
        const Instruction step = code[at];
        switch (step.opcode) {
            case Opcode::pushInteger:
                push(FormulaNumber::of(program.integers[step.operand]));
                break;
            case Opcode::pushReal:
                push(FormulaNumber::of(program.reals[step.operand]));
                break;
            case Opcode::pushArgument:
                push(argument);
                break;
            case Opcode::pushTruth:
                push(FormulaNumber::of(std::int64_t{step.operand}));
                break;
            case Opcode::pushVariable:
                if (formulaKnown_[frame + step.operand] == 0) {
                    const std::ptrdiff_t height = top - stack;
                    const FormulaNumber value = variableValue(
                        variables[step.operand],
                        variablesSeen_[node(id).detail] == moment_ ? Check::none : Check::access,
                        use);
                    stack = formulaStack_.data();
                    top = stack + height;
                    stack[frame + step.operand] = value;
                    formulaKnown_[frame + step.operand] = 1;
                }
                push(stack[frame + step.operand]);
                break;
            case Opcode::jump:
                at = step.operand - std::size_t{1};
                break;
            case Opcode::jumpIfFalse:
                at = (--top)->isTrue() ? at : step.operand - std::size_t{1};
                break;
            case Opcode::jumpIfTrue:
                at = (--top)->isTrue() ? step.operand - std::size_t{1} : at;
                break;
            case Opcode::toTruth:
            case Opcode::negate:
            case Opcode::invert:
                --top;
                push(applyUnary(step.opcode, program.arithmetic, *top));
                break;
            case Opcode::call1:
                --top;
                push(applyFunction(static_cast<Function>(step.operand), program.arithmetic, *top));
                break;
            case Opcode::call2:
                top -= 2;
                push(roundToDigits(top[0], top[1]));
                break;
            default:
                top -= 2;
                push(applyBinary(step.opcode, program.arithmetic, top[0], top[1]));
        }
    }
    const FormulaNumber result = top[-1];
    if (result.isReal && !std::isfinite(result.real)) {
        throw FormulaFault{"a result that is not finite"};
    }
    return result;
}

// ---- Writing through a converter.

void Engine::checkConverted(NodeId id, FormulaNumber value, Verify verify) {
    const NodeId target = node(id).value;
    const FormulaNumber result = converted(id, value);
    conversions_.push_back({id, result});
    if (valueTypeOf(node(target).kind) == ValueType::real) {
        checkReal(target, result.asReal(), verify);
    } else {
        checkInteger(target, convertedInteger(id, result), verify);
    }
}

void Engine::storeConverted(NodeId id, FormulaNumber value) {
    const NodeId target = node(id).value;
    // Its formula may read what is written on the way, so the result of the check counts.
    const auto checked =
        std::find_if(conversions_.rbegin(), conversions_.rend(),
                     [&](const Conversion& entry) { return entry.converter == id; });
    const FormulaNumber result =
        checked != conversions_.rend() ? checked->result : converted(id, value);
    if (valueTypeOf(node(target).kind) == ValueType::real) {
        storeReal(target, result.asReal());
    } else {
        storeInteger(target, convertedInteger(id, result));
    }
}

// Formulas of integers cut toward zero, those of floats round to the nearest.
std::int64_t Engine::convertedInteger(NodeId id, FormulaNumber result) const {
    if (node(id).kind == Kind::intConverter || !result.isReal) {
        return integerResult(id, result);
    }
    return toInteger(id, result.real);
}

// ---- Ranges.

Engine::ConvertedRange Engine::convertedRange(NodeId id) {
    const FormulaDetail& detail = d_->formulas[node(id).detail];
    const bool isInteger = node(id).kind == Kind::intConverter;
    ConvertedRange range;
    range.minimum = isInteger ? FormulaNumber::of(lowest) : FormulaNumber::of(-largest);
    range.maximum = isInteger ? FormulaNumber::of(highest) : FormulaNumber::of(largest);
    if (!isConverter(node(id).kind) || detail.slope == Slope::varying) {
        return range;
    }
    const NodeId target = node(id).value;
    const bool isRealTarget = valueTypeOf(node(target).kind) == ValueType::real;
    const FormulaNumber low =
        isRealTarget ? FormulaNumber::of(realMinimum(target)) : FormulaNumber::of(minimum(target));
    const FormulaNumber high =
        isRealTarget ? FormulaNumber::of(realMaximum(target)) : FormulaNumber::of(maximum(target));
    // An end that the target does not have is not worth a formula.
    const bool isLow = isRealTarget ? low.real > -largest : low.integer != lowest;
    const bool isHigh = isRealTarget ? high.real < largest : high.integer != highest;
    const auto convertedLow = isLow ? evaluateEnd(id, low) : std::nullopt;
    const auto convertedHigh = isHigh ? evaluateEnd(id, high) : std::nullopt;
    const bool hasLow = convertedLow.has_value();
    const bool hasHigh = convertedHigh.has_value();
    const FormulaNumber fromLow = convertedLow.value_or(FormulaNumber{});
    const FormulaNumber fromHigh = convertedHigh.value_or(FormulaNumber{});
    const bool falls = detail.slope == Slope::decreasing ||
                       (detail.slope == Slope::automatic &&
                        isFalling(id, hasLow, fromLow, hasHigh, fromHigh, low, high));
    if (hasLow) {
        (falls ? range.maximum : range.minimum) = fromLow;
    }
    if (hasHigh) {
        (falls ? range.minimum : range.maximum) = fromHigh;
    }
    return range;
}

// With both ends the two tell; with one a second point beside it does.
bool Engine::isFalling(NodeId id, bool hasLow, FormulaNumber fromLow, bool hasHigh,
                       FormulaNumber fromHigh, FormulaNumber low, FormulaNumber high) {
    if (!hasLow && !hasHigh) {
        return false;
    }
    const Program& program = d_->formulas[node(id).detail].read;
    const auto beside = [](FormulaNumber value, int step) {
        return value.isReal
                   ? FormulaNumber::of(value.real + step * std::max(1.0, std::fabs(value.real)))
                   : FormulaNumber::of(value.integer + step);
    };
    if (!hasHigh) {
        fromHigh = evaluate(id, program, beside(low, 1));
    } else if (!hasLow) {
        fromLow = evaluate(id, program, beside(high, -1));
    }
    return fromLow.asReal() > fromHigh.asReal();
}

FormulaNumber Engine::convertedIncrement(NodeId id) {
    const FormulaDetail& detail = d_->formulas[node(id).detail];
    const bool isInteger = valueTypeOf(node(id).kind) == ValueType::integer;
    const FormulaNumber none =
        isInteger ? FormulaNumber::of(std::int64_t{1}) : FormulaNumber::of(0.0);
    if (!isConverter(node(id).kind) || !detail.isLinear) {
        return none;
    }
    const NodeId target = node(id).value;
    const double step = realIncrement(target);
    if (step == 0) {
        return none;
    }
    const double from = evaluate(id, detail.read, FormulaNumber::of(std::int64_t{0})).asReal();
    const bool isRealTarget = valueTypeOf(node(target).kind) == ValueType::real;
    const FormulaNumber next =
        isRealTarget ? FormulaNumber::of(step) : FormulaNumber::of(static_cast<std::int64_t>(step));
    const double distance = std::fabs(evaluate(id, detail.read, next).asReal() - from);
    return isInteger ? FormulaNumber::of(std::max<std::int64_t>(toInteger(id, distance), 1))
                     : FormulaNumber::of(distance);
}

}  // namespace GenApi::Detail
