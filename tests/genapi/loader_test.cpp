// From text to nodes: what is taken, what is dropped and told, what refuses the whole description.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::HasSubstr;

namespace {

std::string refusal(const std::string& text) {
    return errorOf<GenICam::RuntimeException>([&] { (void)load(text); });
}

std::vector<std::string> namesOf(const CNodeMapRef& map) {
    NodeList_t nodes;
    map->GetNodes(nodes);
    std::vector<std::string> names;
    for (const INode* node : nodes) {
        names.push_back(node->GetName().str());
    }
    return names;
}

}  // namespace

TEST(Loader, Rule1GroupsHaveNoMeaningAndLinksPointForwardAndBackward) {
    TestMap t(
        "<Group Comment=\"a\"><Group Comment=\"b\"><Integer Name=\"A\"><pValue>B</pValue>"
        "</Integer></Group></Group><Integer Name=\"B\"><Value>5</Value></Integer>"
        "<Group Comment=\"c\"><Integer Name=\"C\"><pValue>A</pValue></Integer></Group>");
    EXPECT_EQ(t.integer("C")->GetValue(), 5);
    EXPECT_TRUE(t.remarks().empty());
}

TEST(Loader, Rule1ATakenNameIsDroppedAndTold) {
    TestMap t(
        "<Integer Name=\"A\"><Value>1</Value></Integer>\n"
        "<Integer Name=\"A\"><Value>2</Value></Integer>");
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    ASSERT_EQ(t.remarks().size(), 1U);
    EXPECT_EQ(t.remarks()[0].element, "Integer");
    EXPECT_EQ(t.remarks()[0].line, 4U);
}

TEST(Loader, Rule2WhiteSpaceAroundNumbersWordsAndLinksIsTrimmed) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>\r\n   B \t</pValue><Visibility> \n Guru\n</Visibility>"
        "</Integer><Integer Name=\"B\"><Value>\n  7\n </Value></Integer>");
    EXPECT_EQ(t.integer("A")->GetValue(), 7);
    EXPECT_EQ(t.node("A")->GetVisibility(), Guru);
}

TEST(Loader, Rule82TextsAndStringValuesStayAsTheyAre) {
    TestMap t(
        "<String Name=\"S\"><ToolTip> a tip </ToolTip><Description>\td</Description>"
        "<DisplayName>  Two  </DisplayName><Value> v </Value></String>"
        "<String Name=\"Blank\"><Value>  </Value></String>");
    EXPECT_EQ(t.node("S")->GetToolTip(), " a tip ");
    EXPECT_EQ(t.node("S")->GetDescription(), "\td");
    EXPECT_EQ(t.node("S")->GetDisplayName(), "  Two  ");
    EXPECT_EQ(t.string("S")->GetValue(), " v ");
    EXPECT_EQ(t.string("Blank")->GetValue(), "  ");
}

TEST(Loader, Rule3CdataReferencesAndCommentsInsideTexts) {
    TestMap t(
        "<String Name=\"S\"><ToolTip><![CDATA[a < b & c]]></ToolTip>"
        "<Value>x&#65;&#x42;&amp;<!-- not me -->y\xC3\xA9</Value></String>");
    EXPECT_EQ(t.node("S")->GetToolTip(), "a < b & c");
    EXPECT_EQ(t.string("S")->GetValue(), "xAB&y\xC3\xA9");
}

TEST(Loader, Rule3ByteOrderMarkNoDeclarationAndAnyLineEnd) {
    const CNodeMapRef map = load(
        "\xEF\xBB\xBF<RegisterDescription\r\nxmlns='http://www.genicam.org/GenApi/Version_1_0'>"
        "\r<Category Name='Root'/>\n\r\n</RegisterDescription>\r");
    EXPECT_NE(map->GetNode("Root"), nullptr);
}

TEST(Loader, Rule3Latin1IsBroughtToUtf8) {
    const CNodeMapRef map = load(
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><RegisterDescription "
        "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\"><Category Name=\"Root\">"
        "<ToolTip>\xB0</ToolTip></Category></RegisterDescription>");
    EXPECT_EQ(map->GetNode("Root")->GetToolTip(), "\xC2\xB0");
}

TEST(Loader, Rule3PaddingZerosBehindTheTextAreIgnored) {
    std::string text = document("<Category Name=\"Root\"/>");
    text.append(16, '\0');
    EXPECT_NE(load(text)->GetNode("Root"), nullptr);
}

TEST(Loader, Rule4NumbersInAllSpellings) {
    struct Row {
        const char* text;
        std::int64_t value;
    };
    for (const Row& row :
         {Row{"17", 17}, Row{"-5", -5}, Row{"0x1F", 31}, Row{"0XaB", 171},
          Row{"0xFFFFFFFFFFFFFFFF", -1}, Row{"9223372036854775807", INT64_MAX},
          Row{"-9223372036854775808", INT64_MIN}, Row{"9007199254740993", 9007199254740993},
          Row{"2.0", 2}, Row{"1e3", 1000}, Row{"+4", 4}}) {
        TestMap t("<Integer Name=\"A\"><Value>" + std::string(row.text) + "</Value></Integer>");
        EXPECT_EQ(t.integer("A")->GetValue(), row.value) << row.text;
    }
}

