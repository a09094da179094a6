// The demo programs: what the first steps of a newcomer make.
#include <gtest/gtest.h>

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
    EXPECT_EQ(folder.list("demo"), (std::vector<std::string>{"images", "recipe.json"}));
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

}  // namespace
}  // namespace Orlix::Host::Testing
