#include "orlixdataprocessingcore/core/array.h"

#include <gtest/gtest.h>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

std::shared_ptr<IError> makeError() {
    return std::make_shared<InvalidValueError>("Bad.", DateTime::now());
}

Array<Integer> makeNumbers() {
    return Array<Integer>({Integer(1), Integer(2), Integer(3)});
}

std::int64_t getNumber(const IArray& array, std::size_t index) {
    const Variant element = array.getElement(index);
    return element.get<Integer>(true)->get();
}

// An element class derived from that of another array.
class Count : public Integer {
    ORLIX_OBJECT(Count)
public:
    Count() = default;
    explicit Count(int value) : Integer(value) {}
};
ORLIX_REGISTER_VALUE_TYPE(Count, Integer)
ORLIX_REGISTER_VALUE_TYPE(Array<Count>, IArray)

TEST(Array, ReadsAndWritesElementsAsVariants) {
    Array<Integer> array = makeNumbers();
    EXPECT_EQ(array.getSize(), 3U);
    EXPECT_EQ(getNumber(array, 2), 3);
    array.setElement(2, Variant(Integer(30)));
    EXPECT_EQ(getNumber(array, 2), 30);
    EXPECT_EQ(array.at(2).get(), 30);
    EXPECT_EQ(array.getElementType().getIdentifier(), "Orlix::DataProcessing::Core::Integer");
}

TEST(Array, AnIndexEqualToTheSizeIsInvalid) {
    Array<Integer> array = makeNumbers();
    const auto thrown = expectThrow<InvalidArgumentException>(
        [&] { static_cast<void>(array.getElement(3)); }, "Invalid index passed.");
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/core/array_impl.h");
    expectThrow<InvalidArgumentException>([&] { array.setElement(3, Variant(Integer(1))); },
                                          "Invalid index passed.");
    expectThrow<InvalidArgumentException>([&] { static_cast<void>(Array<Float>().at(0)); },
                                          "Invalid index passed.");
}

TEST(Array, InTheErrorStateEveryElementAccessSaysSo) {
    Array<Integer> array = makeNumbers();
    array.setError(makeError());
    EXPECT_TRUE(array.hasError(false));
    EXPECT_EQ(array.getSize(), 0U);
    const char* text = "Array is in error state.";
    expectThrow<RuntimeException>([&] { static_cast<void>(array.getElement(99)); }, text);
    expectThrow<RuntimeException>([&] { array.setElement(99, Variant()); }, text);
    expectThrow<RuntimeException>([&] { array.at(99) = Integer(1); }, text);
}

TEST(Array, RefusesANullError) {
    expectThrow<InvalidArgumentException>([] { makeNumbers().setError(nullptr); },
                                          "Invalid error pointer passed.");
    expectThrow<InvalidArgumentException>([] { Array<Integer> array{std::shared_ptr<IError>()}; },
                                          "Invalid error pointer passed.");
}

TEST(Array, RefusesInvalidAndForeignElements) {
    Array<Integer> array = makeNumbers();
    expectThrow<InvalidArgumentException>([&] { array.setElement(0, Variant()); },
                                          "The given value is invalid.");
    expectThrow<RuntimeException>([&] { array.setElement(0, Variant(Float(1.0))); },
                                  "Could not cast variant value to requested type.");
    EXPECT_EQ(getNumber(array, 0), 1);
}

TEST(Array, WritingAnElementOfACopyLeavesTheOtherUnchanged) {
    const Array<Integer> original = makeNumbers();
    Array<Integer> copy(original);
    EXPECT_EQ(&original.at(0), &std::as_const(copy).at(0)) << "copies share their elements";
    copy.setElement(0, Variant(Integer(10)));
    EXPECT_EQ(getNumber(original, 0), 1);
    EXPECT_EQ(getNumber(copy, 0), 10);
}

TEST(Array, ACloneThroughItsHandleSharesTheElementsUntilWritten) {
    const auto original = COWPtr<Array<Integer>>::make(makeNumbers());
    COWPtr<Array<Integer>> copy(original);
    copy.makeWritable();
    EXPECT_NE(original.getConst(), copy.getConst());
    EXPECT_EQ(&original->at(0), &copy.getConst()->at(0));
    copy->at(0) = Integer(10);
    EXPECT_EQ(original->at(0).get(), 1);
    EXPECT_EQ(copy.getConst()->at(0).get(), 10);
}

TEST(Array, AssignmentTakesOverDataAndError) {
    Array<Integer> target{makeError()};
    const Array<Integer> good = makeNumbers();
    target.assign(good);
    EXPECT_FALSE(target.hasError(false));
    EXPECT_EQ(&std::as_const(target).at(0), &good.at(0)) << "shared, not copied";
    const auto error = makeError();
    const Array<Integer> bad{error};
    target.assign(bad);
    EXPECT_EQ(target.getError(false), error);
    EXPECT_EQ(target.getSize(), 0U);
}

TEST(Array, AssignmentToItselfDoesNothing) {
    Array<Integer> array = makeNumbers();
    array.assign(array);
    EXPECT_EQ(getNumber(array, 1), 2);
}

TEST(Array, AssignmentFromAnotherElementTypeIsRefused) {
    Array<Integer> numbers = makeNumbers();
    const Array<String> texts({String("a")});
    expectThrow<InvalidArgumentException>(
        [&] { numbers.assign(texts); },
        "Data in the given array is not compatible with this array.");
    EXPECT_EQ(numbers.getSize(), 3U);
}

TEST(Array, AssignmentFromADerivedElementTypeCopiesTheElements) {
    Array<Integer> numbers = makeNumbers();
    const Array<Count> counts({Count(7), Count(8)});
    numbers.assign(counts);
    EXPECT_EQ(numbers.getSize(), 2U);
    EXPECT_EQ(getNumber(numbers, 1), 8);
    Array<Count> derived;
    expectThrow<InvalidArgumentException>(
        [&] { derived.assign(numbers); },
        "Data in the given array is not compatible with this array.");
}

TEST(Array, TellsOfTheErrorsOfItsElementsWhenAsked) {
    Array<Integer> array = makeNumbers();
    const auto error = makeError();
    array.at(1).setError(error);
    EXPECT_FALSE(array.hasError(false));
    EXPECT_TRUE(array.hasError(true));
    EXPECT_EQ(array.getError(true), error);
}

TEST(Array, IsAValueOfAVariant) {
    const Variant value(makeNumbers());
    EXPECT_EQ(value.get<IArray>(true)->getSize(), 3U);
    EXPECT_FALSE(value.get<IValue>(true)->hasError(true));
    EXPECT_EQ(value.getValueType().getIdentifier(),
              "Orlix::DataProcessing::Core::Array<Orlix::DataProcessing::Core::Integer>");
}

}  // namespace
