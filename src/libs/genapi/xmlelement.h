// A handle of one element of an XmlText, valid as long as that. Copies are cheap.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace GenApi::Detail {

class XmlText;

class XmlElement {
public:
    XmlElement() = default;
    XmlElement(const XmlText* owner, std::uint32_t index) : owner_(owner), index_(index) {}

    [[nodiscard]] explicit operator bool() const { return owner_ != nullptr; }
    // Without the prefix of the description's own name space.
    [[nodiscard]] std::string_view name() const;
    [[nodiscard]] std::optional<std::string_view> attribute(std::string_view name) const;
    // Empty for a missing one, too.
    [[nodiscard]] std::string_view valueOf(std::string_view attributeName) const {
        return attribute(attributeName).value_or(std::string_view());
    }
    // All text right below the element; comments are left out. The buffer is used only where
    // something has to be decoded.
    [[nodiscard]] std::string_view text(std::string& buffer) const;
    [[nodiscard]] std::uint32_t line() const;
    // Which of several texts it stands in.
    [[nodiscard]] std::uint32_t document() const;
    // Names the element among all others.
    [[nodiscard]] const void* key() const;
    // As XmlText::fail, at the element.
    [[noreturn]] void fail(const std::string& reason) const;

    class Iterator;
    struct Children;
    // In the order of the text.
    [[nodiscard]] Children children() const;

private:
    const XmlText* owner_ = nullptr;
    std::uint32_t index_ = 0;
};

class XmlElement::Iterator {
public:
    Iterator(const XmlText* owner, std::uint32_t index) : at_(owner, index) {}
    [[nodiscard]] XmlElement operator*() const { return at_; }
    Iterator& operator++();
    [[nodiscard]] bool operator!=(const Iterator& other) const {
        return at_.index_ != other.at_.index_;
    }

private:
    XmlElement at_;
};

struct XmlElement::Children {
    Iterator first, last;
    [[nodiscard]] Iterator begin() const { return first; }
    [[nodiscard]] Iterator end() const { return last; }
};

}  // namespace GenApi::Detail
