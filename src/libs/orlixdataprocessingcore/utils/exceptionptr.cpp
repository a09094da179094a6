#include "orlixdataprocessingcore/utils/exceptionptr.h"

#include "gcbase/gcexception.h"

namespace Orlix::DataProcessing::Utils {

ExceptionPtr getCurrentException() noexcept {
    return ExceptionPtr(std::current_exception());
}

// A value by intent: the caller has no need of it any more.
void rethrowException(ExceptionPtr exception) {  // NOLINT(performance-unnecessary-value-param)
    if (exception == nullptr) {
        throw GenICam::RuntimeException("Invalid exception pointer passed.", __FILE__, __LINE__);
    }
    std::rethrow_exception(exception.get());
}

}  // namespace Orlix::DataProcessing::Utils
