// Attaching, opening, closing and the node maps.
#include "orlixcamera/instantcamera.h"

#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixcamera/featurepersistence.h"
#include "orlixcamera/instantcamera/cameratest.h"

namespace CameraTest {
namespace {

using Names = std::vector<std::string>;

class InstantCamera : public CameraFixture {};

TEST_F(InstantCamera, BeginsWithoutADevice) {
    EXPECT_FALSE(camera.IsDeviceAttached());
    EXPECT_FALSE(camera.IsOpen());
    EXPECT_FALSE(camera.IsGrabbing());
    EXPECT_FALSE(camera.IsCameraDeviceRemoved());
    EXPECT_EQ(camera.GetDeviceInfo().GetSerialNumber(), "");
    EXPECT_EQ(camera.DetachDevice(), nullptr);
    camera.Close();
    camera.StopGrabbing();
}

TEST_F(InstantCamera, OpeningWithoutADeviceTellsWhy) {
    EXPECT_EQ(failureOf<GenICam::RuntimeException>([&] { camera.Open(); }),
              "The camera can't be opened: no device is attached to it.");
}

TEST_F(InstantCamera, ANullDeviceIsRefused) {
    EXPECT_THROW(camera.Attach(nullptr), GenICam::InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(CreateCameraDevice(nullptr)), GenICam::InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(CreateCameraLayer(nullptr)), GenICam::InvalidArgumentException);
}

TEST_F(InstantCamera, TellsOfEachStepOnTheCallingThreadAndInOrder) {
    const auto here = std::this_thread::get_id();
    states.work = [&](const std::string&) { EXPECT_EQ(std::this_thread::get_id(), here); };
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    camera.Attach(attached.get());
    EXPECT_EQ(states.names.Get(), (Names{"OnAttach", "OnAttached"}));
    states.names.Clear();
    camera.Open();
    EXPECT_EQ(states.names.Get(), (Names{"OnOpen", "OnOpened"}));
    states.names.Clear();
    camera.StartGrabbing();
    EXPECT_EQ(states.names.Get(), (Names{"OnGrabStart", "OnGrabStarted"}));
    states.names.Clear();
    EXPECT_EQ(camera.DetachDevice(), attached.get());
    EXPECT_EQ(states.names.Get(), (Names{"OnGrabStop", "OnGrabStopped", "OnClose", "OnClosed",
                                         "OnDetach", "OnDetached"}));
}

TEST_F(InstantCamera, AnExceptionOfOnOpenedLeavesOpenWithTheCameraClosed) {
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    states.work = [](const std::string& name) {
        if (name == "OnOpened") {
            throw GenICam::RuntimeException("no thanks", __FILE__, __LINE__);
        }
    };
    camera.Attach(attached.get());
    EXPECT_EQ(failureOf([&] { camera.Open(); }), "no thanks");
    EXPECT_FALSE(camera.IsOpen());
    EXPECT_FALSE(device->IsOpen());
    EXPECT_TRUE(camera.IsDeviceAttached());
}

TEST_F(InstantCamera, ExceptionsOfOnAttachedAndOnDetachedLeaveTheirOperation) {
    camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
    states.work = [](const std::string& name) {
        throw GenICam::RuntimeException(name.c_str(), __FILE__, __LINE__);
    };
    EXPECT_EQ(failureOf([&] { camera.Attach(attached.get()); }), "OnAttached");
    EXPECT_TRUE(camera.IsDeviceAttached());
    EXPECT_EQ(failureOf([&] { static_cast<void>(camera.DetachDevice()); }), "OnDetached");
    EXPECT_FALSE(camera.IsDeviceAttached());
}

TEST_F(InstantCamera, ADeviceInUseIsRefusedAndCanBeOpenedLater) {
    const auto layer = CreateCameraLayer(CreateEmulatedCameras(1));
    const CDeviceInfo info = layer->EnumerateDevices().at(0);
    const auto first = layer->CreateDevice(info);
    const auto second = layer->CreateDevice(info);
    CInstantCamera other(first.get());
    other.Open();
    camera.Attach(second.get());
    EXPECT_THROW(camera.Open(), GenICam::AccessException);
    EXPECT_FALSE(camera.IsOpen());
    other.Close();
    camera.Open();
    EXPECT_TRUE(camera.IsOpen());
    static_cast<void>(camera.DetachDevice());
}

TEST_F(InstantCamera, TheObjectThatWasAttachedMayGoWhileTheMapsAreInUse) {
    auto layer = CreateCameraLayer(CreateEmulatedCameras(1));
    auto held = layer->CreateDevice(layer->EnumerateDevices().at(0));
    camera.Attach(held.get());
    layer.reset();
    camera.Open();
    EXPECT_EQ(CIntegerParameter(camera.GetNodeMap(), "SensorWidth").GetValue(), 4096);
    EXPECT_EQ(camera.DetachDevice(), held.get());
    held.reset();
    EXPECT_THROW(
        static_cast<void>(CIntegerParameter(camera.GetNodeMap(), "SensorWidth").GetValue()),
        GenICam::GenericException);
}

TEST_F(InstantCamera, HasItsOwnMapAlwaysAndThoseOfADeviceSinceItsFirstOpening) {
    EXPECT_NE(camera.GetInstantCameraNodeMap().GetNode("MaxNumBuffer"), nullptr);
    EXPECT_THROW(static_cast<void>(camera.GetNodeMap()), GenICam::RuntimeException);
    camera.Attach(attached.get());
    EXPECT_THROW(static_cast<void>(camera.GetTLNodeMap()), GenICam::RuntimeException);
    camera.Open();
    EXPECT_EQ(CIntegerParameter(camera.GetNodeMap(), "Width").GetValue(), 8);
    EXPECT_EQ(CStringParameter(camera.GetTLNodeMap(), "FullName").GetValue(), "Scripted#1");
    EXPECT_EQ(statistic("StatisticSent"), 0);
}

TEST_F(InstantCamera, MapsOfAClosedCameraAnswerWithExceptionsUntilItIsOpenAgain) {
    open();
    GenApi::INodeMap* const map = &camera.GetNodeMap();
    camera.Close();
    EXPECT_EQ(&camera.GetNodeMap(), map);
    EXPECT_THROW(static_cast<void>(CIntegerParameter(*map, "Width").GetValue()),
                 GenICam::AccessException);
    EXPECT_EQ(CIntegerParameter(*map, "Width").GetValueOrDefault(7), 7);
    EXPECT_THROW(static_cast<void>(statistic("StatisticSent")), GenICam::AccessException);
    EXPECT_THROW(static_cast<void>(CStringParameter(camera.GetTLNodeMap(), "FullName").GetValue()),
                 GenICam::AccessException);
    device->Set(Address::width, 123);
    camera.Open();
    EXPECT_EQ(CIntegerParameter(*map, "Width").GetValue(), 123);
}

TEST_F(InstantCamera, OwnSettingsCanBeChangedOnlyWhileItIsClosed) {
    camera.MaxNumBuffer.SetValue(5);
    camera.GrabCameraEvents.SetValue(true);
    open();
    EXPECT_THROW(camera.MaxNumBuffer.SetValue(6), GenICam::AccessException);
    EXPECT_FALSE(camera.GrabCameraEvents.TrySetValue(false));
    EXPECT_EQ(camera.MaxNumBuffer.GetValue(), 5);
    EXPECT_TRUE(camera.GrabCameraEvents.GetValue());
    camera.Close();
    camera.MaxNumBuffer.SetValue(6);
    EXPECT_EQ(camera.MaxNumBuffer.GetValue(), 6);
    EXPECT_THROW(camera.MaxNumBuffer.SetValue(0), GenICam::OutOfRangeException);
}

TEST_F(InstantCamera, OwnSettingsAreSavedAndRestored) {
    camera.MaxNumBuffer.SetValue(7);
    camera.OutputQueueSize.SetValue(3);
    gcstring text;
    CFeaturePersistence::SaveToString(text, &camera.GetInstantCameraNodeMap());
    camera.MaxNumBuffer.SetValue(9);
    camera.OutputQueueSize.SetValue(1);
    CFeaturePersistence::LoadFromString(text, &camera.GetInstantCameraNodeMap(), true);
    EXPECT_EQ(camera.MaxNumBuffer.GetValue(), 7);
    EXPECT_EQ(camera.OutputQueueSize.GetValue(), 3);
}

TEST_F(InstantCamera, SettingsOfTheStreamAreThoseOfTheCameraAndLockedWhileGrabbing) {
    camera.MaxNumBuffer.SetValue(7);
    open();
    CIntegerParameter buffers(camera.GetStreamGrabberNodeMap(), "MaxNumBuffer");
    EXPECT_EQ(buffers.GetValue(), 7);
    buffers.SetValue(3);
    EXPECT_EQ(camera.MaxNumBuffer.GetValue(), 3);
    camera.StartGrabbing();
    EXPECT_FALSE(buffers.IsWritable());
    EXPECT_EQ(statistic("NumBuffers"), 3);
    camera.StopGrabbing();
    EXPECT_TRUE(buffers.IsWritable());
    gcstring text;
    CFeaturePersistence::SaveToString(text, &camera.GetStreamGrabberNodeMap());
    EXPECT_NE(text.str().find("MaxNumBuffer\t3"), std::string::npos);
}

TEST_F(InstantCamera, TheStreamTellsThePayloadSizeFromTheFirstStartOn) {
    open();
    EXPECT_FALSE(CIntegerParameter(camera.GetStreamGrabberNodeMap(), "PayloadSize").IsValid());
    camera.StartGrabbing();
    EXPECT_EQ(statistic("PayloadSize"), 64);
    camera.StopGrabbing();
    EXPECT_EQ(statistic("PayloadSize"), 64);
}

TEST_F(InstantCamera, ChangesOfStateFireCallbacksOfItsMaps) {
    int fired = 0;
    GenApi::INode* const node = camera.GetInstantCameraNodeMap().GetNode("IsOpen");
    const auto handle = GenApi::Register(node, [&](GenApi::INode*) { ++fired; });
    open();
    EXPECT_EQ(fired, 1);
    camera.Close();
    EXPECT_EQ(fired, 2);
    EXPECT_TRUE(GenApi::Deregister(node, handle));
}

TEST_F(InstantCamera, AnotherDeviceTakesThePlaceOfTheFirst) {
    open();
    const auto next = std::make_shared<ScriptedDevice>();
    next->Set(Address::width, 55);
    const auto nextAttached = CreateCameraDevice(next);
    camera.Attach(nextAttached.get());
    EXPECT_FALSE(device->IsOpen());
    camera.Open();
    EXPECT_EQ(CIntegerParameter(camera.GetNodeMap(), "Width").GetValue(), 55);
}

TEST_F(InstantCamera, ADeviceThatWasOpenStaysSoWithoutCleanup) {
    device->Open();
    camera.Attach(attached.get(), Cleanup_None);
    camera.Open();
    static_cast<void>(camera.DetachDevice());
    EXPECT_TRUE(device->IsOpen());
    camera.Attach(attached.get(), Cleanup_Delete);
    camera.Open();
    static_cast<void>(camera.DetachDevice());
    EXPECT_FALSE(device->IsOpen());
}

TEST_F(InstantCamera, ABadDescriptionLeavesItClosed) {
    device->description = "<RegisterDescription";
    camera.Attach(attached.get());
    EXPECT_THROW(camera.Open(), GenICam::RuntimeException);
    EXPECT_FALSE(camera.IsOpen());
    EXPECT_FALSE(device->IsOpen());
}

TEST(InstantCameraEnd, LetsGoOfTheDeviceAndTellsOfIt) {
    const auto device = std::make_shared<ScriptedDevice>();
    const auto attached = CreateCameraDevice(device);
    States states;
    {
        CInstantCamera camera;
        camera.RegisterConfiguration(&states, RegistrationMode_Append, Cleanup_None);
        camera.Attach(attached.get());
        camera.Open();
        camera.StartGrabbing(GrabStrategy_OneByOne, GrabLoop_ProvidedByInstantCamera);
        states.names.Clear();
    }
    EXPECT_EQ(states.names.Get(), (Names{"OnGrabStop", "OnGrabStopped", "OnClose", "OnClosed",
                                         "OnDestroy", "OnDestroyed"}));
    EXPECT_FALSE(device->IsOpen());
    EXPECT_EQ(device.use_count(), 2);
}

}  // namespace
}  // namespace CameraTest
