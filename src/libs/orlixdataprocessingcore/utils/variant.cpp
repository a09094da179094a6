#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Utils {

Variant::IDataWrapper::~IDataWrapper() = default;

Variant::Variant(const Variant& other) noexcept : wrapper_(other.wrapper_) {
    if (wrapper_ != nullptr) {
        wrapper_->addRef();
    }
}

Variant& Variant::operator=(const Variant& other) noexcept {
    return *this = Variant(other);
}

Variant& Variant::operator=(Variant&& other) noexcept {
    // The old value goes last, since its destructor may run foreign code.
    Variant taken(std::move(other));
    std::swap(wrapper_, taken.wrapper_);
    return *this;
}

Variant::~Variant() {
    if (wrapper_ != nullptr) {
        wrapper_->release();
    }
}

TypeInfo Variant::getValueType() const {
    return wrapper_ != nullptr ? wrapper_->getValueType() : TypeInfo();
}

void Variant::reset() noexcept {
    *this = Variant();
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
