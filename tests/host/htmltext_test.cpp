#include "orlixhost/htmltext.h"

#include <gtest/gtest.h>

namespace Orlix::Host {
namespace {

TEST(HtmlText, HeadingsParagraphsAndListsBecomeLines) {
    EXPECT_EQ(plainText("<h1>Title</h1><p>First <strong>bold</strong> text.</p>"
                        "<ul><li>one</li><li>two</li></ul><p>Last<br>line</p>"),
              "Title\n\nFirst bold text.\n\n  - one\n  - two\n\nLast\nline");
}

TEST(HtmlText, EntitiesBecomeCharactersOnce) {
    EXPECT_EQ(plainText("a &lt; b &amp;&amp; c &gt; d &amp;lt;"), "a < b && c > d &lt;");
}

TEST(HtmlText, LinksToTheHelpSystemAreLeftOut) {
    EXPECT_EQ(plainText("<p>Text</p><a href=\"topic\" target=\"_blank\">Get help</a>"), "Text");
}

TEST(HtmlText, LongLinesAreWrapped) {
    std::string text;
    for (int i = 0; i < 40; ++i) {
        text += "word ";
    }
    const std::string plain = plainText("<ul><li>" + text + "</li></ul>");
    EXPECT_EQ(plain.substr(0, 8), "  - word");
    EXPECT_NE(plain.find("\n    word"), std::string::npos);
    EXPECT_LT(plain.find('\n'), 100U);
}

TEST(HtmlText, TextThatIsCutOffEndsInOrder) {
    EXPECT_EQ(plainText("<p>one <stro"), "one");
    EXPECT_EQ(plainText("<a href=\"x\">Get"), "");
    EXPECT_EQ(plainText(""), "");
}

}  // namespace
}  // namespace Orlix::Host
