// What the description says of a node, by the names of its elements.
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

struct Said {
    bool isThere = false;
    std::string value, attribute;
    bool operator==(const Said&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Said& said) {
    return stream << (said.isThere ? "'" + said.value + "' '" + said.attribute + "'" : "nothing");
}

Said property(INode* node, const char* name) {
    gcstring value = "before";
    gcstring attribute = "before";
    const bool isThere = node->GetProperty(name, value, attribute);
    return {isThere, value.c_str(), attribute.c_str()};
}

Said is(const std::string& value, const std::string& attribute = "") {
    return {true, value, attribute};
}
const Said nothing;

std::vector<std::string> names(INode* node) {
    StringList_t list = {"before"};
    node->GetPropertyNames(list);
    std::vector<std::string> result;
    for (const gcstring& name : list) {
        result.emplace_back(name.c_str());
    }
    return result;
}

const std::string port = "<Length>8</Length><pPort>P</pPort>";
const std::string one = "<Integer Name=\"One\"><Value>1</Value></Integer>";

}  // namespace

TEST(Property, FeatureIdAndTimeoutOfALockedFeature) {
    for (const char* element : {"AdvFeatureLock", "SmartFeature"}) {
        TestMap t(std::string("<") + element + " Name=\"N\"><FeatureID> 5A5A-01 </FeatureID>" +
                  "<Timeout>100</Timeout><Address>16</Address>" + port + "</" + element + ">");
        EXPECT_EQ(property(t.node("N"), "FeatureID"), is("5A5A-01")) << element;
        EXPECT_EQ(property(t.node("N"), "Timeout"), is("100")) << element;
    }
}

TEST(Property, OneThatTheNodeLacksIsNotThereAndClearsTheTexts) {
    TestMap t(one);
    EXPECT_EQ(property(t.node("One"), "FeatureID"), nothing);
    EXPECT_EQ(property(t.node("One"), "Nonsense"), nothing);
    EXPECT_EQ(property(t.node("One"), ""), nothing);
}

TEST(Property, EachNameIsListedOnceAndHasAValue) {
    TestMap t(one +
              "<Integer Name=\"N\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip>"
              "<pInvalidator>One</pInvalidator><pInvalidator>P</pInvalidator><pValue>One</pValue>"
              "</Integer>");
    EXPECT_EQ(names(t.node("N")),
              (std::vector<std::string>{"Name", "NameSpace", "ToolTip", "Visibility",
                                        "IsDeprecated", "Streamable", "pInvalidator", "pValue"}));
    NodeList_t nodes;
    t.map->GetNodes(nodes);
    for (INode* node : nodes) {
        for (const std::string& name : names(node)) {
            EXPECT_TRUE(property(node, name.c_str()).isThere) << name;
        }
    }
}

TEST(Property, SeveralOfOneNameArePartedByTabs) {
    TestMap t(one +
              "<Integer Name=\"N\"><pInvalidator>P</pInvalidator><pInvalidator>One</pInvalidator>"
              "<pIndex>One</pIndex><ValueIndexed Index=\"3\">30</ValueIndexed>"
              "<ValueIndexed Index=\"4\">40</ValueIndexed><pValueIndexed Index=\"5\">One"
              "</pValueIndexed><ValueDefault>-1</ValueDefault></Integer>");
    INode* node = t.node("N");
    EXPECT_EQ(property(node, "pInvalidator"), is("P\tOne"));
    EXPECT_EQ(property(node, "ValueIndexed"), is("30\t40", "3\t4"));
    EXPECT_EQ(property(node, "pValueIndexed"), is("One", "5"));
    EXPECT_EQ(property(node, "ValueDefault"), is("-1"));
    EXPECT_EQ(property(node, "pIndex"), is("One"));
}

TEST(Property, AttributesOfANode) {
    TestMap t(
        "<Integer Name=\"N\" NameSpace=\"Standard\" MergePriority=\"1\" ExposeStatic=\"Yes\" "
        "Comment=\"by hand\"><Value>1</Value></Integer>");
    INode* node = t.node("N");
    EXPECT_EQ(property(node, "Name"), is("N"));
    EXPECT_EQ(property(node, "NameSpace"), is("Standard"));
    EXPECT_EQ(property(node, "MergePriority"), is("1"));
    EXPECT_EQ(property(node, "ExposeStatic"), is("Yes"));
    EXPECT_EQ(property(node, "Comment"), is("by hand"));
}

