// The package as hosts use it: loaded at run time, called by the names of its entry points.
#include <dlfcn.h>
#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/uuid.h"
#include "orlixvcellpackagebase/camera.h"
#include "orlixvcellpackagebase/entrypoints.h"
#include "orlixvcellpackagebase/imageloading.h"
#include "support/allocations.h"
#include "support/deviceresources.h"
#include "support/recordingsink.h"
#include "support/temporaryfolder.h"
#include "support/testpool.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

// The names that a loaded library defines for others, from its dynamic symbol table.
class DynamicSymbols {
public:
    explicit DynamicSymbols(void* library) {
        if (::dlinfo(library, RTLD_DI_LINKMAP, &map_) != 0) {
            throw std::runtime_error(::dlerror());
        }
    }

    [[nodiscard]] std::set<std::string> names() const {
        const auto* symbols = table<const ElfW(Sym)>(DT_SYMTAB);
        const auto* texts = table<const char>(DT_STRTAB);
        std::set<std::string> names;
        // The string table follows the symbol table, which does not tell its own size.
        for (const auto* symbol = symbols + 1; static_cast<const void*>(symbol) < texts; ++symbol) {
            if (symbol->st_shndx != SHN_UNDEF) {
                names.insert(texts + symbol->st_name);
            }
        }
        return names;
    }

private:
    template <typename T>
    [[nodiscard]] T* table(ElfW(Sxword) tag) const {
        for (const auto* entry = map_->l_ld; entry->d_tag != DT_NULL; ++entry) {
            if (entry->d_tag == tag) {
                return reinterpret_cast<T*>(entry->d_un.d_ptr);
            }
        }
        throw std::runtime_error("the library has no such table");
    }

    link_map* map_ = nullptr;
};

class Package : public testing::Test {
protected:
    static void SetUpTestSuite() {
        library = ::dlopen(ORLIX_PACKAGE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
    }

    template <typename Function>
    static Function* find(const std::string& name) {
        void* symbol = ::dlsym(library, name.c_str());
        return symbol != nullptr ? reinterpret_cast<Function*>(symbol)
                                 : throw std::runtime_error(::dlerror());
    }

    static nlohmann::ordered_json readCatalog() {
        char* info = find<CreateInfo>("create_StaticInfo")();
        auto catalog = nlohmann::ordered_json::parse(info);
        find<DestroyInfo>("destroy_Info")(&info);
        return catalog;
    }

    using NodePointer = std::unique_ptr<Node, DestroyNode*>;
    static NodePointer create(const std::string& name) {
        return {find<CreateNode>("create_" + name)(std::make_shared<TestPool>()),
                find<DestroyNode>("destroy_" + name)};
    }

    inline static void* library = nullptr;
};

std::vector<std::string> keysOf(const nlohmann::ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& item : object.items()) {
        keys.push_back(item.key());
    }
    return keys;
}

TEST_F(Package, ExportsItsEntryPointsAndSixMembersOnly) {
    EXPECT_THAT(
        DynamicSymbols(library).names(),
        UnorderedElementsAre(
            "get_InterfaceVersion", "create_StaticInfo", "create_DynamicInfo", "destroy_Info",
            "create_Camera", "create_ImageFormatConverter", "create_ImageLoading", "destroy_Camera",
            "destroy_ImageFormatConverter", "destroy_ImageLoading",
            "_ZN6Plugin21OrlixVCellPackageBase12ImageLoading11getSettingsERN7GenICam8gcstringERNS0_"
            "6SortByERmS7_S7_RbS8_",
            "_ZN6Plugin21OrlixVCellPackageBase12ImageLoading11setSettingsERKN7GenICam8gcstringENS0_"
            "6SortByEmmmbb",
            "_ZNK6Plugin21OrlixVCellPackageBase6Camera29getActiveAssignmentPropertiesEv",
            "_ZN6Plugin21OrlixVCellPackageBase6Camera29setActiveAssignmentPropertiesERKN5Orlix14"
            "DataProcessing4Core12ResourceInfoE",
            "_ZN6Plugin21OrlixVCellPackageBase6Camera23getAssignmentPropertiesERKN5Orlix14"
            "DataProcessing4Core12ResourceInfoERKSt6vectorIS5_SaIS5_EE",
            "_ZN6Plugin21OrlixVCellPackageBase6Camera19getCameraDeviceDataEv"));
}

