// The parameter tree of ImageFormatConverter.
#include <limits>
#include <span>

#include "anythingtonodemapadapter/enumparameterport.h"
#include "anythingtonodemapadapter/integerparameterport.h"
#include "imageformatconverter/imageformatconverterimpl.h"
#include "imageformatconverter/names.h"
#include "parametertree.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Ports = AnythingToNodeMapAdapter;
namespace Names = ImageFormatConverterNames;

namespace {

using Node = ImageFormatConverter;

using OutputPixelFormatPort =
    Ports::EnumParameterPortRelay<unsigned int, Node, &Node::getOutputPixelFormat,
                                  &Node::setOutputPixelFormat>;
using OutputBitAlignmentPort =
    Ports::EnumParameterPortRelay<OutputBitAlignmentEnums, Node, &Node::getOutputBitAlignment,
                                  &Node::setOutputBitAlignment>;
using OutputOrientationPort =
    Ports::EnumParameterPortRelay<OutputOrientationEnums, Node, &Node::getOutputOrientationEnums,
                                  &Node::setOutputOrientationEnums>;
using OutputPaddingXPort =
    Ports::IntegerParameterPortRelay<std::int64_t, Node, &Node::getOutputPaddingX,
                                     &Node::setOutputPaddingX>;
using MaxNumThreadsPort =
    Ports::IntegerParameterPortRelay<std::int64_t, Node, &Node::getMaxNumThreads,
                                     &Node::setMaxNumThreads>;

template <typename T>
struct EntryRow {
    T value;
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
};

constexpr unsigned int toNumber(Orlix::EPixelType pixelType) {
    return static_cast<unsigned int>(pixelType);
}

// Users' documents and programs know these texts, oddities included.
constexpr EntryRow<unsigned int> pixelFormatRows[] = {
    {toNumber(Orlix::PixelType_BGRA8Packed), "BGRA8Packed", "BGRA 8 Packed",
     "The output pixel format is set to BGRA 8 Packed.",
     "The output pixel format is set to BGRA 8 Packed."},
    {toNumber(Orlix::PixelType_BGR8Packed), "BGR8Packed", "BGR 8 Packed",
     "The output pixel format is set to BGR 8 Packed.",
     "The output pixel format is set to BGR 8 Packed."},
    {toNumber(Orlix::PixelType_Mono8), "Mono8", "Mono 8",
     "The output pixel format is set to Mono 8 Packed.",
     "The output pixel format is set to Mono 8 Packed."},
    {toNumber(Orlix::PixelType_Mono16), "Mono16", "Mono 16",
     "The output pixel format is set to Mono 16 Packed.",
     "The output pixel format is set to Mono 16 Packed."},
    {toNumber(Orlix::PixelType_RGB8Packed), "RGB8Packed", "RGB 8 Packed",
     "The output pixel format is set to RGB 8 Packed.",
     "The output pixel format is set to RGB 8 Packed."},
    {toNumber(Orlix::PixelType_RGB16Packed), "RGB16Packed", "RGB 16 Packed",
     "The output pixel format is set to RGB 16 Packed.",
     "The output pixel format is set to RGB 16 Packed."},
    {toNumber(Orlix::PixelType_RGB8Planar), "RGB8Planar", "RGB 8 Planar",
     "The output pixel format is set to RGB 8 Planar.",
     "The output pixel format is set to RGB 8 Planar."},
    {toNumber(Orlix::PixelType_RGB16Planar), "RGB16Planar", "RGB 16 Planar",
     "The output pixel format is set to RGB 16 Planar.",
     "The output pixel format is set to RGB 16 Planar."},
    {toNumber(Orlix::PixelType_YUV444Planar), "YUV444Planar", "YUV444 Planar",
     "The output pixel format is set to YUV444 Planar.",
     "The output pixel format is set to YUV444 Planar."},
    {toNumber(Orlix::PixelType_YUV422Planar), "YUV422Planar", "YUV422 Planar",
     "The output pixel format is set to YUV422 Planar",
     "The output pixel format is set to YUV422 Planar."},
    {toNumber(Orlix::PixelType_YUV420Planar), "YUV420Planar", "YUV420 Planar",
     "The output pixel format is set to YUV420 Planar.",
     "The output pixel format is set ot YUV420 Planar."},
};

constexpr EntryRow<OutputBitAlignmentEnums> bitAlignmentRows[] = {
    {Orlix::OutputBitAlignment_LsbAligned, "LsbAligned", "LSB Aligned ",
     "Image data is aligned with the least significant bit.",
     "Image data is aligned with the least significant bit."},
    {Orlix::OutputBitAlignment_MsbAligned, "MsbAligned", "MSB Aligned ",
     "Image data is aligned at the most significant bit.",
     "Image data is aligned with the most significant bit."},
};

constexpr EntryRow<OutputOrientationEnums> orientationRows[] = {
    {Orlix::OutputOrientation_BottomUp, "BottomUp", "Bottom Up",
     "The last row of the image is located at the start of the image buffer.",
     "The last row of the image is located at the start of the image buffer."},
    {Orlix::OutputOrientation_TopDown, "TopDown", "Top Down",
     "The first row of the image is located at the start of the image buffer.",
     "The first row of the image is located at the start of the image buffer."},
    {Orlix::OutputOrientation_Unchanged, "Unchanged", "Unchanged",
     "The orientation of the image remains the same.",
     "The orientation of the image remains the same."},
};

// Enumerations of this node can be used in every state, so they have no registers for a change.
template <typename Port>
std::shared_ptr<Port> makeEnumeration(Node& owner, const gcstring& name, const char* displayName,
                                      const char* toolTip, const char* description) {
    return std::make_shared<Port>(owner, name, displayName, toolTip, description, "Beginner", true,
                                  true, false, false);
}

template <typename T>
std::vector<std::shared_ptr<Ports::EnumEntryParameterPort<T>>> addEntries(
    ParameterTree& tree, const gcstring& enumeration, std::span<const EntryRow<T>> rows) {
    std::vector<std::shared_ptr<Ports::EnumEntryParameterPort<T>>> entries;
    for (const EntryRow<T>& row : rows) {
        auto entry = std::make_shared<Ports::EnumEntryParameterPort<T>>(
            row.value, row.name, row.displayName, row.toolTip, row.description, true, true, false,
            false);
        entries.push_back(tree.addEntry(enumeration, std::move(entry)));
    }
    return entries;
}

// Limits and texts are the library's, as they are now.
std::shared_ptr<MaxNumThreadsPort> makeMaxNumThreads(Node& owner,
                                                     const Orlix::CIntegerParameter& parameter) {
    return std::make_shared<MaxNumThreadsPort>(
        owner, parameter.GetInfo(Orlix::ParameterInfo_Name),
        parameter.GetInfo(Orlix::ParameterInfo_DisplayName),
        parameter.GetInfo(Orlix::ParameterInfo_ToolTip),
        parameter.GetInfo(Orlix::ParameterInfo_Description), "Beginner", true, true, true, true,
        parameter.GetMin(), parameter.GetMax(), static_cast<int>(parameter.GetInc()), "PureNumber");
}

}  // namespace

