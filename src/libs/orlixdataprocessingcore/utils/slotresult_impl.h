// Bodies of ExceptionResult; included by its header only.
#pragma once

#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/utils/slotresult.h"

namespace Orlix::DataProcessing::Utils {

template <typename T>
ExceptionResult<T>::ExceptionResult(ExceptionPtr exception) : exception_(std::move(exception)) {
    if (exception_ == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid exception pointer passed.", __FILE__,
                                                __LINE__);
    }
}

template <typename T>
bool ExceptionResult<T>::hasException() const {
    if (exception_ == nullptr) {
        throw GenICam::RuntimeException("Result is not valid.", __FILE__, __LINE__);
    }
    return true;
}

template <typename T>
T ExceptionResult<T>::get() {
    if (exception_ == nullptr) {
        throw GenICam::RuntimeException("Result is not valid.", __FILE__, __LINE__);
    }
    rethrowException(std::exchange(exception_, ExceptionPtr()));
}

}  // namespace Orlix::DataProcessing::Utils
