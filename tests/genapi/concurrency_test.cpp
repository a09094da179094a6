// Many threads on maps: one access at a time for each map, one lock that may be the caller's.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

void onThreads(int count, const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Fails the test if two accesses overlap.
class ExclusivePort : public CMemoryPort {
public:
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const Guard guard(*this);
        CMemoryPort::Read(pBuffer, Address, Length);
    }
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override {
        const Guard guard(*this);
        CMemoryPort::Write(pBuffer, Address, Length);
    }
    std::atomic<bool> overlapped{false};

private:
    struct Guard {
        explicit Guard(ExclusivePort& p) : port(p) {
            if (port.inside_.exchange(true)) {
                port.overlapped = true;
            }
        }
        ~Guard() { port.inside_ = false; }
        ExclusivePort& port;
    };
    std::atomic<bool> inside_{false};
};

}  // namespace

TEST(Concurrency, Rule77EightThreadsOnOneMapAccessThePortOneAtATime) {
    const CNodeMapRef map = load(document(
        "<Integer Name=\"A\"><pValue>R</pValue><pMax>Mx</pMax></Integer>" + std::string(Reg{"R"}) +
        std::string(Reg{"Mx", 8, "RW", "<Cachable>WriteThrough</Cachable>"}) +
        "<Enumeration Name=\"E\"><EnumEntry Name=\"X\"><Value>0</Value></EnumEntry><EnumEntry "
        "Name=\"Y\">"
        "<Value>1</Value></EnumEntry><pValue>S</pValue></Enumeration>" +
        std::string(Reg{"S", 16}) + "<Port Name=\"P\"/>"));
    ExclusivePort port;
    map->Connect(&port, "P");
    CIntegerPtr(map->GetNode("Mx"))->SetValue(1'000'000);
    std::atomic<int> calls{0};
    Register(map->GetNode("A"), [&](INode*) { ++calls; });
    constexpr int turns = 200;
    onThreads(8, [&](int thread) {
        const CIntegerPtr a = map->GetNode("A");
        const CEnumerationPtr e = map->GetNode("E");
        for (int i = 0; i < turns; ++i) {
            a->SetValue(thread * turns + i);
            EXPECT_GE(a->GetValue(), 0);
            e->FromString(i % 2 == 0 ? "X" : "Y");
            (void)e->ToString();
            const CallbackHandleType handle = Register(
                map->GetNode("R"), [](INode*) {}, cbPostOutsideLock);
            map->InvalidateNodes();
            EXPECT_TRUE(Deregister(map->GetNode("R"), handle));
        }
    });
    EXPECT_FALSE(port.overlapped);
    EXPECT_GE(calls.load(), 8 * turns);
}

TEST(Concurrency, Rule77MapsOfOneDescriptionShareNoState) {
    const std::string text = document(
        "<Integer Name=\"A\"><Value>0</Value></Integer>"
        "<Integer Name=\"B\"><pValue>A</pValue></Integer>");
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    std::vector<CNodeMapRef> maps;
    for (int i = 0; i < 4; ++i) {
        maps.push_back(factory.CreateNodeMap());
    }
    onThreads(4, [&](int thread) {
        const CIntegerPtr b = maps[static_cast<std::size_t>(thread)]->GetNode("B");
        for (int i = 0; i < 300; ++i) {
            b->SetValue(thread);
            EXPECT_EQ(b->GetValue(), thread);
        }
    });
}

