// Every type of node with every element that the public schema gives it: all are taken without a
// remark, and what they say is to be seen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using ::testing::HasSubstr;

namespace {

// What every node may have; `Truth` and `Zero` are nodes of the map.
const std::string common =
    "<Extension><Anything Name=\"1 x\"/></Extension><ToolTip>tip</ToolTip><Description>text"
    "</Description><DisplayName>Shown</DisplayName><Visibility>Guru</Visibility>"
    "<DocuURL> http://docs/ </DocuURL><IsDeprecated>Yes</IsDeprecated><EventID>9F01</EventID>"
    "<pIsImplemented>Truth</pIsImplemented><pIsAvailable>Truth</pIsAvailable>"
    "<pIsLocked>Zero</pIsLocked><pBlockPolling>Zero</pBlockPolling>"
    "<ImposedAccessMode>RO</ImposedAccessMode><pError>Errors</pError><pAlias>Truth</pAlias>"
    "<pCastAlias>Zero</pCastAlias>";
const std::string base = "<pInvalidator>Zero</pInvalidator><Streamable>Yes</Streamable>";
const std::string place =
    "<Address>0x10</Address><Address>16</Address><pAddress>Zero</pAddress><IntSwissKnife>"
    "<Formula>0</Formula></IntSwissKnife><pIndex Offset=\"4\">Zero</pIndex><Length>8</Length>"
    "<AccessMode>RW</AccessMode><pPort>P</pPort><Cachable>NoCache</Cachable>"
    "<PollingTime>500</PollingTime>";
const std::string shown =
    "<Unit>mm</Unit><Representation>Logarithmic</Representation><DisplayNotation>Fixed"
    "</DisplayNotation><DisplayPrecision>3</DisplayPrecision>";

std::string node(const std::string& element, const std::string& name, const std::string& inner) {
    return "<" + element + " Name=\"" + name + "\" NameSpace=\"Standard\" MergePriority=\"1\" " +
           "ExposeStatic=\"Yes\">" + inner + "</" + element + ">\n";
}

const std::string helpers =
    "<Integer Name=\"Truth\"><Value>1</Value></Integer><Integer Name=\"Zero\"><Value>0</Value>"
    "</Integer><Enumeration Name=\"Errors\"><EnumEntry Name=\"None\"><Value>0</Value></EnumEntry>"
    "<Value>0</Value></Enumeration>";

void expectCommon(TestMap& t, const char* name) {
    INode* node = t.node(name);
    ASSERT_NE(node, nullptr) << name;
    EXPECT_EQ(node->GetToolTip(), "tip");
    EXPECT_EQ(node->GetDescription(), "text");
    EXPECT_EQ(node->GetDisplayName(), "Shown");
    EXPECT_EQ(node->GetVisibility(), Guru);
    EXPECT_EQ(node->GetDocuURL(), "http://docs/");
    EXPECT_TRUE(node->IsDeprecated());
    EXPECT_EQ(node->GetEventID(), "9F01");
    EXPECT_EQ(node->GetAlias(), t.node("Truth"));
    EXPECT_EQ(node->GetCastAlias(), t.node("Zero"));
    EXPECT_EQ(node->GetNameSpace(), Standard);
    EXPECT_EQ(node->GetName(true), ("Std::" + std::string(name)).c_str());
}

// A node with all of its elements that nobody has to remark anything about.
std::unique_ptr<TestMap> whole(const std::string& element, const std::string& inner) {
    auto t = std::make_unique<TestMap>(helpers + node(element, "N", common + inner));
    EXPECT_EQ(t->reasons("N"), "") << element;
    EXPECT_TRUE(t->remarks().empty()) << element;
    expectCommon(*t, "N");
    return t;
}

}  // namespace

TEST(Schema, Category) {
    const auto t = whole("Category", base + "<pFeature>Truth</pFeature><pFeature>Zero</pFeature>");
    FeatureList_t features;
    CCategoryPtr(t->node("N"))->GetFeatures(features);
    EXPECT_EQ(features.size(), 2U);
}

