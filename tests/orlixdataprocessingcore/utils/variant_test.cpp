#include "orlixdataprocessingcore/utils/variant.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <utility>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "support/allocations.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using namespace Orlix::DataProcessing::Utils;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

constexpr const char* sourceFile = "src/libs/orlixdataprocessingcore/utils/variant_impl.h";

// Tells of a type that is never registered.
class Unregistered : public Orlix::DataProcessing::Utils::IObject {
    ORLIX_OBJECT(Unregistered)
};

// A value class of a module, with Integer as its base.
class Percent : public Integer {
    ORLIX_OBJECT(Percent)
public:
    Percent() = default;
    explicit Percent(int value) : Integer(value) {}
};
ORLIX_REGISTER_VALUE_TYPE(Percent, Integer)

TEST(Variant, WithoutAValueIsInvalid) {
    Variant value;
    EXPECT_FALSE(value.isValid());
    EXPECT_FALSE(value.getValueType().isValid());
    EXPECT_EQ(value.get<Integer>(false), nullptr);
    EXPECT_FALSE(value.getCOW<Integer>(false).isValid());
    const auto thrown = expectThrow<RuntimeException>(
        [&] { static_cast<void>(value.getCOW<Integer>(true)); }, "Variant is not valid.");
    EXPECT_EQ(thrown.sourceFile, sourceFile);
    expectThrow<RuntimeException>([&] { static_cast<void>(value.get<Integer>(true)); },
                                  "Variant is not valid.");
}

TEST(Variant, HoldsACopyOfAValue) {
    const Integer integer(5);
    const Variant value(integer);
    ASSERT_TRUE(value.isValid());
    EXPECT_EQ(value.get<Integer>(true)->get(), 5);
    EXPECT_NE(value.get<Integer>(true), &integer);
    EXPECT_TRUE(value.getValueType() == TypeInfo::getTypeInfo<Integer>(true));
}

TEST(Variant, SharesTheValueOfAHandle) {
    const auto handle = COWPtr<Integer>::make(5);
    const Variant value(handle);
    EXPECT_EQ(value.get<Integer>(true), handle.getConst());
    EXPECT_TRUE(value.getCOW<Integer>(true) == handle);
}

TEST(Variant, TakesOwnershipOfAPointer) {
    auto* integer = new Integer(5);
    const Variant value(integer);
    EXPECT_EQ(value.get<Integer>(true), integer);
}

TEST(Variant, RefusesNullPointers) {
    Integer* null = nullptr;
    expectThrow<InvalidArgumentException>([&] { Variant value(null); },
                                          "Invalid data pointer passed.");
    const auto thrown = expectThrow<InvalidArgumentException>(
        [&] { Variant value{COWPtr<Integer>()}; }, "Invalid data pointer passed.");
    EXPECT_EQ(thrown.sourceFile, sourceFile);
}

TEST(Variant, RefusesValuesOfUnregisteredTypes) {
    expectThrow<InvalidArgumentException>([] { Variant value{Unregistered()}; },
                                          "Type of passed data is not registered.");
    expectThrow<InvalidArgumentException>([] { Variant value(new Unregistered()); },
                                          "Type of passed data is not registered.");
}

TEST(Variant, AskedForAnUnregisteredTypeSaysSo) {
    const Variant value(Integer(5));
    EXPECT_EQ(value.get<Unregistered>(false), nullptr);
    expectThrow<RuntimeException>([&] { static_cast<void>(value.get<Unregistered>(true)); },
                                  "Requested type is not registered.");
}

TEST(Variant, AskedForAnotherTypeSaysSo) {
    Variant value(Integer(5));
    EXPECT_EQ(std::as_const(value).get<Float>(false), nullptr);
    EXPECT_EQ(value.get<Float>(false), nullptr);
    expectThrow<RuntimeException>([&] { static_cast<void>(value.get<Float>(true)); },
                                  "Could not cast variant value to requested type.");
    EXPECT_FALSE(value.getCOW<Float>(false).isValid());
    expectThrow<RuntimeException>([&] { static_cast<void>(value.getCOW<Float>(true)); },
                                  "Could not cast variant data to requested type.");
}

