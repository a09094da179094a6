#include "orlixdataprocessingcore/utils/propertyinfo.h"

#include <gtest/gtest.h>

#include <vector>

#include "orlixdataprocessingcore/core/float.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/expectthrow.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace PropertyInfoTest {

using namespace Orlix::DataProcessing::Utils;
using namespace Orlix::DataProcessing::Core;

class ISide : public Orlix::DataProcessing::Utils::IObject {
public:
    virtual int getSide() const = 0;
};
ORLIX_REGISTER_TYPE(ISide, Orlix::DataProcessing::Utils::IObject)

// The base with the property lies at the start.
class FloatFirst : public Float, public ISide {
    ORLIX_OBJECT(FloatFirst)
public:
    int getSide() const override { return 17; }
};
ORLIX_REGISTER_TYPE(FloatFirst, Float, ISide)

// The base with the property does not lie at the start.
class SideFirst : public ISide, public Float {
    ORLIX_OBJECT(SideFirst)
public:
    int getSide() const override { return 18; }
};
ORLIX_REGISTER_TYPE(SideFirst, ISide, Float)

// A value with a value inside, to reach by a path.
class Nested : public IValue {
    ORLIX_OBJECT(Nested)
public:
    bool hasError(bool) const override { return false; }
    std::shared_ptr<IError> getError(bool) const override { return nullptr; }
    void setError(const std::shared_ptr<IError>&) override {}
    static void registerProperties(ITypeInfoData& data) {
        data.addProperty(PropertyInfo(
            "Name",
            [](const void* object) { return Variant(static_cast<const Nested*>(object)->name); },
            [](void* object, const Variant& value) {
                static_cast<Nested*>(object)->name = *value.get<String>(true);
            }));
    }
    String name;
};
ORLIX_REGISTER_VALUE_TYPE(Nested, IValue)

}  // namespace PropertyInfoTest

namespace {

using namespace PropertyInfoTest;
using GenICam::RuntimeException;
using Orlix::Test::expectThrow;

TEST(PropertyInfo, ReachesIntoAValueByAPath) {
    Nested nested;
    nested.name = String("old");
    const PropertyInfo& name = nested.getTypeInfo(true).getProperty("Name");
    EXPECT_TRUE(name.isWritable());
    name.setValue(nested, "Value", Variant(String("new")));
    EXPECT_EQ(nested.name.get(), "new");
    const Variant value = name.getValue(nested, "Value");
    EXPECT_EQ(value.get<String>(true)->get(), "new");
}

TEST(PropertyInfo, IsInheritedFromABaseThatDoesNotLieAtTheStart) {
    SideFirst object;
    const PropertyInfo& property = object.getTypeInfo(true).getProperty("Value");
    EXPECT_TRUE(property.getOwner() == TypeInfo::getTypeInfo<Float>(true));
    const ISide& side = object;
    property.setValue(static_cast<IValue&>(object), "", Variant(Float(0.75)));
    EXPECT_EQ(object.get(), 0.75);
    const Variant value = property.getValue(side);
    EXPECT_EQ(value.get<Float>(true)->get(), 0.75);
}

TEST(PropertyInfo, IsInheritedFromABase) {
    FloatFirst object;
    IValue& value = object;
    const TypeInfo type = object.getTypeInfo(true);
    EXPECT_EQ(type.getPropertyNames(), std::vector<gcstring>{"Value"});
    type.getProperty("Value").setValue(value, "", Variant(Float(0.75)));
    EXPECT_EQ(object.get(), 0.75);
    Integer foreign;
    expectThrow<RuntimeException>(
        [&] { type.getProperty("Value").setValue(foreign, "", Variant(Float(1.0))); },
        "Property \"Value\" does not belong to the type of the given object.");
}

}  // namespace
