// The pass over a text that checks it and takes it apart. It never goes back and does not recurse.
#include "genapi/xmlscanner.h"

#include <array>
#include <cstring>

#include "genapi/xmlencoding.h"
#include "genapi/xmltext.h"

namespace GenApi::Detail {

namespace {

// What a character may be in a text or a name.
enum CharacterClass : std::uint8_t {
    blankCharacter = 1,
    nameStart = 2,
    namePart = 4,
    controlCharacter = 8
};

constexpr std::array<std::uint8_t, 256> makeClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (unsigned i = 0; i < 256; ++i) {
        const bool isBlank = i == ' ' || i == '\t' || i == '\n' || i == '\r';
        const bool isStart =
            (i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || i == '_' || i == ':' || i >= 0x80;
        const bool isPart = isStart || (i >= '0' && i <= '9') || i == '-' || i == '.';
        classes[i] = static_cast<std::uint8_t>((isBlank ? blankCharacter : 0) |
                                               (isStart ? nameStart : 0) | (isPart ? namePart : 0) |
                                               (i < 0x20 && !isBlank ? controlCharacter : 0));
    }
    return classes;
}

constexpr std::array<std::uint8_t, 256> classes = makeClasses();

bool is(char c, unsigned kind) {
    return (classes[static_cast<unsigned char>(c)] & kind) != 0;
}

// True if none of eight characters is '<', '&' or below a blank.
bool isQuiet(const char* text) {
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highs = 0x8080808080808080U;
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    const auto hasZero = [](std::uint64_t w) { return (w - ones) & ~w & highs; };
    return ((hasZero(word ^ ones * '<') | hasZero(word ^ ones * '&') |
             ((word - ones * 0x20) & ~word & highs))) == 0;
}

}  // namespace

// Walks once over the document. Each step either moves on or fails with the place.
class XmlScanner {
public:
    explicit XmlScanner(XmlText& owner) : owner_(owner), text_(owner.text_) {
        // About what descriptions have; each growth would copy all.
        owner_.elements_.reserve(text_.size() / 64 + 1);
        owner_.attributes_.reserve(text_.size() / 256 + 16);
    }

    void scanDocument() {
        while (position_ < text_.size()) {
            if (text_[position_] == '<') {
                scanMarkup();
            } else {
                scanText();
            }
        }
        if (!open_.empty()) {
            const XmlText::Element& last = owner_.elements_[open_.back().element];
            fail(last.begin + 1, "the element '" + std::string(last.name) + "' is not closed.");
        }
        if (owner_.elements_.empty()) {
            fail(0, "the text is empty: it has no root element.");
        }
    }

private:
    struct Open {
        std::uint32_t element;
        std::uint32_t lastChild;
    };

    [[noreturn]] void fail(std::size_t offset, const std::string& reason) const {
        owner_.fail(offset, "not well-formed, " + reason);
    }
    [[nodiscard]] bool startsWith(std::string_view what) const {
        return text_.substr(position_, what.size()) == what;
    }
    [[nodiscard]] char current() const {
        return position_ < text_.size() ? text_[position_] : '\0';
    }
    // The text of the open element is not simply what stands there.
    void markDecoded() {
        if (!open_.empty()) {
            owner_.elements_[open_.back().element].isPlain = false;
        }
    }

