#include "anythingtonodemapadapter/integernodemapport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nodemapporttools.h"
#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using Detail::CIntegerNodeMapPort;
using testing::HasSubstr;
using testing::Not;

TEST(IntegerNodeMapPort, EachRegisterLiesAtItsOffset) {
    TestOwner owner;
    const auto parameter = makeOffset(owner, {true, false, true, true});
    CIntegerNodeMapPort port(parameter, 0);
    EXPECT_EQ(readWord(port, 0), -5);
    EXPECT_EQ(readWord(port, 8), 4294967295);
    EXPECT_EQ(readWord(port, 16), -100);
    EXPECT_EQ(readWord(port, 24), 5);
    EXPECT_EQ(readWord(port, 32), 1);
    EXPECT_EQ(readWord(port, 40), 1);
    parameter->setAvailable(false);
    parameter->setWritable(true);
    EXPECT_EQ(readWord(port, 32), 0);
    EXPECT_EQ(readWord(port, 40), 0);
}

TEST(IntegerNodeMapPort, ShortReadYieldsZerosAlsoAtTheValue) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    EXPECT_EQ(readBytes(port, 0, 4), std::string(4, '\0'));
    EXPECT_EQ(readBytes(port, 0, 16), std::string(16, '\0'));
    EXPECT_EQ(readBytes(port, 0, 0), "");
}

TEST(IntegerNodeMapPort, ReadBehindTheBlockLeavesTheBuffer) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    EXPECT_EQ(readWord(port, 48), untouched);
    EXPECT_EQ(readWord(port, 4), untouched);
    EXPECT_EQ(readWord(port, -8), untouched);
}

TEST(IntegerNodeMapPort, WriteOfTheValueReachesTheSetterSilently) {
    TestOwner owner;
    const auto parameter = makeSpeed(owner);
    CIntegerNodeMapPort port(parameter, 0);
    const auto connector = connectCounting(port);
    writeWord(port, 0, 30);
    EXPECT_EQ(owner.speed, 30U);
    EXPECT_EQ(connector->invalidations, 0);
    parameter->setValue(31, false);
    EXPECT_EQ(connector->invalidations, 1);
}

TEST(IntegerNodeMapPort, WriteElsewhereOrOfAnotherLengthCallsNoSetter) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    for (const std::int64_t address : {8, 16, 24, 32, 40, 48, -8}) {
        writeWord(port, address, 30);
    }
    const std::int64_t word = 30;
    port.Write(&word, 0, 4);
    EXPECT_EQ(owner.setterCalls, 0);
    EXPECT_EQ(owner.speed, 10U);
}

TEST(IntegerNodeMapPort, ExceptionOfTheSetterPassesThroughWrite) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    try {
        writeWord(port, 0, 0);
        FAIL() << "no exception";
    } catch (const GenICam::RuntimeException& e) {
        EXPECT_STREQ(e.GetDescription(), "Speed must be greater than 0.");
    }
}

TEST(IntegerNodeMapPort, WithoutAParameterReadsZerosAndDescribesNothing) {
    CIntegerNodeMapPort port(nullptr, 0);
    EXPECT_EQ(readWord(port, 0), 0);
    writeWord(port, 0, 30);
    EXPECT_STREQ(port.getName(), "");
    EXPECT_EQ(generate(port), "");
    EXPECT_EQ(blockSize(port), 0);
}

TEST(IntegerNodeMapPort, ObservesItsParameterForAsLongAsItLives) {
    TestOwner owner;
    CountingObserver observer;
    const auto parameter = makeSpeed(owner);
    parameter->setObserver(&observer);
    {
        const CIntegerNodeMapPort port(parameter, 0);
        parameter->setValue(20, false);
    }
    parameter->setValue(30, false);
    EXPECT_TRUE(observer.names.empty());
    EXPECT_EQ(parameter.use_count(), 1);
}

// The frame rate of a replay node, line by line.
class Replay {
public:
    std::uint64_t getFramesPerSecond() const { return framesPerSecond; }
    void setFramesPerSecond(std::uint64_t value) { framesPerSecond = value; }

    std::uint64_t framesPerSecond = 1;
};