TEST(Schema, IntegerWithAValue) {
    const auto t = whole("Integer", base +
                                        "<Value>6</Value><Min>0</Min><Max>8</Max><Inc>2</Inc>"
                                        "<Unit>mm</Unit><Representation>HexNumber</Representation>"
                                        "<pSelected>Truth</pSelected><PollingTime>5</PollingTime>");
    const CIntegerPtr n = t->integer("N");
    EXPECT_EQ(n->ToString(), "0x6");
    EXPECT_EQ(n->GetMin(), 0);
    EXPECT_EQ(n->GetMax(), 8);
    EXPECT_EQ(n->GetInc(), 2);
    EXPECT_EQ(n->GetUnit(), "mm");
    EXPECT_EQ(t->mode("N"), RO);
    EXPECT_TRUE(t->node("N")->IsStreamable());
    EXPECT_EQ(t->node("N")->GetPollingTime(), 5);
    EXPECT_TRUE(CSelectorPtr(t->node("N"))->IsSelector());
}

TEST(Schema, IntegerWithATableAndValidValues) {
    const auto t = whole("Integer",
                         "<pIndex>Truth</pIndex><ValueIndexed Index=\"0\">4</ValueIndexed>"
                         "<pValueIndexed Index=\"1\">Truth</pValueIndexed><pValueDefault>Zero"
                         "</pValueDefault><pMin>Zero</pMin><pMax>Truth</pMax><pInc>Truth</pInc>"
                         "<ValidValueSet>1; 2;4</ValidValueSet>");
    EXPECT_EQ(t->integer("N")->GetValue(), 1);
    EXPECT_EQ(t->integer("N")->GetIncMode(), listIncrement);
    EXPECT_EQ(t->integer("N")->GetListOfValidValues(), (int64_autovector_t{1, 2, 4}));
}

TEST(Schema, IntegerWithCopies) {
    const auto t = whole("Integer",
                         "<pValueCopy>Zero</pValueCopy><pValue>Truth</pValue><pValueCopy>Zero"
                         "</pValueCopy><Representation>PureNumber</Representation>");
    EXPECT_EQ(t->integer("N")->GetValue(), 1);
}

TEST(Schema, FloatInAllForms) {
    const auto t = whole("Float", base +
                                      "<Value>1.5</Value><Min>-INF</Min><Max>1e400</Max>"
                                      "<Inc>0.5</Inc>" +
                                      shown + "<pSelected>Truth</pSelected>");
    const CFloatPtr n = t->real("N");
    EXPECT_EQ(n->ToString(), "1.50");
    EXPECT_EQ(n->GetMin(), -std::numeric_limits<double>::max());
    EXPECT_EQ(n->GetMax(), std::numeric_limits<double>::max());
    EXPECT_EQ(n->GetInc(), 0.5);
    EXPECT_EQ(n->GetUnit(), "mm");
    EXPECT_EQ(n->GetRepresentation(), Logarithmic);
    EXPECT_EQ(n->GetDisplayNotation(), fnFixed);
    EXPECT_EQ(n->GetDisplayPrecision(), 3);
    const auto table = whole("Float",
                             "<pIndex>Zero</pIndex><ValueIndexed Index=\"1\">4</ValueIndexed>"
                             "<pValueIndexed Index=\"2\">Truth</pValueIndexed><ValueDefault>0.25"
                             "</ValueDefault><pMin>Zero</pMin><pMax>Truth</pMax><pInc>Truth</pInc>"
                             "<ValidValueSet>0.25;1</ValidValueSet>");
    EXPECT_EQ(table->real("N")->GetValue(), 0.25);
    EXPECT_EQ(table->real("N")->GetListOfValidValues(), (double_autovector_t{0.25, 1}));
}

TEST(Schema, RegistersOfAllKinds) {
    for (const char* element : {"IntReg", "FloatReg", "StringReg", "Register", "ConfRom"}) {
        const bool isNumber = element[1] == 'n' || element[1] == 'l';
        const auto t = whole(
            element, base + place +
                         (isNumber ? "<Sign>Unsigned</Sign><Endianess>BigEndian</Endianess><Unit>mm"
                                     "</Unit><Representation>Linear</Representation>"
                                   : ""));
        EXPECT_EQ(CRegisterPtr(t->node("N"))->GetAddress(), 32) << element;
        EXPECT_EQ(CRegisterPtr(t->node("N"))->GetLength(), 8) << element;
        EXPECT_EQ(t->node("N")->GetCachingMode(), NoCache) << element;
        EXPECT_EQ(t->node("N")->GetElementName(), element);
        EXPECT_EQ(t->node("N")->GetPollingTime(), 500) << element;
        EXPECT_EQ(t->mode("N"), RO) << element;
    }
}