TEST_F(Package, HasInterfaceVersion2) {
    EXPECT_EQ(find<GetInterfaceVersion>("get_InterfaceVersion")(), 2U);
}

TEST_F(Package, DynamicInfoIsNullAtEveryCall) {
    const auto create = find<CreateInfo>("create_DynamicInfo");
    EXPECT_EQ(create(), nullptr);
    EXPECT_EQ(create(), nullptr);
}

TEST_F(Package, DestroyInfoLeavesTheCallersPointerNull) {
    char* info = find<CreateInfo>("create_StaticInfo")();
    ASSERT_NE(info, nullptr);
    const auto destroy = find<DestroyInfo>("destroy_Info");
    destroy(&info);
    EXPECT_EQ(info, nullptr);
    destroy(&info);
    EXPECT_EQ(info, nullptr);
}

TEST_F(Package, EveryCatalogIsACopyOfItsOwn) {
    const auto create = find<CreateInfo>("create_StaticInfo");
    char* first = create();
    char* second = create();
    EXPECT_NE(first, second);
    EXPECT_STREQ(first, second);
    find<DestroyInfo>("destroy_Info")(&first);
    find<DestroyInfo>("destroy_Info")(&second);
}

TEST_F(Package, CatalogHasItsKeysInOrder) {
    const auto catalog = readCatalog();
    EXPECT_THAT(keysOf(catalog),
                ElementsAre("Version", "Vendor", "Copyright", "License", "Modules"));
    EXPECT_EQ(catalog["Version"], "3.0.1");
    EXPECT_EQ(catalog["Vendor"], "Tarvek");
    EXPECT_EQ(catalog["Copyright"], "Copyright (c) 2026 Tarvek");
    EXPECT_THAT(catalog["License"].get<std::string>(), testing::HasSubstr("Apache License\n"));
    ASSERT_EQ(catalog["Modules"].size(), 3U);
    for (const auto& module : catalog["Modules"]) {
        EXPECT_THAT(keysOf(module),
                    ElementsAre("Name", "Uuid", "ObjectVersion", "MinRequiredSoftwareVersion",
                                "MinRequiredFileVersion", "InterfaceType", "DisplayName", "Tags",
                                "ShortDescription", "DetailedDescription", "SupportedUuids",
                                "HasDynamicInfo"));
    }
}

TEST_F(Package, CatalogHasThreeRecordsInOrder) {
    auto modules = readCatalog()["Modules"];
    for (auto& module : modules) {
        EXPECT_THAT(module["DetailedDescription"].get<std::string>(), StartsWith("<h1>"));
        module.erase("DetailedDescription");
    }
    EXPECT_EQ(modules, nlohmann::ordered_json::parse(R"([
        {"Name": "Camera", "Uuid": "846bca11-6bf2-4895-88c4-fe038f5a659c",
         "ObjectVersion": "3.0.0", "MinRequiredSoftwareVersion": "1.0.0",
         "MinRequiredFileVersion": "1.0.0", "InterfaceType": "Native", "DisplayName": "Camera",
         "Tags": ["UseCaseIdentifier=Acquisition", "LicenseGroup=Free", "OperationLevelGroup=Low",
                  "AlgorithmTypeGroup=Acquisition"],
         "ShortDescription": "Camera vCell",
         "SupportedUuids": ["846bca11-6bf2-4895-88c4-fe038f5a659c"], "HasDynamicInfo": false},
        {"Name": "ImageFormatConverter", "Uuid": "4049ea56-3827-4faf-9478-c3ba02e4a0cb",
         "ObjectVersion": "3.0.0", "MinRequiredSoftwareVersion": "1.0.0",
         "MinRequiredFileVersion": "1.0.0", "InterfaceType": "Native",
         "DisplayName": "Image Format Converter",
         "Tags": ["UseCaseIdentifier=Supporters", "LicenseGroup=Free", "OperationLevelGroup=Low",
                  "AlgorithmTypeGroup=Classical"],
         "ShortDescription": "Image Format Converter vCell",
         "SupportedUuids": ["4049ea56-3827-4faf-9478-c3ba02e4a0cb"], "HasDynamicInfo": false},
        {"Name": "ImageLoading", "Uuid": "4f2b72dc-294b-4503-885a-6b73d26eb6d7",
         "ObjectVersion": "3.0.1", "MinRequiredSoftwareVersion": "1.0.0",
         "MinRequiredFileVersion": "1.0.0", "InterfaceType": "Native",
         "DisplayName": "Image Loading",
         "Tags": ["UseCaseIdentifier=Acquisition", "LicenseGroup=Free", "OperationLevelGroup=Low",
                  "AlgorithmTypeGroup=Acquisition"],
         "ShortDescription": "Image Loading vCell",
         "SupportedUuids": ["4f2b72dc-294b-4503-885a-6b73d26eb6d7"], "HasDynamicInfo": false}])"));
}

