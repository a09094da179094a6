// Chunk ports and the adapters that find chunks in a buffer.
#include <gtest/gtest.h>

#include <array>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

std::string chunkReg(const std::string& name, const std::string& address, const std::string& port,
                     int length = 4, const std::string& element = "IntReg") {
    return "<" + element + " Name=\"" + name + "\"><Address>" + address + "</Address><Length>" +
           std::to_string(length) + "</Length><AccessMode>RW</AccessMode><pPort>" + port +
           "</pPort></" + element + ">";
}

const std::string nodes =
    chunkReg("First", "0", "C1") + chunkReg("Last", "-4", "C1") + chunkReg("Over", "6", "C1") +
    chunkReg("Before", "-12", "C1") + chunkReg("Across", "-2", "C1") +
    chunkReg("Base", "0x7FFFFFFFFFFFFFF0", "C1", 8) +
    chunkReg("Size", "0x7FFFFFFFFFFFFFF8", "C1", 8) + chunkReg("Kept", "0", "C2") +
    chunkReg("Linked", "0", "C3") + "<Integer Name=\"Feature\"><pValue>First</pValue></Integer>" +
    "<Integer Name=\"Id\"><Value>0x77</Value></Integer>"
    "<Port Name=\"C1\"><ChunkID>00a5</ChunkID></Port>"
    "<Port Name=\"C2\"><ChunkID>A6</ChunkID><CacheChunkData>Yes</CacheChunkData></Port>"
    "<Port Name=\"C3\"><pChunkID>Id</pChunkID></Port>";

using Bytes = std::vector<std::uint8_t>;

void addNumber(Bytes& buffer, std::uint32_t value, EEndianess order) {
    for (int i = 0; i < 4; ++i) {
        buffer.push_back(static_cast<std::uint8_t>(value >> 8 * (order == BigEndian ? 3 - i : i)));
    }
}

void addChunk(Bytes& buffer, std::uint32_t id, const Bytes& data, EEndianess order = BigEndian) {
    buffer.insert(buffer.end(), data.begin(), data.end());
    addNumber(buffer, id, order);
    addNumber(buffer, static_cast<std::uint32_t>(data.size()), order);
}

Bytes frame(std::uint8_t first = 1, EEndianess order = BigEndian) {
    Bytes buffer;
    addChunk(buffer, 1, {9, 9, 9, 9}, order);
    addChunk(buffer, 0xA5, {first, 0, 0, 0, 2, 0, 0, 0}, order);
    addChunk(buffer, 0xA6, {3, 0, 0, 0}, order);
    return buffer;
}

// Two chunks that hold these numbers.
Bytes fiveAndSix(std::uint32_t firstId, std::uint32_t secondId) {
    Bytes buffer;
    addChunk(buffer, firstId, {5, 0, 0, 0});
    addChunk(buffer, secondId, {6, 0, 0, 0});
    return buffer;
}

std::int64_t sizeOf(const Bytes& bytes) {
    return static_cast<std::int64_t>(bytes.size());
}

struct ChunkMap : TestMap {
    ChunkMap() : TestMap(nodes), adapter(map._Ptr()) {}
    void attach(Bytes& bytes) { adapter.AttachBuffer(bytes.data(), sizeOf(bytes)); }
    [[nodiscard]] std::int64_t get(const char* name) const { return integer(name)->GetValue(); }

    CChunkAdapterGEV adapter;
};

}  // namespace

TEST(Chunk, Rule17WithoutABufferTheRegistersAreNotAvailable) {
    ChunkMap t;
    EXPECT_EQ(t.mode("First"), NA);
    EXPECT_EQ(t.mode("Feature"), NA);
    EXPECT_THROW((void)t.get("First"), GenICam::AccessException);
    Bytes buffer = frame();
    t.attach(buffer);
    EXPECT_EQ(t.mode("Feature"), RW);
    t.adapter.DetachBuffer();
    EXPECT_EQ(t.mode("Feature"), NA);
    t.attach(buffer);
    t.adapter.DetachNodeMap();
    EXPECT_EQ(t.mode("Feature"), NA);
}

