// The part that every node has: texts, rights, links; and the assembly of the finished row. What
// the kinds have of their own is in nodebuilderkinds.cpp.
#include "genapi/nodebuilder.h"

#include <algorithm>
#include <limits>

#include "genapi/numbertext.h"

namespace GenApi::Detail {

void NodeBuilder::build(NodeId id, const PendingNode& pending) {
    id_ = id;
    element_ = pending.element;
    node_ = d_.nodes[id];
    // A copy of the name may not hang on the pool, which grows while links are reported.
    const std::string name(d_.text(node_.name));
    name_ = name;
    draft_ = Draft{};
    if (pending.structRegister) {
        // An element that the entry has itself replaces all of that name of its parent.
        std::set<std::string_view> own = {"StructEntry"};
        for (const pugi::xml_node child : pending.element.children()) {
            own.insert(child.name());
        }
        applyChildren(pending.structRegister, own);
    }
    applyChildren(pending.element, {});
    finish(id, pending);
    name_ = {};
}

void NodeBuilder::applyChildren(pugi::xml_node element, const std::set<std::string_view>& except) {
    for (const pugi::xml_node child : element.children()) {
        if (child.type() == pugi::node_element && except.count(child.name()) == 0) {
            apply(child);
        }
    }
}

void NodeBuilder::apply(pugi::xml_node child) {
    const auto element = elementOf(child.name());
    if (!element) {
        context_.drop(child, name_, "The element is unknown.");
        return;
    }
    if (!applyCommon(*element, child) && !applyKind(*element, child)) {
        context_.drop(child, name_,
                      "The element has no meaning in a node of type '" +
                          std::string(elementName(node_.kind)) + "'.");
    }
}

bool NodeBuilder::applyCommon(Element element, pugi::xml_node child) {
    return applyText(element, child) || applyLink(element, child) || applyDisplay(element, child);
}

bool NodeBuilder::applyText(Element element, pugi::xml_node child) {
    const bool keep = context_.strings == StringPolicy::keepAll;
    switch (element) {
        case Element::DisplayName:
            node_.displayName = context_.store(rawTextOf(child));
            return true;
        case Element::ToolTip:
            node_.toolTip = keep ? context_.store(rawTextOf(child)) : Slice{};
            return true;
        case Element::Description:
            node_.description = keep ? context_.store(rawTextOf(child)) : Slice{};
            return true;
        case Element::DocuURL:
            node_.documentation = context_.store(textOf(child));
            return true;
        case Element::Unit:
            node_.unit = context_.store(textOf(child));
            return true;
        case Element::Extension:
            return true;
        case Element::EventID:
            if (const auto event = parseHex(textOf(child))) {
                node_.eventId = *event;
                node_.hasEventId = true;
            } else {
                context_.drop(child, name_, "'" + textOf(child) + "' is no hexadecimal number.");
            }
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyLink(Element element, pugi::xml_node child) {
    const auto condition = [&](std::vector<NodeId>& list) {
        const NodeId target = link(child, Wanted::number);
        if (target != noNode) {
            list.push_back(target);
        }
        return true;
    };
    switch (element) {
        case Element::pIsImplemented:
            return condition(draft_.implemented);
        case Element::pIsAvailable:
            return condition(draft_.available);
        case Element::pIsLocked:
            return condition(draft_.locked);
        case Element::pInvalidator:
            looseLink(child, draft_.invalidators);
            return true;
        case Element::pSelected:
            looseLink(child, draft_.selected);
            return true;
        case Element::pAlias:
            node_.alias = looseLink(child);
            return true;
        case Element::pCastAlias:
            node_.castAlias = looseLink(child);
            return true;
        case Element::pError:
            node_.error = looseLink(child);
            return true;
        case Element::pBlockPolling:
            node_.blockPolling = looseLink(child);
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyDisplay(Element element, pugi::xml_node child) {
    const std::string text = textOf(child);
    switch (element) {
        case Element::Visibility:
            word(child, visibilityOf(text),
                 [&](EVisibility v) { node_.visibility = std::uint8_t(v); });
            return true;
        case Element::ImposedVisibility:
            return true;
        case Element::Representation:
            word(child, representationOf(text),
                 [&](ERepresentation r) { node_.representation = std::uint8_t(r); });
            return true;
        case Element::DisplayNotation:
            word(child, notationOf(text),
                 [&](EDisplayNotation n) { node_.notation = std::uint8_t(n); });
            return true;
        case Element::DisplayPrecision:
            node_.precision =
                static_cast<std::int16_t>(std::clamp<std::int64_t>(integer(child), 0, 99));
            return true;
        case Element::Streamable:
            word(child, yesNoOf(text), [&](bool yes) { node_.streamable = yes; });
            return true;
        case Element::IsDeprecated:
            word(child, yesNoOf(text), [&](bool yes) { node_.deprecated = yes; });
            return true;
        case Element::ImposedAccessMode:
            word(child, accessModeOf(text),
                 [&](EAccessMode m) { node_.imposedAccess = std::uint8_t(m); });
            return true;
        case Element::PollingTime:
            node_.pollingTime = std::max<std::int64_t>(integer(child), 0);
            return true;
        default:
            return false;
    }
}

void NodeBuilder::setBroken(const std::string& reason, pugi::xml_node where) {
    context_.drop(where ? where : element_, name_, "The node is not available: " + reason + ".");
    // The first cause is the one to tell at an access.
    if (draft_.broken.empty()) {
        draft_.broken = reason;
    }
}

NodeId NodeBuilder::resolve(std::string_view name) const {
    for (const std::string_view prefix : {"Std::", "Cust::"}) {
        if (name.substr(0, prefix.size()) == prefix) {
            name.remove_prefix(prefix.size());
        }
    }
    return d_.find(name);
}

NodeId NodeBuilder::link(pugi::xml_node child, Wanted wanted) {
    const std::string target = textOf(child);
    const NodeId id = resolve(target);
    const std::string what = "its " + std::string(child.name()) + " names '" + target + "', ";
    std::string problem;
    if (id == noNode) {
        problem = what + "which is not in the description";
    } else {
        const Kind kind = d_.nodes[id].kind;
        const ValueType type = valueTypeOf(kind);
        if (wanted == Wanted::number && type != ValueType::integer && type != ValueType::real) {
            problem = what + "which has no number";
        } else if (wanted == Wanted::text && type != ValueType::text) {
            problem = what + "which has no text";
        } else if (wanted == Wanted::port && kind != Kind::port) {
            problem = what + "which is no port";
        }
    }
    if (!problem.empty()) {
        setBroken(problem, child);
        return noNode;
    }
    context_.reads.push_back({id, id_});
    return id;
}

NodeId NodeBuilder::looseLink(pugi::xml_node child) {
    const std::string target = textOf(child);
    const NodeId id = resolve(target);
    if (id == noNode) {
        context_.drop(child, name_,
                      "The link names '" + target + "', which is not in the description.");
    }
    return id;
}

void NodeBuilder::looseLink(pugi::xml_node child, std::vector<NodeId>& list) {
    const NodeId id = looseLink(child);
    if (id != noNode && std::find(list.begin(), list.end(), id) == list.end()) {
        list.push_back(id);
    }
}

std::int64_t NodeBuilder::integer(pugi::xml_node child) {
    const std::string text = textOf(child);
    const auto value = parseInteger(text);
    if (!value) {
        const std::string problem =
            "its " + std::string(child.name()) + " '" + text + "' is no 64-bit integer";
        setBroken(problem, child);
    }
    return value.value_or(0);
}

Number NodeBuilder::number(pugi::xml_node child) {
    Number result;
    result.given = true;
    if (valueTypeOf(node_.kind) == ValueType::real) {
        const std::string text = textOf(child);
        const auto value = parseFloat(text);
        if (!value) {
            const std::string problem =
                "its " + std::string(child.name()) + " '" + text + "' is no finite number";
            setBroken(problem, child);
        }
        result.real = value.value_or(0);
        return result;
    }
    result.integer = integer(child);
    result.real = static_cast<double>(result.integer);
    return result;
}

Number NodeBuilder::linkedNumber(pugi::xml_node child) {
    Number result;
    result.link = link(child, Wanted::number);
    result.given = result.link != noNode;
    return result;
}

void NodeBuilder::finish(NodeId id, const PendingNode& pending) {
    finishDetail(id, pending);
    node_.implemented = context_.store(draft_.implemented);
    node_.available = context_.store(draft_.available);
    node_.locked = context_.store(draft_.locked);
    node_.invalidators = context_.store(draft_.invalidators);
    node_.selected = context_.store(draft_.selected);
    for (std::uint32_t i = 0; i < pending.entryCount; ++i) {
        draft_.members.push_back(pending.firstEntry + i);
    }
    node_.members = context_.store(draft_.members);
    node_.broken = context_.store(draft_.broken);
    node_.unconditional = draft_.implemented.empty() && draft_.available.empty() &&
                          draft_.locked.empty() && draft_.broken.empty() &&
                          node_.imposedAccess == RW;
    node_.standardNameSpace =
        std::string_view(pending.element.attribute("NameSpace").value()) == "Standard";
    if (node_.pollingTime > 0) {
        d_.polled.push_back(id);
    }
    d_.nodes[id] = node_;
}

}  // namespace GenApi::Detail
