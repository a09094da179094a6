// Boolean, Integer, Float and String: what they have in common, and their own ranges.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <type_traits>

#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using Orlix::Test::expectThrow;

std::shared_ptr<IError> makeError() {
    return std::make_shared<InvalidValueError>("Bad.", DateTime::now());
}

template <typename T>
class Scalar : public testing::Test {};

struct Names {
    template <typename T>
    static std::string GetName(int) {
        const std::string identifier = TypeInfo::getTypeInfo<T>(true).getIdentifier().str();
        return identifier.substr(identifier.rfind(':') + 1);
    }
};

using Types = testing::Types<Boolean, Integer, Float, String>;
TYPED_TEST_SUITE(Scalar, Types, Names);

TYPED_TEST(Scalar, HasNoErrorAtFirst) {
    const TypeParam value;
    EXPECT_FALSE(value.hasError(true));
    EXPECT_EQ(value.getError(true), nullptr);
}

TYPED_TEST(Scalar, CarriesAnErrorInPlaceOfItsData) {
    const auto error = makeError();
    TypeParam value(error);
    EXPECT_TRUE(value.hasError(false));
    EXPECT_EQ(value.getError(false), error);
    expectThrow<GenICam::RuntimeException>([&] { static_cast<void>(value.get()); },
                                           Names::GetName<TypeParam>(0) + " is in error state.");
    value.set(std::remove_cvref_t<decltype(value.get())>());
    EXPECT_FALSE(value.hasError(false));
    EXPECT_NO_THROW(static_cast<void>(value.get()));
}

TYPED_TEST(Scalar, RefusesANullError) {
    TypeParam value;
    const std::shared_ptr<IError> null;
    expectThrow<GenICam::InvalidArgumentException>([&] { value.setError(null); },
                                                   "Invalid error pointer passed.");
    expectThrow<GenICam::InvalidArgumentException>([&] { TypeParam other(null); },
                                                   "Invalid error pointer passed.");
}

TYPED_TEST(Scalar, CopiesAndMovesWithItsError) {
    TypeParam value(makeError());
    const TypeParam copy(value);
    EXPECT_EQ(copy.getError(false), value.getError(false));
    const TypeParam moved(std::move(value));
    EXPECT_EQ(moved.getError(false), copy.getError(false));
}

TYPED_TEST(Scalar, HasADefaultInTheRegistry) {
    const auto type = TypeInfo::getTypeInfo<TypeParam>(true);
    EXPECT_TRUE(type.createDefault().getValueType() == type);
    EXPECT_EQ(type.getSize(), sizeof(TypeParam));
}

TEST(Boolean, HoldsWhatItIsGiven) {
    EXPECT_TRUE(Boolean(true).get());
    EXPECT_FALSE(Boolean().get());
}

TEST(Float, HoldsWhatItIsGiven) {
    EXPECT_EQ(Float(0.25).get(), 0.25);
}

TEST(String, HoldsWhatItIsGiven) {
    gcstring text("a text that is too long for the small buffer");
    EXPECT_EQ(String(text).get(), text);
    const gcstring copy(text);
    EXPECT_EQ(String(std::move(text)).get(), copy);
    EXPECT_EQ(String().get(), "");
}

TEST(Integer, HoldsSignedAndUnsignedValues) {
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    constexpr auto highest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(Integer(lowest).get(), lowest);
    EXPECT_EQ(Integer(highest).getUnsigned(), highest);
    EXPECT_EQ(Integer(5).get(), 5);
    EXPECT_EQ(Integer(std::uint8_t{5}).getUnsigned(), 5U);
}

TEST(Integer, ReadingAValueThatDoesNotFitThrows) {
    expectThrow<GenICam::OutOfRangeException>(
        [] { static_cast<void>(Integer(std::numeric_limits<std::uint64_t>::max()).get()); },
        "Integer 18446744073709551615 does not fit into a signed 64-bit integer.");
    expectThrow<GenICam::OutOfRangeException>(
        [] { static_cast<void>(Integer(-1).getUnsigned()); },
        "Integer -1 does not fit into a unsigned 64-bit integer.");
    EXPECT_TRUE(Integer(-1).isNegative());
    EXPECT_TRUE(Integer(~std::uint64_t{0}).isAboveSigned());
    EXPECT_FALSE(Integer(std::uint64_t{1}).isAboveSigned());
}

}  // namespace
