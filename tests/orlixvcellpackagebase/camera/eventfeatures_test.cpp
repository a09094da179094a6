// Devices whose features for events are not what they should be, and what opening them logs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/cameraevents.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

class CameraEventFeatures : public CameraEvents {
protected:
    // With one feature in place of another.
    void replace(const std::string& before, const std::string& after) {
        const std::size_t place = features_.find(before);
        ASSERT_NE(place, std::string::npos);
        features_.replace(place, before.size(), after);
    }
    // What opening the device logs of the events.
    std::vector<std::string> linesOfOpening() {
        add("End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID");
        extendDevice(features_);
        const Utils::LogCapture capture;
        allocate();
        auto lines = getLines(capture, category);
        EXPECT_FALSE(lines.empty());
        lines.pop_back();  // the camera that is used
        return lines;
    }

    static constexpr auto trying =
        "6 Camera: Try to register event \"ExposureEnd\" and output \"EventExposureEndFrameID\" as "
        "pin \"End\"";
    static constexpr auto selecting = "6 Camera: Set enumeration selector to 'ExposureEnd'";
    static constexpr auto turningOn = "6 Camera: Turn event notification on";
    static constexpr auto registering = "6 Camera: RegisterCameraEventHandler";

private:
    std::string features_ = eventFeatures;
};

TEST_F(CameraEventFeatures, AllThereAreRegistered) {
    EXPECT_THAT(linesOfOpening(), ElementsAre(trying, selecting, turningOn, registering));
}

TEST_F(CameraEventFeatures, ASelectorThatCantBeWrittenIsAsGoodAsNone) {
    replace("<Address>32</Address><Length>8</Length><AccessMode>RW</AccessMode>",
            "<Address>32</Address><Length>8</Length><AccessMode>RO</AccessMode>");
    EXPECT_THAT(linesOfOpening(), IsEmpty());
}

TEST_F(CameraEventFeatures, ASelectorThatIsNoEnumerationEndsTheEntry) {
    replace("<Enumeration Name=\"EventSelector\">",
            "<Integer Name=\"EventSelector\"><pValue>EventSelectorReg</pValue></Integer>"
            "<Enumeration Name=\"OtherSelector\">");
    EXPECT_THAT(linesOfOpening(), ElementsAre(trying, selecting));
}

TEST_F(CameraEventFeatures, ANotificationThatIsNoEnumerationEndsTheEntry) {
    replace("<Enumeration Name=\"EventNotification\">",
            "<Integer Name=\"EventNotification\"><pValue>EventNotificationReg</pValue></Integer>"
            "<Enumeration Name=\"OtherNotification\">");
    EXPECT_THAT(linesOfOpening(), ElementsAre(trying, selecting, turningOn));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
