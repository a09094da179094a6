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

// One of each kind that steps can use.
constexpr const char* kindsDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Model" VendorName="Vendor" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1"
  MinorVersion="0" SubMinorVersion="0" ProductGuid="1" VersionGuid="1"
  xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Integer Name="Count"><pValue>CountReg</pValue><Min>0</Min><Max>9</Max><Inc>3</Inc></Integer>
  <IntReg Name="CountReg"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Cachable>NoCache</Cachable><Endianess>LittleEndian</Endianess></IntReg>
  <Float Name="Gain"><ToolTip>How&#10;bright.</ToolTip><Value>0.1</Value><Min>-1.5</Min>
    <Max>1e300</Max></Float>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>2</Value></EnumEntry>
    <EnumEntry Name="On"><pIsAvailable>Zero</pIsAvailable><Value>3</Value></EnumEntry>
    <EnumEntry Name="Never"><pIsImplemented>Zero</pIsImplemented><Value>4</Value></EnumEntry>
    <Value>2</Value></Enumeration>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Boolean Name="Flag"><Value>1</Value></Boolean>
  <Command Name="Go"><pValue>CountReg</pValue><CommandValue>6</CommandValue></Command>
  <StringReg Name="Label"><Address>0x20</Address><Length>8</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></StringReg>
  <Register Name="Huge"><Address>0</Address><Length>0x10000000000</Length>
    <AccessMode>RW</AccessMode><pPort>Device</pPort></Register>
  <IntReg Name="Stamp"><Address>-4</Address><Length>4</Length><AccessMode>RO</AccessMode>
    <pPort>Chunk</pPort><Endianess>BigEndian</Endianess></IntReg>
  <IntReg Name="Edge"><Address>1</Address><Length>1</Length><AccessMode>RO</AccessMode>
    <pPort>Event</pPort></IntReg>
  <Port Name="Chunk"><ChunkID>A1</ChunkID></Port>
  <Port Name="Event"><EventID>9001</EventID></Port>
  <Port Name="Device"/>
</RegisterDescription>
)";

