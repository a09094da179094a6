// Turns the element of one node into its row in the description. All names are known before the
// first node is built, so links become numbers at once.
#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/elements.h"
#include "genapi/formulacompiler.h"
#include "genapi/loadcontext.h"

namespace GenApi::Detail {

struct PendingNode {
    XmlElement element;
    XmlElement structRegister;                         // the parent of a struct entry
    const std::vector<XmlElement>* joining = nullptr;  // categories that are merged into this one
    NodeId owner = noNode;       // the enumeration of an entry, the configuration ROM of a key
    NodeId firstEntry = noNode;  // an enumeration's entries follow each other
    std::uint32_t entryCount = 0;
};

// One load, one thread.
class NodeBuilder {
public:
    explicit NodeBuilder(LoadContext& context) : context_(context), d_(context.description) {}

    void build(NodeId id, const PendingNode& pending);

private:
    // What is gathered of one node until its lists can be stored in one piece each.
    struct Draft {
        NumberDetail number;
        BooleanDetail boolean;
        EntryDetail entry;
        CommandDetail command;
        StringDetail text;
        RegisterDetail reg;
        PortDetail port;
        ConfigKeyDetail configKey;
        std::vector<NodeId> implemented, available, locked, invalidators, selected, members;
        std::vector<NodeId> copiesBefore, copiesAfter;
        FormulaDetail formula;
        std::string readText, writeText;
        std::vector<NamedText> constants, expressions;
        std::vector<std::string> variableNames;
        std::vector<FormulaVariable> variables;
        std::vector<AddressTerm> terms;
        std::vector<IndexedNumber> indexed;
        std::vector<Number> validValues;
        std::bitset<elementCount> seen;
        bool hasEntryValue = false;
        bool hasNumeric = false;
        bool hasBitFirst = false;
        bool hasBitLast = false;
        bool hasEndianess = false;
        bool hasAccess = false;
        std::string broken;

        // As new, but for the memory of its lists.
        void reset();
    };

    using Elements = std::bitset<elementCount>;
    void applyChildren(XmlElement element, const Elements& except);
    void apply(XmlElement child);
    bool applyCommon(Element element, XmlElement child);
    bool applyText(Element element, XmlElement child);
    bool applyLink(Element element, XmlElement child);
    bool applyDisplay(Element element, XmlElement child);
    bool applyKind(Element element, XmlElement child);
    bool applyNumber(Element element, XmlElement child);
    bool applyIndexed(Element element, XmlElement child);
    void applyValidValues(XmlElement child);
    bool applyBoolean(Element element, XmlElement child);
    bool applyValue(Element element, XmlElement child, Number& value);
    bool applyEntry(Element element, XmlElement child);
    bool applyCommand(Element element, XmlElement child);
    bool applyString(Element element, XmlElement child);
    bool applyRegister(Element element, XmlElement child);
    bool applyAddress(Element element, XmlElement child);
    bool applyLayout(Element element, XmlElement child);
    bool applyPort(Element element, XmlElement child);
    bool applyFormula(Element element, XmlElement child);
    bool takeFormula(Element element, XmlElement child);
    bool applyConverter(Element element, XmlElement child);
    bool applyConfigKey(Element element, XmlElement child);
    void addVariable(XmlElement child);
    std::optional<std::uint32_t> variableIndex(std::string_view name);
    [[nodiscard]] NodeId entryOf(NodeId enumeration, std::string_view suffix) const;
    // The member that a suffix of a name asks for; false for an unknown one.
    bool chooseMember(std::string_view suffix, FormulaVariable& variable) const;

    void finish(NodeId id, const PendingNode& pending);
    // For INode::GetProperty only.
    void keepText(const char* property, std::string_view text, std::string_view attribute = {});
    void keepText(const char* property, Slice text, std::string_view attribute);
    void keepAttributes();
    void keepFormulaText(Element element, XmlElement child);
    void finishDetail(NodeId id, const PendingNode& pending);
    void finishNumber(bool isFloat);
    [[nodiscard]] bool hasFixedRange() const;
    void finishRegister(NodeId id);
    void finishFormula();
    void finishConfigKey(const PendingNode& pending);
    [[nodiscard]] Program compile(const std::string& text, std::string_view argument);
    void finishEntry(NodeId id, const PendingNode& pending);
    void holdNumber(const Number& value);
    // The node stays in the map but is not available; `where` is the element to blame.
    void setBroken(const std::string& reason, XmlElement where = {});

    // Links. A missing target breaks the node; `follow` links feed the invalidation.
    enum class Wanted { number, text, port, configRom };
    [[nodiscard]] NodeId link(XmlElement child, Wanted wanted);
    // Links that may lead nowhere: left out and reported.
    void looseLink(XmlElement child, std::vector<NodeId>& list);
    [[nodiscard]] NodeId looseLink(XmlElement child);
    [[nodiscard]] NodeId resolve(std::string_view name) const;

    // Numbers; text that is none breaks the node. Bounds beyond what a number can be are its ends.
    [[nodiscard]] std::int64_t integer(XmlElement child);
    [[nodiscard]] Number number(XmlElement child);
    [[nodiscard]] Number bound(XmlElement child);
    [[nodiscard]] std::string textIn(XmlElement child) const;
    [[nodiscard]] Number linkedNumber(XmlElement child);
    // An identifier in hexadecimal; what is none costs the element.
    [[nodiscard]] std::optional<std::uint64_t> hexId(XmlElement child);
    void imposeAccess(XmlElement child);
    // A word of an enumerated element, handed to `store`; an unknown one costs the element.
    template <typename Value, typename Store>
    void word(XmlElement child, Store store);

    LoadContext& context_;
    Description& d_;
    NodeId id_ = noNode;
    XmlElement element_;
    // Of the child that is being applied: its text, and that without white space at its ends.
    std::string buffer_;
    std::string_view raw_, text_;
    Node node_;
    EVisibility imposedVisibility_ = Beginner;
    std::string name_;
    Draft draft_;
};

template <typename Value, typename Store>
void NodeBuilder::word(XmlElement child, Store store) {
    const auto value = valueOfWord<Value>(text_);
    if (!value) {
        context_.drop(child, name_, "The word '" + std::string(text_) + "' is unknown here.");
        return;
    }
    if constexpr (std::is_same_v<Value, EAccessMode>) {
        if (text_ == "R" || text_ == "W" || text_ == "WR") {
            context_.warn(child, name_,
                          "'" + std::string(text_) + "' is taken for the schema's word.");
        }
    }
    store(*value);
}

}  // namespace GenApi::Detail
