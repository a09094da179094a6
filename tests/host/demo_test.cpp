// The demo programs: what the first steps of a newcomer make.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/support/recipes.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Host::Testing {
namespace {

std::string programOf(const std::string& name) {
    return std::string(ORLIX_PROGRAM_FOLDER) + "/" + name;
}

TEST(Demo, PicturesRecipeRunAndContactSheet) {
    const TemporaryFolder folder;
    const std::string demo = folder / "demo";
    ProgramResult result = Program(programOf("demoimages"), {demo}).wait();
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(folder.list("demo"),
              (std::vector<std::string>{"camera-recipe.json", "images", "recipe.json"}));
    EXPECT_EQ(folder.list("demo/images").size(), 12U);

    result = runOrlix({"run", demo + "/recipe.json", "--set", "Loader.FramesPerSecond=500",
                       "--frames", "12", "--out", folder / "results"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(folder.list("results").size(), 13U);

    result =
        Program(programOf("contactsheet"), {folder / "results", "-o", folder / "sheet.png"}).wait();
    ASSERT_EQ(result.exitCode, 0) << result.err;
    COrlixImage sheet;
    sheet.Load(GenICam::gcstring(folder / "sheet.png"));
    EXPECT_EQ(sheet.GetWidth(), 6U * 166 + 6);
    EXPECT_EQ(sheet.GetHeight(), 4U * 126 + 6);
}

TEST(Demo, CameraRecipeGivesPicturesChunksAndEvents) {
    const TemporaryFolder folder;
    const std::string demo = folder / "demo";
    ASSERT_EQ(Program(programOf("demoimages"), {demo}).wait().exitCode, 0);
    const ProgramResult result =
        runOrlix({"run", demo + "/camera-recipe.json", "--emulated-cameras", "1", "--frames", "5",
                  "--out", folder / "results", "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");

    COrlixImage picture;
    picture.Load(GenICam::gcstring(folder / "results/Converter.Image.000001.png"));
    EXPECT_EQ(picture.GetWidth(), 320U);
    EXPECT_EQ(picture.GetHeight(), 240U);
    EXPECT_EQ(picture.GetPixelType(), PixelType_RGB8Packed);

    std::ifstream values(folder / "results/values.jsonl");
    std::size_t chunks = 0;
    std::size_t events = 0;
    for (std::string line; std::getline(values, line);) {
        const auto value = nlohmann::json::parse(line);
        ASSERT_TRUE(value.contains("value")) << line;
        if (value.at("pin") == "ExposureTime") {
            ++chunks;
            EXPECT_EQ(value.at("value"), 2500.0);
        } else {
            ++events;
            EXPECT_EQ(value.at("pin"), "ExposureEnd");
            EXPECT_EQ(value.at("value"), events);
        }
    }
    EXPECT_GE(chunks, 5U);
    EXPECT_GE(events, 1U);
}

}  // namespace
}  // namespace Orlix::Host::Testing
