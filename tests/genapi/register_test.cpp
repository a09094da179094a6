// Addresses, lengths, byte order and sign of registers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// A register with nothing but what the test gives it.
std::string reg(const std::string& name, const std::string& children,
                const std::string& element = "IntReg") {
    return "<" + element + " Name=\"" + name +
           "\"><pPort>P</pPort><AccessMode>RW</AccessMode><Cachable>NoCache</Cachable>" + children +
           "</" + element + ">";
}

std::string variable(const std::string& name, std::int64_t value) {
    return "<Integer Name=\"" + name + "\"><Value>" + std::to_string(value) + "</Value></Integer>";
}

std::int64_t addressOf(const TestMap& t, const char* name) {
    return CRegisterPtr(t.node(name))->GetAddress();
}

}  // namespace

TEST(Register, Rule13AnAddressIsTheSumOfAllItsTerms) {
    TestMap t(variable("X", 0x100) + variable("Y", 0x20) + variable("I", 3) +
              reg("A",
                  "<Address>0x1000</Address><Address>4</Address><pAddress>X</pAddress>"
                  "<pAddress>Y</pAddress><pIndex Offset=\"0x10\">I</pIndex>"
                  "<Length>4</Length>"));
    EXPECT_EQ(addressOf(t, "A"), 0x1000 + 4 + 0x100 + 0x20 + 0x30);
    (void)t.integer("A")->GetValue();
    EXPECT_THAT(t.port.accesses, ElementsAre(Access{'R', 0x1154, 4}));
}

TEST(Register, Rule14AnIndexIsTimesOffsetOrNodeOrLength) {
    TestMap t(variable("I", 3) + variable("W", 7) +
              reg("A", "<pIndex Offset=\"16\">I</pIndex><Length>4</Length>") +
              reg("B", "<pIndex pOffset=\"W\">I</pIndex><Length>4</Length>") +
              reg("C", "<pIndex>I</pIndex><Length>4</Length>") +
              reg("D", "<pIndex>I</pIndex><pIndex Offset=\"100\">I</pIndex><Length>2</Length>"));
    EXPECT_EQ(addressOf(t, "A"), 48);
    EXPECT_EQ(addressOf(t, "B"), 21);
    EXPECT_EQ(addressOf(t, "C"), 12);
    EXPECT_EQ(addressOf(t, "D"), 306);
}

TEST(Register, Rule15AddressesKeepAll64Bits) {
    TestMap t(
        variable("Base", INT64_MIN + 1) +
        reg("A", "<Address>0xF000000000000001</Address><Length>4</Length>") +
        reg("B", "<pAddress>Base</pAddress><Address>0x20000000000001</Address><Length>4</Length>"));
    EXPECT_EQ(addressOf(t, "A"), static_cast<std::int64_t>(0xF000000000000001));
    EXPECT_EQ(addressOf(t, "B"), INT64_MIN + 1 + 0x20000000000001);
    t.integer("A")->SetValue(7);
    EXPECT_THAT(t.port.accesses,
                ElementsAre(Access{'W', static_cast<std::int64_t>(0xF000000000000001), 4}));
}

TEST(Register, Rule16LengthMayComeFromANodeAndIsChecked) {
    TestMap t(variable("L", 2) + reg("A", "<Address>0</Address><pLength>L</pLength>") +
              reg("S", "<Address>0</Address><pLength>L</pLength>", "StringReg"));
    t.port.poke(0, 0x11223344, 4);
    EXPECT_EQ(t.integer("A")->GetValue(), 0x3344);
    t.integer("L")->SetValue(9);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { (void)t.integer("A")->GetValue(); }),
              "Node 'A' has the impossible length of 9 bytes, read from 'L'.");
    t.integer("L")->SetValue(0x4000'0000'0000);
    EXPECT_THROW((void)t.string("S")->GetValue(), GenICam::OutOfRangeException);
    t.integer("L")->SetValue(-1);
    EXPECT_THROW((void)t.string("S")->GetValue(), GenICam::OutOfRangeException);
}

TEST(Register, Rule16AnImpossibleLengthCostsTheNode) {
    TestMap t(reg("A", "<Address>0</Address><Length>9</Length>") +
              reg("B", "<Address>0</Address><Length>0</Length>") +
              reg("F", "<Address>0</Address><Length>3</Length>", "FloatReg") +
              reg("N", "<Address>0</Address>"));
    for (const char* name : {"A", "B", "F", "N"}) {
        EXPECT_EQ(t.mode(name), NA) << name;
        EXPECT_NE(t.reasons(name), "") << name;
    }
}