TEST(Property, NumbersAreExact) {
    TestMap t(
        "<Integer Name=\"I\"><Value>5</Value><Min>-9223372036854775808</Min><Max>0x10</Max>"
        "<Inc>1</Inc><ValidValueSet>5;3</ValidValueSet><Representation>HexNumber"
        "</Representation></Integer><Float Name=\"F\"><Value>0.1</Value><Min>1e-3</Min>"
        "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>3</DisplayPrecision></Float>");
    EXPECT_EQ(property(t.node("I"), "Value"), is("5"));
    EXPECT_EQ(property(t.node("I"), "Min"), is("-9223372036854775808"));
    EXPECT_EQ(property(t.node("I"), "Max"), is("16"));
    EXPECT_EQ(property(t.node("I"), "Inc"), is("1"));
    EXPECT_EQ(property(t.node("I"), "ValidValueSet"), is("3;5"));
    EXPECT_EQ(property(t.node("I"), "Representation"), is("HexNumber"));
    EXPECT_EQ(property(t.node("F"), "Value"), is("0.1"));
    EXPECT_EQ(property(t.node("F"), "Min"), is("0.001"));
    EXPECT_EQ(property(t.node("F"), "Max"), nothing);
    EXPECT_EQ(property(t.node("F"), "DisplayNotation"), is("Fixed"));
    EXPECT_EQ(property(t.node("F"), "DisplayPrecision"), is("3"));
}

TEST(Property, LayoutOfARegister) {
    TestMap t(one +
              "<StructReg><Address>0x10</Address><Address>4</Address><pAddress>One</pAddress>"
              "<IntSwissKnife><Formula>1 + 1</Formula></IntSwissKnife><pIndex Offset=\"8\">One"
              "</pIndex><pIndex pOffset=\"One\">One</pIndex><Length>4</Length><pPort>P</pPort>"
              "<AccessMode>RW</AccessMode><Cachable>NoCache</Cachable><PollingTime>70</PollingTime>"
              "<StructEntry Name=\"N\"><Sign>Signed</Sign><Endianess>BigEndian</Endianess>"
              "<LSB>7</LSB><MSB>0</MSB></StructEntry></StructReg>");
    INode* node = t.node("N");
    EXPECT_EQ(property(node, "Address"), is("20"));
    EXPECT_EQ(property(node, "pAddress"), is("One"));
    EXPECT_EQ(property(node, "IntSwissKnife"), is("1 + 1"));
    EXPECT_EQ(property(node, "pIndex"), is("One\tOne", "8\tOne"));
    EXPECT_EQ(property(node, "Length"), is("4"));
    EXPECT_EQ(property(node, "pPort"), is("P"));
    EXPECT_EQ(property(node, "AccessMode"), is("RW"));
    EXPECT_EQ(property(node, "Cachable"), is("NoCache"));
    EXPECT_EQ(property(node, "PollingTime"), is("70"));
    EXPECT_EQ(property(node, "Sign"), is("Signed"));
    EXPECT_EQ(property(node, "Endianess"), is("BigEndian"));
    EXPECT_EQ(property(node, "LSB"), is("7"));
    EXPECT_EQ(property(node, "MSB"), is("0"));
}

TEST(Property, FormulasWithTheirNames) {
    const std::string text =
        one +
        "<Converter Name=\"N\"><pVariable Name=\"OLD\">One</pVariable>"
        "<pVariable Name=\"X.Max\">One</pVariable><Constant Name=\"C\"> 2 "
        "</Constant><Expression Name=\"E\">C * 2</Expression><FormulaTo>\n FROM"
        " * E </FormulaTo><FormulaFrom>TO / E</FormulaFrom><pValue>One</pValue>"
        "<Slope>Increasing</Slope><IsLinear>Yes</IsLinear></Converter>";
    TestMap t(text);
    INode* node = t.node("N");
    EXPECT_EQ(property(node, "pVariable"), is("One\tOne", "OLD\tX.Max"));
    EXPECT_EQ(property(node, "Constant"), is("2", "C"));
    EXPECT_EQ(property(node, "Expression"), is("C * 2", "E"));
    EXPECT_EQ(property(node, "FormulaTo"), is("FROM * E"));
    EXPECT_EQ(property(node, "FormulaFrom"), is("TO / E"));
    EXPECT_EQ(property(node, "pValue"), is("One"));
    EXPECT_EQ(property(node, "Slope"), is("Increasing"));
    EXPECT_EQ(property(node, "IsLinear"), is("Yes"));
    // They are among the texts that can be left out.
    const std::string whole = document(text);
    CNodeMapFactory factory(ContentType_Xml, whole.data(), whole.size(), CacheUsage_Ignore, true);
    const CNodeMapRef map = factory.CreateNodeMap("Device");
    EXPECT_EQ(property(map->GetNode("N"), "FormulaTo"), nothing);
    EXPECT_EQ(CFloatPtr(map->GetNode("N"))->GetValue(), 0.25);
}

