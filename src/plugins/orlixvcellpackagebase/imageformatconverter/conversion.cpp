// One job of ImageFormatConverter. The node's lock is held from beginning to end, so parameters do
// not change within a conversion.
#include <memory>

#include "imageformatconverter/imageformatconverterimpl.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "providerimage.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;

namespace {

// Images on pins have no orientation of their own.
constexpr auto sourceOrientation = Orlix::ImageOrientation_TopDown;

Utils::CatId category() {
    static const Utils::CatId id =
        Utils::getCatId("orlix.dataprocessing.vcell.ImageFormatConverter");
    return id;
}

}  // namespace

void ImageFormatConverter::execute() {
    NodeLock lock(*impl_->lock);
    // Read through a const handle: any other access would copy an image that is shared. Without an
    // input it stays null, and looking at the image says so.
    const Utils::COWPtr<Image> image = input_.isSet() ? input_.getValue() : nullptr;
    if (image->hasError(true)) {
        passOnError(*image);
    } else if (impl_->converter.ImageHasDestinationFormat(
                   image->getPixelType(), image->getLinePadding(), sourceOrientation)) {
        output_ = input_;
    } else {
        convert(*image);
    }
}

// The error travels on with the data, one level deeper; the chain of parents keeps its origin.
void ImageFormatConverter::passOnError(const Image& image) {
    const std::shared_ptr<Core::IError> error = image.getError(true);
    Utils::createLogEntry(Utils::Severitiy::Warning, category(),
                          "ImageFormatConverter %p: Input image has an error. Description: \"%s\"",
                          static_cast<const void*>(this), error->getDescription().c_str());
    const std::vector<std::shared_ptr<Core::IError>> parents{error};
    output_.setValue(Utils::COWPtr<Image>::make(std::make_shared<Core::InvalidValueError>(
        "Input image is invalid.", parents, Utils::DateTime::now())));
}

void ImageFormatConverter::convert(const Image& image) {
    const std::shared_ptr<Core::IBufferProvider> provider = getBufferProvider();
    ProviderImage destination(provider);
    const auto linePadding = image.getLinePadding();
    const auto height = image.getHeight();
    const auto width = image.getWidth();
    const auto pixelType = image.getPixelType();
    const auto size = image.getImageSize();
    const void* data = image.getDataConst();
    impl_->converter.Convert(destination, data, size, pixelType, width, height, linePadding,
                             sourceOrientation);
    output_.setValue(Utils::COWPtr<Image>::make(destination, provider, false));
}

}  // namespace Plugin::OrlixVCellPackageBase
