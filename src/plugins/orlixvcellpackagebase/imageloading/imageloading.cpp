#include "orlixvcellpackagebase/imageloading.h"

#include <system_error>
#include <utility>

#include "gcbase/gcexception.h"
#include "imageloading/imageloadingimpl.h"
#include "imageloading/imagesource.h"
#include "imageloading/log.h"
#include "imageloading/names.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/string.h"
#include "unituuids.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using namespace ImageLoadingLog;

ORLIX_REGISTER_TYPE_WITH_UUID("4f2b72dc-294b-4503-885a-6b73d26eb6d7", ImageLoading,
                              Core::AdvancedNode, Core::INodeMapContainer)

namespace ImageLoadingNames {

const gcstring imagePin("Image");
const gcstring imagePathPin("ImagePath");
const gcstring runCountPin("RunCount");

const gcstring sourcePathParameter("SourcePath");
const gcstring sortByParameter("SortBy");
const gcstring numberOfImagesParameter("NumberOfImages");
const gcstring framesPerSecondParameter("FramesPerSecond");
const gcstring numberOfRunsParameter("NumberOfRuns");
const gcstring runContinuouslyParameter("RunContinuously");
const gcstring storeAbsolutePathParameter("StoreAbsolutePath");

const gcstring sourcePathKey("sourcePath");
const gcstring sortByKey("sortBy");
const gcstring numberOfImagesKey("numberOfImages");
const gcstring framesPerSecondKey("framesPerSecond");
const gcstring numberOfRunsKey("numberOfRuns");
const gcstring runContinuouslyKey("runContinuously");

}  // namespace ImageLoadingNames

Utils::CatId ImageLoadingLog::category() {
    static const Utils::CatId id = Utils::getCatId("orlix.dataprocessing.vcell.ImageLoading");
    return id;
}

Utils::LogSubject ImageLoadingLog::getSubject(const ImageLoading* node) {
    return {"Plugin::OrlixVCellPackageBase::ImageLoading", node, category()};
}

ORLIX_DEFINE_OBJECT(ImageLoading)

ImageLoading::ImageLoading(const std::shared_ptr<Core::IResourcePool>& pool)
    : ImageLoading(pool, nullptr) {}

ImageLoading::ImageLoading(const std::shared_ptr<Core::IResourcePool>& pool,
                           std::shared_ptr<IFrameClock> clock)
    : AdvancedNode(pool), impl_(std::make_unique<Impl>()) {
    impl_->clock = clock != nullptr ? std::move(clock) : getSystemFrameClock();
    setLock(impl_->lock);
    buildParameterTree();
    impl_->publishParameters("Image Loading");
    createOutput(ImageLoadingNames::imagePin, "Loaded image.",
                 Utils::TypeInfo::getTypeInfo<Core::Image>(true), true, Core::unlimitedJobs);
    createOutput(ImageLoadingNames::imagePathPin, "Full path of the currently loaded image.",
                 Utils::TypeInfo::getTypeInfo<Core::String>(true), true, Core::unlimitedJobs);
    createOutput(ImageLoadingNames::runCountPin, "Number of the current run.",
                 Utils::TypeInfo::getTypeInfo<Core::Integer>(true), true, Core::unlimitedJobs);
}

ImageLoading::~ImageLoading() {
    cleanup();
    collectWorker();
}

bool ImageLoading::isForwardingUpdates() const {
    return false;
}

std::vector<Core::NodeMapInfo> ImageLoading::getNodeMapInfos() {
    return impl_->getNodeMapInfos();
}

std::shared_ptr<Utils::ISignal<void()>> ImageLoading::getNodeMapsChangedSignal() {
    return impl_->nodeMapsChanged;
}

gcstring ImageLoading::describeParameters() {
    return impl_->describeParameters();
}

bool ImageLoading::isSingleFrameStart(const Core::NodeArgumentCollection& arguments) const {
    if (!arguments.hasArgument("AcquisitionMode")) {
        return false;
    }
    const Utils::Variant argument = arguments.getArgumentValue("AcquisitionMode");
    const auto* mode = argument.isValid() ? argument.get<Core::String>(false) : nullptr;
    if (mode == nullptr || mode->hasError(true)) {
        createLogEntry(Severitiy::Warning, category(),
                       "ImageLoading %p: Argument \"AcquisitionMode\" is not of type \"String\" or "
                       "invalid and is therefore ignored.",
                       static_cast<const void*>(this));
        return false;
    }
    return mode->get() == "SingleFrame";
}

void ImageLoading::onStarting(const Core::NodeArgumentCollection& arguments) {
    const bool singleFrame = isSingleFrameStart(arguments);
    collectWorker();
    NodeLock lock(*impl_->lock);
    impl_->stopRequested = false;
    impl_->bufferProvider = getBufferProvider();
    impl_->updateFactory = getUpdateFactory();
    impl_->singleFrame = singleFrame;
    findImages();
    impl_->runCount = 1;
    setParametersWritable(false);
    impl_->thread = std::thread(&ImageLoading::runOutputLoop, this);
}

// Makes the list of this start, in its order.
void ImageLoading::findImages() {
    if (impl_->sourcePath.empty()) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "No image source path was specified.", "onStarting");
    }
    impl_->imagePaths = enumerateImages(impl_->sourcePath);
    if (impl_->imagePaths.empty()) {
        Utils::logAndThrow<GenICam::RuntimeException>(
            getSubject(this), "No images found in specified image source path.", "onStarting");
    }
    orderImages(impl_->imagePaths, impl_->sortBy);
}

void ImageLoading::onStopping() {
    NodeLock lock(*impl_->lock);
    impl_->stopRequested = true;
    setParametersWritable(true);
    lock.unlock();
    // The worker takes the lock on every turn.
    joinWorker();
}

// A worker can't wait for its own end. Said before it tries, since a tool that watches threads
// takes one that has tried for joined.
void ImageLoading::joinWorker() {
    if (impl_->thread.get_id() == std::this_thread::get_id()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    impl_->thread.join();
}

// A run that the worker itself has stopped leaves it behind. The request to stop still holds, so
// that it ends with its turn, for which it may need the lock.
void ImageLoading::collectWorker() {
    if (impl_->thread.joinable()) {
        joinWorker();
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
