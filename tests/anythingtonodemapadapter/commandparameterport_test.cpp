#include "anythingtonodemapadapter/commandparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

TEST(CommandParameterPort, RelaysToTheOwner) {
    TestOwner owner;
    const auto port = makeReset(owner, true);
    port->execute(true);
    port->execute(false);
    EXPECT_EQ(owner.resets, 2);
    EXPECT_FALSE(port->isExecuting());
    owner.executing = true;
    EXPECT_TRUE(port->isExecuting());
    EXPECT_EQ(port->getSize(), 0U);
}

TEST(CommandParameterPort, ExecutingNotifiesNobody) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeReset(owner, false);
    port->setObserver(&observer);
    port->execute(false);
    EXPECT_THAT(observer.names, testing::IsEmpty());
}

TEST(CommandParameterPort, IsWriteOnlyAsConstructed) {
    TestOwner owner;
    EXPECT_TRUE(makeReset(owner, true)->isWriteOnly());
    EXPECT_FALSE(makeReset(owner, false)->isWriteOnly());
}

}  // namespace AnythingToNodeMapAdapter::Test
