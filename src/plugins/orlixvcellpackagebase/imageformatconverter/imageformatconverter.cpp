#include "imageformatconverter/imageformatconverter.h"

#include "imageformatconverter/imageformatconverterimpl.h"
#include "imageformatconverter/names.h"
#include "unituuids.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using Orlix::CImageFormatConverter;
using Orlix::DataProcessing::Threading::RecursiveMutex;

ORLIX_REGISTER_TYPE_WITH_UUID("4049ea56-3827-4faf-9478-c3ba02e4a0cb", ImageFormatConverter,
                              Core::SimpleNode, Core::INodeMapContainer)

namespace ImageFormatConverterNames {

const gcstring imagePin("Image");

const gcstring outputPixelFormat("OutputPixelFormat");
const gcstring outputBitAlignment("OutputBitAlignment");
const gcstring outputOrientation("OutputOrientation");
const gcstring outputPaddingX("OutputPaddingX");
const gcstring maxNumThreads("MaxNumThreads");

}  // namespace ImageFormatConverterNames

ORLIX_DEFINE_OBJECT(ImageFormatConverter)

ImageFormatConverter::ImageFormatConverter(const std::shared_ptr<Core::IResourcePool>& pool)
    : SimpleNode(pool),
      input_(std::make_unique<RecursiveMutex>()),
      output_(std::make_unique<RecursiveMutex>()),
      impl_(std::make_unique<Impl>()) {
    setLock(impl_->lock);
    buildParameterTree();
    impl_->publishParameters("Image Format Converter");
    // Where the node differs from the library: Bayer pictures are interpolated up to their edges,
    // and a recipe, not the machine, decides how many threads it spends on a conversion.
    impl_->converter.BayerBorder.SetValue(Orlix::BayerBorder_Repeat, true);
    impl_->converter.MaxNumThreads.SetValue(1, true);
    const auto& pin = ImageFormatConverterNames::imagePin;
    createInput(pin, "Input image", input_, Utils::Variant(Image()), false, Core::unlimitedJobs);
    createOutput(pin, "Output image", output_, true, Core::unlimitedJobs);
}

ImageFormatConverter::~ImageFormatConverter() {
    cleanup();
}

std::vector<Core::NodeMapInfo> ImageFormatConverter::getNodeMapInfos() {
    return impl_->getNodeMapInfos();
}

std::shared_ptr<Utils::ISignal<void()>> ImageFormatConverter::getNodeMapsChangedSignal() {
    return impl_->nodeMapsChanged;
}

gcstring ImageFormatConverter::describeParameters() {
    return impl_->describeParameters();
}

// The settings are those of the library's converter, which checks them. Observers are told after
// the lock has been released.

template <typename Parameter>
auto ImageFormatConverter::read(Parameter CImageFormatConverter::*parameter) const {
    NodeLock lock(*impl_->lock);
    return (impl_->converter.*parameter).GetValue();
}

template <typename Parameter, typename T>
void ImageFormatConverter::change(Parameter CImageFormatConverter::*parameter, T value) {
    {
        NodeLock lock(*impl_->lock);
        (impl_->converter.*parameter).SetValue(value, true);
    }
    notifySettingsChanged();
}

unsigned int ImageFormatConverter::getOutputPixelFormat() const {
    return static_cast<unsigned int>(read(&CImageFormatConverter::OutputPixelFormat));
}

void ImageFormatConverter::setOutputPixelFormat(unsigned int value) {
    change(&CImageFormatConverter::OutputPixelFormat, static_cast<Orlix::EPixelType>(value));
}

OutputBitAlignmentEnums ImageFormatConverter::getOutputBitAlignment() const {
    return read(&CImageFormatConverter::OutputBitAlignment);
}

void ImageFormatConverter::setOutputBitAlignment(OutputBitAlignmentEnums value) {
    change(&CImageFormatConverter::OutputBitAlignment, value);
}

OutputOrientationEnums ImageFormatConverter::getOutputOrientationEnums() const {
    return read(&CImageFormatConverter::OutputOrientation);
}

void ImageFormatConverter::setOutputOrientationEnums(OutputOrientationEnums value) {
    change(&CImageFormatConverter::OutputOrientation, value);
}

std::int64_t ImageFormatConverter::getOutputPaddingX() const {
    return read(&CImageFormatConverter::OutputPaddingX);
}

void ImageFormatConverter::setOutputPaddingX(std::int64_t value) {
    change(&CImageFormatConverter::OutputPaddingX, value);
}

std::int64_t ImageFormatConverter::getMaxNumThreads() const {
    return read(&CImageFormatConverter::MaxNumThreads);
}

void ImageFormatConverter::setMaxNumThreads(std::int64_t value) {
    change(&CImageFormatConverter::MaxNumThreads, value);
}

}  // namespace Plugin::OrlixVCellPackageBase
