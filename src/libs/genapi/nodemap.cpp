#include "genapi/nodemap.h"

#include "genapi/engineerror.h"
#include "genapi/handles.h"
#include "genapi/portimpl.h"

namespace GenApi::Detail {

NodeMap::NodeMap(std::shared_ptr<const Description> description, const gcstring& deviceName,
                 CLock* lock)
    : description_(std::move(description)),
      deviceName_(deviceName),
      lock_(lock != nullptr ? *lock : ownLock_),
      engine_(description_) {
    spares_.reserve(4);
    makeHandles();
}

NodeMap::~NodeMap() {
    for (const NodeId port : description_->portNodes) {
        if (auto* known = dynamic_cast<CPortImpl*>(engine_.connected(port))) {
            known->detach(nodeOf(port));
        }
    }
    for (INode* node : nodes_) {
        destroyHandle(node);
    }
}

void NodeMap::makeHandles() {
    const auto& rows = description_->nodes;
    std::size_t size = 0;
    for (const Node& row : rows) {
        size += handleSize(row.kind);
    }
    block_ = std::make_unique<std::byte[]>(size);
    nodes_.reserve(rows.size());
    values_.reserve(rows.size());
    std::byte* place = block_.get();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        INode* node = makeHandle(rows[i].kind, place, *this, static_cast<NodeId>(i));
        nodes_.push_back(node);
        values_.push_back(dynamic_cast<IValue*>(node));
        place += handleSize(rows[i].kind);
    }
}

NodeMap& NodeMap::behind(const CNodeMapRef& map) {
    auto* known = dynamic_cast<NodeMap*>(map._Ptr());
    if (known == nullptr) {
        GENAPI_THROW(InvalidArgumentException, "The node map is not one of CNodeMapFactory.");
    }
    return *known;
}

NodeMap* NodeMap::share(INodeMap* map, CNodeMapRef& handle) {
    if (map == nullptr) {
        return nullptr;
    }
    const CNodeMapRef shared(map, map->GetDeviceName());
    NodeMap& known = behind(shared);
    handle = shared;
    return &known;
}

// ---- Calls from outside, and the callbacks at their end.

void NodeMap::deliverAndUnlock() noexcept {
    Registrations inside = takeSpare();
    Registrations outside;
    try {
        collectDue(inside);
    } catch (...) {
        // Without memory for the list there is nobody to tell.
    }
    ++delivering_;
    // Callbacks that change what they are told of would use up the stack.
    constexpr int mostNested = 64;
    if (delivering_ <= mostNested) {
        run(inside, cbPostInsideLock);
    }
    --delivering_;
    keepSpare(std::move(inside));
    if (delivering_ == 0 && !outside_.empty()) {
        outside = takeSpare();
        outside.swap(outside_);
    }
    lock_.Unlock();
    if (!outside.empty()) {
        run(outside, cbPostOutsideLock);
        // Whoever has the lock may be waiting for this call to return.
        if (lock_.TryLock()) {
            keepSpare(std::move(outside));
            lock_.Unlock();
        }
    }
}

// Lists go round, so that a change costs no memory once there was one like it.
NodeMap::Registrations NodeMap::takeSpare() noexcept {
    if (spares_.empty()) {
        return {};
    }
    Registrations list = std::move(spares_.back());
    spares_.pop_back();
    return list;
}

void NodeMap::keepSpare(Registrations list) noexcept {
    list.clear();
    if (spares_.size() < spares_.capacity()) {
        spares_.push_back(std::move(list));
    }
}

void NodeMap::collectDue(Registrations& inside) {
    for (const NodeId id : engine_.takeChanges()) {
        const auto place = callbacks_.find(id);
        if (place == callbacks_.end()) {
            continue;
        }
        for (const auto& registration : place->second) {
            const bool isInside = registration->callback->GetCallbackType() == cbPostInsideLock;
            (isInside ? inside : outside_).push_back(registration);
        }
    }
}

