#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

Variant::IDataWrapper::~IDataWrapper() = default;

COWPtrBase::IObjectWrapper* Variant::IDataWrapper::takeObjectWrapper() noexcept {
    return nullptr;
}

TypeInfo Variant::getValueType() const {
    return wrapper_ != nullptr ? wrapper_->getValueType() : TypeInfo();
}

const void* Variant::get(const TypeInfo& type, bool throwOnError) const {
    if (wrapper_ == nullptr) {
        if (throwOnError) {
            throw GenICam::RuntimeException("Variant is not valid.", __FILE__, __LINE__);
        }
        return nullptr;
    }
    return wrapper_->getPointer(type);
}

void* Variant::get(const TypeInfo& type, bool throwOnError) {
    // A look first: a value of another type is no reason to copy anything.
    if (std::as_const(*this).get(type, throwOnError) == nullptr) {
        return nullptr;
    }
    return unshare()->getWritablePointer(type);
}

Variant::IDataWrapper* Variant::unshare() {
    if (wrapper_->useCount() > 1) {
        IDataWrapper* own = wrapper_->clone();
        wrapper_->release();
        wrapper_ = own;
    }
    return wrapper_;
}

}  // namespace Orlix::DataProcessing::Utils