TEST_F(Package, EveryRecordHasWorkingEntryPoints) {
    const auto catalog = readCatalog();
    for (const auto& module : catalog["Modules"]) {
        const auto name = module["Name"].get<std::string>();
        const NodePointer node = create(name);
        ASSERT_NE(node, nullptr) << name;
        EXPECT_EQ(node->getTypeInfo(true).getIdentifier().str(),
                  "Plugin::OrlixVCellPackageBase::" + name);
        auto* container = Utils::object_cast<Core::INodeMapContainer>(node.get());
        ASSERT_NE(container, nullptr);
        EXPECT_EQ(container->getNodeMapInfos().at(0).GetDisplayName().str(),
                  module["DisplayName"].get<std::string>());
    }
}

TEST_F(Package, TypesOfItsNodesHaveTheIdentitiesOfTheCatalog) {
    const auto catalog = readCatalog();
    for (const auto& module : catalog["Modules"]) {
        const auto name = module["Name"].get<std::string>();
        const Utils::Uuid* uuid = create(name)->getTypeInfo(true).getUuid();
        ASSERT_NE(uuid, nullptr) << name;
        EXPECT_EQ(uuid->toString().str(), module["Uuid"].get<std::string>());
    }
}

TEST_F(Package, ParameterMapOfANodeServesUntilTheNodeIsDestroyed) {
    for (const std::string name : {"Camera", "ImageFormatConverter", "ImageLoading"}) {
        const NodePointer node = create(name);
        auto* container = Utils::object_cast<Core::INodeMapContainer>(node.get());
        GenApi::INodeMap* map = container->getNodeMapInfos().at(0).GetNodeMap();
        const Utils::LogCapture capture;
        // The pool has no device for a camera.
        EXPECT_EQ(node->allocateResources().empty(), name != "Camera") << name;
        node->freeResources();
        node->stop();
        EXPECT_EQ(container->getNodeMapInfos().at(0).GetNodeMap(), map);
        const GenApi::CCategoryPtr root(map->GetNode("Root"));
        ASSERT_TRUE(root.IsValid()) << name;
        EXPECT_EQ(root->GetNode()->GetName(), "Root");
    }
}

TEST_F(Package, DestroyingNothingDoesNothing) {
    for (const char* name : {"Camera", "ImageFormatConverter", "ImageLoading"}) {
        find<DestroyNode>(std::string("destroy_") + name)(nullptr);
    }
}

TEST_F(Package, ExceptionOfAConstructorReachesTheHost) {
    const Utils::LogCapture capture;
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>(
                  [] { find<CreateNode>("create_Camera")(nullptr); }),
              "Resource pool must not be nullptr. ");
}

