// Texts as makers deliver them: encodings, prefixes, white space and comments in odd places.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using ::testing::HasSubstr;

namespace {

std::string utf16(const std::string& ascii, bool bigEndian, bool mark) {
    std::string result = mark ? (bigEndian ? "\xFE\xFF" : "\xFF\xFE") : "";
    for (const char c : ascii) {
        result += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return result;
}

const std::string one = document("<Integer Name=\"A\"><Value>1</Value></Integer>");

std::string tipOf(const std::string& tip) {
    const CNodeMapRef map = load(document("<Integer Name=\"A\"><ToolTip>" + tip +
                                          "</ToolTip><Value>1</Value>"
                                          "</Integer>"));
    return map->GetNode("A")->GetToolTip().str();
}

}  // namespace

TEST(Encoding, Utf16OfEitherOrderWithAndWithoutAMark) {
    for (const bool bigEndian : {false, true}) {
        for (const bool mark : {false, true}) {
            const CNodeMapRef map = load(utf16(one, bigEndian, mark));
            EXPECT_EQ(CIntegerPtr(map->GetNode("A"))->GetValue(), 1);
        }
    }
}

TEST(Encoding, Utf16KeepsCharactersOfTwoUnits) {
    std::string text = utf16(document("<Integer Name=\"A\"><ToolTip>#</ToolTip><Value>1</Value>"
                                      "</Integer>"),
                             false, true);
    const std::size_t at = text.find('#');
    text.replace(at, 2, std::string("\x3D\xD8\x00\xDE", 4));
    EXPECT_EQ(load(text)->GetNode("A")->GetToolTip(), "\xF0\x9F\x98\x80");
    text.erase(at, 2);
    EXPECT_THROW((void)load(text), GenICam::RuntimeException);
}

TEST(Encoding, SingleBytesInATextOfUtf8AreTakenForThoseOfWindows) {
    const std::string text = document(
        "<Float Name=\"A\"><Value>1</Value><Unit>\xB5s</Unit></Float><Float Name=\"B\"><Value>1"
        "</Value><Unit>\xC2\xB5s \x80</Unit></Float>");
    const CNodeMapRef map = load(text);
    EXPECT_EQ(CFloatPtr(map->GetNode("A"))->GetUnit(), "\xC2\xB5s");
    EXPECT_EQ(CFloatPtr(map->GetNode("B"))->GetUnit(), "\xC2\xB5s \xE2\x82\xAC");
    ASSERT_EQ(map->GetLoadReport().remarks.size(), 1U);
    EXPECT_EQ(map->GetLoadReport().remarks[0].severity, LoadSeverity::warning);
    EXPECT_THAT(map->GetLoadReport().remarks[0].reason, HasSubstr("no UTF-8"));
}

TEST(Encoding, WindowsCharactersAreBroughtToUtf8WhereDeclared) {
    std::string text = document(
        "<Integer Name=\"A\"><ToolTip>\x93x\x94</ToolTip><Value>1</Value>"
        "</Integer>");
    text.replace(text.find("UTF-8"), 5, "windows-1252");
    const CNodeMapRef map = load(text);
    EXPECT_EQ(map->GetNode("A")->GetToolTip(), "\xE2\x80\x9Cx\xE2\x80\x9D");
    EXPECT_TRUE(map->GetLoadReport().remarks.empty());
}

TEST(Encoding, ElementsWithAPrefixOfTheSchemaAreThoseOfTheSchema) {
    const CNodeMapRef map = load(
        "<g:RegisterDescription xmlns:g=\"http://www.genicam.org/GenApi/Version_1_1\" "
        "xmlns:x=\"urn:x\" ModelName=\"M\"><g:Group Comment=\"c\"><g:Integer Name=\"A\"><g:Value>3"
        "</g:Value><g:Extension><x:Note>n</x:Note></g:Extension></g:Integer></g:Group>"
        "</g:RegisterDescription>");
    EXPECT_EQ(CIntegerPtr(map->GetNode("A"))->GetValue(), 3);
    EXPECT_TRUE(map->GetLoadReport().remarks.empty());
    EXPECT_EQ(map->GetModelName(), "M");
}

TEST(Encoding, ElementsOfAnotherNameSpaceAreToldOfUnlessInAnExtension) {
    const CNodeMapRef map = load(
        "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" "
        "xmlns:x=\"urn:x\"><x:Integer Name=\"B\"/><Integer Name=\"A\"><x:Value>4</x:Value><Value>3"
        "</Value></Integer></RegisterDescription>");
    EXPECT_EQ(CIntegerPtr(map->GetNode("A"))->GetValue(), 3);
    EXPECT_EQ(map->GetNode("B"), nullptr);
    EXPECT_EQ(map->GetLoadReport().remarks.size(), 2U);
}

TEST(Encoding, CommentsInstructionsAndSectionsInsideOfValues) {
    TestMap t(
        "<!-- a --><Integer Name=\"A\"><!-- b --><?tool x?><pValue><!-- c -->B<!-- d --></pValue>"
        "<Min>\n<!-- e -->-<!-- f -->5\n</Min><Max><![CDATA[ 0x1]]>F</Max></Integer><Integer "
        "Name=\"B\"><Value>&#x31;&#50;</Value></Integer><!-- g -->");
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.integer("A")->GetValue(), 12);
    EXPECT_EQ(t.integer("A")->GetMin(), -5);
    EXPECT_EQ(t.integer("A")->GetMax(), 31);
}