TEST(Property, OfOtherKinds) {
    TestMap t(one +
              "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>1</Value><NumericValue>2.5"
              "</NumericValue><IsSelfClearing>Yes</IsSelfClearing></EnumEntry><EnumEntry "
              "Name=\"B\"><Value>2</Value></EnumEntry><Value>1</Value></Enumeration>"
              "<Boolean Name=\"B\"><pValue>One</pValue><OnValue>7</OnValue></Boolean>"
              "<Command Name=\"C\"><pValue>One</pValue><pCommandValue>One</pCommandValue></Command>"
              "<String Name=\"S\"><Value> text </Value></String><Category Name=\"Root\"><pFeature>E"
              "</pFeature><pFeature>B</pFeature></Category><Port Name=\"K\"><ChunkID>Beef"
              "</ChunkID><CacheChunkData>Yes</CacheChunkData></Port><ConfRom Name=\"R\">" +
              port +
              "</ConfRom><IntKey Name=\"Y\"><p1212Parser>R</p1212Parser><Key>0A</Key></IntKey>");
    EXPECT_EQ(property(t.node("E"), "EnumEntry"), is("EnumEntry_E_A\tEnumEntry_E_B"));
    INode* entry = t.node("EnumEntry_E_A");
    EXPECT_EQ(property(entry, "Symbolic"), is("A"));
    EXPECT_EQ(property(entry, "NumericValue"), is("2.5"));
    EXPECT_EQ(property(entry, "IsSelfClearing"), is("Yes"));
    EXPECT_EQ(property(t.node("B"), "OnValue"), is("7"));
    EXPECT_EQ(property(t.node("B"), "OffValue"), is("0"));
    EXPECT_EQ(property(t.node("C"), "pCommandValue"), is("One"));
    EXPECT_EQ(property(t.node("S"), "Value"), is(" text "));
    EXPECT_EQ(property(t.node("Root"), "pFeature"), is("E\tB"));
    EXPECT_EQ(property(t.node("K"), "ChunkID"), is("beef"));
    EXPECT_EQ(property(t.node("K"), "CacheChunkData"), is("Yes"));
    EXPECT_EQ(property(t.node("Y"), "p1212Parser"), is("R"));
    EXPECT_EQ(property(t.node("Y"), "Key"), is("a"));
}

TEST(Property, WritingChildrenAreAllThatAWriteReaches) {
    TestMap t(one +
              "<Integer Name=\"A\"><Value>1</Value></Integer><Integer Name=\"B\"><Value>1"
              "</Value></Integer><Integer Name=\"N\"><pValueCopy>A</pValueCopy><pValue>One</pValue>"
              "<pValueCopy>B</pValueCopy></Integer><Integer Name=\"T\"><pIndex>One</pIndex>"
              "<pValueIndexed Index=\"1\">B</pValueIndexed><ValueIndexed Index=\"2\">7"
              "</ValueIndexed><pValueDefault>A</pValueDefault></Integer>");
    NodeList_t children;
    t.node("N")->GetChildren(children, ctWritingChildren);
    EXPECT_EQ(children, (NodeList_t{t.node("A"), t.node("One"), t.node("B")}));
    t.node("T")->GetChildren(children, ctWritingChildren);
    EXPECT_EQ(children, (NodeList_t{t.node("B"), t.node("A")}));
    t.node("One")->GetChildren(children, ctWritingChildren);
    EXPECT_TRUE(children.empty());
}

TEST(Property, NodesThatLackAPartHaveTheirOthers) {
    TestMap t(one +
              "<IntReg Name=\"R\"><Address>1</Address><pIndex pOffset=\"Gone\">One</pIndex>"
              "<pLength>Gone</pLength></IntReg><Integer Name=\"I\"><pValue>Gone</pValue><pMin>Gone"
              "</pMin></Integer><IntSwissKnife Name=\"K\"><pVariable Name=\"X\">Gone</pVariable>"
              "</IntSwissKnife><TextDesc Name=\"T\"/><Command Name=\"C\"/>");
    EXPECT_EQ(property(t.node("R"), "pIndex"), is("One"));
    EXPECT_EQ(property(t.node("R"), "pLength"), nothing);
    EXPECT_EQ(property(t.node("I"), "pValue"), nothing);
    EXPECT_EQ(property(t.node("K"), "pVariable"), is("Gone", "X"));
    EXPECT_EQ(property(t.node("T"), "p1212Parser"), nothing);
    EXPECT_EQ(property(t.node("C"), "CommandValue"), nothing);
}