TEST(Loader, Rule4ATextThatIsNoNumberCostsTheNode) {
    for (const char* text : {"", "abc", "12x", "0x", "0x10000000000000000", "--1", "1e30", "nan"}) {
        TestMap t("<Integer Name=\"A\"><Value>" + std::string(text) +
                  "</Value></Integer><Integer Name=\"B\"><Value>1</Value></Integer>");
        EXPECT_EQ(t.mode("A"), NA) << text;
        EXPECT_EQ(t.integer("B")->GetValue(), 1);
        EXPECT_THAT(t.reasons("A"), HasSubstr("is no 64-bit integer")) << text;
    }
}

TEST(Loader, Rule5ShortAccessWordsAreTakenWithAWarning) {
    TestMap t(std::string(Reg{"A", 0, "R"}) + std::string(Reg{"B", 0, "W"}) +
              std::string(Reg{"C", 0, "WR"}));
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(t.mode("B"), WO);
    EXPECT_EQ(t.mode("C"), RW);
    ASSERT_EQ(t.remarks().size(), 3U);
    EXPECT_EQ(t.remarks()[0].severity, LoadSeverity::warning);
}

TEST(Loader, Rule5AnUnknownWordCostsTheElementOnly) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><Visibility>Wizard</Visibility></Integer>");
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    EXPECT_EQ(t.node("A")->GetVisibility(), Beginner);
    EXPECT_EQ(t.reasons("A"), "Visibility: The word 'Wizard' is unknown here.\n");
}

TEST(Loader, Rule6UnknownElementsAndNodesAreDroppedAndTold) {
    TestMap t(
        "<Wonder Name=\"W\"><Value>1</Value></Wonder>\n"
        "<Integer Name=\"A\"><Value>1</Value><Wondrous>2</Wondrous></Integer>");
    EXPECT_EQ(t.node("W"), nullptr);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    ASSERT_EQ(t.remarks().size(), 2U);
    EXPECT_EQ(t.remarks()[0].element, "Wonder");
    EXPECT_EQ(t.remarks()[0].name, "W");
    EXPECT_EQ(t.remarks()[0].line, 3U);
    EXPECT_EQ(t.remarks()[1].element, "Wondrous");
    EXPECT_EQ(t.remarks()[1].name, "A");
}

TEST(Loader, Rule6ALinkToAMissingNodeMakesTheOwnerNotAvailableWithTheReason) {
    TestMap t("<Integer Name=\"A\"><pValue>Gone</pValue></Integer>");
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)t.integer("A")->GetValue(); }),
              "Node 'A' is not readable, its access mode is NA: 'A' is not available, its pValue "
              "names 'Gone', which is not in the description.");
    EXPECT_THAT(t.reasons("A"), HasSubstr("pValue: The node is not available"));
}

TEST(Loader, Rule6AFeatureLinkToNothingIsSkippedAndTold) {
    TestMap t(
        "<Category Name=\"Root\"><pFeature>Gone</pFeature><pFeature>A</pFeature></Category>"
        "<Integer Name=\"A\"><Value>1</Value></Integer>");
    FeatureList_t features;
    CCategoryPtr(t.node("Root"))->GetFeatures(features);
    ASSERT_EQ(features.size(), 1U);
    EXPECT_EQ(features[0]->GetNode()->GetName(), "A");
    EXPECT_EQ(t.remarks().size(), 1U);
}

TEST(Loader, Rule6ALinkToANodeOfTheWrongKindIsTold) {
    TestMap t("<Integer Name=\"A\"><pValue>Root</pValue></Integer><Category Name=\"Root\"/>");
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_THAT(t.reasons("A"), HasSubstr("'Root', which has no number"));
}

TEST(Loader, Rule8EntriesAreNodesNamedAfterEnumerationAndEntry) {
    TestMap t(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"On\"><Value>1</Value></EnumEntry>"
        "<Value>1</Value></Enumeration><Enumeration Name=\"F\"><EnumEntry Name=\"On\">"
        "<Value>2</Value></EnumEntry><Value>2</Value></Enumeration>");
    const CEnumEntryPtr entry = t.node("EnumEntry_F_On");
    EXPECT_EQ(entry->GetValue(), 2);
    EXPECT_EQ(entry->GetSymbolic(), "On");
    EXPECT_TRUE(t.remarks().empty());
}

TEST(Loader, Rule8AnExplicitNodeWinsTheNameOfAnEntry) {
    TestMap t(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"On\"><Value>1</Value></EnumEntry>"
        "<Value>1</Value></Enumeration>"
        "<Integer Name=\"EnumEntry_E_On\"><Value>9</Value></Integer>");
    EXPECT_EQ(t.integer("EnumEntry_E_On")->GetValue(), 9);
    EXPECT_EQ(t.enumeration("E")->ToString(), "On");
    EXPECT_EQ(t.remarks().size(), 1U);
}

