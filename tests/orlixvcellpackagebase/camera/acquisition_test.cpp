// A run of Camera: modes, frames that succeed and fail, ports, back-pressure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixcamera/copycounter.h"
#include "orlixdataprocessingcore/core/boolean.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "support/scriptedcamera.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using CameraTest::Frame;
using CameraTest::FrameFate;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// The geometry that a camera is set to, as its features tell it.
constexpr auto geometryFeatures = R"(
  <Integer Name="Height"><Value>2</Value></Integer>
  <Enumeration Name="PixelFormat"><EnumEntry Name="Mono8"><Value>0</Value></EnumEntry>
    <EnumEntry Name="BayerGR8"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>
)";

class CameraAcquisition : public ScriptedCamera {
protected:
    void allocate() { ASSERT_THAT(camera().allocateResources(), IsEmpty()); }

    void startWith(const Utils::Variant& mode) {
        Core::NodeArgumentCollection arguments;
        arguments.setArgument("AcquisitionMode", mode);
        camera().start(arguments);
    }
    void startWith(const char* mode) { startWith(Utils::Variant(Core::String(gcstring(mode)))); }

    // The value of the next frame on the pin "Image".
    Utils::COWPtr<Core::Image> grab(RecordingSink& sink, const Frame& frame) {
        const std::size_t count = sink.values().size();
        device->WaitForQueued(1);
        EXPECT_TRUE(device->Send(frame));
        sink.waitForCount(count + 1);
        return sink.values().back().getCOW<Core::Image>(true);
    }
    std::string errorOf(const Utils::COWPtr<Core::Image>& image) {
        const auto error = image.getConst()->getError(false);
        return error == nullptr ? "none"
                                : error->getName().str() + ": " + error->getDescription().str();
    }
    Frame failedFrame(const char* text = "lost") {
        Frame frame;
        frame.fate = FrameFate::MissingPackets;
        frame.error = text;
        frame.value = 9;
        return frame;
    }
};

TEST_F(CameraAcquisition, AFrameTravelsWithoutACopyAndOutlivesTheRun) {
    allocate();
    const auto sink = attach("Image");
    start();
    const std::uint64_t before = Orlix::PixelCopyCounter::Read();
    Frame frame;
    frame.value = 7;
    const auto image = grab(*sink, frame);
    EXPECT_EQ(Orlix::PixelCopyCounter::Read(), before);
    camera().stop();
    camera().freeResources();
    destroyCamera();
    EXPECT_EQ(errorOf(image), "none");
    EXPECT_EQ(image.getConst()->getWidth(), 8U);
    EXPECT_EQ(image.getConst()->getHeight(), 4U);
    EXPECT_EQ(image.getConst()->getPixelType(), Orlix::PixelType_Mono8);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image.getConst()->getDataConst())[31], 7);
}

TEST_F(CameraAcquisition, TheModeOfThePortReachesTheDevice) {
    allocate();
    const auto sink = attach("Image");
    start();
    EXPECT_EQ(device->Get(CameraTest::Address::mode), 1);
    camera().stop();
    camera().setAcquisitionMode(AcquisitionMode::SingleFrame);
    start();
    EXPECT_EQ(device->Get(CameraTest::Address::mode), 0);
    static_cast<void>(grab(*sink, Frame()));
    EXPECT_EQ(camera().getState(), Core::NodeState::Running);
    camera().stop();
}

TEST_F(CameraAcquisition, AnArgumentOverridesThePortAndIsKept) {
    allocate();
    camera().setAcquisitionMode(AcquisitionMode::SingleFrame);
    const auto sink = attach("Image");
    startWith("Continuous");
    static_cast<void>(grab(*sink, Frame()));
    static_cast<void>(grab(*sink, Frame()));
    EXPECT_EQ(camera().getAcquisitionMode(), AcquisitionMode::Continuous);
    camera().stop();
    startWith("SingleFrame");
    EXPECT_EQ(camera().getAcquisitionMode(), AcquisitionMode::SingleFrame);
    camera().stop();
}

TEST_F(CameraAcquisition, ADeviceWithoutTheModeGrabsInTheOneThatItHas) {
    const std::string name = "Name=\"AcquisitionMode\"";
    device->description.replace(device->description.find(name), name.size(), "Name=\"OtherMode\"");
    allocate();
    const auto sink = attach("Image");
    startWith("SingleFrame");
    EXPECT_EQ(camera().getAcquisitionMode(), AcquisitionMode::Continuous);
    static_cast<void>(grab(*sink, Frame()));
    camera().stop();
}