TEST(Schema, MaskedIntRegAndStructReg) {
    for (const char* bits : {"<Bit>3</Bit>", "<LSB>3</LSB><MSB>5</MSB>"}) {
        const auto t = whole("MaskedIntReg",
                             base + place + bits +
                                 "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess><Unit>mm"
                                 "</Unit><Representation>Linear</Representation>"
                                 "<pSelected>Truth</pSelected>");
        t->port.poke(32, 0x38);
        EXPECT_EQ(t->integer("N")->GetValue(), -1);
    }
    TestMap t(helpers + "<StructReg Comment=\"all\">" + common + base + place +
              "<Endianess>LittleEndian</Endianess>" +
              node("StructEntry", "N",
                   common + base +
                       "<Bit>4</Bit><Sign>Unsigned</Sign><Cachable>NoCache</Cachable><AccessMode>RO"
                       "</AccessMode><PollingTime>7</PollingTime><Unit>mm</Unit><Representation>"
                       "Linear</Representation><pSelected>Truth</pSelected>") +
              "</StructReg>");
    EXPECT_TRUE(t.remarks().empty()) << t.reasons("N");
    expectCommon(t, "N");
    t.port.poke(32, 0x10);
    EXPECT_EQ(t.integer("N")->GetValue(), 1);
}

TEST(Schema, BooleanCommandAndString) {
    const auto yes = whole("Boolean", base +
                                          "<Value>2</Value><OnValue>2</OnValue><OffValue>7"
                                          "</OffValue><pSelected>Truth</pSelected>");
    EXPECT_TRUE(yes->boolean("N")->GetValue());
    const auto command = whole("Command", base +
                                              "<pValue>Zero</pValue><CommandValue>1</CommandValue>"
                                              "<PollingTime>3</PollingTime>");
    EXPECT_TRUE(command->command("N")->IsDone());
    const auto linked = whole("Command", "<Value>0</Value><pCommandValue>Truth</pCommandValue>");
    EXPECT_EQ(linked->mode("N"), NA);
    const auto string = whole("String", base + "<Value> v </Value>");
    EXPECT_EQ(string->string("N")->GetValue(), " v ");
}

TEST(Schema, EnumerationAndItsEntries) {
    const auto t =
        whole("Enumeration", base +
                                 node("EnumEntry", "A",
                                      common + base +
                                          "<Value>3</Value><NumericValue>0.5</NumericValue>"
                                          "<Symbolic>Alpha</Symbolic><IsSelfClearing>Yes"
                                          "</IsSelfClearing>") +
                                 "<Value>3</Value><pSelected>Truth</pSelected><PollingTime>9"
                                 "</PollingTime>");
    EXPECT_EQ(t->enumeration("N")->ToString(), "Alpha");
    const CEnumEntryPtr entry = t->node("EnumEntry_N_A");
    EXPECT_EQ(entry->GetNumericValue(), 0.5);
    EXPECT_TRUE(entry->IsSelfClearing());
    EXPECT_EQ(entry->GetNode()->GetToolTip(), "tip");
}

TEST(Schema, KnivesAndConverters) {
    const std::string names =
        "<pVariable Name=\"V\">Truth</pVariable><Constant Name=\"C\">2</Constant><Expression "
        "Name=\"X\">V + C</Expression><Input>V</Input><Output>N</Output>";
    for (const char* element : {"SwissKnife", "IntSwissKnife"}) {
        const auto t = whole(element, base + names + "<Formula>X * 2</Formula>" + shown);
        EXPECT_EQ(CValuePtr(t->node("N"))->ToString(), element[0] == 'S' ? "6.00" : "6");
        EXPECT_EQ(t->mode("N"), RO);
    }
    for (const char* element : {"Converter", "IntConverter"}) {
        const auto t = whole(element, base + names +
                                          "<FormulaTo>FROM - X</FormulaTo><FormulaFrom>TO + X"
                                          "</FormulaFrom><pValue>Zero</pValue><Slope>Increasing"
                                          "</Slope><IsLinear>Yes</IsLinear>" +
                                          shown);
        EXPECT_EQ(CValuePtr(t->node("N"))->ToString(), element[0] == 'C' ? "3.00" : "3");
    }
}

