#include "orlixdataprocessingcore/core/value.h"

#include <string>

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Core {

IValue::~IValue() = default;

void ErrorState::set(const std::shared_ptr<IError>& error) {
    if (error == nullptr) {
        throw GenICam::InvalidArgumentException("Invalid error pointer passed.", __FILE__,
                                                __LINE__);
    }
    error_ = error;
}

void ErrorState::fail(const char* valueName) {
    const std::string message = std::string(valueName) + " is in error state.";
    throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix::DataProcessing::Core