TEST(Variant, GivesItsValueAsABase) {
    Variant value(Percent(50));
    EXPECT_EQ(value.get<Integer>(true)->get(), 50);
    EXPECT_FALSE(value.get<IValue>(true)->hasError(false));
    COWPtr<IValue> base = value.getCOW<IValue>(true);
    EXPECT_TRUE(base->getTypeInfo(true) == TypeInfo::getTypeInfo<Percent>(true));
    COWPtr<Integer> integer = value.getCOW<Integer>(true);
    integer->set(std::int64_t{60});
    EXPECT_TRUE(integer->getTypeInfo(true) == TypeInfo::getTypeInfo<Percent>(true))
        << "the clone is cast again, not sliced";
    EXPECT_EQ(value.get<Integer>(true)->get(), 50);
}

TEST(Variant, CopiesShareUntilOneIsWritten) {
    Variant first(Integer(1));
    Variant second(first);
    EXPECT_EQ(std::as_const(first).get<Integer>(true), std::as_const(second).get<Integer>(true));
    second.get<Integer>(true)->set(std::int64_t{2});
    EXPECT_EQ(std::as_const(first).get<Integer>(true)->get(), 1);
    EXPECT_EQ(std::as_const(second).get<Integer>(true)->get(), 2);
}

TEST(Variant, WritingLeavesTheHandlesOfOthersAlone) {
    Variant value(Integer(1));
    const auto handle = value.getCOW<Integer>(true);
    value.get<Integer>(true)->set(std::int64_t{2});
    EXPECT_EQ(handle->get(), 1);
    EXPECT_EQ(value.get<Integer>(true)->get(), 2);
}

TEST(Variant, AskingForTheWrongTypeCopiesNothing) {
    const auto handle = COWPtr<Integer>::make(1);
    Variant value(handle);
    Variant copy(value);
    EXPECT_EQ(copy.get<String>(false), nullptr);
    EXPECT_EQ(std::as_const(copy).get<Integer>(true), handle.getConst());
}

TEST(Variant, AHandleThatIsLeftAloneWritesInPlace) {
    Variant value(Integer(1));
    Variant copy(value);
    COWPtr<Integer> handle = value.getCOW<Integer>(true);
    const Integer* address = handle.getConst();
    value.reset();
    copy.reset();
    handle->set(std::int64_t{2});
    EXPECT_EQ(handle.getConst(), address);
}

TEST(Variant, AValueThatItHoldsAloneIsMovedOutAndWritableInPlace) {
    Variant value(Integer(5));
    const Integer* place = std::as_const(value).get<Integer>(true);
    COWPtr<Integer> handle = value.moveCOW<Integer>();
    EXPECT_FALSE(value.isValid());
    EXPECT_EQ(handle.operator->(), place);
    EXPECT_EQ(handle->get(), 5);
}

TEST(Variant, AValueThatOthersHoldIsMovedOutAndStaysWithThem) {
    Variant value(Integer(5));
    const Variant other(value);
    COWPtr<Integer> handle = value.moveCOW<Integer>();
    EXPECT_FALSE(value.isValid());
    EXPECT_EQ(handle.getConst(), other.get<Integer>(true));
    handle->set(6);
    EXPECT_EQ(other.get<Integer>(true)->get(), 5);
}

TEST(Variant, AValueOfAnotherTypeIsNotMovedOut) {
    Variant value(Integer(5));
    EXPECT_FALSE(value.moveCOW<String>().isValid());
    EXPECT_EQ(std::as_const(value).get<Integer>(true)->get(), 5);
    Variant none;
    EXPECT_FALSE(none.moveCOW<Integer>().isValid());
}

TEST(Variant, AValueIsMovedOutAsItsBaseAndStillClonedAsAWhole) {
    Variant value(Integer(5));
    COWPtr<IValue> handle = value.moveCOW<IValue>();
    const COWPtr<IValue> shared(handle);
    handle->setError(std::make_shared<DeviceError>("gone", DateTime()));
    EXPECT_NE(object_cast<Integer>(static_cast<IObject*>(handle.operator->())), nullptr);
    EXPECT_FALSE(shared->hasError(true));
}

TEST(Variant, MovingLeavesNothingBehind) {
    Variant first(Integer(1));
    const Integer* address = std::as_const(first).get<Integer>(true);
    Variant second(std::move(first));
    EXPECT_FALSE(first.isValid());  // NOLINT: that is the point
    EXPECT_EQ(std::as_const(second).get<Integer>(true), address);
    first = std::move(second);
    const auto& same = first;
    first = same;
    EXPECT_EQ(std::as_const(first).get<Integer>(true), address);
}