// Runs steps on a description of one of each kind; extra arguments come last.
std::string runSteps(const TemporaryFolder& folder, const std::string& steps,
                     const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"nodemap", folder.write("kinds.xml", kindsDescription),
                                          "--steps", folder.write("steps.txt", steps)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProgramResult result = runOrlix(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return result.out;
}

TEST_F(NodemapCommand, StepsReadAndWriteEveryKindOfNode) {
    EXPECT_EQ(runSteps(folder_,
                       "poke\t0x10\t03000000\r\n# a note\n\nget\tCount\nint\tCount\n"
                       "set\tCount\t9\nmem\t16\t4\nmin\tCount\nmax\tCount\ninc\tCount\n"
                       "get\tGain\nset\tGain\t0.30000000000000004\nget\tGain\nmin\tGain\n"
                       "max\tGain\ntooltip\tGain\nget\tMode\nint\tMode\nentries\tMode\n"
                       "availableentries\tMode\nget\tFlag\nset\tFlag\tfalse\nint\tFlag\n"
                       "execute\tGo\ndone\tGo\nhex\tCountReg\nset\tLabel\ta b\nget\tLabel\n"
                       "hex\tLabel\nmaxlength\tLabel\naccess\tCount\naccess\tCountReg"),
              "poke\t0x10\tok\nget\tCount\t3\nint\tCount\t3\n"
              "set\tCount\tok\nmem\t16\t09000000\nmin\tCount\t0\nmax\tCount\t9\ninc\tCount\t3\n"
              "get\tGain\t0.1\nset\tGain\tok\nget\tGain\t0.30000000000000004\nmin\tGain\t-1.5\n"
              "max\tGain\t1e+300\ntooltip\tGain\tHow\\nbright.\nget\tMode\tOff\nint\tMode\t2\n"
              "entries\tMode\tOff,On\navailableentries\tMode\tOff\nget\tFlag\t1\n"
              "set\tFlag\tok\nint\tFlag\t0\nexecute\tGo\tok\ndone\tGo\t0\n"
              "hex\tCountReg\t06000000\nset\tLabel\tok\nget\tLabel\ta b\n"
              "hex\tLabel\t6120620000000000\nmaxlength\tLabel\t8\naccess\tCount\tRW\n"
              "access\tCountReg\tRW\n");
}

TEST_F(NodemapCommand, StepThatFailsTellsWhyAndTheNextRuns) {
    EXPECT_EQ(runSteps(folder_,
                       "set\tCount\t4\nget\tNothing\npoke\t0\t123\nmem\tx\t4\nget\n"
                       "entries\tCount\ninc\tGain\nset\tCount\nmem\t0\t1000001\nhex\tHuge\n"
                       "int\tCount\n"),
              "set\tCount\t!Node 'Count' can not take 4: it is not 0 plus a multiple of the "
              "increment 3.\n"
              "get\tNothing\t!there is no node \"Nothing\"\n"
              "poke\t0\t!\"123\" is no sequence of bytes in hexadecimal: a digit is missing\n"
              "mem\tx\t!\"x\" is no address\n"
              "get\t\t!the step is get<TAB>NODE\n"
              "entries\tCount\t!Node 'Count' has no entries.\n"
              "inc\tGain\t!Node 'Gain' has no increment.\n"
              "set\tCount\t!the step is set<TAB>NODE<TAB>VALUE\n"
              "mem\t0\t!16777217 bytes are too many\n"
              "hex\tHuge\t!1099511627776 bytes are too many\n"
              "int\tCount\t0\n");
    EXPECT_EQ(runSteps(folder_, "jump\tCount").find("jump\tCount\t!there is no verb \"jump\"; "),
              0U);
}

TEST_F(NodemapCommand, StepsAttachChunksAndDeliverEvents) {
    EXPECT_EQ(runSteps(folder_,
                       "access\tStamp\naccess\tEdge\nattachchunk\tChunk\t00000000000102\n"
                       "get\tStamp\nattachchunk\tChunk\t0a0b0c0d\nget\tStamp\n"
                       "event\tEvent\tff07\nget\tEdge\nattachchunk\tDevice\t00\n"
                       "event\tDevice\t00\n"),
              "access\tStamp\tNA\naccess\tEdge\tNA\nattachchunk\tChunk\tok\n"
              "get\tStamp\t258\nattachchunk\tChunk\tok\nget\tStamp\t168496141\n"
              "event\tEvent\tok\nget\tEdge\t7\n"
              "attachchunk\tDevice\t!Node 'Device' is no chunk port.\n"
              "event\tDevice\t!Node 'Device' has no EventID.\n");
}

TEST_F(NodemapCommand, MemoryIsAFileOrANumberOfZeroBytes) {
    const std::string memory = folder_.write("memory.bin", std::string(16, 'x') + "\6");
    EXPECT_EQ(runSteps(folder_, "get\tCount\nmem\t0xe\t3", {"--memory", memory}),
              "get\tCount\t6\nmem\t0xe\t787806\n");
    EXPECT_EQ(runSteps(folder_, "poke\t-1\tff\nmem\t0xffffffffffffffff\t0x1", {"--memory", "8"}),
              "poke\t-1\tok\nmem\t0xffffffffffffffff\tff\n");
    expectFailure(runOrlix({"nodemap", folder_ / "kinds.xml", "--memory", "99999999999"}),
                  "a memory of 99999999999 bytes is not possible; it may have 0 to 1073741824");
    expectFailure(runOrlix({"nodemap", folder_ / "kinds.xml", "--memory", folder_ / "no.bin"}),
                  (folder_ / "no.bin") + ": can not read: No such file or directory");
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

TEST_F(NodemapCommand, CategoriesThatAreNestedTooDeepAreAnErrorBeforeAnythingIsPrinted) {
    std::string categories;
    for (int i = 0; i < 150; ++i) {
        categories += "<Category Name=\"" + (i == 0 ? "Root" : "C" + std::to_string(i)) +
                      "\"><pFeature>C" + std::to_string(i + 1) + "</pFeature></Category>\n";
    }
    std::string text = description;
    const std::size_t first = text.find("<Category");
    text.replace(first, text.find("<Float") - first,
                 categories + "<Category Name=\"C150\"><pFeature>Gain</pFeature></Category>");
    const std::string file = folder_.write("deep.xml", text);
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, std::vector<std::string>{"--json"}}) {
        std::vector<std::string> arguments = {"nodemap", file};
        arguments.insert(arguments.end(), options.begin(), options.end());
        expectFailure(runOrlix(arguments),
                      file + ": category \"C101\": is nested deeper than 100 levels");
    }
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
