#include "wirescript.h"

#include <cctype>
#include <charconv>
#include <initializer_list>

#include "gcbase/gcexception.h"

namespace Orlix::Camsim {
namespace {

using std::chrono::nanoseconds;

enum class TokenKind : std::uint8_t { Word, Number, Sign, EndOfStatement, End };

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;
    std::size_t line = 1;
    std::size_t column = 1;
};

// Cuts a script into words, numbers and signs; a line's end is that of a statement.
std::vector<Token> split(std::string_view script) {
    std::vector<Token> tokens;
    std::size_t line = 1;
    std::size_t lineBegin = 0;
    for (std::size_t at = 0; at < script.size();) {
        const auto is = [&](int (*test)(int), std::size_t place) {
            return place < script.size() && test(static_cast<unsigned char>(script[place])) != 0;
        };
        const std::size_t column = at - lineBegin + 1;
        std::size_t end = at + 1;
        if (script[at] == '#') {
            at = std::min(script.find('\n', at), script.size());
            continue;
        }
        if (script[at] == '\n' || script[at] == ';') {
            tokens.push_back({TokenKind::EndOfStatement, "end of statement", line, column});
            if (script[at] == '\n') {
                ++line;
                lineBegin = at + 1;
            }
        } else if (is(std::isalpha, at)) {
            while (is(std::isalpha, end)) {
                ++end;
            }
            tokens.push_back(
                {TokenKind::Word, std::string(script.substr(at, end - at)), line, column});
        } else if (is(std::isdigit, at)) {
            while (is(std::isdigit, end)) {
                ++end;
            }
            tokens.push_back(
                {TokenKind::Number, std::string(script.substr(at, end - at)), line, column});
        } else if (!is(std::isspace, at)) {
            tokens.push_back({TokenKind::Sign, std::string(1, script[at]), line, column});
        }
        at = end;
    }
    tokens.push_back({TokenKind::End, "end of script", line, script.size() - lineBegin + 1});
    return tokens;
}

class Parser {
public:
    explicit Parser(std::string_view script) : tokens_(split(script)) {}

    std::vector<WireRule> Parse() {
        while (here().kind != TokenKind::End) {
            if (!accept(TokenKind::EndOfStatement)) {
                parseStatement();
            }
        }
        return std::move(rules_);
    }

private:
    [[nodiscard]] const Token& here() const { return tokens_[at_]; }

    [[noreturn]] void fail(const std::string& expected) const {
        const Token& token = here();
        const bool isEnd = token.kind == TokenKind::End || token.kind == TokenKind::EndOfStatement;
        const std::string found = isEnd ? "the " + token.text : "'" + token.text + "'";
        const std::string text = "Wire script, line " + std::to_string(token.line) + ", column " +
                                 std::to_string(token.column) + ": expected " + expected +
                                 ", found " + found + ".";
        throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }

    bool accept(TokenKind kind) {
        const bool isKind = here().kind == kind && kind != TokenKind::End;
        at_ += isKind ? 1 : 0;
        return isKind;
    }
    bool accept(std::string_view text) {
        const bool isText = here().kind != TokenKind::End && here().text == text;
        at_ += isText ? 1 : 0;
        return isText;
    }
    void expect(std::string_view text) {
        if (!accept(text)) {
            fail("'" + std::string(text) + "'");
        }
    }

    template <typename Number>
    Number number(const char* what, Number least) {
        Number value = 0;
        const std::string& text = here().text;
        const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (here().kind != TokenKind::Number || failure != std::errc() || value < least) {
            fail(what);
        }
        ++at_;
        return value;
    }
    std::uint64_t frameNumber() {
        return number<std::uint64_t>("the number of a frame, from 1 on", 1);
    }
    std::uint32_t packetNumber() {
        return number<std::uint32_t>("the number of a packet, from 1 on", 1);
    }

    nanoseconds time() {
        constexpr std::uint64_t most = 1'000'000;
        const auto count = number<std::uint64_t>("a time, such as '5 ms'", 0);
        if (count > most) {
            --at_;
            fail("a time of at most 1000000 units");
        }
        for (const auto& [unit, ticks] :
             {std::pair("us", 1'000), std::pair("ms", 1'000'000), std::pair("s", 1'000'000'000)}) {
            if (accept(unit)) {
                return nanoseconds(ticks) * static_cast<std::int64_t>(count);
            }
        }
        fail("'us', 'ms' or 's'");
    }

