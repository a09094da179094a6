#include "camera/camera.h"

#include "gcbase/gcexception.h"
#include "nodedata.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/utils/failure.h"
#include "parametertree.h"
#include "unituuids.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

ORLIX_REGISTER_TYPE_WITH_UUID("846bca11-6bf2-4895-88c4-fe038f5a659c", Camera, Core::AdvancedNode,
                              Core::INodeMapContainer)

namespace {

const gcstring imagePin("Image");

Utils::CatId category() {
    static const Utils::CatId id = Utils::getCatId("orlix.dataprocessing.vcell.Camera");
    return id;
}

Utils::LogSubject getSubject(const Camera* node) {
    return {"Plugin::OrlixVCellPackageBase::Camera", node, category()};
}

}  // namespace

struct Camera::Impl : NodeData {};

ORLIX_DEFINE_OBJECT(Camera)

Camera::Camera(const std::shared_ptr<Core::IResourcePool>& pool)
    : AdvancedNode(pool), impl_(std::make_unique<Impl>()) {
    if (pool == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            getSubject(this), "Resource pool must not be nullptr. ", "Camera");
    }
    setLock(impl_->lock);
    buildParameterTree();
    impl_->publishParameters("Camera");
    createOutput(imagePin, "The image output.", Utils::TypeInfo::getTypeInfo<Core::Image>(true),
                 true, Core::unlimitedJobs);
}

Camera::~Camera() {
    cleanup();
}

void Camera::buildParameterTree() {
    NodeLock lock(*impl_->lock);
    ParameterTree tree(impl_->adapter);
    tree.createNodeMap(*impl_->lock);
}

bool Camera::isForwardingUpdates() const {
    return false;
}

void Camera::saveSettings(const std::shared_ptr<Core::ISettings>& settings) {
    if (settings == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            getSubject(this), "No settings passed.", "saveSettings");
    }
    NodeLock lock(*impl_->lock);
    if (getState() != Core::NodeState::Stopped) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "vCell must not be running to save.", "saveSettings");
    }
}

void Camera::loadSettings(const std::shared_ptr<Core::ISettings>& settings) {
    if (settings == nullptr) {
        Utils::logAndThrow<GenICam::InvalidArgumentException>(
            getSubject(this), "No settings passed.", "loadSettings");
    }
    NodeLock lock(*impl_->lock);
    if (getState() != Core::NodeState::Stopped) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "vCell must not be running to load.", "loadSettings");
    }
    lock.unlock();
    notifySettingsChanged();
}

std::vector<Core::NodeMapInfo> Camera::getNodeMapInfos() {
    return impl_->getNodeMapInfos();
}

std::shared_ptr<Utils::ISignal<void()>> Camera::getNodeMapsChangedSignal() {
    return impl_->nodeMapsChanged;
}

}  // namespace Plugin::OrlixVCellPackageBase
