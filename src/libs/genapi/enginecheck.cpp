// The checks before a write, down the whole chain of links: a refused value has written nothing.
#include <algorithm>
#include <cmath>
#include <limits>

#include "genapi/engine.h"
#include "genapi/engineerror.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

std::string rangeText(std::int64_t low, std::int64_t high) {
    return std::to_string(low) + " to " + std::to_string(high);
}

}  // namespace

// What is known since the load needs no way through the links: most Integers have constant bounds,
// and nearly all writes end in a register.
bool Engine::isInFixedRange(NodeId id, std::int64_t value) const {
    const Node& self = node(id);
    if (!imposedRanges_.empty()) {
        return false;
    }
    if (self.kind == Kind::integer) {
        const NumberDetail& detail = d_->numbers[self.detail];
        return detail.fixedRange && value >= detail.minimum.integer &&
               value <= detail.maximum.integer;
    }
    if (!isRegister(self.kind)) {
        return false;
    }
    const RegisterDetail& detail = d_->registers[self.detail];
    return detail.width != 0 && value >= detail.minimum && value <= detail.maximum;
}

void Engine::checkRange(NodeId id, std::int64_t value) {
    if (isInFixedRange(id, value)) {
        return;
    }
    const std::int64_t low = minimum(id);
    const std::int64_t high = maximum(id);
    if (value < low || value > high) {
        GENAPI_THROW(OutOfRangeException,
                     says(id, "can not take " + std::to_string(value) + ": its range is " +
                                  rangeText(low, high) + "."));
    }
    if (node(id).mayBeListed && isListed(id, value)) {
        return;
    }
    const std::int64_t step = increment(id);
    // The distance from the minimum always fits an unsigned number.
    const std::uint64_t distance =
        static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(low);
    if (step > 1 && distance % static_cast<std::uint64_t>(step) != 0) {
        GENAPI_THROW(OutOfRangeException,
                     says(id, "can not take " + std::to_string(value) + ": it is not " +
                                  std::to_string(low) + " plus a multiple of the increment " +
                                  std::to_string(step) + "."));
    }
}

// False without a list; an error where there is one and the value is not on it.
bool Engine::isListed(NodeId id, std::int64_t value) {
    const auto valid = validIntegers(id);
    if (!valid.empty() && !std::binary_search(valid.begin(), valid.end(), value)) {
        GENAPI_THROW(OutOfRangeException, says(id, "can not take " + std::to_string(value) +
                                                       ": it is none of its valid values."));
    }
    return !valid.empty();
}

void Engine::checkEntry(NodeId enumeration, std::int64_t value) {
    const NodeId entry = entryOf(enumeration, value);
    if (entry == noNode) {
        GENAPI_THROW(OutOfRangeException, says(enumeration, "has no entry with the value " +
                                                                std::to_string(value) + "."));
    }
    const std::size_t mark = denialCount_;
    if (!IsAvailable(coreAccess(entry, Ask::reading))) {
        GENAPI_THROW(AccessException,
                     says(enumeration,
                          "can not take the entry '" +
                              std::string(d_->text(d_->entries[node(entry).detail].symbolic)) +
                              "' with the value " + std::to_string(value) + explainDenial(mark)));
    }
}

void Engine::checkInteger(NodeId id, std::int64_t value, Verify verify) {
    const Path path(*this, id);
    const Node& self = node(id);
    // No check is left out for a register: its bytes can hold what they can hold.
    const bool isFixed = isRegister(self.kind) || self.kind == Kind::boolean;
    if (self.kind == Kind::enumeration) {
        if (verify == Verify::yes) {
            checkEntry(id, value);
        }
    } else if (valueTypeOf(self.kind) == ValueType::real) {
        checkReal(id, static_cast<double>(value), verify);
        return;
    } else if (isFixed || verify == Verify::yes) {
        checkRange(id, value);
    }
    if (self.kind == Kind::boolean) {
        const BooleanDetail& detail = d_->booleans[self.detail];
        value = value != 0 ? detail.on : detail.off;
    }
    if (self.kind == Kind::integer) {
        const NumberDetail& detail = d_->numbers[self.detail];
        for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
            for (const NodeId copy : d_->list(list)) {
                checkInteger(copy, value, verify);
            }
        }
        if (const Number source = sourceOf(id); source.link != noNode) {
            checkInteger(source.link, value, verify);
        }
        return;
    }
    if (self.kind == Kind::intConverter) {
        checkConverted(id, FormulaNumber::of(value), verify);
    } else if (self.value != noNode) {
        checkInteger(self.value, value, verify);
    }
}

void Engine::checkReal(NodeId id, double value, Verify verify) {
    const Path path(*this, id);
    const Node& self = node(id);
    if (!std::isfinite(value)) {
        GENAPI_THROW(OutOfRangeException, says(id, "takes finite numbers only."));
    }
    if (self.kind == Kind::enumeration) {
        (void)nearestEntry(id, value);
        return;
    }
    if (valueTypeOf(self.kind) == ValueType::integer) {
        checkInteger(id, toInteger(id, value), verify);
        return;
    }
    if (verify == Verify::yes || self.kind == Kind::floatReg) {
        const double low = realMinimum(id);
        const double high = realMaximum(id);
        if (value < low || value > high) {
            GENAPI_THROW(
                OutOfRangeException,
                says(id, "can not take " + formatFloatExactly(value) + ": its range is " +
                             formatFloatExactly(low) + " to " + formatFloatExactly(high) + "."));
        }
        const auto valid = self.mayBeListed ? validReals(id) : std::vector<double>();
        if (!valid.empty() && !std::binary_search(valid.begin(), valid.end(), value)) {
            GENAPI_THROW(OutOfRangeException, says(id, "can not take " + formatFloatExactly(value) +
                                                           ": it is none of its valid values."));
        }
    }
    if (self.kind == Kind::floating) {
        const NumberDetail& detail = d_->numbers[self.detail];
        for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
            for (const NodeId copy : d_->list(list)) {
                checkReal(copy, value, verify);
            }
        }
        if (const Number source = sourceOf(id); source.link != noNode) {
            checkReal(source.link, value, verify);
        }
    } else if (self.kind == Kind::converter) {
        checkConverted(id, FormulaNumber::of(value), verify);
    }
}

void Engine::checkText(NodeId id, std::string_view value) {
    if (value.find('\0') != std::string_view::npos) {
        GENAPI_THROW(InvalidArgumentException, says(id, "can not take a text with a zero inside."));
    }
    const std::int64_t room = maximumLength(id);
    if (static_cast<std::uint64_t>(value.size()) > static_cast<std::uint64_t>(room)) {
        GENAPI_THROW(OutOfRangeException,
                     says(id, "can not take a text of " + std::to_string(value.size()) +
                                  " bytes: there is room for " + std::to_string(room) + "."));
    }
}

NodeId Engine::nearestEntry(NodeId enumeration, double value) {
    NodeId nearest = noNode;
    double distance = std::numeric_limits<double>::infinity();
    for (const NodeId entry : d_->list(node(enumeration).members)) {
        const double other = std::fabs(d_->entries[node(entry).detail].numeric - value);
        if (other < distance && IsAvailable(coreAccess(entry, Ask::reading))) {
            nearest = entry;
            distance = other;
        }
    }
    if (nearest == noNode) {
        GENAPI_THROW(AccessException, says(enumeration, "has no entry that is available."));
    }
    return nearest;
}

}  // namespace GenApi::Detail
