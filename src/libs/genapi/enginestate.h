// What a map has of its own for each node, register and port, beside the shared description.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "genapi/description.h"
#include "genapi/iport.h"

namespace GenApi::Detail {

enum class Implemented : std::uint8_t { unknown, yes, no };
enum class Denial : std::uint8_t {
    none,
    broken,
    notImplemented,
    notAvailable,
    locked,
    mode,
    imposed,
    notConnected,
    link,
    failed,
    table
};

// Registers with bytes are listed by the block of addresses that they lie in, and the long ones
// apart. Those whose bytes went stay listed until someone looks.
inline constexpr std::uint8_t longBucket = 64;
inline constexpr std::uint8_t noBucket = 255;

struct NodeState {
    std::uint8_t busy = 0;
    Implemented implemented = Implemented::unknown;
    std::uint8_t imposedAccess = RW;
    bool watched = false;
    bool queued = false;
    bool running = false;
    std::uint32_t reg = noSlot;  // of a register, its index
};

struct RegisterState {
    std::int64_t address = 0;
    std::int64_t length = 0;
    std::uint8_t bucket = noBucket;  // the one of its port that it is listed in
    std::array<std::uint8_t, 8> bytes{};
    std::vector<std::uint8_t> longBytes;
};

struct PortState {
    IPort* port = nullptr;
    bool isShared = false;                             // another port node has the same port
    std::vector<std::vector<std::uint32_t>> cached{};  // empty until there are any
};

union HeldNumber {
    std::int64_t integer;
    double real;
};

struct ImposedRange {
    std::int64_t minimum, maximum;
    double realMinimum, realMaximum;
};

// What a converter was found to give its target.
struct Conversion {
    NodeId converter;
    FormulaNumber result;
};

struct DenialStep {
    NodeId node = noNode;
    NodeId culprit = noNode;
    Denial why = Denial::none;
};

}  // namespace GenApi::Detail
