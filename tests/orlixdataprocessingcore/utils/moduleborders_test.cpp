// Types, values and exceptions between this program, a linked module and one that is loaded at
// run time, each compiled apart with hidden symbols.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "typemodule/typemodule.h"

namespace TypeModule {

ORLIX_REGISTER_VALUE_TYPE(Shared, Integer)

}  // namespace TypeModule

namespace {

using namespace TypeModule;
using Orlix::DataProcessing::Utils::COWPtr;
using Orlix::DataProcessing::Utils::TypeInfo;
using Orlix::Test::expectThrow;

constexpr const char* foreignName = "TypeModule::Foreign";

// The module stays loaded, as all modules with types do.
template <typename Function>
Function* getLoaded(const char* name) {
    static void* module = dlopen(TYPEMODULE_LOADED_PATH, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(module, nullptr) << dlerror();
    return module != nullptr ? reinterpret_cast<Function*>(dlsym(module, name)) : nullptr;
}

TEST(ModuleBorders, ATypeOfALinkedModuleIsKnownHere) {
    Variant value;
    linkedMakeForeign(21, &value);
    ASSERT_TRUE(value.isValid());
    EXPECT_EQ(value.getValueType().getIdentifier(), foreignName);
    EXPECT_EQ(std::as_const(value).get<Shared>(true)->getDouble(), -42);
    EXPECT_EQ(std::as_const(value).get<Integer>(true)->get(), 21);
}

TEST(ModuleBorders, ATypeOfALoadedModuleIsTheSameAsThatOfTheLinkedOne) {
    auto* const makeForeign = getLoaded<MakeForeign>("loadedMakeForeign");
    ASSERT_NE(makeForeign, nullptr);
    Variant loaded;
    makeForeign(4, &loaded);
    Variant linked;
    linkedMakeForeign(4, &linked);
    EXPECT_TRUE(loaded.getValueType() == linked.getValueType());
    EXPECT_EQ(linkedReadShared(&loaded), -8);
}

TEST(ModuleBorders, AValueOfThisProgramIsReadInALoadedModule) {
    auto* const readShared = getLoaded<ReadShared>("loadedReadShared");
    ASSERT_NE(readShared, nullptr);
    const Variant value(Shared(21));
    EXPECT_EQ(readShared(&value), 42);
    const Variant wrong(Integer(21));
    expectThrow<GenICam::RuntimeException>([&] { readShared(&wrong); },
                                           "Could not cast variant value to requested type.");
}

TEST(ModuleBorders, AValueOfAModuleIsClonedByItsModule) {
    Variant value;
    linkedMakeForeign(1, &value);
    Variant copy(value);
    COWPtr<Shared> handle = copy.getCOW<Shared>(true);
    handle->set(std::int64_t{5});
    EXPECT_EQ(handle.getConst()->getDouble(), -10);
    EXPECT_EQ(std::as_const(value).get<Integer>(true)->get(), 1);
}

TEST(ModuleBorders, ATypeThatSeveralModulesRegisterIsOne) {
    const TypeInfo type = TypeInfo::getTypeInfo<Shared>(true);
    EXPECT_TRUE(TypeInfo::find("TypeModule::Shared") == type);
    ASSERT_NE(getLoaded<ReadShared>("loadedReadShared"), nullptr);
    EXPECT_TRUE(TypeInfo::getTypeInfo<Shared>(true) == type);
    EXPECT_TRUE(TypeInfo::find(foreignName).canConvert(type));
}

TEST(ModuleBorders, ExceptionsKeepTheirClass) {
    auto* const fail = getLoaded<Fail>("loadedFail");
    ASSERT_NE(fail, nullptr);
    expectThrow<GenICam::TimeoutException>([&] { fail(); }, "From a module.");
    expectThrow<GenICam::TimeoutException>([] { linkedFail(); }, "From a module.");
}

}  // namespace
