// What must not allocate: a frame's chunks, a cached value, a formula.
#include <gtest/gtest.h>

#include "genapi/testmap.h"
#include "support/allocations.h"

using namespace GenApiTest;

namespace {

using Bytes = std::vector<std::uint8_t>;

// Chunks of four bytes each, as GigE Vision puts them.
Bytes frame(int chunks, std::uint8_t value) {
    Bytes bytes;
    for (int i = 0; i < chunks; ++i) {
        const auto id = static_cast<std::uint8_t>(i + 1);
        bytes.insert(bytes.end(), {value, 0, 0, 0, 0, 0, 0, id, 0, 0, 0, 4});
    }
    return bytes;
}

std::string chunkNodes(int chunks) {
    std::string nodes;
    for (int i = 0; i < chunks; ++i) {
        const std::string number = std::to_string(i + 1);
        nodes += "<Integer Name=\"F" + number + "\"><pValue>R" + number +
                 "</pValue></Integer><IntReg Name=\"R" + number +
                 "\"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>C" +
                 number + "</pPort></IntReg><Port Name=\"C" + number + "\"><ChunkID>" + number +
                 "</ChunkID>" + (i % 2 == 0 ? "" : "<CacheChunkData>Yes</CacheChunkData>") +
                 "</Port>";
    }
    return nodes;
}

template <typename Call>
std::uint64_t allocationsOf(Call call) {
    const std::uint64_t before = Orlix::Test::countAllocationsOfThisThread();
    call();
    return Orlix::Test::countAllocationsOfThisThread() - before;
}

}  // namespace

TEST(Allocation, TheCounterCounts) {
    std::vector<int> list;
    EXPECT_EQ(allocationsOf([&] { list.resize(10); }), 1U);
}

TEST(Allocation, AFramesChunksAndTheirFeaturesAllocateNothingOnceWarm) {
    constexpr int chunks = 8;
    TestMap t(chunkNodes(chunks));
    CChunkAdapterGEV adapter(t.map._Ptr());
    std::vector<CIntegerPtr> features;
    int told = 0;
    for (int i = 1; i <= chunks; ++i) {
        features.push_back(t.integer(("F" + std::to_string(i)).c_str()));
        Register(features.back()->GetNode(), [&](INode*) { ++told; });
    }
    std::vector<Bytes> frames;
    for (std::uint8_t i = 0; i < 20; ++i) {
        frames.push_back(frame(chunks, i));
    }
    std::int64_t sum = 0;
    const auto deliver = [&](Bytes& bytes) {
        AttachStatistics_t statistics;
        adapter.AttachBuffer(bytes.data(), static_cast<std::int64_t>(bytes.size()), &statistics);
        for (const CIntegerPtr& feature : features) {
            sum += feature->GetValue();
        }
        adapter.DetachBuffer();
    };
    // The frame's own chunk, and that of each copy, need their memory once.
    deliver(frames[0]);
    deliver(frames[1]);
    told = 0;
    sum = 0;
    const std::size_t count = allocationsOf([&] {
        for (std::size_t i = 2; i < frames.size(); ++i) {
            deliver(frames[i]);
        }
    });
    EXPECT_EQ(sum, chunks * (2 + 19) * 18 / 2);
    EXPECT_GE(told, 18 * chunks);
    EXPECT_EQ(count, 0U);
}

TEST(Allocation, Rule41ReadingThroughFormulasAndCachesAllocatesNothingOnceWarm) {
    TestMap t(
        "<Integer Name=\"A\"><pValue>K</pValue></Integer><IntSwissKnife Name=\"K\"><pVariable "
        "Name=\"V\">R</pVariable><pVariable Name=\"W\">L</pVariable><Formula>V * 3 + (W > 2 ? V : "
        "W)</Formula></IntSwissKnife><IntSwissKnife Name=\"L\"><pVariable Name=\"V\">S</pVariable>"
        "<Formula>V + 1</Formula></IntSwissKnife><Float Name=\"F\"><pValue>C</pValue></Float>"
        "<Converter Name=\"C\"><FormulaTo>FROM * 4</FormulaTo><FormulaFrom>TO / 4</FormulaFrom>"
        "<pValue>R</pValue></Converter>" +
        std::string(Reg{"S", 8, "RW", ""}) +
        "<IntReg Name=\"R\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>M</pPort></IntReg><Port Name=\"M\"/>");
    CMemoryPort memory;
    t.map->Connect(&memory, "M");
    const CIntegerPtr a = t.integer("A");
    const CFloatPtr f = t.real("F");
    const auto use = [&] {
        (void)a->GetValue();
        f->SetValue(5);
        (void)f->GetValue();
        (void)f->GetMax();
    };
    use();
    EXPECT_EQ(allocationsOf([&] {
                  for (int i = 0; i < 100; ++i) {
                      use();
                  }
              }),
              0U);
}
