#include <gtest/gtest.h>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::DataProcessing::Utils {
namespace {

class Failing final : public CConfigurationEventHandler {
public:
    void OnConfigurationRegistered(CInstantCamera&) override {
        throw GenICam::RuntimeException("100% wrong", __FILE__, __LINE__);
    }
};

TEST(CameraMessages, OfTheCameraLibraryAreLines) {
    const LogCapture capture;
    Failing handler;
    CInstantCamera camera;
    camera.RegisterConfiguration(&handler, RegistrationMode_Append, Cleanup_None);
    const auto lines = capture.getLines("orlix.camera");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].severity, Severitiy::Warning);
    EXPECT_EQ(lines[0].text, "Exception caught in OnConfigurationRegistered. Message: 100% wrong");
}

}  // namespace
}  // namespace Orlix::DataProcessing::Utils