void ImageFormatConverter::buildParameterTree() {
    NodeLock lock(*impl_->lock);
    ParameterTree tree(impl_->adapter);

    const char* text = "Sets the pixel format of the output image.";
    impl_->outputPixelFormatPort = tree.add(makeEnumeration<OutputPixelFormatPort>(
        *this, Names::outputPixelFormat, "Output Pixel Format", text, text));
    impl_->outputPixelFormatEntries =
        addEntries<unsigned int>(tree, Names::outputPixelFormat, pixelFormatRows);

    impl_->outputBitAlignmentPort = tree.add(makeEnumeration<OutputBitAlignmentPort>(
        *this, Names::outputBitAlignment, "Output Bit Alignment",
        "Sets the alignment of the bits in the target pixel type.",
        "Sets the alignment of the bits in the target pixel type if the target bit depth is "
        "greater than the source bit depth, e.g., if you are converting from a 10-bit to a 16-bit "
        "format."));
    impl_->outputBitAlignmentEntries =
        addEntries<OutputBitAlignmentEnums>(tree, Names::outputBitAlignment, bitAlignmentRows);

    text = "Sets the vertical orientation of the output image in the buffer.";
    impl_->outputOrientationPort = tree.add(makeEnumeration<OutputOrientationPort>(
        *this, Names::outputOrientation, "Output Orientation", text, text));
    impl_->outputOrientationEntries =
        addEntries<OutputOrientationEnums>(tree, Names::outputOrientation, orientationRows);

    impl_->outputPaddingXPort = tree.add(std::make_shared<OutputPaddingXPort>(
        *this, Names::outputPaddingX, "Padding X",
        "Number of additional data bytes at the end of each line.",
        "Number of additional data bytes at the end of each line. These bytes are set to zero "
        "during the conversion.",
        "Beginner", true, true, true, true, 0, std::numeric_limits<std::uint32_t>::max(), 1,
        "Linear"));

    impl_->maxNumThreadsPort = tree.add(makeMaxNumThreads(*this, impl_->converter.MaxNumThreads));

    tree.createNodeMap(*impl_->lock);
}

}  // namespace Plugin::OrlixVCellPackageBase
