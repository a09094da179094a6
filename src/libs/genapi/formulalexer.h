// Splits the text of a formula into tokens, one ahead of the compiler. Views into the text, which
// must outlive it.
#pragma once

#include <cstdint>
#include <string_view>

namespace GenApi::Detail {

enum class Token : std::uint8_t { end, integer, real, name, symbol };

class Lexer {
public:
    explicit Lexer(std::string_view text) : text_(text) { next(); }

    [[nodiscard]] Token token() const { return token_; }
    [[nodiscard]] std::string_view text() const { return current_; }
    [[nodiscard]] bool is(std::string_view symbol) const {
        return token_ == Token::symbol && current_ == symbol;
    }
    // Whether a "(" comes after the current token.
    [[nodiscard]] bool isCall() const;
    void next();

private:
    void take(Token token, std::size_t length);
    void takeNumber();
    void takeSymbol();

    std::string_view text_;
    std::size_t position_ = 0;
    Token token_ = Token::end;
    std::string_view current_;
};

}  // namespace GenApi::Detail
