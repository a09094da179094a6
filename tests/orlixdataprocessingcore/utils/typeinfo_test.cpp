#include "orlixdataprocessingcore/utils/typeinfo.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/core/array.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixdataprocessingcore/utils/propertyinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"
#include "support/allocations.h"

namespace TypeInfoTest {

using namespace Orlix::DataProcessing::Utils;
using namespace Orlix::DataProcessing::Core;

class Unregistered : public Orlix::DataProcessing::Utils::IObject {
    ORLIX_OBJECT(Unregistered)
};

class Late : public Unregistered {
    ORLIX_OBJECT(Late)
};

class ISide : public Orlix::DataProcessing::Utils::IObject {
public:
    virtual int getSide() const = 0;
};
ORLIX_REGISTER_TYPE(ISide, Orlix::DataProcessing::Utils::IObject)

// A second base, which does not lie at the start of the object.
class Both : public Float, public ISide {
    ORLIX_OBJECT(Both)
public:
    int getSide() const override { return 17; }
    double pad = 0.0;
};
ORLIX_REGISTER_TYPE(Both, Float, ISide)

// Never registered but by a test without memory.
class Poor : public Orlix::DataProcessing::Utils::IObject {
    ORLIX_OBJECT(Poor)
};
class PoorToo : public Orlix::DataProcessing::Utils::IObject {
    ORLIX_OBJECT(PoorToo)
};

class WithUuid : public Orlix::DataProcessing::Utils::IObject {
    ORLIX_OBJECT(WithUuid)
};
ORLIX_REGISTER_TYPE_WITH_UUID("4F2B72DC-294b-4503-885a-6b73d26eb6d7", WithUuid,
                              Orlix::DataProcessing::Utils::IObject)

class Identified : public Unregistered {};

// Its registration throws something of no known class.
class Strange : public Unregistered {
public:
    [[noreturn]] static void registerProperties(ITypeInfoData&) { throw 5; }
};

}  // namespace TypeInfoTest

