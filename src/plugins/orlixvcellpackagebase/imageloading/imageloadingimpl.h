// The private data of ImageLoading, shared by the files that implement it.
//
// All fields are guarded by the node's lock, but for three: imagePaths, imageIndex and runCount are
// the worker's from start to stop. It also reads the settings without the lock, as long as no stop
// is requested: they change only while the node is stopped. The thread itself belongs to whoever
// starts, stops or destroys the node.
#pragma once

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/parameterport.h"
#include "imageloading/frameclock.h"
#include "nodedata.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixvcellpackagebase/imageloading.h"

namespace Plugin::OrlixVCellPackageBase {

using SortByEntryPointer =
    std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<SortBy>>;

struct ImageLoading::Impl : NodeData {
    std::shared_ptr<Orlix::DataProcessing::Core::IUpdateFactory> updateFactory;
    std::shared_ptr<Orlix::DataProcessing::Core::IBufferProvider> bufferProvider;
    std::thread thread;
    bool stopRequested = false;
    std::uint64_t numberOfImages = 1;
    std::uint64_t framesPerSecond = 1;
    std::uint64_t numberOfRuns = 1;
    bool runContinuously = false;
    bool storeAbsolutePath = false;
    SortBy sortBy = Ascending;
    gcstring sourcePath;
    bool singleFrame = false;
    std::vector<gcstring> imagePaths;
    std::uint64_t imageIndex = 0;  // position in imagePaths
    std::uint64_t runCount = 1;    // number of the current run

    PortPointer<AnythingToNodeMapAdapter::IStringParameterPort> sourcePathPort;
    PortPointer<AnythingToNodeMapAdapter::IEnumParameterPort> sortByPort;
    SortByEntryPointer ascendingEntry;
    SortByEntryPointer descendingEntry;
    SortByEntryPointer randomEntry;
    PortPointer<AnythingToNodeMapAdapter::IIntegerParameterPort> numberOfImagesPort;
    PortPointer<AnythingToNodeMapAdapter::IIntegerParameterPort> framesPerSecondPort;
    PortPointer<AnythingToNodeMapAdapter::IIntegerParameterPort> numberOfRunsPort;
    PortPointer<AnythingToNodeMapAdapter::IBooleanParameterPort> runContinuouslyPort;
    PortPointer<AnythingToNodeMapAdapter::IBooleanParameterPort> storeAbsolutePathPort;

    std::shared_ptr<IFrameClock> clock;
};

}  // namespace Plugin::OrlixVCellPackageBase
