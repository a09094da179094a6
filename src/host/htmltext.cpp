#include "orlixhost/htmltext.h"

#include <array>
#include <cctype>
#include <utility>

namespace Orlix::Host {
namespace {

constexpr std::size_t width = 96;

constexpr std::array<std::pair<const char*, const char*>, 6> entities = {{
    {"&lt;", "<"},
    {"&gt;", ">"},
    {"&quot;", "\""},
    {"&apos;", "'"},
    {"&nbsp;", " "},
    {"&amp;", "&"},
}};

// Gathers words into lines that are not too long.
class TextBuilder {
public:
    void add(const std::string& text) {
        for (const char character : text) {
            if (std::isspace(static_cast<unsigned char>(character)) != 0) {
                endWord();
            } else {
                word_ += character;
            }
        }
    }

    void endLine(const std::string& nextStart = {}) {
        endWord();
        if (line_ != start_) {
            text_ += line_ + "\n";
        }
        start_ = nextStart;
        line_ = nextStart;
    }

    void addBlankLine() {
        endLine();
        if (!text_.empty() && text_.compare(text_.size() - 1, 1, "\n") == 0 &&
            text_.find("\n\n", text_.size() - 2) == std::string::npos) {
            text_ += "\n";
        }
    }

    std::string finish() {
        endLine();
        const std::size_t last = text_.find_last_not_of('\n');
        text_.resize(last == std::string::npos ? 0 : last + 1);
        return text_;
    }

private:
    void endWord() {
        if (word_.empty()) {
            return;
        }
        if (line_.size() > start_.size() && line_.size() + word_.size() >= width) {
            text_ += line_ + "\n";
            line_ = std::string(start_.size(), ' ');
        }
        const bool needsBlank = line_.size() > start_.size();
        line_ += (needsBlank ? " " : "") + word_;
        word_.clear();
    }

    std::string text_;
    std::string line_;
    std::string start_;
    std::string word_;
};

std::string withoutEntities(std::string text) {
    for (const auto& [entity, character] : entities) {
        const std::string name = entity;
        for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
            text.replace(at, name.size(), character);
            ++at;
        }
    }
    return text;
}

void applyTag(TextBuilder& builder, const std::string& tag) {
    if (tag == "li") {
        builder.endLine("  - ");
    } else if (tag == "br" || tag == "br/" || tag == "br /" || tag == "/li" || tag == "/p" ||
               (tag.size() == 3 && tag.compare(0, 2, "/h") == 0)) {
        builder.endLine();
    } else if (tag == "p" || tag == "ul" || tag == "ol" || tag == "/ul" || tag == "/ol" ||
               (tag.size() == 2 && tag[0] == 'h')) {
        builder.addBlankLine();
    }
}

}  // namespace

std::string plainText(const std::string& html) {
    TextBuilder builder;
    std::size_t position = 0;
    while (position < html.size()) {
        const std::size_t open = html.find('<', position);
        builder.add(withoutEntities(html.substr(position, open - position)));
        if (open == std::string::npos) {
            break;
        }
        const std::size_t close = html.find('>', open);
        if (close == std::string::npos) {
            break;
        }
        const std::string tag = html.substr(open + 1, close - open - 1);
        position = close + 1;
        if (tag.compare(0, 2, "a ") == 0) {
            const std::size_t end = html.find("</a>", position);
            position = end == std::string::npos ? html.size() : end;
        } else {
            applyTag(builder, tag);
        }
    }
    return builder.finish();
}

}  // namespace Orlix::Host
