#include "orlixhost/recipe.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/support/message.h"
#include "host/support/temporaryfolder.h"
#include "orlixhost/jsonsettings.h"

namespace Orlix::Host {
namespace {

using Testing::messageOf;
using Testing::readFile;
using Testing::TemporaryFolder;

constexpr const char* loaderUuid = "4f2b72dc-294b-4503-885a-6b73d26eb6d7";

Recipe parse(const std::string& text) {
    return Recipe::parse(text, "r.json", "/recipes");
}

std::string errorOf(const std::string& text) {
    return messageOf([&] { static_cast<void>(parse(text)); });
}

std::string oneNode(const std::string& node) {
    return R"({"version": 1, "nodes": [)" + node + "]}";
}

TEST(Recipe, GivesNodesSettingsAndConnections) {
    const Recipe recipe = parse(R"({"version": 1, "nodes": [
        {"name": "Loader", "type": "ImageLoading", "uuid": "4F2B72DC-294b-4503-885a-6b73d26eb6d7",
         "settings": {"sourcePath": "images"}},
        {"name": "My Converter", "type": "ImageFormatConverter"}],
        "connections": [{"from": "Loader.Image", "to": "My Converter.Image.Left"}]})");
    ASSERT_EQ(recipe.nodes().size(), 2U);
    EXPECT_EQ(recipe.nodes()[0].name, "Loader");
    EXPECT_EQ(recipe.nodes()[0].type, "ImageLoading");
    EXPECT_EQ(recipe.nodes()[0].uuid, loaderUuid);
    EXPECT_EQ(recipe.nodes()[1].uuid, "");
    ASSERT_EQ(recipe.connections().size(), 1U);
    EXPECT_EQ(recipe.connections()[0].fromNode, "Loader");
    EXPECT_EQ(recipe.connections()[0].fromPin, "Image");
    EXPECT_EQ(recipe.connections()[0].toNode, "My Converter");
    EXPECT_EQ(recipe.connections()[0].toPin, "Image.Left");
    const auto settings = recipe.settings(0);
    EXPECT_EQ(settings->getString(JsonSettings::Path("sourcePath")), "images");
    EXPECT_EQ(settings->getBasePath(), "/recipes");
    EXPECT_TRUE(recipe.settings(1)->getKeys(JsonSettings::Path()).empty());
}

TEST(Recipe, ConnectionsMayBeLeftOut) {
    EXPECT_TRUE(parse(oneNode(R"({"name": "A", "type": "T"})")).connections().empty());
}

TEST(Recipe, BrokenJsonIsToldWithLineAndColumn) {
    EXPECT_EQ(errorOf("{\n  \"version\": 1,\n  \"nodes\": [}\n}"),
              "r.json:3:13: syntax error while parsing value - unexpected '}'; expected '[', '{', "
              "or a literal");
    EXPECT_EQ(errorOf(""),
              "r.json:1:1: syntax error while parsing value - unexpected end of input; expected "
              "'[', '{', or a literal");
}

TEST(Recipe, KeyThatOccursTwiceIsRefused) {
    EXPECT_EQ(errorOf(R"({"version": 1, "nodes": [{"name": "A", "name": "B", "type": "T"}]})"),
              "r.json:1:40: the key \"name\" occurs twice in one object");
    EXPECT_EQ(errorOf("{\"version\": 1,\n \"a\": 1, \"\\u0061\": 2}"),
              "r.json:2:17: the key \"a\" occurs twice in one object");
}