TEST_F(CameraAcquisition, ADeviceThatRefusesTheModeGrabsInTheOneThatItHas) {
    const std::string description = device->description;
    const std::pair<std::string, std::string> changes[] = {
        {R"(<EnumEntry Name="SingleFrame"><Value>0</Value></EnumEntry>)", ""},
        {R"(<Enumeration Name="AcquisitionMode">)",
         R"(<Enumeration Name="AcquisitionMode"><ImposedAccessMode>RO</ImposedAccessMode>)"}};
    device->Set(CameraTest::Address::mode, 1);
    const auto sink = attach("Image");
    for (const auto& [before, after] : changes) {
        device->description = description;
        device->description.replace(description.find(before), before.size(), after);
        allocate();
        startWith("SingleFrame");
        EXPECT_EQ(camera().getAcquisitionMode(), AcquisitionMode::Continuous) << before;
        EXPECT_EQ(device->Get(CameraTest::Address::mode), 1) << before;
        static_cast<void>(grab(*sink, Frame()));
        camera().stop();
        camera().freeResources();
    }
}

TEST_F(CameraAcquisition, AnArgumentInOtherLettersIsIgnoredInSilence) {
    allocate();
    camera().setAcquisitionMode(AcquisitionMode::SingleFrame);
    const Utils::LogCapture capture;
    startWith("continuous");
    EXPECT_EQ(device->Get(CameraTest::Address::mode), 0);
    camera().stop();
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(CameraAcquisition, AnArgumentOfAnotherTypeIsWarnedOfOnce) {
    allocate();
    const Utils::LogCapture capture;
    startWith(Utils::Variant(Core::Integer(1)));
    EXPECT_EQ(device->Get(CameraTest::Address::mode), 1);
    camera().stop();
    startWith(Utils::Variant());
    camera().stop();
    const std::string line =
        "4 Camera " + toText(static_cast<const Camera*>(&camera())) +
        ": Argument \"AcquisitionMode\" is not of type \"String\" or invalid and is therefore "
        "ignored.";
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line));
}

TEST_F(CameraAcquisition, AnArgumentThatCarriesAnErrorIsWarnedOfAndThePortsModeApplies) {
    allocate();
    camera().setAcquisitionMode(AcquisitionMode::SingleFrame);
    const Utils::LogCapture capture;
    startWith(Utils::Variant(Core::String(
        std::make_shared<Core::InvalidValueError>("no text", Utils::DateTime::now()))));
    EXPECT_EQ(device->Get(CameraTest::Address::mode), 0);
    camera().stop();
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera " + toText(static_cast<const Camera*>(&camera())) +
                            ": Argument \"AcquisitionMode\" is not of type \"String\" or "
                            "invalid and is therefore ignored."));
}

TEST_F(CameraAcquisition, AModeThatIsNoneGivesARunningNodeWithoutImages) {
    allocate();
    camera().setAcquisitionMode(static_cast<AcquisitionMode>(5));
    const Utils::LogCapture capture;
    start();
    EXPECT_EQ(camera().getState(), Core::NodeState::Running);
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("3 Camera " + toText(static_cast<const Camera*>(&camera())) +
                            ": Couldn't determine acquisition mode."));
    EXPECT_FALSE(device->Send());
    camera().stop();
}

TEST_F(CameraAcquisition, WithoutADeviceTheStartFailsAndThePortsStayAsTheyAre) {
    EXPECT_THROW(start(), GenICam::GenericException);
    EXPECT_EQ(camera().getState(), Core::NodeState::Stopped);
    EXPECT_FALSE(isShown("EventPinAdd"));
    EXPECT_FALSE(isWritable("AcquisitionMode"));
    allocate();
    start();
    camera().stop();
    EXPECT_TRUE(isShown("EventPinAdd"));
    EXPECT_TRUE(isWritable("AcquisitionMode"));
}

TEST_F(CameraAcquisition, PortsOfPinsAndSetsAreUnavailableDuringARun) {
    allocate();
    camera().executeEventPinAdd();
    const auto changing = {"ConfigurationSetFetch",
                           "ConfigurationSetCommit",
                           "ConfigurationSetClear",
                           "ConfigurationSetSelector",
                           "ConfigurationSetStaged",
                           "ConfigurationSetActive",
                           "EventPinAdd",
                           "EventPinSelector",
                           "EventPinConfiguration",
                           "EventPinRemove",
                           "ChunkPinAdd"};
    start();
    for (const char* name : changing) {
        EXPECT_FALSE(isShown(name)) << name;
    }
    EXPECT_FALSE(isWritable("AcquisitionMode"));
    EXPECT_FALSE(isWritable("FixCorruptImages"));
    for (const char* name : {"DeviceListUpdate", "DeviceSelector", "DevicePropertyAdd",
                             "SelectedDeviceSerialNumber"}) {
        EXPECT_TRUE(isShown(name)) << name;
    }
    camera().stop();
    for (const char* name : changing) {
        EXPECT_TRUE(isShown(name)) << name;
    }
    EXPECT_TRUE(isWritable("FixCorruptImages"));
    EXPECT_FALSE(isShown("ChunkPinSelector"));
    EXPECT_TRUE(device->IsOpen());
}

TEST_F(CameraAcquisition, AFailedFrameCarriesTheLibrarysText) {
    allocate();
    const auto sink = attach("Image");
    start();
    EXPECT_THAT(errorOf(grab(*sink, failedFrame("three packets are missing"))),
                testing::AllOf(StartsWith("InvalidValueError: "),
                               testing::HasSubstr("three packets are missing")));
    EXPECT_EQ(errorOf(grab(*sink, Frame())), "none");
    EXPECT_FALSE(camera().hasError());
    camera().stop();
}

