// Registers: where they lie, what is cached of them, and the way to the port and back. A register
// is always read and written in one port access of its whole length.
#include <algorithm>
#include <cstring>

#include "genapi/engine.h"
#include "genapi/engineerror.h"

namespace GenApi::Detail {

namespace {

// Addresses may use all 64 bits; their arithmetic wraps.
std::int64_t wrapAdd(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
std::int64_t wrapMultiply(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

void swapQuadlets(std::span<std::uint8_t> bytes) {
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
        std::swap(bytes[i], bytes[i + 3]);
        std::swap(bytes[i + 1], bytes[i + 2]);
    }
}

std::span<const std::uint8_t> keptBytes(const std::array<std::uint8_t, 8>& small,
                                        const std::vector<std::uint8_t>& large,
                                        std::int64_t length) {
    const auto count = static_cast<std::size_t>(length);
    return count <= small.size() ? std::span(small).first(count) : std::span(large).first(count);
}

}  // namespace

std::int64_t Engine::address(NodeId id) {
    const RegisterDetail& detail = registerOf(id);
    if (detail.terms.count == 0) {
        return detail.base;
    }
    const Visit visit(*this, id, busyAddress);
    std::int64_t sum = detail.base;
    for (std::uint32_t i = 0; i < detail.terms.count; ++i) {
        const AddressTerm& term = d_->terms[detail.terms.begin + i];
        std::int64_t value = linkedInteger(term.node);
        switch (term.scale) {
            case AddressTerm::Scale::one:
                break;
            case AddressTerm::Scale::constant:
                value = wrapMultiply(value, term.offset);
                break;
            case AddressTerm::Scale::node:
                value = wrapMultiply(value, linkedInteger(term.offsetNode));
                break;
            case AddressTerm::Scale::length:
                value = wrapMultiply(value, length(id));
                break;
        }
        sum = wrapAdd(sum, value);
    }
    return sum;
}

std::int64_t Engine::linkedLength(NodeId id) {
    const Number& given = registerOf(id).length;
    const std::int64_t bytes = linkedInteger(given.link);
    if (!isPossibleLength(node(id).kind, bytes)) {
        GENAPI_THROW(
            OutOfRangeException,
            says(id, "has the impossible length of " + std::to_string(bytes) +
                         " bytes, read from '" + std::string(d_->nameOf(given.link)) + "'."));
    }
    return bytes;
}

void Engine::readBytes(NodeId id, std::span<std::uint8_t> bytes, CacheUse use) {
    const RegisterDetail& detail = registerOf(id);
    const std::int64_t where = address(id);
    if (detail.caching != NoCache) {
        const RegisterState& state = registers_[node(id).detail];
        if (use == CacheUse::allowed && hasBytes_[node(id).detail] != 0 && state.address == where &&
            state.length == static_cast<std::int64_t>(bytes.size())) {
            const auto kept = keptBytes(state.bytes, state.longBytes, state.length);
            std::copy(kept.begin(), kept.end(), bytes.begin());
            return;
        }
    }
    const std::uint64_t generation = generation_;
    transfer(detail.port, bytes, where);
    // The port may have told of a change while it was read.
    if (detail.caching != NoCache && generation == generation_) {
        keep(id, where, bytes);
    }
}

// The cause of all errors of a device; they leave as they come.
void Engine::transfer(NodeId portNode, std::span<std::uint8_t> bytes, std::int64_t address) {
    std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
    IPort* port = connected(portNode);
    if (port == nullptr) {
        GENAPI_THROW(AccessException, says(portNode, "is not connected to a port."));
    }
    throughPort(
        [&] { port->Read(bytes.data(), address, static_cast<std::int64_t>(bytes.size())); });
    if (d_->ports[node(portNode).detail].swapEndianess) {
        swapQuadlets(bytes);
    }
}

void Engine::writeBytes(NodeId id, std::span<const std::uint8_t> bytes) {
    const RegisterDetail& detail = registerOf(id);
    const std::int64_t where = address(id);
    const auto count = static_cast<std::int64_t>(bytes.size());
    try {
        writePort(detail.port, bytes.data(), where, count);
    } catch (...) {
        // What the device took of it is unknown.
        dropClosureBytes(id);
        dropOverlapping(detail.port, where, count);
        throw;
    }
    touch(id);
    dropOverlapping(detail.port, where, count);
    if (detail.caching == WriteThrough && IsReadable(static_cast<EAccessMode>(detail.access))) {
        keep(id, where, bytes);
    }
}

void Engine::setBytes(NodeId id, std::span<const std::uint8_t> bytes) {
    requireWritable(id);
    const std::int64_t expected = length(id);
    if (static_cast<std::int64_t>(bytes.size()) != expected) {
        GENAPI_THROW(OutOfRangeException,
                     says(id, "takes " + std::to_string(expected) + " bytes, not " +
                                  std::to_string(bytes.size()) + "."));
    }
    writeBytes(id, bytes);
    checkErrorNode(id);
}

void Engine::readPort(NodeId portNode, void* buffer, std::int64_t address, std::int64_t length) {
    transfer(portNode, {static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(length)},
             address);
}

void Engine::writePort(NodeId portNode, const void* buffer, std::int64_t address,
                       std::int64_t length) {
    IPort* port = connected(portNode);
    if (port == nullptr) {
        GENAPI_THROW(AccessException, says(portNode, "is not connected to a port."));
    }
    std::vector<std::uint8_t> swapped;
    if (d_->ports[node(portNode).detail].swapEndianess) {
        const auto* first = static_cast<const std::uint8_t*>(buffer);
        swapped.assign(first, first + length);
        swapQuadlets(swapped);
        buffer = swapped.data();
    }
    throughPort([&] { port->Write(buffer, address, length); });
}

void Engine::writeRaw(NodeId portNode, const void* buffer, std::int64_t address,
                      std::int64_t length) {
    try {
        writePort(portNode, buffer, address, length);
    } catch (...) {
        dropClosureBytes(portNode);
        throw;
    }
    touch(portNode);
}

void Engine::keep(NodeId id, std::int64_t address, std::span<const std::uint8_t> bytes) {
    const std::uint32_t index = node(id).detail;
    RegisterState& state = registers_[index];
    if (bytes.size() <= state.bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), state.bytes.begin());
    } else {
        state.longBytes.assign(bytes.begin(), bytes.end());
    }
    state.address = address;
    state.length = static_cast<std::int64_t>(bytes.size());
    hasBytes_[index] = 1;
    const std::uint8_t bucket = bucketOf(address, state.length);
    if (state.bucket != bucket) {
        auto& cached = ports_[node(d_->registers[index].port).detail].cached;
        cached.resize(longBucket + std::size_t{1});
        cached[bucket].push_back(index);
        state.bucket = bucket;
    }
}

