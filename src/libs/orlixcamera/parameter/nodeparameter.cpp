#include "orlixcamera/nodeparameter.h"

#include <string>

#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
#include "genapi/pointer.h"

namespace Orlix {

using GenApi::INode;
using GenApi::INodeMap;

namespace {

INode* find(const INodeMap* map, const gcstring& name) {
    return map == nullptr ? nullptr : map->GetNode(name);
}

template <class Interface>
Interface* viewOf(INode* node) {
    return GenApi::CPointer<Interface>(node);
}

template <class Interface>
Interface& require(Interface* node) {
    if (node == nullptr) {
        throw GenICam::AccessException("The parameter is accessed, but it refers to nothing.",
                                       __FILE__, __LINE__);
    }
    return *node;
}

template <class Interface>
auto readFrom(Interface& node, bool verify, bool ignoreCache) {
    return node.GetValue(verify, ignoreCache);
}
gcstring readFrom(GenApi::IEnumeration& node, bool verify, bool ignoreCache) {
    return node.ToString(verify, ignoreCache);
}

template <class Interface, class Value>
void writeTo(Interface& node, const Value& value, bool verify) {
    node.SetValue(value, verify);
}
void writeTo(GenApi::IEnumeration& node, const gcstring& value, bool verify) {
    node.FromString(value, verify);
}

// A feature behind an integer parameter.
class IntegerFeature final : public IIntegerSource {
public:
    explicit IntegerFeature(GenApi::IInteger& node) : node_(node) {}

    [[nodiscard]] bool IsReadable() const override { return GenApi::IsReadable(&node_); }
    [[nodiscard]] bool IsWritable() const override { return GenApi::IsWritable(&node_); }
    [[nodiscard]] std::int64_t GetValue(bool verify, bool ignoreCache) const override {
        return node_.GetValue(verify, ignoreCache);
    }
    void SetValue(std::int64_t value, bool verify) override { node_.SetValue(value, verify); }
    [[nodiscard]] IntegerRange GetRange() const override {
        return {node_.GetMin(), node_.GetMax(), node_.GetInc()};
    }
    [[nodiscard]] gcstring GetInfo(EParameterInfo info) const override {
        const INode& node = *node_.GetNode();
        switch (info) {
            case ParameterInfo_Name:
                return node.GetName();
            case ParameterInfo_DisplayName:
                return node.GetDisplayName();
            case ParameterInfo_ToolTip:
                return node.GetToolTip();
            case ParameterInfo_Description:
                return node.GetDescription();
        }
        return {};
    }

private:
    GenApi::IInteger& node_;
};

std::shared_ptr<IIntegerSource> sourceOf(INode* node) {
    auto* const integer = viewOf<GenApi::IInteger>(node);
    return integer == nullptr ? nullptr : std::make_shared<IntegerFeature>(*integer);
}

}  // namespace

CIntegerParameter::CIntegerParameter(INode* node) : source_(sourceOf(node)) {}
CIntegerParameter::CIntegerParameter(INodeMap* map, const gcstring& name)
    : CIntegerParameter(find(map, name)) {}
CIntegerParameter::CIntegerParameter(INodeMap& map, const gcstring& name)
    : CIntegerParameter(find(&map, name)) {}

template <class Interface, class Value>
CNodeParameter<Interface, Value>::CNodeParameter(INode* node) : node_(viewOf<Interface>(node)) {}
template <class Interface, class Value>
CNodeParameter<Interface, Value>::CNodeParameter(INodeMap* map, const gcstring& name)
    : CNodeParameter(find(map, name)) {}
template <class Interface, class Value>
CNodeParameter<Interface, Value>::CNodeParameter(INodeMap& map, const gcstring& name)
    : CNodeParameter(find(&map, name)) {}

template <class Interface, class Value>
bool CNodeParameter<Interface, Value>::IsValid() const {
    return IsReadable();
}

template <class Interface, class Value>
bool CNodeParameter<Interface, Value>::IsReadable() const {
    return GenApi::IsReadable(node_);
}

template <class Interface, class Value>
bool CNodeParameter<Interface, Value>::IsWritable() const {
    return GenApi::IsWritable(node_);
}

template <class Interface, class Value>
Value CNodeParameter<Interface, Value>::GetValue(bool verify, bool ignoreCache) const {
    return readFrom(require(node_), verify, ignoreCache);
}

template <class Interface, class Value>
Value CNodeParameter<Interface, Value>::GetValueOrDefault(const Value& defaultValue) const {
    return IsReadable() ? readFrom(*node_, false, false) : defaultValue;
}

template <class Interface, class Value>
void CNodeParameter<Interface, Value>::SetValue(const Value& value, bool verify) {
    writeTo(require(node_), value, verify);
}

template <class Interface, class Value>
bool CNodeParameter<Interface, Value>::TrySetValue(const Value& value) {
    const bool writable = IsWritable();
    if (writable) {
        writeTo(*node_, value, true);
    }
    return writable;
}

template class CNodeParameter<GenApi::IBoolean, bool>;
template class CNodeParameter<GenApi::IFloat, double>;
template class CNodeParameter<GenApi::IString, gcstring>;
template class CNodeParameter<GenApi::IEnumeration, gcstring>;

double CFloatParameter::GetMin() const {
    return require(node_).GetMin();
}

double CFloatParameter::GetMax() const {
    return require(node_).GetMax();
}

bool CEnumParameter::CanSetValue(const gcstring& value) const {
    return IsWritable() && GenApi::IsAvailable(node_->GetEntryByName(value));
}

bool CEnumParameter::TrySetValue(const gcstring& value) {
    const bool settable = CanSetValue(value);
    if (settable) {
        node_->FromString(value);
    }
    return settable;
}

}  // namespace Orlix