TEST(Loader, Rule9NewerSchemasAreRefusedByNameSpace) {
    EXPECT_EQ(
        refusal("<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_2\"/>"),
        "Node map description, line 1, column 2: the schema version 1.2 is newer than 1.1, the "
        "newest known.");
    EXPECT_THAT(
        refusal("<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_2_0\"/>"),
        HasSubstr("the schema version 2.0 is newer"));
    EXPECT_THAT(refusal("<RegisterDescription xmlns=\"urn:other\"/>"),
                HasSubstr("the schema name space 'urn:other' is unknown."));
}

TEST(Loader, Rule9AMissingNameSpaceLoadsWithAWarning) {
    const CNodeMapRef map =
        load("<RegisterDescription><Category Name=\"Root\"/></RegisterDescription>");
    EXPECT_NE(map->GetNode("Root"), nullptr);
    ASSERT_EQ(map->GetLoadReport().remarks.size(), 1U);
    EXPECT_EQ(map->GetLoadReport().remarks[0].severity, LoadSeverity::warning);
}

TEST(Loader, Rule9ExtensionsAndAllBelowAreIgnored) {
    TestMap t(
        "<Extension><Integer Name=\"Hidden\"><Value>1</Value></Integer></Extension>"
        "<Integer Name=\"A\"><Value>1</Value><Extension><Value Name=\"1 x\">2</Value>"
        "</Extension></Integer>");
    EXPECT_EQ(t.node("Hidden"), nullptr);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    EXPECT_TRUE(t.remarks().empty());
}

TEST(Loader, Rule84AnIllegalNameRefusesTheWholeDescription) {
    for (const char* name : {"1A", "A B", "", "_A", "A-B", "\xC3\xA9"}) {
        EXPECT_THAT(refusal(document("<Integer Name=\"" + std::string(name) +
                                     "\"><Value>1</Value></Integer>")),
                    HasSubstr("line 3, column 2: the name '" + std::string(name) +
                              "' of the element 'Integer' is illegal"));
    }
    EXPECT_THAT(
        refusal(document("<Enumeration Name=\"E\"><EnumEntry Name=\"a b\"/></Enumeration>")),
        HasSubstr("is illegal"));
}

TEST(Loader, Rule88AMissingVisibilityIsBeginner) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value></Integer>");
    EXPECT_EQ(t.node("A")->GetVisibility(), Beginner);
}

TEST(Loader, NodesWithoutANameAreDroppedAndTold) {
    TestMap t("<Integer><Value>1</Value></Integer>");
    EXPECT_THAT(namesOf(t.map), testing::ElementsAre("P"));
    ASSERT_EQ(t.remarks().size(), 1U);
    EXPECT_EQ(t.remarks()[0].reason, "The node has no name.");
}

TEST(Loader, TheRootsAttributesAreKept) {
    TestMap t("");
    EXPECT_EQ(t.map->GetModelName(), "Params");
    EXPECT_EQ(t.map->GetVendorName(), "Tarvek");
    EXPECT_EQ(t.map->GetStandardNameSpace(), "None");
    EXPECT_EQ(t.map->GetDeviceName(), "Device");
}

TEST(Loader, MapsOfOneFactoryShareTheDescriptionButNoValue) {
    const std::string text = document("<Integer Name=\"A\"><Value>1</Value></Integer>");
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size(), CacheUsage_Ignore, false);
    const CNodeMapRef first = factory.CreateNodeMap("One", true);
    const CNodeMapRef second = factory.CreateNodeMap("Two", true);
    CIntegerPtr(first->GetNode("A"))->SetValue(5);
    EXPECT_EQ(CIntegerPtr(second->GetNode("A"))->GetValue(), 1);
    EXPECT_EQ(second->GetNode("A")->GetDeviceName(), "Two");
}

TEST(Loader, SuppressedStringsAreLeftOut) {
    const std::string text = document(
        "<Integer "
        "Name=\"A\"><ToolTip>t</ToolTip><DisplayName>d</DisplayName><Value>1</Value></Integer>");
    const CNodeMapRef map =
        CNodeMapFactory(ContentType_Xml, text.data(), text.size(), CacheUsage_Ignore, true)
            .CreateNodeMap();
    EXPECT_EQ(map->GetNode("A")->GetToolTip(), "");
    EXPECT_EQ(map->GetNode("A")->GetDisplayName(), "d");
}

TEST(Loader, FeaturesAreWhatRootReaches) {
    TestMap t(
        "<Category Name=\"Root\"><pFeature>Sub</pFeature></Category><Category Name=\"Sub\">"
        "<pFeature>A</pFeature><pFeature>Root</pFeature></Category>"
        "<Integer Name=\"A\"><Value>1</Value></Integer>"
        "<Integer Name=\"B\"><Value>1</Value></Integer>");
    EXPECT_TRUE(t.node("A")->IsFeature());
    EXPECT_FALSE(t.node("B")->IsFeature());
    EXPECT_EQ(CCategoryPtr(t.node("Sub"))->GetAccessMode(), RO);
}
