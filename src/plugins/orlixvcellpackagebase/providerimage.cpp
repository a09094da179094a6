#include "providerimage.h"

#include <string>
#include <utility>

#include "gcbase/gcexception.h"

namespace Plugin::OrlixVCellPackageBase {

ProviderImage::ProviderImage(std::shared_ptr<Provider> provider) : provider_(std::move(provider)) {}

std::shared_ptr<void> ProviderImage::AllocateBuffer(std::size_t size) const {
    if (provider_ == nullptr) {
        return COrlixImage::AllocateBuffer(size);
    }
    std::shared_ptr<void> buffer = provider_->getBuffer(size);
    if (buffer == nullptr) {
        const std::string text =
            "The buffer provider gave no buffer of " + std::to_string(size) + " bytes.";
        throw GenICam::BadAllocException(text.c_str(), __FILE__, __LINE__);
    }
    return buffer;
}

}  // namespace Plugin::OrlixVCellPackageBase