TEST(Register, Rule19AnUnconnectedPortMakesItsRegistersNotAvailable) {
    TestMap t(std::string(Reg{"A"}) + "<Integer Name=\"I\"><pValue>A</pValue></Integer>");
    EXPECT_EQ(t.mode("I"), RW);
    EXPECT_TRUE(t.map->Connect(nullptr, "P"));
    EXPECT_EQ(t.mode("I"), NA);
    EXPECT_EQ(errorOf<GenICam::AccessException>([&] { (void)t.integer("I")->GetValue(); }),
              "Node 'I' is not readable, its access mode is NA: the port 'P' is not connected.");
}

TEST(Register, Rule20SwapEndianessSwapsEveryQuadlet) {
    TestMap t(
        "<Port Name=\"Q\"><SwapEndianess>Yes</SwapEndianess></Port>"
        "<IntReg Name=\"A\"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode>"
        "<pPort>Q</pPort></IntReg>");
    t.map->Connect(&t.port, "Q");
    t.integer("A")->SetValue(0x0102030405060708);
    EXPECT_EQ(t.port.peek(0), 0x0403020108070605);
    t.node("A")->InvalidateNode();
    EXPECT_EQ(t.integer("A")->GetValue(), 0x0102030405060708);
}

TEST(Register, Rule21UnsignedIsTheDefaultAndTheTopBitIsPositive) {
    TestMap t(reg("U", "<Address>0</Address><Length>4</Length>") +
              reg("S", "<Address>0</Address><Length>4</Length><Sign>Signed</Sign>") +
              reg("U8", "<Address>0</Address><Length>8</Length>"));
    t.port.poke(0, -1);
    EXPECT_EQ(t.integer("U")->GetValue(), 0xFFFFFFFF);
    EXPECT_EQ(t.integer("U")->GetMax(), 0xFFFFFFFF);
    EXPECT_EQ(t.integer("U")->GetMin(), 0);
    EXPECT_EQ(t.integer("S")->GetValue(), -1);
    EXPECT_EQ(t.integer("S")->GetMin(), INT32_MIN);
    EXPECT_EQ(t.integer("S")->GetMax(), INT32_MAX);
    EXPECT_EQ(t.integer("U8")->GetMax(), INT64_MAX);
}

TEST(Register, Rule83EightUnsignedBytesOfAllOnesReadAsMinusOneAndAreNotWritable) {
    TestMap t(reg("A", "<Address>0</Address><Length>8</Length>"));
    t.port.poke(0, -1);
    EXPECT_EQ(t.integer("A")->GetValue(), -1);
    EXPECT_THROW(t.integer("A")->SetValue(-1), GenICam::OutOfRangeException);
    EXPECT_THROW(t.integer("A")->SetValue(-1, false), GenICam::OutOfRangeException);
}

TEST(Register, ByteOrderOfEveryLength) {
    for (int length = 1; length <= 8; ++length) {
        const std::string size =
            "<Address>0</Address><Length>" + std::to_string(length) + "</Length>";
        TestMap t(reg("L", size + "<Endianess>LittleEndian</Endianess>") +
                  reg("B", size + "<Endianess>BigEndian</Endianess>"));
        const std::int64_t value =
            length == 8 ? 0x0102030405060708
                        : 0x0102030405060708 & ((std::int64_t{1} << (8 * length)) - 1);
        t.integer("L")->SetValue(value);
        EXPECT_EQ(t.port.peek(0, length), value);
        EXPECT_EQ(t.integer("L")->GetValue(), value);
        t.integer("B")->SetValue(value);
        std::uint8_t first = 0;
        t.port.memory.Read(&first, 0, 1);
        EXPECT_EQ(first, static_cast<std::uint8_t>(value >> (8 * (length - 1))));
        EXPECT_EQ(t.integer("B")->GetValue(), value);
    }
}

TEST(Register, Rule25AValueThatDoesNotFitIsAnErrorAndNeverCut) {
    TestMap t(reg("U", "<Address>0</Address><Length>2</Length>") +
              reg("S", "<Address>0</Address><Length>2</Length><Sign>Signed</Sign>") +
              "<Integer Name=\"I\"><pValue>U</pValue><Max>100000</Max></Integer>");
    EXPECT_EQ(
        errorOf<GenICam::OutOfRangeException>([&] { t.integer("U")->SetValue(65536, false); }),
        "Node 'U' can not take 65536: its range is 0 to 65535.");
    EXPECT_THROW(t.integer("S")->SetValue(32768), GenICam::OutOfRangeException);
    EXPECT_THROW(t.integer("S")->SetValue(-32769), GenICam::OutOfRangeException);
    EXPECT_THROW(t.integer("I")->SetValue(70000), GenICam::OutOfRangeException);
    EXPECT_EQ(t.port.count('W'), 0U);
    t.integer("S")->SetValue(-32768);
    EXPECT_EQ(t.integer("S")->GetValue(), -32768);
}