// The first allocation is the object's own; its constructor would need more of them, and throw.
TEST_F(Package, WithoutMemoryForTheObjectACreatorAnswersNull) {
    for (const std::string name : {"Camera", "ImageFormatConverter", "ImageLoading"}) {
        const auto create = find<CreateNode>("create_" + name);
        const std::shared_ptr<ResourcePool> pool = std::make_shared<TestPool>();
        Node* node = nullptr;
        bool hasFailed = false;
        {
            const Orlix::Test::FailingNew failing(0);
            node = create(pool);
            hasFailed = Orlix::Test::FailingNew::hasFailed();
        }
        EXPECT_EQ(node, nullptr) << name;
        EXPECT_TRUE(hasFailed) << name;
        EXPECT_EQ(pool.use_count(), 1);
    }
}

TEST_F(Package, OtherNodesNeedNoPool) {
    for (const std::string name : {"ImageFormatConverter", "ImageLoading"}) {
        Node* node = find<CreateNode>("create_" + name)(nullptr);
        EXPECT_NE(node, nullptr);
        find<DestroyNode>("destroy_" + name)(node);
    }
}

TEST_F(Package, SettingsDialogReadsAndWritesAllSettingsInOneStep) {
    const NodePointer node = create("ImageLoading");
    auto* loading = static_cast<ImageLoading*>(node->getRawPointer());
    loading->setSettings("/images", Random, 2, 3, 4, true, true);
    gcstring path;
    SortBy sortBy{};
    std::uint64_t images = 0;
    std::uint64_t rate = 0;
    std::uint64_t runs = 0;
    bool continuously = false;
    bool absolute = false;
    loading->getSettings(path, sortBy, images, rate, runs, continuously, absolute);
    EXPECT_EQ(path, "/images");
    EXPECT_EQ(sortBy, Random);
    EXPECT_EQ(images, 2U);
    EXPECT_EQ(rate, 3U);
    EXPECT_EQ(runs, 4U);
    EXPECT_TRUE(continuously);
    EXPECT_TRUE(absolute);
}

TEST_F(Package, CameraDialogAssignsADevice) {
    CountingPool resources;
    const auto left = makeInfo({{"DeviceClass", "C"}, {"ModelName", "M"}, {"SerialNumber", "1"}});
    const auto right = makeInfo({{"DeviceClass", "C"}, {"ModelName", "M"}, {"SerialNumber", "2"}});
    resources.add(left);
    resources.add(right)->unused = false;
    const NodePointer node(find<CreateNode>("create_Camera")(resources.pool),
                           find<DestroyNode>("destroy_Camera"));
    auto* camera = static_cast<Camera*>(node->getRawPointer());

    const DeviceData data = camera->getCameraDeviceData();
    ASSERT_EQ(data.devices.size(), 2U);
    EXPECT_FALSE(data.devices[0].inUse);
    EXPECT_TRUE(data.devices[1].inUse);
    const ResourceInfo properties =
        camera->getAssignmentProperties(data.devices[0].info, {left, right});
    EXPECT_TRUE(properties.IsSubset(left) && left.IsSubset(properties));
    camera->setActiveAssignmentProperties(properties);
    EXPECT_TRUE(camera->getActiveAssignmentProperties().IsSubset(left));
}

TEST_F(Package, ImagesTravelFromTheLoadedNodeToTheHost) {
    const TemporaryFolder folder;
    folder.addImage("a.png", 5);
    const NodePointer node = create("ImageLoading");
    GenApi::INodeMap& map = *Utils::object_cast<Core::INodeMapContainer>(node.get())
                                 ->getNodeMapInfos()
                                 .at(0)
                                 .GetNodeMap();
    GenApi::CStringPtr(map.GetNode("SourcePath"))->SetValue(folder.path().c_str());
    GenApi::CIntegerPtr(map.GetNode("FramesPerSecond"))->SetValue(500);
    const auto sink = std::make_shared<RecordingSink>();
    const auto handle = node->attachOutputSink("Image", sink);
    Core::NodeArgumentCollection arguments;
    node->start(arguments);
    sink->waitForCount(1);
    node->stop();
    EXPECT_EQ(sink->values().at(0).get<Core::Image>(true)->getWidth(), 5U);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
