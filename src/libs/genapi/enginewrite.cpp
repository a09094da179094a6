// Writing. All checks run first, down the whole chain of links, so that a refused value has written
// nothing anywhere; then the values go out.
#include <algorithm>
#include <bit>
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

// The low bytes of a number in the order of their addresses.
void scatter(std::uint64_t value, std::span<std::uint8_t> bytes, bool bigEndian) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[bigEndian ? bytes.size() - 1 - i : i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint64_t gather(std::span<const std::uint8_t> bytes, bool bigEndian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value |= std::uint64_t{bytes[bigEndian ? bytes.size() - 1 - i : i]} << (8 * i);
    }
    return value;
}

std::uint64_t maskOf(int width) {
    return ~std::uint64_t{0} >> (64 - width);
}

}  // namespace

// ---- From outside.

void Engine::setInteger(NodeId id, std::int64_t value, Verify verify) {
    conversions_.clear();
    requireWritable(id);
    checkInteger(id, value, verify);
    storeInteger(id, value);
    checkErrorNode(id);
}

void Engine::setReal(NodeId id, double value, Verify verify) {
    conversions_.clear();
    requireWritable(id);
    checkReal(id, value, verify);
    storeReal(id, value);
    checkErrorNode(id);
}

void Engine::setText(NodeId id, std::string_view value) {
    requireWritable(id);
    checkText(id, value);
    storeText(id, value);
    checkErrorNode(id);
}

void Engine::setSymbolic(NodeId enumeration, std::string_view symbolic) {
    conversions_.clear();
    requireWritable(enumeration);
    const NodeId entry = entryOf(enumeration, symbolic);
    if (entry == noNode) {
        GENAPI_THROW(InvalidArgumentException,
                     says(enumeration, "has no entry '" + std::string(symbolic) + "'."));
    }
    const std::size_t mark = denialCount_;
    const EAccessMode mode = coreAccess(entry, Ask::reading);
    if (!IsAvailable(mode)) {
        GENAPI_THROW(AccessException,
                     says(enumeration,
                          "can not take the entry '" + std::string(symbolic) + "', which is not " +
                              (mode == NI ? "implemented" : "available") + explainDenial(mark)));
    }
    const std::int64_t value = d_->entries[node(entry).detail].value;
    // Of several entries with one value it is the named one that was checked.
    if (node(enumeration).value != noNode) {
        checkInteger(node(enumeration).value, value, Verify::yes);
    }
    storeInteger(enumeration, value);
    checkErrorNode(enumeration);
}

void Engine::execute(NodeId command) {
    conversions_.clear();
    requireWritable(command);
    const Number& given = d_->commands[node(command).detail].command;
    const std::int64_t value = integerOf(given);
    checkInteger(command, value, Verify::yes);
    nodes_[command].running = true;
    try {
        storeInteger(command, value);
    } catch (...) {
        nodes_[command].running = false;
        throw;
    }
    checkErrorNode(command);
}

// ---- Checks.