TEST(Schema, Ports) {
    const auto t =
        whole("Port",
              "<pInvalidator>Zero</pInvalidator><ChunkID>0x9F</ChunkID><SwapEndianess>Yes"
              "</SwapEndianess><CacheChunkData>Yes</CacheChunkData>");
    const CPortConstructPtr port = t->node("N");
    std::uint64_t id = 0;
    EXPECT_TRUE(port->GetChunkID(id));
    EXPECT_EQ(id, 0x9FU);
    EXPECT_EQ(port->GetSwapEndianess(), Yes);
    EXPECT_TRUE(port->CacheChunkData());
    const auto linked = whole("Port", "<pChunkID>Truth</pChunkID>");
    EXPECT_TRUE(CPortConstructPtr(linked->node("N"))->GetChunkID(id));
    EXPECT_EQ(id, 1U);
}

TEST(Schema, LockedAndSmartFeatures) {
    for (const char* element : {"AdvFeatureLock", "SmartFeature"}) {
        const auto t =
            whole(element, base + place + "<FeatureID>5A5A-01</FeatureID><Timeout>100</Timeout>");
        EXPECT_EQ(t->integer("N")->GetValue(), 32) << element;
    }
}

TEST(Schema, ImposedVisibilityHidesOnly) {
    TestMap t(
        "<Integer Name=\"A\"><ImposedVisibility>Guru</ImposedVisibility><Visibility>Expert"
        "</Visibility><Value>1</Value></Integer>");
    EXPECT_EQ(t.node("A")->GetVisibility(), Guru);
}

TEST(Schema, OfAnElementThatMayBeThereOnceTheFirstCounts) {
    TestMap t("<Integer Name=\"A\"><Value>1</Value><Value>2</Value></Integer>");
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    EXPECT_EQ(t.reasons("A"), "Value: The element is there once already, which counts.\n");
}

TEST(Schema, TheVersionsOfTheRootAreKept) {
    const CNodeMapRef map = load(
        "<RegisterDescription xmlns=\"http://www.genicam.org/GenApi/Version_1_0\" "
        "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"2\" "
        "MajorVersion=\"3\" MinorVersion=\"4\" SubMinorVersion=\"5\"/>");
    EXPECT_EQ(map->GetSchemaVersion(), (Version_t{1, 0, 2}));
    EXPECT_EQ(map->GetDeviceVersion(), (Version_t{3, 4, 5}));
}

// ---- The nodes of IEEE 1212.

namespace {

// A ROM at 0x100: a vendor id, a text behind it, a directory with a model's text and a register.
void writeRom(RecordingPort& port) {
    const std::vector<std::uint32_t> quadlets = {0x01000000,  // one quadlet of bus information
                                                 0x31333934,  //
                                                 0x00030000,  // the root directory: three entries
                                                 0x03ABCDEF,  // vendor
                                                 0x81000006,  // its text, six quadlets on
                                                 0xD1000001,  // a directory, one quadlet on
                                                 0x00020000,  // the directory: two entries
                                                 0x82000007, 0x40001234,     // model, registers
                                                 0,                          //
                                                 0x00030000, 0,          0,  // the vendor's text
                                                 0x41636D65,                 //
                                                 0x00040000, 0,          0,  // the model's text
                                                 0x4D6F6465, 0x6C000000};
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t quadlet : quadlets) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<std::uint8_t>(quadlet >> shift));
        }
    }
    port.memory.Write(bytes.data(), 0x100, static_cast<std::int64_t>(bytes.size()));
}

