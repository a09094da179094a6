// A Camera over a device that does what a test tells it. What is protected in the node is open
// here, and its calls into the library can be watched.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orlixcamera/cameradevice.h"
#include "orlixcamera/instantcamera.h"
#include "orlixcamera/instantcamera/scripteddevice.h"
#include "support/camerafixture.h"
#include "support/recordingsink.h"

namespace Plugin::OrlixVCellPackageBase {

// Ends as a node class must: while its own part is still there.
class WatchedCamera final : public Camera {
public:
    using Camera::allocateAdditionalResources;
    using Camera::Camera;
    using Camera::freeAdditionalResources;
    using Camera::removeOutput;
    using Camera::waitForCameraDeviceRemoval;
    ~WatchedCamera() override { cleanup(); }

    void OnAttached(Orlix::CInstantCamera& camera) override {
        note("attached");
        Camera::OnAttached(camera);
    }
    void OnDetached(Orlix::CInstantCamera& camera) override {
        note("detached");
        Camera::OnDetached(camera);
    }
    void OnOpened(Orlix::CInstantCamera& camera) override {
        note("opened");
        Camera::OnOpened(camera);
    }
    void OnClosed(Orlix::CInstantCamera& /*camera*/) override { note("closed"); }
    void OnImageGrabbed(Orlix::CInstantCamera& camera,
                        const Orlix::CGrabResultPtr& grabResult) override {
        beforeImage();
        Camera::OnImageGrabbed(camera, grabResult);
    }

    void OnCameraDeviceRemoved(Orlix::CInstantCamera& camera) override {
        Camera::OnCameraDeviceRemoved(camera);
        afterLoss();
    }

    std::vector<std::string> calls;
    std::function<void(const std::string&)> onCall = [](const std::string&) {};
    std::function<void()> beforeImage = [] {};  // on the library's thread, which may be held up
    std::function<void()> afterLoss = [] {};    // on the library's thread

private:
    void note(const char* call) {
        calls.emplace_back(call);
        onCall(call);
    }
};

class ScriptedCamera : public CameraFixture {
protected:
    using Errors = std::vector<std::shared_ptr<Orlix::DataProcessing::Core::IError>>;

    ScriptedCamera() {
        resources.pool->addResource(makeInfo({{"FullName", "Scripted#1"}}), resource);
    }
    ~ScriptedCamera() override { watched_.reset(); }

    // The other one of the fixture is not made in these tests.
    [[nodiscard]] WatchedCamera& camera() {
        if (watched_ == nullptr) {
            watched_ = std::make_unique<WatchedCamera>(resources.pool);
        }
        return *watched_;
    }
    void destroyCamera() { watched_.reset(); }

    [[nodiscard]] GenApi::INodeMap& cameraMap() {
        return *camera().getNodeMapInfos().at(0).GetNodeMap();
    }
    [[nodiscard]] std::string shownText(const char* name) {
        return GenApi::CStringPtr(cameraMap().GetNode(name))->GetValue().str();
    }
    // Of the port's register, which a feature that is not available hides.
    [[nodiscard]] std::string hiddenText(const std::string& name) {
        return shownText((name + "Value").c_str());
    }
    [[nodiscard]] bool isShown(const char* name) {
        return GenApi::IsAvailable(cameraMap().GetNode(name));
    }
    [[nodiscard]] bool isWritable(const char* name) {
        return GenApi::IsWritable(cameraMap().GetNode(name));
    }
    [[nodiscard]] std::vector<std::string> publishedMaps() {
        std::vector<std::string> identifiers;
        for (const auto& info : camera().getNodeMapInfos()) {
            identifiers.push_back(info.GetIdentifier().str());
        }
        return identifiers;
    }
    [[nodiscard]] static std::vector<std::string> descriptionsOf(const Errors& errors) {
        std::vector<std::string> texts;
        for (const auto& error : errors) {
            texts.push_back(error->getDescription().str());
        }
        return texts;
    }
    void commit(StreamType type, const char* content) {
        camera().setStreamType(type);
        camera().setOFSStagedContent(content);
        camera().executeOFSCommit();
    }
    [[nodiscard]] std::shared_ptr<RecordingSink> attach(const char* pin) {
        auto sink = std::make_shared<RecordingSink>();
        handles_.push_back(camera().attachOutputSink(pin, sink));
        return sink;
    }
    void start() { camera().start(Orlix::DataProcessing::Core::NodeArgumentCollection()); }
    // With features of its own; before the device is opened.
    void extendDevice(const std::string& nodes) {
        const std::string mark = "<Port Name=\"Device\"/>";
        device->description.replace(device->description.find(mark), 0, nodes);
    }

    const std::shared_ptr<CameraTest::ScriptedDevice> device =
        std::make_shared<CameraTest::ScriptedDevice>();
    const std::shared_ptr<TestDeviceResource> resource =
        std::make_shared<TestDeviceResource>(Orlix::CreateCameraDevice(device));

private:
    std::unique_ptr<WatchedCamera> watched_;
    std::vector<std::shared_ptr<Orlix::DataProcessing::Core::IHandle>> handles_;
};

}  // namespace Plugin::OrlixVCellPackageBase
