#include "genapi/properties.h"

#include <array>
#include <charconv>

#include "genapi/elements.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

std::string hexadecimal(std::uint64_t value) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return {digits.data(), end.ptr};
}

// Gathers the properties of one node. A link is the name of its target.
class PropertyList {
public:
    PropertyList(const Description& description, NodeId id)
        : d_(description), node_(description.nodes[id]), id_(id) {}

    std::vector<Property> gather() {
        addNames();
        addTexts();
        addRights();
        addShown();
        addLink("pValue", node_.value);
        addKind();
        addKept();
        return std::move(list_);
    }

private:
    void add(std::string_view name, std::string value, std::string attribute = {}) {
        list_.push_back({name, std::move(value), std::move(attribute)});
    }
    void addText(std::string_view name, Slice text) {
        if (text.count != 0) {
            add(name, std::string(d_.text(text)));
        }
    }
    void addLink(std::string_view name, NodeId target, std::string attribute = {}) {
        if (target != noNode) {
            add(name, std::string(d_.nameOf(target)), std::move(attribute));
        }
    }
    void addLinks(std::string_view name, Slice targets) {
        for (const NodeId target : d_.list(targets)) {
            addLink(name, target);
        }
    }
    template <typename Value>
    void addWord(std::string_view name, Value value) {
        if (const std::string_view word = wordOf(value); !word.empty()) {
            add(name, std::string(word));
        }
    }
    void addInteger(std::string_view name, std::int64_t value) { add(name, std::to_string(value)); }
    [[nodiscard]] std::string textOf(const Number& number) const {
        return valueTypeOf(node_.kind) == ValueType::real ? formatFloatExactly(number.real)
                                                          : std::to_string(number.integer);
    }
    // The number itself or the link to it, whichever is there.
    void addNumber(std::string_view name, std::string_view linkName, const Number& number,
                   const std::string& attribute = {}) {
        if (number.link != noNode) {
            addLink(linkName, number.link, attribute);
        } else if (number.given) {
            add(name, textOf(number), attribute);
        }
    }

    void addNames() {
        if (node_.name.count != 0) {
            addText("Name", node_.name);
            addWord("NameSpace", node_.standardNameSpace ? Standard : Custom);
        }
    }

    void addTexts() {
        addText("ToolTip", node_.toolTip);
        addText("Description", node_.description);
        addText("DisplayName", node_.displayName);
        addText("DocuURL", node_.documentation);
        addText("Unit", node_.unit);
    }

    void addRights() {
        addWord("Visibility", static_cast<EVisibility>(node_.visibility));
        addWord("IsDeprecated", node_.deprecated);
        addWord("Streamable", node_.streamable);
        if (node_.hasEventId) {
            add("EventID", hexadecimal(node_.eventId));
        }
        addLinks("pIsImplemented", node_.implemented);
        addLinks("pIsAvailable", node_.available);
        addLinks("pIsLocked", node_.locked);
        if (node_.imposedAccess != RW) {
            addWord("ImposedAccessMode", static_cast<EAccessMode>(node_.imposedAccess));
        }
        addLink("pError", node_.error);
        addLink("pAlias", node_.alias);
        addLink("pCastAlias", node_.castAlias);
        addLinks("pInvalidator", node_.invalidators);
        addLinks("pSelected", node_.selected);
        if (node_.pollingTime >= 0) {
            addInteger("PollingTime", node_.pollingTime);
        }
        addLink("pBlockPolling", node_.blockPolling);
    }

    void addShown() {
        addWord("Representation", static_cast<ERepresentation>(node_.representation));
        addWord("DisplayNotation", static_cast<EDisplayNotation>(node_.notation));
        if (node_.precision >= 0) {
            addInteger("DisplayPrecision", node_.precision);
        }
    }

    void addKind() {
        switch (node_.kind) {
            case Kind::category:
                return addLinks("pFeature", node_.members);
            case Kind::integer:
            case Kind::floating:
                return addNumberNode(d_.numbers[node_.detail]);
            case Kind::boolean:
                return addBoolean(d_.booleans[node_.detail]);
            case Kind::enumeration:
                addNumber("Value", "pValue", d_.enumerations[node_.detail].value);
                return addLinks("EnumEntry", node_.members);
            case Kind::enumEntry:
                return addEntry(d_.entries[node_.detail]);
            case Kind::command: {
                const CommandDetail& detail = d_.commands[node_.detail];
                addNumber("Value", "pValue", detail.value);
                return addNumber("CommandValue", "pCommandValue", detail.command);
            }
            case Kind::string:
                return addText("Value", d_.strings[node_.detail].value);
            case Kind::port:
                return addPort(d_.ports[node_.detail]);
            case Kind::configText:
            case Kind::configInteger: {
                const ConfigKeyDetail& detail = d_.configKeys[node_.detail];
                addLink("p1212Parser", detail.rom);
                return add("Key", hexadecimal(detail.key));
            }
            default:
                return isRegister(node_.kind) ? addRegister(d_.registers[node_.detail])
                                              : addFormula(d_.formulas[node_.detail]);
        }
    }

