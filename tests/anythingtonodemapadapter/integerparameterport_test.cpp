#include "anythingtonodemapadapter/integerparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "testowner.h"

namespace AnythingToNodeMapAdapter::Test {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(IntegerParameterPort, CarriesRangeRepresentationAndUnit) {
    TestOwner owner;
    const auto port = makeOffset(owner);
    EXPECT_EQ(port->getMin(), -100);
    EXPECT_EQ(port->getMax(), 4294967295);
    EXPECT_EQ(port->getInc(), 5);
    EXPECT_STREQ(port->getRepresentation(), "Linear");
    EXPECT_STREQ(port->getUnit(), "mm");
    EXPECT_STREQ(makeSpeed(owner)->getUnit(), "");
    EXPECT_EQ(port->getSize(), 8U);
}

TEST(IntegerParameterPort, IsSignedAsItsTypeIs) {
    TestOwner owner;
    EXPECT_TRUE(makeOffset(owner)->isSigned());
    EXPECT_FALSE(makeSpeed(owner)->isSigned());
}

TEST(IntegerParameterPort, ReadsThroughTheGetter) {
    TestOwner owner;
    owner.speed = 42;
    EXPECT_EQ(makeSpeed(owner)->getValue(), 42);
    EXPECT_EQ(makeOffset(owner)->getValue(), -5);
    owner.speed = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(makeSpeed(owner)->getValue(), -1);
}

TEST(IntegerParameterPort, ChangedValueReachesSetterAndObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    port->setValue(11, false);
    EXPECT_EQ(owner.speed, 11U);
    EXPECT_THAT(observer.names, ElementsAre("Speed"));
}

TEST(IntegerParameterPort, PresentValueCallsTheSetterButNoObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    port->setValue(10, false);
    EXPECT_EQ(owner.setterCalls, 1);
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(IntegerParameterPort, SilentChangeNeverCallsTheObserver) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    port->setValue(11, true);
    EXPECT_EQ(owner.speed, 11U);
    EXPECT_THAT(observer.names, IsEmpty());
}

TEST(IntegerParameterPort, ExceptionOfTheSetterPassesAndNothingIsNotified) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    try {
        port->setValue(0, false);
        FAIL() << "no exception";
    } catch (const GenICam::RuntimeException& e) {
        EXPECT_STREQ(e.GetDescription(), "Speed must be greater than 0.");
    }
    EXPECT_EQ(owner.speed, 10U);
    EXPECT_THAT(observer.names, IsEmpty());
}

// Keeps what it is asked for only up to a limit.
class ClampingOwner {
public:
    std::int64_t getValue() const { return value; }
    void setValue(std::int64_t requested) { value = requested > 100 ? 100 : requested; }

    std::int64_t value = 100;
};

TEST(IntegerParameterPort, TheRequestedValueDecidesAboutTheNotification) {
    ClampingOwner owner;
    CountingObserver observer;
    IntegerParameterPortRelay<std::int64_t, ClampingOwner, &ClampingOwner::getValue,
                              &ClampingOwner::setValue>
        port(owner, "Value", "", "", "", "Expert", true, true, true, true, 0, 1000, 1, "Linear");
    port.setObserver(&observer);
    port.setValue(200, false);
    EXPECT_EQ(owner.value, 100);
    EXPECT_THAT(observer.names, ElementsAre("Value"));
}

TEST(IntegerParameterPort, TheMaximumCanBeMovedAlsoBelowTheMinimum) {
    TestOwner owner;
    CountingObserver observer;
    const auto port = makeSpeed(owner);
    port->setObserver(&observer);
    port->setMax(-1);
    EXPECT_EQ(port->getMax(), -1);
    EXPECT_THAT(observer.names, IsEmpty());
    port->notify();
    EXPECT_THAT(observer.names, ElementsAre("Speed"));
}

TEST(IntegerParameterPort, ValidatesNothing) {
    TestOwner owner;
    makeSpeed(owner)->setValue(2000, true);
    EXPECT_EQ(owner.speed, 2000U);
}

}  // namespace AnythingToNodeMapAdapter::Test