namespace {

using namespace TypeInfoTest;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

constexpr const char* sourceFile = "src/libs/orlixdataprocessingcore/utils/typeinfo_impl.h";
constexpr const char* category = "orlix.dataprocessing.utils.TypeInfo";
const std::string integerText = "Orlix::DataProcessing::Core::Integer";

template <typename T>
std::string getIdentifier() {
    int size = 0;
    TypeInfo::getTypeIdentifier<T>(nullptr, &size);
    std::vector<char> buffer(static_cast<std::size_t>(size));
    TypeInfo::getTypeIdentifier<T>(buffer.data(), &size);
    return buffer.data();
}

TEST(TypeInfo, TheIdentifierIsTheFullNameOfTheType) {
    EXPECT_EQ(getIdentifier<Integer>(), integerText);
    EXPECT_EQ(getIdentifier<Array<Integer>>(),
              "Orlix::DataProcessing::Core::Array<" + integerText + ">");
    EXPECT_EQ(getIdentifier<COWPtr<std::vector<Integer>>>(),
              "Orlix::DataProcessing::Utils::COWPtr<std::vector<" + integerText + "> >");
}

template <typename T>
std::string getIdentifierInATemplate(const T*) {
    return []<typename U>(const U*) { return getIdentifier<U>(); }(static_cast<T*>(nullptr));
}

TEST(TypeInfo, TheIdentifierOfAContainerIsTheSameEverywhere) {
    const std::vector<Integer> plain;
    const COWPtr<std::vector<Float>> handle;
    EXPECT_EQ(getIdentifier<std::vector<Integer>>(), "std::vector<" + integerText + ">");
    EXPECT_EQ(getIdentifierInATemplate(&plain), getIdentifier<std::vector<Integer>>());
    EXPECT_EQ(getIdentifierInATemplate(&handle), getIdentifier<COWPtr<std::vector<Float>>>());
    const std::vector<std::vector<Float>> nested;
    EXPECT_EQ(getIdentifierInATemplate(&nested),
              "std::vector<std::vector<Orlix::DataProcessing::Core::Float> >");
}

TEST(TypeInfo, TheQueryFormStoresTheNeededSizeAndNoText) {
    int size = -1;
    TypeInfo::getTypeIdentifier<Integer>(nullptr, &size);
    EXPECT_EQ(size, static_cast<int>(integerText.size()) + 1);
}

TEST(TypeInfo, ASizeOfExactlyTheNeededValueSucceedsAndOneLessThrows) {
    const int needed = static_cast<int>(integerText.size()) + 1;
    std::array<char, 100> buffer;
    buffer.fill('#');
    int size = needed;
    TypeInfo::getTypeIdentifier<Integer>(buffer.data(), &size);
    EXPECT_EQ(size, needed);
    EXPECT_EQ(std::string(buffer.data()), integerText);
    EXPECT_EQ(buffer[integerText.size() + 1], '#');

    buffer.fill('#');
    size = needed - 1;
    const auto thrown = expectThrow<InvalidArgumentException>(
        [&] { TypeInfo::getTypeIdentifier<Integer>(buffer.data(), &size); }, "Size is too small.");
    EXPECT_EQ(thrown.sourceFile, sourceFile);
    EXPECT_EQ(buffer[0], '#');
}

TEST(TypeInfo, ANullSizeThrows) {
    std::array<char, 100> buffer;
    expectThrow<InvalidArgumentException>(
        [&] { TypeInfo::getTypeIdentifier<Integer>(buffer.data(), nullptr); },
        "Passed size is null.");
}

TEST(TypeInfo, AnUnregisteredTypeIsInvalidOrThrows) {
    EXPECT_FALSE(TypeInfo::getTypeInfo<Unregistered>(false).isValid());
    expectThrow<RuntimeException>(
        [] { static_cast<void>(TypeInfo::getTypeInfo<Unregistered>(true)); },
        "The requested type is not registered.");
    EXPECT_FALSE(Unregistered().getTypeInfo(false).isValid());
}

TEST(TypeInfo, AnInvalidOneKnowsNothing) {
    const TypeInfo none;
    const TypeInfo integer = TypeInfo::getTypeInfo<Integer>(true);
    EXPECT_EQ(none.getIdentifier(), "");
    EXPECT_EQ(none.getSize(), 0U);
    EXPECT_EQ(none.getUuid(), nullptr);
    EXPECT_TRUE(none.getPropertyNames().empty());
    EXPECT_FALSE(none.canConvert(integer));
    EXPECT_FALSE(integer.canConvert(none));
    EXPECT_FALSE(none.canConvert(none));
    EXPECT_TRUE(none == TypeInfo());
    EXPECT_FALSE(none == integer);
}

TEST(TypeInfo, AnObjectTellsItsDynamicType) {
    const Integer integer(1);
    const IValue* value = &integer;
    EXPECT_TRUE(TypeInfo::getTypeInfo(value) == TypeInfo::getTypeInfo<Integer>(true));
    const IValue* null = nullptr;
    expectThrow<InvalidArgumentException>([&] { static_cast<void>(TypeInfo::getTypeInfo(null)); },
                                          "No object passed.");
}

TEST(TypeInfo, ConvertsToItsBasesOnly) {
    const TypeInfo integer = TypeInfo::getTypeInfo<Integer>(true);
    const TypeInfo value = TypeInfo::getTypeInfo<IValue>(true);
    EXPECT_TRUE(integer.canConvert(integer));
    EXPECT_TRUE(integer.canConvert(value));
    EXPECT_TRUE(
        integer.canConvert(TypeInfo::getTypeInfo<Orlix::DataProcessing::Utils::IObject>(true)));
    EXPECT_FALSE(value.canConvert(integer));
    EXPECT_FALSE(integer.canConvert(TypeInfo::getTypeInfo<String>(true)));
}

TEST(TypeInfo, CastsToABaseThatDoesNotLieAtTheStart) {
    Both both;
    IValue* value = &both;
    EXPECT_EQ(object_cast<ISide>(value), static_cast<ISide*>(&both));
    EXPECT_EQ(object_cast<ISide>(value)->getSide(), 17);
    EXPECT_EQ(object_cast<Both>(object_cast<ISide>(value)), &both);
    EXPECT_EQ(object_cast<Integer>(value), nullptr);
    EXPECT_EQ(object_cast<Integer>(static_cast<IValue*>(nullptr)), nullptr);
    const TypeInfo type = TypeInfo::getTypeInfo<Both>(true);
    EXPECT_EQ(type_cast(&both, type, type), &both);
    EXPECT_EQ(type_cast(&both, type, TypeInfo()), nullptr);
}

TEST(TypeInfo, ATypeWithAnUnregisteredBaseStaysUnregisteredAndLogs) {
    LogCapture capture;
    const bool isRegistered = TypeInfo::registerType<Late, Unregistered>();
    EXPECT_FALSE(isRegistered);
    EXPECT_FALSE(TypeInfo::getTypeInfo<Late>(false).isValid());
    const auto lines = capture.getLines(category);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Severitiy::Warning);
    const std::string text = lines[0].text.str();
    EXPECT_EQ(text.rfind("TypeInfo 0x", 0), 0U) << text;
    EXPECT_EQ(text.substr(text.find(": ")),
              ": Exception caught while registering a type. Message: Base type is not "
              "registered.");
}

