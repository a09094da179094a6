// Ranges and increments, as the description or the device tells them now.
#include <algorithm>
#include <limits>

#include "genapi/engine.h"
#include "genapi/engineerror.h"

namespace GenApi::Detail {

namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr double largest = std::numeric_limits<double>::max();

// The same bound in whole numbers; bounds beyond their reach are no bounds.
std::int64_t clampToInteger(double value) {
    if (value >= 0x1p63) {
        return highest;
    }
    return value < -0x1p63 ? lowest : static_cast<std::int64_t>(value);
}

}  // namespace

ImposedRange& Engine::imposed(NodeId id) {
    return imposedRanges_.try_emplace(id, ImposedRange{lowest, highest, -largest, largest})
        .first->second;
}

const ImposedRange* Engine::imposedOn(NodeId id) const {
    if (imposedRanges_.empty()) {
        return nullptr;
    }
    const auto place = imposedRanges_.find(id);
    return place == imposedRanges_.end() ? nullptr : &place->second;
}

void Engine::imposeMinimum(NodeId id, std::int64_t value) {
    imposed(id).minimum = std::max(imposed(id).minimum, value);
    touch(id);
}
void Engine::imposeMaximum(NodeId id, std::int64_t value) {
    imposed(id).maximum = std::min(imposed(id).maximum, value);
    touch(id);
}
void Engine::imposeMinimum(NodeId id, double value) {
    imposed(id).realMinimum = std::max(imposed(id).realMinimum, value);
    touch(id);
}
void Engine::imposeMaximum(NodeId id, double value) {
    imposed(id).realMaximum = std::min(imposed(id).realMaximum, value);
    touch(id);
}

std::int64_t Engine::minimum(NodeId id) {
    const Visit visit(*this, id, busyMinimum);
    std::int64_t result = lowest;
    switch (node(id).kind) {
        case Kind::integer: {
            const NumberDetail& detail = d_->numbers[node(id).detail];
            if (detail.minimum.given) {
                result = integerOf(detail.minimum);
            } else if (detail.validValues.count != 0) {
                result = d_->validValues[detail.validValues.begin].integer;
            } else if (const Number source = sourceOf(id); source.link != noNode) {
                result = minimum(source.link);
            }
            for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
                for (const NodeId copy : d_->list(list)) {
                    result = std::max(result, minimum(copy));
                }
            }
            break;
        }
        case Kind::boolean:
            result = 0;
            break;
        case Kind::intReg:
        case Kind::maskedIntReg:
            result = registerMinimum(id);
            break;
        case Kind::intConverter:
            result = integerResult(id, convertedRange(id).minimum);
            break;
        case Kind::floating:
        case Kind::floatReg:
        case Kind::swissKnife:
        case Kind::converter:
            result = clampToInteger(realMinimum(id));
            break;
        default:
            break;
    }
    const ImposedRange* narrowed = imposedOn(id);
    return narrowed == nullptr ? result : std::max(result, narrowed->minimum);
}

std::int64_t Engine::maximum(NodeId id) {
    const Visit visit(*this, id, busyMaximum);
    std::int64_t result = highest;
    switch (node(id).kind) {
        case Kind::integer: {
            const NumberDetail& detail = d_->numbers[node(id).detail];
            if (detail.maximum.given) {
                result = integerOf(detail.maximum);
            } else if (detail.validValues.count != 0) {
                result = d_->validValues[detail.validValues.begin + detail.validValues.count - 1]
                             .integer;
            } else if (const Number source = sourceOf(id); source.link != noNode) {
                result = maximum(source.link);
            }
            for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
                for (const NodeId copy : d_->list(list)) {
                    result = std::min(result, maximum(copy));
                }
            }
            break;
        }
        case Kind::boolean:
            result = 1;
            break;
        case Kind::intReg:
        case Kind::maskedIntReg:
            result = registerMaximum(id);
            break;
        case Kind::intConverter:
            result = integerResult(id, convertedRange(id).maximum);
            break;
        case Kind::floating:
        case Kind::floatReg:
        case Kind::swissKnife:
        case Kind::converter:
            result = clampToInteger(realMaximum(id));
            break;
        default:
            break;
    }
    const ImposedRange* narrowed = imposedOn(id);
    return narrowed == nullptr ? result : std::min(result, narrowed->maximum);
}

std::int64_t Engine::increment(NodeId id) {
    if (node(id).kind != Kind::integer && node(id).kind != Kind::intConverter) {
        return 1;
    }
    const Visit visit(*this, id, busyIncrement);
    if (node(id).kind == Kind::intConverter) {
        return convertedIncrement(id).integer;
    }
    const NumberDetail& detail = d_->numbers[node(id).detail];
    if (detail.increment.given) {
        return integerOf(detail.increment);
    }
    const Number source = sourceOf(id);
    return source.link != noNode ? increment(source.link) : 1;
}

std::int64_t Engine::registerMinimum(NodeId id) {
    const RegisterDetail& detail = registerOf(id);
    return detail.width != 0 ? detail.minimum : minimumOf(detail, fieldOf(id, length(id)).width);
}

