// Owners for what Aravis hands out. Not for sharing between threads: Aravis is not thread-safe.
#pragma once

#include <arv.h>

#include <memory>
#include <string>

namespace Orlix::Aravis {

struct Unref {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};
template <typename Object>
using ObjectPtr = std::unique_ptr<Object, Unref>;

// The error of one call: pass Out(), then ask.
class Error {
public:
    Error() = default;
    ~Error() { g_clear_error(&error_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    [[nodiscard]] GError** Out() noexcept { return &error_; }
    [[nodiscard]] bool IsSet() const noexcept { return error_ != nullptr; }
    [[nodiscard]] bool Is(ArvDeviceError code) const noexcept {
        return g_error_matches(error_, arv_device_error_quark(), code) != FALSE;
    }
    [[nodiscard]] std::string Text() const {
        return error_ != nullptr ? error_->message : "no reason was given";
    }

private:
    GError* error_ = nullptr;
};

}  // namespace Orlix::Aravis