TEST(TypeInfo, ARegistrationThatThrowsAnythingIsLoggedAndLetsNothingOut) {
    LogCapture capture;
    EXPECT_FALSE(TypeInfo::registerType<Strange>());
    EXPECT_FALSE(TypeInfo::getTypeInfo<Strange>(false).isValid());
    const auto lines = capture.getLines(category);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Severitiy::Warning);
    const std::string text = lines[0].text.str();
    EXPECT_EQ(text.substr(text.find(": ")), ": Unknown exception caught while registering a type.");
}

TEST(TypeInfo, ASecondRegistrationLeavesTheFirst) {
    const TypeInfo before = TypeInfo::getTypeInfo<Both>(true);
    EXPECT_TRUE((TypeInfo::registerType<Both>()));
    EXPECT_TRUE(TypeInfo::getTypeInfo<Both>(true) == before);
    EXPECT_TRUE(before.canConvert(TypeInfo::getTypeInfo<ISide>(true)));
}

TEST(TypeInfo, KeepsTheUuid) {
    const Uuid uuid("4f2b72dc-294b-4503-885a-6b73d26eb6d7");
    ASSERT_TRUE((TypeInfo::registerType<Identified>(nullptr, &uuid)));
    const TypeInfo type = TypeInfo::getTypeInfo<Identified>(true);
    ASSERT_NE(type.getUuid(), nullptr);
    EXPECT_TRUE(*type.getUuid() == uuid);
    EXPECT_EQ(type.getSize(), sizeof(Identified));
    EXPECT_EQ(TypeInfo::getTypeInfo<Integer>(true).getUuid(), nullptr);
}

TEST(TypeInfo, IsRegisteredWithAUuidAtLoad) {
    const TypeInfo type = TypeInfo::getTypeInfo<WithUuid>(true);
    ASSERT_NE(type.getUuid(), nullptr);
    EXPECT_EQ(type.getUuid()->toString(), "4f2b72dc-294b-4503-885a-6b73d26eb6d7");
    EXPECT_TRUE(
        type.canConvert(TypeInfo::getTypeInfo<Orlix::DataProcessing::Utils::IObject>(true)));
}

TEST(TypeInfo, ABadUuidLeavesTheTypeUnregisteredAndLogs) {
    LogCapture capture;
    EXPECT_FALSE(TypeInfo::registerTypeWithUuid<Late>("4f2b"));
    EXPECT_FALSE(TypeInfo::getTypeInfo<Late>(false).isValid());
    EXPECT_EQ(capture.getLines(category).size(), 1U);
}

// Runs before anything asks for this type, whose slot is then found for good.
TEST(TypeInfo, WithoutMemoryForTheSlotOfATypeItSaysSo) {
    const auto ask = [](bool throwOnError) {
        const Orlix::Test::FailingNew failing(0);
        return TypeInfo::getTypeInfo<Poor>(throwOnError);
    };
    expectThrow<RuntimeException>([&] { static_cast<void>(ask(true)); },
                                  "Could not get registered type.");
    EXPECT_FALSE(ask(false).isValid());
    LogCapture capture;
    {
        const Orlix::Test::FailingNew failing(0);
        EXPECT_FALSE(TypeInfo::registerType<Poor>());
    }
    const auto lines = capture.getLines(category);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].text.str().find("Message: Could not get registered type."),
              std::string::npos)
        << lines[0].text;
    EXPECT_TRUE(TypeInfo::registerType<Poor>()) << "with memory again";
}

