#include "genapi/formulalexer.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace GenApi::Detail {

namespace {

constexpr std::string_view blanks = " \t\r\n\f\v";

bool isNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}
bool isNamePart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

bool Lexer::isCall() const {
    const std::size_t place = text_.find_first_not_of(blanks, position_);
    return place != std::string_view::npos && text_[place] == '(';
}

void Lexer::next() {
    position_ = std::min(text_.find_first_not_of(blanks, position_), text_.size());
    if (position_ == text_.size()) {
        take(Token::end, 0);
    } else if (isDigit(text_[position_]) ||
               (text_[position_] == '.' && position_ + 1 < text_.size() &&
                isDigit(text_[position_ + 1]))) {
        takeNumber();
    } else if (isNameStart(text_[position_])) {
        std::size_t length = 1;
        while (position_ + length < text_.size() && isNamePart(text_[position_ + length])) {
            ++length;
        }
        take(Token::name, length);
    } else {
        takeSymbol();
    }
}

void Lexer::take(Token token, std::size_t length) {
    token_ = token;
    current_ = text_.substr(position_, length);
    position_ += length;
}

void Lexer::takeNumber() {
    const std::string_view rest = text_.substr(position_);
    if (rest.size() > 2 && rest[0] == '0' && (rest[1] == 'x' || rest[1] == 'X')) {
        std::size_t length = 2;
        while (length < rest.size() && std::isxdigit(static_cast<unsigned char>(rest[length]))) {
            ++length;
        }
        take(Token::integer, length);
        return;
    }
    std::size_t length = 0;
    bool isReal = false;
    for (; length < rest.size(); ++length) {
        const char c = rest[length];
        const bool isExponentSign = (c == '-' || c == '+') && length > 0 &&
                                    (rest[length - 1] == 'e' || rest[length - 1] == 'E');
        if (c == '.' || c == 'e' || c == 'E' || isExponentSign) {
            isReal = true;
        } else if (!isDigit(c)) {
            break;
        }
    }
    take(isReal ? Token::real : Token::integer, length);
}

void Lexer::takeSymbol() {
    constexpr std::array<std::string_view, 10> pairs = {
        "**", "&&", "||", "<>", "!=", "==", "<=", ">=", "<<", ">>"};
    const std::string_view two = text_.substr(position_, 2);
    const bool isPair = std::find(pairs.begin(), pairs.end(), two) != pairs.end();
    take(Token::symbol, isPair ? 2 : 1);
}

}  // namespace GenApi::Detail