TEST(Register, Rule26MissingAccessModeIsReadOnlyAndMissingEndianessLittle) {
    TestMap t("<IntReg Name=\"A\"><Address>0</Address><Length>4</Length><pPort>P</pPort></IntReg>");
    t.port.poke(0, 0x01020304, 4);
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(t.integer("A")->GetValue(), 0x01020304);
    EXPECT_EQ(t.node("A")->GetCachingMode(), WriteThrough);
}

TEST(Register, Rule87OneAccessOfTheWholeLength) {
    TestMap t(reg("A", "<Address>16</Address><Length>4</Length>") +
              reg("S", "<Address>64</Address><Length>100</Length>", "StringReg"));
    (void)t.integer("A")->GetValue();
    t.integer("A")->SetValue(1);
    (void)t.string("S")->GetValue();
    t.string("S")->SetValue("x");
    EXPECT_THAT(t.port.accesses, ElementsAre(Access{'R', 16, 4}, Access{'W', 16, 4},
                                             Access{'R', 64, 100}, Access{'W', 64, 100}));
}

TEST(Register, Rule22BitNumbersFollowTheByteOrder) {
    TestMap t(reg("Le", "<Address>0</Address><Length>4</Length><LSB>4</LSB><MSB>7</MSB>",
                  "MaskedIntReg") +
              reg("Be",
                  "<Address>0</Address><Length>4</Length><LSB>31</LSB><MSB>28</MSB>"
                  "<Endianess>BigEndian</Endianess>",
                  "MaskedIntReg") +
              reg("Bit",
                  "<Address>0</Address><Length>4</Length><Bit>0</Bit>"
                  "<Endianess>BigEndian</Endianess>",
                  "MaskedIntReg") +
              reg("Turned", "<Address>0</Address><Length>4</Length><LSB>7</LSB><MSB>4</MSB>",
                  "MaskedIntReg"));
    t.port.poke(0, 0x000000A5, 4);
    EXPECT_EQ(t.integer("Le")->GetValue(), 0xA);
    EXPECT_EQ(t.integer("Turned")->GetValue(), 0xA);
    EXPECT_EQ(t.integer("Be")->GetValue(), 0x0);
    EXPECT_EQ(t.integer("Bit")->GetValue(), 1);
    t.port.poke(0, 0x0F000000, 4);
    EXPECT_EQ(t.integer("Be")->GetValue(), 0xF);
}

TEST(Register, Rule23SignedFieldsExtendFromTheirOwnTopBit) {
    TestMap t(
        reg("F",
            "<Address>0</Address><Length>4</Length><LSB>4</LSB><MSB>7</MSB><Sign>Signed</Sign>",
            "MaskedIntReg") +
        reg("B", "<Address>0</Address><Length>4</Length><Bit>31</Bit><Sign>Signed</Sign>",
            "MaskedIntReg"));
    t.port.poke(0, 0x800000F0, 4);
    EXPECT_EQ(t.integer("F")->GetValue(), -1);
    EXPECT_EQ(t.integer("F")->GetMin(), -8);
    EXPECT_EQ(t.integer("F")->GetMax(), 7);
    EXPECT_EQ(t.integer("B")->GetValue(), -1);
    EXPECT_EQ(t.integer("B")->GetMax(), 0);
    t.integer("F")->SetValue(-8);
    EXPECT_EQ(t.port.peek(0, 4), 0x80000080);
    EXPECT_THROW(t.integer("F")->SetValue(8), GenICam::OutOfRangeException);
}

TEST(Register, Rule24WritingAFieldKeepsFreshNeighbours) {
    const std::string cached =
        "<Address>0</Address><Length>4</Length><Cachable>WriteThrough</Cachable>";
    TestMap t(reg("Low", cached + "<LSB>0</LSB><MSB>7</MSB>", "MaskedIntReg") +
              reg("High", cached + "<LSB>8</LSB><MSB>15</MSB>", "MaskedIntReg") +
              reg("Whole", cached));
    t.port.poke(0, 0x11223344, 4);
    EXPECT_EQ(t.integer("High")->GetValue(), 0x33);
    t.integer("Low")->SetValue(0x99);
    t.integer("High")->SetValue(0x88);
    EXPECT_EQ(t.port.peek(0, 4), 0x11228899);
    t.integer("Whole")->SetValue(0x55555555);
    t.integer("Low")->SetValue(0);
    EXPECT_EQ(t.port.peek(0, 4), 0x55555500);
}

