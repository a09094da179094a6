#include "anythingtonodemapadapter/enumparameterport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

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

TEST(EnumParameterPort, AValueOfMoreThan32BitsIsRefusedAndNotCut) {
    TestOwner owner;
    CountingObserver observer;
    const auto color = makeColor(owner);
    const auto format = makeFormat(owner);
    color->setObserver(&observer);
    // Cut, the first would be Blue, the last the present format.
    for (const std::int64_t value : {4294967303, -1L}) {
        for (const bool silent : {false, true}) {
            try {
                color->setValue(value, silent);
                FAIL() << "no exception for " << value;
            } catch (const GenICam::OutOfRangeException& e) {
                EXPECT_EQ(std::string(e.GetDescription()),
                          "The value " + std::to_string(value) +
                              " of parameter Color is out of range: it must be a number of 32 "
                              "bits.");
            }
        }
    }
    EXPECT_THROW(format->setValue(0x182180044, true), GenICam::OutOfRangeException);
    EXPECT_EQ(owner.setterCalls, 0);
    EXPECT_THAT(observer.names, testing::IsEmpty());
    format->setValue(0xFFFFFFFF, true);
    EXPECT_EQ(owner.format, 0xFFFFFFFFU);
}

// An enumeration whose numbers have a sign.
class Signed {
public:
    enum Step : std::int32_t { Back = -1, Forth = 1 };
    Step getStep() const { return step; }
    void setStep(Step value) { step = value; }
    Step step = Forth;
};

TEST(EnumParameterPort, SignedEnumerationsTakeNegativeNumbers) {
    Signed owner;
    EnumParameterPortRelay<Signed::Step, Signed, &Signed::getStep, &Signed::setStep> port(
        owner, "Step", "", "", "", "Expert", true, true, false, false);
    port.setValue(-1, true);
    EXPECT_EQ(owner.step, Signed::Back);
    EXPECT_EQ(port.getValue(), -1);
    EXPECT_THROW(port.setValue(0xFFFFFFFF, true), GenICam::OutOfRangeException);
    EXPECT_EQ(owner.step, Signed::Back);
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
