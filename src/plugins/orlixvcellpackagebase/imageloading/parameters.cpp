// The parameter tree of ImageLoading.
#include "anythingtonodemapadapter/booleanparameterport.h"
#include "anythingtonodemapadapter/enumparameterport.h"
#include "anythingtonodemapadapter/integerparameterport.h"
#include "anythingtonodemapadapter/stringparameterport.h"
#include "imageloading/imageloadingimpl.h"
#include "imageloading/names.h"
#include "parametertree.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Ports = AnythingToNodeMapAdapter;
namespace Names = ImageLoadingNames;

namespace {

template <std::uint64_t (ImageLoading::*getter)() const,
          void (ImageLoading::*setter)(std::uint64_t)>
using Counter = Ports::IntegerParameterPortRelay<std::uint64_t, ImageLoading, getter, setter>;

template <bool (ImageLoading::*getter)() const, void (ImageLoading::*setter)(bool)>
using Switch = Ports::BooleanParameterPortRelay<ImageLoading, getter, setter>;

using SourcePathPort = Ports::StringParameterPortRelay<ImageLoading, &ImageLoading::getSourcePath,
                                                       &ImageLoading::setSourcePath>;
using SortByPort = Ports::EnumParameterPortRelay<SortBy, ImageLoading, &ImageLoading::getSortBy,
                                                 &ImageLoading::setSortBy>;
using NumberOfImagesPort =
    Counter<&ImageLoading::getNumberOfImages, &ImageLoading::setNumberOfImages>;
using FramesPerSecondPort =
    Counter<&ImageLoading::getFramesPerSecond, &ImageLoading::setFramesPerSecond>;
using NumberOfRunsPort = Counter<&ImageLoading::getNumberOfRuns, &ImageLoading::setNumberOfRuns>;
using RunContinuouslyPort =
    Switch<&ImageLoading::getRunContinuously, &ImageLoading::setRunContinuously>;
using StoreAbsolutePathPort =
    Switch<&ImageLoading::getStoreAbsolutePath, &ImageLoading::setStoreAbsolutePath>;

constexpr std::int64_t maximumPathLength = 1024;
constexpr std::int64_t maximumCount = 999999999;
constexpr std::int64_t maximumRate = 500;

// A parameter that can be seen and written, with registers that tell when that changes.
template <typename Port, typename... Limits>
std::shared_ptr<Port> makePort(ImageLoading& owner, const gcstring& name, const char* displayName,
                               const char* toolTip, const char* description, Limits... limits) {
    return std::make_shared<Port>(owner, name, displayName, toolTip, description, "Beginner", true,
                                  true, true, true, limits...);
}

SortByEntryPointer makeEntry(SortBy value, const char* name, const char* displayName,
                             const char* text, bool hasRegisters) {
    return std::make_shared<Ports::EnumEntryParameterPort<SortBy>>(
        value, name, displayName, text, text, true, true, hasRegisters, hasRegisters);
}

}  // namespace

void ImageLoading::buildParameterTree() {
    NodeLock lock(*impl_->lock);
    ParameterTree tree(impl_->adapter);

    const char* text = "Path to image or folder.";
    impl_->sourcePathPort = tree.add(makePort<SourcePathPort>(
        *this, Names::sourcePathParameter, "Source Path", text, text, maximumPathLength));

    text = "Sets the order in which to load images.";
    impl_->sortByPort =
        tree.add(makePort<SortByPort>(*this, Names::sortByParameter, "Sort By", text, text));
    const gcstring& sortBy = Names::sortByParameter;
    impl_->ascendingEntry = tree.addEntry(
        sortBy, makeEntry(Ascending, "Ascending", "A-Z",
                          "Images are loaded in ascending alphabetical order (A to Z).", true));
    impl_->descendingEntry = tree.addEntry(
        sortBy, makeEntry(Descending, "Descending", "Z-A",
                          "Images are loaded in descending alphabetical order (Z to A).", true));
    impl_->randomEntry = tree.addEntry(
        sortBy, makeEntry(Random, "Random", "Random", "Images are loaded in random order.", false));

    text = "Number of images to be loaded.";
    impl_->numberOfImagesPort = tree.add(
        makePort<NumberOfImagesPort>(*this, Names::numberOfImagesParameter, "Number Of Images",
                                     text, text, 1, maximumCount, 1, "PureNumber"));

    text = "Number of images to be output per second while the recipe is running.";
    impl_->framesPerSecondPort = tree.add(
        makePort<FramesPerSecondPort>(*this, Names::framesPerSecondParameter, "Frames Per Second",
                                      text, text, 1, maximumRate, 1, "PureNumber"));

    text = "Number of times the image output is repeated.";
    impl_->numberOfRunsPort =
        tree.add(makePort<NumberOfRunsPort>(*this, Names::numberOfRunsParameter, "Number Of Runs",
                                            text, text, 1, maximumCount, 1, "PureNumber"));

    text = "Enables continuous image output while the recipe is running.";
    impl_->runContinuouslyPort = tree.add(makePort<RunContinuouslyPort>(
        *this, Names::runContinuouslyParameter, "Run Continuously", text, text));

    impl_->storeAbsolutePathPort = tree.add(makePort<StoreAbsolutePathPort>(
        *this, Names::storeAbsolutePathParameter, "Store Absolute Path",
        "Enables storing the absolute path to the image source folder in the recipe.",
        "Enables storing the absolute path to the image source folder in the recipe. If the option "
        "is disabled and the recipe has been saved already, the relative path will be used. If the "
        "recipe hasn't been saved yet, storing the relative path isn't possible und the absolute "
        "path will be used instead."));

    tree.createNodeMap(*impl_->lock);
}

void ImageLoading::setParametersWritable(bool writable) {
    impl_->sourcePathPort->setWritable(writable);
    impl_->sortByPort->setWritable(writable);
    impl_->numberOfImagesPort->setWritable(writable);
    impl_->framesPerSecondPort->setWritable(writable);
    impl_->numberOfRunsPort->setWritable(writable && !impl_->runContinuously);
    impl_->runContinuouslyPort->setWritable(writable);
    // StoreAbsolutePath stays writable to the eye; its setter refuses while the node runs.
}

}  // namespace Plugin::OrlixVCellPackageBase
