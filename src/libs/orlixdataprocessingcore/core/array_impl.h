// Bodies of Array; included by its header only.
#pragma once

#include <algorithm>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/array.h"

namespace Orlix::DataProcessing::Core {

template <typename T>
Array<T>::Array(std::vector<T> data)
    : elementType_(TypeInfo::getTypeInfo<T>(false)),
      data_(new std::vector<T>(std::move(data)), VectorCloner()) {}

template <typename T>
Array<T>::Array(const std::shared_ptr<IError>& error)
    : elementType_(TypeInfo::getTypeInfo<T>(false)) {
    setError(error);
}

template <typename T>
bool Array<T>::hasError(bool includeElements) const {
    return getError(includeElements) != nullptr;
}

template <typename T>
std::shared_ptr<IError> Array<T>::getError(bool includeElements) const {
    if (error_ != nullptr || !includeElements || !data_.isValid()) {
        return error_;
    }
    const auto hasOwnError = [](const T& element) { return element.hasError(true); };
    const auto found = std::find_if(data_->begin(), data_->end(), hasOwnError);
    return found != data_->end() ? found->getError(true) : nullptr;
}

template <typename T>
void Array<T>::setError(const std::shared_ptr<IError>& error) {
    if (error == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid error pointer passed.", __FILE__, __LINE__,
                                                "InvalidArgumentException");
    }
    data_.reset();
    error_ = error;
}

template <typename T>
std::size_t Array<T>::getSize() const {
    return data_.isValid() ? data_->size() : 0;
}

template <typename T>
void Array<T>::checkIndex(std::size_t index) const {
    if (error_ != nullptr) {
        throw GenICam::RuntimeException("Array is in error state.", __FILE__, __LINE__,
                                        "RuntimeException");
    }
    if (!data_.isValid() || index >= data_->size()) {
        throw GenICam::InvalidArgumentException("Invalid index passed.", __FILE__, __LINE__,
                                                "InvalidArgumentException");
    }
}

template <typename T>
const T& Array<T>::at(std::size_t index) const {
    checkIndex(index);
    return (*data_)[index];
}

template <typename T>
T& Array<T>::at(std::size_t index) {
    checkIndex(index);
    return (*data_)[index];
}

template <typename T>
Variant Array<T>::getElement(std::size_t index) const {
    return Variant(at(index));
}

template <typename T>
void Array<T>::setElement(std::size_t index, const Variant& value) {
    checkIndex(index);
    if (!value.isValid()) {
        throw GenICam::InvalidArgumentException("The given value is invalid.", __FILE__, __LINE__);
    }
    const T* element = value.get<T>(true);
    (*data_)[index] = *element;
}

template <typename T>
void Array<T>::assign(const IArray& other) {
    if (&other == this) {
        return;
    }
    if (!other.getElementType().canConvert(elementType_)) {
        throw GenICam::InvalidArgumentException(
            "Data in the given array is not compatible with this array.", __FILE__, __LINE__,
            "InvalidArgumentException");
    }
    if (other.hasError(false)) {
        setError(other.getError(false));
        return;
    }
    takeData(other);
    error_.reset();
}

template <typename T>
void Array<T>::takeData(const IArray& other) {
    if (const auto* same = Utils::object_cast<Array<T>>(&other)) {
        data_ = same->data_;
        return;
    }
    // The elements are of a derived class: they keep the part that this array holds.
    auto data = std::make_unique<std::vector<T>>();
    data->reserve(other.getSize());
    for (std::size_t index = 0; index < other.getSize(); ++index) {
        const Variant element = other.getElement(index);
        data->push_back(*element.template get<T>(true));
    }
    data_ = COWPtr<std::vector<T>>(data.release(), VectorCloner());
}

}  // namespace Orlix::DataProcessing::Core
