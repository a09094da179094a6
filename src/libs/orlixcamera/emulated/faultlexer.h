// Takes a fault script apart into words, numbers, texts and marks. Used by the parser alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Orlix::Emulated {

struct FaultToken {
    enum class Kind : std::uint8_t { Word, Number, Text, Mark, LineEnd, End };

    Kind kind = Kind::End;
    std::string_view text;  // as it stands in the script, a text without its quotes
    std::size_t line = 1;
    std::size_t column = 1;

    [[nodiscard]] bool Is(Kind wanted, std::string_view wantedText) const noexcept {
        return kind == wanted && text == wantedText;
    }
};

class FaultLexer {
public:
    explicit FaultLexer(std::string_view script) : script_(script) {}

    // A comment and the end of its line are one LineEnd, and so is a semicolon. Throws
    // InvalidArgumentException for a character that begins nothing.
    [[nodiscard]] FaultToken Next();

private:
    [[nodiscard]] bool atEnd() const noexcept { return place_ == script_.size(); }
    [[nodiscard]] FaultToken begin(FaultToken::Kind kind) const noexcept;
    template <typename Belongs>
    FaultToken takeWhile(FaultToken token, const Belongs& belongs);
    FaultToken takeText();
    FaultToken takeLineEnd(FaultToken token);

    std::string_view script_;
    std::size_t place_ = 0;
    std::size_t line_ = 1;
    std::size_t lineBegin_ = 0;
};

// Throws the error of the script at that place.
[[noreturn]] void ThrowFaultError(const FaultToken& token, const std::string& reason);

}  // namespace Orlix::Emulated
