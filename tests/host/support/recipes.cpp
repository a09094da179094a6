#include "host/support/recipes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "orlixcamera/imagefile.h"
#include "orlixcamera/orliximage.h"

namespace Orlix::Host::Testing {

void writePictures(const TemporaryFolder& folder, const std::string& below, int count) {
    std::filesystem::create_directories(folder / below);
    for (int i = 1; i <= count; ++i) {
        COrlixImage image;
        image.Reset(PixelType_Mono8, 8, 6);
        std::memset(image.GetBuffer(), 10 * i, image.GetImageSize());
        char name[32];
        std::snprintf(name, sizeof name, "/a%02d.png", i);
        saveImage(GenICam::gcstring(folder / (below + name)), image);
    }
}

std::string writeReplayRecipe(const TemporaryFolder& folder, const std::string& loaderSettings) {
    return folder.write("r.json", R"({"version": 1, "nodes": [
        {"name": "Loader", "type": "ImageLoading", "settings": {)" +
                                      loaderSettings + R"(}},
        {"name": "Converter", "type": "ImageFormatConverter",
         "settings": {"OutputPixelFormat": 17301505}}],
        "connections": [{"from": "Loader.Image", "to": "Converter.Image"}]})");
}

std::string writeTestRecipe(const TemporaryFolder& folder, const std::string& type,
                            const std::string& settings) {
    return folder.write("r.json", R"({"version": 1, "nodes": [{"name": "S", "type": ")" + type +
                                      R"(", "settings": )" + settings + "}]}");
}

std::string testPackage(const std::string& name) {
    return std::string(ORLIX_LIBRARY_FOLDER) + "/orlixtest_" + name + ".so";
}

ProgramResult runWithTestNodes(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--package", testPackage("testnodes")});
    return runOrlix(arguments);
}

void expectFailure(const ProgramResult& result, const std::string& message) {
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orlix: " + message + "\n");
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace Orlix::Host::Testing
