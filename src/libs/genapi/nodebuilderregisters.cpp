// What registers have of their own: port, address, length, layout.
#include <algorithm>

#include "genapi/nodebuilder.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

// What does not change is worked out once.
void placeField(RegisterDetail& detail) {
    const std::int64_t length = detail.length.integer;
    if (detail.length.link != noNode || length < 1 || length > 8) {
        return;
    }
    if (const auto field = bitFieldOf(detail, static_cast<int>(length) * 8)) {
        detail.shift = static_cast<std::uint8_t>(field->shift);
        detail.width = static_cast<std::uint8_t>(field->width);
        detail.minimum = minimumOf(detail, field->width);
        detail.maximum = maximumOf(detail, field->width);
    }
}

}  // namespace

bool NodeBuilder::applyRegister(Element element, XmlElement child) {
    RegisterDetail& detail = draft_.reg;
    switch (element) {
        case Element::Length:
            detail.length.integer = integer(child);
            detail.length.given = true;
            return true;
        case Element::pLength:
            detail.length = linkedNumber(child);
            return true;
        case Element::pPort:
            detail.port = link(child, Wanted::port);
            return true;
        case Element::AccessMode:
            word<EAccessMode>(child, [&](EAccessMode mode) {
                detail.access = std::uint8_t(mode);
                draft_.hasAccess = true;
            });
            return true;
        case Element::Cachable:
            word<ECachingMode>(child, [&](ECachingMode mode) {
                detail.caching = std::uint8_t(mode);
                node_.ownCaching = true;
            });
            return true;
        // Nodes of their own.
        case Element::IntKey:
        case Element::TextDesc:
            return node_.kind == Kind::configRom;
        // What a feature is called, and how long it stays open: for who opens it.
        case Element::FeatureID:
        case Element::Timeout:
            if (node_.kind == Kind::advancedFeature || node_.kind == Kind::smartFeature) {
                keepText(nameOf(element), text_);
                return true;
            }
            return false;
        default:
            return applyAddress(element, child) || applyLayout(element, child);
    }
}

bool NodeBuilder::applyAddress(Element element, XmlElement child) {
    AddressTerm term;
    switch (element) {
        case Element::Address:
            // Addresses may use all 64 bits, so the sum wraps.
            draft_.reg.base =
                static_cast<std::int64_t>(static_cast<std::uint64_t>(draft_.reg.base) +
                                          static_cast<std::uint64_t>(integer(child)));
            return true;
        case Element::pAddress:
            term.node = link(child, Wanted::number);
            break;
        case Element::IntSwissKnife: {
            const auto place = context_.inlineNodes.find(child.key());
            term.node = place == context_.inlineNodes.end() ? noNode : place->second;
            if (term.node != noNode) {
                context_.addRead(term.node, id_);
            } else {
                setBroken("the formula of its address could not be loaded");
            }
            break;
        }
        case Element::pIndex: {
            term.node = link(child, Wanted::number);
            term.scale = AddressTerm::Scale::length;
            if (const auto offset = child.attribute("Offset")) {
                const auto value = parseInteger(*offset);
                term.scale = AddressTerm::Scale::constant;
                term.offset = value.value_or(0);
                if (!value) {
                    setBroken("the attribute 'Offset' of its pIndex is no integer", child);
                }
            } else if (const auto node = child.attribute("pOffset")) {
                term.scale = AddressTerm::Scale::node;
                term.offsetNode = resolve(trim(*node));
                if (term.offsetNode == noNode) {
                    setBroken("the attribute 'pOffset' of its pIndex names a missing node", child);
                } else {
                    context_.addRead(term.offsetNode, id_);
                }
            }
            break;
        }
        default:
            return false;
    }
    if (term.node != noNode) {
        context_.spend(sizeof term);
        draft_.terms.push_back(term);
    }
    return true;
}

bool NodeBuilder::applyLayout(Element element, XmlElement child) {
    RegisterDetail& detail = draft_.reg;
    const auto bit = [&] {
        return static_cast<std::int16_t>(std::clamp<std::int64_t>(integer(child), -1, 1000));
    };
    switch (element) {
        case Element::Sign:
            word<ESign>(child, [&](ESign sign) { detail.isSigned = sign == Signed; });
            return true;
        case Element::Endianess:
            word<EEndianess>(child, [&](EEndianess order) {
                detail.bigEndian = order == BigEndian;
                draft_.hasEndianess = true;
            });
            return true;
        case Element::LSB:
            detail.lsb = bit();
            draft_.hasBitFirst = true;
            return true;
        case Element::MSB:
            detail.msb = bit();
            draft_.hasBitLast = true;
            return true;
        case Element::Bit:
            detail.lsb = detail.msb = bit();
            draft_.hasBitFirst = draft_.hasBitLast = true;
            return true;
        default:
            return false;
    }
}

void NodeBuilder::finishRegister(NodeId id) {
    RegisterDetail& detail = draft_.reg;
    const Kind kind = node_.kind;
    if (detail.port == noNode) {
        setBroken("it has no pPort");
    }
    if (!detail.length.given) {
        setBroken("it has neither Length nor pLength");
    }
    if (detail.length.given && detail.length.link == noNode) {
        const std::int64_t length = detail.length.integer;
        if (!isPossibleLength(kind, length)) {
            setBroken("its length of " + std::to_string(length) + " bytes is not possible");
        }
    }
    if (kind == Kind::advancedFeature || kind == Kind::smartFeature) {
        // Their number is their address, which nobody can change.
        detail.access = RO;
    }
    if (kind == Kind::floatReg && !node_.ownCaching) {
        detail.caching = WriteAround;
    }
    if (kind == Kind::maskedIntReg) {
        detail.hasBits = draft_.hasBitFirst || draft_.hasBitLast;
        if (!detail.hasBits) {
            setBroken("it has neither Bit nor LSB and MSB");
        }
        // One end alone is a field of one bit.
        detail.lsb = draft_.hasBitFirst ? detail.lsb : detail.msb;
        detail.msb = draft_.hasBitLast ? detail.msb : detail.lsb;
    }
    placeField(detail);
    detail.terms = {static_cast<std::uint32_t>(d_.terms.size()),
                    static_cast<std::uint32_t>(draft_.terms.size())};
    d_.terms.insert(d_.terms.end(), draft_.terms.begin(), draft_.terms.end());
    detail.fixedPlace = draft_.terms.empty() && detail.length.link == noNode;
    node_.detail = static_cast<std::uint32_t>(d_.registers.size());
    d_.registers.push_back(detail);
    d_.registerNodes.push_back(id);
}

}  // namespace GenApi::Detail
