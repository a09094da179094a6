#include "orlixcamera/parameter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "gcbase/gcexception.h"

namespace Orlix::Test {
namespace {

constexpr ParameterTexts Texts{"Gain", "The Gain", "Sets the gain.", "Sets the gain of it all."};

enum class Fruit { Apple = 1, Pear = 5 };
constexpr Detail::EnumerationEntry Fruits[] = {{1, "Apple"}, {5, "Pear"}};

TEST(IntegerParameter, TellsValueRangeAndTexts) {
    const CIntegerParameter parameter(Texts, {-4, 20, 3}, 5);
    EXPECT_TRUE(parameter.IsValid());
    EXPECT_TRUE(parameter.IsReadable());
    EXPECT_TRUE(parameter.IsWritable());
    EXPECT_EQ(parameter.GetValue(), 5);
    EXPECT_EQ(parameter.GetMin(), -4);
    EXPECT_EQ(parameter.GetMax(), 20);
    EXPECT_EQ(parameter.GetInc(), 3);
    EXPECT_EQ(parameter.GetInfo(ParameterInfo_Name), "Gain");
    EXPECT_EQ(parameter.GetInfo(ParameterInfo_DisplayName), "The Gain");
    EXPECT_EQ(parameter.GetInfo(ParameterInfo_ToolTip), "Sets the gain.");
    EXPECT_EQ(parameter.GetInfo(ParameterInfo_Description), "Sets the gain of it all.");
}

TEST(IntegerParameter, AVerifiedValueOutsideTheRangeIsRefusedAndTheOldOneStays) {
    CIntegerParameter parameter(Texts, {1, 4, 1}, 2);
    for (const std::int64_t value :
         {std::int64_t{0}, std::int64_t{5}, std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_THROW(parameter.SetValue(value), GenICam::OutOfRangeException) << value;
    }
    EXPECT_EQ(parameter.GetValue(), 2);
    try {
        parameter.SetValue(7);
        FAIL();
    } catch (const GenICam::OutOfRangeException& error) {
        EXPECT_STREQ(
            error.GetDescription(),
            "The value 7 of parameter Gain is out of range: it must be from 1 to 4 in steps of 1.");
    }
}

TEST(IntegerParameter, AVerifiedValueOffTheIncrementIsRefused) {
    CIntegerParameter parameter(Texts, {-4, 20, 3}, 5);
    parameter.SetValue(-1);
    EXPECT_EQ(parameter.GetValue(), -1);
    EXPECT_THROW(parameter.SetValue(0), GenICam::OutOfRangeException);
}

TEST(IntegerParameter, WithoutVerificationEveryValueIsTaken) {
    CIntegerParameter parameter(Texts, {1, 4, 1}, 2);
    parameter.SetValue(7, false);
    EXPECT_EQ(parameter.GetValue(), 7);
}

TEST(IntegerParameter, WithoutASourceItGivesTheDefaultAndThrowsOnAccess) {
    CIntegerParameter parameter;
    EXPECT_FALSE(parameter.IsValid());
    EXPECT_FALSE(parameter.IsReadable());
    EXPECT_FALSE(parameter.IsWritable());
    EXPECT_EQ(parameter.GetValueOrDefault(12), 12);
    EXPECT_THROW(static_cast<void>(parameter.GetValue()), GenICam::AccessException);
    EXPECT_THROW(parameter.SetValue(1), GenICam::AccessException);
}

TEST(EnumParameter, TakesEntriesByValueAndByName) {
    CEnumParameterT<Fruit> parameter(Texts, Fruits, Fruit::Apple);
    EXPECT_EQ(parameter.GetValue(), Fruit::Apple);
    EXPECT_EQ(parameter.ToString(), "Apple");
    parameter.SetValue(Fruit::Pear);
    EXPECT_EQ(parameter.ToString(), "Pear");
    parameter.FromString("Apple");
    EXPECT_EQ(parameter.GetValue(), Fruit::Apple);
    EXPECT_TRUE(parameter.CanSetValue(Fruit::Pear));
    EXPECT_FALSE(parameter.CanSetValue(static_cast<Fruit>(2)));
    EXPECT_EQ(parameter.GetEntries().size(), 2U);
    EXPECT_EQ(parameter.GetInfo(ParameterInfo_Name), "Gain");
}

TEST(EnumParameter, AVerifiedValueWithoutEntryIsRefusedAndTheOldOneStays) {
    CEnumParameterT<Fruit> parameter(Texts, Fruits, Fruit::Apple);
    try {
        parameter.SetValue(static_cast<Fruit>(2));
        FAIL();
    } catch (const GenICam::OutOfRangeException& error) {
        EXPECT_STREQ(error.GetDescription(),
                     "The value 2 of parameter Gain is out of range: it must be one of Apple, "
                     "Pear.");
    }
    EXPECT_EQ(parameter.GetValue(), Fruit::Apple);
    EXPECT_THROW(parameter.FromString("apple"), GenICam::OutOfRangeException);
    EXPECT_THROW(parameter.FromString(""), GenICam::OutOfRangeException);
}

TEST(EnumParameter, WithoutVerificationEveryValueIsTakenButHasNoName) {
    CEnumParameterT<Fruit> parameter(Texts, Fruits, Fruit::Apple);
    parameter.SetValue(static_cast<Fruit>(2), false);
    EXPECT_EQ(static_cast<int>(parameter.GetValue()), 2);
    EXPECT_THROW(static_cast<void>(parameter.ToString()), GenICam::OutOfRangeException);
}

}  // namespace
}  // namespace Orlix::Test