// Has its Integer behind another base.
class IMark {
public:
    virtual ~IMark() = default;
    virtual int getMark() const { return 0; }

protected:
    IMark() = default;
    IMark(const IMark&) = default;
    IMark& operator=(const IMark&) = default;
};
ORLIX_REGISTER_TYPE(IMark)

class Marked : public IMark, public Integer {
    ORLIX_OBJECT(Marked)
public:
    Marked() = default;
    explicit Marked(int value) : Integer(value) {}
    int getMark() const override { return mark; }
    int mark = 17;
};
ORLIX_REGISTER_VALUE_TYPE(Marked, IMark, Integer)

TEST(Variant, AValueKnownByItsSecondBaseIsCastAgainAfterAClone) {
    // Clones are exposed as an Integer here, which does not lie at the start of the object.
    const COWPtr<Integer> held(new Marked(5));
    const Variant value(held);
    COWPtr<Marked> handle = value.getCOW<Marked>(true);
    EXPECT_EQ(handle.getConst()->getMark(), 17);
    handle->mark = 18;
    EXPECT_NE(static_cast<const Integer*>(handle.getConst()), held.getConst()) << "it was cloned";
    EXPECT_EQ(handle.getConst()->getMark(), 18);
    EXPECT_EQ(handle.getConst()->get(), 5);
    EXPECT_EQ(value.get<Marked>(true)->getMark(), 17);
}

TEST(Variant, AHandleThatWasCastStaysSoThroughAVariant) {
    const Variant value(Marked(5));
    const Variant again(value.getCOW<Integer>(true));
    COWPtr<Integer> handle = again.getCOW<Integer>(true);
    handle->set(std::int64_t{6});
    EXPECT_EQ(handle.getConst()->get(), 6);
    EXPECT_TRUE(handle->getTypeInfo(true) == TypeInfo::getTypeInfo<Marked>(true));
    EXPECT_EQ(value.get<Integer>(true)->get(), 5);
}

TEST(Variant, AWriteThatSlicesKnowsTheTypeOfTheCopy) {
    // The handle knows nothing but the base, so that is all that its copy can be.
    Variant value(COWPtr<Integer>(static_cast<Integer*>(new Marked(5))));
    const Variant other(value);
    Integer* written = value.get<Integer>(true);
    ASSERT_NE(written, nullptr);
    written->set(std::int64_t{6});
    EXPECT_EQ(std::as_const(value).get<Integer>(true)->get(), 6);
    EXPECT_TRUE(value.getValueType() == TypeInfo::getTypeInfo<Integer>(true));
    EXPECT_EQ(other.get<Integer>(true)->get(), 5);
    Variant third(other);
    expectThrow<RuntimeException>([&] { static_cast<void>(third.get<Marked>(true)); },
                                  "Could not cast variant value to requested type.");
}

TEST(Variant, WithoutMemorySaysWhatCouldNotBeAllocated) {
    using Orlix::Test::failEachAllocation;
    using Texts = std::set<std::string>;
    const Integer integer(5);
    const auto handle = COWPtr<Integer>::make(5);
    const auto keep = [](const Variant& value) { EXPECT_TRUE(value.isValid()); };
    EXPECT_EQ(failEachAllocation([&] { keep(Variant(integer)); }),
              (Texts{"Could not allocate data.", "Could not allocate data wrapper."}));
    EXPECT_EQ(failEachAllocation([&] { keep(Variant(handle)); }),
              Texts{"Could not allocate data wrapper."});
    // The count of the pointer, and the wrapper.
    for (const int number : {0, 1}) {
        auto* pointer = new Integer(5);
        expectThrow<GenICam::BadAllocException>(
            [&] {
                const Orlix::Test::FailingNew failing(number);
                Variant value(pointer);
            },
            "Could not allocate data wrapper.");
    }
}

TEST(Variant, CopiesLiveOnSeveralThreads) {
    const Variant original(Integer(1));
    const auto work = [](Variant own) {
        for (int i = 0; i < 500; ++i) {
            Variant copy(own);
            copy.get<Integer>(true)->set(std::int64_t{i});
            EXPECT_EQ(std::as_const(own).get<Integer>(true)->get(), 1);
        }
    };
    std::thread first(work, original);
    std::thread second(work, original);
    first.join();
    second.join();
    EXPECT_EQ(original.get<Integer>(true)->get(), 1);
}

}  // namespace
