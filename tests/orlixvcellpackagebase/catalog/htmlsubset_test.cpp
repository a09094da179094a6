#include "catalog/htmlsubset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Catalog {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string check(const std::string& html) {
    try {
        checkHtml(html);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

std::string checkLink(const std::string& html) {
    try {
        checkHelpLink(html, "topic");
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(HtmlSubset, EveryTagOfThePaneIsAccepted) {
    EXPECT_EQ(check("<h1>a</h1><h2>b</h2><h3>c</h3><h4>d</h4><h5>e</h5>"), "");
    EXPECT_EQ(check("<p>a<br>b <strong>c</strong> <i>d</i> <u>e</u></p>"), "");
    EXPECT_EQ(check("<ul><li>a</li></ul><ol><li>b</li></ol>"), "");
    EXPECT_EQ(check("<a href=\"Topic1\" rel=\"noopener noreferrer\" target=\"_blank\">x</a>"), "");
    EXPECT_EQ(check("a &lt; b &amp; c &gt; d &quot;e&quot;"), "");
}

TEST(HtmlSubset, OtherTagsAreNamedWithTheirLine) {
    EXPECT_EQ(check("<p>a</p>\n<div>b</div>"), "line 2: the description pane does not know <div>");
    EXPECT_THAT(check("<h6>a</h6>"), HasSubstr("<h6>"));
    EXPECT_THAT(check("<P>a</P>"), HasSubstr("malformed tag <P>"));
}

TEST(HtmlSubset, TagsMustNestAndClose) {
    EXPECT_EQ(check("<p><i>a</p></i>"), "line 1: </p> closes <i>");
    EXPECT_EQ(check("<p>a\n<br>"), "line 2: <p> is never closed");
    EXPECT_EQ(check("a</p>"), "line 1: </p> closes nothing");
}

TEST(HtmlSubset, OnlyLinksHaveAttributes) {
    EXPECT_THAT(check("<p class=\"x\">a</p>"), HasSubstr("unexpected attributes of <p>"));
    EXPECT_THAT(check("<a href=\"https://example.com\">x</a>"), HasSubstr("unexpected attributes"));
    EXPECT_THAT(check("<a>x</a>"), HasSubstr("unexpected attributes"));
}

TEST(HtmlSubset, StrayMarkupCharactersAreRefused) {
    EXPECT_THAT(check("a > b"), StartsWith("line 1: '>'"));
    EXPECT_THAT(check("a & b"), StartsWith("line 1: '&'"));
    EXPECT_THAT(check("a &nbsp; b"), StartsWith("line 1: '&'"));
    EXPECT_EQ(check("a\n\n< b"), "line 3: tag without an end");
}

TEST(HtmlSubset, FragmentEndsInItsHelpLink) {
    const std::string link =
        "<p><a href=\"topic\" rel=\"noopener noreferrer\" target=\"_blank\">Get help</a></p>";
    EXPECT_EQ(checkLink("<p>a</p>\n" + link + "\n"), "");
    EXPECT_THAT(checkLink(link + "<p>more</p>"), HasSubstr("must end in"));
    EXPECT_THAT(checkLink(""), HasSubstr("must end in"));
}

}  // namespace
}  // namespace Catalog
