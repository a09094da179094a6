#include "aravis/cleantext.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace Orlix::Aravis {
namespace {

using namespace std::string_view_literals;

TEST(CleanText, Utf8StaysAsItIs) {
    for (const auto text : {""sv, "Left"sv, "Gr\xC3\xBCn"sv, "\xE2\x82\xAC"sv, "\xF0\x9F\x93\xB7"sv,
                            "\xF4\x8F\xBF\xBF"sv, "\xC2\xA0"sv}) {
        EXPECT_EQ(CleanText(text), text);
    }
}

TEST(CleanText, OtherBytesAreTakenForLatin1) {
    EXPECT_EQ(CleanText("Gr\xFCn"), "Gr\xC3\xBCn");
    EXPECT_EQ(CleanText("\xFF\xFE"), "\xC3\xBF\xC3\xBE");
    // A text that was cut inside of a character; one that is too long, a half, one beyond the last.
    EXPECT_EQ(CleanText("a\xC3"), "a\xC3\x83");
    EXPECT_EQ(CleanText("\xC0\xAF"), "\xC3\x80\xC2\xAF");
    EXPECT_EQ(CleanText("\xED\xA0\xA0"), "\xC3\xAD\xC2\xA0\xC2\xA0");
    EXPECT_EQ(CleanText("\xF4\xBF\xBF\xBF"), "\xC3\xB4\xC2\xBF\xC2\xBF\xC2\xBF");
}

TEST(CleanText, ControlCharactersAreCut) {
    EXPECT_EQ(CleanText("A\x1B[31mB\n\x7F"), "A[31mB");
    EXPECT_EQ(CleanText("A\xC2\x9Bm\x9BZ"), "AmZ");
}

TEST(CleanText, AnyThreeBytesBecomeTextThatJsonTakes) {
    for (unsigned int bits = 0; bits < 1U << 24U; bits += 251) {
        const std::string bytes = {static_cast<char>(bits >> 16U),
                                   static_cast<char>((bits >> 8U) & 0xFFU),
                                   static_cast<char>(bits & 0xFFU)};
        ASSERT_NO_THROW(static_cast<void>(nlohmann::json(CleanText(bytes)).dump())) << bits;
    }
}

}  // namespace
}  // namespace Orlix::Aravis