TEST(TypeInfo, WithoutMemoryForTheRecordOfATypeItStaysUnregisteredAndLogs) {
    // The slot is there; what fails is the record, which is the first thing with a name.
    EXPECT_FALSE(TypeInfo::getTypeInfo<PoorToo>(false).isValid());
    std::set<std::string> messages;
    for (int number = 0;; ++number) {
        LogCapture capture;
        bool isRegistered = false;
        {
            const Orlix::Test::FailingNew failing(number);
            isRegistered = TypeInfo::registerType<PoorToo>();
        }
        if (isRegistered) {
            break;
        }
        const auto lines = capture.getLines(category);
        ASSERT_EQ(lines.size(), 1U);
        const std::string text = lines[0].text.str();
        messages.insert(text.substr(text.find("Message: ")));
    }
    EXPECT_EQ(messages.count("Message: Could not create type info data."), 1U);
    EXPECT_TRUE(TypeInfo::getTypeInfo<PoorToo>(false).isValid());
}

TEST(TypeInfo, ABaseOfNoRecordIsRefused) {
    const auto thrown = expectThrow<InvalidArgumentException>(
        [] { TypeInfo::addBase<Both, Float>(nullptr); }, "No type info data passed.");
    EXPECT_EQ(thrown.sourceFile, sourceFile);
}

TEST(TypeInfo, IsFoundByItsIdentifier) {
    EXPECT_TRUE(TypeInfo::find(gcstring(integerText)) == TypeInfo::getTypeInfo<Integer>(true));
    EXPECT_FALSE(TypeInfo::find("No::Such::Type").isValid());
}

TEST(TypeInfo, ATypeWithoutDefaultSaysSo) {
    expectThrow<RuntimeException>(
        [] { static_cast<void>(TypeInfo::getTypeInfo<IValue>(true).createDefault()); },
        "Type \"Orlix::DataProcessing::Core::IValue\" has no default value.");
}

TEST(TypeInfo, TheCoresOwnTypesAreRegistered) {
    for (const char* name :
         {"Orlix::DataProcessing::Utils::IObject", "Orlix::DataProcessing::Utils::COWPtrBase",
          "Orlix::DataProcessing::Core::IValue", "Orlix::DataProcessing::Core::IArray",
          "Orlix::DataProcessing::Core::Image",
          "Orlix::DataProcessing::Utils::COWPtr<Orlix::DataProcessing::Core::Image>"}) {
        EXPECT_TRUE(TypeInfo::find(name).isValid()) << name;
    }
    for (const std::string scalar : {"Boolean", "Integer", "Float", "String"}) {
        const std::string core = "Orlix::DataProcessing::Core::";
        const std::string cow = "Orlix::DataProcessing::Utils::COWPtr<";
        const std::string name = core + scalar;
        for (const std::string& text :
             {name, cow + name + ">", core + "Array<" + name + ">",
              cow + core + "Array<" + name + "> >", "std::vector<" + name + ">",
              cow + "std::vector<" + name + "> >"}) {
            EXPECT_TRUE(TypeInfo::find(gcstring(text)).isValid()) << text;
        }
    }
}

TEST(TypeInfo, SplitsAPathAtItsFirstDot) {
    using Parts = std::pair<gcstring, gcstring>;
    EXPECT_TRUE(TypeInfo::splitPath("a") == Parts("a", ""));
    EXPECT_TRUE(TypeInfo::splitPath("a.b.c") == Parts("a", "b.c"));
    for (const char* path : {"", ".", "a.", ".a"}) {
        expectThrow<InvalidArgumentException>(
            [&] { static_cast<void>(TypeInfo::splitPath(path)); },
            "Property path \"" + std::string(path) + "\" has an empty element.");
    }
}

}  // namespace
