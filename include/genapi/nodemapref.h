// CNodeMapRef, a value handle of a node map. Handles share the map and count their number; the last
// one destroys it. Copies are independent: each may be used by another thread.
#pragma once

#include "genapi/inodemap.h"

namespace GenApi {

// Every use without a map raises AccessException "Feature not present (reference not valid)".
class GENAPI_API CNodeMapRef {
public:
    explicit CNodeMapRef(const gcstring& DeviceName = "Device");
    // Shares in the map's ownership; a null map gives an empty handle.
    explicit CNodeMapRef(INodeMap* pNodeMap, const gcstring& DeviceName = "Device");
    CNodeMapRef(const CNodeMapRef& other);
    CNodeMapRef(CNodeMapRef&& other) noexcept;
    CNodeMapRef& operator=(const CNodeMapRef& other);
    CNodeMapRef& operator=(CNodeMapRef&& other) noexcept;
    ~CNodeMapRef();

    // Lets the held map go and shares the new one; the device name is read back from it.
    void _Attach(INodeMap* pNodeMap);
    void _Attach(const CNodeMapRef& other) { _Attach(other.map_); }
    // Lets the held map go.
    void _Destroy();
    [[nodiscard]] bool _IsValid() const noexcept { return map_ != nullptr; }
    [[nodiscard]] explicit operator bool() const noexcept { return map_ != nullptr; }

    // The map, or null; for as long as a handle holds it.
    [[nodiscard]] INodeMap* _Ptr() const noexcept { return map_; }
    [[nodiscard]] INodeMap* operator->() const { return &checked(); }
    [[nodiscard]] INodeMap& operator*() const { return checked(); }

    [[nodiscard]] INode* _GetNode(const gcstring& Name) const { return checked().GetNode(Name); }
    void _GetNodes(NodeList_t& Nodes) const { checked().GetNodes(Nodes); }
    void _InvalidateNodes() const { checked().InvalidateNodes(); }
    // Works without a map too: the name given at construction.
    [[nodiscard]] gcstring _GetDeviceName() const { return deviceName_; }
    void _Poll(std::int64_t ElapsedTime) { checked().Poll(ElapsedTime); }
    bool _Connect(IPort* pPort, const gcstring& PortName) const {
        return checked().Connect(pPort, PortName);
    }
    bool _Connect(IPort* pPort) const { return checked().Connect(pPort); }

private:
    [[nodiscard]] INodeMap& checked() const;

    INodeMap* map_ = nullptr;
    gcstring deviceName_;
};

}  // namespace GenApi
