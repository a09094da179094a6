// Turns the element of one node into its row in the description. All names are known before the
// first node is built, so links become numbers at once.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/elements.h"
#include "genapi/formulacompiler.h"
#include "genapi/loadcontext.h"

namespace GenApi::Detail {

struct PendingNode {
    pugi::xml_node element;
    pugi::xml_node structRegister;  // the parent of a struct entry
    NodeId enumeration = noNode;    // the owner of an enumeration's entry
    NodeId firstEntry = noNode;     // an enumeration's entries follow each other
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
        bool hasEntryValue = false;
        bool hasNumeric = false;
        bool hasBitFirst = false;
        bool hasBitLast = false;
        bool hasEndianess = false;
        bool hasAccess = false;
        std::string broken;
    };

    void applyChildren(pugi::xml_node element, const std::set<std::string_view>& except);
    void apply(pugi::xml_node child);
    bool applyCommon(Element element, pugi::xml_node child);
    bool applyText(Element element, pugi::xml_node child);
    bool applyLink(Element element, pugi::xml_node child);
    bool applyDisplay(Element element, pugi::xml_node child);
    bool applyKind(Element element, pugi::xml_node child);
    bool applyNumber(Element element, pugi::xml_node child);
    bool applyIndexed(Element element, pugi::xml_node child);
    void applyValidValues(pugi::xml_node child);
    bool applyBoolean(Element element, pugi::xml_node child);
    bool applyEnumeration(Element element, pugi::xml_node child);
    bool applyEntry(Element element, pugi::xml_node child);
    bool applyCommand(Element element, pugi::xml_node child);
    bool applyString(Element element, pugi::xml_node child);
    bool applyRegister(Element element, pugi::xml_node child);
    bool applyAddress(Element element, pugi::xml_node child);
    bool applyLayout(Element element, pugi::xml_node child);
    bool applyPort(Element element, pugi::xml_node child);
    bool applyFormula(Element element, pugi::xml_node child);
    bool applyConverter(Element element, pugi::xml_node child);
    void addVariable(pugi::xml_node child);
    std::optional<std::uint32_t> variableIndex(std::string_view name);
    // The member that a suffix of a name asks for; false for an unknown one.
    bool chooseMember(std::string_view suffix, FormulaVariable& variable) const;

    void finish(NodeId id, const PendingNode& pending);
    void finishDetail(NodeId id, const PendingNode& pending);
    void finishNumber(bool isFloat);
    void finishRegister(NodeId id);
    void finishFormula();
    [[nodiscard]] Program compile(const std::string& text, std::string_view argument);
    void finishEntry(NodeId id, const PendingNode& pending);
    void holdNumber(const Number& value);
    // The node stays in the map but is not available; `where` is the element to blame.
    void setBroken(const std::string& reason, pugi::xml_node where = {});

    // Links. A missing target breaks the node; `follow` links feed the invalidation.
    enum class Wanted { number, text, port, anything };
    [[nodiscard]] NodeId link(pugi::xml_node child, Wanted wanted);
    // Links that may lead nowhere: left out and reported.
    void looseLink(pugi::xml_node child, std::vector<NodeId>& list);
    [[nodiscard]] NodeId looseLink(pugi::xml_node child);
    [[nodiscard]] NodeId resolve(std::string_view name) const;

    // Numbers; text that is none breaks the node.
    [[nodiscard]] std::int64_t integer(pugi::xml_node child);
    [[nodiscard]] Number number(pugi::xml_node child);
    [[nodiscard]] Number linkedNumber(pugi::xml_node child);
    // A word of an enumerated element, handed to `store`; an unknown one costs the element.
    template <typename Value, typename Store>
    void word(pugi::xml_node child, std::optional<Value> value, Store store);

    LoadContext& context_;
    Description& d_;
    NodeId id_ = noNode;
    pugi::xml_node element_;
    Node node_;
    std::string_view name_;
    Draft draft_;
};

template <typename Value, typename Store>
void NodeBuilder::word(pugi::xml_node child, std::optional<Value> value, Store store) {
    const std::string text = textOf(child);
    if (!value) {
        context_.drop(child, name_, "The word '" + text + "' is unknown here.");
        return;
    }
    if constexpr (std::is_same_v<Value, EAccessMode>) {
        if (text == "R" || text == "W" || text == "WR") {
            context_.warn(child, name_, "'" + text + "' is taken for the schema's word.");
        }
    }
    store(*value);
}

}  // namespace GenApi::Detail
