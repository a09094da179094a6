#include "anythingtonodemapadapter/enumnodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "anythingtonodemapadapter/enumentrynodemapport.h"
#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CEnumEntryNodeMapPort;
using Detail::CEnumNodeMapPort;
using testing::HasSubstr;
using testing::Not;

TEST(EnumNodeMapPort, EachRegisterLiesAtItsOffset) {
    TestOwner owner;
    CEnumNodeMapPort port(makeFormat(owner, {true, false, true, true}), 0);
    EXPECT_EQ(readWord(port, 0), 0x82180044);
    EXPECT_EQ(readWord(port, 8), 1);
    EXPECT_EQ(readWord(port, 16), 1);
    EXPECT_EQ(readWord(port, 24), untouched);
    EXPECT_EQ(readBytes(port, 0, 4), std::string(4, '\0'));
}

TEST(EnumNodeMapPort, WriteOfTheValueReachesTheSetterSilently) {
    TestOwner owner;
    const auto parameter = makeColor(owner);
    CEnumNodeMapPort port(parameter, 0);
    const auto connector = connectCounting(port);
    writeWord(port, 0, 7);
    EXPECT_EQ(owner.color, Blue);
    writeWord(port, 8, 0);
    EXPECT_EQ(owner.setterCalls, 1);
    EXPECT_EQ(connector->invalidations, 0);
    parameter->setValue(0, false);
    EXPECT_EQ(connector->invalidations, 1);
}

TEST(EnumNodeMapPort, AWordThatIsNoEnumerationIsRefused) {
    TestOwner owner;
    CEnumNodeMapPort port(makeColor(owner), 0);
    EXPECT_THROW(writeWord(port, 0, (std::int64_t{1} << 32) + 7), GenICam::OutOfRangeException);
    EXPECT_EQ(owner.setterCalls, 0);
}

TEST(EnumNodeMapPort, DescribesItsEntriesInTheOrderOfAdding) {
    TestOwner owner;
    CEnumNodeMapPort port(makeColor(owner, {true, true, false, false}), -1);
    port.addEntry(std::make_shared<CEnumEntryNodeMapPort>(
        makeColorEntry(Red, "Red", {true, true, false, false}), "Color", 0));
    port.addEntry(
        std::make_shared<CEnumEntryNodeMapPort>(makeColorEntry(Blue, "Blue"), "Color", 0));
    port.addDependency("Selected", "Speed");
    port.addDependency("Invalidator", "Trigger");
    EXPECT_EQ(generate(port),
              "    <Enumeration Name=\"Color\" MergePriority=\"-1\">\n"
              "        <ToolTip>Tip.</ToolTip>\n"
              "        <Description>Text.</Description>\n"
              "        <DisplayName>Colour</DisplayName>\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Streamable>Yes</Streamable>\n"
              "        <EnumEntry Name=\"Red\" > \n"
              "            <ToolTip>Tip.</ToolTip>\n"
              "            <Description>Text.</Description>\n"
              "            <DisplayName>Red Colour</DisplayName>\n"
              "            <Value>0</Value>\n"
              "        </EnumEntry>\n"
              "        <EnumEntry Name=\"Blue\" > \n"
              "            <ToolTip>Tip.</ToolTip>\n"
              "            <Description>Text.</Description>\n"
              "            <DisplayName>Blue Colour</DisplayName>\n"
              "            <pIsAvailable>EnumEntry_Color_BlueIsAvailable</pIsAvailable>\n"
              "            <Value>7</Value>\n"
              "        </EnumEntry>\n"
              "        <pValue>ColorIntValue</pValue>\n"
              "        <pSelected>Speed</pSelected>\n"
              "    </Enumeration>\n"
              "    <IntReg Name=\"ColorIntValue\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x0</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RW</AccessMode>\n"
              "        <pPort>ColorPort</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <pInvalidator>Trigger</pInvalidator>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n"
              "    <Port Name = \"ColorPort\">\n"
              "        <ToolTip>Port node giving access to Color parameter.</ToolTip>\n"
              "    </Port>\n");
    EXPECT_EQ(blockSize(port), 24);
}

TEST(EnumNodeMapPort, WithoutEntriesStillHasItsValue) {
    TestOwner owner;
    CEnumNodeMapPort port(makeColor(owner), 0);
    const std::string text = generate(port);
    EXPECT_THAT(text, Not(HasSubstr("EnumEntry")));
    EXPECT_THAT(text, HasSubstr("        <Streamable>Yes</Streamable>\n"
                                "        <pValue>ColorIntValue</pValue>\n"
                                "    </Enumeration>\n"));
}

TEST(EnumNodeMapPort, StateRegistersFollowTheValue) {
    TestOwner owner;
    CEnumNodeMapPort port(makeColor(owner), 0);
    const std::string text = generate(port);
    EXPECT_THAT(text, HasSubstr("    <IntReg Name=\"ColorIsAvailable\">\n"
                                "        <Visibility>Beginner</Visibility>\n"
                                "        <Address>0x8</Address>\n"));
    EXPECT_THAT(text, HasSubstr("    <IntReg Name=\"ColorIsLocked\">\n"
                                "        <Visibility>Beginner</Visibility>\n"
                                "        <Address>0x10</Address>\n"));
}

}  // namespace AnythingToNodeMapAdapter::Test