TEST(IntegerNodeMapPort, DescribesAParameterWithAllRegistersInItsOwnPort) {
    Replay replay;
    const gcstring text = "Number of images to be output per second while the recipe is running.";
    const auto parameter = std::make_shared<IntegerParameterPortRelay<
        std::uint64_t, Replay, &Replay::getFramesPerSecond, &Replay::setFramesPerSecond>>(
        replay, "FramesPerSecond", "Frames Per Second", text, text, "Beginner", true, true, true,
        true, 1, 500, 1, "PureNumber");
    CIntegerNodeMapPort port(parameter, 0);
    const std::string registerTail =
        "        <pPort>FramesPerSecondPort</pPort>\n"
        "        <Cachable>NoCache</Cachable>\n"
        "        <Sign>Unsigned</Sign>\n"
        "        <Endianess>LittleEndian</Endianess>\n"
        "    </IntReg>\n";
    const auto readOnlyRegister = [&registerTail](const char* name, const char* address) {
        return std::string("    <IntReg Name=\"FramesPerSecond") + name +
               "\">\n"
               "        <Visibility>Beginner</Visibility>\n"
               "        <Address>" +
               address +
               "</Address>\n"
               "        <Length>8</Length>\n"
               "        <AccessMode>RO</AccessMode>\n" +
               registerTail;
    };
    EXPECT_EQ(generate(port),
              "    <Integer Name=\"FramesPerSecond\">\n"
              "        <ToolTip>Number of images to be output per second while the recipe is "
              "running.</ToolTip>\n"
              "        <Description>Number of images to be output per second while the recipe is "
              "running.</Description>\n"
              "        <DisplayName>Frames Per Second</DisplayName>\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <pIsAvailable>FramesPerSecondIsAvailable</pIsAvailable>\n"
              "        <pIsLocked>FramesPerSecondIsLocked</pIsLocked>\n"
              "        <Streamable>Yes</Streamable>\n"
              "        <pValue>FramesPerSecondValue</pValue>\n"
              "        <pMin>FramesPerSecondMin</pMin>\n"
              "        <pMax>FramesPerSecondMax</pMax>\n"
              "        <pInc>FramesPerSecondInc</pInc>\n"
              "        <Representation>PureNumber</Representation>\n"
              "    </Integer>\n"
              "    <IntReg Name=\"FramesPerSecondValue\">\n"
              "        <Visibility>Beginner</Visibility>\n"
              "        <Address>0x0</Address>\n"
              "        <Length>8</Length>\n"
              "        <AccessMode>RW</AccessMode>\n" +
                  registerTail + readOnlyRegister("Max", "0x8") + readOnlyRegister("Min", "0x10") +
                  readOnlyRegister("Inc", "0x18") + readOnlyRegister("IsAvailable", "0x20") +
                  readOnlyRegister("IsLocked", "0x28") +
                  "    <Port Name = \"FramesPerSecondPort\">\n"
                  "        <ToolTip>Port node giving access to FramesPerSecond parameter."
                  "</ToolTip>\n"
                  "    </Port>\n");
}

TEST(IntegerNodeMapPort, WithoutTextsHasNoTextLinesButItsVisibility) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeOffset(owner), 0);
    EXPECT_THAT(generate(port), testing::StartsWith("    <Integer Name=\"Offset\">\n"
                                                    "        <Visibility>Guru</Visibility>\n"));
}

TEST(IntegerNodeMapPort, UnitStandsBeforeTheRepresentationAndSignInEveryRegister) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeOffset(owner), 0);
    const std::string text = generate(port);
    EXPECT_THAT(text, HasSubstr("        <Unit>mm</Unit>\n"
                                "        <Representation>Linear</Representation>\n"));
    EXPECT_THAT(text, HasSubstr("<Sign>Signed</Sign>"));
    EXPECT_THAT(text, Not(HasSubstr("Unsigned")));
}

TEST(IntegerNodeMapPort, WithoutStateRegistersKeepsItsFullBlock) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner, {true, true, false, false}), 0);
    const std::string text = generate(port);
    EXPECT_THAT(text, Not(HasSubstr("IsAvailable")));
    EXPECT_THAT(text, Not(HasSubstr("IsLocked")));
    EXPECT_EQ(blockSize(port), 48);
}

