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
};

// Ends a registration of any node of any map that still lives.
inline bool Deregister(INode* node, CallbackHandleType handle) {
    return node->DeregisterCallback(handle);
}

}  // namespace GenApi