void Engine::checkRange(NodeId id, std::int64_t value) {
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

// ---- Stores. Nothing is checked any more.

void Engine::storeInteger(NodeId id, std::int64_t value) {
    const Node& self = node(id);
    switch (self.kind) {
        case Kind::integer: {
            const NumberDetail& detail = d_->numbers[self.detail];
            for (const NodeId copy : d_->list(detail.copiesBefore)) {
                storeInteger(copy, value);
            }
            if (const Number source = sourceOf(id); source.link != noNode) {
                storeInteger(source.link, value);
            } else {
                heldNumbers_[self.held].integer = value;
            }
            for (const NodeId copy : d_->list(detail.copiesAfter)) {
                storeInteger(copy, value);
            }
            break;
        }
        case Kind::intReg:
        case Kind::maskedIntReg:
            storeRegisterInteger(id, value);
            return;
        case Kind::floating:
        case Kind::floatReg:
        case Kind::converter:
            storeReal(id, static_cast<double>(value));
            return;
        case Kind::intConverter:
            storeConverted(id, FormulaNumber::of(value));
            break;
        case Kind::boolean: {
            const BooleanDetail& detail = d_->booleans[self.detail];
            value = value != 0 ? detail.on : detail.off;
            [[fallthrough]];
        }
        default:
            if (self.value != noNode) {
                storeInteger(self.value, value);
            } else if (self.held != noSlot) {
                heldNumbers_[self.held].integer = value;
            }
    }
    touch(id);
}

void Engine::storeReal(NodeId id, double value) {
    const Node& self = node(id);
    if (self.kind == Kind::enumeration) {
        storeInteger(id, d_->entries[node(nearestEntry(id, value)).detail].value);
        return;
    }
    if (valueTypeOf(self.kind) == ValueType::integer) {
        storeInteger(id, toInteger(id, value));
        return;
    }
    if (self.kind == Kind::floatReg) {
        std::array<std::uint8_t, 8> bytes{};
        const auto used = std::span(bytes).first(static_cast<std::size_t>(length(id)));
        const std::uint64_t bits = used.size() == 4
                                       ? std::bit_cast<std::uint32_t>(static_cast<float>(value))
                                       : std::bit_cast<std::uint64_t>(value);
        scatter(bits, used, registerOf(id).bigEndian);
        writeBytes(id, used);
        return;
    }
    if (self.kind == Kind::converter) {
        storeConverted(id, FormulaNumber::of(value));
        touch(id);
        return;
    }
    const NumberDetail& detail = d_->numbers[self.detail];
    for (const NodeId copy : d_->list(detail.copiesBefore)) {
        storeReal(copy, value);
    }
    if (const Number source = sourceOf(id); source.link != noNode) {
        storeReal(source.link, value);
    } else {
        heldNumbers_[self.held].real = value;
    }
    for (const NodeId copy : d_->list(detail.copiesAfter)) {
        storeReal(copy, value);
    }
    touch(id);
}

void Engine::storeText(NodeId id, std::string_view value) {
    const Node& self = node(id);
    if (self.kind == Kind::stringReg) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length(id)), 0);
        std::copy(value.begin(), value.end(), bytes.begin());
        writeBytes(id, bytes);
        return;
    }
    if (self.value != noNode) {
        storeText(self.value, value);
    } else {
        heldTexts_[self.held] = value;
    }
    touch(id);
}

void Engine::storeRegisterInteger(NodeId id, std::int64_t value) {
    const RegisterDetail& detail = registerOf(id);
    std::array<std::uint8_t, 8> bytes{};
    const std::int64_t count = length(id);
    const auto used = std::span(bytes).first(static_cast<std::size_t>(count));
    const BitField field = fieldOf(id, count);
    std::uint64_t bits = static_cast<std::uint64_t>(value);
    if (field.width < static_cast<int>(count) * 8) {
        // The neighbours in the register stay as they are; one that can't be read has none.
        std::uint64_t old = 0;
        if (IsReadable(static_cast<EAccessMode>(detail.access))) {
            readBytes(id, used, CacheUse::allowed);
            old = gather(used, detail.bigEndian);
        }
        const std::uint64_t mask = maskOf(field.width) << field.shift;
        bits = (old & ~mask) | ((bits << field.shift) & mask);
    }
    scatter(bits, used, detail.bigEndian);
    writeBytes(id, used);
}

void Engine::checkErrorNode(NodeId id) {
    const NodeId error = node(id).error;
    if (error == noNode || node(error).kind != Kind::enumeration) {
        return;
    }
    const std::int64_t code = linkedInteger(error, CacheUse::ignored);
    if (code == 0) {
        return;
    }
    const NodeId entry = entryOf(error, code);
    std::string what = std::to_string(code);
    if (entry != noNode) {
        const Slice display = node(entry).displayName;
        what += " (";
        what += display.count != 0 ? d_->text(display)
                                   : d_->text(d_->entries[node(entry).detail].symbolic);
        what += ")";
        if (node(entry).toolTip.count != 0) {
            what += ": ";
            what += d_->text(node(entry).toolTip);
        }
    }
    if (what.back() != '.') {
        what += '.';
    }
    GENAPI_THROW(RuntimeException, says(id, "was written, and '" + std::string(d_->nameOf(error)) +
                                                "' reports the error " + what));
}

}  // namespace GenApi::Detail
