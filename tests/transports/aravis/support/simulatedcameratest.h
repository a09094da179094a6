// Tests with this project's simulated camera, whose network loses, doubles and delays packets as
// told.
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "aravis/support/cameratest.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/nodeparameter.h"

namespace Orlix::Aravis::Testing {

class SimulatedCameraTest : public CameraTest {
protected:
    static constexpr const char* address = "127.0.0.1";
    static constexpr const char* serialNumber = "S1";

    // Closed while the camera is there to hear of it.
    void TearDown() override { camera.DetachDevice(); }

    void Start(const std::vector<std::string>& options = {}) {
        std::vector<std::string> command = {std::string(ORLIX_PROGRAM_FOLDER) + "/orlix-camsim",
                                            "--address", address, "--serial", serialNumber};
        command.insert(command.end(), options.begin(), options.end());
        outputFile_ = testing::TempDir() + "camsim." + std::to_string(::getpid());
        process_ = Process(command, outputFile_);
        WaitForAnswer(address);
    }
    void Kill() { process_.Kill(); }
    // Those that the wire script keeps for a signal: counted from what the test has come to, not
    // from the start of the camera.
    void BeginFaults() { process_.BeginFaults(); }
    // A silence that began so ends so, too.
    void EndFaults() { process_.BeginFaults(); }
    void Pause() { process_.Pause(); }
    void Continue() { process_.Continue(); }
    void Open() {
        device_ = FindDevice(serialNumber);
        camera.Attach(device_.get(), Cleanup_Delete);
        camera.Open();
        BePatient();
    }
    // What the camera has counted; it ends.
    [[nodiscard]] nlohmann::json EndAndCount() {
        EXPECT_EQ(process_.Terminate(), 0);
        return nlohmann::json::parse(LastLine());
    }
    void WaitUntilSent(int frames) {
        int sent = 0;
        while (sent < frames) {
            process_.AskForCounts();
            std::this_thread::yield();
            const auto counts = nlohmann::json::parse(LastLine(), nullptr, false);
            sent = counts.is_object() ? counts.value("frames", 0) : 0;
        }
    }

    void Set(const char* name, std::int64_t value) {
        CIntegerParameter(camera.GetNodeMap(), name).SetValue(value);
    }
    void Choose(const char* name, const char* entry) {
        CEnumParameter(camera.GetNodeMap(), name).SetValue(entry);
    }
    [[nodiscard]] std::int64_t Statistic(const char* name) const {
        return CIntegerParameter(camera.GetStreamGrabberNodeMap(), name).GetValue();
    }
    // An acquisition of so many frames that ends by itself.
    void LimitFrames(std::int64_t count) {
        Choose("AcquisitionMode", "MultiFrame");
        Set("AcquisitionFrameCount", count);
    }

    // Handlers outlive the camera.
    std::shared_ptr<ICameraDevice> device_;
    CInstantCamera camera;

private:
    // A busy computer may keep either side waiting for long. What of a frame is late is waited for,
    // and what comes meanwhile finds room; the fates of frames are those that the scripts give.
    void BePatient() {
        constexpr std::int64_t room = 4 << 20;
        CIntegerParameter(camera.GetTLNodeMap(), "FrameRetention").SetValue(2000);
        CIntegerParameter(camera.GetTLNodeMap(), "SocketBufferSize").SetValue(room);
    }

    [[nodiscard]] std::string LastLine() const {
        std::ifstream file(outputFile_);
        std::string line;
        std::string last;
        while (std::getline(file, line)) {
            last = line;
        }
        return last;
    }

    Process process_;
    std::string outputFile_;
};

}  // namespace Orlix::Aravis::Testing
