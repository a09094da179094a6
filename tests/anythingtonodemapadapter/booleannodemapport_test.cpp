#include "anythingtonodemapadapter/booleannodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CBooleanNodeMapPort;

TEST(BooleanNodeMapPort, EachRegisterLiesAtItsOffset) {
    TestOwner owner;
    const auto parameter = makeEnabled(owner, {false, false, true, true});
    CBooleanNodeMapPort port(parameter, 0);
    EXPECT_EQ(readWord(port, 0), 1);
    EXPECT_EQ(readWord(port, 8), 0);
    EXPECT_EQ(readWord(port, 16), 1);
    owner.enabled = false;
    parameter->setAvailable(true);
    parameter->setWritable(true);
    EXPECT_EQ(readWord(port, 0), 0);
    EXPECT_EQ(readWord(port, 8), 1);
    EXPECT_EQ(readWord(port, 16), 0);
    EXPECT_EQ(readWord(port, 24), untouched);
    EXPECT_EQ(readBytes(port, 0, 1), std::string(1, '\0'));
}

TEST(BooleanNodeMapPort, WriteOfTheValueReachesTheSetterSilently) {
    TestOwner owner;
    const auto parameter = makeEnabled(owner);
    CBooleanNodeMapPort port(parameter, 0);
    const auto connector = connectCounting(port);
    writeWord(port, 0, 0);
    EXPECT_FALSE(owner.enabled);
    EXPECT_EQ(connector->invalidations, 0);
    parameter->setValue(true, false);
    EXPECT_EQ(connector->invalidations, 1);
}

TEST(BooleanNodeMapPort, AnyWordButZeroWritesTrue) {
    TestOwner owner;
    CBooleanNodeMapPort port(makeEnabled(owner), 0);
    writeWord(port, 0, 0);
    EXPECT_FALSE(owner.enabled);
    writeWord(port, 0, std::int64_t{1} << 40);
    EXPECT_TRUE(owner.enabled);
    writeWord(port, 8, 0);
    writeWord(port, 16, 0);
    EXPECT_EQ(owner.setterCalls, 2);
}

TEST(BooleanNodeMapPort, DescribesItselfWithoutInvalidatorsInASharedPort) {
    TestOwner owner;
    CBooleanNodeMapPort port(makeEnabled(owner, {true, true, true, false}), 0);
    port.addDependency("Invalidator", "Trigger");
    EXPECT_EQ(generate(port, "All", "", 0x30),
              "    <Boolean Name=\"Enabled\">\n"
              "        <ToolTip>Tip.</ToolTip>\n"
              "        <Description>Text.</Description>\n"
              "        <DisplayName>On Or Off</DisplayName>\n"
              "        <Visibility>Expert</Visibility>\n"
              "        <pIsAvailable>EnabledIsAvailable</pIsAvailable>\n"
              "        <Streamable>Yes</Streamable>\n"
              "        <pValue>EnabledValue</pValue>\n"
              "    </Boolean>\n"
              "    <IntReg Name=\"EnabledValue\">\n"
              "        <Visibility>Expert</Visibility>\n"
              "        <Address>0x30</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RW</AccessMode>\n"
              "        <pPort>All</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n"
              "    <IntReg Name=\"EnabledIsAvailable\">\n"
              "        <Visibility>Expert</Visibility>\n"
              "        <Address>0x38</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RO</AccessMode>\n"
              "        <pPort>All</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n");
    EXPECT_EQ(blockSize(port), 24);
}

TEST(BooleanNodeMapPort, WithoutAParameterReadsZerosAndDescribesNothing) {
    CBooleanNodeMapPort port(nullptr, 0);
    EXPECT_EQ(readWord(port, 16), 0);
    EXPECT_EQ(generate(port), "");
    EXPECT_EQ(blockSize(port), 0);
}

}  // namespace AnythingToNodeMapAdapter::Test
