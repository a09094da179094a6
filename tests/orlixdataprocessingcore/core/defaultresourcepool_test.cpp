#include "orlixdataprocessingcore/core/defaultresourcepool.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/core/testdevice.h"

namespace Orlix::DataProcessing::Core {
namespace {

class TestLayer : public ITlResource {
public:
    Utils::TypeInfo getTypeInfo(bool throwOnError) const override {
        return Utils::TypeInfo::getTypeInfo<ITlResource>(throwOnError);
    }
    const void* getRawPointer() const override { return static_cast<const ITlResource*>(this); }
    void* getRawPointer() override { return static_cast<ITlResource*>(this); }
};

ResourceInfo info(const char* serial, const char* model = "M") {
    ResourceInfo result;
    result.SetPropertyValue("ModelName", model).SetPropertyValue("SerialNumber", serial);
    return result;
}

ResourceInfo filter(const char* key, const char* value) {
    ResourceInfo result;
    result.SetPropertyValue(key, value);
    return result;
}

class DefaultResourcePoolTest : public testing::Test {
protected:
    DefaultResourcePoolTest() {
        static_cast<void>(pool.getResourcesChangedSignal()->connect([this] { ++changes; }));
    }

    const Utils::TypeInfo devices = Utils::TypeInfo::getTypeInfo<IDeviceResource>(true);
    const Utils::TypeInfo layers = Utils::TypeInfo::getTypeInfo<ITlResource>(true);
    const Utils::TypeInfo all;
    DefaultResourcePool pool;
    int changes = 0;
};

TEST_F(DefaultResourcePoolTest, ListsResourcesByTypeInTheOrderOfTheirProperties) {
    pool.addResource(info("2"), std::make_shared<TestDevice>());
    pool.addResource(info("1"), std::make_shared<TestDevice>());
    pool.addResource(filter("Layer", "GigE"), std::make_shared<TestLayer>());
    const auto found = pool.getResources(devices);
    ASSERT_EQ(found.size(), 2U);
    gcstring serial;
    EXPECT_TRUE(found.begin()->first.GetPropertyValue("SerialNumber", serial));
    EXPECT_EQ(serial, "1");
    EXPECT_EQ(pool.getResources(layers).size(), 1U);
    EXPECT_EQ(pool.getResources(all).size(), 3U);
}

TEST_F(DefaultResourcePoolTest, FindsThoseWhosePropertiesIncludeTheFilter) {
    pool.addResource(info("1", "A"), std::make_shared<TestDevice>());
    pool.addResource(info("2", "A"), std::make_shared<TestDevice>());
    pool.addResource(info("3", "B"), std::make_shared<TestDevice>());
    EXPECT_EQ(pool.findResources(filter("ModelName", "A"), devices).size(), 2U);
    EXPECT_EQ(pool.findResources(filter("ModelName", "C"), devices).size(), 0U);
    EXPECT_EQ(pool.findResources(ResourceInfo(), devices).size(), 3U);
    EXPECT_EQ(pool.findResources(filter("ModelName", "A"), layers).size(), 0U);
}

TEST_F(DefaultResourcePoolTest, TellsOfRealChangesOnly) {
    const auto device = std::make_shared<TestDevice>();
    pool.addResource(info("1"), device);
    EXPECT_EQ(changes, 1);
    pool.addResource(info("1"), device);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(pool.removeResource(info("2")));
    EXPECT_EQ(changes, 1);
    pool.setResources({{info("1"), device}});
    EXPECT_EQ(changes, 1);
    pool.setResources({{info("1"), std::make_shared<TestDevice>()}});
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(pool.removeResource(info("1")));
    EXPECT_EQ(changes, 3);
}

TEST_F(DefaultResourcePoolTest, RefusesANullResource) {
    EXPECT_THROW(pool.addResource(info("1"), nullptr), GenICam::InvalidArgumentException);
    EXPECT_THROW(pool.setResources({{info("1"), nullptr}}), GenICam::InvalidArgumentException);
}

TEST_F(DefaultResourcePoolTest, HoldsNoLockWhileItTells) {
    static_cast<void>(pool.getResourcesChangedSignal()->connect(
        [this] { std::thread([this] { EXPECT_EQ(pool.getResources(all).size(), 1U); }).join(); }));
    pool.addResource(info("1"), std::make_shared<TestDevice>());
}

TEST(DefaultResourcePoolRefresh, LooksAnewOnTheCallingThreadAndTellsBeforeItReturns) {
    std::thread::id told;
    DefaultResourcePool pool([](DefaultResourcePool& self) {
        self.setResources({{info("1"), std::make_shared<TestDevice>()}});
    });
    static_cast<void>(
        pool.getResourcesChangedSignal()->connect([&] { told = std::this_thread::get_id(); }));
    pool.refreshResources(Utils::TypeInfo());
    EXPECT_EQ(told, std::this_thread::get_id());
    EXPECT_EQ(pool.getResources(Utils::TypeInfo()).size(), 1U);
}

TEST(DefaultResourcePoolServices, AreThoseOfTheProcess) {
    DefaultResourcePool pool;
    EXPECT_EQ(pool.getThreadPool(), getDefaultThreadPool());
    EXPECT_EQ(pool.getBufferProvider(), getDefaultBufferProvider());
    EXPECT_EQ(pool.getUpdateFactory(), getDefaultUpdateFactory());
}

TEST(ResourceInfo, IsOrderedByItsSortedPairs) {
    EXPECT_LT(info("1"), info("2"));
    EXPECT_FALSE(info("1") < info("1"));
    EXPECT_LT(info("9", "A"), info("1", "B"));
    EXPECT_LT(ResourceInfo(), info("1"));
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
