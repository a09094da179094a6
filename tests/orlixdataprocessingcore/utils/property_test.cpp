#include "orlixdataprocessingcore/utils/property.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Core;
using namespace Orlix::DataProcessing::Utils;
using GenICam::InvalidArgumentException;
using GenICam::PropertyException;
using GenICam::RuntimeException;
using Orlix::DataProcessing::Threading::RecursiveMutex;
using Orlix::Test::expectThrow;

constexpr const char* resetted = "Property is resetted.";

TEST(ResettableProperty, AFreshOneIsResetted) {
    ResettableProperty<Image> property;
    EXPECT_FALSE(property.isSet());
    const auto thrown =
        expectThrow<PropertyException>([&] { static_cast<void>(property.getValue()); }, resetted);
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/utils/property_impl.h");
    expectThrow<PropertyException>([&] { static_cast<void>(property.takeValue()); }, resetted);
    expectThrow<PropertyException>([&] { static_cast<void>(property.getVariant()); }, resetted);
    expectThrow<PropertyException>([&] { static_cast<void>(property.takeVariant()); }, resetted);
    EXPECT_EQ(property.getValueType().getIdentifier(), "Orlix::DataProcessing::Core::Image");
}

TEST(ResettableProperty, SharesItsValue) {
    ResettableProperty<Integer> property;
    const auto value = COWPtr<Integer>::make(5);
    property.setValue(value);
    EXPECT_TRUE(property.isSet());
    EXPECT_TRUE(property.getValue() == value);
    EXPECT_TRUE(property.takeValue() == value);
    EXPECT_TRUE(property.isSet()) << "it does not reset on get";
}

TEST(ResettableProperty, TakenWithResetOnGetItIsEmptyAndTheValueWritableInPlace) {
    ResettableProperty<Integer> property(true);
    property.setValue(std::make_unique<Integer>(5));
    const Integer* address = property.getValue().getConst();
    COWPtr<Integer> taken = property.takeValue();
    EXPECT_FALSE(property.isSet());
    expectThrow<PropertyException>([&] { static_cast<void>(property.getValue()); }, resetted);
    taken->set(std::int64_t{6});
    EXPECT_EQ(taken.getConst(), address) << "no clone";
}

TEST(ResettableProperty, ResetEmptiesIt) {
    ResettableProperty<Integer> property;
    property.setValue(Integer(5));
    property.reset();
    EXPECT_FALSE(property.isSet());
}

TEST(ResettableProperty, RefusesNullValues) {
    ResettableProperty<Integer> property;
    const char* text = "Invalid value pointer passed.";
    const Integer* null = nullptr;
    expectThrow<InvalidArgumentException>([&] { property.setValue(null); }, text);
    expectThrow<InvalidArgumentException>([&] { property.setValue(std::unique_ptr<Integer>()); },
                                          text);
    expectThrow<InvalidArgumentException>([&] { property.setValue(COWPtr<Integer>()); }, text);
}

TEST(ResettableProperty, CopyingForwardsTheValueOrTheResetState) {
    ResettableProperty<Integer> input;
    ResettableProperty<Integer> output;
    input.setValue(Integer(5));
    output = input;
    EXPECT_TRUE(output.getValue() == input.getValue());
    const auto& same = output;
    output = same;
    EXPECT_TRUE(output.isSet());
    input.reset();
    output = input;
    EXPECT_FALSE(output.isSet());
}

TEST(ResettableProperty, SetVariantSharesTheValueOfTheVariant) {
    ResettableProperty<Integer> property;
    const auto value = COWPtr<Integer>::make(5);
    IProperty& seen = property;
    seen.setVariant("", Variant(value));
    EXPECT_TRUE(property.getValue() == value);
    EXPECT_TRUE(property.getVariant().getCOW<Integer>(true) == value);
}

TEST(ResettableProperty, SetVariantRefusesInvalidAndForeignValues) {
    ResettableProperty<Integer> property;
    expectThrow<InvalidArgumentException>([&] { property.setVariant("", Variant()); },
                                          "Invalid variant passed.");
    expectThrow<RuntimeException>([&] { property.setVariant("", Variant(Float(1.0))); },
                                  "Could not cast variant data to requested type.");
    EXPECT_FALSE(property.isSet());
}

// Holds an Integer, but shares it with nobody.
class UnsharedWrapper final : public Variant::IDataWrapper {
public:
    void addRef() noexcept override { ++count_; }
    void release() noexcept override {
        if (--count_ == 0) {
            delete this;
        }
    }
    std::uint64_t useCount() const noexcept override { return count_; }
    IDataWrapper* clone() const override { return new UnsharedWrapper(); }
    const TypeInfo& getValueType() const noexcept override { return type_; }
    const void* getPointer(const TypeInfo& type) const override {
        return type_cast(static_cast<const void*>(&value_), type_, type);
    }
    void* getWritablePointer(const TypeInfo& type) override {
        return type_cast(static_cast<void*>(&value_), type_, type);
    }
    bool isExposedAs(const TypeInfo& type) const noexcept override { return type == type_; }
    COWPtrBase::IObjectWrapper* getObjectWrapper() const noexcept override { return nullptr; }

private:
    Integer value_{5};
    TypeInfo type_ = TypeInfo::getTypeInfo<Integer>(true);
    std::uint64_t count_ = 1;
};