TEST(Register, Rule24AWriteOnlyFieldHasNoOldBits) {
    TestMap t(
        "<MaskedIntReg Name=\"A\"><Address>0</Address><Length>4</Length><AccessMode>WO</AccessMode>"
        "<pPort>P</pPort><LSB>4</LSB><MSB>7</MSB></MaskedIntReg>");
    t.port.poke(0, 0x11223344, 4);
    t.integer("A")->SetValue(5);
    EXPECT_EQ(t.port.peek(0, 4), 0x50);
    EXPECT_EQ(t.port.count('R'), 0U);
}

TEST(Register, BitsOutsideOfTheRegisterAreAnErrorOfThatNode) {
    TestMap t(reg("A", "<Address>0</Address><Length>4</Length><Bit>32</Bit>", "MaskedIntReg"));
    EXPECT_THAT(errorOf<GenICam::RuntimeException>([&] { (void)t.integer("A")->GetValue(); }),
                HasSubstr("Node 'A' has bits 32 to 32 in a register of 32 bits."));
}

TEST(Register, Rule7StructEntriesTakeTheirParentsElements) {
    TestMap t(
        "<StructReg Comment=\"c\"><Address>4</Address><Address>4</Address><Length>4</Length>"
        "<AccessMode>RO</AccessMode><pPort>P</pPort><Endianess>LittleEndian</Endianess>"
        "<Cachable>NoCache</Cachable>"
        "<StructEntry Name=\"A\"><Bit>3</Bit></StructEntry>"
        "<StructEntry Name=\"B\"><LSB>8</LSB><MSB>15</MSB><AccessMode>RW</AccessMode></StructEntry>"
        "</StructReg>");
    t.port.poke(8, 0x00004208, 4);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    EXPECT_EQ(t.mode("A"), RO);
    EXPECT_EQ(t.integer("B")->GetValue(), 0x42);
    EXPECT_EQ(t.mode("B"), RW);
    EXPECT_TRUE(t.remarks().empty());
}

TEST(Register, RawBytesAreReadAndWrittenWhole) {
    TestMap t(reg("A", "<Address>0</Address><Length>3</Length>", "Register"));
    const CRegisterPtr raw = t.node("A");
    const std::uint8_t in[] = {1, 2, 0xAB};
    raw->Set(in, 3);
    EXPECT_EQ(raw->ToString(), "0x0102AB");
    raw->FromString("0xFF0102");
    std::uint8_t out[3] = {};
    raw->Get(out, 3);
    EXPECT_EQ(out[0], 0xFF);
    EXPECT_EQ(raw->GetLength(), 3);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { raw->Set(in, 2); }),
              "Node 'A' takes 3 bytes, not 2.");
    EXPECT_THROW(raw->Get(out, 4), GenICam::OutOfRangeException);
    EXPECT_THROW(raw->FromString("0x1"), GenICam::InvalidArgumentException);
}

TEST(Register, FloatRegistersInBothSizesAndOrders) {
    TestMap t(reg("F4", "<Address>0</Address><Length>4</Length>", "FloatReg") +
              reg("F8", "<Address>8</Address><Length>8</Length><Endianess>BigEndian</Endianess>",
                  "FloatReg"));
    t.real("F4")->SetValue(1.5);
    EXPECT_EQ(t.port.peek(0, 4), 0x3FC00000);
    t.real("F8")->SetValue(-2.0);
    EXPECT_EQ(t.port.peek(8), 0xC0);
    EXPECT_EQ(t.real("F8")->GetValue(), -2.0);
    EXPECT_THROW(t.real("F4")->SetValue(1e39), GenICam::OutOfRangeException);
    EXPECT_THROW(t.real("F8")->SetValue(std::numeric_limits<double>::infinity()),
                 GenICam::OutOfRangeException);
}

TEST(Register, PortNodesHandRawAccessesOn) {
    TestMap t(std::string(Reg{"A", 0, "RW", ""}));
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    const CPortPtr port = t.node("P");
    const std::int64_t value = 9;
    port->Write(&value, 0, 8);
    EXPECT_EQ(t.integer("A")->GetValue(), 9);
    std::int64_t back = 0;
    port->Read(&back, 0, 8);
    EXPECT_EQ(back, 9);
    EXPECT_EQ(port->GetAccessMode(), RW);
}
