// Cameras whose packets have a size that can't be changed.
#include <gtest/gtest.h>

#include <atomic>
#include <optional>

#include "aravis/bootstrap.h"
#include "aravis/support/commandproxy.h"
#include "aravis/support/simulatedcameratest.h"
#include "aravis/survey.h"

namespace Orlix::Aravis {
namespace {

class FixedPacketSize : public Testing::SimulatedCameraTest {
protected:
    using CommandProxy = Testing::CommandProxy;

    void StartBehindProxy() {
        constexpr std::uint16_t port = 3999;
        proxy_.emplace(ParseAddress(address), port, [this](const CommandProxy::Command& command) {
            constexpr std::uint64_t writeRegister = 0x82;
            constexpr std::uint64_t writeMemory = 0x86;
            const bool isWrite = command.kind == writeRegister || command.kind == writeMemory;
            const bool isChange = isWrite && command.address == Bootstrap::streamPacketSize;
            refusals += isChange ? 1 : 0;
            return isChange ? CommandProxy::Way::Refuse : CommandProxy::Way::Forward;
        });
        Start({"--port", std::to_string(port)});
        Open();
    }
    void TearDown() override {
        SimulatedCameraTest::TearDown();
        proxy_.reset();
    }

    std::atomic<int> refusals{0};

private:
    std::optional<CommandProxy> proxy_;
};

TEST_F(FixedPacketSize, FramesComeInTheSizeThatTheCameraHas) {
    constexpr int frames = 3;
    StartBehindProxy();
    LimitFrames(frames);
    int refusedAtFirst = 0;
    for (const bool isFirst : {true, false}) {
        camera.StartGrabbing(frames);
        for (int frame = 0; frame < frames; ++frame) {
            CGrabResultPtr result;
            ASSERT_TRUE(camera.RetrieveResult(20000, result));
            EXPECT_TRUE(result->GrabSucceeded()) << result->GetErrorDescription();
        }
        camera.StopGrabbing();
        refusedAtFirst = isFirst ? refusals.load() : refusedAtFirst;
    }
    EXPECT_GT(refusedAtFirst, 0);
    EXPECT_EQ(refusals, refusedAtFirst) << "asked for once";
}

}  // namespace
}  // namespace Orlix::Aravis
