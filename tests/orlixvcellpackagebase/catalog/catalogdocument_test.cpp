#include "catalog/catalogdocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Catalog {
namespace {

using testing::HasSubstr;
using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr auto helpLink =
    "<p><a href=\"orlixVCellNode\" rel=\"noopener noreferrer\" target=\"_blank\">Get help</a></p>";

Json makeModule() {
    return Json::parse(R"({
        "Name": "Node", "Uuid": "00000000-1111-2222-3333-44444444444a",
        "ObjectVersion": "1.0.0", "MinRequiredSoftwareVersion": "1.0.0",
        "MinRequiredFileVersion": "1.0.0", "InterfaceType": "Native", "DisplayName": "A Node",
        "Tags": ["Key=Value"], "ShortDescription": "text", "DetailedDescription": "node.html",
        "SupportedUuids": ["00000000-1111-2222-3333-44444444444a"], "HasDynamicInfo": false})");
}

// A folder with the sources of a small, valid catalog that each test spoils in one place.
class CatalogDocument : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(folder_);
        write("LICENSE", "Do as\nyou \"like\".\n");
        write("node.html", "<h1>Node</h1>\n" + std::string(helpLink));
        document_ = Json::parse(
            R"({"Version": "1.2.3", "Vendor": "V", "Copyright": "C", "License": "LICENSE",
                "Modules": []})");
        document_["Modules"].push_back(makeModule());
    }
    void TearDown() override { fs::remove_all(folder_); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name) << text;
    }
    [[nodiscard]] Json build() const {
        write("catalog.json", document_.dump());
        return buildDocument({folder_ / "catalog.json", folder_ / "LICENSE"});
    }
    [[nodiscard]] std::string buildError() const {
        try {
            static_cast<void>(build());
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }
    Json& module() { return document_["Modules"][0]; }

    Json document_;

private:
    const fs::path folder_ =
        fs::temp_directory_path() /
        ("catalog_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

TEST_F(CatalogDocument, LongTextsComeFromTheirFiles) {
    const Json document = build();
    EXPECT_EQ(document["License"], "Do as\nyou \"like\".\n");
    EXPECT_EQ(document["Modules"][0]["DetailedDescription"],
              "<h1>Node</h1>\n" + std::string(helpLink));
    EXPECT_EQ(document["Modules"][0].begin().key(), "Name");
}

TEST_F(CatalogDocument, MissingUnknownAndMisplacedKeysAreNamed) {
    document_.erase("Vendor");
    EXPECT_THAT(buildError(), HasSubstr("catalog: expected \"Vendor\", found \"Copyright\""));
    SetUp();
    module()["Extra"] = 1;
    EXPECT_THAT(buildError(), HasSubstr("catalog.Modules[0]: unknown key \"Extra\""));
    SetUp();
    module().erase("HasDynamicInfo");
    EXPECT_THAT(buildError(), HasSubstr("expected \"HasDynamicInfo\", found the end"));
}

TEST_F(CatalogDocument, ValuesAreChecked) {
    module()["Uuid"] = "00000000-1111-2222-3333-44444444444A";
    EXPECT_THAT(buildError(), HasSubstr("catalog.Modules[0].Uuid: "));
    SetUp();
    module()["ObjectVersion"] = "1.0";
    EXPECT_THAT(buildError(), HasSubstr("ObjectVersion: \"1.0\" is malformed"));
    SetUp();
    module()["HasDynamicInfo"] = "no";
    EXPECT_THAT(buildError(), HasSubstr("HasDynamicInfo: a value of this type is not allowed"));
    SetUp();
    module()["Tags"] = Json::array({"free text"});
    EXPECT_THAT(buildError(), HasSubstr("Tags: \"free text\" is malformed"));
    SetUp();
    module()["SupportedUuids"] = Json::array({"11111111-1111-2222-3333-444444444444"});
    EXPECT_THAT(buildError(), HasSubstr("lacks the module's own Uuid"));
}

TEST_F(CatalogDocument, NamesAndUuidsAreUnique) {
    document_["Modules"].push_back(makeModule());
    EXPECT_THAT(buildError(), HasSubstr("two records have the Name \"Node\""));
    document_["Modules"][1]["Name"] = "Other";
    EXPECT_THAT(buildError(), HasSubstr("two records have the Uuid"));
}

TEST_F(CatalogDocument, BadHtmlIsReportedWithFileAndLine) {
    write("node.html", "<p>a</p>\n<div>" + std::string(helpLink));
    EXPECT_THAT(buildError(), HasSubstr("node.html: line 2: "));
    write("node.html", "<p>a</p>");
    EXPECT_THAT(buildError(), HasSubstr("node.html: the text must end in"));
}

TEST_F(CatalogDocument, AFileThatIsNotThereIsNamed) {
    module()["DetailedDescription"] = "absent.html";
    EXPECT_THAT(buildError(), HasSubstr("absent.html: can't be opened"));
}

TEST(CatalogSourceFile, LinesBecomeEscapedLiterals) {
    const std::string source = toSourceFile("{\"a\\n\": 1,\nb}\n");
    EXPECT_THAT(source, HasSubstr("    \"{\\\"a\\\\n\\\": 1,\\n\"\n    \"b}\\n\"\n    \"\";\n"));
    EXPECT_THAT(source, HasSubstr("const std::size_t catalogSize = sizeof(catalogText) - 1;"));
}

}  // namespace
}  // namespace Catalog
