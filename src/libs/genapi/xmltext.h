// The text of a description and the elements in it. One pass over the text checks that it is
// well-formed and bounded and takes it apart; whatever is hostile or broken stops here. Elements
// are views: of the text where it can be taken as it stands, of decoded copies elsewhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/xmlelement.h"

namespace GenApi::Detail {

struct TextPlace {
    std::uint32_t line;    // from 1
    std::uint32_t column;  // in bytes, from 1
};

// Stays where it was made, as its elements point into it. One thread at a time.
class XmlText {
public:
    static constexpr std::size_t maximumSize = std::size_t{64} * 1024 * 1024;
    static constexpr std::size_t maximumDepth = 256;
    static constexpr std::size_t maximumElements = std::size_t{4} * 1024 * 1024;
    static constexpr std::size_t maximumAttributes = 256;

    // RuntimeException with line and column unless the text is one well-formed document without
    // entities of its own. `number` tells several texts of one description apart, from 0.
    explicit XmlText(std::string text, std::uint32_t number = 0);
    XmlText(const XmlText&) = delete;
    XmlText& operator=(const XmlText&) = delete;

    [[nodiscard]] XmlElement root() const { return {this, 0}; }
    [[nodiscard]] std::uint32_t number() const { return number_; }
    // Some bytes were not of the declared encoding and were taken as those of a Windows code page.
    [[nodiscard]] bool isRepaired() const { return isRepaired_; }

    // The name space of the root; nothing without a declaration.
    [[nodiscard]] std::optional<std::string_view> nameSpace() const { return nameSpace_; }

    [[nodiscard]] std::size_t size() const { return text_.size(); }
    [[nodiscard]] std::uint32_t lineOf(std::size_t offset) const;
    [[nodiscard]] TextPlace place(std::size_t offset) const;
    // Raises RuntimeException "Node map description, line L, column C: REASON".
    [[noreturn]] void fail(std::size_t offset, const std::string& reason) const;

private:
    friend class XmlElement;
    friend class XmlScanner;

    struct Element {
        std::string_view name;
        std::uint32_t begin = 0;  // of its start tag
        std::uint32_t end = 0;    // behind its end tag
        std::uint32_t contentBegin = 0;
        std::uint32_t contentEnd = 0;
        std::uint32_t firstChild = 0;  // 0 for none, as the root is nobody's child
        std::uint32_t next = 0;
        std::uint32_t firstAttribute = 0;
        std::uint16_t attributeCount = 0;
        bool isPlain = true;  // its content is its text, without anything to decode
    };
    struct Attribute {
        std::string_view name, value;
    };

    void indexLines() const;
    // Names with a prefix of the root's own name space lose it.
    void resolvePrefixes();
    void dropPrefixes(const std::set<std::string_view>& prefixes);

    std::string text_;
    std::uint32_t number_;
    bool isRepaired_ = false;
    std::optional<std::string_view> nameSpace_;
    std::vector<Element> elements_;
    std::vector<Attribute> attributes_;
    std::deque<std::string> decoded_;
    // How many lines begin before each block of the text; filled when a line is asked for first.
    static constexpr std::size_t blockSize = 256;
    mutable std::vector<std::uint32_t> linesBefore_;
};

}  // namespace GenApi::Detail
