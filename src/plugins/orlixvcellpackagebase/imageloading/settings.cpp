// Getters and setters of ImageLoading.
#include "gcbase/gcexception.h"
#include "imageloading/imageloadingimpl.h"
#include "imageloading/log.h"
#include "orlixdataprocessingcore/utils/helper.h"

namespace Plugin::OrlixVCellPackageBase {

using Orlix::DataProcessing::Core::NodeState;
using Orlix::DataProcessing::Utils::CodePlace;
using Orlix::DataProcessing::Utils::Helper;
using Orlix::DataProcessing::Utils::logAndThrow;

// A setter checks the range first, then takes the lock and checks the state. Observers are told
// after the lock has been released.

gcstring ImageLoading::getSourcePath() const {
    NodeLock lock(*impl_->lock);
    return impl_->sourcePath;
}

SortBy ImageLoading::getSortBy() const {
    NodeLock lock(*impl_->lock);
    return impl_->sortBy;
}

std::uint64_t ImageLoading::getNumberOfImages() const {
    NodeLock lock(*impl_->lock);
    return impl_->numberOfImages;
}

std::uint64_t ImageLoading::getFramesPerSecond() const {
    NodeLock lock(*impl_->lock);
    return impl_->framesPerSecond;
}

std::uint64_t ImageLoading::getNumberOfRuns() const {
    NodeLock lock(*impl_->lock);
    return impl_->numberOfRuns;
}

bool ImageLoading::getRunContinuously() const {
    NodeLock lock(*impl_->lock);
    return impl_->runContinuously;
}

bool ImageLoading::getStoreAbsolutePath() const {
    NodeLock lock(*impl_->lock);
    return impl_->storeAbsolutePath;
}

void ImageLoading::setSourcePath(const gcstring& value) {
    NodeLock lock(*impl_->lock);
    checkStopped("setSourcePath");
    // The text as it comes is compared: blanks around the same path count as a change.
    if (value == impl_->sourcePath) {
        return;
    }
    impl_->sourcePath = Helper::trim(value);
    impl_->sourcePathPort->notify();
    lock.unlock();
    notifySettingsChanged();
}

void ImageLoading::setSortBy(SortBy value) {
    change(&Impl::sortBy, value, &Impl::sortByPort, "setSortBy");
}

void ImageLoading::setNumberOfImages(std::uint64_t value) {
    constexpr auto message = "NumberOfImages must be greater than 0.";
    const CodePlace place("setNumberOfImages");
    checkArgument(value != 0, message, place);
    change(&Impl::numberOfImages, value, &Impl::numberOfImagesPort, place);
}

void ImageLoading::setFramesPerSecond(std::uint64_t value) {
    constexpr auto message = "FramesPerSecond must be greater than 0.";
    const CodePlace place("setFramesPerSecond");
    checkArgument(value != 0, message, place);
    change(&Impl::framesPerSecond, value, &Impl::framesPerSecondPort, place);
}

void ImageLoading::setNumberOfRuns(std::uint64_t value) {
    constexpr auto message = "NumberOfRuns must be greater than 0.";
    const CodePlace place("setNumberOfRuns");
    checkArgument(value != 0, message, place);
    change(&Impl::numberOfRuns, value, &Impl::numberOfRunsPort, place);
}

void ImageLoading::setRunContinuously(bool value) {
    NodeLock lock(*impl_->lock);
    checkStopped("setRunContinuously");
    if (value == impl_->runContinuously) {
        return;
    }
    impl_->runContinuously = value;
    impl_->runContinuouslyPort->notify();
    impl_->numberOfRunsPort->setWritable(!value);
    lock.unlock();
    notifySettingsChanged();
}

void ImageLoading::setStoreAbsolutePath(bool value) {
    change(&Impl::storeAbsolutePath, value, &Impl::storeAbsolutePathPort, "setStoreAbsolutePath");
}

void ImageLoading::getSettings(gcstring& sourcePath, SortBy& sortBy, std::uint64_t& numberOfImages,
                               std::uint64_t& framesPerSecond, std::uint64_t& numberOfRuns,
                               bool& runContinuously, bool& storeAbsolutePath) {
    NodeLock lock(*impl_->lock);
    sourcePath = impl_->sourcePath;
    sortBy = impl_->sortBy;
    numberOfImages = impl_->numberOfImages;
    framesPerSecond = impl_->framesPerSecond;
    numberOfRuns = impl_->numberOfRuns;
    runContinuously = impl_->runContinuously;
    storeAbsolutePath = impl_->storeAbsolutePath;
}

void ImageLoading::setSettings(const gcstring& sourcePath, SortBy sortBy,
                               std::uint64_t numberOfImages, std::uint64_t framesPerSecond,
                               std::uint64_t numberOfRuns, bool runContinuously,
                               bool storeAbsolutePath) {
    const CodePlace place("setSettings");
    checkArgument(!sourcePath.empty(), "Source path must not be empty.", place);
    checkArgument(numberOfImages != 0, "NumberOfImages must be greater than 0.", place);
    checkArgument(framesPerSecond != 0, "FramesPerSecond must be greater than 0.", place);
    checkArgument(numberOfRuns != 0, "NumberOfRuns must be greater than 0.", place);
    NodeLock lock(*impl_->lock);
    checkStopped(place);
    assign(&Impl::sourcePath, sourcePath, &Impl::sourcePathPort);
    assign(&Impl::sortBy, sortBy, &Impl::sortByPort);
    assign(&Impl::numberOfImages, numberOfImages, &Impl::numberOfImagesPort);
    assign(&Impl::framesPerSecond, framesPerSecond, &Impl::framesPerSecondPort);
    assign(&Impl::numberOfRuns, numberOfRuns, &Impl::numberOfRunsPort);
    assign(&Impl::runContinuously, runContinuously, &Impl::runContinuouslyPort);
    impl_->numberOfRunsPort->setWritable(!runContinuously);
    assign(&Impl::storeAbsolutePath, storeAbsolutePath, &Impl::storeAbsolutePathPort);
    lock.unlock();
    notifySettingsChanged();
}

void ImageLoading::checkArgument(bool valid, const char* message, const CodePlace& place) const {
    if (!valid) {
        logAndThrow<GenICam::InvalidArgumentException>(ImageLoadingLog::getSubject(this), message,
                                                       place);
    }
}

void ImageLoading::checkStopped(const CodePlace& place) const {
    if (getState() != NodeState::Stopped) {
        logAndThrow<GenICam::RuntimeException>(ImageLoadingLog::getSubject(this),
                                               "vCell must not be running to set the settings.",
                                               place);
    }
}

// Stores a value and tells its port, under the caller's lock.
template <typename T, typename Port>
void ImageLoading::assign(T Impl::*setting, const T& value, Port Impl::*port) {
    (*impl_).*setting = value;
    ((*impl_).*port)->notify();
}

// The common part of a setter.
template <typename T, typename Port>
void ImageLoading::change(T Impl::*setting, const T& value, Port Impl::*port,
                          const CodePlace& place) {
    NodeLock lock(*impl_->lock);
    checkStopped(place);
    if (value == (*impl_).*setting) {
        return;
    }
    assign(setting, value, port);
    lock.unlock();
    notifySettingsChanged();
}

}  // namespace Plugin::OrlixVCellPackageBase
