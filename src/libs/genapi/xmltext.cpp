#include "genapi/xmltext.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "gcbase/gcexception.h"

namespace GenApi::Detail {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isNamePart(char c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Walks once over the document. Each step either moves on or fails with the place.
class Scanner {
public:
    explicit Scanner(const XmlText& owner) : owner_(owner), text_(owner.text()) {}

    void scanDocument() {
        while (position_ < text_.size()) {
            if (text_[position_] == '<') {
                scanMarkup();
            } else {
                scanText();
            }
        }
        if (!open_.empty()) {
            fail(open_.back().begin, "the element '" + name(open_.back()) + "' is not closed.");
        }
        if (!hasRoot_) {
            fail(0, "the text is empty: it has no root element.");
        }
    }

private:
    struct Name {
        std::size_t begin;
        std::size_t length;
    };

    [[noreturn]] void fail(std::size_t offset, const std::string& reason) const {
        owner_.fail(offset, "not well-formed, " + reason);
    }
    [[nodiscard]] std::string name(Name n) const { return std::string(view(n)); }
    [[nodiscard]] std::string_view view(Name n) const { return text_.substr(n.begin, n.length); }
    [[nodiscard]] bool startsWith(std::string_view what) const {
        return text_.substr(position_, what.size()) == what;
    }
    [[nodiscard]] char current() const {
        return position_ < text_.size() ? text_[position_] : '\0';
    }

    void skipSpace() {
        while (position_ < text_.size() && isSpace(text_[position_])) {
            ++position_;
        }
    }

    void skipPast(std::string_view end, const char* what) {
        const std::size_t found = text_.find(end, position_);
        if (found == std::string_view::npos) {
            fail(position_, std::string(what) + " has no end.");
        }
        position_ = found + end.size();
    }

    void scanMarkup() {
        if (startsWith("<!--")) {
            position_ += 4;
            skipPast("-->", "a comment");
        } else if (startsWith("<![CDATA[")) {
            if (open_.empty()) {
                fail(position_, "text stands outside of the root element.");
            }
            skipPast("]]>", "a CDATA section");
        } else if (startsWith("<?")) {
            skipPast("?>", "a processing instruction");
        } else if (startsWith("<!DOCTYPE")) {
            scanDocumentType();
        } else if (startsWith("</")) {
            scanEndTag();
        } else {
            scanStartTag();
        }
    }

    // A document type may be named; what it would declare could blow up or reach out.
    void scanDocumentType() {
        const std::size_t begin = position_;
        for (; current() != '>'; ++position_) {
            if (position_ >= text_.size()) {
                fail(begin, "the document type has no end.");
            }
            if (current() == '[') {
                owner_.fail(begin, "a document type with declarations (entities) is refused.");
            }
        }
        ++position_;
    }

    Name scanName() {
        const Name start{position_, 0};
        if (!isNameStart(current())) {
            fail(position_, "'<' is not followed by a name; a '<' in a text is written &lt;.");
        }
        while (position_ < text_.size() && isNamePart(text_[position_])) {
            ++position_;
        }
        return {start.begin, position_ - start.begin};
    }

    void scanStartTag() {
        const std::size_t begin = position_++;
        const Name tag = scanName();
        if (open_.empty() && hasRoot_) {
            fail(begin, "a second root element '" + name(tag) + "'.");
        }
        hasRoot_ = true;
        scanAttributes(tag);
        if (current() == '/') {
            ++position_;
        } else {
            open_.push_back(tag);
        }
        if (open_.size() > XmlText::maximumDepth) {
            owner_.fail(begin, "elements are nested deeper than " +
                                   std::to_string(XmlText::maximumDepth) + ".");
        }
        if (current() != '>') {
            fail(position_, "'>' is missing at the end of the tag '" + name(tag) + "'.");
        }
        ++position_;
    }

    void scanAttributes(Name tag) {
        attributes_.clear();
        for (;;) {
            const std::size_t before = position_;
            skipSpace();
            if (position_ >= text_.size()) {
                fail(tag.begin, "the tag '" + name(tag) + "' has no end.");
            }
            if (current() == '>' || current() == '/') {
                return;
            }
            if (before == position_) {
                fail(position_, "a blank is missing before an attribute of '" + name(tag) + "'.");
            }
            scanAttribute(tag);
        }
    }

    void scanAttribute(Name tag) {
        if (!isNameStart(current())) {
            fail(position_, "the tag '" + name(tag) + "' holds a character that is no attribute.");
        }
        const Name attribute = scanName();
        for (const Name& other : attributes_) {
            if (view(other) == view(attribute)) {
                fail(attribute.begin, "the attribute '" + name(attribute) + "' is given twice.");
            }
        }
        attributes_.push_back(attribute);
        skipSpace();
        if (current() != '=') {
            fail(position_, "the attribute '" + name(attribute) + "' has no value.");
        }
        ++position_;
        skipSpace();
        const char quote = current();
        if (quote != '"' && quote != '\'') {
            fail(position_, "the value of '" + name(attribute) + "' is not in quotes.");
        }
        scanQuoted(quote);
    }

    void scanQuoted(char quote) {
        const std::size_t begin = position_++;
        while (current() != quote) {
            if (position_ >= text_.size()) {
                fail(begin, "an attribute's value has no end.");
            }
            if (current() == '<') {
                fail(position_, "'<' stands in an attribute's value; it is written &lt;.");
            }
            scanCharacter();
        }
        ++position_;
    }

    void scanEndTag() {
        const std::size_t begin = position_;
        position_ += 2;
        const Name tag = scanName();
        skipSpace();
        if (current() != '>') {
            fail(position_, "'>' is missing at the end of the tag '/" + name(tag) + "'.");
        }
        ++position_;
        if (open_.empty() || view(open_.back()) != view(tag)) {
            const std::string expected =
                open_.empty() ? "no element is open." : "'" + name(open_.back()) + "' is open.";
            fail(begin, "the end tag '" + name(tag) + "' closes nothing, " + expected);
        }
        open_.pop_back();
    }

    void scanText() {
        while (position_ < text_.size() && text_[position_] != '<') {
            if (open_.empty() && !isSpace(text_[position_])) {
                fail(position_, "text stands outside of the root element.");
            }
            scanCharacter();
        }
    }

    void scanCharacter() {
        const char c = text_[position_];
        if (c == '&') {
            scanReference();
            return;
        }
        if (static_cast<unsigned char>(c) < 0x20 && !isSpace(c)) {
            fail(position_, "a control character.");
        }
        ++position_;
    }

    void scanReference() {
        const std::size_t end = text_.find(';', position_);
        const std::string_view reference = end == std::string_view::npos || end - position_ > 12
                                               ? std::string_view()
                                               : text_.substr(position_ + 1, end - position_ - 1);
        constexpr std::array<std::string_view, 5> known = {"amp", "lt", "gt", "quot", "apos"};
        if (std::find(known.begin(), known.end(), reference) == known.end() &&
            !isCharacterReference(reference)) {
            fail(position_, "'&' begins no known reference; a '&' in a text is written &amp;.");
        }
        position_ = end + 1;
    }

    static bool isCharacterReference(std::string_view reference) {
        if (reference.size() < 2 || reference[0] != '#') {
            return false;
        }
        const bool hex = reference[1] == 'x';
        reference.remove_prefix(hex ? 2 : 1);
        std::uint32_t code = 0;
        const char* last = reference.data() + reference.size();
        const auto [end, error] = std::from_chars(reference.data(), last, code, hex ? 16 : 10);
        return error == std::errc{} && end == last && code != 0 && code <= 0x10FFFF;
    }

    const XmlText& owner_;
    std::string_view text_;
    std::size_t position_ = 0;
    bool hasRoot_ = false;
    std::vector<Name> open_;
    std::vector<Name> attributes_;
};

// Single bytes above 127 become two; nothing else of the encoding differs.
std::string fromLatin1(const std::string& text) {
    std::string result;
    result.reserve(text.size() + text.size() / 16);
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | (byte >> 6));
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return result;
}

bool isDeclaredLatin1(const std::string& text) {
    if (text.compare(0, 5, "<?xml") != 0) {
        return false;
    }
    const std::string declaration =
        upperCase(text.substr(0, std::min(text.find("?>"), text.size())));
    return declaration.find("ISO-8859-1") != std::string::npos ||
           declaration.find("WINDOWS-1252") != std::string::npos ||
           declaration.find("LATIN1") != std::string::npos;
}

}  // namespace

