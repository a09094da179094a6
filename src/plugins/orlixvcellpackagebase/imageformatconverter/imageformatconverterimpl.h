// The private data of ImageFormatConverter, shared by the files that implement it. Guarded by the
// node's lock.
#pragma once

#include <memory>
#include <vector>

#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/parameterports.h"
#include "imageformatconverter/imageformatconverter.h"
#include "nodedata.h"

namespace Plugin::OrlixVCellPackageBase {

struct ImageFormatConverter::Impl : NodeData {
    template <typename T>
    using Entries =
        std::vector<std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<T>>>;

    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputPixelFormatPort;
    Entries<unsigned int> outputPixelFormatEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputBitAlignmentPort;
    Entries<OutputBitAlignmentEnums> outputBitAlignmentEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IEnumParameterPort> outputOrientationPort;
    Entries<OutputOrientationEnums> outputOrientationEntries;
    std::shared_ptr<AnythingToNodeMapAdapter::IIntegerParameterPort> outputPaddingXPort;
    std::shared_ptr<AnythingToNodeMapAdapter::IIntegerParameterPort> maxNumThreadsPort;

    Orlix::CImageFormatConverter converter;
};

}  // namespace Plugin::OrlixVCellPackageBase
