#include "orlixcamera/conversion/conversionerror.h"

#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/pixel/pixelcode.h"
#include "orlixcamera/pixel/pixeltable.h"
#include "orlixcamera/pixeltypemapper.h"

namespace Orlix {
namespace {

std::string ListSources(EPixelType destination) {
    std::string names;
    for (const PixelFormat& format : AllPixelFormats()) {
        if (FindConversionKernel(format.pixelType, destination) != nullptr) {
            names += (names.empty() ? "" : ", ");
            names += format.name;
        }
    }
    return names;
}

}  // namespace

std::string DescribePixelType(EPixelType pixelType) {
    if (pixelType == PixelType_Undefined) {
        return "an undefined pixel type";
    }
    if (const PixelFormat* format = FindPixelFormat(pixelType)) {
        return std::string(format->name);
    }
    return "the unknown pixel type " + PixelCodeText(pixelType);
}

void ThrowBadSource(const SourceArguments& source, const std::string& reason) {
    const std::string text =
        "Can't convert an image of " + std::to_string(source.width) + " x " +
        std::to_string(source.height) + " pixels in " + DescribePixelType(source.pixelType) +
        " with " + std::to_string(source.paddingX) + " bytes of padding a line: " + reason;
    throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

void ThrowNoConversion(EPixelType source, EPixelType destination) {
    const std::string sources = ListSources(destination);
    const std::string text =
        "Can't convert an image from " + DescribePixelType(source) + " to " +
        DescribePixelType(destination) + ": " +
        (sources.empty() ? "it is no output format."
                         : "the formats that can be converted to it are " + sources + ".");
    throw GenICam::InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix
