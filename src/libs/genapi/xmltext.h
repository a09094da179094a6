// The text of a description before it becomes a tree: brought to UTF-8, checked to be well-formed,
// with a map from positions to lines. The tree builder below is lenient and bounds nothing, so
// whatever is hostile or broken has to stop here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace GenApi::Detail {

struct TextPlace {
    std::uint32_t line;    // from 1
    std::uint32_t column;  // in bytes, from 1
};

// One thread at a time.
class XmlText {
public:
    static constexpr std::size_t maximumSize = std::size_t{64} * 1024 * 1024;
    static constexpr std::size_t maximumDepth = 256;

    // RuntimeException with line and column unless the text is one well-formed document without
    // entities of its own.
    explicit XmlText(std::string text);

    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] TextPlace place(std::size_t offset) const;
    // Raises RuntimeException "Node map description, line L, column C: REASON".
    [[noreturn]] void fail(std::size_t offset, const std::string& reason) const;

private:
    void indexLines();

    std::string text_;
    std::vector<std::uint32_t> lineStarts_;
};

}  // namespace GenApi::Detail
