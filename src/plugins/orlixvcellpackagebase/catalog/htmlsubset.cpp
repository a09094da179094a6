#include "htmlsubset.h"

#include <algorithm>
#include <array>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace Catalog {
namespace {

constexpr std::array<std::string_view, 14> allowedTags{"h1", "h2", "h3",     "h4", "h5", "p", "ul",
                                                       "ol", "li", "strong", "i",  "br", "u", "a"};
constexpr std::array<std::string_view, 4> allowedEntities{"&amp;", "&lt;", "&gt;", "&quot;"};

struct Tag {
    std::string name;
    std::string attributes;
    bool closing = false;
};

// Walks a fragment once, with a stack of the elements that are open.
class Checker {
public:
    explicit Checker(std::string_view text) : text_(text) {}

    void run() {
        while (position_ < text_.size()) {
            checkCharacter();
        }
        if (!open_.empty()) {
            fail("<" + open_.back() + "> is never closed");
        }
    }

private:
    [[noreturn]] void fail(const std::string& what) const {
        const auto line = 1 + std::count(text_.begin(), text_.begin() + offset(), '\n');
        throw std::runtime_error("line " + std::to_string(line) + ": " + what);
    }

    [[nodiscard]] std::string_view::difference_type offset() const {
        return static_cast<std::string_view::difference_type>(std::min(position_, text_.size()));
    }

    void checkCharacter() {
        switch (text_[position_]) {
            case '<':
                checkTag();
                break;
            case '>':
                fail("'>' outside of a tag; write &gt;");
            case '&':
                checkEntity();
                break;
            default:
                ++position_;
        }
    }

    void checkEntity() {
        const auto rest = text_.substr(position_);
        const auto found = std::find_if(allowedEntities.begin(), allowedEntities.end(),
                                        [&](auto entity) { return rest.starts_with(entity); });
        if (found == allowedEntities.end()) {
            fail("'&' begins no entity that the description pane knows; write &amp;");
        }
        position_ += found->size();
    }

    void checkTag() {
        const auto end = text_.find('>', position_);
        if (end == std::string_view::npos) {
            fail("tag without an end");
        }
        const Tag tag = parseTag(std::string(text_.substr(position_, end + 1 - position_)));
        if (tag.closing) {
            close(tag);
        } else if (tag.name != "br") {
            open_.push_back(tag.name);
        }
        position_ = end + 1;
    }

    [[nodiscard]] Tag parseTag(const std::string& text) const {
        static const std::regex grammar("<(/?)([a-z][a-z0-9]*)((?: [a-z]+=\"[^\"<>]*\")*)>");
        std::smatch match;
        if (!std::regex_match(text, match, grammar)) {
            fail("malformed tag " + text);
        }
        Tag tag{match[2], match[3], match[1].length() != 0};
        if (std::find(allowedTags.begin(), allowedTags.end(), tag.name) == allowedTags.end()) {
            fail("the description pane does not know " + text);
        }
        checkAttributes(tag);
        return tag;
    }

    // Only a link has attributes, and it has just the three that make it open outside the pane.
    void checkAttributes(const Tag& tag) const {
        static const std::regex link(
            " href=\"[A-Za-z0-9]+\" rel=\"noopener noreferrer\" target=\"_blank\"");
        const bool opensLink = tag.name == "a" && !tag.closing;
        if (opensLink ? !std::regex_match(tag.attributes, link) : !tag.attributes.empty()) {
            fail("unexpected attributes of <" + tag.name + ">:" + tag.attributes);
        }
    }

    void close(const Tag& tag) {
        if (open_.empty() || open_.back() != tag.name) {
            fail("</" + tag.name + "> closes " +
                 (open_.empty() ? "nothing" : "<" + open_.back() + ">"));
        }
        open_.pop_back();
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<std::string> open_;
};

}  // namespace

void checkHtml(std::string_view text) {
    Checker(text).run();
}

void checkHelpLink(std::string_view text, std::string_view topic) {
    const std::string link = "<a href=\"" + std::string(topic) +
                             "\" rel=\"noopener noreferrer\" target=\"_blank\">Get help</a></p>";
    const auto end = text.find_last_not_of('\n');
    if (end == std::string_view::npos || !text.substr(0, end + 1).ends_with(link)) {
        throw std::runtime_error("the text must end in " + link);
    }
}

}  // namespace Catalog
