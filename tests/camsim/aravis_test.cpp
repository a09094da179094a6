// What other programs make of the device. They look for cameras at the standard's port, so each
// test has a network of its own.
#include <gtest/gtest.h>

#include "camsim/support/camsim.h"

namespace Orlix::Camsim::Testing {
namespace {

class AravisTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (runShell("unshare -Urn ip link set lo up").exitCode != 0) {
            GTEST_SKIP() << "no network of one's own: 'unshare -Urn ip link set lo up' fails";
        }
    }
    // Runs a line beside a simulated camera.
    static CommandResult runBeside(const std::string& options, const std::string& line) {
        const std::string camsim = std::string(ORLIX_CAMSIM_FILE) + " " + options;
        // The program says where it listens; then the other one may begin.
        return runShell("unshare -Urn sh -c 'ip link set lo up; d=$(mktemp -d); mkfifo $d/out; " +
                        camsim + " > $d/out & pid=$!; exec 4< $d/out; read greeting <&4; " + line +
                        "; code=$?; kill $pid; cat <&4; rm -r $d; exit $code'");
    }
};

TEST_F(AravisTest, TheToolFindsTheDeviceAndReadsItsFeatures) {
    if (runShell("command -v arv-tool-0.8").exitCode != 0) {
        GTEST_SKIP() << "arv-tool-0.8 of the package aravis-tools-cli isn't installed";
    }
    for (const char* options : {"", "--zip"}) {
        const CommandResult list = runBeside(options, "arv-tool-0.8");
        EXPECT_EQ(list.exitCode, 0) << list.text;
        EXPECT_NE(list.text.find("Orlix-EmulatedCamera-SIM-0001 (127.0.0.1)"), std::string::npos)
            << list.text;
        const CommandResult values =
            runBeside(options, "arv-tool-0.8 control Width=640 Width GevSCPSPacketSize");
        EXPECT_NE(values.text.find("Width = 640 "), std::string::npos) << values.text;
        EXPECT_NE(values.text.find("GevSCPSPacketSize = 1500 B"), std::string::npos) << values.text;
    }
}

#ifdef ORLIX_CAMSIM_GRAB
// "COMPLETED FAILED CHUNKS", of that many frames.
std::string grabLine(const std::string& arguments) {
    return std::string(ORLIX_CAMSIM_GRAB) + " " + arguments;
}

TEST_F(AravisTest, FramesArriveWhole) {
    const CommandResult grab = runBeside("", grabLine("20"));
    EXPECT_EQ(grab.exitCode, 0) << grab.text;
    EXPECT_EQ(grab.text.substr(0, grab.text.find('\n')), "20 0 0");
}

TEST_F(AravisTest, ChunksArriveWithTheFrames) {
    const CommandResult grab = runBeside("", grabLine("5 chunks"));
    EXPECT_EQ(grab.text.substr(0, grab.text.find('\n')), "5 0 5") << grab.text;
}

TEST_F(AravisTest, LostPacketsAreAskedForAgain) {
    const CommandResult grab = runBeside("--loss 1 --seed 3", grabLine("20"));
    // One frame in eight would be whole without.
    EXPECT_EQ(grab.text.substr(0, grab.text.find('\n')), "20 0 0");
    EXPECT_EQ(grab.text.find("\"resentPackets\": 0,"), std::string::npos) << grab.text;
}
#else
TEST_F(AravisTest, FramesArriveWhole) {
    GTEST_SKIP() << "built without libaravis-dev";
}
#endif

}  // namespace
}  // namespace Orlix::Camsim::Testing
