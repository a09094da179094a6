#include "genapi/nodehandle.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "genapi/engineerror.h"
#include "genapi/properties.h"

namespace GenApi::Detail {

EAccessMode NodeHandle::GetAccessMode() const {
    const NodeMap::Call call(map_);
    return engine().report(id_);
}

gcstring NodeHandle::GetName(bool FullQualified) const {
    if (!FullQualified) {
        return text(row().name);
    }
    return (row().standardNameSpace ? "Std::" : "Cust::") + text(row().name);
}

ENameSpace NodeHandle::GetNameSpace() const {
    return row().standardNameSpace ? Standard : Custom;
}

gcstring NodeHandle::GetDisplayName() const {
    const Node& self = row();
    if (self.displayName.count != 0) {
        return text(self.displayName);
    }
    return self.kind == Kind::enumEntry ? text(description().entries[self.detail].symbolic)
                                        : text(self.name);
}

gcstring NodeHandle::GetEventID() const {
    if (!row().hasEventId) {
        return {};
    }
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), row().eventId, 16);
    gcstring result;
    for (const char* c = digits.data(); c != end.ptr; ++c) {
        result.push_back(*c >= 'a' ? static_cast<char>(*c - 'a' + 'A') : *c);
    }
    return result;
}

EVisibility NodeHandle::GetVisibility() const {
    const NodeMap::Call call(map_);
    return std::max(static_cast<EVisibility>(row().visibility), imposedVisibility_);
}

EInterfaceType NodeHandle::GetPrincipalInterfaceType() const {
    return rowOf(row().kind).interface;
}

gcstring NodeHandle::GetElementName() const {
    return gcstring(elementName(row().kind));
}

ECachingMode NodeHandle::GetCachingMode() const {
    return map_.engine().caching(id_);
}

void NodeHandle::InvalidateNode() {
    const NodeMap::Call call(map_);
    engine().invalidate(id_);
}

void NodeHandle::ImposeAccessMode(EAccessMode ImposedAccessMode) {
    if (ImposedAccessMode > RW) {
        GENAPI_THROW(InvalidArgumentException,
                     engine().says(id_, "can not be given this access mode: it is none."));
    }
    const NodeMap::Call call(map_);
    engine().imposeAccess(id_, ImposedAccessMode);
}

void NodeHandle::ImposeVisibility(EVisibility ImposedVisibility) {
    const NodeMap::Call call(map_);
    imposedVisibility_ = std::max(imposedVisibility_, ImposedVisibility);
}

CallbackHandleType NodeHandle::RegisterCallback(CNodeCallback* pCallback) {
    if (pCallback == nullptr) {
        GENAPI_THROW(InvalidArgumentException,
                     engine().says(id_, "can not be given a null callback."));
    }
    const NodeMap::Call call(map_);
    return map_.addCallback(id_, pCallback);
}

bool NodeHandle::DeregisterCallback(CallbackHandleType hCallback) {
    const NodeMap::Call call(map_);
    return map_.removeCallback(id_, hCallback);
}

void NodeHandle::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
    const Description& d = description();
    switch (LinkType) {
        case ctAllDependingNodes:
            map_.toNodes(d.closure(id_).subspan(1), Children);
            return;
        case ctReadingChildren: {
            const Slice slice = d.providers[id_];
            map_.toNodes(std::span(d.providerLinks).subspan(slice.begin, slice.count), Children);
            return;
        }
        case ctWritingChildren:
            map_.toNodes(written(), Children);
            return;
        case ctInvalidatingChildren:
            map_.toNodes(d.list(row().invalidators), Children);
            return;
    }
    Children.clear();
}

// Its target, the copies and what its table links, in the order of writing.
std::vector<NodeId> NodeHandle::written() const {
    const Description& d = description();
    std::vector<NodeId> result;
    const bool isNumber = row().kind == Kind::integer || row().kind == Kind::floating;
    const NumberDetail detail = isNumber ? d.numbers[row().detail] : NumberDetail();
    const auto addList = [&](Slice slice) {
        const auto list = d.list(slice);
        result.insert(result.end(), list.begin(), list.end());
    };
    addList(detail.copiesBefore);
    result.push_back(row().value);
    addList(detail.copiesAfter);
    for (std::uint32_t i = 0; i < detail.table.count; ++i) {
        result.push_back(d.indexed[detail.table.begin + i].value.link);
    }
    result.push_back(detail.fallback.link);
    std::erase(result, noNode);
    return result;
}

void NodeHandle::GetParents(NodeList_t& Parents) const {
    const Description& d = description();
    const Slice slice = d.dependants[id_];
    map_.toNodes(std::span(d.dependantLinks).subspan(slice.begin, slice.count), Parents);
}

void NodeHandle::GetPropertyNames(StringList_t& PropertyNames) const {
    PropertyNames.clear();
    for (const Property& property : propertiesOf(description(), id_)) {
        const gcstring name(property.name);
        if (std::find(PropertyNames.begin(), PropertyNames.end(), name) == PropertyNames.end()) {
            PropertyNames.push_back(name);
        }
    }
}

bool NodeHandle::GetProperty(const gcstring& PropertyName, gcstring& ValueStr,
                             gcstring& AttributeStr) const {
    std::string values;
    std::string attributes;
    bool isFound = false;
    bool hasAttributes = false;
    for (const Property& property : propertiesOf(description(), id_)) {
        if (property.name != PropertyName.view()) {
            continue;
        }
        const char* const separator = isFound ? "\t" : "";
        values += separator + property.value;
        attributes += separator + property.attribute;
        hasAttributes = hasAttributes || !property.attribute.empty();
        isFound = true;
    }
    ValueStr = gcstring(values);
    AttributeStr = hasAttributes ? gcstring(attributes) : gcstring();
    return isFound;
}

void NodeHandle::GetSelectedFeatures(FeatureList_t& Features) const {
    map_.toFeatures(description().list(row().selected), Features);
}

void NodeHandle::GetSelectingFeatures(FeatureList_t& Features) const {
    map_.toFeatures(description().list(row().selecting), Features);
}

}  // namespace GenApi::Detail
