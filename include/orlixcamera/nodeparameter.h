// Features of a node map as typed parameters. A parameter refers to its node and lives no longer
// than the map; it owns nothing and may be copied. Threads and errors are those of the map.
//
// A null node, a null map, a name that no node has and a node of another type make a parameter
// that refers to nothing: it is not valid, and each access that is no question throws
// AccessException.
#pragma once

#include <cstdint>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"
#include "orlixcamera/parameter.h"

namespace GenApi {
class IBoolean;
class IEnumeration;
class IFloat;
class INode;
class INodeMap;
class IString;
}  // namespace GenApi

namespace Orlix {

using GenICam::gcstring;

// What the parameters below have in common; there are no others.
template <class Interface, class Value>
class CNodeParameter {
public:
    CNodeParameter() noexcept = default;
    explicit CNodeParameter(GenApi::INode* node);
    CNodeParameter(GenApi::INodeMap* map, const gcstring& name);
    CNodeParameter(GenApi::INodeMap& map, const gcstring& name);

    // Whether there is such a feature and it can be read now, as IsReadable; one that can only be
    // written is not valid.
    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;
    [[nodiscard]] Value GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] Value GetValueOrDefault(const Value& defaultValue) const;
    void SetValue(const Value& value, bool verify = true);
    // False instead of an exception where it can't be written.
    bool TrySetValue(const Value& value);

protected:
    Interface* node_ = nullptr;
};

extern template class ORLIXCAMERA_API CNodeParameter<GenApi::IBoolean, bool>;
extern template class ORLIXCAMERA_API CNodeParameter<GenApi::IFloat, double>;
extern template class ORLIXCAMERA_API CNodeParameter<GenApi::IString, gcstring>;
extern template class ORLIXCAMERA_API CNodeParameter<GenApi::IEnumeration, gcstring>;

class ORLIXCAMERA_API CBooleanParameter : public CNodeParameter<GenApi::IBoolean, bool> {
public:
    using CNodeParameter::CNodeParameter;
};

class ORLIXCAMERA_API CFloatParameter : public CNodeParameter<GenApi::IFloat, double> {
public:
    using CNodeParameter::CNodeParameter;

    [[nodiscard]] double GetMin() const;
    [[nodiscard]] double GetMax() const;
};

class ORLIXCAMERA_API CStringParameter : public CNodeParameter<GenApi::IString, gcstring> {
public:
    using CNodeParameter::CNodeParameter;
};

// Values are the symbolic names of the entries.
class ORLIXCAMERA_API CEnumParameter : public CNodeParameter<GenApi::IEnumeration, gcstring> {
public:
    using CNodeParameter::CNodeParameter;

    // Whether the feature can be written now and has that entry, now.
    [[nodiscard]] bool CanSetValue(const gcstring& value) const;
    // False instead of an exception if the feature is absent, not writable or lacks the entry.
    bool TrySetValue(const gcstring& value);
};

}  // namespace Orlix
