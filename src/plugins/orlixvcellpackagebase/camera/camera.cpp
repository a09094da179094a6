#include "orlixvcellpackagebase/camera.h"

#include <utility>

#include "camera/cameraimpl.h"
#include "camera/log.h"
#include "camera/names.h"
#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/lockedconnection.h"
#include "unituuids.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

ORLIX_REGISTER_TYPE_WITH_UUID("846bca11-6bf2-4895-88c4-fe038f5a659c", Camera, Core::AdvancedNode,
                              Core::INodeMapContainer)

namespace CameraNames {

const gcstring imagePin("Image");
const gcstring imageCorruptPin("ImageCorrupt");

const gcstring devicePropertiesKey("DeviceProperties");
const gcstring eventConfigurationKey("EventConfiguration");
const gcstring chunkPinConfigurationsKey("ChunkPinConfigurations");
const gcstring acquisitionModeKey("AcquisitionMode");
const gcstring fixCorruptImagesKey("FixCorruptImages");
const gcstring featureStreamsKey("FeatureStreams");

const gcstring cameraInstanceMap("@CameraInstance");
const gcstring streamGrabberMap("@StreamGrabber0");
const gcstring cameraDeviceMap("@CameraDevice");
const gcstring transportLayerMap("@DeviceTransportLayer");

}  // namespace CameraNames

Utils::CatId CameraLog::category() {
    static const Utils::CatId id = Utils::getCatId("orlix.dataprocessing.vcell.Camera");
    return id;
}

Utils::LogSubject CameraLog::getSubject(const Camera* node) {
    return {"Plugin::OrlixVCellPackageBase::Camera", node, category()};
}

ORLIX_DEFINE_OBJECT(Camera)

Camera::Camera(const std::shared_ptr<Core::IResourcePool>& pool)
    : AdvancedNode(pool),
      ThreadedConfigurationEventHandler(getThreadPool()),
      impl_(std::make_unique<Impl>()) {
    if (pool == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            CameraLog::getSubject(this), "Resource pool must not be nullptr. ", "Camera");
    }
    impl_->lock = std::make_shared<Orlix::DataProcessing::Threading::RecursiveCLock>();
    setLock(impl_->lock);
    takeOnlyUpdatesOfTheRun();
    impl_->signals = std::make_shared<Impl::Signals>();
    impl_->resourcePool = pool;
    try {
        // From the connection on the pool may call; it finds the list filled or the lock taken.
        Guard guard = lockNode();
        connectToPool();
        impl_->instantCamera.RegisterImageEventHandler(this, Orlix::RegistrationMode_Append,
                                                       Orlix::Cleanup_None);
        impl_->instantCamera.RegisterConfiguration(this, Orlix::RegistrationMode_Append,
                                                   Orlix::Cleanup_None);
        buildParameterTree();
        publish();
        updateResources();
        guard.unlock();
        createOutput(CameraNames::imagePin, "The image output.",
                     Utils::TypeInfo::getTypeInfo<Core::Image>(true), true, Core::unlimitedJobs);
        if (impl_->fixCorruptImages == FixCorruptImages::On) {
            createImageCorruptOutput();
        }
        setOFSParametersAvailable(true);
    } catch (...) {
        disconnectFromPool();
        throw;
    }
}

Camera::~Camera() {
    // A removal that is at work calls into the node.
    waitForCameraDeviceRemoval();
    cleanup();
    waitForCameraDeviceRemoval();
    disconnectFromPool();
}

Camera::Guard Camera::lockNode() const {
    return Guard(*getLock());
}

// No emission waits for the node's lock.
void Camera::connectToPool() {
    impl_->signals->poolConnection.set(
        Core::connectUnderLock(*impl_->resourcePool->getResourcesChangedSignal(), impl_->lock,
                               getThreadPool(), [this] { updateResources(); }),
        true);
}

// Taken out under the lock and ended with it free, since an update may wait for the lock. A host
// may still hold the signal, so that the connection does not end by itself.
void Camera::disconnectFromPool() {
    Guard guard = lockNode();
    impl_->nodeMaps.clear();
    const std::shared_ptr<Impl::Signals> signals = std::exchange(impl_->signals, nullptr);
    guard.unlock();
    signals->poolConnection.reset();
}

void Camera::publish() {
    impl_->nodeMaps.emplace_back("@vCell", "Camera", impl_->adapter.getNodeMap());
    impl_->nodeMaps.emplace_back(CameraNames::cameraInstanceMap, "Camera Instance",
                                 &impl_->instantCamera.GetInstantCameraNodeMap());
    impl_->activeStreams.clear();
    impl_->stagedStreams.clear();
}

bool Camera::isForwardingUpdates() const {
    return false;
}

std::vector<Core::NodeMapInfo> Camera::getNodeMapInfos() {
    const Guard guard = lockNode();
    return impl_->nodeMaps;
}

std::shared_ptr<Utils::ISignal<void()>> Camera::getNodeMapsChangedSignal() {
    const Guard guard = lockNode();
    return {impl_->signals, &impl_->signals->nodeMapsChanged};
}

gcstring Camera::describeParameters() {
    const Guard guard = lockNode();
    gcstring description;
    impl_->adapter.generateDescription(description, "", "");
    return description;
}

}  // namespace Plugin::OrlixVCellPackageBase
