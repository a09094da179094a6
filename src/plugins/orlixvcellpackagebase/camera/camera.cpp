#include "camera/camera.h"

#include "anythingtonodemapadapter/adapter.h"
#include "failure.h"
#include "gcbase/gcexception.h"
#include "nodesupport.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/utils/uuid.h"
#include "parametertree.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Threading = Orlix::DataProcessing::Threading;
namespace Utils = Orlix::DataProcessing::Utils;

// Static objects of this unit, in the order in which they are made when the library is loaded.

namespace {

[[maybe_unused]] const Utils::Uuid firstUuid("8fcfdd35-ba34-4bf8-b6a3-6737d7612e95");
[[maybe_unused]] const Utils::Uuid secondUuid("b44bfc48-0086-420c-abb8-2ff57522d61a");

}  // namespace

ORLIX_REGISTER_TYPE(Camera, Core::AdvancedNode, Core::INodeMapContainer)

namespace {

const gcstring imagePin("Image");

Utils::CatId category() {
    static const Utils::CatId id = Utils::getCatId("orlix.dataprocessing.vcell.Camera");
    return id;
}

}  // namespace

// Guarded by the node's lock, apart from the pointers, which never change.
struct Camera::Impl {
    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter adapter;
    std::vector<Core::NodeMapInfo> nodeMaps;
    std::shared_ptr<NodeMapsSignal> nodeMapsChanged;
    std::shared_ptr<Threading::RecursiveCLock> lock;
};

ORLIX_DEFINE_OBJECT(Camera)

Camera::Camera(const std::shared_ptr<Core::IResourcePool>& pool)
    : AdvancedNode(pool), impl_(std::make_unique<Impl>()) {
    if (pool == nullptr) {
        logAndThrow<GenICam::InvalidArgumentException>({"Camera", this, category()},
                                                       "Resource pool must not be nullptr. ",
                                                       ORLIX_HERE("Camera::Camera"));
    }
    impl_->lock = std::make_shared<Threading::RecursiveCLock>();
    setLock(impl_->lock);
    impl_->nodeMapsChanged = std::make_shared<NodeMapsSignal>(impl_->lock);
    buildParameterTree();
    impl_->nodeMaps.emplace_back("@vCell", "Camera", impl_->adapter.getNodeMap());
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
    const FailingNode node{"Camera", this, category()};
    if (settings == nullptr) {
        logAndThrow<GenICam::InvalidArgumentException>(node, "No settings passed.",
                                                       ORLIX_HERE("Camera::saveSettings"));
    }
    NodeLock lock(*impl_->lock);
    if (getState() != Core::NodeState::Stopped) {
        logAndThrow<GenICam::RuntimeException>(node, "vCell must not be running to save.",
                                               ORLIX_HERE("Camera::saveSettings"));
    }
}

void Camera::loadSettings(const std::shared_ptr<Core::ISettings>& settings) {
    const FailingNode node{"Camera", this, category()};
    if (settings == nullptr) {
        logAndThrow<GenICam::InvalidArgumentException>(node, "No settings passed.",
                                                       ORLIX_HERE("Camera::loadSettings"));
    }
    NodeLock lock(*impl_->lock);
    if (getState() != Core::NodeState::Stopped) {
        logAndThrow<GenICam::RuntimeException>(node, "vCell must not be running to load.",
                                               ORLIX_HERE("Camera::loadSettings"));
    }
    lock.unlock();
    notifySettingsChanged();
}

std::vector<Core::NodeMapInfo> Camera::getNodeMapInfos() {
    NodeLock lock(*impl_->lock);
    return impl_->nodeMaps;
}

std::shared_ptr<Utils::ISignal<void()>> Camera::getNodeMapsChangedSignal() {
    NodeLock lock(*impl_->lock);
    return impl_->nodeMapsChanged;
}

}  // namespace Plugin::OrlixVCellPackageBase
