// What the kinds of nodes have of their own: values, ranges, entries. Registers and formulas have
// files of their own.
#include <algorithm>

#include "genapi/nodebuilder.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

template <typename Detail>
std::uint32_t append(std::vector<Detail>& details, const Detail& detail) {
    details.push_back(detail);
    return static_cast<std::uint32_t>(details.size() - 1);
}

}  // namespace

bool NodeBuilder::applyKind(Element element, XmlElement child) {
    switch (node_.kind) {
        case Kind::integer:
        case Kind::floating:
            return applyNumber(element, child);
        case Kind::boolean:
            return applyBoolean(element, child);
        case Kind::enumeration:
            // Its entries are nodes of their own.
            return element == Element::EnumEntry || applyValue(element, child, draft_.number.value);
        case Kind::enumEntry:
            return applyEntry(element, child);
        case Kind::command:
            return applyCommand(element, child);
        case Kind::string:
            return applyString(element, child);
        case Kind::port:
            return applyPort(element, child);
        case Kind::configText:
        case Kind::configInteger:
            return applyConfigKey(element, child);
        case Kind::category:
            if (element == Element::pFeature) {
                looseLink(child, draft_.members);
                return true;
            }
            return false;
        default:
            return isFormula(node_.kind) ? applyFormula(element, child)
                                         : applyRegister(element, child);
    }
}

