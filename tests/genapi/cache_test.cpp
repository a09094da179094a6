// What is kept of the bytes that were read and written, and what makes it go.
#include <gtest/gtest.h>

#include <algorithm>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

Reg cached(const std::string& name, int address, const std::string& mode,
           const std::string& more = "") {
    return {name, address, "RW", "<Cachable>" + mode + "</Cachable>" + more};
}

// Reads of the port that a read of the node costs.
std::size_t costOf(TestMap& t, const char* name) {
    const std::size_t before = t.port.count('R');
    (void)t.integer(name)->GetValue();
    return t.port.count('R') - before;
}

}  // namespace

TEST(Cache, Rule66NoCacheNeverKeeps) {
    TestMap t(cached("A", 0, "NoCache"));
    EXPECT_EQ(costOf(t, "A"), 1U);
    t.integer("A")->SetValue(5);
    EXPECT_EQ(costOf(t, "A"), 1U);
    EXPECT_FALSE(t.node("A")->IsCachable());
    EXPECT_FALSE(t.integer("A")->IsValueCacheValid());
}

TEST(Cache, Rule66WriteThroughKeepsReadsAndWrites) {
    TestMap t(cached("A", 0, "WriteThrough"));
    EXPECT_EQ(costOf(t, "A"), 1U);
    EXPECT_EQ(costOf(t, "A"), 0U);
    EXPECT_TRUE(t.integer("A")->IsValueCacheValid());
    t.integer("A")->SetValue(5);
    EXPECT_EQ(costOf(t, "A"), 0U);
    EXPECT_EQ(t.integer("A")->GetValue(), 5);
}

TEST(Cache, Rule66WriteAroundKeepsReadsOnly) {
    TestMap t(cached("A", 0, "WriteAround"));
    EXPECT_EQ(costOf(t, "A"), 1U);
    EXPECT_EQ(costOf(t, "A"), 0U);
    t.integer("A")->SetValue(5);
    EXPECT_EQ(costOf(t, "A"), 1U);
    EXPECT_EQ(costOf(t, "A"), 0U);
}

TEST(Cache, Rule66AFailedWriteDropsTheEntry) {
    TestMap t(cached("A", 0, "WriteThrough"));
    t.integer("A")->SetValue(5);
    t.port.onWrite = [](std::int64_t) { throw std::runtime_error("gone"); };
    EXPECT_THROW(t.integer("A")->SetValue(6), std::runtime_error);
    EXPECT_EQ(costOf(t, "A"), 1U);
}

TEST(Cache, AReadMayIgnoreIt) {
    TestMap t(cached("A", 0, "WriteThrough"));
    (void)t.integer("A")->GetValue();
    t.port.poke(0, 9);
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    EXPECT_EQ(t.integer("A")->GetValue(false, true), 9);
    EXPECT_EQ(t.integer("A")->GetValue(), 9);
}

TEST(Cache, AReadThroughAFormulaIgnoresThatOfItsVariablesToo) {
    TestMap t(
        std::string(cached("A", 0, "WriteThrough")) + std::string(cached("B", 8, "WriteThrough")) +
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">A</pVariable><Formula>X * 2</Formula>"
        "</IntSwissKnife><IntConverter Name=\"C\"><pVariable Name=\"X\">K</pVariable><FormulaTo>"
        "FROM - X</FormulaTo><FormulaFrom>TO + X</FormulaFrom><pValue>B</pValue>"
        "</IntConverter>");
    EXPECT_FALSE(t.integer("C")->IsValueCacheValid());
    EXPECT_EQ(t.integer("C")->GetValue(), 0);
    EXPECT_TRUE(t.integer("K")->IsValueCacheValid());
    EXPECT_TRUE(t.integer("C")->IsValueCacheValid());
    t.port.poke(0, 5);
    t.port.poke(8, 100);
    EXPECT_EQ(t.integer("C")->GetValue(), 0);
    EXPECT_EQ(t.integer("C")->GetValue(false, true), 110);
    t.node("A")->InvalidateNode();
    EXPECT_FALSE(t.integer("C")->IsValueCacheValid());
}

TEST(Cache, WhetherAFormulaInACircleIsCachedIsAnswered) {
    TestMap t(
        "<IntSwissKnife Name=\"K\"><pVariable Name=\"X\">L</pVariable><Formula>X</Formula>"
        "</IntSwissKnife><IntSwissKnife Name=\"L\"><pVariable Name=\"X\">K</pVariable><Formula>X"
        "</Formula></IntSwissKnife>");
    EXPECT_FALSE(t.integer("K")->IsValueCacheValid());
}