TEST(Recipe, NestingThatIsTooDeepIsRefused) {
    EXPECT_EQ(errorOf(std::string(100000, '[')), "r.json:1:101: nested deeper than 100 levels");
    std::string objects;
    for (int i = 0; i < 100000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(errorOf(objects), "r.json:1:501: nested deeper than 100 levels");
}

TEST(Recipe, NumberThatNothingHoldsIsRefused) {
    EXPECT_EQ(errorOf("{\n  \"version\": 1e400}"), "r.json:2:14: the number 1e400 is too large");
    EXPECT_EQ(errorOf("-1e999"), "r.json:1:1: the number -1e999 is too large");
}

TEST(Recipe, ByteOrderMarkIsPassedOver) {
    EXPECT_EQ(parse("\xef\xbb\xbf" + oneNode(R"({"name": "A", "type": "T"})")).nodes().size(), 1U);
}

TEST(Recipe, TextInAnotherEncodingIsRefused) {
    using namespace std::string_literals;
    EXPECT_EQ(errorOf("{\0\"\0v\0\"\0"s),
              "r.json:1:2: a zero byte, which UTF-8 text does not have");
    EXPECT_EQ(errorOf("\xff\xfe{\0"s), "r.json:1:4: a zero byte, which UTF-8 text does not have");
    EXPECT_EQ(
        errorOf("{\"\xe4\": 1}"),
        "r.json:1:4: syntax error while parsing object key - invalid string: ill-formed UTF-8 "
        "byte; expected string literal");
}

// The parser would take it for the end of the text.
TEST(Recipe, NothingIsPassedOverBehindAZeroByte) {
    using namespace std::string_literals;
    EXPECT_EQ(errorOf(oneNode(R"({"name": "A", "type": "T"})") + "\n\0garbage"s),
              "r.json:2:1: a zero byte, which UTF-8 text does not have");
}

TEST(Recipe, ErrorsNameFileAndPlace) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"[]", "r.json: a recipe is a JSON object, found an array"},
        {R"({"nodes": []})", "r.json: version: is missing; this program reads version 1"},
        {R"({"version": 2, "nodes": []})",
         "r.json: version: this program reads version 1, found the number 2"},
        {R"({"version": 1})", "r.json: nodes: is missing"},
        {R"({"version": 1, "nodes": {}})", "r.json: nodes: expected an array, found a section"},
        {R"({"version": 1, "nodes": []})", "r.json: nodes: a recipe has at least one node"},
        {oneNode("5"), "r.json: nodes[0]: expected an object, found the number 5"},
        {oneNode(R"({"type": "T"})"), "r.json: nodes[0].name: is missing"},
        {oneNode(R"({"name": 5, "type": "T"})"),
         "r.json: nodes[0].name: expected a text, found the number 5"},
        {oneNode(R"({"name": "", "type": "T"})"), "r.json: nodes[0].name: is empty"},
        {oneNode(R"({"name": "a.b", "type": "T"})"),
         "r.json: nodes[0].name: \"a.b\" has a dot, a slash or a control character, which no name "
         "may have"},
        {oneNode(R"({"name": "A"})"), "r.json: nodes[0].type: is missing"},
        {oneNode(R"({"name": "A", "type": "T", "uuid": "4f2b"})"),
         "r.json: nodes[0].uuid: \"4f2b\" has not the form of a UUID"},
        {oneNode(R"({"name": "A", "type": "T", "settings": []})"),
         "r.json: nodes[0].settings: expected an object, found an array"},
        {oneNode(R"({"name": "A", "type": "T"}, {"name": "A", "type": "T"})"),
         "r.json: nodes[1].name: \"A\" is the name of nodes[0] too"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(errorOf(text), message) << text;
    }
}

TEST(Recipe, ErrorsOfConnectionsNameFileAndPlace) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"({})", "r.json: connections: expected an array, found a section"},
        {R"([{"to": "A.I"}])", "r.json: connections[0].from: is missing"},
        {R"([{"from": "A", "to": "A.I"}])",
         "r.json: connections[0].from: expected \"Node.Pin\", found \"A\""},
        {R"([{"from": "A.O", "to": "A."}])",
         "r.json: connections[0].to: expected \"Node.Pin\", found \"A.\""},
        {R"([{"from": "A.O", "to": "B.I"}])",
         "r.json: connections[0].to: there is no node \"B\" in the recipe"},
    };
    for (const auto& [connections, message] : cases) {
        EXPECT_EQ(errorOf(R"({"version": 1, "nodes": [{"name": "A", "type": "T"}],
                              "connections": )" +
                          connections + "}"),
                  message);
    }
}

TEST(Recipe, UnknownKeysSurviveInTheirOrderAndSettingsAreWrittenAnew) {
    Recipe recipe = parse(
        R"({"comment": "mine", "version": 1, "nodes": [{"color": {"r": 1, "b": [2, null]},
            "name": "A", "type": "T", "settings": {"old": 1}, "position": 1.5}],
            "connections": [{"from": "A.O", "to": "A.I", "width": 3}], "zoom": 18446744073709551615})");
    JsonSettings settings;
    settings.setInteger(JsonSettings::Path("new"), 2);
    recipe.setSettings(0, settings, loaderUuid);
    EXPECT_EQ(recipe.toText(), R"({
  "comment": "mine",
  "version": 1,
  "nodes": [
    {
      "color": {
        "r": 1,
        "b": [
          2,
          null
        ]
      },
      "name": "A",
      "type": "T",
      "uuid": "4f2b72dc-294b-4503-885a-6b73d26eb6d7",
      "settings": {
        "new": 2
      },
      "position": 1.5
    }
  ],
  "connections": [
    {
      "from": "A.O",
      "to": "A.I",
      "width": 3
    }
  ],
  "zoom": 18446744073709551615
}
)");
}

