#include "genapi/xmltext.h"

#include <algorithm>

#include "gcbase/gcexception.h"
#include "genapi/xmlencoding.h"
#include "genapi/xmlscanner.h"

namespace GenApi::Detail {

XmlText::XmlText(std::string text, std::uint32_t number) : number_(number) {
    if (text.size() > maximumSize) {
        throw GenICam::RuntimeException(
            ("Node map description: the text of " + std::to_string(text.size()) +
             " bytes is larger than " + std::to_string(maximumSize) + ".")
                .c_str(),
            __FILE__, __LINE__);
    }
    Utf8Text utf8 = toUtf8(std::move(text));
    text_ = std::move(utf8.text);
    isRepaired_ = utf8.isRepaired;
    if (utf8.isBroken) {
        fail(0, "the text is in UTF-16 with half of a character.");
    }
    scanXml(*this);
    resolvePrefixes();
}

void XmlText::resolvePrefixes() {
    const std::string_view rootName = elements_[0].name;
    const std::size_t colon = rootName.find(':');
    nameSpace_ = colon == std::string_view::npos
                     ? root().attribute("xmlns")
                     : root().attribute("xmlns:" + std::string(rootName.substr(0, colon)));
    if (!nameSpace_) {
        return;
    }
    std::set<std::string_view> prefixes;
    for (std::uint32_t i = 0; i < elements_[0].attributeCount; ++i) {
        const Attribute& declared = attributes_[i];
        if (declared.name.substr(0, 6) == "xmlns:" && declared.value == *nameSpace_) {
            prefixes.insert(declared.name.substr(6));
        }
    }
    if (!prefixes.empty()) {
        dropPrefixes(prefixes);
    }
}

void XmlText::dropPrefixes(const std::set<std::string_view>& prefixes) {
    for (Element& element : elements_) {
        const std::size_t colon = element.name.find(':');
        if (colon != std::string_view::npos && prefixes.count(element.name.substr(0, colon)) != 0) {
            element.name.remove_prefix(colon + 1);
        }
    }
}

namespace {

// Lines end in "\n", "\r\n" or "\r" alone.
std::uint32_t countLineEnds(std::string_view text, std::size_t begin, std::size_t end) {
    std::uint32_t count = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const bool lone = text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n');
        count += text[i] == '\n' || lone ? 1U : 0U;
    }
    return count;
}

}  // namespace

void XmlText::indexLines() const {
    std::uint32_t lines = 0;
    std::size_t nextReturn = text_.find('\r');
    linesBefore_.reserve(text_.size() / blockSize + 1);
    for (std::size_t begin = 0; begin <= text_.size(); begin += blockSize) {
        linesBefore_.push_back(lines);
        const std::size_t end = std::min(begin + blockSize, text_.size());
        if (nextReturn < begin) {
            nextReturn = text_.find('\r', begin);
        }
        lines += nextReturn < end ? countLineEnds(text_, begin, end)
                                  : static_cast<std::uint32_t>(
                                        std::count(text_.data() + begin, text_.data() + end, '\n'));
    }
}

std::uint32_t XmlText::lineOf(std::size_t offset) const {
    if (linesBefore_.empty()) {
        indexLines();
    }
    offset = std::min(offset, text_.size());
    const std::size_t block = offset / blockSize;
    return linesBefore_[block] + countLineEnds(text_, block * blockSize, offset) + 1;
}

TextPlace XmlText::place(std::size_t offset) const {
    offset = std::min(offset, text_.size());
    std::size_t start = offset;
    while (start > 0 && countLineEnds(text_, start - 1, start) == 0) {
        --start;
    }
    return {lineOf(offset), static_cast<std::uint32_t>(offset - start + 1)};
}

void XmlText::fail(std::size_t offset, const std::string& reason) const {
    const TextPlace where = place(offset);
    const std::string text = "Node map description, line " + std::to_string(where.line) +
                             ", column " + std::to_string(where.column) + ": " + reason;
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

// ---- XmlElement.

std::string_view XmlElement::name() const {
    return owner_->elements_[index_].name;
}

std::optional<std::string_view> XmlElement::attribute(std::string_view name) const {
    const XmlText::Element& self = owner_->elements_[index_];
    for (std::uint32_t i = 0; i < self.attributeCount; ++i) {
        const XmlText::Attribute& attribute = owner_->attributes_[self.firstAttribute + i];
        if (attribute.name == name) {
            return attribute.value;
        }
    }
    return std::nullopt;
}

std::string_view XmlElement::text(std::string& buffer) const {
    const XmlText::Element& self = owner_->elements_[index_];
    const std::string_view whole = owner_->text_;
    if (self.isPlain) {
        return whole.substr(self.contentBegin, self.contentEnd - self.contentBegin);
    }
    buffer.clear();
    std::uint32_t child = self.firstChild;
    for (std::size_t at = self.contentBegin; at < self.contentEnd;) {
        const std::string_view rest = whole.substr(at, self.contentEnd - at);
        if (rest.substr(0, 9) == "<![CDATA[") {
            const std::size_t end = rest.find("]]>");
            // Line ends are the same everywhere, but nothing else is decoded here.
            for (std::size_t i = 9; i < end; ++i) {
                if (rest[i] != '\r') {
                    buffer += rest[i];
                } else if (rest[i + 1] != '\n') {
                    buffer += '\n';
                }
            }
            at += end + 3;
        } else if (rest.substr(0, 4) == "<!--") {
            at += rest.find("-->", 4) + 3;
        } else if (rest.substr(0, 2) == "<?") {
            at += rest.find("?>") + 2;
        } else if (rest[0] == '<') {
            const XmlText::Element& inner = owner_->elements_[child];
            at = std::max<std::size_t>(inner.end, at + 1);
            child = inner.next;
        } else {
            const std::size_t end = std::min(rest.find('<'), rest.size());
            appendDecoded(buffer, rest.substr(0, end), Blanks::keep);
            at += end;
        }
    }
    return buffer;
}

std::uint32_t XmlElement::line() const {
    return owner_->lineOf(owner_->elements_[index_].begin);
}

std::uint32_t XmlElement::document() const {
    return owner_->number();
}

const void* XmlElement::key() const {
    return &owner_->elements_[index_];
}

void XmlElement::fail(const std::string& reason) const {
    owner_->fail(owner_->elements_[index_].begin + std::size_t{1}, reason);
}

XmlElement::Iterator& XmlElement::Iterator::operator++() {
    at_.index_ = at_.owner_->elements_[at_.index_].next;
    return *this;
}

XmlElement::Children XmlElement::children() const {
    return {{owner_, owner_->elements_[index_].firstChild}, {owner_, 0}};
}

}  // namespace GenApi::Detail