    void skipBlanks() {
        while (position_ < text_.size() && is(text_[position_], blankCharacter)) {
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
        const char second = position_ + 1 < text_.size() ? text_[position_ + 1] : '\0';
        if (second == '/') {
            scanEndTag();
        } else if (second == '!' || second == '?') {
            markDecoded();
            scanSpecial();
        } else {
            scanStartTag();
        }
    }

    void scanSpecial() {
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
        } else if (open_.empty() && owner_.elements_.empty() && startsWith("<!DOCTYPE")) {
            scanDocumentType();
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

    std::string_view scanName() {
        const std::size_t begin = position_;
        if (!is(current(), nameStart)) {
            fail(position_, "'<' is not followed by a name; a '<' in a text is written &lt;.");
        }
        while (position_ < text_.size() && is(text_[position_], namePart)) {
            ++position_;
        }
        return text_.substr(begin, position_ - begin);
    }

    void scanStartTag() {
        const std::size_t begin = position_++;
        const std::string_view tag = scanName();
        if (open_.empty() && !owner_.elements_.empty()) {
            fail(begin, "a second root element '" + std::string(tag) + "'.");
        }
        if (owner_.elements_.size() >= XmlText::maximumElements) {
            owner_.fail(begin, "there are more than " + std::to_string(XmlText::maximumElements) +
                                   " elements.");
        }
        const std::uint32_t index = add(begin, tag);
        scanAttributes(tag, begin, index);
        const bool isEmpty = current() == '/';
        position_ += isEmpty ? 1 : 0;
        if (current() != '>') {
            fail(position_, "'>' is missing at the end of the tag '" + std::string(tag) + "'.");
        }
        ++position_;
        XmlText::Element& element = owner_.elements_[index];
        element.contentBegin = element.contentEnd = element.end =
            static_cast<std::uint32_t>(position_);
        if (!isEmpty) {
            open_.push_back({index, 0});
        }
        if (open_.size() > XmlText::maximumDepth) {
            owner_.fail(begin, "elements are nested deeper than " +
                                   std::to_string(XmlText::maximumDepth) + ".");
        }
    }

    std::uint32_t add(std::size_t begin, std::string_view tag) {
        auto& elements = owner_.elements_;
        const auto index = static_cast<std::uint32_t>(elements.size());
        if (!open_.empty()) {
            Open& parent = open_.back();
            elements[parent.element].isPlain = false;
            (parent.lastChild == 0 ? elements[parent.element].firstChild
                                   : elements[parent.lastChild].next) = index;
            parent.lastChild = index;
        }
        XmlText::Element& element = elements.emplace_back();
        element.name = tag;
        element.begin = static_cast<std::uint32_t>(begin);
        element.firstAttribute = static_cast<std::uint32_t>(owner_.attributes_.size());
        return index;
    }

    void scanAttributes(std::string_view tag, std::size_t begin, std::uint32_t index) {
        for (;;) {
            const std::size_t before = position_;
            skipBlanks();
            if (position_ >= text_.size()) {
                fail(begin + 1, "the tag '" + std::string(tag) + "' has no end.");
            }
            if (current() == '>' || current() == '/') {
                return;
            }
            if (before == position_) {
                fail(position_,
                     "a blank is missing before an attribute of '" + std::string(tag) + "'.");
            }
            scanAttribute(tag, owner_.elements_[index]);
        }
    }

    void scanAttribute(std::string_view tag, XmlText::Element& element) {
        if (!is(current(), nameStart)) {
            fail(position_,
                 "the tag '" + std::string(tag) + "' holds a character that is no attribute.");
        }
        const std::size_t begin = position_;
        const std::string_view attribute = scanName();
        const std::string name(attribute);
        auto& list = owner_.attributes_;
        for (std::size_t i = element.firstAttribute; i < list.size(); ++i) {
            if (list[i].name == attribute) {
                fail(begin, "the attribute '" + name + "' is given twice.");
            }
        }
        if (element.attributeCount >= XmlText::maximumAttributes) {
            owner_.fail(begin, "an element has more than " +
                                   std::to_string(XmlText::maximumAttributes) + " attributes.");
        }
        skipBlanks();
        if (current() != '=') {
            fail(position_, "the attribute '" + name + "' has no value.");
        }
        ++position_;
        skipBlanks();
        const char quote = current();
        if (quote != '"' && quote != '\'') {
            fail(position_, "the value of '" + name + "' is not in quotes.");
        }
        list.push_back({attribute, scanQuoted(quote)});
        ++element.attributeCount;
    }

    std::string_view scanQuoted(char quote) {
        const std::size_t begin = position_++;
        bool isPlain = true;
        while (current() != quote) {
            if (position_ >= text_.size()) {
                fail(begin, "an attribute's value has no end.");
            }
            const char c = current();
            if (c == '<') {
                fail(position_, "'<' stands in an attribute's value; it is written &lt;.");
            }
            isPlain = isPlain && c != '&' && (c == ' ' || !is(c, blankCharacter));
            scanCharacter();
        }
        const std::string_view raw = text_.substr(begin + 1, position_++ - begin - 1);
        if (isPlain) {
            return raw;
        }
        std::string& decoded = owner_.decoded_.emplace_back();
        appendDecoded(decoded, raw, Blanks::unify);
        return decoded;
    }

    void scanEndTag() {
        const std::size_t begin = position_;
        position_ += 2;
        const std::string_view tag = scanName();
        skipBlanks();
        if (current() != '>') {
            fail(position_, "'>' is missing at the end of the tag '/" + std::string(tag) + "'.");
        }
        ++position_;
        if (open_.empty() || owner_.elements_[open_.back().element].name != tag) {
            const std::string expected =
                open_.empty()
                    ? "no element is open."
                    : "'" + std::string(owner_.elements_[open_.back().element].name) + "' is open.";
            fail(begin, "the end tag '" + std::string(tag) + "' closes nothing, " + expected);
        }
        XmlText::Element& element = owner_.elements_[open_.back().element];
        element.contentEnd = static_cast<std::uint32_t>(begin);
        element.end = static_cast<std::uint32_t>(position_);
        open_.pop_back();
    }

    void scanText() {
        const char* text = text_.data();
        const std::size_t size = text_.size();
        while (position_ < size && text[position_] != '<') {
            if (!open_.empty() && position_ + 8 <= size && isQuiet(text + position_)) {
                position_ += 8;
                continue;
            }
            if (open_.empty() && !is(text[position_], blankCharacter)) {
                fail(position_, "text stands outside of the root element.");
            }
            if (text[position_] == '&' || text[position_] == '\r') {
                markDecoded();
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
        if (is(c, controlCharacter)) {
            fail(position_, "a control character.");
        }
        ++position_;
    }

    void scanReference() {
        constexpr std::size_t longest = 12;
        const std::size_t end = text_.substr(position_, longest + 1).find(';');
        if (end == std::string_view::npos ||
            characterOf(text_.substr(position_ + 1, end - 1)) == 0) {
            fail(position_, "'&' begins no known reference; a '&' in a text is written &amp;.");
        }
        position_ += end + 1;
    }

    XmlText& owner_;
    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<Open> open_;
};

void scanXml(XmlText& text) {
    XmlScanner(text).scanDocument();
}

}  // namespace GenApi::Detail
