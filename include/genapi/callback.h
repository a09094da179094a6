// Callbacks on a change of a node, and the shorthand that makes one from any callable.
// A callback object belongs to the map once it is registered.
#pragma once

#include <cstdint>
#include <utility>

#include "genapi/api.h"
#include "genapi/types.h"

namespace GenApi {

class INode;

// Names one registration; 0 names none.
using CallbackHandleType = std::intptr_t;

// Called once for each call from outside that changed the node, at that call's end and on its
// thread; the node is not read for it. It may read, write, register and deregister, itself too.
// What it throws is dropped. Callbacks that change what they are told of go round 64 times at most.
class GENAPI_API CNodeCallback {
public:
    CNodeCallback(INode* node, ECallbackType type) : node_(node), type_(type) {}
    CNodeCallback(const CNodeCallback&) = delete;
    CNodeCallback& operator=(const CNodeCallback&) = delete;
    virtual ~CNodeCallback() = default;

    virtual void operator()(ECallbackType type) = 0;

    [[nodiscard]] INode* GetNode() const { return node_; }
    [[nodiscard]] ECallbackType GetCallbackType() const { return type_; }

private:
    INode* node_;
    ECallbackType type_;
};

namespace Detail {

template <typename Function>
class FunctionCallback final : public CNodeCallback {
public:
    FunctionCallback(INode* node, ECallbackType type, Function function)
        : CNodeCallback(node, type), function_(std::move(function)) {}
    void operator()(ECallbackType) override { function_(GetNode()); }

private:
    Function function_;
};

[[nodiscard]] GENAPI_API CallbackHandleType RegisterCallback(INode* node, CNodeCallback* callback);

}  // namespace Detail

// Registers any callable that takes an INode*; Deregister(handle) or INode::DeregisterCallback ends
// it. Once that has returned no call starts, while one that runs on another thread may still end.
template <typename Function>
CallbackHandleType Register(INode* node, Function function, ECallbackType type = cbPostInsideLock) {
    return Detail::RegisterCallback(
        node, new Detail::FunctionCallback<Function>(node, type, std::move(function)));
}

}  // namespace GenApi
