// The part of a handle that all kinds share: INode and ISelector.
#pragma once

#include "genapi/inode.h"
#include "genapi/iselector.h"
#include "genapi/nodemap.h"

namespace GenApi::Detail {

// Lives in its map. Calls that need more than constants hold the map's lock.
class NodeHandle : public INode, public ISelector {
public:
    NodeHandle(NodeMap& map, NodeId id) : map_(map), id_(id) {}
    NodeHandle(const NodeHandle&) = delete;
    NodeHandle& operator=(const NodeHandle&) = delete;
    ~NodeHandle() override = default;

    [[nodiscard]] EAccessMode GetAccessMode() const override;

    [[nodiscard]] gcstring GetName(bool FullQualified) const override;
    [[nodiscard]] ENameSpace GetNameSpace() const override;
    [[nodiscard]] gcstring GetDisplayName() const override;
    [[nodiscard]] gcstring GetDescription() const override { return text(row().description); }
    [[nodiscard]] gcstring GetToolTip() const override { return text(row().toolTip); }
    [[nodiscard]] gcstring GetDocuURL() const override { return text(row().documentation); }
    [[nodiscard]] gcstring GetDeviceName() const override { return map_.GetDeviceName(); }
    [[nodiscard]] gcstring GetEventID() const override;
    [[nodiscard]] EVisibility GetVisibility() const override;
    [[nodiscard]] EInterfaceType GetPrincipalInterfaceType() const override;
    [[nodiscard]] gcstring GetElementName() const override;
    [[nodiscard]] ECachingMode GetCachingMode() const override;
    [[nodiscard]] bool IsCachable() const override { return GetCachingMode() != NoCache; }
    [[nodiscard]] bool IsStreamable() const override { return row().streamable; }
    [[nodiscard]] bool IsDeprecated() const override { return row().deprecated; }
    [[nodiscard]] bool IsFeature() const override { return row().feature; }
    [[nodiscard]] std::int64_t GetPollingTime() const override { return row().pollingTime; }
    [[nodiscard]] INode* GetAlias() const override { return map_.nodeOf(row().alias); }
    [[nodiscard]] INode* GetCastAlias() const override { return map_.nodeOf(row().castAlias); }
    void InvalidateNode() override;
    void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
    void ImposeVisibility(EVisibility ImposedVisibility) override;
    CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
    bool DeregisterCallback(CallbackHandleType hCallback) override;
    [[nodiscard]] INodeMap* GetNodeMap() const override { return &map_; }
    void GetChildren(NodeList_t& Children, ELinkType LinkType) const override;
    void GetParents(NodeList_t& Parents) const override;
    void GetPropertyNames(StringList_t& PropertyNames) const override;
    bool GetProperty(const gcstring& PropertyName, gcstring& ValueStr,
                     gcstring& AttributeStr) const override;

    [[nodiscard]] bool IsSelector() const override { return row().selected.count != 0; }
    void GetSelectedFeatures(FeatureList_t& Features) const override;
    void GetSelectingFeatures(FeatureList_t& Features) const override;

protected:
    [[nodiscard]] NodeMap& map() const { return map_; }
    [[nodiscard]] Engine& engine() const { return map_.engine(); }
    [[nodiscard]] NodeId id() const { return id_; }
    [[nodiscard]] const Description& description() const { return map_.description(); }
    [[nodiscard]] const Node& row() const { return description().nodes[id_]; }
    [[nodiscard]] gcstring text(Slice slice) const { return gcstring(description().text(slice)); }

private:
    [[nodiscard]] std::vector<NodeId> written() const;

    NodeMap& map_;
    NodeId id_;
    EVisibility imposedVisibility_ = Beginner;
};

}  // namespace GenApi::Detail
