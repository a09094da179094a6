// The node that converts images from one pixel format to another. Its parameters live in the camera
// library's converter, which is settings store and engine at once.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "orlixcamera/imageformatconverter.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/utils/property.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;
using Orlix::OutputBitAlignmentEnums;
using Orlix::OutputOrientationEnums;

// Inputs: "Image", the image to convert.
// Outputs: "Image", the converted image; the very image of the input if there is nothing to
// convert; an image with an error whose parent is the input's error if the input has one.
// Parameters of the map "@vCell": OutputPixelFormat, OutputBitAlignment, OutputOrientation,
// OutputPaddingX, MaxNumThreads. They can be changed at any time; a job that runs is finished
// first.
//
//     {"name": "Converter", "type": "ImageFormatConverter",
//      "settings": {"OutputPixelFormat": 17301505, "OutputOrientation": "Unchanged",
//                   "OutputBitAlignment": "LsbAligned", "OutputPaddingX": 0, "MaxNumThreads": 1}}
//
// Life: one conversion at a time, under the node's lock. What the library's converter can not do
// fails the job; values out of range throw in the setter.
class ImageFormatConverter : public Orlix::DataProcessing::Core::SimpleNode,
                             public Orlix::DataProcessing::Core::INodeMapContainer {
public:
    explicit ImageFormatConverter(
        const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool);
    ~ImageFormatConverter() override;
    ImageFormatConverter(const ImageFormatConverter&) = delete;
    ImageFormatConverter& operator=(const ImageFormatConverter&) = delete;

    Orlix::DataProcessing::Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    void execute() override;

    void loadSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& ptrSettings) override;
    void saveSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& ptrSettings) override;

    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    std::shared_ptr<Orlix::DataProcessing::Utils::ISignal<void()>> getNodeMapsChangedSignal()
        override;

    // The generated description of the parameters, for looking at.
    [[nodiscard]] gcstring describeParameters();

    // A pixel type of the camera library.
    [[nodiscard]] unsigned int getOutputPixelFormat() const;
    void setOutputPixelFormat(unsigned int value);
    [[nodiscard]] OutputBitAlignmentEnums getOutputBitAlignment() const;
    void setOutputBitAlignment(OutputBitAlignmentEnums value);
    [[nodiscard]] OutputOrientationEnums getOutputOrientationEnums() const;
    void setOutputOrientationEnums(OutputOrientationEnums value);
    [[nodiscard]] std::int64_t getOutputPaddingX() const;
    void setOutputPaddingX(std::int64_t value);
    [[nodiscard]] std::int64_t getMaxNumThreads() const;
    void setMaxNumThreads(std::int64_t value);

private:
    using Image = Orlix::DataProcessing::Core::Image;
    struct Impl;

    void buildParameterTree();
    template <typename Parameter, typename T>
    void change(Parameter Orlix::CImageFormatConverter::*parameter, T value);
    template <typename Parameter>
    auto read(Parameter Orlix::CImageFormatConverter::*parameter) const;

    void passOnError(const Image& image);
    void convert(const Image& image);
    void loadKeys(Orlix::DataProcessing::Core::ISettings& store);

    Orlix::DataProcessing::Utils::ResettableProperty<Image> input_;
    Orlix::DataProcessing::Utils::ResettableProperty<Image> output_;
    const std::unique_ptr<Impl> impl_;
};

}  // namespace Plugin::OrlixVCellPackageBase
