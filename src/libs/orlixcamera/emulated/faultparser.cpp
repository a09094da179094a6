#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>

#include "orlixcamera/emulated/faultlexer.h"
#include "orlixcamera/emulated/faultscript.h"
#include "orlixcamera/emulated/registertable.h"

namespace Orlix::Emulated {
namespace {

using Kind = FaultToken::Kind;
using std::chrono::nanoseconds;

enum class Argument : std::uint8_t { None, Count, Change, Time, MaybeTime, MaybeFor, MaybeHolder };

constexpr unsigned bitOf(Occasion occasion) {
    return 1U << static_cast<unsigned>(occasion);
}

constexpr unsigned frame = bitOf(Occasion::Frame);
constexpr unsigned open = bitOf(Occasion::Open);
constexpr unsigned command = bitOf(Occasion::Start) | bitOf(Occasion::Stop);
constexpr unsigned access = bitOf(Occasion::Read) | bitOf(Occasion::Write);
constexpr unsigned clock = bitOf(Occasion::Idle) | bitOf(Occasion::After) | bitOf(Occasion::Every);

// How a fault is written and where it may stand.
struct FaultWords {
    Fault fault;
    std::string_view first;
    std::string_view second;  // may be empty
    Argument argument;
    unsigned occasions;
};

constexpr std::array faultTable = {
    FaultWords{Fault::MissingPackets, "missing", "packets", Argument::Count, frame},
    FaultWords{Fault::ResentPackets, "resent", "packets", Argument::Count, frame},
    FaultWords{Fault::WrongSize, "wrong", "size", Argument::Change, frame},
    FaultWords{Fault::BadTrailer, "bad", "trailer", Argument::None, frame},
    FaultWords{Fault::LostEnd, "lost", "end", Argument::None, frame},
    FaultWords{Fault::CutChunk, "cut", "chunk", Argument::None, frame},
    FaultWords{Fault::UnknownChunk, "unknown", "chunk", Argument::None, frame},
    FaultWords{Fault::Late, "late", "", Argument::Time, frame},
    FaultWords{Fault::Events, "events", "", Argument::Count, frame | command | clock},
    FaultWords{Fault::Refuse, "refuse", "", Argument::None, command | access},
    FaultWords{Fault::TimeOut, "time", "out", Argument::MaybeTime, open | command | access},
    FaultWords{Fault::InUse, "in", "use", Argument::MaybeHolder, open},
    FaultWords{Fault::Unplug, "unplug", "", Argument::MaybeFor,
               frame | open | command | access | clock},
};

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::string found(const FaultToken& token) {
    switch (token.kind) {
        case Kind::End:
            return "the end";
        case Kind::LineEnd:
            return "the end of the line";
        default:
            return quoted(token.text);
    }
}

// Names as users know them: a register of one selector value is called "Gain of Red".
bool isRegister(std::string_view name) {
    const auto matches = [&](const auto& row) {
        const std::string_view full = row.name;
        return full == name || full.substr(0, full.find(" of ")) == name;
    };
    return std::any_of(AllRegisters().begin(), AllRegisters().end(), matches) ||
           std::any_of(AllTexts().begin(), AllTexts().end(), matches);
}

class Parser {
public:
    explicit Parser(std::string_view script) : lexer_(script) { advance(); }

    std::vector<FaultRule> Parse() {
        while (token_.kind != Kind::End) {
            if (token_.kind != Kind::LineEnd) {
                parseLine();
            }
            if (token_.kind != Kind::End) {
                advance();
            }
        }
        return std::move(rules_);
    }

private:
    void advance() { token_ = lexer_.Next(); }
    [[noreturn]] void expected(const std::string& what) const {
        ThrowFaultError(token_, "expected " + what + ", found " + found(token_) + ".");
    }
    bool takeWord(std::string_view word) {
        if (!token_.Is(Kind::Word, word)) {
            return false;
        }
        advance();
        return true;
    }
    void needWord(std::string_view word) {
        if (!takeWord(word)) {
            expected(quoted(word));
        }
    }

