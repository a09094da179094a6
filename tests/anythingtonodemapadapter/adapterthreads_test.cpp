// A node changes its values on a worker thread while users read and write through the map.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "genapi/genapi.h"
#include "testtree.h"

namespace AnythingToNodeMapAdapter::Test {

constexpr int rounds = 300;

class AdapterThreads : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Modes, AdapterThreads, testing::Values("", "SharedPort"),
                         [](const auto& mode) {
                             return *mode.param == 0 ? "OwnPorts" : "SharedPort";
                         });

// What a node's own code does in a setter: lock, change, tell the port.
void changeAsTheNode(TestTree& tree, int round) {
    const GenApi::AutoLock guard(tree.owner.lock);
    tree.speed->setValue(1 + round % 500, false);
    tree.path->writeValue(round % 2 == 0 ? "even" : "odd and longer", false);
    tree.color->setWritable(round % 3 != 0);
    tree.status->writeValue(round % 2 == 0 ? "idle" : "busy", false);
    tree.speed->setMax(500 + round);
}

void useTheMap(GenApi::INodeMap* nodeMap, int round) {
    const std::int64_t speed = GenApi::CIntegerPtr(nodeMap->GetNode("Speed"))->GetValue();
    EXPECT_TRUE(speed >= 1 && speed <= 500) << speed;
    const gcstring path = GenApi::CStringPtr(nodeMap->GetNode("Path"))->GetValue();
    EXPECT_TRUE(path == "even" || path == "odd and longer" || path == "images") << path;
    GenApi::CIntegerPtr(nodeMap->GetNode("Speed"))->SetValue(1 + round % 500);
    static_cast<void>(GenApi::IsWritable(nodeMap->GetNode("Color")));
}

TEST_P(AdapterThreads, ChangesAndAccessesNeverMixUp) {
    std::atomic<int> calls = 0;
    TestTree tree;
    GenApi::INodeMap* nodeMap = tree.create(GetParam());
    GenApi::Register(nodeMap->GetNode("Speed"), [&calls](GenApi::INode* node) {
        static_cast<void>(GenApi::CIntegerPtr(node)->GetValue());
        ++calls;
    });
    std::vector<std::thread> threads;
    threads.emplace_back([&tree] {
        for (int round = 0; round < rounds; ++round) {
            changeAsTheNode(tree, round);
        }
    });
    for (int user = 0; user < 2; ++user) {
        threads.emplace_back([nodeMap] {
            for (int round = 0; round < rounds; ++round) {
                useTheMap(nodeMap, round);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Each write through the map is a change for the callback.
    EXPECT_GE(calls.load(), 2 * rounds);
}

}  // namespace AnythingToNodeMapAdapter::Test
