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

Engine::ImposedRange& Engine::imposed(NodeId id) {
    return imposedRanges_.try_emplace(id, ImposedRange{lowest, highest, -largest, largest})
        .first->second;
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
        case Kind::floating:
        case Kind::floatReg:
            result = clampToInteger(realMinimum(id));
            break;
        default:
            break;
    }
    return imposedRanges_.empty() ? result : std::max(result, imposed(id).minimum);
}

std::int64_t Engine::maximum(NodeId id) {
    const Visit visit(*this, id, busyMaximum);
    std::int64_t result = highest;
    switch (node(id).kind) {
        case Kind::integer: {
            const NumberDetail& detail = d_->numbers[node(id).detail];
            if (detail.maximum.given) {
                result = integerOf(detail.maximum);
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
        case Kind::floating:
        case Kind::floatReg:
            result = clampToInteger(realMaximum(id));
            break;
        default:
            break;
    }
    return imposedRanges_.empty() ? result : std::min(result, imposed(id).maximum);
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

// A register of w bits holds 2^w values; eight unsigned bytes are cut to what an int64 can be.
std::int64_t Engine::registerMinimum(NodeId id) {
    const int width = fieldOf(id, length(id)).width;
    return registerOf(id).isSigned ? lowest >> (64 - width) : 0;
}

std::int64_t Engine::registerMaximum(NodeId id) {
    const int width = fieldOf(id, length(id)).width;
    const int magnitude = registerOf(id).isSigned ? width - 1 : std::min(width, 63);
    return static_cast<std::int64_t>((std::uint64_t{1} << magnitude) - 1);
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
        } else if (const Number source = sourceOf(id); source.link != noNode) {
            result = realMinimum(source.link);
        }
    } else if (node(id).kind == Kind::converter) {
        result = convertedRange(id).minimum.asReal();
    } else if (node(id).kind == Kind::floatReg && length(id) == 4) {
        result = -static_cast<double>(std::numeric_limits<float>::max());
    }
    return imposedRanges_.empty() ? result : std::max(result, imposed(id).realMinimum);
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
        } else if (const Number source = sourceOf(id); source.link != noNode) {
            result = realMaximum(source.link);
        }
    } else if (node(id).kind == Kind::converter) {
        result = convertedRange(id).maximum.asReal();
    } else if (node(id).kind == Kind::floatReg && length(id) == 4) {
        result = static_cast<double>(std::numeric_limits<float>::max());
    }
    return imposedRanges_.empty() ? result : std::min(result, imposed(id).realMaximum);
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

std::int64_t Engine::maximumLength(NodeId id) {
    for (int depth = 0; node(id).value != noNode && depth < maximumDepth; ++depth) {
        id = node(id).value;
    }
    return node(id).kind == Kind::stringReg ? length(id) : highest;
}

}  // namespace GenApi::Detail
