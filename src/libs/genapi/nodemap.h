// One map of nodes: the engine, the lock around it, the handles that users see, and the callbacks.
// CNodeMapRef handles count themselves here.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include "genapi/engine.h"
#include "genapi/inodemap.h"
#include "genapi/ivalue.h"
#include "genapi/nodemapref.h"

namespace GenApi::Detail {

class NodeMap final : public INodeMap {
public:
    // Null: the map has a lock of its own.
    NodeMap(std::shared_ptr<const Description> description, const gcstring& deviceName,
            CLock* lock);
    ~NodeMap() override;
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;

    // All maps that a factory made are of this class; InvalidArgumentException for another one.
    [[nodiscard]] static NodeMap& behind(const CNodeMapRef& map);
    // Lets the handle hold the map too; null for a null map.
    [[nodiscard]] static NodeMap* share(INodeMap* map, CNodeMapRef& handle);

    // A call from outside, for a scope: holds the lock, and at the end of the outermost one tells
    // the callbacks of all that changed, also when it ends with an exception.
    class Call {
    public:
        explicit Call(NodeMap& map) : map_(map) {
            map_.lock_.Lock();
            outermost_ = !map_.inCall_;
            if (outermost_) {
                map_.inCall_ = true;
                map_.engine_.begin();
            }
        }
        ~Call() {
            if (outermost_) {
                map_.inCall_ = false;
                if (map_.engine_.hasChanges()) {
                    map_.deliverAndUnlock();
                    return;
                }
            }
            map_.lock_.Unlock();
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        NodeMap& map_;
        bool outermost_;
    };

    // Under a Call.
    [[nodiscard]] Engine& engine() { return engine_; }
    CallbackHandleType addCallback(NodeId id, CNodeCallback* callback);
    bool removeCallback(NodeId id, CallbackHandleType handle);
    void connectPort(NodeId portNode, IPort* port);

    // Constants.
    [[nodiscard]] const Description& description() const { return *description_; }
    [[nodiscard]] INode* nodeOf(NodeId id) const { return id == noNode ? nullptr : nodes_[id]; }
    // Null for ports, which have no value.
    [[nodiscard]] IValue* valueOf(NodeId id) const { return id == noNode ? nullptr : values_[id]; }
    void toFeatures(std::span<const NodeId> ids, FeatureList_t& features) const;
    void toNodes(std::span<const NodeId> ids, NodeList_t& nodes) const;

    void GetNodes(NodeList_t& Nodes) const override;
    [[nodiscard]] INode* GetNode(const gcstring& Name) const override;
    [[nodiscard]] std::uint64_t GetNumNodes() const override { return nodes_.size(); }
    void InvalidateNodes() const override;
    bool Connect(IPort* pPort, const gcstring& PortName) const override;
    bool Connect(IPort* pPort) const override;
    [[nodiscard]] gcstring GetDeviceName() const override { return deviceName_; }
    void Poll(std::int64_t ElapsedTime) override;
    [[nodiscard]] CLock& GetLock() const override { return lock_; }
    [[nodiscard]] const LoadReport& GetLoadReport() const override { return description_->report; }
    [[nodiscard]] gcstring GetModelName() const override {
        return gcstring(description_->modelName);
    }
    [[nodiscard]] gcstring GetVendorName() const override;
    [[nodiscard]] gcstring GetToolTip() const override { return gcstring(description_->toolTip); }
    [[nodiscard]] gcstring GetStandardNameSpace() const override;
    [[nodiscard]] gcstring GetProductGuid() const override;
    [[nodiscard]] gcstring GetVersionGuid() const override;
    [[nodiscard]] Version_t GetSchemaVersion() const override {
        return description_->schemaVersion;
    }
    [[nodiscard]] Version_t GetDeviceVersion() const override {
        return description_->deviceVersion;
    }
    void AddReference() const noexcept override;
    void RemoveReference() const noexcept override;

private:
    struct Registration {
        std::unique_ptr<CNodeCallback> callback;
        CallbackHandleType handle = 0;
        std::atomic<bool> active{true};
    };
    using Registrations = std::vector<std::shared_ptr<Registration>>;

    void makeHandles();
    // Tells of the changes and gives the lock back, which the calling Call holds once.
    void deliverAndUnlock() noexcept;
    [[nodiscard]] Registrations takeSpare() noexcept;
    void keepSpare(Registrations list) noexcept;
    void collectDue(Registrations& inside);
    static void run(const Registrations& due, ECallbackType type) noexcept;

    std::shared_ptr<const Description> description_;
    gcstring deviceName_;
    CLock ownLock_;
    CLock& lock_;
    Engine engine_;
    bool inCall_ = false;
    // Deliveries under way, one in another; what is due outside the lock waits for the first.
    int delivering_ = 0;
    Registrations outside_;
    std::vector<Registrations> spares_;  // empty lists that have memory
    std::unordered_map<NodeId, Registrations> callbacks_;
    CallbackHandleType lastHandle_ = 0;

    // The handles lie one behind the other in one block.
    std::unique_ptr<std::byte[]> block_;
    std::vector<INode*> nodes_;
    std::vector<IValue*> values_;
    mutable std::atomic<std::uint32_t> references_{0};
};

}  // namespace GenApi::Detail
