// The properties that bind Camera to a device.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/camerafixture.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Properties = std::map<std::string, std::string>;

Properties toMap(const ResourceInfo& info) {
    std::vector<gcstring> names;
    info.GetPropertyNames(names);
    Properties properties;
    for (const gcstring& name : names) {
        gcstring value;
        static_cast<void>(info.GetPropertyValue(name, value));
        properties[name.str()] = value.str();
    }
    return properties;
}

class CameraDeviceProperties : public CameraFixture {
protected:
    Properties assign(const ResourceInfo& device, const std::vector<ResourceInfo>& others = {}) {
        std::vector<ResourceInfo> all = others;
        all.push_back(device);
        return toMap(node().getAssignmentProperties(device, all));
    }

    void setProperties(std::initializer_list<std::pair<const char*, const char*>> properties) {
        node().setActiveAssignmentProperties(makeInfo(properties));
    }
};

TEST_F(CameraDeviceProperties, AUserDefinedNameIsEnough) {
    const auto device = makeInfo({{"DeviceClass", "C"},
                                  {"UserDefinedName", "left"},
                                  {"ModelName", "M"},
                                  {"SerialNumber", "1"},
                                  {"_PortableIpConfigCurrent", "256"},
                                  {"IpAddress", "10.0.0.1"}});
    EXPECT_THAT(assign(device),
                ElementsAre(Pair("DeviceClass", "C"), Pair("UserDefinedName", "left")));
}

TEST_F(CameraDeviceProperties, ASecondDeviceOfTheNameAddsTheSerialNumber) {
    const auto device =
        makeInfo({{"DeviceClass", "C"}, {"UserDefinedName", "left"}, {"SerialNumber", "1"}});
    const auto other =
        makeInfo({{"DeviceClass", "C"}, {"UserDefinedName", "left"}, {"SerialNumber", "2"}});
    EXPECT_THAT(assign(device, {other}),
                ElementsAre(Pair("DeviceClass", "C"), Pair("SerialNumber", "1"),
                            Pair("UserDefinedName", "left")));
}

TEST_F(CameraDeviceProperties, APersistentAddressStandsForTheName) {
    const auto device = makeInfo({{"DeviceClass", "C"},
                                  {"UserDefinedName", ""},
                                  {"ModelName", "M"},
                                  {"_PortableIpConfigCurrent", "261"},
                                  {"IpAddress", "10.0.0.1"}});
    EXPECT_THAT(assign(device),
                ElementsAre(Pair("DeviceClass", "C"), Pair("IpAddress", "10.0.0.1")));
}

TEST_F(CameraDeviceProperties, APersistentAddressThatIsEmptyLeavesTheClassAlone) {
    const auto device = makeInfo({{"DeviceClass", "C"},
                                  {"ModelName", "M"},
                                  {"SerialNumber", "1"},
                                  {"_PortableIpConfigCurrent", "256"},
                                  {"IpAddress", ""}});
    EXPECT_THAT(assign(device), ElementsAre(Pair("DeviceClass", "C")));
    EXPECT_THAT(assign(device, {makeInfo({{"DeviceClass", "C"}, {"ModelName", "other"}})}),
                ElementsAre(Pair("DeviceClass", "C"), Pair("SerialNumber", "1")));
}

TEST_F(CameraDeviceProperties, AnAddressThatIsNotPersistentIsNoName) {
    const auto device = makeInfo(
        {{"ModelName", "M"}, {"_PortableIpConfigCurrent", "4"}, {"IpAddress", "10.0.0.1"}});
    EXPECT_THAT(assign(device), ElementsAre(Pair("ModelName", "M")));
}

TEST_F(CameraDeviceProperties, AModelNameCountsAlsoWhenItIsEmpty) {
    EXPECT_THAT(assign(makeInfo({{"ModelName", ""}, {"VendorName", "V"}})),
                ElementsAre(Pair("ModelName", "")));
    EXPECT_THAT(assign(makeInfo({{"VendorName", "V"}})), IsEmpty());
}

TEST_F(CameraDeviceProperties, ASerialNumberThatThereIsNotIsLeftOut) {
    const auto device = makeInfo({{"ModelName", "M"}});
    EXPECT_THAT(assign(device, {makeInfo({{"ModelName", "M"}, {"SerialNumber", "2"}})}),
                ElementsAre(Pair("ModelName", "M")));
}

TEST_F(CameraDeviceProperties, ChoosingADeviceTakesItsProperties) {
    resources.add(makeInfo({{"DeviceClass", "C"}, {"ModelName", "M"}, {"SerialNumber", "1"}}));
    resources.add(makeInfo({{"DeviceClass", "C"}, {"ModelName", "N"}, {"SerialNumber", "2"}}));
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    setNumber("DeviceSelector", 1);
    execute("DeviceChoose");
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()),
                ElementsAre(Pair("DeviceClass", "C"), Pair("ModelName", "N")));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(maximum("DevicePropertySelector"), 1);
    EXPECT_EQ(text("DevicePropertyKey"), "DeviceClass");
    setNumber("DevicePropertySelector", 1);
    EXPECT_EQ(text("DevicePropertyKey"), "ModelName");
    EXPECT_EQ(text("DevicePropertyValue"), "N");
}