TEST(Encoding, LineEndsOfAnyKindAreLineFeedsInTexts) {
    EXPECT_EQ(tipOf("a\r\nb\rc\nd"), "a\nb\nc\nd");
    EXPECT_EQ(tipOf("<![CDATA[a\r\nb\rc\r]]>\r\n"), "a\nb\nc\n\n");
    EXPECT_EQ(tipOf("a&#13;&#10;b"), "a\r\nb");
}

TEST(Encoding, TextAroundElementsInATextIsTheText) {
    EXPECT_EQ(tipOf("a<b>x<c/></b>&lt;<d/>c"), "a<c");
}

TEST(Encoding, AttributesInEitherQuoteWithBlanksAndReferences) {
    const CNodeMapRef map = load(
        "<RegisterDescription\txmlns = 'http://www.genicam.org/GenApi/Version_1_1'\r\n ModelName\n="
        "\n\"A &amp; B\tC\" VendorName='\"&#x41;\"'\t><Category Name = 'Root' /></"
        "RegisterDescription >");
    EXPECT_EQ(map->GetModelName(), "A & B C");
    EXPECT_EQ(map->GetVendorName(), "\"A\"");
    EXPECT_NE(map->GetNode("Root"), nullptr);
}

TEST(Encoding, EmptyElementsInBothSpellings) {
    TestMap t(
        "<String Name=\"A\"><Value/><ToolTip></ToolTip></String><Integer Name=\"B\"><Value>1"
        "</Value><Unit/></Integer><Category Name=\"C\"/><Group Comment=\"\"/>");
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.string("A")->GetValue(), "");
    EXPECT_EQ(t.integer("B")->GetUnit(), "");
    // A number, a link or a word needs something to read.
    TestMap empty(
        "<Integer Name=\"A\"><pValue/></Integer><Integer Name=\"B\"><Value/></Integer>"
        "<Integer Name=\"C\"><Value>1</Value><Visibility/></Integer>");
    EXPECT_EQ(empty.mode("A"), NA);
    EXPECT_EQ(empty.mode("B"), NA);
    EXPECT_EQ(empty.mode("C"), RW);
    EXPECT_EQ(empty.reasons("C"), "Visibility: The word '' is unknown here.\n");
}

TEST(Encoding, Rule4UnsignedNumbersOf64BitsAndBoundsBeyondThem) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value><Min>-1e30</Min><Max>18446744073709551615</Max>"
        "</Integer>" +
        std::string("<IntReg Name=\"R\"><Address>18446744073709551612</Address><Length>4</Length>"
                    "<AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>"));
    EXPECT_EQ(t.integer("A")->GetMin(), INT64_MIN);
    EXPECT_EQ(t.integer("A")->GetMax(), INT64_MAX);
    EXPECT_EQ(CRegisterPtr(t.node("R"))->GetAddress(), -4);
    EXPECT_EQ(t.remarks().size(), 3U);
    for (const LoadRemark& remark : t.remarks()) {
        EXPECT_EQ(remark.severity, LoadSeverity::warning);
    }
}

TEST(Encoding, LinesAreCountedWithEveryLineEnd) {
    for (const char* end : {"\n", "\r\n", "\r"}) {
        std::string text =
            "<RegisterDescription "
            "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">";
        for (int i = 0; i < 40000; ++i) {
            text += end;
        }
        text += "<Wonder/></RegisterDescription>";
        const CNodeMapRef map = load(text);
        ASSERT_EQ(map->GetLoadReport().remarks.size(), 1U);
        EXPECT_EQ(map->GetLoadReport().remarks[0].line, 40001U);
    }
}
