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

CBooleanParameter::CBooleanParameter(INode* node) : node_(viewOf<GenApi::IBoolean>(node)) {}
CBooleanParameter::CBooleanParameter(INodeMap* map, const gcstring& name)
    : CBooleanParameter(find(map, name)) {}
CBooleanParameter::CBooleanParameter(INodeMap& map, const gcstring& name)
    : CBooleanParameter(find(&map, name)) {}

bool CBooleanParameter::IsValid() const {
    return IsReadable();
}

bool CBooleanParameter::IsReadable() const {
    return GenApi::IsReadable(node_);
}

bool CBooleanParameter::IsWritable() const {
    return GenApi::IsWritable(node_);
}

bool CBooleanParameter::GetValue(bool verify, bool ignoreCache) const {
    return require(node_).GetValue(verify, ignoreCache);
}

bool CBooleanParameter::GetValueOrDefault(bool defaultValue) const {
    return IsReadable() ? node_->GetValue() : defaultValue;
}

void CBooleanParameter::SetValue(bool value, bool verify) {
    require(node_).SetValue(value, verify);
}

bool CBooleanParameter::TrySetValue(bool value) {
    const bool writable = IsWritable();
    if (writable) {
        node_->SetValue(value);
    }
    return writable;
}

CFloatParameter::CFloatParameter(INode* node) : node_(viewOf<GenApi::IFloat>(node)) {}
CFloatParameter::CFloatParameter(INodeMap* map, const gcstring& name)
    : CFloatParameter(find(map, name)) {}
CFloatParameter::CFloatParameter(INodeMap& map, const gcstring& name)
    : CFloatParameter(find(&map, name)) {}

bool CFloatParameter::IsValid() const {
    return IsReadable();
}

bool CFloatParameter::IsReadable() const {
    return GenApi::IsReadable(node_);
}

bool CFloatParameter::IsWritable() const {
    return GenApi::IsWritable(node_);
}

double CFloatParameter::GetValue(bool verify, bool ignoreCache) const {
    return require(node_).GetValue(verify, ignoreCache);
}

double CFloatParameter::GetValueOrDefault(double defaultValue) const {
    return IsReadable() ? node_->GetValue() : defaultValue;
}

void CFloatParameter::SetValue(double value, bool verify) {
    require(node_).SetValue(value, verify);
}

bool CFloatParameter::TrySetValue(double value) {
    const bool writable = IsWritable();
    if (writable) {
        node_->SetValue(value);
    }
    return writable;
}

double CFloatParameter::GetMin() const {
    return require(node_).GetMin();
}

double CFloatParameter::GetMax() const {
    return require(node_).GetMax();
}

CStringParameter::CStringParameter(INode* node) : node_(viewOf<GenApi::IString>(node)) {}
CStringParameter::CStringParameter(INodeMap* map, const gcstring& name)
    : CStringParameter(find(map, name)) {}
CStringParameter::CStringParameter(INodeMap& map, const gcstring& name)
    : CStringParameter(find(&map, name)) {}

bool CStringParameter::IsValid() const {
    return IsReadable();
}

bool CStringParameter::IsReadable() const {
    return GenApi::IsReadable(node_);
}

bool CStringParameter::IsWritable() const {
    return GenApi::IsWritable(node_);
}

gcstring CStringParameter::GetValue(bool verify, bool ignoreCache) const {
    return require(node_).GetValue(verify, ignoreCache);
}

gcstring CStringParameter::GetValueOrDefault(const gcstring& defaultValue) const {
    return IsReadable() ? node_->GetValue() : defaultValue;
}

void CStringParameter::SetValue(const gcstring& value, bool verify) {
    require(node_).SetValue(value, verify);
}

bool CStringParameter::TrySetValue(const gcstring& value) {
    const bool writable = IsWritable();
    if (writable) {
        node_->SetValue(value);
    }
    return writable;
}

CEnumParameter::CEnumParameter(INode* node) : node_(viewOf<GenApi::IEnumeration>(node)) {}
CEnumParameter::CEnumParameter(INodeMap* map, const gcstring& name)
    : CEnumParameter(find(map, name)) {}
CEnumParameter::CEnumParameter(INodeMap& map, const gcstring& name)
    : CEnumParameter(find(&map, name)) {}

bool CEnumParameter::IsValid() const {
    return IsReadable();
}

bool CEnumParameter::IsReadable() const {
    return GenApi::IsReadable(node_);
}

bool CEnumParameter::IsWritable() const {
    return GenApi::IsWritable(node_);
}

gcstring CEnumParameter::GetValue(bool verify, bool ignoreCache) const {
    return require(node_).ToString(verify, ignoreCache);
}

gcstring CEnumParameter::GetValueOrDefault(const gcstring& defaultValue) const {
    return IsReadable() ? node_->ToString() : defaultValue;
}

void CEnumParameter::SetValue(const gcstring& value, bool verify) {
    require(node_).FromString(value, verify);
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