    void parseLine() {
        FaultRule rule;
        if (takeWord("camera")) {
            rule.camera = static_cast<std::uint32_t>(
                takeCount("the number of a camera", std::numeric_limits<std::uint32_t>::max()));
        }
        rule.once = takeWord("once");
        parseOccasion(rule);
        if (!token_.Is(Kind::Mark, ":")) {
            expected("':'");
        }
        do {
            advance();
            parseFault(rule);
        } while (token_.Is(Kind::Mark, ","));
        if (token_.kind != Kind::LineEnd && token_.kind != Kind::End) {
            expected("',' or the end of the line");
        }
    }

    void parseOccasion(FaultRule& rule) {
        if (takeWord("frame")) {
            parseFrames(rule);
        } else if (takeWord("open")) {
            rule.occasion = Occasion::Open;
        } else if (takeWord("start")) {
            rule.occasion = Occasion::Start;
        } else if (takeWord("stop")) {
            rule.occasion = Occasion::Stop;
        } else if (takeWord("idle")) {
            rule.occasion = Occasion::Idle;
            rule.time = takeTime();
        } else if (takeWord("after")) {
            rule.occasion = Occasion::After;
            rule.time = takeTime();
        } else if (takeWord("every")) {
            parseEvery(rule);
        } else if (takeWord("read")) {
            rule.occasion = Occasion::Read;
            rule.feature = takeFeature();
        } else if (takeWord("write")) {
            rule.occasion = Occasion::Write;
            rule.feature = takeFeature();
        } else {
            expected(
                "'frame', 'every', 'open', 'start', 'stop', 'idle', 'after', 'read' or 'write'");
        }
    }

    void parseFrames(FaultRule& rule) {
        rule.occasion = Occasion::Frame;
        rule.firstFrame = takeCount("the number of a frame");
        rule.lastFrame = rule.firstFrame;
        const bool hasEnd = takeWord("to");
        if (hasEnd) {
            const FaultToken place = token_;
            rule.lastFrame = takeCount("the number of a frame");
            if (rule.lastFrame < rule.firstFrame) {
                ThrowFaultError(place, "the last frame comes before the first.");
            }
        }
        if (takeWord("every")) {
            rule.frameStep = takeCount("a number of frames");
            if (!hasEnd) {
                rule.lastFrame = std::numeric_limits<std::uint64_t>::max();
            }
        }
    }

    // Of frames, or of time.
    void parseEvery(FaultRule& rule) {
        const FaultToken number = token_;
        const double value = takeNumber("a number");
        if (token_.Is(Kind::Word, "frames") || token_.Is(Kind::Word, "frame")) {
            advance();
            rule.occasion = Occasion::Frame;
            rule.firstFrame = rule.frameStep = countOf(number, value, maxCount);
            rule.lastFrame = std::numeric_limits<std::uint64_t>::max();
            return;
        }
        rule.occasion = Occasion::Every;
        rule.time = timeOf(number, value);
    }

    void parseFault(FaultRule& rule) {
        const FaultToken place = token_;
        const auto words = std::find_if(
            faultTable.begin(), faultTable.end(),
            [&](const FaultWords& entry) { return token_.Is(Kind::Word, entry.first); });
        if (words == faultTable.end()) {
            expected("a fault");
        }
        advance();
        if (!words->second.empty()) {
            needWord(words->second);
        }
        if ((words->occasions & bitOf(rule.occasion)) == 0) {
            const std::string space = words->second.empty() ? "" : " ";
            ThrowFaultError(place,
                            quoted(std::string(words->first) + space + std::string(words->second)) +
                                " can't happen then.");
        }
        rule.fault = words->fault;
        rule.amount = 0;
        rule.duration = {};
        parseArgument(rule, words->argument);
        rules_.push_back(rule);
    }