std::int64_t Engine::registerMaximum(NodeId id) {
    const RegisterDetail& detail = registerOf(id);
    return detail.width != 0 ? detail.maximum : maximumOf(detail, fieldOf(id, length(id)).width);
}

double Engine::realMinimum(NodeId id) {
    if (valueTypeOf(node(id).kind) == ValueType::integer) {
        return static_cast<double>(minimum(id));
    }
    const Visit visit(*this, id, busyMinimum);
    double result = -largest;
    if (node(id).kind == Kind::floating) {
        const NumberDetail& detail = d_->numbers[node(id).detail];
        if (detail.minimum.given) {
            result = realOf(detail.minimum);
        } else if (detail.validValues.count != 0) {
            result = d_->validValues[detail.validValues.begin].real;
        } else if (const Number source = sourceOf(id); source.link != noNode) {
            result = realMinimum(source.link);
        }
        for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
            for (const NodeId copy : d_->list(list)) {
                result = std::max(result, realMinimum(copy));
            }
        }
    } else if (node(id).kind == Kind::converter) {
        result = convertedRange(id).minimum.asReal();
    } else if (node(id).kind == Kind::floatReg && length(id) == 4) {
        result = -static_cast<double>(std::numeric_limits<float>::max());
    }
    const ImposedRange* narrowed = imposedOn(id);
    return narrowed == nullptr ? result : std::max(result, narrowed->realMinimum);
}

double Engine::realMaximum(NodeId id) {
    if (valueTypeOf(node(id).kind) == ValueType::integer) {
        return static_cast<double>(maximum(id));
    }
    const Visit visit(*this, id, busyMaximum);
    double result = largest;
    if (node(id).kind == Kind::floating) {
        const NumberDetail& detail = d_->numbers[node(id).detail];
        if (detail.maximum.given) {
            result = realOf(detail.maximum);
        } else if (detail.validValues.count != 0) {
            result = d_->validValues[detail.validValues.begin + detail.validValues.count - 1].real;
        } else if (const Number source = sourceOf(id); source.link != noNode) {
            result = realMaximum(source.link);
        }
        for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
            for (const NodeId copy : d_->list(list)) {
                result = std::min(result, realMaximum(copy));
            }
        }
    } else if (node(id).kind == Kind::converter) {
        result = convertedRange(id).maximum.asReal();
    } else if (node(id).kind == Kind::floatReg && length(id) == 4) {
        result = static_cast<double>(std::numeric_limits<float>::max());
    }
    const ImposedRange* narrowed = imposedOn(id);
    return narrowed == nullptr ? result : std::min(result, narrowed->realMaximum);
}

double Engine::realIncrement(NodeId id) {
    if (valueTypeOf(node(id).kind) == ValueType::integer) {
        return static_cast<double>(increment(id));
    }
    if (node(id).kind != Kind::floating && node(id).kind != Kind::converter) {
        return 0;
    }
    const Visit visit(*this, id, busyIncrement);
    if (node(id).kind == Kind::converter) {
        return convertedIncrement(id).real;
    }
    const NumberDetail& detail = d_->numbers[node(id).detail];
    if (detail.increment.given) {
        return realOf(detail.increment);
    }
    const Number source = sourceOf(id);
    return source.link != noNode ? realIncrement(source.link) : 0;
}

// As the node has them, or its target, through converters on the way.
std::vector<FormulaNumber> Engine::validValues(NodeId id) {
    const Visit visit(*this, id, busyIncrement);
    const Node& self = node(id);
    std::vector<FormulaNumber> values;
    if (self.kind == Kind::integer || self.kind == Kind::floating) {
        const Slice own = d_->numbers[self.detail].validValues;
        for (std::uint32_t i = 0; i < own.count; ++i) {
            const Number& value = d_->validValues[own.begin + i];
            values.push_back(self.kind == Kind::integer ? FormulaNumber::of(value.integer)
                                                        : FormulaNumber::of(value.real));
        }
        if (values.empty()) {
            const Number source = sourceOf(id);
            return source.link == noNode ? values : validValues(source.link);
        }
    } else if (self.kind == Kind::intConverter || self.kind == Kind::converter) {
        values = validValues(self.value);
        for (FormulaNumber& value : values) {
            value = evaluate(id, d_->formulas[self.detail].read, value);
        }
        std::sort(values.begin(), values.end(), [](FormulaNumber a, FormulaNumber b) {
            return a.isReal || b.isReal ? a.asReal() < b.asReal() : a.integer < b.integer;
        });
    }
    return values;
}

std::vector<std::int64_t> Engine::validIntegers(NodeId id) {
    std::vector<std::int64_t> result;
    for (const FormulaNumber value : validValues(id)) {
        result.push_back(integerResult(id, value));
    }
    return result;
}

std::vector<double> Engine::validReals(NodeId id) {
    std::vector<double> result;
    for (const FormulaNumber value : validValues(id)) {
        result.push_back(value.asReal());
    }
    return result;
}

std::int64_t Engine::maximumLength(NodeId id) {
    for (int depth = 0; node(id).value != noNode && depth < maximumDepth; ++depth) {
        id = node(id).value;
    }
    return node(id).kind == Kind::stringReg ? length(id) : highest;
}

}  // namespace GenApi::Detail
