// The immutable form of a description, shared by all maps made from it: one table of nodes, with
// 32-bit numbers for links and everything else in a few dense arrays beside it. Maps add values and
// caches of their own. Any thread may read; the lists of dependants fill themselves safely.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/formula.h"
#include "genapi/loadreport.h"
#include "genapi/types.h"

namespace GenApi::Detail {

using NodeId = std::uint32_t;
inline constexpr NodeId noNode = ~NodeId{0};
inline constexpr std::uint32_t noSlot = ~std::uint32_t{0};

enum class Kind : std::uint8_t {
    category,
    integer,
    intReg,
    maskedIntReg,
    intSwissKnife,
    intConverter,
    floating,
    floatReg,
    swissKnife,
    converter,
    boolean,
    enumeration,
    enumEntry,
    command,
    string,
    stringReg,
    byteRegister,
    port,
    configRom,
    configText,
    configInteger,
    advancedFeature,
    smartFeature
};

// How a value comes out of a node of some kind.
enum class ValueType : std::uint8_t { none, integer, real, text };

// A slice of one of the description's arrays.
struct Slice {
    std::uint32_t begin = 0;
    std::uint32_t count = 0;
};

// A number that stands in the description or is read from a node. `given` is false where the
// description has neither.
struct Number {
    NodeId link = noNode;
    bool given = false;
    std::int64_t integer = 0;
    double real = 0;
};

struct Node {
    // What every access reads.
    Kind kind{};
    bool streamable = false;
    bool deprecated = false;
    bool feature = false;
    bool standardNameSpace = false;
    // No condition of its own decides the access, and nothing is imposed.
    bool unconditional = false;
    bool ownCaching = false;   // the description says so; inherited otherwise
    bool mayBeListed = false;  // it or where it takes its value has a set of valid values
    std::uint8_t imposedAccess = RW;
    std::uint8_t visibility = Beginner;
    std::uint8_t representation = _UndefinedRepresentation;
    std::uint8_t notation = _UndefinedEDisplayNotation;
    std::int16_t precision = -1;
    std::uint32_t detail = 0;     // index into the array of its kind
    std::uint32_t held = noSlot;  // slot of a value that the map itself keeps
    NodeId value = noNode;        // pValue
    Slice implemented, available, locked;
    // Set where the loader could not complete the node: it is not available, and this is why.
    Slice broken;