XmlText::XmlText(std::string text) : text_(std::move(text)) {
    if (text_.size() > maximumSize) {
        throw GenICam::RuntimeException(
            ("Node map description: the text of " + std::to_string(text_.size()) +
             " bytes is larger than " + std::to_string(maximumSize) + ".")
                .c_str(),
            __FILE__, __LINE__);
    }
    // Devices pad their description with zeros.
    text_.erase(text_.find_last_not_of('\0') + 1);
    if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        text_.erase(0, 3);
    }
    if (isDeclaredLatin1(text_)) {
        text_ = fromLatin1(text_);
    }
    indexLines();
    if (text_.compare(0, 2, "\xFF\xFE") == 0 || text_.compare(0, 2, "\xFE\xFF") == 0) {
        fail(0, "the text is in UTF-16; UTF-8 is expected.");
    }
    Scanner(*this).scanDocument();
}

void XmlText::indexLines() {
    lineStarts_.push_back(0);
    for (std::size_t i = 0; i < text_.size(); ++i) {
        const bool lineFeed = text_[i] == '\n';
        const bool lone = text_[i] == '\r' && (i + 1 == text_.size() || text_[i + 1] != '\n');
        if (lineFeed || lone) {
            lineStarts_.push_back(static_cast<std::uint32_t>(i + 1));
        }
    }
}

TextPlace XmlText::place(std::size_t offset) const {
    const auto next = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
    const auto line = static_cast<std::uint32_t>(next - lineStarts_.begin());
    return {line, static_cast<std::uint32_t>(offset - *(next - 1) + 1)};
}

void XmlText::fail(std::size_t offset, const std::string& reason) const {
    const TextPlace where = place(offset);
    const std::string text = "Node map description, line " + std::to_string(where.line) +
                             ", column " + std::to_string(where.column) + ": " + reason;
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace GenApi::Detail
