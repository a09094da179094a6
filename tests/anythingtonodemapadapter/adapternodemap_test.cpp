// The live map, used as a viewer uses it; every case in both port modes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "testtree.h"

namespace AnythingToNodeMapAdapter::Test {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class AdapterNodeMap : public testing::TestWithParam<const char*> {
protected:
    GenApi::INode* node(const char* name) {
        GenApi::INode* found = nodeMap->GetNode(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    GenApi::CIntegerPtr integer(const char* name) { return node(name); }
    GenApi::CStringPtr string(const char* name) { return node(name); }
    GenApi::CEnumerationPtr enumeration(const char* name) { return node(name); }
    GenApi::CCommandPtr command(const char* name) { return node(name); }

    // Notes the name of the node at each of its changes.
    void watch(const char* name) {
        GenApi::Register(node(name),
                         [this](GenApi::INode* n) { changed.push_back(n->GetName().str()); });
    }

    // Outlives the tree: callbacks also run while a shared port is taken off.
    std::vector<std::string> changed;
    TestTree tree;
    GenApi::INodeMap* nodeMap = tree.create(GetParam());
    TestOwner& owner = tree.owner;
};

INSTANTIATE_TEST_SUITE_P(Modes, AdapterNodeMap, testing::Values("", "SharedPort"),
                         [](const auto& mode) {
                             return *mode.param == 0 ? "OwnPorts" : "SharedPort";
                         });

TEST_P(AdapterNodeMap, IntegersReadAndWriteThroughTheOwner) {
    EXPECT_EQ(integer("Speed")->GetValue(), 10);
    EXPECT_EQ(integer("Offset")->GetValue(), -5);
    integer("Speed")->SetValue(30);
    integer("Offset")->SetValue(-100);
    EXPECT_EQ(owner.speed, 30U);
    EXPECT_EQ(owner.offset, -100);
}

TEST_P(AdapterNodeMap, IntegersShowRangeUnitAndRepresentation) {
    EXPECT_EQ(integer("Offset")->GetMin(), -100);
    EXPECT_EQ(integer("Offset")->GetMax(), 4294967295);
    EXPECT_EQ(integer("Offset")->GetInc(), 5);
    EXPECT_EQ(integer("Offset")->GetUnit(), "mm");
    EXPECT_EQ(integer("Offset")->GetRepresentation(), GenApi::Linear);
    EXPECT_EQ(integer("Speed")->GetRepresentation(), GenApi::PureNumber);
}

TEST_P(AdapterNodeMap, NothingIsCached) {
    EXPECT_EQ(integer("Speed")->GetValue(), 10);
    owner.speed = 11;
    EXPECT_EQ(integer("Speed")->GetValue(), 11);
    EXPECT_EQ(string("Path")->GetValue(), "images");
    owner.path = "other";
    EXPECT_EQ(string("Path")->GetValue(), "other");
}

TEST_P(AdapterNodeMap, AValueOutOfRangeNeverReachesTheSetter) {
    EXPECT_THROW(integer("Speed")->SetValue(501), GenICam::OutOfRangeException);
    EXPECT_THROW(integer("Speed")->SetValue(0), GenICam::OutOfRangeException);
    EXPECT_THROW(integer("Offset")->SetValue(-99), GenICam::OutOfRangeException);
    EXPECT_EQ(owner.setterCalls, 0);
}

TEST_P(AdapterNodeMap, ExceptionOfASetterReachesTheUserUnchanged) {
    tree.speed->setMax(1000);
    try {
        integer("Speed")->SetValue(0, false);
        FAIL() << "no exception";
    } catch (const GenICam::RuntimeException& e) {
        EXPECT_STREQ(e.GetDescription(), "Speed must be greater than 0.");
    }
    EXPECT_EQ(owner.speed, 10U);
    integer("Speed")->SetValue(12);
    EXPECT_EQ(owner.speed, 12U);
}

TEST_P(AdapterNodeMap, AMovedMaximumShowsAtOnceAlsoBelowTheMinimum) {
    tree.speed->setMax(-1);
    tree.speed->notify();
    EXPECT_EQ(integer("Speed")->GetMax(), -1);
    tree.speed->setMax(2000);
    integer("Speed")->SetValue(2000);
    EXPECT_EQ(owner.speed, 2000U);
}

TEST_P(AdapterNodeMap, BooleansReadAndWrite) {
    const GenApi::CBooleanPtr enabled(node("Enabled"));
    EXPECT_TRUE(enabled->GetValue());
    enabled->SetValue(false);
    EXPECT_FALSE(owner.enabled);
}

TEST_P(AdapterNodeMap, EnumerationsReadAndWriteByNameAndByNumber) {
    EXPECT_EQ(enumeration("Color")->ToString(), "Green");
    enumeration("Color")->FromString("Blue");
    EXPECT_EQ(owner.color, Blue);
    enumeration("Color")->SetIntValue(0);
    EXPECT_EQ(owner.color, Red);
    EXPECT_EQ(enumeration("Format")->GetIntValue(), 0x82180044);
    EXPECT_EQ(enumeration("Format")->ToString(), "YUV444Planar");
}

TEST_P(AdapterNodeMap, EntriesKeepTheirOrderAndTexts) {
    GenApi::StringList_t names;
    enumeration("Color")->GetSymbolics(names);
    EXPECT_THAT(names, ElementsAre("Red", "Green", "Blue"));
    EXPECT_EQ(node("EnumEntry_Color_Blue")->GetDisplayName(), "Blue Colour");
}

TEST_P(AdapterNodeMap, AnEntryThatIsNotAvailableCanNotBeChosen) {
    tree.blue->setAvailable(false);
    EXPECT_FALSE(GenApi::IsAvailable(node("EnumEntry_Color_Blue")));
    EXPECT_THROW(enumeration("Color")->FromString("Blue"), GenICam::GenericException);
    EXPECT_EQ(owner.color, Green);
    tree.blue->setAvailable(true);
    enumeration("Color")->FromString("Blue");
    EXPECT_EQ(owner.color, Blue);
}

TEST_P(AdapterNodeMap, StringsReadAndWriteUpToTheirMaximum) {
    EXPECT_EQ(string("Path")->GetMaxLength(), 1024);
    string("Path")->SetValue("folder");
    EXPECT_EQ(owner.path, "folder");
    string("Path")->SetValue("");
    EXPECT_EQ(owner.path, "");
    const gcstring full(1024, 'x');
    string("Path")->SetValue(full);
    EXPECT_EQ(owner.path, full);
    EXPECT_EQ(string("Path")->GetValue(), full);
    EXPECT_THROW(string("Path")->SetValue(gcstring(1025, 'x')), GenICam::OutOfRangeException);
}

TEST_P(AdapterNodeMap, ATextOfTheNodesOwnIsReadOnly) {
    EXPECT_EQ(string("Status")->GetValue(), "idle");
    tree.status->writeValue("busy", false);
    EXPECT_EQ(string("Status")->GetValue(), "busy");
    EXPECT_EQ(node("Status")->GetAccessMode(), GenApi::RO);
    EXPECT_THROW(string("Status")->SetValue("x"), GenICam::AccessException);
}

TEST_P(AdapterNodeMap, ATextLongerThanItsRegisterIsShownCut) {
    tree.status->writeValue("much longer than twelve", false);
    EXPECT_EQ(string("Status")->GetValue(), "much longer ");
}

TEST_P(AdapterNodeMap, CommandsExecute) {
    owner.enabled = false;
    EXPECT_EQ(node("Reset")->GetAccessMode(), GenApi::WO);
    command("Reset")->Execute();
    EXPECT_EQ(owner.resets, 1);
    EXPECT_TRUE(command("Reset")->IsDone());
}

TEST_P(AdapterNodeMap, AReadableCommandTellsWhetherItRuns) {
    command("Stop")->Execute();
    owner.executing = true;
    EXPECT_FALSE(command("Stop")->IsDone());
    owner.executing = false;
    EXPECT_TRUE(command("Stop")->IsDone());
}

TEST_P(AdapterNodeMap, ALockedParameterCanBeReadOnly) {
    tree.speed->setWritable(false);
    tree.stop->setWritable(false);
    EXPECT_EQ(node("Speed")->GetAccessMode(), GenApi::RO);
    EXPECT_THROW(integer("Speed")->SetValue(20), GenICam::AccessException);
    EXPECT_THROW(command("Stop")->Execute(), GenICam::AccessException);
    EXPECT_EQ(integer("Speed")->GetValue(), 10);
    EXPECT_EQ(owner.resets, 0);
    tree.speed->setWritable(true);
    EXPECT_EQ(node("Speed")->GetAccessMode(), GenApi::RW);
}

TEST_P(AdapterNodeMap, ADependencyLocksAWriteOnlyCommand) {
    EXPECT_THROW(command("Reset")->Execute(), GenICam::AccessException);
    EXPECT_EQ(owner.resets, 0);
}

TEST_P(AdapterNodeMap, AnUnavailableParameterIsOutOfReach) {
    tree.path->setAvailable(false);
    EXPECT_EQ(node("Path")->GetAccessMode(), GenApi::NA);
    EXPECT_THROW(string("Path")->GetValue(), GenICam::AccessException);
    tree.path->setAvailable(true);
    EXPECT_EQ(string("Path")->GetValue(), "images");
}

TEST_P(AdapterNodeMap, AvailabilityMayComeFromAnotherParameter) {
    EXPECT_EQ(node("Offset")->GetAccessMode(), GenApi::RW);
    tree.enabled->setValue(false, false);
    EXPECT_EQ(node("Offset")->GetAccessMode(), GenApi::NA);
}

TEST_P(AdapterNodeMap, TheTreeHasTheOrderOfTheFeatureDependencies) {
    GenApi::FeatureList_t features;
    GenApi::CCategoryPtr(node("Root"))->GetFeatures(features);
    ASSERT_EQ(features.size(), 1U);
    GenApi::CCategoryPtr(node("Control"))->GetFeatures(features);
    std::vector<std::string> names;
    for (GenApi::IValue* feature : features) {
        names.push_back(feature->GetNode()->GetName().str());
    }
    EXPECT_THAT(names, ElementsAre("Speed", "Offset", "Enabled", "Color", "Format", "Path",
                                   "Status", "Reset", "Stop"));
    EXPECT_EQ(node("Control")->GetDisplayName(), "The Control");
}

TEST_P(AdapterNodeMap, ParametersBearTheirTexts) {
    EXPECT_EQ(node("Speed")->GetDisplayName(), "Speed Of It");
    EXPECT_EQ(node("Speed")->GetToolTip(), "How fast.");
    EXPECT_EQ(node("Speed")->GetDescription(), "How fast it is.");
    EXPECT_EQ(node("Speed")->GetVisibility(), GenApi::Beginner);
    EXPECT_EQ(node("Offset")->GetVisibility(), GenApi::Guru);
    EXPECT_TRUE(node("Speed")->IsStreamable());
    EXPECT_FALSE(node("Stop")->IsStreamable());
}

TEST_P(AdapterNodeMap, SelectorsNameWhatTheySelect) {
    GenApi::FeatureList_t features;
    GenApi::CSelectorPtr(node("Speed"))->GetSelectedFeatures(features);
    ASSERT_EQ(features.size(), 2U);
    EXPECT_EQ(features[0]->GetNode()->GetName(), "Path");
    EXPECT_EQ(features[1]->GetNode()->GetName(), "Status");
}

TEST_P(AdapterNodeMap, AChangeByTheOwnerFiresTheCallbacksOfThatParameterOnly) {
    for (const char* name : {"Speed", "Enabled", "Color", "Format", "Path", "Stop"}) {
        watch(name);
    }
    tree.format->setTypedValue(1);
    EXPECT_THAT(changed, ElementsAre("Format"));
    changed.clear();
    tree.path->writeValue("other", false);
    EXPECT_THAT(changed, ElementsAre("Path"));
    changed.clear();
    tree.stop->setAvailable(false);
    EXPECT_THAT(changed, ElementsAre("Stop"));
}

TEST_P(AdapterNodeMap, ACallbackReadsTheNewValue) {
    std::vector<std::int64_t> seen;
    const auto handle = GenApi::Register(node("Speed"), [&seen](GenApi::INode* n) {
        seen.push_back(GenApi::CIntegerPtr(n)->GetValue());
    });
    tree.speed->setValue(42, false);
    EXPECT_THAT(seen, ElementsAre(42));
    GenApi::Deregister(node("Speed"), handle);
}

TEST_P(AdapterNodeMap, ASilentOrEqualChangeFiresNothing) {
    watch("Speed");
    tree.speed->setValue(11, true);
    tree.speed->setValue(11, false);
    tree.speed->setAvailable(true);
    EXPECT_THAT(changed, IsEmpty());
}

TEST_P(AdapterNodeMap, ChangedFlagsFireTheCallbacks) {
    watch("Speed");
    tree.speed->setWritable(false);
    tree.speed->setAvailable(false);
    EXPECT_THAT(changed, ElementsAre("Speed", "Speed"));
}

// On a shared port the entry's own name is asked for, which no map has; read it anew there.
TEST_P(AdapterNodeMap, ChangedFlagsOfAnEntryFireCallbacksOnAPortOfItsOwnOnly) {
    watch("EnumEntry_Color_Blue");
    tree.blue->setAvailable(false);
    const bool isShared = *GetParam() != 0;
    EXPECT_THAT(changed, testing::SizeIs(isShared ? 0 : 1));
    EXPECT_FALSE(GenApi::IsAvailable(node("EnumEntry_Color_Blue")));
}

TEST_P(AdapterNodeMap, AWordOfTheRegisterThatIsNoEnumerationIsRefused) {
    EXPECT_THROW(integer("ColorIntValue")->SetValue(4294967303), GenICam::OutOfRangeException);
    EXPECT_EQ(owner.color, Green);
}

TEST_P(AdapterNodeMap, AWriteThroughTheMapFiresTheCallbackOnce) {
    watch("Speed");
    integer("Speed")->SetValue(20);
    EXPECT_THAT(changed, ElementsAre("Speed"));
}

TEST_P(AdapterNodeMap, AnInvalidatorCarriesTheChangeOn) {
    watch("Offset");
    tree.speed->setValue(42, false);
    EXPECT_THAT(changed, ElementsAre("Offset"));
    changed.clear();
    integer("Speed")->SetValue(43);
    EXPECT_THAT(changed, ElementsAre("Offset"));
}

TEST_P(AdapterNodeMap, AChangedSelectorReachesWhatItSelects) {
    watch("Path");
    watch("Format");
    integer("Speed")->SetValue(20);
    EXPECT_THAT(changed, ElementsAre("Path"));
}

TEST_P(AdapterNodeMap, ACallbackMayWriteAnotherParameter) {
    GenApi::Register(node("Enabled"),
                     [this](GenApi::INode*) { tree.status->writeValue("toggled", false); });
    watch("Status");
    GenApi::CBooleanPtr(node("Enabled"))->SetValue(false);
    EXPECT_THAT(changed, Contains("Status"));
    EXPECT_EQ(string("Status")->GetValue(), "toggled");
}

// A node whose selector switches the text that it shows, and tells both ports while the map writes.
class Shelf {
public:
    std::uint64_t getSelector() const { return selector; }
    void setSelector(std::uint64_t value) {
        const GenApi::AutoLock guard(lock);
        selector = value;
        title->writeValue(value == 0 ? "none" : "a book", false);
        selectorPort->notify();
    }

    GenApi::CLock lock;
    std::uint64_t selector = 0;
    std::shared_ptr<StatusPort> title = makeStatus({true, false, true, false});
    std::shared_ptr<IntegerParameterPortBase> selectorPort;
};

TEST_P(AdapterNodeMap, ASetterMayTellOtherPortsWhileTheMapWrites) {
    Shelf shelf;
    shelf.selectorPort = std::make_shared<
        IntegerParameterPortRelay<std::uint64_t, Shelf, &Shelf::getSelector, &Shelf::setSelector>>(
        shelf, "Selector", "", "", "", "Beginner", true, true, true, true, 0, 9, 1, "Linear");
    CAnythingToNodeMapAdapter adapter;
    adapter.addParameter(shelf.selectorPort);
    adapter.addParameter(shelf.title);
    adapter.addDependency("Selector", "Selected", "Status");
    adapter.createNodeMap(&shelf.lock, GetParam(), "");
    nodeMap = adapter.getNodeMap();
    watch("Selector");
    watch("Status");
    integer("Selector")->SetValue(1);
    EXPECT_THAT(changed, testing::UnorderedElementsAre("Selector", "Status"));
    EXPECT_EQ(string("Status")->GetValue(), "a book");
}

TEST_P(AdapterNodeMap, AnExceptionOfASetterLeavesTheLockFree) {
    EXPECT_THROW(integer("Speed")->SetValue(0, false), GenICam::RuntimeException);
    EXPECT_FALSE(owner.lock.IsOwned());
}

}  // namespace AnythingToNodeMapAdapter::Test
