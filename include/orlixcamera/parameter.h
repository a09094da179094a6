// Typed parameters of the library's own objects: a value with a range or a list of entries, and
// texts for a user. A parameter belongs to the object that it is a member of and is used by one
// thread at a time, under whatever lock guards that object.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"

namespace GenApi {
class INode;
class INodeMap;
}  // namespace GenApi

namespace Orlix {

enum EParameterInfo {
    ParameterInfo_Name,
    ParameterInfo_DisplayName,
    ParameterInfo_ToolTip,
    ParameterInfo_Description,
};

// Texts that live as long as the process.
struct ParameterTexts {
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;

    // Empty for a value that is no member of EParameterInfo.
    [[nodiscard]] constexpr const char* Get(EParameterInfo info) const noexcept {
        switch (info) {
            case ParameterInfo_Name:
                return name;
            case ParameterInfo_DisplayName:
                return displayName;
            case ParameterInfo_ToolTip:
                return toolTip;
            case ParameterInfo_Description:
                return description;
        }
        return "";
    }
};

struct IntegerRange {
    std::int64_t minimum;
    std::int64_t maximum;
    std::int64_t increment;  // at least 1
};

// Where an integer parameter has its value from: a number in memory, or whatever else answers like
// one, such as a feature of a camera.
class ORLIXCAMERA_API IIntegerSource {
public:
    virtual ~IIntegerSource();

    [[nodiscard]] virtual bool IsReadable() const = 0;
    [[nodiscard]] virtual bool IsWritable() const = 0;
    [[nodiscard]] virtual std::int64_t GetValue(bool verify, bool ignoreCache) const = 0;
    virtual void SetValue(std::int64_t value, bool verify) = 0;
    [[nodiscard]] virtual IntegerRange GetRange() const = 0;
    [[nodiscard]] virtual GenICam::gcstring GetInfo(EParameterInfo info) const = 0;
};

class ORLIXCAMERA_API CIntegerParameter {
public:
    // A parameter without a source: it is not valid, and each access throws AccessException.
    CIntegerParameter() noexcept;
    // A value of its own. The initial value is taken as it is.
    CIntegerParameter(const ParameterTexts& texts, const IntegerRange& range,
                      std::int64_t initialValue);
    explicit CIntegerParameter(std::shared_ptr<IIntegerSource> source) noexcept;
    // The value of an integer feature; the map must live as long as the parameter is used. Without
    // such a feature it is a parameter without a source.
    explicit CIntegerParameter(GenApi::INode* node);
    CIntegerParameter(GenApi::INodeMap* map, const GenICam::gcstring& name);
    CIntegerParameter(GenApi::INodeMap& map, const GenICam::gcstring& name);

    CIntegerParameter(const CIntegerParameter&) = delete;
    CIntegerParameter& operator=(const CIntegerParameter&) = delete;
    ~CIntegerParameter();

    // Whether there is a value to be had.
    [[nodiscard]] bool IsValid() const { return IsReadable(); }
    [[nodiscard]] bool IsReadable() const { return source_ != nullptr && source_->IsReadable(); }
    [[nodiscard]] bool IsWritable() const { return source_ != nullptr && source_->IsWritable(); }

    [[nodiscard]] std::int64_t GetValue(bool verify = false, bool ignoreCache = false) const;
    [[nodiscard]] std::int64_t GetValueOrDefault(std::int64_t defaultValue) const;
    // With `verify`, a value below the minimum, above the maximum or off the increment throws
    // OutOfRangeException that names parameter, value and range, and the old value stays. Without
    // it every value is taken.
    void SetValue(std::int64_t value, bool verify = true);

    [[nodiscard]] std::int64_t GetMin() const;
    [[nodiscard]] std::int64_t GetMax() const;
    [[nodiscard]] std::int64_t GetInc() const;
    [[nodiscard]] GenICam::gcstring GetInfo(EParameterInfo info) const;

private:
    [[nodiscard]] IIntegerSource& Source() const;

    std::shared_ptr<IIntegerSource> source_;
};

namespace Detail {

// One entry of an enumeration, whatever its type.
struct EnumerationEntry {
    std::int64_t value;
    const char* name;
};

// The part of an enumeration parameter that needs no type. Entries live as long as the process.
class ORLIXCAMERA_API EnumerationValue {
public:
    EnumerationValue(const ParameterTexts& texts, std::span<const EnumerationEntry> entries,
                     std::int64_t initialValue) noexcept;

    void Set(std::int64_t value, bool verify);
    void SetByName(std::string_view name);
    [[nodiscard]] std::int64_t Get() const noexcept { return value_; }
    [[nodiscard]] const char* GetName() const;
    [[nodiscard]] bool Has(std::int64_t value) const noexcept;
    [[nodiscard]] std::span<const EnumerationEntry> GetEntries() const noexcept { return entries_; }
    [[nodiscard]] const ParameterTexts& GetTexts() const noexcept { return texts_; }

private:
    ParameterTexts texts_;
    std::span<const EnumerationEntry> entries_;
    std::int64_t value_;
};

}  // namespace Detail

// A value of the enumeration E out of a list of entries.
template <class E>
class CEnumParameterT {
public:
    using Entry = Detail::EnumerationEntry;

    CEnumParameterT(const ParameterTexts& texts, std::span<const Entry> entries,
                    E initialValue) noexcept
        : value_(texts, entries, static_cast<std::int64_t>(initialValue)) {}
    CEnumParameterT(const CEnumParameterT&) = delete;
    CEnumParameterT& operator=(const CEnumParameterT&) = delete;

    [[nodiscard]] bool IsValid() const noexcept { return true; }
    [[nodiscard]] bool IsReadable() const noexcept { return true; }
    [[nodiscard]] bool IsWritable() const noexcept { return true; }

    [[nodiscard]] E GetValue() const noexcept { return static_cast<E>(value_.Get()); }
    // With `verify`, a value that no entry has throws OutOfRangeException that names parameter,
    // value and entries, and the old value stays. Without it every value is taken.
    void SetValue(E value, bool verify = true) {
        value_.Set(static_cast<std::int64_t>(value), verify);
    }
    [[nodiscard]] bool CanSetValue(E value) const noexcept {
        return value_.Has(static_cast<std::int64_t>(value));
    }

    // The symbolic name of the value; OutOfRangeException if no entry has it.
    [[nodiscard]] GenICam::gcstring ToString() const { return value_.GetName(); }
    // Sets the value by its symbolic name, case included; OutOfRangeException for any other text.
    void FromString(std::string_view name) { value_.SetByName(name); }

    // In the order in which a user should see them.
    [[nodiscard]] std::span<const Entry> GetEntries() const noexcept { return value_.GetEntries(); }
    [[nodiscard]] GenICam::gcstring GetInfo(EParameterInfo info) const {
        return value_.GetTexts().Get(info);
    }

private:
    Detail::EnumerationValue value_;
};

}  // namespace Orlix
