// The common part of all ports, seen through ports of several kinds.
#include "anythingtonodemapadapter/parameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ParameterPort, KeepsItsTexts) {
    TestOwner owner;
    const auto port = makeSpeed(owner);
    EXPECT_STREQ(port->getName(), "Speed");
    EXPECT_STREQ(port->getDisplayName(), "Speed Of It");
    EXPECT_STREQ(port->getToolTip(), "How fast.");
    EXPECT_STREQ(port->getDescription(), "How fast it is.");
    EXPECT_STREQ(port->getVisibility(), "Beginner");
}

TEST(ParameterPort, SetVisibilityReplacesTheWordAsItStands) {
    CategoryParameterPort port("Root");
    EXPECT_STREQ(port.getVisibility(), "Expert");
    port.setVisibility("Guru");
    EXPECT_STREQ(port.getVisibility(), "Guru");
}

TEST(ParameterPort, ChangedAvailabilityReachesTheObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    port->setAvailable(true);
    EXPECT_THAT(observer.names, IsEmpty());
    port->setAvailable(false);
    EXPECT_FALSE(port->isAvailable());
    EXPECT_THAT(observer.names, ElementsAre("Speed"));
}

TEST(ParameterPort, AvailabilityWithoutARegisterIsStoredSilently) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner, {true, true, false, true});
    port->setObserver(&observer);
    port->setAvailable(false);
    EXPECT_FALSE(port->isAvailable());
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(ParameterPort, ChangedWritabilityReachesTheObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeEnabled(owner, {true, true, false, true});
    port->setObserver(&observer);
    port->setWritable(true);
    port->setWritable(false);
    port->setWritable(false);
    EXPECT_FALSE(port->isWritable());
    EXPECT_THAT(observer.names, ElementsAre("Enabled"));
}

TEST(ParameterPort, WritabilityWithoutARegisterIsStoredSilently) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeEnabled(owner, {true, true, true, false});
    port->setObserver(&observer);
    port->setWritable(false);
    EXPECT_FALSE(port->isWritable());
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(ParameterPort, ASecondObserverReplacesTheFirstAndNullClearsIt) {
    TestOwner owner;
    CountingObserver first;
    CountingObserver second;
    const auto port = makeSpeed(owner);
    port->setObserver(&first);
    port->setObserver(&second);
    port->notify();
    port->setObserver(nullptr);
    port->notify();
    EXPECT_THAT(first.names, IsEmpty());
    EXPECT_THAT(second.names, ElementsAre("Speed"));
}

TEST(ParameterPort, FlagsAreThoseOfTheConstructor) {
    TestOwner owner;
    const auto port = makeColor(owner, {false, true, false, true});
    EXPECT_FALSE(port->isAvailable());
    EXPECT_TRUE(port->isWritable());
    EXPECT_FALSE(port->hasAvailabilityRegister());
    EXPECT_TRUE(port->hasLockRegister());
}

}  // namespace AnythingToNodeMapAdapter::Test
