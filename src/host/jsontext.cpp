#include "host/jsontext.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

#include "gcbase/gcexception.h"
#include "host/message.h"

namespace Orlix::Host {
namespace {

// Deeper than any recipe, and shallow enough for a recursive writer.
constexpr int maxDepth = 100;
constexpr std::size_t maxShownText = 60;

// The place of a byte, both counted from 1.
std::string placeOf(const std::string& text, std::size_t byte) {
    const std::size_t end = std::min(byte > 0 ? byte - 1 : 0, text.size());
    const std::string before = text.substr(0, end);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n');
    const std::size_t column = lineStart == std::string::npos ? end + 1 : end - lineStart;
    return std::to_string(line) + ":" + std::to_string(column);
}

// The text on its way into the parser, and how far it has come.
class Source {
public:
    Source(const std::string& text, std::string name)
        : text_(text), name_(std::move(name)), stream_(text) {}

    [[nodiscard]] std::istream& stream() { return stream_; }

    // With the place of the last character that was read.
    [[noreturn]] void failHere(const std::string& what) { failAt(bytesRead(), what); }
    [[noreturn]] void failAt(std::size_t byte, const std::string& what) const {
        fail(name_ + ":" + placeOf(text_, byte) + ": " + what);
    }
    // With the place where a piece of the text begins that was read just now.
    [[noreturn]] void failAtLast(const std::string& piece, const std::string& what) {
        const std::size_t end = bytesRead();
        const std::size_t found = text_.rfind(piece, end);
        // One character may have been read ahead; a piece that is escaped in the text isn't found.
        const bool isLast = found != std::string::npos && found + piece.size() + 1 >= end;
        failAt(isLast ? found + 1 : end, what);
    }

private:
    [[nodiscard]] std::size_t bytesRead() {
        // Not tellg(), which has no answer at the end of the text.
        const auto position = stream_.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in);
        return static_cast<std::size_t>(std::max<std::streamoff>(position, 0));
    }

    const std::string& text_;
    std::string name_;
    std::istringstream stream_;
};

// Watches the parser for what it would accept in silence.
class ParserGuard {
public:
    explicit ParserGuard(Source& source) : source_(source) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
        const bool isStart =
            event == Json::parse_event_t::object_start || event == Json::parse_event_t::array_start;
        if (isStart && depth >= maxDepth) {
            source_.failHere("nested deeper than " + std::to_string(maxDepth) + " levels");
        }
        if (event == Json::parse_event_t::object_start) {
            keys_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            keys_.pop_back();
        } else if (event == Json::parse_event_t::key) {
            const std::string key = parsed.get<std::string>();
            if (!keys_.back().insert(key).second) {
                source_.failAtLast(inQuotes(key),
                                   "the key " + inQuotes(key) + " occurs twice in one object");
            }
        }
        return true;
    }

private:
    Source& source_;
    std::vector<std::set<std::string>> keys_;
};

// The parser takes a zero byte for the end of the text and would pass over all that follows.
void refuseZeroBytes(const std::string& text, const Source& source) {
    const std::size_t zero = text.find('\0');
    if (zero != std::string::npos) {
        source.failAt(zero + 1, "a zero byte, which UTF-8 text does not have");
    }
}

// The parser's own text without its identifier and place, and without the last characters that it
// has read: the place says where they are.
std::string reasonOf(const Json::parse_error& error) {
    std::string text = error.what();
    const std::size_t place = text.find(", column ");
    const std::size_t start = text.find(": ", place == std::string::npos ? 0 : place);
    text.erase(0, start == std::string::npos ? 0 : start + 2);
    const std::size_t lastRead = text.find("; last read: '");
    const std::size_t end = text.rfind('\'', text.rfind("; expected "));
    if (lastRead != std::string::npos && end != std::string::npos && end > lastRead) {
        text.erase(lastRead, end + 1 - lastRead);
    }
    return text;
}

// The number that the parser can not hold: "... number overflow parsing '1e400'".
std::string numberOf(const Json::out_of_range& error) {
    const std::string text = error.what();
    const std::size_t end = text.rfind('\'');
    const std::size_t begin = text.find('\'') + 1;
    return begin > 0 && end > begin ? text.substr(begin, end - begin) : text;
}

// The beginning of a long text, without the bytes of a character that would be cut in two.
std::string cutText(const std::string& text) {
    std::size_t end = maxShownText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end) + "...";
}

}  // namespace

Json parseJson(const std::string& text, const std::string& source) {
    Source input(text, source);
    refuseZeroBytes(text, input);
    try {
        // By reference: the parser copies what it is given.
        ParserGuard guard(input);
        return Json::parse(input.stream(),
                           [&guard](int depth, Json::parse_event_t event, Json& parsed) {
                               return guard(depth, event, parsed);
                           });
    } catch (const Json::parse_error& error) {
        input.failAt(error.byte, reasonOf(error));
    } catch (const Json::out_of_range& error) {
        const std::string number = numberOf(error);
        input.failAtLast(number, "the number " + number + " is too large");
    }
}

std::string describeJson(const Json& value) {
    switch (value.type()) {
        case Json::value_t::object:
            return "a section";
        case Json::value_t::array:
            return "an array";
        case Json::value_t::string: {
            const auto& text = value.get_ref<const std::string&>();
            return "the text " + inQuotes(text.size() > maxShownText ? cutText(text) : text);
        }
        case Json::value_t::boolean:
            return value.get<bool>() ? "true" : "false";
        case Json::value_t::number_integer:
        case Json::value_t::number_unsigned:
        case Json::value_t::number_float:
            return "the number " + value.dump();
        default:
            return "null";
    }
}

std::string printJson(const Json& value) {
    try {
        return value.dump(2) + "\n";
    } catch (const Json::type_error&) {
        fail("a text is not UTF-8 and can not be stored as JSON");
    }
}

std::string printJsonLine(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Orlix::Host
