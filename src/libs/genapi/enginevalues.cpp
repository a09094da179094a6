// Reading values. The caller has found the node readable; links beside the value chain are checked
// here, each before it is read.
#include <bit>
#include <cmath>
#include <cstring>

#include "genapi/engine.h"
#include "genapi/engineerror.h"
#include "genapi/numberbytes.h"

namespace GenApi::Detail {

void Engine::requireLink(NodeId link) {
    const std::size_t mark = denialCount_;
    if (!IsReadable(coreAccess(link, Ask::reading))) {
        GENAPI_THROW(AccessException, says(link, "is not readable" + explainDenial(mark)));
    }
    denialCount_ = mark;
}

std::int64_t Engine::linkedInteger(NodeId link, CacheUse use) {
    requireLink(link);
    return integer(link, use);
}

double Engine::linkedReal(NodeId link, CacheUse use) {
    requireLink(link);
    return real(link, use);
}

bool Engine::tryInteger(NodeId id, std::int64_t& value) {
    try {
        value = linkedInteger(id);
        return true;
    } catch (const GenICam::GenericException&) {
        if (mustTravel_) {
            throw;
        }
        return false;
    }
}

std::int64_t Engine::integerOf(const Number& number) {
    return number.link == noNode ? number.integer : linkedInteger(number.link);
}

double Engine::realOf(const Number& number) {
    return number.link == noNode ? number.real : linkedReal(number.link);
}

std::int64_t Engine::toInteger(NodeId id, double value) const {
    const double rounded = std::round(value);
    if (!(rounded >= -0x1p63 && rounded < 0x1p63)) {
        GENAPI_THROW(OutOfRangeException,
                     says(id, "can not take " + std::to_string(value) + " as a 64-bit integer."));
    }
    return static_cast<std::int64_t>(rounded);
}

Number Engine::tableSource(const NumberDetail& detail) {
    const std::int64_t index = linkedInteger(detail.index);
    for (std::uint32_t i = 0; i < detail.table.count; ++i) {
        const IndexedNumber& row = d_->indexed[detail.table.begin + i];
        if (row.index == index) {
            return row.value;
        }
    }
    return detail.fallback;
}

std::int64_t Engine::integer(NodeId id, CacheUse use) {
    const Kind kind = node(id).kind;
    if ((kind == Kind::intReg || kind == Kind::maskedIntReg) && registerOf(id).fixedPlace) {
        // It reads no other node, so it can be in no circle.
        return registerInteger(id, use);
    }
    const Visit visit(*this, id, busyValue);
    const Node& self = node(id);
    switch (self.kind) {
        case Kind::integer: {
            const Number source = sourceOf(id);
            if (source.link != noNode) {
                return integer(source.link, use);
            }
            return source.given ? source.integer : heldNumbers_[self.held].integer;
        }
        case Kind::enumeration:
        case Kind::command:
            return self.value != noNode ? integer(self.value, use)
                                        : heldNumbers_[self.held].integer;
        case Kind::boolean:
            return truth(id, use) ? 1 : 0;
        case Kind::enumEntry:
            return d_->entries[self.detail].value;
        case Kind::intReg:
        case Kind::maskedIntReg:
            return registerInteger(id, use);
        case Kind::configInteger:
            return configInteger(id, use);
        case Kind::advancedFeature:
        case Kind::smartFeature:
            return address(id);
        case Kind::intSwissKnife:
        case Kind::intConverter:
            return integerResult(id, formulaValue(id, use));
        case Kind::floating:
        case Kind::floatReg:
        case Kind::swissKnife:
        case Kind::converter:
            return toInteger(id, realValue(id, use));
        default:
            GENAPI_THROW(RuntimeException, says(id, "has no number."));
    }
}

double Engine::real(NodeId id, CacheUse use) {
    if (valueTypeOf(node(id).kind) == ValueType::real) {
        const Visit visit(*this, id, busyValue);
        return realValue(id, use);
    }
    if (node(id).kind == Kind::enumeration) {
        const NodeId entry = currentEntry(id, use);
        if (entry != noNode) {
            return d_->entries[node(entry).detail].numeric;
        }
    }
    return static_cast<double>(integer(id, use));
}

double Engine::realValue(NodeId id, CacheUse use) {
    const Node& self = node(id);
    if (self.kind == Kind::floating) {
        const Number source = sourceOf(id);
        if (source.link != noNode) {
            return real(source.link, use);
        }
        return source.given ? source.real : heldNumbers_[self.held].real;
    }
    if (isFormula(self.kind)) {
        return formulaValue(id, use).asReal();
    }
    std::array<std::uint8_t, 8> bytes{};
    const auto count = static_cast<std::size_t>(length(id));
    readBytes(id, std::span(bytes).first(count), use);
    const std::uint64_t bits = gather(std::span(bytes).first(count), registerOf(id).bigEndian);
    return count == 4 ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                      : std::bit_cast<double>(bits);
}

std::int64_t Engine::registerInteger(NodeId id, CacheUse use) {
    const RegisterDetail& detail = registerOf(id);
    const RegisterState& state = registers_[node(id).detail];
    const std::int64_t count = length(id);
    const BitField field = fieldOf(id, count);
    std::uint64_t bits = 0;
    // What lies at a fixed place needs no look at where its bytes came from.
    if (detail.fixedPlace && hasBytes_[node(id).detail] != 0 && use == CacheUse::allowed) {
        std::memcpy(&bits, state.bytes.data(), sizeof bits);
        bits = detail.bigEndian ? __builtin_bswap64(bits) >> (64 - 8 * count) : bits;
    } else {
        std::array<std::uint8_t, 8> bytes{};
        const auto used = std::span(bytes).first(static_cast<std::size_t>(count));
        readBytes(id, used, use);
        bits = gather(used, detail.bigEndian);
    }
    // The field moves to the top, and comes down again with its own sign or with zeros.
    const std::uint64_t top = bits << (64 - field.width - field.shift);
    return detail.isSigned ? static_cast<std::int64_t>(top) >> (64 - field.width)
                           : static_cast<std::int64_t>(top >> (64 - field.width));
}

bool Engine::truth(NodeId id, CacheUse use) {
    const Node& self = node(id);
    const BooleanDetail& detail = d_->booleans[self.detail];
    const std::int64_t value =
        self.value != noNode ? integer(self.value, use) : heldNumbers_[self.held].integer;
    return value == detail.on;
}

std::string Engine::text(NodeId id, CacheUse use) {
    const Visit visit(*this, id, busyValue);
    const Node& self = node(id);
    if (self.kind == Kind::string) {
        return self.value != noNode ? text(self.value, use) : heldTexts_[self.held];
    }
    if (self.kind == Kind::configText) {
        return configString(id, use);
    }
    std::string bytes(static_cast<std::size_t>(length(id)), '\0');
    readBytes(id, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()}, use);
    bytes.resize(::strnlen(bytes.data(), bytes.size()));
    return bytes;
}

