// The worker of ImageLoading: walks the image list, loads one file per turn, hands it to the graph
// and keeps the frame rate.
#include <chrono>
#include <utility>

#include "imageloading/imageloadingimpl.h"
#include "imageloading/imagesource.h"
#include "imageloading/loadfile.h"
#include "imageloading/log.h"
#include "imageloading/names.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/utils/variant.h"
#include "providerimage.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Names = ImageLoadingNames;
using namespace ImageLoadingLog;
namespace Utils = Orlix::DataProcessing::Utils;
using Utils::COWPtr;

namespace {

// The period is a whole number of milliseconds: 7 frames per second are 142 ms apart.
IFrameClock::Duration getPeriod(std::uint64_t framesPerSecond) {
    return std::chrono::milliseconds(1000 / framesPerSecond);
}

// Nothing wakes the sleeper early.
void sleepUntil(IFrameClock& clock, IFrameClock::TimePoint deadline) {
    for (auto now = clock.now(); now < deadline; now = clock.now()) {
        clock.sleepFor(deadline - now);
    }
}

}  // namespace

void ImageLoading::runOutputLoop() {
    impl_->imageIndex = 0;
    while (!isStopRequested() && hasNextImage()) {
        // Loading and waiting for the graph are a part of the period.
        const auto start = impl_->clock->now();
        const auto deadline = start + getPeriod(getFramesPerSecond());
        if (waitUntilSpaceAvailable() && outputImage() == Turn::Last) {
            return;
        }
        // An image that could not be offered is used up all the same.
        ++impl_->imageIndex;
        sleepUntil(*impl_->clock, deadline);
    }
}

bool ImageLoading::isStopRequested() const {
    NodeLock lock(*impl_->lock);
    return impl_->stopRequested;
}

// At the end of a run, begins the next one if there is one.
bool ImageLoading::hasNextImage() {
    if (impl_->imageIndex < impl_->numberOfImages && impl_->imageIndex < impl_->imagePaths.size()) {
        return true;
    }
    if (!impl_->runContinuously && impl_->runCount == impl_->numberOfRuns) {
        return false;
    }
    if (impl_->sortBy == Random) {
        shuffle(impl_->imagePaths);
    }
    ++impl_->runCount;
    impl_->imageIndex = 0;
    return true;
}

// Whatever fails here drops this one turn.
ImageLoading::Turn ImageLoading::outputImage() {
    try {
        return createOutputJob();
    } catch (...) {
        // The full stop is a part of what the node was doing.
        Utils::logCaught(getSubject(this), "creating update.");
    }
    return Turn::Done;
}

ImageLoading::Turn ImageLoading::createOutputJob() {
    const auto update = impl_->updateFactory->createUpdate(this, nullptr);
    if (update == nullptr) {
        return Turn::Done;
    }
    const gcstring& path = impl_->imagePaths[impl_->imageIndex];
    ProviderImage picture(impl_->bufferProvider);
    const auto error = tryLoad([&] { picture.Load(path); });
    Core::PinValues values;
    values.emplace(Names::imagePin, error != nullptr ? COWPtr<Core::Image>::make(error)
                                                     : COWPtr<Core::Image>::make(
                                                           picture, impl_->bufferProvider, false));
    values.emplace(Names::imagePathPin, COWPtr<Core::String>::make(path));
    values.emplace(Names::runCountPin, COWPtr<Core::Integer>::make(impl_->runCount));
    createJob(update, std::move(values), {});
    return impl_->singleFrame ? Turn::Last : Turn::Done;
}

}  // namespace Plugin::OrlixVCellPackageBase
