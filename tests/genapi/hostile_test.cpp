// Text that is broken or meant to hurt: one clear refusal with the place, never a crash or a hang.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::HasSubstr;

namespace {

std::string refusal(const std::string& text) {
    return errorOf<GenICam::RuntimeException>([&] { (void)load(text); });
}

}  // namespace

TEST(Hostile, TextThatIsNotWellFormedIsRefusedWithThePlace) {
    struct Row {
        const char* text;
        const char* error;
    };
    const std::vector<Row> rows = {
        {"", "line 1, column 1: not well-formed, the text is empty"},
        {"hello", "line 1, column 1: not well-formed, text stands outside"},
        {"<a><b></a></b>", "line 1, column 7: not well-formed, the end tag 'a' closes nothing"},
        {"<a>\n<b>\n</b>", "line 1, column 2: not well-formed, the element 'a' is not closed"},
        {"<a>x & y</a>", "line 1, column 6: not well-formed, '&' begins no known reference"},
        {"<a>x &foo; y</a>", "column 6: not well-formed, '&' begins no known reference"},
        {"<a>1 < 2</a>", "column 7: not well-formed, '<' is not followed by a name"},
        {"<a b='1' b='2'/>", "the attribute 'b' is given twice"},
        {"<a b='<'/>", "'<' stands in an attribute's value"},
        {"<a b=1/>", "the value of 'b' is not in quotes"},
        {"<a b='1/>", "an attribute's value has no end"},
        {"<a><!-- x</a>", "a comment has no end"},
        {"<a><![CDATA[ x</a>", "a CDATA section has no end"},
        {"<a/><b/>", "a second root element 'b'"},
        {"<a>\x01</a>", "a control character"},
        {"<a>&#0;</a>", "begins no known reference"},
        {"<a", "the tag 'a' has no end"},
        {"\xFF\xFE<\0a", "the text is in UTF-16"},
    };
    for (const Row& row : rows) {
        EXPECT_THAT(refusal(row.text), HasSubstr(row.error)) << row.text;
    }
}

TEST(Hostile, AnotherRootIsNoDescription) {
    EXPECT_EQ(refusal("<html/>"),
              "Node map description, line 1, column 2: the root element is 'html'; a description's "
              "is 'RegisterDescription'.");
}

TEST(Hostile, Rule12EntitiesAreRefused) {
    EXPECT_THAT(refusal("<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>"),
                HasSubstr("a document type with declarations (entities) is refused."));
}

TEST(Hostile, Rule12DepthIsBounded) {
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "<Group>";
    }
    EXPECT_THAT(refusal(document(text)), HasSubstr("elements are nested deeper than 256."));
}

TEST(Hostile, Rule12NumbersOfElementsAndAttributesAreBounded) {
    std::string many = "<RegisterDescription";
    for (int i = 0; i < 300; ++i) {
        many += " a" + std::to_string(i) + "=''";
    }
    EXPECT_THAT(refusal(many + "/>"), HasSubstr("an element has more than 256 attributes."));
    std::string elements = "<RegisterDescription>";
    elements.reserve(20'000'000);
    for (int i = 0; i < 4'200'000; ++i) {
        elements += "<a/>";
    }
    EXPECT_THAT(refusal(elements), HasSubstr("there are more than 4194304 elements."));
}

// What stands once in the parent counts for every entry.
TEST(Hostile, Rule12ATextThatAsksForFarMoreThanItHasIsRefused) {
    std::string tips = "<StructReg><ToolTip>" + std::string(1'000'000, 'x') + "</ToolTip>";
    std::string links = "<Integer Name=\"Zero\"><Value>0</Value></Integer><StructReg>";
    for (int i = 0; i < 3000; ++i) {
        links += "<pAddress>Zero</pAddress>";
    }
    for (int i = 0; i < 3000; ++i) {
        const std::string entry = "<StructEntry Name=\"E" + std::to_string(i) + "\"/>";
        tips += entry;
        links += entry;
    }
    for (const std::string& nodes : {tips, links}) {
        EXPECT_EQ(refusal(document(nodes + "</StructReg>")),
                  "Node map description: the nodes would take far more memory than its text.");
    }
}

TEST(Hostile, Rule12ExpressionsThatDoubleAreBounded) {
    std::string knife = "<IntSwissKnife Name=\"K\"><Expression Name=\"E0\">1</Expression>";
    for (int i = 1; i < 60; ++i) {
        const std::string before = "E" + std::to_string(i - 1);
        knife += "<Expression Name=\"E" + std::to_string(i) + "\">" + before + " + " + before +
                 "</Expression>";
    }
    TestMap t(knife + "<Formula>E59</Formula></IntSwissKnife>");
    EXPECT_EQ(t.mode("K"), NA);
    EXPECT_THAT(t.reasons("K"), HasSubstr("it is too long"));
}

TEST(Hostile, ABrokenContainerIsRefused) {
    CNodeMapFactory factory(ContentType_ZippedXml, "PK", 2);
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { (void)factory.CreateNodeMap(); }),
              "Node map description: the zip container does not begin as one.");
    EXPECT_THROW(CNodeMapFactory(ContentType_Xml, nullptr, 5), GenICam::InvalidArgumentException);
}

