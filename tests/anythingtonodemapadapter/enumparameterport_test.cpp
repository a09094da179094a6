#include "anythingtonodemapadapter/enumparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

TEST(EnumParameterPort, ReadsAndWritesTheIntegerBehindTheEnumerator) {
    TestOwner owner;
    const auto port = makeColor(owner);
    EXPECT_EQ(port->getValue(), 1);
    port->setValue(7, true);
    EXPECT_EQ(owner.color, Blue);
    EXPECT_EQ(port->getSize(), 4U);
}

TEST(EnumParameterPort, UnsignedValuesStayPositive) {
    TestOwner owner;
    EXPECT_EQ(makeFormat(owner)->getValue(), 0x82180044);
}

TEST(EnumParameterPort, NotifiesOfALoudChangeOnly) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeColor(owner);
    port->setObserver(&observer);
    port->setValue(Green, false);
    port->setValue(Blue, true);
    EXPECT_THAT(observer.names, testing::IsEmpty());
    EXPECT_EQ(owner.setterCalls, 2);
    port->setValue(Red, false);
    EXPECT_THAT(observer.names, testing::ElementsAre("Color"));
}

TEST(EnumParameterPort, ATypedChangeReachesTheObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeColor(owner);
    port->setObserver(&observer);
    EXPECT_EQ(port->getTypedValue(), Green);
    port->setTypedValue(Blue);
    EXPECT_EQ(owner.color, Blue);
    EXPECT_THAT(observer.names, testing::ElementsAre("Color"));
    port->setTypedValue(Blue);
    EXPECT_EQ(owner.setterCalls, 2);
    EXPECT_THAT(observer.names, testing::SizeIs(1));
}

}  // namespace AnythingToNodeMapAdapter::Test
