// A caught exception that can be kept and raised again later, also on another thread. A value
// type; copies share the exception object.
#pragma once

#include <cstddef>
#include <exception>
#include <utility>

#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

class ORLIXDATAPROCESSINGCORE_API ExceptionPtr {
public:
    ExceptionPtr() noexcept = default;
    ExceptionPtr(std::nullptr_t) noexcept {}
    explicit ExceptionPtr(std::exception_ptr exception) noexcept
        : exception_(std::move(exception)) {}

    [[nodiscard]] const std::exception_ptr& get() const noexcept { return exception_; }

    friend bool operator==(const ExceptionPtr&, const ExceptionPtr&) noexcept = default;
    friend bool operator==(const ExceptionPtr& pointer, std::nullptr_t) noexcept {
        return pointer.exception_ == nullptr;
    }

private:
    std::exception_ptr exception_;
};

// The exception that is being handled; null outside of a handler.
[[nodiscard]] ORLIXDATAPROCESSINGCORE_API ExceptionPtr getCurrentException() noexcept;

// Throws RuntimeException "Invalid exception pointer passed." for a null pointer.
[[noreturn]] ORLIXDATAPROCESSINGCORE_API void rethrowException(ExceptionPtr exception);

// Keeps a copy of an exception that is not being handled.
template <typename E>
[[nodiscard]] ExceptionPtr makeExceptionPtr(const E& exception) noexcept {
    return ExceptionPtr(std::make_exception_ptr(exception));
}

}  // namespace Orlix::DataProcessing::Utils
