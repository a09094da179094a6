#include "aravis/packetfilter.h"

#include <algorithm>

namespace Orlix::Aravis {
namespace {

using Program = std::vector<sock_filter>;

constexpr std::uint32_t toAravis = 0;
constexpr std::uint32_t toWitness = 1;

sock_filter load(std::uint16_t size, std::size_t place) {
    return BPF_STMT(static_cast<std::uint16_t>(BPF_LD | BPF_ABS | size),
                    static_cast<std::uint32_t>(place));
}

sock_filter mask(std::uint32_t bits) {
    return BPF_STMT(BPF_ALU | BPF_AND | BPF_K, bits);
}

sock_filter end(std::uint32_t result) {
    return BPF_STMT(BPF_RET | BPF_K, result);
}

// Does the next instruction if it holds, else skips it.
sock_filter ifEqual(std::uint32_t value) {
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
}

sock_filter ifGreater(std::uint32_t value) {
    return BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, value, 0, 1);
}

// Skips what follows unless it holds.
void onlyIf(Program& program, std::uint16_t test, std::uint32_t value, const Program& then) {
    program.push_back(BPF_JUMP(static_cast<std::uint16_t>(BPF_JMP | test | BPF_K), value, 0,
                               static_cast<std::uint8_t>(then.size())));
    program.insert(program.end(), then.begin(), then.end());
}

// A packet of payload or a trailer, by its number and size. Each of the branches ends the program.
Program judge(const FrameShape& shape, std::size_t header) {
    const bool isLong = header == Gvsp::longHeader;
    constexpr std::uint32_t shortNumber = 0xFFFFFF;
    constexpr std::size_t longPlace = 16;
    const Program number = {load(BPF_W, isLong ? longPlace : Gvsp::formatPlace),
                            mask(isLong ? 0xFFFFFFFF : shortNumber)};
    Program payload = number;
    payload.insert(payload.end(), {ifGreater(shape.count), end(toWitness),
                                   BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, shape.count, 1, 0),
                                   end(toAravis), BPF_STMT(BPF_LD | BPF_W | BPF_LEN, 0),
                                   ifGreater(static_cast<std::uint32_t>(shape.last + header)),
                                   end(toWitness), end(toAravis)});
    Program program = {load(BPF_B, Gvsp::formatPlace), mask(Gvsp::formatMask)};
    onlyIf(program, BPF_JEQ, Gvsp::payload, payload);
    program.insert(program.end(), number.begin(), number.end());
    program.insert(program.end(), {ifGreater(shape.count + 1), end(toWitness), end(toAravis)});
    return program;
}

}  // namespace

FrameShape::FrameShape(std::uint64_t payloadSize, std::uint64_t packetSize, std::size_t header) {
    constexpr std::uint64_t networkHeaders = 28;  // of IP and UDP
    const std::uint64_t overhead = networkHeaders + header;
    const std::uint64_t data = std::max(packetSize, overhead + 1) - overhead;
    const std::uint64_t size = std::max<std::uint64_t>(payloadSize, 1);
    const std::uint64_t packets = (size + data - 1) / data;
    count = static_cast<std::uint32_t>(packets);
    last = static_cast<std::uint32_t>(size - (packets - 1) * data);
}

std::vector<sock_filter> MakePacketFilter(const StreamShape& shape, Buffers buffers) {
    Program program = {load(BPF_H, 0), ifEqual(Gvsp::seen), end(toAravis)};
    // Answers to what Aravis has asked for again, whatever packet that was.
    for (const std::uint16_t status : Gvsp::unavailable) {
        program.insert(program.end(), {ifEqual(status), end(toAravis)});
    }
    program.insert(program.end(), {load(BPF_B, Gvsp::formatPlace), mask(Gvsp::formatMask)});
    if (buffers == Buffers::None) {
        program.insert(program.end(), {ifEqual(Gvsp::leader), end(toWitness),
                                       ifEqual(Gvsp::trailer), end(toWitness)});
    }
    program.insert(program.end(), {ifEqual(Gvsp::leader), end(toAravis)});
    // Of other packets with an error a trailer alone is news.
    Program trailer = {load(BPF_H, 0), mask(Gvsp::errorBit), ifEqual(Gvsp::errorBit),
                       end(toWitness)};
    onlyIf(program, BPF_JEQ, Gvsp::trailer, trailer);
    program.insert(program.end(), {load(BPF_H, 0), mask(Gvsp::errorBit), ifEqual(Gvsp::errorBit),
                                   end(toAravis), load(BPF_B, Gvsp::formatPlace)});
    onlyIf(program, BPF_JSET, Gvsp::longIdsBit, judge(shape.ofLongIds, Gvsp::longHeader));
    const Program last = judge(shape.ofShortIds, Gvsp::shortHeader);
    program.insert(program.end(), last.begin(), last.end());
    return program;
}

}  // namespace Orlix::Aravis
