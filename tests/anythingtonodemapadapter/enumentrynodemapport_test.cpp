#include "anythingtonodemapadapter/enumentrynodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CEnumEntryNodeMapPort;

std::string generateEntry(CEnumEntryNodeMapPort& port, const gcstring& prefix = "") {
    std::ostringstream out;
    port.generateEntry(out, prefix);
    return out.str();
}

TEST(EnumEntryNodeMapPort, ReadsItsAvailabilityAndIgnoresWrites) {
    const auto entry = makeColorEntry(Blue, "Blue");
    CEnumEntryNodeMapPort port(entry, "Color", 0);
    EXPECT_EQ(readWord(port, 0), 1);
    entry->setAvailable(false);
    EXPECT_EQ(readWord(port, 0), 0);
    writeWord(port, 0, 1);
    EXPECT_EQ(readWord(port, 0), 0);
    EXPECT_EQ(readWord(port, 8), untouched);
    EXPECT_EQ(readBytes(port, 0, 2), std::string(2, '\0'));
}

TEST(EnumEntryNodeMapPort, IsNamedAfterEnumerationAndEntry) {
    const CEnumEntryNodeMapPort port(makeColorEntry(Blue, "Blue"), "Color", 0);
    EXPECT_EQ(port.getQualifiedName(""), "EnumEntry_Color_Blue");
    EXPECT_EQ(port.getQualifiedName("My"), "EnumEntry_Color_MyBlue");
    EXPECT_EQ(port.getPortName("My"), "EnumEntry_Color_MyBluePort");
    EXPECT_STREQ(port.getName(), "Blue");
}

TEST(EnumEntryNodeMapPort, TheHeadOfItsElementEndsInABlank) {
    CEnumEntryNodeMapPort port(makeColorEntry(Blue, "Blue"), "Color", 2);
    EXPECT_THAT(generateEntry(port),
                testing::StartsWith("        <EnumEntry Name=\"Blue\" MergePriority=\"+1\" > \n"));
}

TEST(EnumEntryNodeMapPort, DependenciesStandInForTheRegister) {
    CEnumEntryNodeMapPort port(makeColorEntry(Blue, "Blue", {true, true, false, false}), "Color",
                               0);
    port.addDependency("IsAvailable", "Trigger");
    EXPECT_THAT(generateEntry(port),
                testing::HasSubstr("            <pIsAvailable>Trigger</pIsAvailable>\n"
                                   "            <Value>7</Value>\n"));
}

TEST(EnumEntryNodeMapPort, WritesLargeAndNegativeValuesInDecimal) {
    CEnumEntryNodeMapPort large(std::make_shared<EnumEntryParameterPort<unsigned int>>(
                                    0x82180044U, "A", "", "", "", true, true, false, false),
                                "Format", 0);
    EXPECT_EQ(generateEntry(large),
              "        <EnumEntry Name=\"A\" > \n"
              "            <Value>2182611012</Value>\n"
              "        </EnumEntry>\n");
    enum Side { Left = -1 };
    CEnumEntryNodeMapPort negative(std::make_shared<EnumEntryParameterPort<Side>>(
                                       Left, "Left", "", "", "", true, true, false, false),
                                   "Side", 0);
    EXPECT_THAT(generateEntry(negative), testing::HasSubstr("<Value>-1</Value>"));
}

TEST(EnumEntryNodeMapPort, WithoutARegisterYieldsNoPortAndNoRegister) {
    CEnumEntryNodeMapPort port(makeColorEntry(Blue, "Blue", {true, true, false, true}), "Color", 0);
    EXPECT_EQ(generate(port), "");
    EXPECT_EQ(blockSize(port), 0);
}

TEST(EnumEntryNodeMapPort, DescribesItsRegisterOnItsOwn) {
    CEnumEntryNodeMapPort port(makeColorEntry(Blue, "Blue"), "Color", 0);
    EXPECT_EQ(generate(port),
              "    <IntReg Name=\"EnumEntry_Color_BlueIsAvailable\">\n"
              "        <Visibility>Expert</Visibility>\n"
              "        <Address>0x0</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RO</AccessMode>\n"
              "        <pPort>EnumEntry_Color_BluePort</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n"
              "    <Port Name = \"EnumEntry_Color_BluePort\">\n"
              "        <ToolTip>Port node giving access to Blue parameter.</ToolTip>\n"
              "    </Port>\n");
    EXPECT_EQ(blockSize(port), 8);
}

TEST(EnumEntryNodeMapPort, WithoutAParameterDescribesNothing) {
    CEnumEntryNodeMapPort port(nullptr, "Color", 0);
    EXPECT_EQ(generateEntry(port), "");
    EXPECT_EQ(generate(port), "");
    EXPECT_EQ(readWord(port, 0), 0);
}

}  // namespace AnythingToNodeMapAdapter::Test
