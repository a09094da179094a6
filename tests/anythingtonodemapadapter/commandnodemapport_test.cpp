#include "anythingtonodemapadapter/commandnodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CCommandNodeMapPort;
using testing::HasSubstr;
using testing::Not;

TEST(CommandNodeMapPort, ZeroDoesNotExecuteAndAnyOtherWordDoes) {
    TestOwner owner;
    CCommandNodeMapPort port(makeReset(owner, true), 0);
    writeWord(port, 0, 0);
    EXPECT_EQ(owner.resets, 0);
    writeWord(port, 0, 1);
    writeWord(port, 0, -1);
    writeWord(port, 0, std::int64_t{1} << 63);
    EXPECT_EQ(owner.resets, 3);
    writeWord(port, 8, 1);
    EXPECT_EQ(owner.resets, 3);
}

// Notes with which `silent` it is executed.
class NotingCommand final : public BasicDataParameterPort<ICommandParameterPort> {
public:
    NotingCommand() : BasicDataParameterPort({"Note", "", "", ""}) {
        setFlags(true, true, false, false);
    }
    [[nodiscard]] std::uint64_t getSize() const override { return 0; }
    [[nodiscard]] bool isWriteOnly() const override { return true; }
    [[nodiscard]] bool isExecuting() const override { return false; }
    void execute(bool silent) override { silences.push_back(silent); }

    std::vector<bool> silences;
};

TEST(CommandNodeMapPort, ExecutesSilently) {
    const auto parameter = std::make_shared<NotingCommand>();
    CCommandNodeMapPort port(parameter, 0);
    const auto connector = connectCounting(port);
    writeWord(port, 0, 1);
    EXPECT_THAT(parameter->silences, testing::ElementsAre(true));
    EXPECT_EQ(connector->invalidations, 0);
}

TEST(CommandNodeMapPort, EachRegisterLiesAtItsOffset) {
    TestOwner owner;
    CCommandNodeMapPort port(makeReset(owner, false, {true, false, true, true}), 0);
    EXPECT_EQ(readWord(port, 0), 0);
    owner.executing = true;
    EXPECT_EQ(readWord(port, 0), 1);
    EXPECT_EQ(readWord(port, 8), 1);
    EXPECT_EQ(readWord(port, 16), 1);
    EXPECT_EQ(readWord(port, 24), untouched);
}

TEST(CommandNodeMapPort, WriteOnlyCommandHasNoLockRegister) {
    TestOwner owner;
    CCommandNodeMapPort port(makeReset(owner, true), 0);
    port.addDependency("IsLocked", "Busy");
    port.addDependency("Invalidator", "Trigger");
    EXPECT_EQ(generate(port),
              "    <Command Name=\"Reset\">\n"
              "        <ToolTip>Tip.</ToolTip>\n"
              "        <Description>Text.</Description>\n"
              "        <DisplayName>Reset It</DisplayName>\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <pIsAvailable>ResetIsAvailable</pIsAvailable>\n"
              "        <pIsLocked>Busy</pIsLocked>\n"
              "        <pValue>ResetValue</pValue>\n"
              "        <CommandValue>1</CommandValue>\n"
              "    </Command>\n"
              "    <IntReg Name=\"ResetValue\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x0</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>WO</AccessMode>\n"
              "        <pPort>ResetPort</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <pInvalidator>Trigger</pInvalidator>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n"
              "    <IntReg Name=\"ResetIsAvailable\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x8</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RO</AccessMode>\n"
              "        <pPort>ResetPort</pPort>\n"
              "        <Cachable>NoCache</Cachable>\n"
              "        <Sign>Unsigned</Sign>\n"
              "        <Endianess>LittleEndian</Endianess>\n"
              "    </IntReg>\n"
              "    <Port Name = \"ResetPort\">\n"
              "        <ToolTip>Port node giving access to Reset parameter.</ToolTip>\n"
              "    </Port>\n");
    EXPECT_EQ(blockSize(port), 24);
}

TEST(CommandNodeMapPort, ReadableCommandShowsItsLock) {
    TestOwner owner;
    CCommandNodeMapPort port(makeReset(owner, false), 0);
    const std::string text = generate(port);
    EXPECT_THAT(text, HasSubstr("        <pIsLocked>ResetIsLocked</pIsLocked>\n"));
    EXPECT_THAT(text, HasSubstr("    <IntReg Name=\"ResetIsLocked\">\n"
                                "        <Visibility>Beginner</Visibility>\n"
                                "        <Address>0x10</Address>\n"));
    EXPECT_THAT(text, HasSubstr("<AccessMode>RW</AccessMode>"));
    EXPECT_THAT(text, Not(HasSubstr("Streamable")));
}

TEST(CommandNodeMapPort, WritabilityHasNoSayInTheAccessMode) {
    TestOwner owner;
    CCommandNodeMapPort readable(makeReset(owner, false, {true, false, false, false}), 0);
    EXPECT_THAT(generate(readable), HasSubstr("<AccessMode>RW</AccessMode>"));
    CCommandNodeMapPort writeOnly(makeReset(owner, true, {true, false, false, false}), 0);
    EXPECT_THAT(generate(writeOnly), HasSubstr("<AccessMode>WO</AccessMode>"));
}

}  // namespace AnythingToNodeMapAdapter::Test
