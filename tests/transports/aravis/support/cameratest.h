// Tests with cameras that run as programs of their own, in the network of the test program.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "aravis/gvcpclient.h"
#include "aravis/support/network.h"
#include "aravis/support/process.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/installedlayers.h"

namespace Orlix::Aravis::Testing {

class CameraTest : public testing::Test {
protected:
    static constexpr unsigned int patience = 20000;  // milliseconds for a frame

    void SetUp() override { ORLIX_REQUIRE_NETWORK(); }

    static void WaitForAnswer(const std::string& address) {
        std::uint32_t value = 0;
        EXPECT_EQ(GvcpClient(ParseAddress(address))
                      .ReadRegister(0, value, {400, std::chrono::milliseconds(50)}),
                  GvcpClient::Answer::Given);
    }

    [[nodiscard]] static std::shared_ptr<ICameraLayer> CreateLayer(const char* deviceClass) {
        for (auto& layer : CreateInstalledLayers()) {
            auto cameras = CreateCameraLayer(std::move(layer));
            if (cameras->GetInfo().GetDeviceClass() == deviceClass) {
                return cameras;
            }
        }
        return nullptr;
    }

    // The camera of that serial number, looked for anew; more than once, since a busy computer may
    // keep its answer from coming in time.
    [[nodiscard]] static std::shared_ptr<ICameraDevice> FindDevice(
        const std::string& serialNumber) {
        CDeviceInfo wanted;
        wanted.SetPropertyValue(Key::SerialNumber, gcstring(serialNumber));
        const auto layer = CreateLayer("GigE");
        constexpr int looks = 3;
        for (int look = 1; look < looks; ++look) {
            try {
                static_cast<void>(layer->EnumerateDevices());
                return layer->CreateDevice(wanted);
            } catch (const GenICam::InvalidArgumentException&) {
                // It wasn't found.
            }
        }
        static_cast<void>(layer->EnumerateDevices());
        return layer->CreateDevice(wanted);
    }
};

}  // namespace Orlix::Aravis::Testing
