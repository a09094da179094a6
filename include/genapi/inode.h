// INode, what every element of a description is to its user: name, texts, rights, links.
// Nodes belong to their map and live as long as it. Any thread may call; each call takes the map's
// lock once, except those that read constants of the description.
#pragma once

#include "genapi/callback.h"
#include "genapi/ibase.h"

namespace GenApi {

class INodeMap;

class GENAPI_API INode : virtual public IBase {
public:
    // The name without name space; `FullQualified` puts "Std::" or "Cust::" before it.
    [[nodiscard]] virtual gcstring GetName(bool FullQualified = false) const = 0;
    [[nodiscard]] virtual ENameSpace GetNameSpace() const = 0;
    // The name where the description has no display name.
    [[nodiscard]] virtual gcstring GetDisplayName() const = 0;
    [[nodiscard]] virtual gcstring GetDescription() const = 0;
    [[nodiscard]] virtual gcstring GetToolTip() const = 0;
    [[nodiscard]] virtual gcstring GetDocuURL() const = 0;
    [[nodiscard]] virtual gcstring GetDeviceName() const = 0;
    // Hexadecimal digits, empty without an event.
    [[nodiscard]] virtual gcstring GetEventID() const = 0;
    [[nodiscard]] virtual EVisibility GetVisibility() const = 0;
    [[nodiscard]] virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    // The name of its element, as "Integer" or "IntReg".
    [[nodiscard]] virtual gcstring GetElementName() const = 0;

    [[nodiscard]] virtual ECachingMode GetCachingMode() const = 0;
    [[nodiscard]] virtual bool IsCachable() const = 0;
    [[nodiscard]] virtual bool IsStreamable() const = 0;
    [[nodiscard]] virtual bool IsDeprecated() const = 0;
    // Reachable from the category "Root" through categories alone.
    [[nodiscard]] virtual bool IsFeature() const = 0;
    // Milliseconds, -1 for a node that is not polled.
    [[nodiscard]] virtual std::int64_t GetPollingTime() const = 0;
    // Null without one.
    [[nodiscard]] virtual INode* GetAlias() const = 0;
    [[nodiscard]] virtual INode* GetCastAlias() const = 0;

    // Drops what is cached of this node and of all that depend on it, and fires their callbacks.
    virtual void InvalidateNode() = 0;
    // Narrows the access for the life of the map; it never widens.
    virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
    virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;

    // Takes ownership of the callback; null is an InvalidArgumentException.
    virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
    // False if the handle is unknown here.
    virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;

    [[nodiscard]] virtual INodeMap* GetNodeMap() const = 0;
    // Replaces the list by the direct links of one kind, in the order of the description.
    virtual void GetChildren(NodeList_t& Children,
                             ELinkType LinkType = ctReadingChildren) const = 0;
    // Replaces the list by the nodes that read this one.
    virtual void GetParents(NodeList_t& Parents) const = 0;

    // What the description says of the node, also what no interface asks for, as "FeatureID" or
    // "Timeout". The names are those of the elements, each once, and "Name", "NameSpace",
    // "MergePriority", "ExposeStatic" and "Comment" of the attributes. Elements that may be left
    // out have their defaults. The constants of an address are summed up.
    virtual void GetPropertyNames(StringList_t& PropertyNames) const = 0;
    // The value is a text, word or number, or the name of the node that is linked. The attribute is
    // the name of a variable, the index of an indexed value, the offset of a pIndex. Of several
    // elements of one name the values follow each other in file order, parted by tabs, and so do
    // the attributes if there are any. False and empty texts if the node has no such property.
    virtual bool GetProperty(const gcstring& PropertyName, gcstring& ValueStr,
                             gcstring& AttributeStr) const = 0;
};

// Ends a registration of any node of any map that still lives.
inline bool Deregister(INode* node, CallbackHandleType handle) {
    return node->DeregisterCallback(handle);
}

}  // namespace GenApi
