// Writing. All checks run first, down the whole chain of links, so that a refused value has written
// nothing anywhere (enginecheck.cpp); then the values go out.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "genapi/engine.h"
#include "genapi/engineerror.h"
#include "genapi/numberbytes.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

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
    checkErrorNodes(id);
}

void Engine::setReal(NodeId id, double value, Verify verify) {
    conversions_.clear();
    requireWritable(id);
    checkReal(id, value, verify);
    storeReal(id, value);
    checkErrorNodes(id);
}

void Engine::setText(NodeId id, std::string_view value) {
    requireWritable(id);
    checkText(id, value);
    storeText(id, value);
    checkErrorNodes(id);
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
    checkErrorNodes(enumeration);
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
    checkErrorNodes(command);
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

// Of the node and of its targets: the one that knows whether a write went well may be any of them.
void Engine::checkErrorNodes(NodeId id) {
    for (int depth = 0; id != noNode && depth < maximumDepth; ++depth, id = node(id).value) {
        checkErrorNode(id);
    }
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
