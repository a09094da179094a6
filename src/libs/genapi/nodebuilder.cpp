// The part that every node has: texts, rights, links; and the assembly of the finished row. What
// the kinds have of their own is in nodebuilderkinds.cpp.
#include "genapi/nodebuilder.h"

#include <algorithm>
#include <limits>

#include "genapi/numbertext.h"

namespace GenApi::Detail {

void NodeBuilder::Draft::reset() {
    for (auto* list : {&implemented, &available, &locked, &invalidators, &selected, &members,
                       &copiesBefore, &copiesAfter}) {
        list->clear();
    }
    number = {};
    boolean = {};
    entry = {};
    command = {};
    text = {};
    reg = {};
    port = {};
    configKey = {};
    formula = {};
    readText.clear();
    writeText.clear();
    constants.clear();
    expressions.clear();
    variableNames.clear();
    variables.clear();
    terms.clear();
    indexed.clear();
    validValues.clear();
    seen.reset();
    hasEntryValue = hasNumeric = hasBitFirst = hasBitLast = hasEndianess = hasAccess = false;
    broken.clear();
}

void NodeBuilder::build(NodeId id, const PendingNode& pending) {
    id_ = id;
    element_ = pending.element;
    node_ = d_.nodes[id];
    // The pool of the names grows while links are reported.
    name_ = d_.text(node_.name);
    draft_.reset();
    imposedVisibility_ = Beginner;
    if (pending.structRegister) {
        // An element that the entry has itself replaces all of that name of its parent.
        Elements own;
        own.set(static_cast<std::size_t>(Element::StructEntry));
        for (const XmlElement child : pending.element.children()) {
            if (const auto element = elementOf(child.name())) {
                own.set(static_cast<std::size_t>(*element));
            }
        }
        applyChildren(pending.structRegister, own);
        draft_.seen.reset();
    }
    applyChildren(pending.element, {});
    for (std::size_t i = 0; pending.joining != nullptr && i < pending.joining->size(); ++i) {
        Elements allButFeatures;
        allButFeatures.set();
        allButFeatures.reset(static_cast<std::size_t>(Element::pFeature));
        applyChildren((*pending.joining)[i], allButFeatures);
    }
    finish(id, pending);
}

void NodeBuilder::applyChildren(XmlElement element, const Elements& except) {
    for (const XmlElement child : element.children()) {
        const auto known = elementOf(child.name());
        if (!known) {
            context_.drop(child, name_, "The element is unknown.");
            continue;
        }
        const auto number = static_cast<std::size_t>(*known);
        if (except.test(number)) {
            continue;
        }
        if (draft_.seen.test(number) && !isRepeatable(*known)) {
            context_.drop(child, name_, "The element is there once already, which counts.");
            continue;
        }
        draft_.seen.set(number);
        raw_ = child.text(buffer_);
        text_ = trim(raw_);
        if (!applyCommon(*known, child) && !applyKind(*known, child)) {
            context_.drop(child, name_,
                          "The element has no meaning in a node of type '" +
                              std::string(elementName(node_.kind)) + "'.");
        }
    }
}

bool NodeBuilder::applyCommon(Element element, XmlElement child) {
    return applyText(element, child) || applyLink(element, child) || applyDisplay(element, child);
}

bool NodeBuilder::applyText(Element element, XmlElement child) {
    const bool keep = context_.strings == StringPolicy::keepAll;
    switch (element) {
        case Element::DisplayName:
            node_.displayName = context_.store(raw_);
            return true;
        case Element::ToolTip:
            node_.toolTip = keep ? context_.store(raw_) : Slice{};
            return true;
        case Element::Description:
            node_.description = keep ? context_.store(raw_) : Slice{};
            return true;
        case Element::DocuURL:
            node_.documentation = context_.store(text_);
            return true;
        case Element::Unit:
            node_.unit = context_.store(text_);
            return true;
        case Element::Extension:
            return true;
        case Element::EventID:
            if (const auto event = hexId(child)) {
                node_.eventId = *event;
                node_.hasEventId = true;
            }
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyLink(Element element, XmlElement child) {
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

bool NodeBuilder::applyDisplay(Element element, XmlElement child) {
    switch (element) {
        case Element::Visibility:
            word<EVisibility>(child, [&](EVisibility v) { node_.visibility = std::uint8_t(v); });
            return true;
        case Element::ImposedVisibility:
            word<EVisibility>(child, [&](EVisibility v) {
                imposedVisibility_ = std::max(imposedVisibility_, v);
            });
            return true;
        case Element::Representation:
            word<ERepresentation>(
                child, [&](ERepresentation r) { node_.representation = std::uint8_t(r); });
            return true;
        case Element::DisplayNotation:
            word<EDisplayNotation>(child,
                                   [&](EDisplayNotation n) { node_.notation = std::uint8_t(n); });
            return true;
        case Element::DisplayPrecision:
            node_.precision =
                static_cast<std::int16_t>(std::clamp<std::int64_t>(integer(child), 0, 99));
            return true;
        case Element::Streamable:
            word<bool>(child, [&](bool yes) { node_.streamable = yes; });
            return true;
        case Element::IsDeprecated:
            word<bool>(child, [&](bool yes) { node_.deprecated = yes; });
            return true;
        case Element::ImposedAccessMode:
            imposeAccess(child);
            return true;
        case Element::PollingTime:
            node_.pollingTime = std::max<std::int64_t>(integer(child), 0);
            return true;
        default:
            return false;
    }
}

void NodeBuilder::setBroken(const std::string& reason, XmlElement where) {
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

NodeId NodeBuilder::link(XmlElement child, Wanted wanted) {
    const NodeId id = resolve(text_);
    const char* problem = nullptr;
    if (id == noNode) {
        problem = "which is not in the description";
    } else {
        const Kind kind = d_.nodes[id].kind;
        const ValueType type = valueTypeOf(kind);
        if (wanted == Wanted::number && type != ValueType::integer && type != ValueType::real) {
            problem = "which has no number";
        } else if (wanted == Wanted::text && type != ValueType::text) {
            problem = "which has no text";
        } else if (wanted == Wanted::port && kind != Kind::port) {
            problem = "which is no port";
        } else if (wanted == Wanted::configRom && kind != Kind::configRom) {
            problem = "which is no configuration ROM";
        }
    }
    if (problem != nullptr) {
        setBroken(
            "its " + std::string(child.name()) + " names '" + std::string(text_) + "', " + problem,
            child);
        return noNode;
    }
    context_.addRead(id, id_);
    return id;
}

NodeId NodeBuilder::looseLink(XmlElement child) {
    const NodeId id = resolve(text_);
    if (id == noNode) {
        context_.drop(
            child, name_,
            "The link names '" + std::string(text_) + "', which is not in the description.");
    }
    return id;
}

void NodeBuilder::looseLink(XmlElement child, std::vector<NodeId>& list) {
    const NodeId id = looseLink(child);
    if (id != noNode && std::find(list.begin(), list.end(), id) == list.end()) {
        list.push_back(id);
    }
}

std::string NodeBuilder::textIn(XmlElement child) const {
    return "its " + std::string(child.name()) + " '" + std::string(text_) + "'";
}

std::int64_t NodeBuilder::integer(XmlElement child) {
    if (const auto value = parseInteger(text_)) {
        return *value;
    }
    // Some write what is meant as 64 bits without a sign.
    if (const auto bits = parseUnsigned(text_)) {
        context_.warn(child, name_,
                      "'" + std::string(text_) + "' is no signed 64-bit integer; its bits count.");
        return static_cast<std::int64_t>(*bits);
    }
    setBroken(textIn(child) + " is no 64-bit integer", child);
    return 0;
}

Number NodeBuilder::number(XmlElement child) {
    Number result;
    result.given = true;
    if (valueTypeOf(node_.kind) == ValueType::real) {
        const auto value = parseFloat(text_);
        if (!value) {
            setBroken(textIn(child) + " is no finite number", child);
        }
        result.real = value.value_or(0);
        return result;
    }
    result.integer = integer(child);
    result.real = static_cast<double>(result.integer);
    return result;
}

Number NodeBuilder::bound(XmlElement child) {
    const bool isReal = valueTypeOf(node_.kind) == ValueType::real;
    const bool isInside = isReal ? parseFloat(text_).has_value() : parseInteger(text_).has_value();
    const int side = isInside ? 0 : sideOfLargeNumber(text_);
    if (side == 0) {
        return number(child);
    }
    using Integer = std::numeric_limits<std::int64_t>;
    constexpr double largest = std::numeric_limits<double>::max();
    if (!isReal) {
        context_.warn(child, name_,
                      "'" + std::string(text_) + "' is beyond 64-bit integers; their end counts.");
    }
    Number result;
    result.given = true;
    result.integer = side < 0 ? Integer::min() : Integer::max();
    result.real = isReal ? side * largest : static_cast<double>(result.integer);
    return result;
}

std::optional<std::uint64_t> NodeBuilder::hexId(XmlElement child) {
    const auto id = parseHexId(text_);
    if (!id) {
        context_.drop(child, name_, "'" + std::string(text_) + "' is no hexadecimal number.");
    }
    return id;
}

void NodeBuilder::imposeAccess(XmlElement child) {
    word<EAccessMode>(child, [&](EAccessMode mode) { node_.imposedAccess = std::uint8_t(mode); });
}

Number NodeBuilder::linkedNumber(XmlElement child) {
    Number result;
    result.link = link(child, Wanted::number);
    result.given = result.link != noNode;
    return result;
}

void NodeBuilder::keepText(const char* property, std::string_view text,
                           std::string_view attribute) {
    keepText(property, context_.store(text), attribute);
}

void NodeBuilder::keepText(const char* property, Slice text, std::string_view attribute) {
    context_.spend(sizeof(KeptText));
    d_.keptTexts.push_back({property, id_, text, context_.store(attribute)});
}

void NodeBuilder::keepAttributes() {
    for (const char* name : {"MergePriority", "ExposeStatic", "Comment"}) {
        if (const auto value = element_.attribute(name)) {
            keepText(name, trim(*value));
        }
    }
}

void NodeBuilder::finish(NodeId id, const PendingNode& pending) {
    finishDetail(id, pending);
    keepAttributes();
    node_.implemented = context_.store(draft_.implemented);
    node_.available = context_.store(draft_.available);
    node_.locked = context_.store(draft_.locked);
    node_.invalidators = context_.store(draft_.invalidators);
    node_.selected = context_.store(draft_.selected);
    for (std::uint32_t i = 0; i < pending.entryCount; ++i) {
        draft_.members.push_back(pending.firstEntry + i);
    }
    node_.members = context_.store(draft_.members);
    node_.visibility = std::max(node_.visibility, static_cast<std::uint8_t>(imposedVisibility_));
    node_.broken = context_.store(draft_.broken);
    node_.unconditional = draft_.implemented.empty() && draft_.available.empty() &&
                          draft_.locked.empty() && draft_.broken.empty() &&
                          node_.imposedAccess == RW;
    node_.standardNameSpace = pending.element.valueOf("NameSpace") == "Standard";
    if (node_.pollingTime > 0) {
        d_.polled.push_back(id);
    }
    d_.nodes[id] = node_;
}

}  // namespace GenApi::Detail
