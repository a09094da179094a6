#include "host/catalogreader.h"

#include <gtest/gtest.h>

#include "host/support/message.h"

namespace Orlix::Host {
namespace {

Json record() {
    return {{"Name", "Blur"},
            {"Uuid", "00000000-0000-0000-0000-00000000000a"},
            {"ObjectVersion", "1.2.3"},
            {"MinRequiredSoftwareVersion", "1.0.0"},
            {"MinRequiredFileVersion", "1.0.1"},
            {"InterfaceType", "Native"},
            {"DisplayName", "The Blur"},
            {"Tags", {"A=1", "B=2"}},
            {"ShortDescription", "short"},
            {"DetailedDescription", "long"},
            {"SupportedUuids", Json::array()},
            {"HasDynamicInfo", true}};
}

std::string messageOfSecond(const Json& second) {
    const Json catalog = {{"Modules", {record(), second}}};
    return Testing::messageOf([&] { static_cast<void>(readModules(catalog, "p.so")); });
}

// What is said of a catalog whose second record has another value at a key.
std::string messageWith(const char* key, const Json& value) {
    Json second = record();
    second[key] = value;
    return messageOfSecond(second);
}

std::string messageWithout(const char* key) {
    Json second = record();
    second.erase(key);
    return messageOfSecond(second);
}

TEST(CatalogReader, ReadsEveryField) {
    const auto modules = readModules({{"Modules", {record()}}}, "p.so");
    ASSERT_EQ(modules.size(), 1U);
    EXPECT_EQ(modules[0].name, "Blur");
    EXPECT_EQ(modules[0].uuid, "00000000-0000-0000-0000-00000000000a");
    EXPECT_EQ(modules[0].objectVersion, "1.2.3");
    EXPECT_EQ(modules[0].minRequiredSoftwareVersion, "1.0.0");
    EXPECT_EQ(modules[0].minRequiredFileVersion, "1.0.1");
    EXPECT_EQ(modules[0].interfaceType, "Native");
    EXPECT_EQ(modules[0].displayName, "The Blur");
    EXPECT_EQ(modules[0].tags, (std::vector<std::string>{"A=1", "B=2"}));
    EXPECT_EQ(modules[0].shortDescription, "short");
    EXPECT_EQ(modules[0].detailedDescription, "long");
    EXPECT_TRUE(modules[0].supportedUuids.empty());
    EXPECT_TRUE(modules[0].hasDynamicInfo);
}

TEST(CatalogReader, CatalogWithoutModulesIsRefused) {
    const std::string message = "p.so: catalog: Modules: expected an array";
    for (const Json& catalog : {Json(), Json::array(), Json::object(), Json{{"Modules", 5}}}) {
        EXPECT_EQ(Testing::messageOf([&] { static_cast<void>(readModules(catalog, "p.so")); }),
                  message)
            << catalog;
    }
}

TEST(CatalogReader, FaultsAreToldWithTheirPlace) {
    const std::string place = "p.so: catalog: Modules[1]";
    EXPECT_EQ(messageWithout("Uuid"), place + ".Uuid: is missing");
    EXPECT_EQ(messageWith("Name", 5), place + ".Name: expected a text, found the number 5");
    EXPECT_EQ(messageWith("HasDynamicInfo", "no"),
              place + ".HasDynamicInfo: expected true or false, found the text \"no\"");
    EXPECT_EQ(messageWith("Tags", nullptr),
              place + ".Tags: expected an array of texts, found null");
    EXPECT_EQ(messageWith("Tags", Json::object()),
              place + ".Tags: expected an array of texts, found a section");
    EXPECT_EQ(messageWith("SupportedUuids", {"a", 7}),
              place + ".SupportedUuids: expected an array of texts, found the number 7");
    EXPECT_EQ(Testing::messageOf([] {
                  static_cast<void>(readModules({{"Modules", {5}}}, "p.so"));
              }),
              "p.so: catalog: Modules[0]: expected an object, found the number 5");
}

TEST(CatalogReader, TextOfTheCatalogMayBeMissingButMustBeAText) {
    EXPECT_EQ(readCatalogText({{"Vendor", "Me"}}, "Vendor", "p.so"), "Me");
    EXPECT_EQ(readCatalogText({{"Vendor", "Me"}}, "Version", "p.so"), "");
    EXPECT_EQ(Testing::messageOf([] {
                  static_cast<void>(readCatalogText({{"Version", 5}}, "Version", "p.so"));
              }),
              "p.so: catalog: Version: expected a text, found the number 5");
}

}  // namespace
}  // namespace Orlix::Host