// A number of the node's own, or the node that has it.
bool NodeBuilder::applyValue(Element element, XmlElement child, Number& value) {
    switch (element) {
        case Element::Value:
            value = number(child);
            return true;
        case Element::pValue:
            node_.value = link(child, Wanted::number);
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyNumber(Element element, XmlElement child) {
    NumberDetail& detail = draft_.number;
    switch (element) {
        case Element::Min:
            detail.minimum = bound(child);
            return true;
        case Element::pMin:
            detail.minimum = linkedNumber(child);
            return true;
        case Element::Max:
            detail.maximum = bound(child);
            return true;
        case Element::pMax:
            detail.maximum = linkedNumber(child);
            return true;
        case Element::Inc:
            detail.increment = number(child);
            return true;
        case Element::pInc:
            detail.increment = linkedNumber(child);
            return true;
        case Element::pValueCopy: {
            const NodeId copy = link(child, Wanted::number);
            auto& list = node_.value == noNode ? draft_.copiesBefore : draft_.copiesAfter;
            if (copy != noNode) {
                list.push_back(copy);
            }
            return true;
        }
        case Element::AccessMode:
            imposeAccess(child);
            return true;
        default:
            return applyIndexed(element, child) || applyValue(element, child, detail.value);
    }
}

bool NodeBuilder::applyIndexed(Element element, XmlElement child) {
    NumberDetail& detail = draft_.number;
    const auto add = [&](const Number& value) {
        const auto index = parseInteger(child.valueOf("Index"));
        if (!index) {
            context_.drop(child, name_, "The attribute 'Index' is no integer.");
            return;
        }
        draft_.indexed.push_back({*index, value});
    };
    switch (element) {
        case Element::pIndex:
            detail.index = link(child, Wanted::number);
            return true;
        case Element::ValidValueSet:
            applyValidValues(child);
            return true;
        case Element::ValueIndexed:
            add(number(child));
            return true;
        case Element::pValueIndexed:
            add(linkedNumber(child));
            return true;
        case Element::ValueDefault:
            detail.fallback = number(child);
            return true;
        case Element::pValueDefault:
            detail.fallback = linkedNumber(child);
            return true;
        default:
            return false;
    }
}

// Numbers between semicolons.
void NodeBuilder::applyValidValues(XmlElement child) {
    for (std::size_t begin = 0; begin < text_.size();) {
        const std::size_t end = std::min(text_.find(';', begin), text_.size());
        const std::string_view part = trim(text_.substr(begin, end - begin));
        begin = end + 1;
        if (part.empty()) {
            continue;
        }
        const auto whole = parseInteger(part);
        const auto real = parseFloat(part);
        if (!real || (node_.kind == Kind::integer && !whole)) {
            setBroken("its valid value '" + std::string(part) + "' is no number", child);
            return;
        }
        draft_.validValues.push_back({noNode, true, whole.value_or(0), *real});
    }
    const bool isReal = node_.kind == Kind::floating;
    std::sort(draft_.validValues.begin(), draft_.validValues.end(),
              [isReal](const Number& a, const Number& b) {
                  return isReal ? a.real < b.real : a.integer < b.integer;
              });
}

bool NodeBuilder::applyBoolean(Element element, XmlElement child) {
    switch (element) {
        case Element::Value:
            // Some write the words where a number is due.
            if (text_ == "true" || text_ == "false") {
                text_ = text_ == "true" ? "1" : "0";
            }
            return applyValue(element, child, draft_.boolean.value);
        case Element::OnValue:
            draft_.boolean.on = integer(child);
            return true;
        case Element::OffValue:
            draft_.boolean.off = integer(child);
            return true;
        default:
            return applyValue(element, child, draft_.boolean.value);
    }
}

bool NodeBuilder::applyEntry(Element element, XmlElement child) {
    switch (element) {
        case Element::Value:
            draft_.entry.value = integer(child);
            draft_.hasEntryValue = true;
            return true;
        case Element::NumericValue:
            if (const auto value = parseFloat(text_)) {
                draft_.entry.numeric = *value;
                draft_.hasNumeric = true;
                return true;
            }
            context_.drop(child, name_, "'" + std::string(text_) + "' is no finite number.");
            return true;
        case Element::Symbolic:
            draft_.entry.symbolic = context_.store(text_);
            return true;
        case Element::IsSelfClearing:
            word<bool>(child, [&](bool yes) { draft_.entry.selfClearing = yes; });
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyCommand(Element element, XmlElement child) {
    switch (element) {
        case Element::CommandValue:
            draft_.command.command = number(child);
            return true;
        case Element::pCommandValue:
            draft_.command.command = linkedNumber(child);
            return true;
        default:
            return applyValue(element, child, draft_.command.value);
    }
}

bool NodeBuilder::applyString(Element element, XmlElement child) {
    switch (element) {
        case Element::Value:
            draft_.text.value = context_.store(raw_);
            draft_.text.given = true;
            return true;
        case Element::pValue:
            node_.value = link(child, Wanted::text);
            return true;
        case Element::AccessMode:
            imposeAccess(child);
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyPort(Element element, XmlElement child) {
    switch (element) {
        case Element::SwapEndianess:
            word<bool>(child, [&](bool yes) { draft_.port.swapEndianess = yes; });
            return true;
        case Element::ChunkID:
            if (const auto id = hexId(child)) {
                draft_.port.chunkId = *id;
                draft_.port.hasChunkId = true;
            }
            return true;
        case Element::pChunkID:
            draft_.port.chunkIdNode = link(child, Wanted::number);
            return true;
        case Element::CacheChunkData:
            word<bool>(child, [&](bool yes) { draft_.port.cacheChunkData = yes; });
            return true;
        default:
            return false;
    }
}

bool NodeBuilder::applyConfigKey(Element element, XmlElement child) {
    switch (element) {
        case Element::Key:
            if (const auto key = parseHexId(text_); key && *key <= 0xFF) {
                draft_.configKey.key = static_cast<std::uint8_t>(*key);
                draft_.hasEntryValue = true;
            } else {
                setBroken(textIn(child) + " is no hexadecimal number of eight bits", child);
            }
            return true;
        case Element::p1212Parser:
            draft_.configKey.rom = link(child, Wanted::configRom);
            return true;
        default:
            return false;
    }
}

void NodeBuilder::finishConfigKey(const PendingNode& pending) {
    ConfigKeyDetail& detail = draft_.configKey;
    if (detail.rom == noNode && pending.owner != noNode) {
        detail.rom = pending.owner;
        context_.addRead(detail.rom, id_);
    }
    if (detail.rom == noNode) {
        setBroken("it has no p1212Parser");
    }
    if (!draft_.hasEntryValue) {
        setBroken("it has no Key");
    }
    node_.detail = append(d_.configKeys, detail);
}

void NodeBuilder::holdNumber(const Number& value) {
    if (node_.value != noNode) {
        return;
    }
    if (!value.given) {
        setBroken("it has neither a value nor a link to one");
        return;
    }
    node_.held = d_.heldNumbers++;
}

void NodeBuilder::finishDetail(NodeId id, const PendingNode& pending) {
    switch (node_.kind) {
        case Kind::integer:
        case Kind::floating:
            finishNumber(node_.kind == Kind::floating);
            break;
        case Kind::boolean:
            holdNumber(draft_.boolean.value);
            node_.detail = append(d_.booleans, draft_.boolean);
            break;
        case Kind::enumeration:
            holdNumber(draft_.number.value);
            node_.detail = append(d_.enumerations, {draft_.number.value});
            break;
        case Kind::enumEntry:
            finishEntry(id, pending);
            break;
        case Kind::command:
            holdNumber(draft_.command.value);
            if (!draft_.command.command.given) {
                setBroken("it has neither CommandValue nor pCommandValue");
            }
            node_.detail = append(d_.commands, draft_.command);
            break;
        case Kind::string:
            if (node_.value == noNode) {
                node_.held = d_.heldTexts++;
            }
            node_.detail = append(d_.strings, draft_.text);
            break;
        case Kind::port:
            d_.portNodes.push_back(id);
            node_.detail = append(d_.ports, draft_.port);
            break;
        case Kind::configText:
        case Kind::configInteger:
            finishConfigKey(pending);
            break;
        default:
            if (isRegister(node_.kind)) {
                finishRegister(id);
            } else if (isFormula(node_.kind)) {
                finishFormula();
            }
    }
}

// Neither a device nor a list has a say in what the Integer may be.
bool NodeBuilder::hasFixedRange() const {
    const NumberDetail& detail = draft_.number;
    const auto isConstant = [](const Number& bound) { return bound.given && bound.link == noNode; };
    const bool hasOwnIncrement = detail.increment.given || !draft_.validValues.empty();
    const bool isPlain = detail.index == noNode && draft_.copiesBefore.empty() &&
                         draft_.copiesAfter.empty() &&
                         (node_.value == noNode || isRegister(d_.nodes[node_.value].kind));
    return isPlain && !hasOwnIncrement && isConstant(detail.minimum) && isConstant(detail.maximum);
}

void NodeBuilder::finishNumber(bool isFloat) {
    NumberDetail& detail = draft_.number;
    if (detail.index == noNode) {
        holdNumber(detail.value);
    }
    if (isFloat && node_.representation == HexNumber) {
        node_.representation = _UndefinedRepresentation;
    }
    detail.fixedRange = !isFloat && hasFixedRange();
    detail.copiesBefore = context_.store(draft_.copiesBefore);
    detail.copiesAfter = context_.store(draft_.copiesAfter);
    detail.table = {static_cast<std::uint32_t>(d_.indexed.size()),
                    static_cast<std::uint32_t>(draft_.indexed.size())};
    d_.indexed.insert(d_.indexed.end(), draft_.indexed.begin(), draft_.indexed.end());
    detail.validValues = {static_cast<std::uint32_t>(d_.validValues.size()),
                          static_cast<std::uint32_t>(draft_.validValues.size())};
    d_.validValues.insert(d_.validValues.end(), draft_.validValues.begin(),
                          draft_.validValues.end());
    node_.detail = append(d_.numbers, detail);
}

void NodeBuilder::finishEntry(NodeId id, const PendingNode& pending) {
    EntryDetail& detail = draft_.entry;
    detail.enumeration = pending.owner;
    if (!draft_.hasEntryValue) {
        setBroken("it has no Value");
    }
    if (!draft_.hasNumeric) {
        detail.numeric = static_cast<double>(detail.value);
    }
    if (detail.symbolic.count == 0) {
        detail.symbolic = context_.store(pending.element.valueOf("Name"));
    }
    // What may be chosen is part of the enumeration's state.
    context_.addRead(id, pending.owner);
    node_.detail = append(d_.entries, detail);
}

}  // namespace GenApi::Detail
