// What nodes with formulas have of their own. All texts are gathered first, since a formula may
// come before the names that it uses.
#include <algorithm>

#include "genapi/nodebuilder.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

bool NodeBuilder::applyFormula(Element element, XmlElement child) {
    if (!takeFormula(element, child)) {
        return false;
    }
    if (context_.strings == StringPolicy::keepAll) {
        keepFormulaText(element, child);
    }
    return true;
}

void NodeBuilder::keepFormulaText(Element element, XmlElement child) {
    const std::string_view name = trim(child.valueOf("Name"));
    switch (element) {
        case Element::pVariable: {
            // The text is the name of a node, which is stored already.
            const NodeId target = resolve(text_);
            return target == noNode ? keepText(nameOf(element), text_, name)
                                    : keepText(nameOf(element), d_.nodes[target].name, name);
        }
        case Element::Constant:
        case Element::Expression:
        case Element::Formula:
        case Element::FormulaFrom:
        case Element::FormulaTo:
        case Element::Input:
        case Element::Output:
            return keepText(nameOf(element), text_, name);
        default:
            return;
    }
}

bool NodeBuilder::takeFormula(Element element, XmlElement child) {
    switch (element) {
        case Element::pVariable:
            addVariable(child);
            return true;
        case Element::Constant:
            draft_.constants.push_back(
                {std::string(trim(child.valueOf("Name"))), std::string(text_)});
            return true;
        case Element::Expression:
            draft_.expressions.push_back(
                {std::string(trim(child.valueOf("Name"))), std::string(text_)});
            return true;
        // Notes of an author to its tools.
        case Element::Input:
        case Element::Output:
            return true;
        default:
            break;
    }
    const bool isConverter = node_.kind == Kind::converter || node_.kind == Kind::intConverter;
    if (isConverter) {
        return applyConverter(element, child);
    }
    if (element == Element::Formula) {
        draft_.readText = text_;
        return true;
    }
    return false;
}

bool NodeBuilder::applyConverter(Element element, XmlElement child) {
    switch (element) {
        case Element::FormulaFrom:
            draft_.readText = text_;
            return true;
        case Element::FormulaTo:
            draft_.writeText = text_;
            return true;
        case Element::pValue:
            node_.value = link(child, Wanted::number);
            return true;
        case Element::Slope:
            word<Slope>(child, [&](Slope slope) { draft_.formula.slope = slope; });
            return true;
        case Element::IsLinear:
            word<bool>(child, [&](bool yes) { draft_.formula.isLinear = yes; });
            return true;
        default:
            return false;
    }
}

void NodeBuilder::addVariable(XmlElement child) {
    FormulaVariable variable;
    variable.node = link(child, Wanted::number);
    const std::string name(trim(child.valueOf("Name")));
    const std::size_t dot = name.find('.');
    if (name.empty()) {
        setBroken("a variable of its formula has no name", child);
    } else if (variable.node != noNode && dot != std::string::npos) {
        // A dot that leads to no member is part of the name.
        chooseMember(std::string_view(name).substr(dot + 1), variable);
    }
    draft_.variableNames.push_back(name);
    draft_.variables.push_back(variable);
}

// Of "Entry.NAME" or, as some write, "Enum.NAME".
NodeId NodeBuilder::entryOf(NodeId enumeration, std::string_view suffix) const {
    const std::size_t dot = suffix.find('.');
    const std::string_view word = suffix.substr(0, dot);
    if (dot == std::string_view::npos || (word != "Entry" && word != "Enum")) {
        return noNode;
    }
    const NodeId entry = d_.find("EnumEntry_" + std::string(d_.nameOf(enumeration)) + "_" +
                                 std::string(suffix.substr(dot + 1)));
    // Another node may have taken the name.
    return entry != noNode && d_.nodes[entry].kind == Kind::enumEntry ? entry : noNode;
}

bool NodeBuilder::chooseMember(std::string_view suffix, FormulaVariable& variable) const {
    using Member = FormulaVariable::Member;
    if (suffix == "Value") {
        variable.member = Member::value;
    } else if (suffix == "Min") {
        variable.member = Member::minimum;
    } else if (suffix == "Max") {
        variable.member = Member::maximum;
    } else if (suffix == "Inc") {
        variable.member = Member::increment;
    } else if (const NodeId entry = entryOf(variable.node, suffix); entry != noNode) {
        variable.member = Member::entry;
        variable.entry = entry;
    } else {
        return false;
    }
    return true;
}

std::optional<std::uint32_t> NodeBuilder::variableIndex(std::string_view name) {
    const auto& names = draft_.variableNames;
    const auto indexOf = [&](std::string_view wanted) -> std::optional<std::uint32_t> {
        const auto place = std::find(names.begin(), names.end(), wanted);
        return place == names.end()
                   ? std::nullopt
                   : std::optional(static_cast<std::uint32_t>(place - names.begin()));
    };
    if (const auto exact = indexOf(name)) {
        return exact;
    }
    // A member may also be asked for where a variable is used.
    const std::size_t dot = name.find('.');
    const auto base = dot == std::string_view::npos ? std::nullopt : indexOf(name.substr(0, dot));
    if (!base) {
        return std::nullopt;
    }
    FormulaVariable variable = draft_.variables[*base];
    if (variable.node == noNode || !chooseMember(name.substr(dot + 1), variable)) {
        return std::nullopt;
    }
    draft_.variables.push_back(variable);
    draft_.variableNames.emplace_back(name);
    return static_cast<std::uint32_t>(draft_.variables.size() - 1);
}

Program NodeBuilder::compile(const std::string& text, std::string_view argument) {
    const bool isReal = valueTypeOf(node_.kind) == ValueType::real;
    const FormulaScope scope{[this](std::string_view name) { return variableIndex(name); },
                             argument, &draft_.constants, &draft_.expressions};
    CompiledFormula result =
        compileFormula(text, isReal ? Arithmetic::real : Arithmetic::integer, scope);
    if (!result.error.empty()) {
        setBroken("its formula '" + text.substr(0, 100) + "' is wrong: " + result.error);
    }
    context_.spend(result.program.code.size() * sizeof(Instruction));
    return std::move(result.program);
}

void NodeBuilder::finishFormula() {
    FormulaDetail& detail = draft_.formula;
    const bool isConverter = node_.kind == Kind::converter || node_.kind == Kind::intConverter;
    if (draft_.readText.empty()) {
        setBroken(isConverter ? "it has no FormulaFrom" : "it has no Formula");
    } else {
        detail.read = compile(draft_.readText, isConverter ? "TO" : "");
    }
    if (isConverter && node_.value == noNode) {
        setBroken("it has no pValue");
    }
    if (!draft_.writeText.empty()) {
        detail.write = compile(draft_.writeText, "FROM");
    }
    detail.variables = {static_cast<std::uint32_t>(d_.variables.size()),
                        static_cast<std::uint32_t>(draft_.variables.size())};
    d_.variables.insert(d_.variables.end(), draft_.variables.begin(), draft_.variables.end());
    node_.detail = static_cast<std::uint32_t>(d_.formulas.size());
    d_.formulas.push_back(std::move(detail));
}

}  // namespace GenApi::Detail
