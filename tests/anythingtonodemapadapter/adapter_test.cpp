// The life of an adapter: empty, populated, live, live again, gone.
#include "anythingtonodemapadapter/adapter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "genapi/genapi.h"
#include "nodemapporttools.h"
#include "testtree.h"

namespace AnythingToNodeMapAdapter::Test {

using testing::HasSubstr;
using testing::Not;

std::string description(CAnythingToNodeMapAdapter& adapter) {
    gcstring text;
    adapter.generateDescription(text, "SharedPort", "");
    return text.str();
}

std::int64_t integerValue(GenApi::INodeMap* nodeMap, const char* name) {
    return GenApi::CIntegerPtr(nodeMap->GetNode(name))->GetValue();
}

TEST(Adapter, BeforeCreateNodeMapThereIsAnEmptyMap) {
    CAnythingToNodeMapAdapter adapter;
    ASSERT_NE(adapter.getNodeMap(), nullptr);
    EXPECT_EQ(adapter.getNodeMap()->GetNumNodes(), 0U);
    EXPECT_EQ(adapter.getNodeMap()->GetDeviceName(), "Device");
    TestOwner owner;
    adapter.addParameter(makeSpeed(owner));
    EXPECT_EQ(adapter.getNodeMap()->GetNode("Speed"), nullptr);
}

TEST(Adapter, TheLiveMapBearsTheDeviceNameAndTheGivenLock) {
    TestTree tree;
    GenApi::INodeMap* nodeMap = tree.create();
    EXPECT_EQ(nodeMap->GetDeviceName(), "Device");
    EXPECT_EQ(&nodeMap->GetLock(), &tree.owner.lock);
    EXPECT_EQ(nodeMap->GetVendorName(), "Tarvek");
    EXPECT_EQ(nodeMap->GetModelName(), "Params");
}

TEST(Adapter, WithoutALockTheMapHasItsOwn) {
    TestTree tree;
    tree.adapter.createNodeMap(nullptr, "", "");
    EXPECT_NE(&tree.adapter.getNodeMap()->GetLock(), &tree.owner.lock);
    EXPECT_EQ(integerValue(tree.adapter.getNodeMap(), "Speed"), 10);
}

TEST(Adapter, CreateNodeMapReturnsAnEmptyHandle) {
    TestTree tree;
    const GenApi::CNodeMapRef result = tree.adapter.createNodeMap(&tree.owner.lock, "", "");
    EXPECT_FALSE(result._IsValid());
    EXPECT_EQ(result._GetDeviceName(), "Device");
    try {
        static_cast<void>(result._GetNode("Speed"));
        FAIL() << "no exception";
    } catch (const GenICam::AccessException& e) {
        EXPECT_STREQ(e.GetDescription(), "Feature not present (reference not valid)");
    }
}

TEST(Adapter, TheEngineTakesEveryGeneratedNode) {
    TestTree tree;
    for (const char* portName : {"", "SharedPort"}) {
        const GenApi::LoadReport& report = tree.create(portName)->GetLoadReport();
        for (const GenApi::LoadRemark& remark : report.remarks) {
            ADD_FAILURE() << remark.name << ", line " << remark.line << ": " << remark.reason;
        }
    }
}

TEST(Adapter, ASecondParameterOfANameReplacesTheFirstWithItsDependencies) {
    TestTree tree;
    TestOwner other;
    other.speed = 77;
    EXPECT_THAT(description(tree.adapter), HasSubstr("<pSelected>Status</pSelected>"));
    tree.adapter.addParameter(makeSpeed(other));
    EXPECT_THAT(description(tree.adapter), Not(HasSubstr("<pSelected>Status</pSelected>")));
    EXPECT_EQ(integerValue(tree.create(), "Speed"), 77);
}

TEST(Adapter, TheReplacementMayBeOfAnotherKind) {
    TestTree tree;
    tree.adapter.addParameter(std::make_shared<CategoryParameterPort>("Status"));
    GenApi::INodeMap* nodeMap = tree.create();
    EXPECT_TRUE(GenApi::CCategoryPtr(nodeMap->GetNode("Status")).IsValid());
}

TEST(Adapter, AReplacedParameterNoLongerAnswersInTheLiveMap) {
    for (const char* portName : {"", "SharedPort"}) {
        TestTree tree;
        GenApi::INodeMap* nodeMap = tree.create(portName);
        TestOwner other;
        other.speed = 77;
        tree.adapter.addParameter(makeSpeed(other));
        EXPECT_FALSE(GenApi::IsReadable(nodeMap->GetNode("Speed")));
        EXPECT_EQ(integerValue(nodeMap, "Offset"), -5);
        EXPECT_EQ(integerValue(tree.create(portName), "Speed"), 77);
    }
}

TEST(Adapter, TheSamePortAddedTwiceStillTellsTheMapOfChanges) {
    int calls = 0;
    TestTree tree;
    tree.adapter.addParameter(tree.speed);
    GenApi::INodeMap* nodeMap = tree.create();
    GenApi::Register(nodeMap->GetNode("Speed"), [&calls](GenApi::INode*) { ++calls; });
    tree.speed->setValue(20, false);
    EXPECT_EQ(calls, 1);
}

TEST(Adapter, AnEntryAddedTwiceStillTellsTheMapOfChangesWhenItsEnumerationIsReplaced) {
    int calls = 0;
    TestTree tree;
    tree.adapter.addEnumEntry("Color", tree.red);
    tree.adapter.addParameter(tree.color);
    GenApi::INode* node = tree.create()->GetNode("EnumEntry_Color_RedIsAvailable");
    ASSERT_NE(node, nullptr);
    GenApi::Register(node, [&calls](GenApi::INode*) { ++calls; });
    tree.red->setAvailable(false);
    EXPECT_EQ(calls, 1);
}

TEST(Adapter, NullPortsAreIgnored) {
    TestTree tree;
    const std::string before = description(tree.adapter);
    tree.adapter.addParameter(std::shared_ptr<ICategoryParameterPort>());
    tree.adapter.addParameter(std::shared_ptr<IIntegerParameterPort>());
    tree.adapter.addParameter(std::shared_ptr<IBooleanParameterPort>());
    tree.adapter.addParameter(std::shared_ptr<IEnumParameterPort>());
    tree.adapter.addParameter(std::shared_ptr<IStringParameterPort>());
    tree.adapter.addParameter(std::shared_ptr<ICommandParameterPort>());
    tree.adapter.addEnumEntry("Color", nullptr);
    EXPECT_EQ(description(tree.adapter), before);
}

TEST(Adapter, AnEntryOfAnUnknownEnumerationHasNoEffect) {
    TestTree tree;
    const std::string before = description(tree.adapter);
    tree.adapter.addEnumEntry("Colour", makeColorEntry(Red, "Red"));
    tree.adapter.addEnumEntry("Speed", makeColorEntry(Red, "Red"));
    EXPECT_EQ(description(tree.adapter), before);
}

TEST(Adapter, AnEntryAddedTwiceAppearsTwiceWithOneRegister) {
    TestOwner owner;
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(makeColor(owner));
    adapter.addEnumEntry("Color", makeColorEntry(Red, "Red"));
    adapter.addEnumEntry("Color", makeColorEntry(Blue, "Red"));
    const std::string text = description(adapter);
    EXPECT_NE(text.find("<EnumEntry Name=\"Red\""), text.rfind("<EnumEntry Name=\"Red\""));
    const std::string reg = "<IntReg Name=\"EnumEntry_Color_RedIsAvailable\"";
    ASSERT_NE(text.find(reg), std::string::npos);
    EXPECT_EQ(text.find(reg), text.rfind(reg));
}

TEST(Adapter, FindNodeMapPortFindsParametersAndEntriesByTheirKey) {
    TestTree tree;
    EXPECT_STREQ(tree.adapter.findNodeMapPort("Speed")->second->getName(), "Speed");
    EXPECT_STREQ(tree.adapter.findNodeMapPort("EnumEntry_Color_Red")->second->getName(), "Red");
    EXPECT_EQ(tree.adapter.findNodeMapPort("Red"), tree.adapter.nodeMapPortsEnd());
}

TEST(Adapter, ADependencyOfAnUnknownParameterIsAnError) {
    CAnythingToNodeMapAdapter adapter;
    try {
        adapter.addDependency("Root", "Feature", "Speed");
        FAIL() << "no exception";
    } catch (const GenICam::InvalidArgumentException& e) {
        EXPECT_STREQ(e.GetDescription(),
                     "There is no parameter \"Root\" that \"Speed\" could belong to.");
    }
}

TEST(Adapter, CategoriesAndEntriesWithoutARegisterHaveNoConnector) {
    TestTree tree;
    for (const char* portName : {"", "SharedPort"}) {
        tree.create(portName);
        EXPECT_EQ(tree.ports()["Root"]->connector(), nullptr);
        EXPECT_EQ(tree.ports()["EnumEntry_Color_Green"]->connector(), nullptr);
        EXPECT_NE(tree.ports()["EnumEntry_Color_Red"]->connector(), nullptr);
        EXPECT_NE(tree.ports()["Speed"]->connector(), nullptr);
    }
}

TEST(Adapter, OwnPortModeHasAConnectorForEachAndSharedModeOneForAll) {
    TestTree tree;
    tree.create("");
    EXPECT_NE(tree.ports()["Speed"]->connector(), tree.ports()["Offset"]->connector());
    tree.create("SharedPort");
    EXPECT_EQ(tree.ports()["Speed"]->connector(), tree.ports()["Offset"]->connector());
}

TEST(Adapter, InSharedModeTheSecondIntegerIsReachedAtItsBlock) {
    TestOwner owner;
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(makeSpeed(owner));
    adapter.addParameter(makeOffset(owner));
    adapter.createNodeMap(&owner.lock, "SharedPort", "");
    const GenApi::CPortPtr port(adapter.getNodeMap()->GetNode("SharedPort"));
    EXPECT_EQ(readWord(*port, 0x0), -5);
    EXPECT_EQ(readWord(*port, 0x30), 10);
    EXPECT_EQ(readWord(*port, 0x60), 0);
}

TEST(Adapter, CreateNodeMapAgainLeavesEverythingWorkingInAnyOrderOfModes) {
    TestTree tree;
    const std::pair<const char*, const char*> modes[] = {
        {"", ""},       {"", ""}, {"SharedPort", ""}, {"SharedPort", ""}, {"Other", ""},
        {"", "Prefix"}, {"", ""}, {"Other", "Two"},   {"", "Prefix"}};
    std::uint64_t value = 100;
    for (const auto& [portName, prefix] : modes) {
        GenApi::INodeMap* nodeMap = tree.create(portName, prefix);
        EXPECT_EQ(nodeMap, tree.adapter.getNodeMap());
        const GenApi::CIntegerPtr speed(nodeMap->GetNode("Speed"));
        speed->SetValue(static_cast<std::int64_t>(++value));
        EXPECT_EQ(tree.owner.speed, value);
        EXPECT_EQ(integerValue(nodeMap, "Offset"), -5);
        EXPECT_EQ(GenApi::CStringPtr(nodeMap->GetNode("Path"))->GetValue(), "images");
        int calls = 0;
        const auto handle =
            GenApi::Register(speed->GetNode(), [&calls](GenApi::INode*) { ++calls; });
        tree.speed->setValue(static_cast<std::int64_t>(++value), false);
        EXPECT_EQ(calls, 1) << portName << ", " << prefix;
        // Taking the ports off an old map counts as a change too.
        GenApi::Deregister(speed->GetNode(), handle);
    }
}

TEST(Adapter, AParameterAddedLaterShowsAfterTheNextCreateNodeMap) {
    TestOwner owner;
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(makeSpeed(owner));
    adapter.createNodeMap(&owner.lock, "", "");
    adapter.addParameter(makeOffset(owner));
    EXPECT_EQ(adapter.getNodeMap()->GetNode("Offset"), nullptr);
    EXPECT_EQ(integerValue(adapter.getNodeMap(), "Speed"), 10);
    adapter.createNodeMap(&owner.lock, "", "");
    EXPECT_EQ(integerValue(adapter.getNodeMap(), "Offset"), -5);
}

// What GenApi can not load: an illegal name, or markup in a text.
class AdapterWithABadDescription : public testing::TestWithParam<const char*> {
protected:
    static std::shared_ptr<StatusPort> badPort(const char* kind) {
        const bool badName = std::string(kind) == "name";
        return std::make_shared<StatusPort>("", 8, badName ? "1 Bad Name" : "Bad", "",
                                            badName ? "" : "a <tip", "", "Expert", true, true,
                                            false, false);
    }
};

TEST_P(AdapterWithABadDescription, RaisesAndKeepsTheMapBefore) {
    for (const char* portName : {"", "SharedPort"}) {
        TestTree tree;
        GenApi::INodeMap* before = tree.create(portName);
        tree.adapter.addParameter(badPort(GetParam()));
        EXPECT_THROW(tree.create(portName), GenICam::GenericException);
        EXPECT_EQ(tree.adapter.getNodeMap(), before);
        GenApi::CIntegerPtr(before->GetNode("Speed"))->SetValue(33);
        EXPECT_EQ(tree.owner.speed, 33U);
    }
}

TEST_P(AdapterWithABadDescription, RaisesAndKeepsTheEmptyMap) {
    TestTree tree;
    tree.adapter.addParameter(badPort(GetParam()));
    EXPECT_THROW(tree.create(), GenICam::GenericException);
    EXPECT_EQ(tree.adapter.getNodeMap()->GetNumNodes(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Kinds, AdapterWithABadDescription, testing::Values("name", "markup"));

TEST(Adapter, AfterABadDescriptionTheNextGoodOneIsTaken) {
    for (const char* portName : {"", "SharedPort"}) {
        TestTree tree;
        tree.create("Former");
        const gcstring badTip = "a <tip";
        const gcstring goodTip = "a &lt;tip &amp; more";
        tree.adapter.addParameter(std::make_shared<StatusPort>("", 8, "Status", "", badTip, "",
                                                               "Expert", true, true, false, false));
        EXPECT_THROW(tree.create(portName), GenICam::GenericException);
        tree.adapter.addParameter(std::make_shared<StatusPort>("", 8, "Status", "", goodTip, "",
                                                               "Expert", true, true, false, false));
        GenApi::INodeMap* nodeMap = tree.create(portName);
        EXPECT_EQ(nodeMap->GetNode("Status")->GetToolTip(), "a <tip & more");
        EXPECT_EQ(integerValue(nodeMap, "Speed"), 10);
    }
}

TEST(Adapter, AfterTheAdapterThePortsLiveOnUnobserved) {
    for (const char* portName : {"", "SharedPort"}) {
        TestOwner owner;
        const auto speed = makeSpeed(owner);
        const auto entry = makeColorEntry(Red, "Red");
        {
            CAnythingToNodeMapAdapter adapter;
            adapter.addParameter(speed);
            adapter.addParameter(makeColor(owner));
            adapter.addEnumEntry("Color", entry);
            adapter.createNodeMap(&owner.lock, portName, "");
            EXPECT_GT(speed.use_count(), 1);
        }
        EXPECT_EQ(speed.use_count(), 1);
        EXPECT_EQ(entry.use_count(), 1);
        speed->setValue(20, false);
        entry->setAvailable(false);
        EXPECT_EQ(owner.speed, 20U);
    }
}

TEST(Adapter, ThePortsMayGoBeforeTheAdapter) {
    TestOwner owner;
    std::optional<CAnythingToNodeMapAdapter> adapter(std::in_place);
    {
        const auto speed = makeSpeed(owner);
        adapter->addParameter(speed);
    }
    adapter->createNodeMap(&owner.lock, "", "");
    EXPECT_EQ(integerValue(adapter->getNodeMap(), "Speed"), 10);
    adapter.reset();
}

TEST(Adapter, AMapThatSomebodyStillHoldsLosesItsValuesWithTheAdapter) {
    for (const char* portName : {"", "SharedPort"}) {
        TestOwner owner;
        GenApi::CNodeMapRef held;
        {
            CAnythingToNodeMapAdapter adapter;
            adapter.addParameter(makeSpeed(owner));
            adapter.createNodeMap(&owner.lock, portName, "");
            held._Attach(adapter.getNodeMap());
            EXPECT_EQ(integerValue(held._Ptr(), "Speed"), 10);
        }
        EXPECT_FALSE(GenApi::IsReadable(held._GetNode("Speed")));
        EXPECT_THROW(integerValue(held._Ptr(), "Speed"), GenICam::AccessException);
    }
}

TEST(Adapter, AnAdapterWithoutAMapCanGo) {
    auto empty = std::make_unique<CAnythingToNodeMapAdapter>();
    EXPECT_EQ(empty->getNodeMap()->GetDeviceName(), "Device");
    EXPECT_NO_THROW(empty.reset());
}

TEST(Adapter, AllItsMapsBearItsName) {
    TestOwner owner;
    CAnythingToNodeMapAdapter adapter("Other");
    EXPECT_EQ(adapter.getNodeMap()->GetDeviceName(), "Other");
    adapter.addParameter(makeSpeed(owner));
    for (int round = 0; round < 2; ++round) {
        const GenApi::CNodeMapRef returned = adapter.createNodeMap(&owner.lock, "", "");
        EXPECT_FALSE(returned._IsValid());
        EXPECT_EQ(returned._GetDeviceName(), "Other");
        EXPECT_EQ(adapter.getNodeMap()->GetDeviceName(), "Other");
    }
}

}  // namespace AnythingToNodeMapAdapter::Test