TEST_F(CameraAcquisition, ThereIsNoImageCorruptWhileTheRepairIsOff) {
    EXPECT_THAT(camera().getOutputDescriptors(), testing::SizeIs(1));
    camera().setFixCorruptImages(FixCorruptImages::On);
    int changes = 0;
    const auto connection = camera().getSettingsChangedSignal()->connect([&] { ++changes; });
    camera().setFixCorruptImages(FixCorruptImages::On);
    EXPECT_EQ(changes, 0);
    const auto outputs = camera().getOutputDescriptors();
    ASSERT_THAT(outputs, testing::SizeIs(2));
    EXPECT_EQ(outputs[1].name, "ImageCorrupt");
    EXPECT_EQ(outputs[1].description, "Determines if the output image is corrupt.");
    EXPECT_EQ(outputs[1].type, Utils::TypeInfo::getTypeInfo<Core::Boolean>(true));
    camera().setFixCorruptImages(FixCorruptImages::Off);
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(camera().getOutputDescriptors(), testing::SizeIs(1));
}

TEST_F(CameraAcquisition, ARepairedFrameHasTheGeometryThatTheCameraIsSetTo) {
    extendDevice(geometryFeatures);
    device->Set(CameraTest::Address::width, 6);
    camera().setFixCorruptImages(FixCorruptImages::On);
    allocate();
    const auto images = attach("Image");
    const auto corrupt = attach("ImageCorrupt");
    start();
    const auto image = grab(*images, failedFrame());
    EXPECT_EQ(errorOf(image), "none");
    EXPECT_EQ(image.getConst()->getWidth(), 6U);
    EXPECT_EQ(image.getConst()->getHeight(), 2U);
    EXPECT_EQ(image.getConst()->getPixelType(), Orlix::PixelType_BayerGR8);
    EXPECT_EQ(static_cast<const std::uint8_t*>(image.getConst()->getDataConst())[0], 9);
    static_cast<void>(grab(*images, Frame()));
    corrupt->waitForCount(2);
    EXPECT_TRUE(corrupt->values()[0].get<Core::Boolean>(true)->get());
    EXPECT_FALSE(corrupt->values()[1].get<Core::Boolean>(true)->get());
    EXPECT_EQ(corrupt->updates()[0], images->updates()[0]);
    camera().stop();
}

TEST_F(CameraAcquisition, ADeviceWithoutAPixelFormatIsRepairedAsMono8) {
    extendDevice("<Integer Name=\"Height\"><Value>2</Value></Integer>");
    camera().setFixCorruptImages(FixCorruptImages::On);
    allocate();
    const auto images = attach("Image");
    start();
    const auto image = grab(*images, failedFrame());
    EXPECT_EQ(image.getConst()->getPixelType(), Orlix::PixelType_Mono8);
    EXPECT_EQ(image.getConst()->getHeight(), 2U);
    camera().stop();
}

TEST_F(CameraAcquisition, AFailedFrameWithoutAWidthEndsAsAnError) {
    extendDevice(geometryFeatures);
    camera().setFixCorruptImages(FixCorruptImages::On);
    allocate();
    const auto images = attach("Image");
    const auto corrupt = attach("ImageCorrupt");
    start();
    Frame frame = failedFrame();
    frame.width = 0;
    EXPECT_THAT(errorOf(grab(*images, frame)), StartsWith("GenICamExceptionError: "));
    corrupt->waitForCount(1);
    EXPECT_TRUE(corrupt->values()[0].get<Core::Boolean>(true)->get());
    camera().stop();
}

TEST_F(CameraAcquisition, ABlockedGraphBlocksNoParameterAndNoStop) {
    allocate();
    const auto sink = attach("Image");
    sink->setSpace(false);
    start();
    device->WaitForQueued(2);
    ASSERT_TRUE(device->Send());
    ASSERT_TRUE(device->Send());
    // The first frame waits on the grab thread, with the lock free.
    sink->waitUntilRefused();
    static_cast<void>(camera().getAcquisitionMode());
    camera().executeDeviceListUpdate();
    camera().stop();
    EXPECT_THAT(sink->values(), IsEmpty());
}

TEST_F(CameraAcquisition, AStopUnderALockThatTheHandlerWaitsForEnds) {
    allocate();
    const auto sink = attach("Image");
    std::promise<void> isCalled;
    camera().beforeImage = [&] { isCalled.set_value(); };
    start();
    device->WaitForQueued(1);
    {
        // The handler can't go on, wherever it is, until the stop has returned.
        const GenApi::AutoLock guard(cameraMap().GetLock());
        ASSERT_TRUE(device->Send());
        isCalled.get_future().wait();
        camera().stop();
    }
    EXPECT_EQ(camera().getState(), Core::NodeState::Stopped);
    camera().freeResources();
    destroyCamera();  // waits for the handler
    EXPECT_THAT(sink->values(), IsEmpty());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
