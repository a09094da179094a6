// The commands for cameras that README.md shows, run as they stand there.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "aravis/support/cameratest.h"

namespace Orlix::Aravis {
namespace {

namespace fs = std::filesystem;

#ifdef __SANITIZE_THREAD__
constexpr bool threadSanitizer = true;
#else
constexpr bool threadSanitizer = false;
#endif

class ReadMe : public Testing::CameraTest {
protected:
    static constexpr const char* otherCamera = "# or: ";

    void SetUp() override {
        CameraTest::SetUp();
        folder_ = fs::path(testing::TempDir()) / ("readme." + std::to_string(::getpid()));
        fs::create_directories(folder_);
        if (threadSanitizer) {
            // Other tests grab under it. In a run of seconds it has forgotten that it was Aravis
            // that wrote the pixels, and so that what GLib hands over is not to be told.
            GTEST_SKIP() << "what Aravis and GLib hand over isn't instrumented";
        }
        readCommands();
        ASSERT_GE(commands_.size(), 3U) << "README.md has no commands for cameras any more";
    }
    void TearDown() override { fs::remove_all(folder_); }

    // The first line starts a camera in the background, and names another that does as well.
    [[nodiscard]] std::string GetCamera(bool other) const {
        const std::string& line = commands_.front();
        const std::size_t comment = line.find(otherCamera);
        return other ? line.substr(comment + std::string(otherCamera).size())
                     : line.substr(0, comment);
    }
    // What the commands behind it print.
    [[nodiscard]] std::string Run(const std::string& camera) {
        const std::string begin = "cd '" + folder_.string() + "'\nmkdir -p build/release\n" +
                                  "ln -sfn '" ORLIX_PROGRAM_FOLDER "' build/release/bin\n" +
                                  "PATH=$PWD/build/release/bin:$PATH\n";
        // In the background of the test, and ended with it.
        const Testing::Process running(
            {"bash", "-c", begin + "exec " + camera.substr(0, camera.find('&'))}, file("camera"));
        WaitForAnswer("127.0.0.1");
        std::string text = begin + "set -e\n";
        for (std::size_t index = 1; index < commands_.size(); ++index) {
            text += commands_[index] + "\n";
        }
        EXPECT_EQ(Testing::Process({"bash", "-c", text}, file("out")).Wait(), 0) << text;
        std::ostringstream out;
        out << std::ifstream(file("out")).rdbuf();
        return out.str();
    }
    // A busy computer loses packets, and frames with them.
    [[nodiscard]] std::size_t CountPictures() const {
        std::size_t count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(folder_ / "results")) {
            count += entry.path().extension() == ".png" ? 1U : 0U;
        }
        return count;
    }

private:
    [[nodiscard]] std::string file(const char* name) const { return (folder_ / name).string(); }

    // The block of indented lines that begins with a camera in the background.
    void readCommands() {
        const std::string indent = "    ";
        std::ifstream file(ORLIX_SOURCE_FOLDER "/README.md");
        for (std::string line; std::getline(file, line);) {
            const bool isCommand = line.compare(0, indent.size(), indent) == 0;
            const bool begins = line.find(otherCamera) != std::string::npos;
            if (isCommand && (begins || !commands_.empty())) {
                commands_.push_back(line.substr(indent.size()));
            } else if (!commands_.empty()) {
                return;
            }
        }
    }

    fs::path folder_;
    std::vector<std::string> commands_;
};

TEST_F(ReadMe, ItsCommandsGrabFromTheCameraOfAravis) {
    const std::string camera = GetCamera(false);
    const std::string program = camera.substr(0, camera.find(' '));
    if (!Testing::isInstalled(program)) {
        GTEST_SKIP() << "the program " << program << " is not installed";
    }
    EXPECT_NE(Run(camera).find("GigE"), std::string::npos);
    EXPECT_GT(CountPictures(), 0U);
}

TEST_F(ReadMe, ItsCommandsGrabFromTheSimulatedCamera) {
    EXPECT_NE(Run(GetCamera(true)).find("GigE"), std::string::npos);
    EXPECT_GT(CountPictures(), 0U);
}

}  // namespace
}  // namespace Orlix::Aravis
