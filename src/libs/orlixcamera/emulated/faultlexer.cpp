#include "orlixcamera/emulated/faultlexer.h"

#include "gcbase/gcexception.h"

namespace Orlix::Emulated {
namespace {

using Kind = FaultToken::Kind;

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

bool isLetter(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
}

}  // namespace

void ThrowFaultError(const FaultToken& token, const std::string& reason) {
    const std::string text = "Fault script, line " + std::to_string(token.line) + ", column " +
                             std::to_string(token.column) + ": " + reason;
    throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

FaultToken FaultLexer::Next() {
    while (!atEnd() &&
           (script_[place_] == ' ' || script_[place_] == '\t' || script_[place_] == '\r')) {
        ++place_;
    }
    if (atEnd()) {
        return begin(Kind::End);
    }
    const char letter = script_[place_];
    if (isLetter(letter)) {
        return takeWhile(begin(Kind::Word), [](char c) { return isLetter(c) || isDigit(c); });
    }
    if (isDigit(letter) || letter == '+' || letter == '-') {
        return takeWhile(begin(Kind::Number), [](char c) { return isDigit(c) || c == '.'; });
    }
    if (letter == '"') {
        return takeText();
    }
    if (letter == ':' || letter == ',') {
        return takeWhile(begin(Kind::Mark), [](char) { return false; });
    }
    if (letter == '#' || letter == '\n' || letter == ';') {
        return takeLineEnd(begin(Kind::LineEnd));
    }
    ThrowFaultError(begin(Kind::Mark), std::string("unexpected character '") + letter + "'.");
}

FaultToken FaultLexer::begin(FaultToken::Kind kind) const noexcept {
    return {kind, {}, line_, place_ - lineBegin_ + 1};
}

// The first character belongs to the token in any case.
template <typename Belongs>
FaultToken FaultLexer::takeWhile(FaultToken token, const Belongs& belongs) {
    const std::size_t from = place_++;
    while (!atEnd() && belongs(script_[place_])) {
        ++place_;
    }
    token.text = script_.substr(from, place_ - from);
    return token;
}

FaultToken FaultLexer::takeText() {
    FaultToken token = begin(Kind::Text);
    const std::size_t from = ++place_;
    const std::size_t end = script_.find_first_of("\"\n", from);
    if (end == std::string_view::npos || script_[end] == '\n') {
        ThrowFaultError(token, "the text has no end.");
    }
    token.text = script_.substr(from, end - from);
    place_ = end + 1;
    return token;
}

FaultToken FaultLexer::takeLineEnd(FaultToken token) {
    if (script_[place_] == ';') {
        ++place_;
        return token;
    }
    const std::size_t end = script_.find('\n', place_);
    place_ = end == std::string_view::npos ? script_.size() : end + 1;
    ++line_;
    lineBegin_ = place_;
    return token;
}

}  // namespace Orlix::Emulated