// Several entries may have one value: the first that can be chosen now, else the first.
NodeId Engine::entryOf(NodeId enumeration, std::int64_t value) {
    NodeId first = noNode;
    for (const NodeId entry : d_->list(node(enumeration).members)) {
        if (d_->entries[node(entry).detail].value != value) {
            continue;
        }
        if (first == noNode) {
            first = entry;
        } else if (!IsReadable(coreAccess(first, Ask::reading)) &&
                   IsReadable(coreAccess(entry, Ask::reading))) {
            return entry;
        }
    }
    return first;
}

NodeId Engine::entryOf(NodeId enumeration, std::string_view symbolic) const {
    for (const NodeId entry : d_->list(node(enumeration).members)) {
        if (d_->text(d_->entries[node(entry).detail].symbolic) == symbolic) {
            return entry;
        }
    }
    return noNode;
}

NodeId Engine::currentEntry(NodeId enumeration, CacheUse use) {
    return entryOf(enumeration, integer(enumeration, use));
}

bool Engine::isDone(NodeId command) {
    const Node& self = node(command);
    bool done = true;
    // Without anything to read there is nothing to wait for.
    if (self.value != noNode && IsReadable(access(command, Ask::reading))) {
        done =
            integer(self.value, CacheUse::ignored) != integerOf(d_->commands[self.detail].command);
    }
    NodeState& state = nodes_[command];
    if (done && state.running) {
        state.running = false;
        touch(command);
    }
    return done;
}

// ---- What a node inherits from where it takes its value.

// Its target, or what its table chooses now.
NodeId Engine::heritage(NodeId id) {
    const Node& self = node(id);
    const bool isNumber = self.kind == Kind::integer || self.kind == Kind::floating;
    if (!isNumber || d_->numbers[self.detail].index == noNode) {
        return self.value;
    }
    try {
        return sourceOf(id).link;
    } catch (const GenICam::GenericException&) {
        if (mustTravel_) {
            throw;
        }
        return noNode;
    }
}

// The node itself or the first on the way to its value that `has` is true of; noNode for none.
template <typename Has>
NodeId Engine::firstThat(NodeId id, Has has) {
    for (int depth = 0; id != noNode && depth < maximumDepth; ++depth, id = heritage(id)) {
        if (has(node(id))) {
            return id;
        }
    }
    return noNode;
}

ERepresentation Engine::representation(NodeId id) {
    const NodeId owner = firstThat(
        id, [](const Node& one) { return one.representation != _UndefinedRepresentation; });
    return owner == noNode ? PureNumber : static_cast<ERepresentation>(node(owner).representation);
}

EDisplayNotation Engine::notation(NodeId id) {
    const NodeId owner =
        firstThat(id, [](const Node& one) { return one.notation != _UndefinedEDisplayNotation; });
    return owner == noNode ? fnAutomatic : static_cast<EDisplayNotation>(node(owner).notation);
}

std::int64_t Engine::precision(NodeId id) {
    constexpr std::int64_t usual = 6;
    const NodeId owner = firstThat(id, [](const Node& one) { return one.precision >= 0; });
    return owner == noNode ? usual : node(owner).precision;
}

std::string_view Engine::unit(NodeId id) {
    const NodeId owner = firstThat(id, [](const Node& one) { return one.unit.count != 0; });
    return owner == noNode ? std::string_view() : d_->text(node(owner).unit);
}

ECachingMode Engine::caching(NodeId id) const {
    for (int depth = 0; node(id).value != noNode && depth < maximumDepth; ++depth) {
        id = node(id).value;
    }
    return isRegister(node(id).kind) ? static_cast<ECachingMode>(registerOf(id).caching)
                                     : WriteThrough;
}

}  // namespace GenApi::Detail