TEST(IntegerNodeMapPort, DependenciesStandInWhereThereAreNoStateRegisters) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner, {true, true, false, false}), 0);
    port.addDependency("IsAvailable", "B");
    port.addDependency("IsAvailable", "A");
    port.addDependency("IsLocked", "C");
    EXPECT_THAT(generate(port), HasSubstr("        <pIsAvailable>B</pIsAvailable>\n"
                                          "        <pIsAvailable>A</pIsAvailable>\n"
                                          "        <pIsLocked>C</pIsLocked>\n"));
}

TEST(IntegerNodeMapPort, StateRegistersOutweighDependencies) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    port.addDependency("IsAvailable", "B");
    port.addDependency("IsLocked", "C");
    const std::string text = generate(port);
    EXPECT_THAT(text, Not(HasSubstr("<pIsAvailable>B<")));
    EXPECT_THAT(text, Not(HasSubstr("<pIsLocked>C<")));
}

TEST(IntegerNodeMapPort, SelectedEndTheNodeAndInvalidatorsStandInTheValueRegisterAlone) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner, {true, true, false, false}), 0);
    port.addDependency("Selected", "Two");
    port.addDependency("Selected", "One");
    port.addDependency("Selected", "Two");
    port.addDependency("Invalidator", "Trigger");
    const std::string text = generate(port);
    EXPECT_THAT(text, HasSubstr("        <Representation>PureNumber</Representation>\n"
                                "        <pSelected>Two</pSelected>\n"
                                "        <pSelected>One</pSelected>\n"
                                "        <pSelected>Two</pSelected>\n"
                                "    </Integer>\n"));
    const std::string invalidator =
        "        <Cachable>NoCache</Cachable>\n"
        "        <pInvalidator>Trigger</pInvalidator>\n"
        "        <Sign>Unsigned</Sign>\n";
    EXPECT_THAT(text, HasSubstr(invalidator));
    EXPECT_EQ(text.find("pInvalidator>T"), text.rfind("pInvalidator>T"));
}

TEST(IntegerNodeMapPort, IsReadOnlyOnlyIfItCanNeverBeWritten) {
    TestOwner owner;
    CIntegerNodeMapPort never(makeSpeed(owner, {true, false, true, false}), 0);
    EXPECT_THAT(generate(never), Not(HasSubstr("<AccessMode>RW<")));
    CIntegerNodeMapPort locked(makeSpeed(owner, {true, false, true, true}), 0);
    EXPECT_THAT(generate(locked), HasSubstr("<AccessMode>RW<"));
}

TEST(IntegerNodeMapPort, OnlyTheSignOfTheMergePriorityCounts) {
    TestOwner owner;
    CIntegerNodeMapPort above(makeSpeed(owner), 5);
    EXPECT_THAT(generate(above), HasSubstr("<Integer Name=\"Speed\" MergePriority=\"+1\">\n"));
    CIntegerNodeMapPort below(makeSpeed(owner), -3);
    EXPECT_THAT(generate(below), HasSubstr("<Integer Name=\"Speed\" MergePriority=\"-1\">\n"));
}

TEST(IntegerNodeMapPort, ThePrefixReachesAllButTheNodeItself) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    const std::string text = generate(port, "", "My");
    EXPECT_THAT(text, HasSubstr("<Integer Name=\"Speed\">"));
    EXPECT_THAT(text, HasSubstr("<pValue>MySpeedValue</pValue>"));
    EXPECT_THAT(text, HasSubstr("<IntReg Name=\"MySpeedIsLocked\">"));
    EXPECT_THAT(text, HasSubstr("<pIsAvailable>MySpeedIsAvailable</pIsAvailable>"));
    EXPECT_THAT(text, HasSubstr("<Port Name = \"MySpeedPort\">"));
    EXPECT_THAT(text, HasSubstr("access to Speed parameter."));
}

TEST(IntegerNodeMapPort, WithASharedPortTheAddressesFollowTheBlocksStart) {
    TestOwner owner;
    CIntegerNodeMapPort port(makeSpeed(owner), 0);
    const std::string text = generate(port, "All", "", 0xABCDEF0);
    EXPECT_THAT(text, HasSubstr("<Address>0xabcdef0</Address>"));
    EXPECT_THAT(text, HasSubstr("<Address>0xabcdf18</Address>"));
    EXPECT_THAT(text, HasSubstr("<pPort>All</pPort>"));
    EXPECT_THAT(text, Not(HasSubstr("<Port ")));
}

}  // namespace AnythingToNodeMapAdapter::Test
