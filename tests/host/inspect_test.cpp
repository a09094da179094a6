// The commands that only look, through the real program.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/support/recipes.h"
#include "orlixhost/package.h"

namespace Orlix::Host::Testing {
namespace {

using Json = nlohmann::json;

TEST(CatalogCommand, JsonIsThePackagesDocumentByteForByte) {
    const ProgramResult result = runOrlix({"catalog", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, Package::load(packageFile())->catalog());
}

TEST(CatalogCommand, ListsTheNodes) {
    const ProgramResult result = runOrlix({"catalog"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::size_t camera = result.out.find("\n== Camera 3.0.0 (Camera, ");
    const std::size_t converter = result.out.find("\n== ImageFormatConverter 3.0.0 (");
    const std::size_t loading = result.out.find("\n== ImageLoading 3.0.1 (Image Loading, ");
    EXPECT_LT(camera, converter);
    EXPECT_LT(converter, loading);
    EXPECT_NE(loading, std::string::npos);
    EXPECT_EQ(result.out.find("<p>"), std::string::npos);
}

TEST(ParamsCommand, JsonHasEveryPropertyOfAParameter) {
    const ProgramResult result = runOrlix({"params", "ImageLoading", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json parameters = Json::parse(result.out);
    ASSERT_EQ(parameters.size(), 7U);
    EXPECT_EQ(parameters[0].at("name"), "SourcePath");
    EXPECT_EQ(parameters[0].at("value"), "");
    EXPECT_EQ(parameters[1].at("entries"), Json::parse(R"(["Ascending", "Descending", "Random"])"));
    EXPECT_EQ(parameters[3], Json::parse(R"({
        "category": "Root", "name": "FramesPerSecond", "displayName": "Frames Per Second",
        "kind": "Integer", "access": "RW", "value": 1, "min": 1, "max": 500, "inc": 1,
        "entries": [], "unit": "", "visibility": "Beginner",
        "toolTip": "Number of images to be output per second while the recipe is running.",
        "description": "Number of images to be output per second while the recipe is running."})"));
    EXPECT_EQ(parameters[5].at("value"), false);
}

TEST(ParamsCommand, TextHasALineForEachParameter) {
    const ProgramResult result = runOrlix({"params", "ImageLoading"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("Root\n  SourcePath = \"\"  (String, RW, Beginner)\n"), 0U)
        << result.out;
    EXPECT_NE(result.out.find("  SortBy = Ascending  (Enumeration, RW, Beginner)  {Ascending, "
                              "Descending, Random}\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(
        result.out.find("  FramesPerSecond = 1  (Integer, RW, Beginner)  [1 .. 500, inc 1]\n"),
        std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("  RunContinuously = false  (Boolean, RW, Beginner)\n"),
              std::string::npos)
        << result.out;
}

TEST(ParamsCommand, UnknownTypeIsNamed) {
    expectFailure(runOrlix({"params", "Blur"}),
                  "there is no node type \"Blur\"; the packages have Camera, ImageFormatConverter, "
                  "ImageLoading");
}

TEST(DevicesCommand, SaysThatThereAreNone) {
    EXPECT_EQ(runOrlix({"devices"}).out,
              "No devices. This version of the host knows no transport layer.\n");
    EXPECT_EQ(runOrlix({"devices", "--json"}).out, "[]\n");
}

constexpr const char* description = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Model" VendorName="Vendor" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1"
  MinorVersion="0" SubMinorVersion="0" ProductGuid="1" VersionGuid="1"
  xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>Analog</pFeature></Category>
  <Category Name="Analog"><DisplayName>Analog Control</DisplayName>
    <pFeature>Gain</pFeature><pFeature>Count</pFeature><pFeature>Nothing</pFeature></Category>
  <Float Name="Gain"><ToolTip>How bright.</ToolTip><Value>1.5</Value><Min>0</Min><Max>10</Max>
    <Unit>dB</Unit></Float>
  <Integer Name="Count"><pValue>CountReg</pValue><Min>0</Min><Max>9</Max></Integer>
  <IntReg Name="CountReg"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <Port Name="Device"/>
</RegisterDescription>
)";

class NodemapCommand : public testing::Test {
protected:
    TemporaryFolder folder_;
};

TEST_F(NodemapCommand, PrintsTheFeatureTreeAndWhatTheLoaderDropped) {
    const std::string file = folder_.write("camera.xml", description);
    const ProgramResult result = runOrlix({"nodemap", file});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("Root/Analog Control\n"
                              "  Gain = 1.5 dB  (Float, RW, Beginner)  [0 .. 10]\n"
                              "      How bright.\n"
                              "  Count = 0  (Integer, RW, Beginner)  [0 .. 9, inc 1]\n"),
              0U)
        << result.out;
    EXPECT_NE(result.out.find("\nRemarks of the loader:\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Nothing"), std::string::npos) << result.out;
}

TEST_F(NodemapCommand, JsonHasFeaturesAndRemarks) {
    const std::string file = folder_.write("camera.xml", description);
    const ProgramResult result = runOrlix({"nodemap", file, "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json map = Json::parse(result.out);
    EXPECT_EQ(map.at("vendor"), "Vendor");
    EXPECT_EQ(map.at("model"), "Model");
    ASSERT_EQ(map.at("features").size(), 2U);
    EXPECT_EQ(map.at("features")[0].at("value"), 1.5);
    EXPECT_EQ(map.at("features")[0].at("unit"), "dB");
    EXPECT_EQ(map.at("remarks").size(), 1U) << map.at("remarks");
}

TEST_F(NodemapCommand, FileThatIsNotWellFormedIsOneErrorWithItsPlace) {
    const std::string file = folder_.write("camera.xml", "<RegisterDescription>\n  <Integer\n");
    const ProgramResult result = runOrlix({"nodemap", file});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(linesOf(result.err).size(), 1U) << result.err;
    EXPECT_EQ(result.err.find("orlix: " + file + ": "), 0U) << result.err;
    EXPECT_NE(result.err.find("line 2"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("column"), std::string::npos) << result.err;
}

TEST_F(NodemapCommand, CategoriesThatContainEachOtherComeToAnEnd) {
    const std::string file = folder_.write(
        "camera.xml", R"(<RegisterDescription ModelName="M" VendorName="V" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1"
  MinorVersion="0" SubMinorVersion="0" ProductGuid="1" VersionGuid="1"
  xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>A</pFeature><pFeature>B</pFeature></Category>
  <Category Name="A"><pFeature>B</pFeature></Category>
  <Category Name="B"><pFeature>A</pFeature><pFeature>Gain</pFeature></Category>
  <Integer Name="Gain"><Value>1</Value></Integer></RegisterDescription>)");
    const ProgramResult result = runOrlix({"nodemap", file});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("Root/A/B\n  Gain = 1  (Integer, "), 0U) << result.out;
    EXPECT_EQ(result.out.find("  Gain = ", 20), std::string::npos) << result.out;
}

TEST_F(NodemapCommand, MissingFileIsNamed) {
    expectFailure(runOrlix({"nodemap", folder_ / "none.xml"}),
                  (folder_ / "none.xml") + ": can not read: No such file or directory");
}

TEST(Output, ThatCanNotBeWrittenIsAnError) {
    // The shell only connects the program to the full device.
    const ProgramResult result =
        Program("/bin/sh", {"-c", orlixFile() + " devices > /dev/full"}).wait();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "orlix: can not write to standard output\n");
}

}  // namespace
}  // namespace Orlix::Host::Testing