    void addNumberNode(const NumberDetail& detail) {
        addNumber("Value", "pValue", detail.value);
        addLinks("pValueCopy", detail.copiesBefore);
        addLinks("pValueCopy", detail.copiesAfter);
        addNumber("Min", "pMin", detail.minimum);
        addNumber("Max", "pMax", detail.maximum);
        addNumber("Inc", "pInc", detail.increment);
        std::string valid;
        for (std::uint32_t i = 0; i < detail.validValues.count; ++i) {
            valid += (i == 0 ? "" : ";") + textOf(d_.validValues[detail.validValues.begin + i]);
        }
        if (!valid.empty()) {
            add("ValidValueSet", valid);
        }
        addLink("pIndex", detail.index);
        for (std::uint32_t i = 0; i < detail.table.count; ++i) {
            const IndexedNumber& row = d_.indexed[detail.table.begin + i];
            addNumber("ValueIndexed", "pValueIndexed", row.value, std::to_string(row.index));
        }
        addNumber("ValueDefault", "pValueDefault", detail.fallback);
    }

    void addBoolean(const BooleanDetail& detail) {
        addNumber("Value", "pValue", detail.value);
        addInteger("OnValue", detail.on);
        addInteger("OffValue", detail.off);
    }

    void addEntry(const EntryDetail& detail) {
        addInteger("Value", detail.value);
        add("NumericValue", formatFloatExactly(detail.numeric));
        addText("Symbolic", detail.symbolic);
        addWord("IsSelfClearing", detail.selfClearing);
    }

    void addPort(const PortDetail& detail) {
        addWord("SwapEndianess", detail.swapEndianess);
        if (detail.hasChunkId) {
            add("ChunkID", hexadecimal(detail.chunkId));
        }
        addLink("pChunkID", detail.chunkIdNode);
        addWord("CacheChunkData", detail.cacheChunkData);
    }

    void addRegister(const RegisterDetail& detail) {
        addInteger("Address", detail.base);
        for (std::uint32_t i = 0; i < detail.terms.count; ++i) {
            addTerm(d_.terms[detail.terms.begin + i]);
        }
        if (detail.length.link != noNode) {
            addLink("pLength", detail.length.link);
        } else if (detail.length.given) {
            addInteger("Length", detail.length.integer);
        }
        addWord("AccessMode", static_cast<EAccessMode>(detail.access));
        addWord("Cachable", static_cast<ECachingMode>(detail.caching));
        addLink("pPort", detail.port);
        if (valueTypeOf(node_.kind) == ValueType::integer) {
            addWord("Sign", detail.isSigned ? Signed : Unsigned);
        }
        if (valueTypeOf(node_.kind) != ValueType::text) {
            addWord("Endianess", detail.bigEndian ? BigEndian : LittleEndian);
        }
        if (detail.hasBits) {
            addInteger("LSB", detail.lsb);
            addInteger("MSB", detail.msb);
        }
    }

    // The formula of an address may have no name; it then counts as its text.
    void addTerm(const AddressTerm& term) {
        using Scale = AddressTerm::Scale;
        if (term.scale == Scale::one) {
            const bool isInline = d_.nodes[term.node].name.count == 0;
            addLink(isInline ? "IntSwissKnife" : "pAddress", term.node);
            if (isInline) {
                list_.back().value = formulaOf(term.node);
            }
            return;
        }
        std::string offset;
        if (term.scale == Scale::constant) {
            offset = std::to_string(term.offset);
        } else if (term.offsetNode != noNode) {
            offset = d_.nameOf(term.offsetNode);
        }
        addLink("pIndex", term.node, offset);
    }

    void addFormula(const FormulaDetail& detail) {
        if (node_.kind == Kind::converter || node_.kind == Kind::intConverter) {
            addWord("Slope", detail.slope);
            addWord("IsLinear", detail.isLinear);
        }
    }

    void addKept() {
        for (const KeptText& kept : d_.keptOf(id_)) {
            add(kept.property, std::string(d_.text(kept.text)),
                std::string(d_.text(kept.attribute)));
        }
    }

    [[nodiscard]] std::string formulaOf(NodeId knife) const {
        for (const KeptText& kept : d_.keptOf(knife)) {
            if (std::string_view(kept.property) == "Formula") {
                return std::string(d_.text(kept.text));
            }
        }
        return {};
    }

    const Description& d_;
    const Node& node_;
    NodeId id_;
    std::vector<Property> list_;
};

}  // namespace

std::vector<Property> propertiesOf(const Description& description, NodeId id) {
    return PropertyList(description, id).gather();
}

}  // namespace GenApi::Detail