TEST(Cache, Rule67BytesOfAnotherAddressAreNotTaken) {
    TestMap t(
        "<Integer Name=\"Sel\"><Value>0</Value></Integer>"
        "<IntReg Name=\"A\"><pIndex "
        "Offset=\"8\">Sel</pIndex><Length>8</Length><AccessMode>RW</AccessMode>"
        "<pPort>P</pPort></IntReg>");
    t.port.poke(0, 10);
    t.port.poke(8, 20);
    EXPECT_EQ(t.integer("A")->GetValue(), 10);
    t.integer("Sel")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetValue(), 20);
    t.integer("A")->SetValue(21);
    t.integer("Sel")->SetValue(0);
    EXPECT_EQ(t.integer("A")->GetValue(), 10);
    EXPECT_EQ(t.port.peek(0), 10);
    EXPECT_EQ(t.port.peek(8), 21);
}

TEST(Cache, Rule68AWriteInvalidatesEveryReaderByAnyLink) {
    TestMap t(std::string(cached("Value", 0, "WriteThrough")) +
              "<Integer Name=\"V\"><pValue>Value</pValue></Integer>"
              "<Integer Name=\"Range\"><Value>0</Value><pMax>V</pMax></Integer>"
              "<Integer Name=\"Avail\"><Value>0</Value><pIsAvailable>V</pIsAvailable></Integer>"
              "<Integer Name=\"Locked\"><Value>0</Value><pIsLocked>V</pIsLocked></Integer>"
              "<IntReg "
              "Name=\"Addr\"><pAddress>V</pAddress><Length>8</Length><AccessMode>RW</"
              "AccessMode><pPort>P</pPort></IntReg>"
              "<StringReg "
              "Name=\"Len\"><Address>0</Address><pLength>V</pLength><AccessMode>RW</"
              "AccessMode><pPort>P</pPort></StringReg>"
              "<Integer Name=\"Far\"><pValue>Range</pValue></Integer><Integer "
              "Name=\"None\"><Value>0</Value></Integer>");
    std::vector<std::string> told;
    for (const char* name :
         {"Value", "V", "Range", "Avail", "Locked", "Addr", "Len", "Far", "None"}) {
        Register(t.node(name), [&told](INode* node) { told.push_back(node->GetName().str()); });
    }
    t.integer("Value")->SetValue(1);
    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, (std::vector<std::string>{"Addr", "Avail", "Far", "Len", "Locked", "Range", "V",
                                              "Value"}));
}

TEST(Cache, Rule68InvalidatorsReachTransitivelyThroughNodesOfEveryKind) {
    TestMap t(
        std::string(cached("Cause", 0, "WriteThrough")) +
        "<Command "
        "Name=\"Mid\"><pInvalidator>Cause</pInvalidator><pValue>Cause</pValue><CommandValue>1</"
        "CommandValue></Command>"
        "<Integer Name=\"Next\"><pInvalidator>Mid</pInvalidator><pValue>Next8</pValue></Integer>" +
        std::string(cached("Next8", 8, "WriteThrough")) +
        std::string(cached("Last", 16, "WriteThrough",
                           "<pInvalidator>Next</pInvalidator><pInvalidator>Last</pInvalidator>")));
    EXPECT_EQ(t.integer("Next")->GetValue(), 0);
    EXPECT_EQ(t.integer("Last")->GetValue(), 0);
    t.port.poke(8, 1);
    t.port.poke(16, 2);
    t.integer("Cause")->SetValue(1);
    EXPECT_EQ(t.integer("Next")->GetValue(), 1);
    EXPECT_EQ(t.integer("Last")->GetValue(), 2);
}

TEST(Cache, Rule69AWriteDropsTheBytesOfEveryNodeThatOverlaps) {
    TestMap t(std::string(cached("A", 0, "WriteThrough")) +
              std::string(cached("B", 4, "WriteThrough")) +
              std::string(cached("C", 8, "WriteThrough")));
    for (const char* name : {"A", "B", "C"}) {
        (void)t.integer(name)->GetValue();
    }
    t.integer("A")->SetValue(0x1122334455667788);
    EXPECT_EQ(t.integer("B")->GetValue(), 0x11223344);
    EXPECT_EQ(costOf(t, "C"), 0U);
    EXPECT_EQ(costOf(t, "A"), 0U);
}