const std::string romNodes =
    "<ConfRom Name=\"Rom\"><Address>0x100</Address><Length>0x50</Length><AccessMode>RO</AccessMode>"
    "<pPort>P</pPort><TextDesc Name=\"Inner\"><Key>81</Key></TextDesc></ConfRom>"
    "<IntKey Name=\"Vendor\"><p1212Parser>Rom</p1212Parser><Key>03</Key></IntKey>"
    "<TextDesc Name=\"VendorText\"><p1212Parser>Rom</p1212Parser><Key>03</Key></TextDesc>"
    "<TextDesc Name=\"Model\"><p1212Parser>Rom</p1212Parser><Key>0x82</Key></TextDesc>"
    "<IntKey Name=\"Registers\"><p1212Parser>Rom</p1212Parser><Key>40</Key></IntKey>"
    "<IntKey Name=\"Leaf\"><p1212Parser>Rom</p1212Parser><Key>82</Key></IntKey>"
    "<IntKey Name=\"Missing\"><p1212Parser>Rom</p1212Parser><Key>17</Key></IntKey>"
    "<TextDesc Name=\"NoText\"><p1212Parser>Rom</p1212Parser><Key>40</Key></TextDesc>";

}  // namespace

TEST(Schema, Rule58AConfigurationRomAnswersForItsKeys) {
    TestMap t(romNodes);
    writeRom(t.port);
    EXPECT_TRUE(t.remarks().empty());
    EXPECT_EQ(t.integer("Vendor")->GetValue(), 0xABCDEF);
    EXPECT_EQ(t.string("VendorText")->GetValue(), "Acme");
    EXPECT_EQ(t.string("Inner")->ToString(), "Acme");
    EXPECT_EQ(t.string("Model")->GetValue(), "Model");
    EXPECT_EQ(t.integer("Registers")->GetValue(), 0xFFFFF0000000 + 4 * 0x1234);
    EXPECT_EQ(t.integer("Leaf")->GetValue(), 0x100 + 4 * 14);
    EXPECT_EQ(t.mode("Vendor"), RO);
    EXPECT_EQ(t.mode("Model"), RO);
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { (void)t.integer("Missing")->GetValue(); }),
              "Node 'Missing' can not be evaluated: the configuration ROM 'Rom' has nothing for "
              "the key 17.");
    EXPECT_THAT(errorOf<GenICam::RuntimeException>([&] { (void)t.string("NoText")->GetValue(); }),
                HasSubstr("has nothing for the key 40."));
    EXPECT_THROW(t.string("Model")->SetValue("x"), GenICam::AccessException);
    t.map->Connect(nullptr, "P");
    EXPECT_EQ(t.mode("Vendor"), NA);
}

TEST(Schema, Rule58ARomOfAnyBytesIsHarmless) {
    TestMap t(romNodes);
    std::uint32_t noise = 1;
    for (int round = 0; round < 2000; ++round) {
        for (std::int64_t at = 0; at < 0x50; at += 4) {
            noise = noise * 1664525 + 1013904223;
            // Directories and leaves that lead close by are what could go round.
            const std::uint32_t quadlet = round % 2 == 0 ? noise : (noise & 0xC3000F0F);
            t.port.poke(0x100 + at, quadlet, 4);
        }
        t.map->InvalidateNodes();
        for (const char* name : {"Vendor", "Registers", "Leaf", "VendorText", "Model"}) {
            try {
                (void)CValuePtr(t.node(name))->ToString();
            } catch (const GenICam::RuntimeException&) {
            }
        }
    }
}

TEST(Schema, Rule58KeysWithoutARomOrAKeyAreNotAvailable) {
    TestMap t(
        "<IntKey Name=\"A\"><Key>1</Key></IntKey><TextDesc Name=\"B\"><p1212Parser>R</p1212Parser>"
        "</TextDesc><IntKey Name=\"C\"><p1212Parser>R</p1212Parser><Key>1FF</Key></IntKey>" +
        std::string(Reg{"R", 0}));
    EXPECT_THAT(t.reasons("A"), HasSubstr("it has no p1212Parser"));
    EXPECT_THAT(t.reasons("B"), HasSubstr("which is no configuration ROM"));
    EXPECT_THAT(t.reasons("C"), HasSubstr("its Key '1FF' is no hexadecimal number of eight bits"));
    EXPECT_EQ(t.mode("A"), NA);
    EXPECT_EQ(t.mode("B"), NA);
}
