#include "orlixcamera/parameter.h"

#include <algorithm>
#include <string>
#include <utility>

#include "gcbase/gcexception.h"

namespace Orlix {
namespace {

// A number in memory.
class IntegerValue final : public IIntegerSource {
public:
    IntegerValue(const ParameterTexts& texts, const IntegerRange& range, std::int64_t value)
        : texts_(texts), range_(range), value_(value) {}

    [[nodiscard]] bool IsReadable() const override { return true; }
    [[nodiscard]] bool IsWritable() const override { return true; }
    [[nodiscard]] std::int64_t GetValue(bool, bool) const override { return value_; }
    void SetValue(std::int64_t value, bool verify) override;
    [[nodiscard]] IntegerRange GetRange() const override { return range_; }
    [[nodiscard]] GenICam::gcstring GetInfo(EParameterInfo info) const override {
        return texts_.Get(info);
    }

private:
    [[nodiscard]] bool IsInRange(std::int64_t value) const noexcept;

    ParameterTexts texts_;
    IntegerRange range_;
    std::int64_t value_;
};

bool IntegerValue::IsInRange(std::int64_t value) const noexcept {
    if (value < range_.minimum || value > range_.maximum) {
        return false;
    }
    // Unsigned, for the distance of two values may be too far for a signed one.
    const auto distance =
        static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(range_.minimum);
    return distance % static_cast<std::uint64_t>(range_.increment) == 0;
}

void IntegerValue::SetValue(std::int64_t value, bool verify) {
    if (verify && !IsInRange(value)) {
        const std::string text = "The value " + std::to_string(value) + " of parameter " +
                                 texts_.name + " is out of range: it must be from " +
                                 std::to_string(range_.minimum) + " to " +
                                 std::to_string(range_.maximum) + " in steps of " +
                                 std::to_string(range_.increment) + ".";
        throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
    }
    value_ = value;
}

std::string ListNames(std::span<const Detail::EnumerationEntry> entries) {
    std::string names;
    for (const Detail::EnumerationEntry& entry : entries) {
        names += (names.empty() ? "" : ", ");
        names += entry.name;
    }
    return names;
}

[[noreturn]] void ThrowNoEntry(const Detail::EnumerationValue& parameter,
                               const std::string& value) {
    const std::string text = "The value " + value + " of parameter " + parameter.GetTexts().name +
                             " is out of range: it must be one of " +
                             ListNames(parameter.GetEntries()) + ".";
    throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace

IIntegerSource::~IIntegerSource() = default;

CIntegerParameter::CIntegerParameter() noexcept = default;

CIntegerParameter::CIntegerParameter(const ParameterTexts& texts, const IntegerRange& range,
                                     std::int64_t initialValue)
    : source_(std::make_shared<IntegerValue>(texts, range, initialValue)) {}

CIntegerParameter::CIntegerParameter(std::shared_ptr<IIntegerSource> source) noexcept
    : source_(std::move(source)) {}

CIntegerParameter::~CIntegerParameter() = default;

IIntegerSource& CIntegerParameter::Source() const {
    if (source_ == nullptr) {
        throw GenICam::AccessException("The parameter is accessed, but it refers to nothing.",
                                       __FILE__, __LINE__);
    }
    return *source_;
}

std::int64_t CIntegerParameter::GetValue(bool verify, bool ignoreCache) const {
    return Source().GetValue(verify, ignoreCache);
}

std::int64_t CIntegerParameter::GetValueOrDefault(std::int64_t defaultValue) const {
    return IsReadable() ? source_->GetValue(false, false) : defaultValue;
}

void CIntegerParameter::SetValue(std::int64_t value, bool verify) {
    Source().SetValue(value, verify);
}

std::int64_t CIntegerParameter::GetMin() const {
    return Source().GetRange().minimum;
}

std::int64_t CIntegerParameter::GetMax() const {
    return Source().GetRange().maximum;
}

std::int64_t CIntegerParameter::GetInc() const {
    return Source().GetRange().increment;
}

GenICam::gcstring CIntegerParameter::GetInfo(EParameterInfo info) const {
    return Source().GetInfo(info);
}

namespace Detail {

EnumerationValue::EnumerationValue(const ParameterTexts& texts,
                                   std::span<const EnumerationEntry> entries,
                                   std::int64_t initialValue) noexcept
    : texts_(texts), entries_(entries), value_(initialValue) {}

bool EnumerationValue::Has(std::int64_t value) const noexcept {
    return std::any_of(entries_.begin(), entries_.end(),
                       [=](const EnumerationEntry& entry) { return entry.value == value; });
}

void EnumerationValue::Set(std::int64_t value, bool verify) {
    if (verify && !Has(value)) {
        ThrowNoEntry(*this, std::to_string(value));
    }
    value_ = value;
}

void EnumerationValue::SetByName(std::string_view name) {
    const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                    [=](const EnumerationEntry& e) { return e.name == name; });
    if (entry == entries_.end()) {
        ThrowNoEntry(*this, "\"" + std::string(name) + "\"");
    }
    value_ = entry->value;
}

const char* EnumerationValue::GetName() const {
    const auto entry =
        std::find_if(entries_.begin(), entries_.end(),
                     [this](const EnumerationEntry& e) { return e.value == value_; });
    if (entry == entries_.end()) {
        ThrowNoEntry(*this, std::to_string(value_));
    }
    return entry->name;
}

}  // namespace Detail
}  // namespace Orlix
