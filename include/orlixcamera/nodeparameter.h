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

class ORLIXCAMERA_API CBooleanParameter {
public:
    CBooleanParameter() noexcept = default;
    explicit CBooleanParameter(GenApi::INode* node);
    CBooleanParameter(GenApi::INodeMap* map, const gcstring& name);
    CBooleanParameter(GenApi::INodeMap& map, const gcstring& name);

    // Whether there is such a feature and it can be read or written now.
    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;
    [[nodiscard]] bool GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] bool GetValueOrDefault(bool defaultValue) const;
    void SetValue(bool value, bool verify = true);
    // False instead of an exception where it can't be written.
    bool TrySetValue(bool value);

private:
    GenApi::IBoolean* node_ = nullptr;
};

class ORLIXCAMERA_API CFloatParameter {
public:
    CFloatParameter() noexcept = default;
    explicit CFloatParameter(GenApi::INode* node);
    CFloatParameter(GenApi::INodeMap* map, const gcstring& name);
    CFloatParameter(GenApi::INodeMap& map, const gcstring& name);

    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;
    [[nodiscard]] double GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] double GetValueOrDefault(double defaultValue) const;
    void SetValue(double value, bool verify = true);
    bool TrySetValue(double value);
    [[nodiscard]] double GetMin() const;
    [[nodiscard]] double GetMax() const;

private:
    GenApi::IFloat* node_ = nullptr;
};

class ORLIXCAMERA_API CStringParameter {
public:
    CStringParameter() noexcept = default;
    explicit CStringParameter(GenApi::INode* node);
    CStringParameter(GenApi::INodeMap* map, const gcstring& name);
    CStringParameter(GenApi::INodeMap& map, const gcstring& name);

    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;
    [[nodiscard]] gcstring GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] gcstring GetValueOrDefault(const gcstring& defaultValue) const;
    void SetValue(const gcstring& value, bool verify = true);
    bool TrySetValue(const gcstring& value);

private:
    GenApi::IString* node_ = nullptr;
};

// Values are the symbolic names of the entries.
class ORLIXCAMERA_API CEnumParameter {
public:
    CEnumParameter() noexcept = default;
    explicit CEnumParameter(GenApi::INode* node);
    CEnumParameter(GenApi::INodeMap* map, const gcstring& name);
    CEnumParameter(GenApi::INodeMap& map, const gcstring& name);

    [[nodiscard]] bool IsValid() const;
    [[nodiscard]] bool IsReadable() const;
    [[nodiscard]] bool IsWritable() const;
    [[nodiscard]] gcstring GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] gcstring GetValueOrDefault(const gcstring& defaultValue) const;
    void SetValue(const gcstring& value, bool verify = true);
    // Whether the feature can be written now and has that entry, now.
    [[nodiscard]] bool CanSetValue(const gcstring& value) const;
    // False instead of an exception if the feature is absent, not writable or lacks the entry.
    bool TrySetValue(const gcstring& value);

private:
    GenApi::IEnumeration* node_ = nullptr;
};

}  // namespace Orlix
