// The private data of ImageFormatConverter, shared by the files that implement it. Guarded by the
// node's lock.
#pragma once

#include <memory>
#include <vector>

#include "anythingtonodemapadapter/adapter.h"
#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/parameterports.h"
#include "imageformatconverter/imageformatconverter.h"
#include "nodesupport.h"

namespace Plugin::OrlixVCellPackageBase {

struct ImageFormatConverter::Impl {
    template <typename T>
    using Entries =
        std::vector<std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<T>>>;

    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter adapter;
    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputPixelFormatPort;
    Entries<unsigned int> outputPixelFormatEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputBitAlignmentPort;
    Entries<OutputBitAlignmentEnums> outputBitAlignmentEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputOrientationPort;
    Entries<OutputOrientationEnums> outputOrientationEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IIntegerParameterPort> outputPaddingXPort;
    std::shared_ptr<AnythingToNodeMapAdapter::IIntegerParameterPort> maxNumThreadsPort;

    std::shared_ptr<Orlix::DataProcessing::Threading::RecursiveCLock> lock;
    Orlix::CImageFormatConverter converter;
    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> nodeMaps;
    std::shared_ptr<NodeMapsSignal> nodeMapsChanged;
};

}  // namespace Plugin::OrlixVCellPackageBase
