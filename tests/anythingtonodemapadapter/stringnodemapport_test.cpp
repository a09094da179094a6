#include "anythingtonodemapadapter/stringnodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CStringNodeMapPort;
using testing::HasSubstr;

TEST(StringNodeMapPort, ReadsTheTextInAnyLengthUpToItsMaximum) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 16), 0);
    EXPECT_EQ(readBytes(port, 0, 16), std::string("images") + std::string(10, '\0'));
    EXPECT_EQ(readBytes(port, 0, 3), "ima");
    EXPECT_EQ(readBytes(port, 0, 8), std::string("images\0\0", 8));
    EXPECT_EQ(readBytes(port, 0, 17), std::string(17, '\0'));
}

TEST(StringNodeMapPort, StateRegistersFollowTheText) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {true, false, true, true}, 16), 0);
    EXPECT_EQ(readWord(port, 16), 1);
    EXPECT_EQ(readWord(port, 24), 1);
}

TEST(StringNodeMapPort, AnyOtherReadYieldsZeros) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 16), 0);
    EXPECT_EQ(readWord(port, 32), 0);
    EXPECT_EQ(readWord(port, 4), 0);
    EXPECT_EQ(readBytes(port, 16, 4), std::string(4, '\0'));
    CStringNodeMapPort empty(nullptr, 0);
    EXPECT_EQ(readWord(empty, 0), 0);
}

TEST(StringNodeMapPort, TerminatedTextIsWrittenUpToItsZero) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 16), 0);
    port.Write("new\0old", 0, 7);
    EXPECT_EQ(owner.path, "new");
}

TEST(StringNodeMapPort, WriteOfTheValueReachesTheSetterSilently) {
    TestOwner owner;
    const auto parameter = makePath(owner, {}, 4);
    CStringNodeMapPort port(parameter, 0);
    const auto connector = connectCounting(port);
    port.Write("ab\0", 0, 4);
    EXPECT_EQ(owner.path, "ab");
    port.Write("abcd", 0, 4);
    EXPECT_EQ(owner.path, "abcd");
    EXPECT_EQ(connector->invalidations, 0);
    parameter->writeValue("e", false);
    EXPECT_EQ(connector->invalidations, 1);
}

TEST(StringNodeMapPort, TextThatFillsTheRegisterIsTerminated) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 4), 0);
    const char bytes[] = {'a', 'b', 'c', 'd', 'e'};
    port.Write(bytes, 0, 4);
    EXPECT_EQ(owner.path, "abcd");
}

TEST(StringNodeMapPort, LongerTextIsIgnored) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 4), 0);
    port.Write("abcde", 0, 5);
    port.Write("ab", 4, 2);
    EXPECT_EQ(owner.setterCalls, 0);
    EXPECT_EQ(owner.path, "images");
}

TEST(StringNodeMapPort, EmptyTextIsWritten) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {}, 4), 0);
    port.Write("\0\0\0", 0, 4);
    EXPECT_EQ(owner.path, "");
}

TEST(StringNodeMapPort, DescribesTextRegisterThenStateRegisters) {
    TestOwner owner;
    CStringNodeMapPort port(makePath(owner, {true, true, true, false}, 1024), 0);
    port.addDependency("Invalidator", "Trigger");
    EXPECT_EQ(generate(port, "All", "", 8),
              "    <String Name=\"Path\">\n"
              "        <ToolTip>Tip.</ToolTip>\n"
              "        <Description>Text.</Description>\n"
              "        <DisplayName>Path</DisplayName>\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <pIsAvailable>PathIsAvailable</pIsAvailable>\n"
              "        <Streamable>Yes</Streamable>\n"
              "        <pValue>PathValue</pValue>\n"
              "    </String>\n"
              "    <StringReg Name=\"PathValue\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x8</Address>\n"
              "        <Length>1024</Length>\n"
              "        <AccessMode>RW</AccessMode>\n"
              "        <pPort>All</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <pInvalidator>Trigger</pInvalidator>\n"
              "    </StringReg>\n"
              "    <IntReg Name=\"PathIsAvailable\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x408</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RO</AccessMode>\n"
              "        <pPort>All</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n");
    EXPECT_EQ(blockSize(port), 1040);
}

TEST(StringNodeMapPort, TextsAreWrittenAsTheyStand) {
    const auto status = std::make_shared<StatusPort>("", 8, "Status", "A & B", "<tip>", "\"q\"",
                                                     "Beginner", true, false, false, false);
    CStringNodeMapPort port(status, 0);
    EXPECT_THAT(generate(port), HasSubstr("        <ToolTip><tip></ToolTip>\n"
                                          "        <Description>\"q\"</Description>\n"
                                          "        <DisplayName>A & B</DisplayName>\n"));
    EXPECT_THAT(generate(port), HasSubstr("<AccessMode>RO</AccessMode>"));
}

}  // namespace AnythingToNodeMapAdapter::Test