void NodeMap::run(const Registrations& due, ECallbackType type) noexcept {
    for (const auto& registration : due) {
        if (!registration->active.load(std::memory_order_acquire)) {
            continue;
        }
        try {
            (*registration->callback)(type);
        } catch (...) {
            // Neither the other callbacks nor the caller have to do with it.
        }
    }
}

CallbackHandleType NodeMap::addCallback(NodeId id, CNodeCallback* callback) {
    auto registration = std::make_shared<Registration>();
    registration->callback.reset(callback);
    registration->handle = ++lastHandle_;
    callbacks_[id].push_back(registration);
    engine_.watch(id, true);
    return registration->handle;
}

bool NodeMap::removeCallback(NodeId id, CallbackHandleType handle) {
    const auto place = callbacks_.find(id);
    if (place == callbacks_.end()) {
        return false;
    }
    Registrations& list = place->second;
    for (auto i = list.begin(); i != list.end(); ++i) {
        if ((*i)->handle == handle) {
            (*i)->active.store(false, std::memory_order_release);
            list.erase(i);
            engine_.watch(id, !list.empty());
            return true;
        }
    }
    return false;
}

// ---- INodeMap.

void NodeMap::toFeatures(std::span<const NodeId> ids, FeatureList_t& features) const {
    features.clear();
    for (const NodeId id : ids) {
        if (values_[id] != nullptr) {
            features.push_back(values_[id]);
        }
    }
}

void NodeMap::toNodes(std::span<const NodeId> ids, NodeList_t& nodes) const {
    nodes.clear();
    for (const NodeId id : ids) {
        nodes.push_back(nodes_[id]);
    }
}

void NodeMap::GetNodes(NodeList_t& Nodes) const {
    Nodes = nodes_;
}

INode* NodeMap::GetNode(const gcstring& Name) const {
    std::string_view name = Name.view();
    for (const std::string_view prefix : {"Std::", "Cust::"}) {
        if (name.substr(0, prefix.size()) == prefix) {
            name.remove_prefix(prefix.size());
        }
    }
    return nodeOf(description_->find(name));
}

void NodeMap::InvalidateNodes() const {
    auto& self = const_cast<NodeMap&>(*this);
    const Call call(self);
    self.engine_.invalidateAll();
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
    const NodeId id = description_->find(PortName.view());
    if (id == noNode || description_->nodes[id].kind != Kind::port) {
        return false;
    }
    const_cast<NodeMap&>(*this).connectPort(id, pPort);
    return true;
}

bool NodeMap::Connect(IPort* pPort) const {
    const auto& ports = description_->portNodes;
    if (ports.size() == 1) {
        const_cast<NodeMap&>(*this).connectPort(ports.front(), pPort);
        return true;
    }
    return Connect(pPort, "Device");
}

void NodeMap::connectPort(NodeId portNode, IPort* port) {
    const Call call(*this);
    IPort* before = engine_.connected(portNode);
    if (auto* known = dynamic_cast<CPortImpl*>(before); known != nullptr && before != port) {
        known->detach(nodeOf(portNode));
    }
    engine_.connect(portNode, port);
    if (auto* known = dynamic_cast<CPortImpl*>(port); known != nullptr && before != port) {
        known->attach(nodeOf(portNode));
    }
}

void NodeMap::Poll(std::int64_t ElapsedTime) {
    const Call call(*this);
    engine_.poll(std::max<std::int64_t>(ElapsedTime, 0));
}

gcstring NodeMap::GetVendorName() const {
    return gcstring(description_->vendorName);
}
gcstring NodeMap::GetStandardNameSpace() const {
    return gcstring(description_->standardNameSpace);
}
gcstring NodeMap::GetProductGuid() const {
    return gcstring(description_->productGuid);
}
gcstring NodeMap::GetVersionGuid() const {
    return gcstring(description_->versionGuid);
}

void NodeMap::AddReference() const noexcept {
    references_.fetch_add(1, std::memory_order_relaxed);
}

void NodeMap::RemoveReference() const noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

}  // namespace GenApi::Detail