TEST(ResettableProperty, SetVariantRefusesAValueThatCannotBeShared) {
    const Variant value = Variant::adopt(new UnsharedWrapper());
    ResettableProperty<Integer> property;
    const auto thrown = expectThrow<RuntimeException>([&] { property.setVariant("", value); },
                                                      "Variant returned invalid value.");
    EXPECT_EQ(thrown.sourceFile, "src/libs/orlixdataprocessingcore/utils/property_impl.h");
    EXPECT_FALSE(property.isSet());
    ResettableProperty<Float> foreign;
    expectThrow<RuntimeException>([&] { foreign.setVariant("", value); },
                                  "Could not cast variant data to requested type.");
}

TEST(ResettableProperty, TakesAValueOverAndLeavesTheVariantEmpty) {
    ResettableProperty<Integer> property;
    Variant value(Integer(5));
    const Integer* place = std::as_const(value).get<Integer>(true);
    property.takeOver(std::move(value));
    EXPECT_FALSE(value.isValid());
    EXPECT_EQ(property.getValue().getConst(), place);
}

TEST(ResettableProperty, AValueThatDoesNotFitIsNotTakenOver) {
    ResettableProperty<Integer> property;
    Variant text(String("5"));
    expectThrow<RuntimeException>([&] { property.takeOver(std::move(text)); },
                                  "Could not cast variant data to requested type.");
    EXPECT_TRUE(text.isValid());
    expectThrow<InvalidArgumentException>([&] { property.takeOver(Variant()); },
                                          "Invalid variant passed.");
    EXPECT_FALSE(property.isSet());
}

TEST(ResettableProperty, ASubpropertyOfAResettedOneCannotBeSet) {
    ResettableProperty<Integer> property;
    expectThrow<RuntimeException>([&] { property.setVariant("Value", Variant(Integer(1))); },
                                  "Cannot set a subproperty of a resetted property.");
}

TEST(ResettableProperty, ASubpropertyIsSetOnAPrivateCopy) {
    ResettableProperty<String> property;
    const auto value = COWPtr<String>::make("old");
    property.setValue(value);
    property.setVariant("Value", Variant(String("new")));
    EXPECT_EQ(property.getValue().getConst()->get(), "new");
    EXPECT_EQ(value->get(), "old");
    EXPECT_EQ(property.getVariant("Value").getCOW<String>(true).getConst()->get(), "new");
}

TEST(ResettableProperty, UnknownSubpropertiesAreNamed) {
    ResettableProperty<String> property;
    property.setValue(String("x"));
    expectThrow<RuntimeException>([&] { property.setVariant("Nope", Variant(String("y"))); },
                                  "Type \"Orlix::DataProcessing::Core::String\" has no property "
                                  "\"Nope\".");
    expectThrow<InvalidArgumentException>(
        [&] { property.setVariant("Value.", Variant(String("y"))); },
        "Property path \"Value.\" has an empty element.");
}

TEST(ResettableProperty, WithAMutexAValueGoesThroughBothOfAPair) {
    ResettableProperty<Integer> input(std::make_unique<RecursiveMutex>());
    ResettableProperty<Integer> output(std::make_unique<RecursiveMutex>(), true);
    input.setValue(Integer(5));
    output = input;
    EXPECT_TRUE(input.getValue() == output.takeValue());
    EXPECT_FALSE(output.isSet()) << "assigning changes neither mutex nor reset on get";
    const ResettableProperty<Integer> copy(input);
    EXPECT_TRUE(copy.getValue() == input.getValue());
}

// A value that looks at its property when it is destroyed.
class Looking : public String {
public:
    explicit Looking(const std::function<void()>& atEnd) : atEnd_(atEnd) {}
    ~Looking() override { atEnd_(); }
    Looking(const Looking&) = default;

private:
    std::function<void()> atEnd_;
};

TEST(ResettableProperty, WithAMutexAFormerValueGoesWithTheMutexFree) {
    ResettableProperty<String> property(std::make_unique<RecursiveMutex>());
    int seen = 0;
    const auto lookFromAnotherThread = [&] {
        std::thread([&] { seen += property.isSet() ? 1 : 10; }).join();
    };
    property.setValue(COWPtr<String>(std::unique_ptr<String>(new Looking(lookFromAnotherThread))));
    property.setValue(String("next"));
    EXPECT_EQ(seen, 1);
    property.setValue(COWPtr<String>(std::unique_ptr<String>(new Looking(lookFromAnotherThread))));
    property.reset();
    EXPECT_EQ(seen, 11);
}

TEST(ResettableProperty, WithAMutexItIsSafeFromAnyThread) {
    ResettableProperty<Integer> first(std::make_unique<RecursiveMutex>());
    ResettableProperty<Integer> second(std::make_unique<RecursiveMutex>());
    first.setValue(Integer(1));
    second.setValue(Integer(2));
    const auto work = [](ResettableProperty<Integer>& own, ResettableProperty<Integer>& other) {
        for (int i = 0; i < 1000; ++i) {
            own.setValue(Integer(i));
            own = other;
            const std::int64_t value = own.getValue().getConst()->get();
            EXPECT_GE(value, 0);
            EXPECT_TRUE(other.isSet());
        }
    };
    std::thread thread([&] { work(first, second); });
    work(second, first);
    thread.join();
}

}  // namespace
