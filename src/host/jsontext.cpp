#include "host/jsontext.h"

#include <algorithm>
#include <set>
#include <vector>

#include "gcbase/gcexception.h"
#include "host/message.h"

namespace Orlix::Host {
namespace {

// Deeper than any recipe, and shallow enough for a recursive writer.
constexpr int maxDepth = 100;
constexpr std::size_t maxShownText = 60;

// Watches the parser for what it would accept in silence.
class ParserGuard {
public:
    explicit ParserGuard(std::string source) : source_(std::move(source)) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
        if (depth > maxDepth) {
            fail(source_ + ": nested deeper than " + std::to_string(maxDepth) + " levels");
        }
        if (event == Json::parse_event_t::object_start) {
            keys_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            keys_.pop_back();
        } else if (event == Json::parse_event_t::key) {
            const std::string key = parsed.get<std::string>();
            if (!keys_.back().insert(key).second) {
                fail(source_ + ": the key \"" + key + "\" occurs twice in one object");
            }
        }
        return true;
    }

private:
    std::string source_;
    std::vector<std::set<std::string>> keys_;
};

// The place of a byte, both counted from 1.
std::string placeOf(const std::string& text, std::size_t byte) {
    const std::size_t end = std::min(byte > 0 ? byte - 1 : 0, text.size());
    const std::string before = text.substr(0, end);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n');
    const std::size_t column = lineStart == std::string::npos ? end + 1 : end - lineStart;
    return std::to_string(line) + ":" + std::to_string(column);
}

// The parser's own text without its identifier and place, and without the last characters that it
// has read: the place says where they are.
std::string reasonOf(const Json::exception& error) {
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

}  // namespace

Json parseJson(const std::string& text, const std::string& source) {
    try {
        auto guard = std::make_shared<ParserGuard>(source);
        return Json::parse(text, [guard](int depth, Json::parse_event_t event, Json& parsed) {
            return (*guard)(depth, event, parsed);
        });
    } catch (const Json::parse_error& error) {
        fail(source + ":" + placeOf(text, error.byte) + ": " + reasonOf(error));
    } catch (const Json::exception& error) {
        fail(source + ": " + reasonOf(error));
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
            const bool isLong = text.size() > maxShownText;
            return "the text \"" + (isLong ? text.substr(0, maxShownText) + "..." : text) + "\"";
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