TEST(Concurrency, Rule77EightThreadsOnEightMapsOfOneDescriptionOnPortsOfTheirOwn) {
    const std::string text = document(
        "<Integer Name=\"A\"><pValue>R</pValue></Integer><Float Name=\"F\"><pValue>C</pValue>"
        "</Float><Converter Name=\"C\"><pVariable Name=\"K\">Kn</pVariable><FormulaTo>FROM / K"
        "</FormulaTo><FormulaFrom>TO * K</FormulaFrom><pValue>R</pValue></Converter>"
        "<IntSwissKnife Name=\"Kn\"><pVariable Name=\"S\">S</pVariable><Formula>S + 1</Formula>"
        "</IntSwissKnife>" +
        std::string(Reg{"R", 0, "RW", ""}) + std::string(Reg{"S", 8, "RW", ""}) +
        "<Port Name=\"P\"/>");
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    std::vector<CNodeMapRef> maps;
    for (int i = 0; i < 8; ++i) {
        maps.push_back(factory.CreateNodeMap());
    }
    onThreads(8, [&](int thread) {
        const CNodeMapRef& map = maps[static_cast<std::size_t>(thread)];
        CMemoryPort port;
        map->Connect(&port, "P");
        CIntegerPtr(map->GetNode("S"))->SetValue(thread);
        for (int i = 0; i < 200; ++i) {
            CIntegerPtr(map->GetNode("A"))->SetValue(i);
            EXPECT_EQ(CFloatPtr(map->GetNode("F"))->GetValue(), i * (thread + 1));
            map->InvalidateNodes();
        }
        map->Connect(nullptr, "P");
    });
}

TEST(Concurrency, Rule74TheMapUsesTheCallersLock) {
    CLock lock;
    const std::string text = document("<Integer Name=\"A\"><Value>0</Value></Integer>");
    const CNodeMapRef map = CNodeMapFactory(ContentType_Xml, text.data(), text.size())
                                .CreateNodeMap(lock, "Device", true);
    EXPECT_EQ(&map->GetLock(), &lock);
    const CIntegerPtr a = map->GetNode("A");
    std::atomic<bool> done{false};
    std::thread reader;
    {
        const AutoLock hold(lock);
        // Recursive: the holder gets through, another thread has to wait.
        a->SetValue(1);
        reader = std::thread([&] {
            EXPECT_EQ(a->GetValue(), 2);
            done = true;
        });
        a->SetValue(2);
        EXPECT_FALSE(done.load());
    }
    reader.join();
    EXPECT_TRUE(done.load());
}

TEST(Concurrency, Rule76OutsideCallbacksMayWaitForAnotherThreadThatReads) {
    TestMap t("<Integer Name=\"A\"><Value>0</Value></Integer>");
    std::int64_t seen = -1;
    Register(
        t.node("A"),
        [&](INode*) { std::thread([&] { seen = t.integer("A")->GetValue(); }).join(); },
        cbPostOutsideLock);
    t.integer("A")->SetValue(7);
    EXPECT_EQ(seen, 7);
}

TEST(Concurrency, Rule76AfterDeregistrationHasReturnedNoInsideCallStarts) {
    TestMap t("<Integer Name=\"A\"><Value>0</Value></Integer>");
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop) {
            t.integer("A")->SetValue(1);
        }
    });
    for (int i = 0; i < 200; ++i) {
        auto alive = std::make_unique<std::atomic<int>>(0);
        std::atomic<int>* counter = alive.get();
        const CallbackHandleType handle = Register(t.node("A"), [counter](INode*) { ++*counter; });
        EXPECT_TRUE(Deregister(t.node("A"), handle));
        alive.reset();
    }
    stop = true;
    writer.join();
}

TEST(Concurrency, TheListsOfDependantsFillThemselvesOnManyThreads) {
    std::string nodes;
    for (int i = 0; i < 100; ++i) {
        nodes += "<Integer Name=\"N" + std::to_string(i) + "\"><Value>0</Value><pInvalidator>N" +
                 std::to_string((i + 1) % 100) + "</pInvalidator></Integer>";
    }
    const std::string text = document(nodes);
    CNodeMapFactory factory(ContentType_Xml, text.data(), text.size());
    std::vector<CNodeMapRef> maps;
    for (int i = 0; i < 8; ++i) {
        maps.push_back(factory.CreateNodeMap());
    }
    onThreads(8, [&](int thread) {
        for (int i = 0; i < 100; ++i) {
            maps[static_cast<std::size_t>(thread)]
                ->GetNode(gcstring(("N" + std::to_string(i)).c_str()))
                ->InvalidateNode();
            NodeList_t reached;
            maps[0]->GetNode("N0")->GetChildren(reached, ctAllDependingNodes);
            EXPECT_EQ(reached.size(), 99U);
        }
    });
}
