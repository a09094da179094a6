// Callbacks: when, in which order, and what they may do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "genapi/testmap.h"

using namespace GenApiTest;
using testing::ElementsAre;

namespace {

const std::string chain =
    "<Integer Name=\"Far\"><pValue>Mid</pValue></Integer><Integer "
    "Name=\"Mid\"><pValue>R</pValue></Integer>" +
    std::string(Reg{"R"}) + "<Integer Name=\"Other\"><Value>0</Value></Integer>";

// Whether another thread could take the lock now.
bool isFree(CLock& lock) {
    bool taken = false;
    std::thread([&] {
        taken = lock.TryLock();
        if (taken) {
            lock.Unlock();
        }
    }).join();
    return taken;
}

}  // namespace

TEST(Callback, Rule75EachChangedNodeIsToldOnceCausesFirst) {
    TestMap t(chain);
    std::vector<std::string> told;
    for (const char* name : {"Far", "Mid", "R", "Other"}) {
        Register(t.node(name), [&](INode* node) { told.push_back(node->GetName().str()); });
    }
    t.integer("Far")->SetValue(1);
    EXPECT_THAT(told, ElementsAre("R", "Mid", "Far"));
}

TEST(Callback, Rule75InsideRunsWithTheLockAndOutsideAfterItsRelease) {
    TestMap t(chain);
    std::vector<std::string> told;
    Register(
        t.node("R"),
        [&](INode*) { told.push_back(isFree(t.map->GetLock()) ? "out free" : "out held"); },
        cbPostOutsideLock);
    Register(t.node("Far"),
             [&](INode*) { told.push_back(isFree(t.map->GetLock()) ? "in free" : "in held"); });
    t.integer("R")->SetValue(1);
    EXPECT_THAT(told, ElementsAre("in held", "out free"));
}

TEST(Callback, Rule75TheyRunAlsoWhenTheCallEndsWithAnException) {
    TestMap t("<Integer Name=\"A\"><pValue>R</pValue><pValueCopy>S</pValueCopy></Integer>" +
              std::string(Reg{"R"}) + std::string(Reg{"S", 8}));
    int told = 0;
    int notTold = 0;
    Register(t.node("R"), [&](INode*) { ++told; });
    Register(t.node("S"), [&](INode*) { ++notTold; });
    t.port.onWrite = [](std::int64_t address) {
        if (address == 8) {
            throw GenICam::RuntimeException("second", __FILE__, __LINE__);
        }
    };
    EXPECT_EQ(errorOf<GenICam::RuntimeException>([&] { t.integer("A")->SetValue(1); }), "second");
    EXPECT_EQ(told, 1);
    EXPECT_EQ(notTold, 0);
    EXPECT_TRUE(isFree(t.map->GetLock()));
}

TEST(Callback, ARefusedWriteTellsNobody) {
    TestMap t(chain);
    int told = 0;
    Register(t.node("R"), [&](INode*) { ++told; });
    EXPECT_THROW(t.integer("R")->SetValue(-1), GenICam::OutOfRangeException);
    (void)t.integer("R")->GetValue();
    EXPECT_EQ(told, 0);
}

TEST(Callback, Rule76ANestedWriteIsFinishedBeforeTheOuterCallReturns) {
    TestMap t(chain);
    std::vector<std::string> told;
    Register(t.node("R"), [&](INode*) {
        told.push_back("R begins");
        t.integer("Other")->SetValue(1);
        told.push_back("R ends");
    });
    Register(t.node("Other"), [&](INode*) { told.push_back("Other"); });
    Register(
        t.node("Other"),
        [&](INode*) { told.push_back(isFree(t.map->GetLock()) ? "free" : "held"); },
        cbPostOutsideLock);
    Register(t.node("Far"), [&](INode*) { told.push_back("Far"); });
    t.integer("R")->SetValue(1);
    EXPECT_THAT(told, ElementsAre("R begins", "Other", "R ends", "Far", "free"));
}

TEST(Callback, Rule76OneThatChangesItsOwnNodeComesToAnEnd) {
    TestMap t(chain);
    int told = 0;
    Register(t.node("R"), [&](INode*) { t.integer("R")->SetValue(++told); });
    t.integer("R")->SetValue(100);
    EXPECT_EQ(told, 64);
    EXPECT_EQ(t.integer("R")->GetValue(), 64);
    t.integer("Other")->SetValue(1);
    EXPECT_EQ(told, 64);
}

TEST(Callback, Rule76TheyMayDeregisterThemselvesAndRegisterOthers) {
    TestMap t(chain);
    int first = 0;
    int second = 0;
    CallbackHandleType handle = 0;
    handle = Register(t.node("R"), [&](INode* node) {
        ++first;
        EXPECT_TRUE(node->DeregisterCallback(handle));
        Register(node, [&](INode*) { ++second; });
    });
    t.integer("R")->SetValue(1);
    t.integer("R")->SetValue(2);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(Callback, Rule76OneDeregisteredByAnotherBeforeItsTurnIsNotCalled) {
    TestMap t(chain);
    int told = 0;
    CallbackHandleType second = 0;
    Register(t.node("R"), [&](INode* node) { node->DeregisterCallback(second); });
    second = Register(t.node("R"), [&](INode*) { ++told; });
    t.integer("R")->SetValue(1);
    EXPECT_EQ(told, 0);
}

TEST(Callback, Rule76AnExceptionReachesNeitherTheOthersNorTheLock) {
    TestMap t(chain);
    int told = 0;
    Register(t.node("R"), [](INode*) { throw 5; });
    Register(
        t.node("R"), [](INode*) { throw std::runtime_error("x"); }, cbPostOutsideLock);
    Register(t.node("R"), [&](INode*) { ++told; });
    Register(
        t.node("R"), [&](INode*) { ++told; }, cbPostOutsideLock);
    t.integer("R")->SetValue(1);
    EXPECT_EQ(told, 2);
    EXPECT_TRUE(isFree(t.map->GetLock()));
}

TEST(Callback, UnknownHandlesAndNullAreRefused) {
    TestMap t(chain);
    EXPECT_FALSE(t.node("R")->DeregisterCallback(42));
    EXPECT_THROW(t.node("R")->RegisterCallback(nullptr), GenICam::InvalidArgumentException);
    EXPECT_THROW(Register(nullptr, [](INode*) {}), GenICam::LogicalErrorException);
    const CallbackHandleType handle = Register(t.node("R"), [](INode*) {});
    EXPECT_FALSE(Deregister(t.node("Far"), handle));
    EXPECT_TRUE(Deregister(t.node("R"), handle));
    EXPECT_FALSE(Deregister(t.node("R"), handle));
}

TEST(Callback, AChangeToldByThePortDuringAWriteJoinsThatCall) {
    TestMap t(chain +
              "<Port Name=\"Q\"/><IntReg "
              "Name=\"OnQ\"><Address>0</Address><Length>8</Length><pPort>Q</pPort></IntReg>");
    std::vector<std::string> told;
    CMemoryPort other;
    t.map->Connect(&other, "Q");
    Register(t.node("OnQ"), [&](INode*) { told.push_back("OnQ"); });
    Register(t.node("R"), [&](INode*) { told.push_back("R"); });
    t.port.onWrite = [&](std::int64_t) {
        other.InvalidateNode();
        EXPECT_TRUE(told.empty());
    };
    t.integer("R")->SetValue(1);
    EXPECT_THAT(told, ElementsAre("OnQ", "R"));
}