TEST_F(CameraDeviceProperties, AChoiceBeyondTheListThrowsWithTheListCleared) {
    setProperties({{"ModelName", "M"}});
    EXPECT_EQ(getFailure<std::out_of_range>([&] { node().executeDeviceChoose(); }),
              "invalid vector subscript");
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()), IsEmpty());
}

TEST_F(CameraDeviceProperties, ADeviceWithoutAnyNameIsChosenWithoutANotification) {
    resources.add(makeInfo({{"VendorName", "V"}}));
    setProperties({{"ModelName", "M"}});
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    execute("DeviceChoose");
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(isAvailable("DevicePropertyKey"));
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()), IsEmpty());
}

TEST_F(CameraDeviceProperties, ActivePropertiesAreReplacedAsAWhole) {
    setProperties({{"A", "1"}, {"B", "2"}});
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()),
                ElementsAre(Pair("A", "1"), Pair("B", "2")));
    for (const char* name : {"DevicePropertySelector", "DevicePropertyKey", "DevicePropertyValue",
                             "DevicePropertyRemove"}) {
        EXPECT_TRUE(isAvailable(name)) << name;
    }
    setProperties({});
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()), IsEmpty());
    EXPECT_FALSE(isAvailable("DevicePropertySelector"));
    EXPECT_EQ(node().getDevicePropertySelector(), 0U);
}

TEST_F(CameraDeviceProperties, AddAndEditTellObserversWithTheLockFree) {
    int changes = 0;
    GenApi::CLock& lock = map().GetLock();
    bool owned = false;
    const auto connection = node().getSettingsChangedSignal()->connect([&] {
        ++changes;
        owned = owned || lock.IsOwned();
    });
    node().executeDevicePropertyAdd();
    EXPECT_EQ(text("DevicePropertyKey"), "");
    node().setDevicePropertyKey("ModelName");
    node().setDevicePropertyValue("M");
    EXPECT_EQ(changes, 3);
    EXPECT_FALSE(owned);
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()), ElementsAre(Pair("ModelName", "M")));
    setText("DevicePropertyKey", "VendorName");
    EXPECT_EQ(text("DevicePropertyKey"), "VendorName");
}

TEST_F(CameraDeviceProperties, AddLeavesTheSelectorWhereItIs) {
    setProperties({{"A", "1"}, {"B", "2"}, {"C", "3"}});
    setNumber("DevicePropertySelector", 1);
    execute("DevicePropertyAdd");
    EXPECT_EQ(number("DevicePropertySelector"), 1);
    EXPECT_EQ(maximum("DevicePropertySelector"), 3);
}

TEST_F(CameraDeviceProperties, RemoveMovesLaterEntriesDownAndTheSelectorIntoTheList) {
    setProperties({{"A", "1"}, {"B", "2"}, {"C", "3"}});
    setNumber("DevicePropertySelector", 1);
    execute("DevicePropertyRemove");
    EXPECT_EQ(text("DevicePropertyKey"), "C");
    EXPECT_EQ(maximum("DevicePropertySelector"), 1);
    execute("DevicePropertyRemove");
    EXPECT_EQ(number("DevicePropertySelector"), 0);
    EXPECT_EQ(text("DevicePropertyKey"), "A");
}

TEST_F(CameraDeviceProperties, RemovingTheOnlyEntryLeavesTheSelectorAtAllOnes) {
    constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();
    execute("DevicePropertyAdd");
    execute("DevicePropertyRemove");
    EXPECT_EQ(node().getDevicePropertySelector(), allOnes);
    EXPECT_FALSE(isAvailable("DevicePropertySelector"));
    EXPECT_EQ(number("DevicePropertySelectorMax"), -1);

    execute("DevicePropertyAdd");
    EXPECT_EQ(node().getDevicePropertySelector(), allOnes);
    EXPECT_EQ(maximum("DevicePropertySelector"), 0);
    EXPECT_EQ(text("DevicePropertyKey"), "");
    setText("DevicePropertyKey", "dropped");
    EXPECT_EQ(text("DevicePropertyKey"), "");
    setNumber("DevicePropertySelector", 0);
    setText("DevicePropertyKey", "kept");
    EXPECT_EQ(text("DevicePropertyKey"), "kept");
}

TEST_F(CameraDeviceProperties, ARemovalBeyondTheListLeavesTheListWhole) {
    setProperties({{"A", "1"}, {"B", "2"}});
    node().setDevicePropertySelector(9);
    node().executeDevicePropertyRemove();
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()),
                ElementsAre(Pair("A", "1"), Pair("B", "2")));
}

TEST_F(CameraDeviceProperties, TextsBeyondTheListAreEmptyAndWritesAreDropped) {
    setProperties({{"A", "1"}});
    node().setDevicePropertySelector(1);
    int changes = 0;
    const auto connection = node().getSettingsChangedSignal()->connect([&] { ++changes; });
    EXPECT_EQ(node().getDevicePropertyValue(), "");
    node().setDevicePropertyKey("B");
    node().setDevicePropertyValue("2");
    EXPECT_EQ(changes, 0);
    EXPECT_THAT(toMap(node().getActiveAssignmentProperties()), ElementsAre(Pair("A", "1")));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