    void parseStatement() {
        WireRule rule;
        parseOccasion(rule);
        expect(":");
        do {
            rules_.push_back(parseFault(rule));
        } while (accept(","));
        if (here().kind != TokenKind::End && !accept(TokenKind::EndOfStatement)) {
            fail("',' or the end of the statement");
        }
    }

    void parseOccasion(WireRule& rule) {
        if (accept("frame")) {
            rule.firstFrame = frameNumber();
            const bool isRange = accept("to");
            if (isRange) {
                rule.lastFrame = frameNumber();
            }
            if (accept("every")) {
                rule.frameStep = frameNumber();
            } else if (!isRange) {
                rule.lastFrame = rule.firstFrame;
            }
        } else if (accept("all")) {
            expect("frames");
        } else if (accept("after")) {
            rule.occasion = WireOccasion::After;
            rule.time = time();
        } else if (accept("every")) {
            parseEvery(rule);
        } else if (accept("on")) {
            expect("signal");
            rule.occasion = WireOccasion::Signal;
        } else {
            fail("'frame', 'all', 'every', 'after' or 'on'");
        }
    }

    // "every 7 frames", or "every 2 s".
    void parseEvery(WireRule& rule) {
        const std::size_t begin = at_;
        const auto count = number<std::uint64_t>("a number", 1);
        if (accept("frames")) {
            rule.firstFrame = count;
            rule.frameStep = count;
            return;
        }
        at_ = begin;
        rule.occasion = WireOccasion::Every;
        rule.time = time();
    }

    WireRule parseFault(WireRule rule) {
        return rule.occasion == WireOccasion::Frame ? parseFrameFault(rule) : parseTimeFault(rule);
    }

    WireRule parseFrameFault(WireRule rule) {
        if (accept("drop")) {
            rule.fault = WireFault::Drop;
            parseTarget(rule);
        } else if (accept("duplicate")) {
            rule.fault = WireFault::Duplicate;
            parseTarget(rule);
        } else if (accept("delay")) {
            rule.fault = WireFault::Delay;
            parseTarget(rule);
            expect("by");
            rule.duration = time();
        } else if (accept("move")) {
            rule.fault = WireFault::Move;
            parseTarget(rule);
            expect("by");
            rule.places = number<std::uint32_t>("a number of places, from 1 on", 1);
        } else if (accept("ignore")) {
            rule.fault = WireFault::IgnoreResends;
            expect("resends");
        } else if (accept("deny")) {
            rule.fault = WireFault::DenyResends;
            expect("resends");
        } else {
            fail("'drop', 'duplicate', 'delay', 'move', 'ignore' or 'deny'");
        }
        return rule;
    }

    WireRule parseTimeFault(WireRule rule) {
        if (accept("silence")) {
            rule.fault = WireFault::Silence;
            if (accept("for")) {
                rule.duration = time();
            }
        } else if (accept("reset")) {
            constexpr std::chrono::milliseconds startTime{500};
            rule.fault = WireFault::Reset;
            rule.duration = accept("for") ? time() : startTime;
        } else {
            fail("'silence' or 'reset'");
        }
        return rule;
    }

    void parseTarget(WireRule& rule) {
        if (accept("leader")) {
            rule.target = WireTarget::Leader;
        } else if (accept("trailer")) {
            rule.target = WireTarget::Trailer;
        } else if (accept("all")) {
            rule.target = WireTarget::All;
        } else if (accept("packet") || accept("packets")) {
            rule.target = WireTarget::Packets;
            rule.firstPacket = packetNumber();
            rule.lastPacket = accept("to") ? packetNumber() : rule.firstPacket;
        } else {
            fail("'leader', 'packet', 'trailer' or 'all'");
        }
    }

    std::vector<Token> tokens_;
    std::size_t at_ = 0;
    std::vector<WireRule> rules_;
};

}  // namespace

std::vector<WireRule> ParseWireScript(std::string_view script) {
    return Parser(script).Parse();
}

}  // namespace Orlix::Camsim