TEST(Hostile, Rule11AValueCircleEndsWithAnErrorOfThatRead) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer>"
        "<Integer Name=\"B\"><pValue>A</pValue></Integer>"
        "<Integer Name=\"Self\"><pValue>Self</pValue></Integer>");
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { (void)t.integer("A")->GetValue(); }),
              "Node 'A' leads through 'B' to 'A': Node 'A' can not be evaluated: its links lead "
              "in a circle back to it.");
    EXPECT_THROW((void)t.integer("Self")->GetValue(), GenICam::RuntimeException);
    EXPECT_THROW(t.integer("A")->SetValue(1), GenICam::RuntimeException);
    EXPECT_THROW((void)t.integer("A")->GetMin(), GenICam::RuntimeException);
    EXPECT_EQ(t.mode("A"), NA);
    t.node("A")->InvalidateNode();
    EXPECT_EQ(t.integer("A")->GetRepresentation(), PureNumber);
}

TEST(Hostile, Rule11AnAccessCircleMakesTheNodesNotAvailable) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value><pIsAvailable>B</pIsAvailable></Integer>"
        "<Integer Name=\"B\"><Value>1</Value><pIsAvailable>A</pIsAvailable></Integer>");
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_EQ(t.mode("B"), NA);
}

TEST(Hostile, Rule11AnEndlessChainIsCutOff) {
    std::string nodes;
    for (int i = 0; i < 5000; ++i) {
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i + 1) +
                 "</pValue></Integer>";
    }
    TestMap t(nodes + "<Integer Name=\"N5000\"><Value>1</Value></Integer>");
    EXPECT_THAT(errorOf<GenICam::RuntimeException>([&] { (void)t.integer("N0")->GetValue(); }),
                HasSubstr("its links are deeper than 200."));
    EXPECT_EQ(t.integer("N4900")->GetValue(), 1);
    t.integer("N5000")->SetValue(2);
    EXPECT_EQ(t.integer("N4990")->GetValue(), 2);
}

TEST(Hostile, ATreeOfLinksThatDoublesAtEachLevelIsCutOff) {
    std::string nodes;
    for (int i = 0; i < 60; ++i) {
        const std::string next = "N" + std::to_string(i + 1);
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><Value>1</Value><pIsAvailable>" +
                 next + "</pIsAvailable><pIsAvailable>" + next + "</pIsAvailable></Integer>";
    }
    TestMap t(nodes + "<Integer Name=\"N60\"><Value>1</Value></Integer>");
    EXPECT_THAT(errorOf<GenICam::RuntimeException>([&] { (void)t.integer("N0")->GetValue(); }),
                HasSubstr("steps through the description."));
    EXPECT_EQ(t.integer("N55")->GetValue(), 1);
}

TEST(Hostile, RemarksAreBounded) {
    std::string nodes;
    for (int i = 0; i < 3000; ++i) {
        nodes += "<Wonder/>";
    }
    TestMap t(nodes);
    EXPECT_EQ(t.remarks().size(), 1000U);
    EXPECT_EQ(t.map->GetLoadReport().notListed, 2000U);
}

TEST(Hostile, EveryCutOfADescriptionIsRefusedOrLoads) {
    const std::string text =
        document("<Integer Name=\"A\"><Value>1</Value></Integer><!-- c --><Port Name=\"P\"/>");
    for (std::size_t length = 0; length < text.size() - 2; ++length) {
        EXPECT_THROW((void)load(text.substr(0, length)), GenICam::RuntimeException) << length;
    }
}

TEST(Hostile, NodesThatLackAPartRefuseEveryQuestionByName) {
    TestMap t(
        "<Converter Name=\"C\"><FormulaFrom>TO</FormulaFrom></Converter>"
        "<IntConverter Name=\"I\"><FormulaFrom>TO +</FormulaFrom><pValue>V</pValue></IntConverter>"
        "<Integer Name=\"V\"><Value>1</Value><Min>0</Min><Max>5</Max></Integer>"
        "<Integer Name=\"L\"><pValue>I</pValue></Integer>"
        "<MaskedIntReg "
        "Name=\"M\"><Address>0</Address><Length>99</Length><Bit>3</Bit></MaskedIntReg>"
        "<StringReg Name=\"S\"/><FloatReg Name=\"F\"/><Register Name=\"R\"/>"
        "<Command Name=\"X\"/><Enumeration Name=\"E\"/><Boolean Name=\"B\"/>");
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)t.real("C")->GetMin(); }),
              "Node 'C' is not available, it has no pValue.");
    for (const char* name : {"I", "L", "M"}) {
        EXPECT_THROW((void)t.integer(name)->GetMax(), GenICam::GenericException) << name;
        EXPECT_THROW((void)t.integer(name)->GetValue(), GenICam::AccessException) << name;
        EXPECT_THROW((void)t.integer(name)->GetListOfValidValues().size(),
                     GenICam::GenericException);
    }
    for (const char* name : {"C", "I", "L", "M", "S", "F", "R", "X", "E", "B"}) {
        EXPECT_EQ(t.mode(name), NA) << name;
        t.node(name)->InvalidateNode();
        EXPECT_THROW(CValuePtr(t.node(name))->FromString("1"), GenICam::GenericException) << name;
    }
    EXPECT_THROW(t.command("X")->Execute(), GenICam::AccessException);
    EXPECT_TRUE(t.command("X")->IsDone());
}