TEST(Recipe, UuidThatIsThereStays) {
    const std::string uuid = "00000000-0000-0000-0000-000000000001";
    Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T", "uuid": ")" + uuid + "\"}"));
    recipe.setSettings(0, JsonSettings(), loaderUuid);
    EXPECT_NE(recipe.toText().find(uuid), std::string::npos);
    EXPECT_EQ(recipe.toText().find(loaderUuid), std::string::npos);
}

TEST(Recipe, LoadTakesTheFoldersAbsolutePathAsBase) {
    const TemporaryFolder folder;
    const std::string file = folder.write("sub/r.json", oneNode(R"({"name": "A", "type": "T"})"));
    const Recipe recipe = Recipe::load(file);
    EXPECT_EQ(recipe.source(), file);
    EXPECT_EQ(recipe.basePath(), folder / "sub");
}

TEST(Recipe, FileThatCanNotBeReadIsNamedWithTheReason) {
    const TemporaryFolder folder;
    EXPECT_EQ(messageOf([&] { static_cast<void>(Recipe::load(folder / "none.json")); }),
              (folder / "none.json") + ": can not read: No such file or directory");
    EXPECT_EQ(messageOf([&] { static_cast<void>(Recipe::load(folder.path())); }),
              folder.path() + ": can not read: Is a directory");
}

TEST(Recipe, SaveReplacesTheFileAndKeepsItsPermissions) {
    const TemporaryFolder folder;
    const std::string file = folder.write("r.json", "old");
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    const Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T"})"));
    recipe.save(file);
    EXPECT_EQ(readFile(file), recipe.toText());
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(folder.list(), std::vector<std::string>{"r.json"});
}

TEST(Recipe, SaveThroughASymbolicLinkReplacesItsTarget) {
    const TemporaryFolder folder;
    const std::string file = folder.write("real/r.json", "old");
    const std::string link = folder / "link.json";
    ASSERT_EQ(::symlink(file.c_str(), link.c_str()), 0);
    const Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T"})"));
    recipe.save(link);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(readFile(file), recipe.toText());
}

TEST(Recipe, SaveThatFailsLeavesTheFileAndNothingElse) {
    const TemporaryFolder folder;
    const std::string file = folder.write("r.json", "old");
    Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T"})"));
    JsonSettings settings;
    settings.setString(JsonSettings::Path("sourcePath"), "\xff");
    recipe.setSettings(0, settings, loaderUuid);
    EXPECT_EQ(messageOf([&] { recipe.save(file); }),
              file + ": a text is not UTF-8 and can not be stored as JSON");
    EXPECT_EQ(readFile(file), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"r.json"});
}

TEST(Recipe, MayHaveTheLongestNameOfAFile) {
    const TemporaryFolder folder;
    const Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T"})"));
    const std::string file = folder / (std::string(250, 'r') + ".json");
    recipe.save(file);
    EXPECT_EQ(Recipe::load(file).toText(), recipe.toText());
}

TEST(Recipe, FileWithoutANameIsToldAsAnyOther) {
    EXPECT_EQ(messageOf([] { static_cast<void>(Recipe::load("")); }),
              "\"\": can not read: No such file or directory");
    EXPECT_EQ(messageOf([] { parse(oneNode(R"({"name": "A", "type": "T"})")).save(""); }),
              "\"\": can not write: Invalid argument");
}

TEST(Recipe, SaveIntoAFolderThatIsMissingNamesTheFile) {
    const TemporaryFolder folder;
    const Recipe recipe = parse(oneNode(R"({"name": "A", "type": "T"})"));
    EXPECT_EQ(messageOf([&] { recipe.save(folder / "none/r.json"); }),
              (folder / "none/r.json") + ": can not write: No such file or directory");
    EXPECT_EQ(messageOf([&] { recipe.save(folder.path()); }),
              folder.path() + ": can not write: is a folder");
}

}  // namespace
}  // namespace Orlix::Host