    // What a user asks for now and then.
    Slice name, displayName, toolTip, description, unit, documentation;
    Slice invalidators, selected, selecting, members;
    NodeId alias = noNode;
    NodeId castAlias = noNode;
    NodeId error = noNode;
    NodeId blockPolling = noNode;
    std::int64_t pollingTime = -1;
    std::uint64_t eventId = 0;
    bool hasEventId = false;
};

// Value tables of Integer and Float: the value of the entry whose index the index node has.
struct IndexedNumber {
    std::int64_t index = 0;
    Number value;
};

// Integer and Float.
struct NumberDetail {
    Number value, minimum, maximum, increment;
    Slice copiesBefore, copiesAfter;  // pValueCopy, written in file order around pValue
    NodeId index = noNode;
    Slice table;
    Number fallback;
    Slice validValues;        // ValidValueSet, ascending
    bool fixedRange = false;  // of an Integer: two constants, and any number between them
};

struct BooleanDetail {
    Number value;
    std::int64_t on = 1;
    std::int64_t off = 0;
};

struct EnumerationDetail {
    Number value;
};

struct EntryDetail {
    NodeId enumeration = noNode;
    Slice symbolic;
    std::int64_t value = 0;
    double numeric = 0;
    bool selfClearing = false;
};

struct CommandDetail {
    Number value;
    Number command;
};

struct StringDetail {
    Slice value;
    bool given = false;
};

// One term of an address beyond the constants, which are summed up at load.
struct AddressTerm {
    enum class Scale : std::uint8_t { one, constant, node, length };
    NodeId node = noNode;
    Scale scale = Scale::one;
    NodeId offsetNode = noNode;
    std::int64_t offset = 0;
};

// Everything that lies at an address of a port.
struct RegisterDetail {
    NodeId port = noNode;
    std::int64_t base = 0;
    Slice terms;
    Number length;
    std::uint8_t access = RO;
    std::uint8_t caching = WriteThrough;
    bool fixedPlace = false;  // address and length are constants
    bool bigEndian = false;
    bool isSigned = false;
    bool hasBits = false;
    std::int16_t lsb = 0;
    std::int16_t msb = 0;
    // Of an integer of constant length; a width of 0 for all others.
    std::uint8_t shift = 0;
    std::uint8_t width = 0;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
};

// Where in a register of `bits` its number lies; nothing where it reaches beyond.
struct BitField {
    int shift = 0;
    int width = 0;
};
[[nodiscard]] std::optional<BitField> bitFieldOf(const RegisterDetail& detail, int bits);
// A register of w bits holds 2^w values; eight unsigned bytes are cut to what an int64 can be.
[[nodiscard]] inline std::int64_t minimumOf(const RegisterDetail& detail, int width) {
    return detail.isSigned ? std::numeric_limits<std::int64_t>::min() >> (64 - width) : 0;
}
[[nodiscard]] inline std::int64_t maximumOf(const RegisterDetail& detail, int width) {
    const int magnitude = detail.isSigned ? width - 1 : std::min(width, 63);
    return static_cast<std::int64_t>((std::uint64_t{1} << magnitude) - 1);
}

// A longer register is taken for noise; numbers have at most eight bytes, floats four or eight.
[[nodiscard]] bool isPossibleLength(Kind kind, std::int64_t bytes);

// What a name in a formula stands for.
struct FormulaVariable {
    enum class Member : std::uint8_t { value, minimum, maximum, increment, entry };
    NodeId node = noNode;
    Member member = Member::value;
    NodeId entry = noNode;
};

enum class Slope : std::uint8_t { increasing, decreasing, varying, automatic };

// SwissKnife and Converter with their integer kin.
struct FormulaDetail {
    Slice variables;
    Program read;   // Formula, or FormulaFrom with the argument TO
    Program write;  // FormulaTo with the argument FROM
    Slope slope = Slope::automatic;
    bool isLinear = false;
};

// TextDesc and IntKey: an entry of a configuration ROM.
struct ConfigKeyDetail {
    NodeId rom = noNode;
    std::uint8_t key = 0;
};

struct PortDetail {
    bool swapEndianess = false;
    bool hasChunkId = false;
    bool cacheChunkData = false;
    std::uint64_t chunkId = 0;
    NodeId chunkIdNode = noNode;
};

// What an element says that no row has a place for: texts of formulas, notes of an author.
struct KeptText {
    const char* property = "";
    NodeId node = noNode;
    Slice text, attribute;
};

// Hash index of the names; looked up by text only when a user asks.
class NameIndex {
public:
    void reserve(std::size_t count);
    // The node of that name before, or noNode and `id` takes the place.
    NodeId insert(std::string_view name, NodeId id, std::span<const Node> nodes,
                  const std::string& texts);
    [[nodiscard]] NodeId find(std::string_view name, std::span<const Node> nodes,
                              const std::string& texts) const;

private:
    [[nodiscard]] std::size_t slotOf(std::string_view name, std::span<const Node> nodes,
                                     const std::string& texts) const;
    std::vector<NodeId> slots_;
};

struct Description {
    std::vector<Node> nodes;
    std::vector<NumberDetail> numbers;
    std::vector<BooleanDetail> booleans;
    std::vector<EnumerationDetail> enumerations;
    std::vector<EntryDetail> entries;
    std::vector<CommandDetail> commands;
    std::vector<StringDetail> strings;
    std::vector<RegisterDetail> registers;
    std::vector<NodeId> registerNodes;  // of each register detail, its node
    std::vector<PortDetail> ports;
    std::vector<NodeId> portNodes;
    std::vector<ConfigKeyDetail> configKeys;
    std::vector<FormulaDetail> formulas;
    std::vector<FormulaVariable> variables;
    std::vector<NodeId> polled;
    std::vector<KeptText> keptTexts;  // by node

    std::vector<NodeId> links;  // what the slices of nodes mean, but for names and texts
    std::vector<AddressTerm> terms;
    std::vector<IndexedNumber> indexed;
    std::vector<Number> validValues;
    std::string texts;
    NameIndex names;
    std::uint32_t heldNumbers = 0;
    std::uint32_t heldTexts = 0;