TEST(Chunk, Rule17ChunksAreFoundByIdAndInvalidateWhatLiesOnThem) {
    ChunkMap t;
    int fired = 0;
    Register(t.node("Feature"), [&](INode*) { ++fired; });
    Bytes one = frame(1);
    Bytes two = frame(7);
    AttachStatistics_t statistics;
    t.adapter.AttachBuffer(one.data(), sizeOf(one), &statistics);
    EXPECT_EQ(statistics.NumChunkPorts, 3);
    EXPECT_EQ(statistics.NumChunks, 3);
    EXPECT_EQ(statistics.NumAttachedChunks, 2);
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(t.get("Feature"), 1);
    t.attach(two);
    EXPECT_EQ(fired, 2);
    EXPECT_EQ(t.get("Feature"), 7);
    t.adapter.UpdateBuffer(one.data());
    EXPECT_EQ(t.get("Feature"), 1);
}

TEST(Chunk, Rule17ANegativeAddressCountsFromTheChunksEnd) {
    ChunkMap t;
    Bytes buffer = frame();
    t.attach(buffer);
    EXPECT_EQ(t.get("Last"), 2);
    t.integer("Last")->SetValue(0x01020304);
    EXPECT_EQ(buffer[16], 4);
    EXPECT_EQ(buffer[19], 1);
}

TEST(Chunk, Rule17PseudoRegistersGiveBaseAndLength) {
    ChunkMap t;
    Bytes buffer = frame();
    t.attach(buffer);
    EXPECT_EQ(t.get("Size"), 8);
    EXPECT_EQ(static_cast<std::uint64_t>(t.get("Base")),
              reinterpret_cast<std::uintptr_t>(buffer.data() + 12));
    EXPECT_THROW(t.integer("Size")->SetValue(3), GenICam::OutOfRangeException);
}

TEST(Chunk, Rule17EveryAccessStaysInTheChunk) {
    ChunkMap t;
    Bytes buffer = frame();
    t.attach(buffer);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { (void)t.get("Over"); }),
              "Port 'C1': reading of 4 bytes at address 6 leaves the 8 bytes attached.");
    for (const char* name : {"Before", "Across"}) {
        EXPECT_THROW((void)t.get(name), GenICam::OutOfRangeException) << name;
        EXPECT_THROW(t.integer(name)->SetValue(1), GenICam::OutOfRangeException) << name;
    }
    EXPECT_EQ(buffer, frame());
}

TEST(Chunk, Rule17ACachedChunkOutlivesItsBuffer) {
    ChunkMap t;
    {
        Bytes buffer = frame();
        t.attach(buffer);
        t.adapter.DetachBuffer();
        buffer.assign(buffer.size(), 0xFF);
    }
    t.map->InvalidateNodes();
    EXPECT_EQ(t.get("Kept"), 3);
    EXPECT_EQ(t.mode("First"), NA);
    Bytes without;
    addChunk(without, 1, {});
    t.attach(without);
    EXPECT_EQ(t.mode("Kept"), NA);
}

TEST(Chunk, Rule17TheChunkIdMayComeFromANode) {
    ChunkMap t;
    Bytes buffer = fiveAndSix(0x77, 0x78);
    t.attach(buffer);
    EXPECT_EQ(t.get("Linked"), 5);
    t.integer("Id")->SetValue(0x78);
    t.attach(buffer);
    EXPECT_EQ(t.get("Linked"), 6);
}

TEST(Chunk, Rule17TheLaterOfTwoChunksWithOneIdCounts) {
    ChunkMap t;
    Bytes buffer = fiveAndSix(0xA5, 0xA5);
    t.attach(buffer);
    EXPECT_EQ(t.get("First"), 6);
}