    void parseArgument(FaultRule& rule, Argument argument) {
        switch (argument) {
            case Argument::None:
                break;
            case Argument::Count:
                rule.amount = static_cast<std::int64_t>(takeCount("a number"));
                break;
            case Argument::Change:
                rule.amount = takeChange();
                break;
            case Argument::Time:
                rule.duration = takeTime();
                break;
            case Argument::MaybeTime:
                rule.duration = token_.kind == Kind::Number ? takeTime() : defaultTimeOut;
                break;
            case Argument::MaybeFor:
                rule.duration = takeWord("for") ? takeTime() : nanoseconds(0);
                break;
            case Argument::MaybeHolder:
                rule.holder = takeWord("by") ? takeText() : "another program (192.0.2.1)";
                break;
        }
    }

    double takeNumber(const std::string& what) {
        if (token_.kind != Kind::Number) {
            expected(what);
        }
        std::string_view text = token_.text;
        text.remove_prefix(text.front() == '+' ? 1 : 0);
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size()) {
            ThrowFaultError(token_, quoted(token_.text) + " is no number.");
        }
        advance();
        return value;
    }

    static std::uint64_t countOf(const FaultToken& place, double value, double most) {
        if (value < 1 || value > most ||
            value != static_cast<double>(static_cast<std::uint64_t>(value))) {
            ThrowFaultError(place, quoted(place.text) + " is no whole number from 1 on.");
        }
        return static_cast<std::uint64_t>(value);
    }

    std::uint64_t takeCount(const std::string& what, double most = maxCount) {
        const FaultToken place = token_;
        return countOf(place, takeNumber(what), most);
    }

    std::int64_t takeChange() {
        const FaultToken place = token_;
        const double value = takeNumber("a number of bytes with its sign");
        const bool isSigned = place.text.front() == '+' || place.text.front() == '-';
        if (!isSigned || countOf(place, value < 0 ? -value : value, maxCount) == 0) {
            ThrowFaultError(place, quoted(place.text) + " has no sign.");
        }
        return static_cast<std::int64_t>(value);
    }

    nanoseconds takeTime() {
        const FaultToken place = token_;
        return timeOf(place, takeNumber("a time"));
    }

    nanoseconds timeOf(const FaultToken& place, double value) {
        constexpr double longest = 1e6;  // seconds
        const double unit = takeWord("us") ? 1e-6 : takeWord("ms") ? 1e-3 : takeWord("s") ? 1 : 0;
        if (unit == 0) {
            expected("'us', 'ms' or 's'");
        }
        constexpr double nanosecondsPerSecond = 1e9;
        if (!(value * unit * nanosecondsPerSecond >= 1 && value * unit <= longest)) {
            ThrowFaultError(place, quoted(place.text) + " is no time.");
        }
        return nanoseconds(static_cast<std::int64_t>(value * unit * nanosecondsPerSecond));
    }

    std::string takeText() {
        if (token_.kind != Kind::Text) {
            expected("a text in double quotes");
        }
        std::string text(token_.text);
        advance();
        return text;
    }

    std::string takeFeature() {
        if (token_.kind != Kind::Word && token_.kind != Kind::Text) {
            expected("the name of a feature");
        }
        if (!isRegister(token_.text)) {
            ThrowFaultError(token_,
                            "the device has no register of a feature " + quoted(token_.text) + ".");
        }
        std::string name(token_.text);
        advance();
        return name;
    }

    static constexpr double maxCount = 1e9;
    static constexpr nanoseconds defaultTimeOut = std::chrono::milliseconds(100);

    FaultLexer lexer_;
    FaultToken token_;
    std::vector<FaultRule> rules_;
};

}  // namespace

std::vector<FaultRule> ParseFaultScript(std::string_view script) {
    return Parser(script).Parse();
}

}  // namespace Orlix::Emulated
