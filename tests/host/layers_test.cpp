// scripts/check-layers.sh, on a small tree of its own.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "host/support/program.h"
#include "host/support/temporaryfolder.h"

namespace Orlix::Host::Testing {
namespace {

class Layers : public testing::Test {
protected:
    Layers() {
        std::filesystem::create_directory(folder_ / "scripts");
        std::filesystem::copy_file(std::string(ORLIX_SOURCE_FOLDER) + "/scripts/check-layers.sh",
                                   script_);
        for (const char* header :
             {"include/orlixhost/recipe.h", "src/host/message.h", "src/libs/orlixcamera/codecs/a.h",
              "include/orlixcamera/a.h", "src/libs/orlixcamera/emulated/camera.h"}) {
            folder_.write(header, "");
        }
    }
    [[nodiscard]] ProgramResult check() const { return Program("/bin/bash", {script_}).wait(); }
    void expectRefused(const std::string& file, const std::string& include,
                       const std::string& reason) {
        const std::string path = folder_.write(file, "// A comment.\n#include " + include + "\n");
        const ProgramResult result = check();
        EXPECT_EQ(result.exitCode, 1) << file;
        const std::string header = "\"" + include.substr(1, include.size() - 2) + "\"";
        EXPECT_EQ(result.out, file + ":2: " + header + " " + reason + "\n");
        std::filesystem::remove(path);
    }

    TemporaryFolder folder_;
    const std::string script_ = folder_ / "scripts/check-layers.sh";
};

TEST_F(Layers, WhatIsBelowAndPublicMayBeIncluded) {
    folder_.write("src/host/a.cpp",
                  "#include <sys/stat.h>\n#include <vector>\n#include \"host/message.h\"\n"
                  "#include \"orlixcamera/a.h\"\n#include \"orlixhost/recipe.h\"\n");
    folder_.write("apps/orlix-camsim/a.cpp", "#include \"orlixcamera/emulated/camera.h\"\n");
    const ProgramResult result = check();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "");
}

TEST_F(Layers, NothingPointsUp) {
    expectRefused("src/libs/orlixcamera/b.cpp", "\"host/message.h\"",
                  "is of orlixhost, which orlixcamera may not include");
    expectRefused("src/libs/genapi/b.h", "<orlixcamera/a.h>",
                  "is of orlixcamera, which genapi may not include");
    expectRefused("src/transports/aravis/b.cpp", "\"camera/names.h\"",
                  "is of orlixvcellpackagebase, which transports may not include");
    expectRefused("src/host/b.cpp", "\"imageloading/imagesource.h\"",
                  "is of orlixvcellpackagebase, which orlixhost may not include");
    expectRefused("apps/orlix/b.cpp", "\"aravis/layer.h\"",
                  "is of transports, which orlix may not include");
}

TEST_F(Layers, NothingReachesIntoAPrivateHeaderOfAnother) {
    expectRefused("src/host/b.cpp", "\"orlixcamera/codecs/a.h\"",
                  "is a private header of orlixcamera");
    expectRefused("apps/orlix/b.cpp", "\"host/message.h\"", "is a private header of orlixhost");
    expectRefused("src/host/b.cpp", "\"orlixcamera/emulated/camera.h\"",
                  "is a private header of orlixcamera");
}

TEST_F(Layers, FolderThatTheListLacksIsTold) {
    expectRefused("src/host/b.cpp", "\"newpart/b.h\"",
                  "is of no part of the list in scripts/check-layers.sh");
}

}  // namespace
}  // namespace Orlix::Host::Testing
