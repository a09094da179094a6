#include "anythingtonodemapadapter/booleanparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

TEST(BooleanParameterPort, RelaysToTheOwner) {
    TestOwner owner;
    const auto port = makeEnabled(owner);
    EXPECT_TRUE(port->getValue());
    port->setValue(false, true);
    EXPECT_FALSE(owner.enabled);
    EXPECT_EQ(port->getSize(), 1U);
}

TEST(BooleanParameterPort, NotifiesOfALoudChangeOnly) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeEnabled(owner);
    port->setObserver(&observer);
    port->setValue(true, false);
    port->setValue(false, true);
    EXPECT_THAT(observer.names, testing::IsEmpty());
    EXPECT_EQ(owner.setterCalls, 2);
    port->setValue(true, false);
    EXPECT_THAT(observer.names, testing::ElementsAre("Enabled"));
}

}  // namespace AnythingToNodeMapAdapter::Test