    // Who has to be invalidated when a node is: a slice of `dependantLinks` for each node.
    std::vector<Slice> dependants;
    std::vector<NodeId> dependantLinks;
    // What each node reads, the other way round; for reports.
    std::vector<Slice> providers;
    std::vector<NodeId> providerLinks;

    std::string modelName, vendorName, toolTip, standardNameSpace, productGuid, versionGuid;
    Version_t schemaVersion, deviceVersion;
    LoadReport report;

    Description() = default;
    Description(const Description&) = delete;
    Description& operator=(const Description&) = delete;
    ~Description();

    [[nodiscard]] std::string_view text(Slice s) const {
        return std::string_view(texts).substr(s.begin, s.count);
    }
    [[nodiscard]] std::string_view nameOf(NodeId id) const { return text(nodes[id].name); }
    [[nodiscard]] std::span<const NodeId> list(Slice s) const {
        return std::span(links).subspan(s.begin, s.count);
    }
    [[nodiscard]] NodeId find(std::string_view name) const {
        return names.find(name, nodes, texts);
    }

    [[nodiscard]] std::span<const KeptText> keptOf(NodeId id) const;

    // The node itself and all that an invalidation of it reaches, causes before dependants.
    // Computed on the first use and kept.
    [[nodiscard]] std::span<const NodeId> closure(NodeId id) const;
    // To be called once, when the nodes and their dependants are complete.
    void prepareClosures();
    // Gives back the room that the arrays grew beyond their need; nothing is added afterwards.
    void shrink();

private:
    [[nodiscard]] std::unique_ptr<NodeId[]> computeClosure(NodeId id) const;

    // Each array begins with its length. Whoever stores first wins, so that no lock is needed.
    mutable std::unique_ptr<std::atomic<const NodeId*>[]> closures_;
};

struct KindRow {
    std::string_view element;
    ValueType value;
    bool isRegister;
    bool isFormula;
    EInterfaceType interface;
};

// In the order of Kind.
inline constexpr std::array<KindRow, 23> kindTable = {{
    {"Category", ValueType::none, false, false, intfICategory},
    {"Integer", ValueType::integer, false, false, intfIInteger},
    {"IntReg", ValueType::integer, true, false, intfIInteger},
    {"MaskedIntReg", ValueType::integer, true, false, intfIInteger},
    {"IntSwissKnife", ValueType::integer, false, true, intfIInteger},
    {"IntConverter", ValueType::integer, false, true, intfIInteger},
    {"Float", ValueType::real, false, false, intfIFloat},
    {"FloatReg", ValueType::real, true, false, intfIFloat},
    {"SwissKnife", ValueType::real, false, true, intfIFloat},
    {"Converter", ValueType::real, false, true, intfIFloat},
    {"Boolean", ValueType::integer, false, false, intfIBoolean},
    {"Enumeration", ValueType::integer, false, false, intfIEnumeration},
    {"EnumEntry", ValueType::integer, false, false, intfIEnumEntry},
    {"Command", ValueType::integer, false, false, intfICommand},
    {"String", ValueType::text, false, false, intfIString},
    {"StringReg", ValueType::text, true, false, intfIString},
    {"Register", ValueType::none, true, false, intfIRegister},
    {"Port", ValueType::none, false, false, intfIPort},
    {"ConfRom", ValueType::none, true, false, intfIRegister},
    {"TextDesc", ValueType::text, false, false, intfIString},
    {"IntKey", ValueType::integer, false, false, intfIInteger},
    {"AdvFeatureLock", ValueType::integer, true, false, intfIInteger},
    {"SmartFeature", ValueType::integer, true, false, intfIInteger},
}};

[[nodiscard]] inline const KindRow& rowOf(Kind kind) {
    return kindTable[static_cast<std::size_t>(kind)];
}
[[nodiscard]] inline ValueType valueTypeOf(Kind kind) {
    return rowOf(kind).value;
}
[[nodiscard]] inline bool isRegister(Kind kind) {
    return rowOf(kind).isRegister;
}
[[nodiscard]] inline bool isFormula(Kind kind) {
    return rowOf(kind).isFormula;
}
// The name of the kind's element.
[[nodiscard]] inline std::string_view elementName(Kind kind) {
    return rowOf(kind).element;
}

}  // namespace GenApi::Detail
