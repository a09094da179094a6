#include "orlixdataprocessingcore/utils/cowptr.h"

#include <gtest/gtest.h>

#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/value.h"
#include "orlixdataprocessingcore/expectthrow.h"

namespace {

using namespace Orlix::DataProcessing::Utils;
using GenICam::BadAllocException;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Orlix::DataProcessing::Core::Integer;
using Orlix::DataProcessing::Core::IValue;
using Orlix::Test::expectThrow;
using Wrapper = COWPtrBase::IObjectWrapper;

constexpr const char* sourceFile = "src/libs/orlixdataprocessingcore/utils/cowptr_impl.h";

struct NullCloner {
    static Integer* clone(const Integer&) { return nullptr; }
};
struct ConstCloner {
    static const Integer* clone(const Integer& object) { return new Integer(object); }
};
struct ThrowingCloner {
    static Integer* clone(const Integer&) { throw std::bad_alloc(); }
};

// A control object whose clones are as a test wants them.
class FakeWrapper final : public Wrapper {
public:
    explicit FakeWrapper(Clone clone) : clone_(clone) {}
    bool isConst() const noexcept override { return true; }
    void addRef() noexcept override { ++count_; }
    void release() noexcept override {
        if (--count_ == 0) {
            delete this;
        }
    }
    std::uint64_t useCount() const noexcept override { return count_; }
    Clone clone() const override { return clone_; }
    void* getPointer(const TypeInfo&) const override { return nullptr; }

private:
    Clone clone_;
    std::uint64_t count_ = 1;
};

// A writable clone that answers no cast.
class WritableWrapper final : public Wrapper {
public:
    bool isConst() const noexcept override { return false; }
    void addRef() noexcept override {}
    void release() noexcept override { delete this; }
    std::uint64_t useCount() const noexcept override { return 1; }
    Clone clone() const override { return {}; }
    void* getPointer(const TypeInfo&) const override { return nullptr; }
};

TEST(COWPtr, AccessThroughAnEmptyHandleThrows) {
    COWPtr<Integer> empty;
    const COWPtr<Integer>& constant = empty;
    EXPECT_FALSE(empty.isValid());
    const auto thrown = expectThrow<RuntimeException>([&] { static_cast<void>(*empty); },
                                                      "Cannot dereference a nullptr.");
    EXPECT_EQ(thrown.sourceFile, sourceFile);
    expectThrow<RuntimeException>([&] { static_cast<void>(*constant); },
                                  "Cannot dereference a nullptr.");
    expectThrow<RuntimeException>([&] { static_cast<void>(empty->get()); },
                                  "Cannot access nullptr object.");
    expectThrow<RuntimeException>([&] { static_cast<void>(constant->get()); },
                                  "Cannot access nullptr object.");
    EXPECT_EQ(empty.getConst(), nullptr);
}

TEST(COWPtr, RefusesANullObject) {
    Integer* null = nullptr;
    expectThrow<InvalidArgumentException>([&] { COWPtr<Integer> handle(null); },
                                          "No object passed.");
}

TEST(COWPtr, TheFirstWriterOfASharedObjectGetsAPrivateCopy) {
    COWPtr<Integer> first(new Integer(1));
    COWPtr<Integer> second(first);
    EXPECT_TRUE(first == second);
    second->set(std::int64_t{2});
    EXPECT_EQ(first.getConst()->get(), 1);
    EXPECT_EQ(second.getConst()->get(), 2);
}

TEST(COWPtr, AloneItWritesInPlace) {
    for (COWPtr<Integer> handle : {COWPtr<Integer>(new Integer(1)), COWPtr<Integer>::make(1)}) {
        COWPtr<Integer> alone(std::move(handle));
        const Integer* address = alone.getConst();
        alone->set(std::int64_t{2});
        EXPECT_NE(alone.getConst(), nullptr);
        const Integer* after = alone.getConst();
        alone->set(std::int64_t{3});
        EXPECT_EQ(alone.getConst(), after);
        static_cast<void>(address);
    }
    COWPtr<Integer> alone(new Integer(1));
    const Integer* address = alone.getConst();
    alone->set(std::int64_t{2});
    EXPECT_EQ(alone.getConst(), address);
}

TEST(COWPtr, AloneOnAConstObjectItClones) {
    COWPtr<Integer> handle(new const Integer(1));
    const Integer* address = handle.getConst();
    handle->set(std::int64_t{2});
    EXPECT_NE(handle.getConst(), address);
    EXPECT_EQ(handle.getConst()->get(), 2);
    const Integer* copy = handle.getConst();
    handle->set(std::int64_t{3});
    EXPECT_EQ(handle.getConst(), copy) << "the clone is not const any more";
}

TEST(COWPtr, ConstAccessNeverClones) {
    const COWPtr<Integer> first(new Integer(1));
    const COWPtr<Integer> second(first);
    EXPECT_EQ(&*first, &*second);
    EXPECT_EQ(first->get(), second->get());
    EXPECT_EQ(first.getConst(), second.getConst());
}

TEST(COWPtr, MovingLeavesNothingBehind) {
    COWPtr<Integer> first = COWPtr<Integer>::make(1);
    COWPtr<Integer> second(std::move(first));
    EXPECT_FALSE(first.isValid());  // NOLINT: that is the point
    first = std::move(second);
    EXPECT_EQ(first.getConst()->get(), 1);
    first.reset();
    EXPECT_FALSE(first.isValid());
}

TEST(COWPtr, SelfAssignmentKeepsTheObject) {
    COWPtr<Integer> handle = COWPtr<Integer>::make(1);
    const auto& same = handle;
    handle = same;
    EXPECT_EQ(handle.getConst()->get(), 1);
}

template <typename Exception, typename Cloner>
void expectFailedClone(Cloner cloner, const char* text) {
    COWPtr<Integer> handle(new Integer(1), cloner);
    const COWPtr<Integer> other(handle);
    const auto thrown = expectThrow<Exception>([&] { handle.makeWritable(); }, text);
    EXPECT_EQ(thrown.sourceFile, sourceFile);
    EXPECT_TRUE(handle == other) << "it still shares the old object";
}

TEST(COWPtr, AFailedCloneLeavesTheHandleAsItWas) {
    expectFailedClone<BadAllocException>(NullCloner(), "Could not clone object.");
    expectFailedClone<BadAllocException>(ThrowingCloner(), "Could not clone object.");
    expectFailedClone<RuntimeException>(ConstCloner(), "Cloned object is const but must not be.");
}

void expectUselessClone(Wrapper::Clone clone, bool casted, const char* text) {
    Integer object(1);
    auto handle = COWPtr<Integer>::adopt(new FakeWrapper(clone), &object, casted);
    const auto thrown = expectThrow<RuntimeException>([&] { handle.makeWritable(); }, text);
    EXPECT_EQ(thrown.sourceFile, sourceFile);
    EXPECT_EQ(handle.getConst(), &object);
}

TEST(COWPtr, AUselessCloneIsRefused) {
    expectUselessClone({}, false, "Could not clone object.");
    expectUselessClone({new FakeWrapper({}), nullptr, false}, false,
                       "Cloned object is still const.");
    const char* noCast = "Cannot cast pointer of cloned object to COW pointer.";
    expectUselessClone({new WritableWrapper(), nullptr, false}, true, noCast);
    expectUselessClone({new WritableWrapper(), nullptr, true}, false, noCast);
    expectUselessClone({new WritableWrapper(), nullptr, false}, false,
                       "Could not get pointer of cloned object.");
}

// A class that nothing registers.
struct Plain {};

TEST(COWPtr, ACloneCannotBeCastToAnUnregisteredType) {
    Plain object;
    const Wrapper::Clone clone{new WritableWrapper(), nullptr, true};
    auto handle = COWPtr<Plain>::adopt(new FakeWrapper(clone), &object, false);
    expectThrow<RuntimeException>([&] { handle.makeWritable(); },
                                  "Cannot cast pointer of cloned object to COW pointer.");
    EXPECT_EQ(handle.getConst(), &object);
}

TEST(COWPtr, TellsItsOwnType) {
    const COWPtr<Integer> handle = COWPtr<Integer>::make(1);
    const TypeInfo type = handle.getTypeInfo(true);
    EXPECT_EQ(type.getIdentifier(),
              "Orlix::DataProcessing::Utils::COWPtr<"
              "Orlix::DataProcessing::Core::Integer>");
    EXPECT_TRUE(type.canConvert(TypeInfo::getTypeInfo<COWPtrBase>(true)));
    EXPECT_EQ(object_cast<COWPtrBase>(&handle), &handle);
}

TEST(COWPtr, TheCopyOfAnUnregisteredClassWorksToo) {
    COWPtr<std::vector<double>> first(new std::vector<double>{1.0});
    COWPtr<std::vector<double>> second(first);
    second->push_back(2.0);
    EXPECT_EQ(first.getConst()->size(), 1U);
    EXPECT_EQ(second.getConst()->size(), 2U);
}

TEST(COWPtr, HandlesOfOneObjectLiveOnSeveralThreads) {
    const COWPtr<Integer> original = COWPtr<Integer>::make(1);
    const auto work = [](COWPtr<Integer> own) {
        for (int i = 0; i < 1000; ++i) {
            COWPtr<Integer> copy(own);
            copy->set(std::int64_t{i});
            EXPECT_EQ(own.getConst()->get(), 1);
        }
    };
    std::thread first(work, original);
    std::thread second(work, original);
    first.join();
    second.join();
    EXPECT_EQ(original->get(), 1);
}

// Whoever is left alone writes in place, behind all that the others have read.
TEST(COWPtr, TheLastHolderWritesBehindAllReads) {
    for (int i = 0; i < 200; ++i) {
        COWPtr<Integer> handle = COWPtr<Integer>::make(1);
        std::thread reader([own = handle] { EXPECT_EQ(own->get(), 1); });
        handle->set(std::int64_t{2});
        reader.join();
    }
}

}  // namespace