void Engine::dropBytes(std::uint32_t registerIndex) {
    hasBytes_[registerIndex] = 0;
}

namespace {

constexpr unsigned blockShift = 6;

std::uint64_t blockOf(std::int64_t address) {
    return static_cast<std::uint64_t>(address) >> blockShift;
}

}  // namespace

std::uint8_t Engine::bucketOf(std::int64_t address, std::int64_t length) {
    const std::uint64_t block = blockOf(address);
    return blockOf(wrapAdd(address, length - 1)) == block
               ? static_cast<std::uint8_t>(block % longBucket)
               : longBucket;
}

// Many nodes lie on one register, and descriptions forget to say so.
void Engine::dropOverlapping(NodeId port, std::int64_t address, std::int64_t length) {
    PortState& own = ports_[node(port).detail];
    if (!own.isShared) {
        dropFrom(own, address, length);
        return;
    }
    for (PortState& other : ports_) {
        if (other.port == own.port) {
            dropFrom(other, address, length);
        }
    }
}

void Engine::dropFrom(PortState& port, std::int64_t address, std::int64_t length) {
    if (port.cached.empty()) {
        return;
    }
    const std::uint64_t first = blockOf(address);
    const std::uint64_t blocks = blockOf(wrapAdd(address, length - 1)) - first;
    const std::uint64_t count = std::min<std::uint64_t>(blocks, longBucket - 1U) + 1;
    for (std::uint64_t i = 0; i < count; ++i) {
        dropFrom(port, static_cast<std::uint8_t>((first + i) % longBucket), address, length);
    }
    dropFrom(port, longBucket, address, length);
}

void Engine::dropFrom(PortState& port, std::uint8_t bucket, std::int64_t address,
                      std::int64_t length) {
    auto& list = port.cached[bucket];
    for (std::size_t i = list.size(); i > 0; --i) {
        const std::uint32_t index = list[i - 1];
        RegisterState& other = registers_[index];
        if (other.bucket == bucket && hasBytes_[index] != 0) {
            // Distances, since sums could overflow.
            const auto after =
                static_cast<std::uint64_t>(other.address) - static_cast<std::uint64_t>(address);
            const auto before =
                static_cast<std::uint64_t>(address) - static_cast<std::uint64_t>(other.address);
            if (after >= static_cast<std::uint64_t>(length) &&
                before >= static_cast<std::uint64_t>(other.length)) {
                continue;
            }
            hasBytes_[index] = 0;
        }
        // One that moved is listed elsewhere.
        if (other.bucket == bucket) {
            other.bucket = noBucket;
        }
        list[i - 1] = list.back();
        list.pop_back();
    }
}

bool Engine::isCached(NodeId id) {
    // The sources of a value are what decides.
    for (int depth = 0;
         node(id).value != noNode && !isFormula(node(id).kind) && depth < maximumDepth; ++depth) {
        id = node(id).value;
    }
    if (isFormula(node(id).kind)) {
        return areVariablesCached(id);
    }
    return !isRegister(node(id).kind) ? node(id).held != noSlot : hasBytes_[node(id).detail] != 0;
}

bool Engine::areVariablesCached(NodeId id) {
    const Node& self = node(id);
    if (self.broken.count != 0 || (nodes_[id].busy & busyValue) != 0) {
        return false;
    }
    const Visit visit(*this, id, busyValue);
    const Slice variables = d_->formulas[self.detail].variables;
    for (std::uint32_t i = 0; i < variables.count; ++i) {
        if (!isCached(d_->variables[variables.begin + i].node)) {
            return false;
        }
    }
    return self.value == noNode || isCached(self.value);
}

BitField Engine::linkedField(NodeId id, std::int64_t bytes) const {
    const RegisterDetail& detail = registerOf(id);
    const int bits = static_cast<int>(bytes) * 8;
    const auto field = bitFieldOf(detail, bits);
    if (!field) {
        GENAPI_THROW(RuntimeException,
                     says(id, "has bits " + std::to_string(detail.lsb) + " to " +
                                  std::to_string(detail.msb) + " in a register of " +
                                  std::to_string(bits) + " bits."));
    }
    return *field;
}

}  // namespace GenApi::Detail
