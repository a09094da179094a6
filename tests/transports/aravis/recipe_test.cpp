// Recipes with a camera behind a network, run as users run them.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "aravis/support/simulatedcameratest.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Aravis {
namespace {

namespace fs = std::filesystem;

class Recipe : public Testing::SimulatedCameraTest {
protected:
    void SetUp() override {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "what Aravis and GLib hand over isn't instrumented";
#endif
        SimulatedCameraTest::SetUp();
        folder_ = fs::path(testing::TempDir()) / ("recipe." + std::to_string(::getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override {
        SimulatedCameraTest::TearDown();
        fs::remove_all(folder_);
    }
    void Run(const nlohmann::json& settings, int frames) {
        nlohmann::json node = {{"name", "Camera"}, {"type", "Camera"}, {"settings", settings}};
        node["settings"]["DeviceProperties"] = {{"SerialNumber", serialNumber}};
        // As of the other tests with this camera: a busy computer may keep either side waiting.
        node["settings"]["FeatureStreams"] = {{"@DeviceTransportLayer",
                                               "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"
                                               "FrameRetention\t2000\n"
                                               "SocketBufferSize\t4194304\n"}};
        std::ofstream(folder_ / "recipe.json") << nlohmann::json{
            {"version", 1}, {"connections", nlohmann::json::array()}, {"nodes", {node}}};
        Testing::Process run({std::string(ORLIX_PROGRAM_FOLDER) + "/orlix", "run",
                              (folder_ / "recipe.json").string(), "--frames",
                              std::to_string(frames), "--out", Results().string()},
                             (folder_ / "out").string());
        ASSERT_EQ(run.Wait(), 0);
    }
    [[nodiscard]] fs::path Results() const {
        return folder_ / "results";
    }
    // In the order of the frames.
    [[nodiscard]] std::vector<nlohmann::json> GetValues() const {
        std::vector<nlohmann::json> values;
        std::ifstream file(Results() / "values.jsonl");
        for (std::string line; std::getline(file, line);) {
            values.push_back(nlohmann::json::parse(line));
        }
        return values;
    }

private:
    fs::path folder_;
};

TEST_F(Recipe, FrameWithGapsIsRepairedFromWhatCame) {
    Start({"--fault", "frame 3: missing packets 2"});
    Run({{"AcquisitionMode", 1}, {"FixCorruptImages", 0}}, 5);
    std::vector<bool> corrupt;
    for (const nlohmann::json& value : GetValues()) {
        ASSERT_EQ(value["pin"], "ImageCorrupt") << value;
        corrupt.push_back(value["value"]);
    }
    EXPECT_EQ(corrupt, (std::vector<bool>{false, false, true, false, false}));
    std::vector<COrlixImage> pictures(5);
    for (std::size_t index = 0; index < pictures.size(); ++index) {
        const std::string name = "Camera.Image.00000" + std::to_string(index + 1) + ".png";
        pictures[index].Load(gcstring((Results() / name).string()));
        EXPECT_EQ(pictures[index].GetWidth(), pictures[0].GetWidth());
        EXPECT_EQ(pictures[index].GetHeight(), pictures[0].GetHeight());
    }
    // Most of the picture has come.
    const auto* const pixels = static_cast<const std::uint8_t*>(pictures[2].GetBuffer());
    const auto size = static_cast<std::ptrdiff_t>(pictures[2].GetImageSize());
    EXPECT_GT(size - std::count(pixels, pixels + size, 0), size / 2);
}

// Nothing but the settings of the camera tells of a frame before the first that is whole.
class Repair : public Recipe, public testing::WithParamInterface<int> {};

TEST_P(Repair, NeedsNoWholeFrameBefore) {
    Start({"--fault", "frame 1: missing packets 2"});
    Run({{"AcquisitionMode", GetParam()}, {"FixCorruptImages", 0}}, 1);
    const auto values = GetValues();
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0]["pin"], "ImageCorrupt") << values[0];
    EXPECT_EQ(values[0]["value"], true);
    COrlixImage picture;
    picture.Load(gcstring((Results() / "Camera.Image.000001.png").string()));
    const auto* const pixels = static_cast<const std::uint8_t*>(picture.GetBuffer());
    const auto size = static_cast<std::ptrdiff_t>(picture.GetImageSize());
    EXPECT_GT(size - std::count(pixels, pixels + size, 0), size / 2);
}

INSTANTIATE_TEST_SUITE_P(AcquisitionMode, Repair, testing::Values(0, 1), [](const auto& tested) {
    return std::string(tested.param == 0 ? "SingleFrame" : "Continuous");
});

TEST_F(Recipe, WithoutTheRepairAFrameWithGapsIsAnError) {
    Start({"--fault", "frame 3: missing packets 2"});
    Run({{"AcquisitionMode", 1}, {"FixCorruptImages", 1}}, 5);
    const auto values = GetValues();
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0]["pin"], "Image");
    EXPECT_NE(values[0].dump().find("Packets of the frame are missing."), std::string::npos)
        << values[0];
    EXPECT_FALSE(fs::exists(Results() / "Camera.Image.000003.png"));
    EXPECT_TRUE(fs::exists(Results() / "Camera.Image.000004.png"));
}

}  // namespace
}  // namespace Orlix::Aravis
