// The text type of every interface: a value, in UTF-8 wherever it holds a path. It owns its
// characters; one object may be used by one thread at a time, copies are independent.
#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace GenICam {

class gcstring {
public:
    static constexpr std::size_t npos = std::string::npos;

    gcstring() noexcept = default;
    // A null pointer gives the empty text.
    gcstring(const char* text) : value_(text != nullptr ? text : "") {}
    gcstring(const char* text, std::size_t length) : value_(text, length) {}
    gcstring(std::size_t count, char character) : value_(count, character) {}
    explicit gcstring(std::string text) noexcept : value_(std::move(text)) {}
    explicit gcstring(std::string_view text) : value_(text) {}

    [[nodiscard]] const char* c_str() const noexcept { return value_.c_str(); }
    [[nodiscard]] std::size_t length() const noexcept { return value_.size(); }
    [[nodiscard]] std::size_t size() const noexcept { return value_.size(); }
    [[nodiscard]] bool empty() const noexcept { return value_.empty(); }
    [[nodiscard]] char at(std::size_t index) const { return value_.at(index); }
    [[nodiscard]] char operator[](std::size_t index) const { return value_[index]; }

    // The same characters as a standard text; the reference lives as long as this object.
    [[nodiscard]] const std::string& str() const noexcept { return value_; }
    [[nodiscard]] std::string_view view() const noexcept { return value_; }
    operator std::string_view() const noexcept { return value_; }

    gcstring& append(const gcstring& text) {
        value_.append(text.value_);
        return *this;
    }
    gcstring& append(std::size_t count, char character) {
        value_.append(count, character);
        return *this;
    }
    gcstring& assign(const gcstring& text) {
        value_ = text.value_;
        return *this;
    }
    void push_back(char character) { value_.push_back(character); }
    void clear() noexcept { value_.clear(); }
    void erase(std::size_t position = 0, std::size_t count = npos) {
        value_.erase(position, count);
    }
    void resize(std::size_t length) { value_.resize(length); }
    void reserve(std::size_t length) { value_.reserve(length); }
    void swap(gcstring& other) noexcept { value_.swap(other.value_); }

    [[nodiscard]] int compare(const gcstring& other) const noexcept {
        return value_.compare(other.value_);
    }
    [[nodiscard]] gcstring substr(std::size_t position = 0, std::size_t count = npos) const {
        return gcstring(value_.substr(position, count));
    }
    [[nodiscard]] std::size_t find(std::string_view text, std::size_t position = 0) const noexcept {
        return value_.find(text, position);
    }
    [[nodiscard]] std::size_t find(char character, std::size_t position = 0) const noexcept {
        return value_.find(character, position);
    }
    [[nodiscard]] std::size_t rfind(char character, std::size_t position = npos) const noexcept {
        return value_.rfind(character, position);
    }
    [[nodiscard]] std::size_t find_first_of(std::string_view characters,
                                            std::size_t position = 0) const noexcept {
        return value_.find_first_of(characters, position);
    }
    [[nodiscard]] std::size_t find_first_not_of(std::string_view characters,
                                                std::size_t position = 0) const noexcept {
        return value_.find_first_not_of(characters, position);
    }

    gcstring& operator+=(const gcstring& text) { return append(text); }
    gcstring& operator+=(const char* text) {
        value_.append(text);
        return *this;
    }
    gcstring& operator+=(char character) {
        value_.push_back(character);
        return *this;
    }

private:
    std::string value_;
};

inline gcstring operator+(gcstring left, const gcstring& right) {
    return std::move(left += right);
}
inline gcstring operator+(gcstring left, const char* right) {
    return std::move(left += right);
}
inline gcstring operator+(const char* left, const gcstring& right) {
    return gcstring(left) += right;
}

inline bool operator==(const gcstring& a, const gcstring& b) noexcept {
    return a.str() == b.str();
}
inline bool operator==(const gcstring& a, const char* b) noexcept {
    return a.str() == b;
}
inline bool operator<(const gcstring& a, const gcstring& b) noexcept {
    return a.str() < b.str();
}
inline bool operator>(const gcstring& a, const gcstring& b) noexcept {
    return b < a;
}
inline bool operator<=(const gcstring& a, const gcstring& b) noexcept {
    return !(b < a);
}
inline bool operator>=(const gcstring& a, const gcstring& b) noexcept {
    return !(a < b);
}

// A template, so that this header needs no stream header.
template <typename Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                             const gcstring& text) {
    return out << text.str();
}

}  // namespace GenICam

template <>
struct std::hash<GenICam::gcstring> {
    std::size_t operator()(const GenICam::gcstring& text) const noexcept {
        return std::hash<std::string>()(text.str());
    }
};