TEST(Chunk, Rule17ABrokenLayoutAttachesNothing) {
    ChunkMap t;
    Bytes good = frame();
    t.attach(good);
    for (std::size_t cut = 1; cut < good.size(); ++cut) {
        Bytes bad(good.begin() + static_cast<std::ptrdiff_t>(cut), good.end());
        if (cut == 12 || cut == 28) {
            continue;  // between two chunks
        }
        EXPECT_FALSE(t.adapter.CheckBufferLayout(bad.data(), sizeOf(bad))) << cut;
        EXPECT_THROW(t.attach(bad), GenICam::RuntimeException) << cut;
        EXPECT_EQ(t.mode("First"), NA) << cut;
    }
    Bytes huge;
    addNumber(huge, 0xA5, BigEndian);
    addNumber(huge, 0xFFFFFFFF, BigEndian);
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { t.attach(huge); }),
              "Chunk adapter: the buffer of 8 bytes is no sequence of chunks, it is wrong at "
              "offset 0.");
    EXPECT_TRUE(t.adapter.CheckBufferLayout(good.data(), sizeOf(good)));
}

TEST(Chunk, TheLittleEndianAndTheToldLayout) {
    TestMap t(nodes);
    Bytes little = frame(4, LittleEndian);
    {
        CChunkAdapterU3V adapter(t.map._Ptr());
        adapter.AttachBuffer(little.data(), sizeOf(little));
        EXPECT_EQ(t.integer("First")->GetValue(), 4);
    }
    EXPECT_EQ(t.mode("First"), NA);
    CChunkAdapterGeneric adapter(t.map._Ptr());
    const std::array<SingleChunkData_t, 1> told = {{{0xA5, 12, 8}}};
    adapter.AttachBuffer(little.data(), sizeOf(little), told.data(), 1);
    EXPECT_EQ(t.integer("First")->GetValue(), 4);
    for (const SingleChunkData_t bad :
         {SingleChunkData_t{0xA5, -1, 4}, SingleChunkData_t{0xA5, 0, -1},
          SingleChunkData_t{0xA5, sizeOf(little), 1},
          SingleChunkData_t{0xA5, 1, std::numeric_limits<std::int64_t>::max()}}) {
        EXPECT_THROW(adapter.AttachBuffer(little.data(), sizeOf(little), &bad, 1),
                     GenICam::RuntimeException);
        EXPECT_EQ(t.mode("First"), NA);
    }
}

TEST(Chunk, IdsThatDifferAboveTheir32ndBitAreDifferent) {
    TestMap t(chunkReg("Short", "0", "A") + chunkReg("Long", "0", "B") +
              "<Port Name=\"A\"><ChunkID>A5</ChunkID></Port>"
              "<Port Name=\"B\"><ChunkID>1000000A5</ChunkID></Port>");
    Bytes buffer = {5, 0, 0, 0, 6, 0, 0, 0};
    CChunkAdapterGeneric adapter(t.map._Ptr());
    const std::array<SingleChunkData_t, 2> told = {{{0xA5, 0, 4}, {0x1000000A5, 4, 4}}};
    adapter.AttachBuffer(buffer.data(), sizeOf(buffer), told.data(), 2);
    EXPECT_EQ(t.integer("Short")->GetValue(), 5);
    EXPECT_EQ(t.integer("Long")->GetValue(), 6);
}

TEST(Chunk, APortConnectedByHandServesOneChunk) {
    TestMap t(nodes);
    CChunkPort port;
    t.map->Connect(&port, "C1");
    Bytes data = {1, 0, 0, 0};
    EXPECT_THROW(port.AttachChunk(nullptr, 0, 4), GenICam::InvalidArgumentException);
    EXPECT_THROW(port.AttachChunk(data.data(), 0, -1), GenICam::InvalidArgumentException);
    port.AttachChunk(data.data(), 0, 4, true);
    data[0] = 2;
    EXPECT_EQ(t.integer("First")->GetValue(), 1);
    port.DetachChunk();
    EXPECT_EQ(t.mode("First"), NA);
}

TEST(Chunk, AnAdapterOutlivesEveryOtherHandleOfItsMap) {
    Bytes buffer = frame();
    CChunkAdapterGEV adapter;
    EXPECT_THROW(adapter.AttachBuffer(buffer.data(), sizeOf(buffer)), GenICam::RuntimeException);
    adapter.AttachNodeMap(load(document(nodes))._Ptr());
    EXPECT_NO_THROW(adapter.AttachBuffer(buffer.data(), sizeOf(buffer)));
}