TEST(Cache, Rule69PortNodesThatLieOnOnePortShareItsBytes) {
    TestMap t(std::string(Reg{"A", 0, "RW", ""}) +
              "<Port Name=\"Q\"/><IntReg Name=\"B\"><Address>4</Address><Length>4</Length>"
              "<AccessMode>RW</AccessMode><pPort>Q</pPort></IntReg>");
    t.map->Connect(&t.port, "Q");
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    t.integer("B")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetValue(), std::int64_t{1} << 32);
}

// Registers of all lengths lie on each other in all ways; what one writes the others read.
TEST(Cache, Rule69AnyOverlapIsFoundAlsoAroundTheEndsOfTheAddresses) {
    std::uint32_t noise = 7;
    const auto next = [&](std::uint32_t below) {
        noise = noise * 1664525 + 1013904223;
        return (noise >> 8) % below;
    };
    std::string nodes;
    constexpr int count = 60;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t length = 1 + next(i % 5 == 0 ? 300 : 8);
        const std::uint64_t address =
            (i % 3 == 0 ? 0 : (i % 3 == 1 ? 0x7FFFFFFFFFFFFF80U : 0xFFFFFFFFFFFFFF80U)) + next(250);
        nodes += "<Register Name=\"R" + std::to_string(i) + "\"><Address>" +
                 std::to_string(static_cast<std::int64_t>(address)) + "</Address><Length>" +
                 std::to_string(length) +
                 "</Length><AccessMode>RW</AccessMode><pPort>P</pPort></Register>";
    }
    TestMap t(nodes);
    for (int round = 0; round < 300; ++round) {
        const CRegisterPtr written = t.node(("R" + std::to_string(next(count))).c_str());
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(written->GetLength()));
        std::generate(bytes.begin(), bytes.end(),
                      [&] { return static_cast<std::uint8_t>(next(256)); });
        written->Set(bytes.data(), written->GetLength());
        for (int i = 0; i < count; ++i) {
            const CRegisterPtr read = t.node(("R" + std::to_string(i)).c_str());
            std::vector<std::uint8_t> seen(static_cast<std::size_t>(read->GetLength()));
            std::vector<std::uint8_t> there(seen.size());
            read->Get(seen.data(), read->GetLength());
            t.port.memory.Read(there.data(), read->GetAddress(), read->GetLength());
            ASSERT_EQ(seen, there) << "R" << i << " in round " << round;
        }
    }
}

TEST(Cache, Rule71SelectionGoesBothWays) {
    TestMap t(
        "<Integer "
        "Name=\"Sel\"><Value>0</Value><pSelected>A</pSelected><pSelected>Sub</pSelected></Integer>"
        "<Integer Name=\"Sel2\"><Value>0</Value><pSelected>A</pSelected></Integer>"
        "<Integer Name=\"A\"><Value>1</Value></Integer><Category Name=\"Sub\"/>");
    FeatureList_t features;
    const CSelectorPtr selector = t.node("Sel");
    EXPECT_TRUE(selector->IsSelector());
    selector->GetSelectedFeatures(features);
    ASSERT_EQ(features.size(), 2U);
    EXPECT_EQ(features[1]->GetNode()->GetName(), "Sub");
    CSelectorPtr(t.node("A"))->GetSelectingFeatures(features);
    ASSERT_EQ(features.size(), 2U);
    EXPECT_EQ(features[0]->GetNode()->GetName(), "Sel");
    EXPECT_FALSE(CSelectorPtr(t.node("A"))->IsSelector());
}

TEST(Cache, Rule85WritingOrInvalidatingASelectorInvalidatesWhatItSelects) {
    TestMap t(
        "<Integer Name=\"Sel\"><Value>0</Value><pSelected>A</pSelected></Integer>"
        "<Integer Name=\"A\"><pValue>R</pValue></Integer>" +
        std::string(cached("R", 0, "WriteThrough")));
    int told = 0;
    Register(t.node("A"), [&](INode*) { ++told; });
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    t.port.poke(0, 1);
    t.integer("Sel")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    t.port.poke(0, 2);
    t.node("Sel")->InvalidateNode();
    EXPECT_EQ(t.integer("A")->GetValue(), 2);
    EXPECT_EQ(told, 2);
}

