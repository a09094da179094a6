#include "orlixhost/package.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/support/message.h"
#include "host/support/recipes.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::Host {
namespace {

using Testing::messageOf;
using Testing::testPackage;

std::string errorOf(const std::string& file) {
    return messageOf([&] { static_cast<void>(Package::load(file)); });
}

TEST(Package, GivesItsCatalog) {
    const auto package = Package::load(testPackage("testnodes"));
    EXPECT_EQ(package->version(), "1.0.0");
    EXPECT_EQ(package->vendor(), "Test");
    ASSERT_EQ(package->modules().size(), 4U);
    EXPECT_EQ(package->modules()[0].name, "ValueSource");
    EXPECT_EQ(package->modules()[0].displayName, "Values");
    EXPECT_EQ(package->modules()[0].supportedUuids,
              std::vector<std::string>{"00000000-0000-0000-0000-00000000000b"});
}

// Values, errors and jobs of a package hold its code and may outlive whoever has loaded it.
bool isLoaded(const std::string& file) {
    return ::dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
}

TEST(Package, StaysLoadedWhenTheHostLetsGoOfIt) {
    // A file of its own, which no other test of this process has loaded.
    const Testing::TemporaryFolder folder;
    const std::string file = folder / "package.so";
    std::filesystem::copy_file(testPackage("testnodes"), file);
    ASSERT_FALSE(isLoaded(file));
    static_cast<void>(Package::load(file));
    EXPECT_TRUE(isLoaded(file));
}

TEST(Package, CodeOfTheNodesStaysEvenIfAHostClosesIt) {
    void* const library = ::dlopen(ORLIX_PACKAGE_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    ASSERT_EQ(::dlclose(library), 0);
    EXPECT_TRUE(isLoaded(ORLIX_PACKAGE_FILE));
}

TEST(Package, MissingFileIsNamed) {
    EXPECT_EQ(errorOf("/none/package.so"), "/none/package.so: there is no such package file");
}

TEST(Package, FileThatIsNoSharedLibraryIsNamedWithTheReason) {
    const Testing::TemporaryFolder folder;
    const std::string file = folder.write("text.so", "no library");
    EXPECT_EQ(errorOf(file),
              file + ": is no package that can be loaded: " + file + ": file too short");
}

TEST(Package, SharedLibraryWithoutEntryPointsIsNoPackage) {
    EXPECT_EQ(
        errorOf(testPackage("notapackage")),
        testPackage("notapackage") + ": is no package: it has no entry point get_InterfaceVersion");
}

TEST(Package, OtherInterfaceVersionIsRefused) {
    EXPECT_EQ(errorOf(testPackage("otherversion")),
              testPackage("otherversion") +
                  ": has the interface version 3, and this host knows version 2 only");
}

TEST(Package, CatalogThatDoesNotParseIsToldWithItsPlace) {
    EXPECT_EQ(errorOf(testPackage("brokencatalog")),
              testPackage("brokencatalog") +
                  ": catalog:1:14: syntax error while parsing value - unexpected end of input; "
                  "expected '[', '{', or a literal");
}

TEST(Package, ModuleWithoutItsEntryPointIsNamed) {
    EXPECT_EQ(errorOf(testPackage("missingentry")),
              testPackage("missingentry") + ": is no package: it has no entry point create_Ghost");
}

TEST(Package, NodeIsCreatedAndGivenBack) {
    const auto package = Package::load(testPackage("testnodes"));
    const auto node = package->createNode(package->modules()[0], createResourcePool());
    EXPECT_EQ(node->getOutputDescriptors().size(), 6U);
}

TEST(Package, ModuleThatNeedsALaterHostIsRefused) {
    const auto package = Package::load(testPackage("testnodes"));
    EXPECT_EQ(
        messageOf([&] {
            static_cast<void>(package->createNode(package->modules()[3], createResourcePool()));
        }),
        "type \"Future\": needs a host of version 9.0.0 or later");
}

class PackageListTest : public testing::Test {
protected:
    PackageListTest() { list_.add(Package::load(testPackage("testnodes"))); }

    PackageList list_;
};

TEST_F(PackageListTest, FindsByName) {
    EXPECT_EQ(list_.find("StuckSource", "").module->name, "StuckSource");
}

TEST_F(PackageListTest, UuidDecidesWhenItIsThere) {
    EXPECT_EQ(list_.find("StuckSource", "00000000-0000-0000-0000-00000000000a").module->name,
              "ValueSource");
}

TEST_F(PackageListTest, FindsByAnIdentityThatTheModuleSupports) {
    EXPECT_EQ(list_.find("Whatever", "00000000-0000-0000-0000-00000000000b").module->name,
              "ValueSource");
}

TEST_F(PackageListTest, UnknownTypeIsNamedWithWhatThereIs) {
    EXPECT_EQ(messageOf([&] { static_cast<void>(list_.find("Blur", "")); }),
              "there is no node type \"Blur\"; the packages have ValueSource, StuckSource, Beside, "
              "Future");
    EXPECT_EQ(
        messageOf([&] {
            static_cast<void>(list_.find("ValueSource", "ffffffff-0000-0000-0000-00000000000a"));
        }),
        "there is no node type uuid \"ffffffff-0000-0000-0000-00000000000a\"; the packages have "
        "ValueSource, StuckSource, Beside, Future");
}

}  // namespace
}  // namespace Orlix::Host