TEST(Cache, InvalidatingAFeatureDropsTheBytesBehindIt) {
    TestMap t("<Integer Name=\"A\"><pValue>R</pValue></Integer>" +
              std::string(cached("R", 0, "WriteThrough")));
    (void)t.integer("A")->GetValue();
    t.port.poke(0, 3);
    t.node("A")->InvalidateNode();
    EXPECT_EQ(t.integer("A")->GetValue(), 3);
}

TEST(Cache, InvalidatingThePortOrAllNodesDropsEveryRegister) {
    TestMap t(std::string(cached("A", 0, "WriteThrough")) +
              std::string(cached("B", 8, "WriteThrough")));
    (void)t.integer("A")->GetValue();
    (void)t.integer("B")->GetValue();
    t.port.InvalidateNode();
    EXPECT_EQ(costOf(t, "A") + costOf(t, "B"), 2U);
    t.map->InvalidateNodes();
    EXPECT_EQ(costOf(t, "A") + costOf(t, "B"), 2U);
}

TEST(Cache, Rule19AnInvalidatorOfThePortInvalidatesEveryRegisterOnIt) {
    TestMap t(
        "<Port Name=\"Q\"><pInvalidator>Load</pInvalidator></Port><Integer "
        "Name=\"Load\"><Value>0</Value></Integer>"
        "<IntReg "
        "Name=\"A\"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Q</"
        "pPort></IntReg>");
    t.map->Connect(&t.port, "Q");
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    t.port.poke(0, 4);
    t.integer("Load")->SetValue(1);
    EXPECT_EQ(t.integer("A")->GetValue(), 4);
}

TEST(Cache, Rule72PollingInvalidatesWhatIsDue) {
    TestMap t(std::string(cached("A", 0, "WriteThrough", "<PollingTime>100</PollingTime>")));
    int told = 0;
    Register(t.node("A"), [&](INode*) { ++told; });
    (void)t.integer("A")->GetValue();
    t.port.poke(0, 1);
    t.map->Poll(99);
    EXPECT_EQ(t.integer("A")->GetValue(), 0);
    EXPECT_EQ(told, 0);
    t.map->Poll(1);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(t.integer("A")->GetValue(), 1);
    EXPECT_EQ(t.node("A")->GetPollingTime(), 100);
    t.map->Poll(INT64_MAX);
    t.map->Poll(INT64_MAX);
    EXPECT_EQ(told, 3);
}

TEST(Cache, Rule72WhatCanOnlyBeWrittenIsNotPolled) {
    TestMap t("<Integer Name=\"A\"><PollingTime>10</PollingTime><pValue>W</pValue></Integer>" +
              std::string(Reg{"W", 0, "WO", "<PollingTime>10</PollingTime>"}));
    int told = 0;
    for (const char* name : {"A", "W"}) {
        Register(t.node(name), [&](INode*) { ++told; });
    }
    t.map->Poll(100);
    EXPECT_EQ(told, 0);
}

TEST(Cache, Rule72ACommandIsPolledOnlyWhileItRuns) {
    TestMap t(
        "<Command "
        "Name=\"C\"><pValue>R</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime></"
        "Command>" +
        std::string(cached("R", 0, "NoCache")));
    int told = 0;
    t.map->Poll(10);
    EXPECT_EQ(t.port.count('R'), 0U);
    t.command("C")->Execute();
    Register(t.node("C"), [&](INode*) { ++told; });
    t.map->Poll(10);
    EXPECT_EQ(told, 0);
    t.port.poke(0, 0);
    t.map->Poll(10);
    EXPECT_EQ(told, 1);
}

TEST(Cache, Rule73InvalidationReadsNothing) {
    TestMap t(std::string(cached("A", 0, "WriteThrough")) +
              "<Integer Name=\"B\"><pValue>A</pValue><pMax>A</pMax></Integer>");
    Register(t.node("B"), [](INode*) {});
    t.node("A")->InvalidateNode();
    t.map->InvalidateNodes();
    EXPECT_TRUE(t.port.accesses.empty());
}

TEST(Cache, AChangeToldDuringAReadIsNotOverwrittenByIt) {
    TestMap t(cached("A", 0, "WriteThrough"));
    t.port.onRead = [&](std::int64_t) { t.port.InvalidateNode(); };
    (void)t.integer("A")->GetValue();
    t.port.onRead = nullptr;
    EXPECT_EQ(costOf(t, "A"), 1U);
    EXPECT_EQ(costOf(t, "A"), 0U);
}
