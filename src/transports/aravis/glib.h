// Owners for what Aravis hands out. Not for sharing between threads: Aravis is not thread-safe.
#pragma once

#include <arv.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace Orlix::Aravis {

struct Unref {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};
template <typename Object>
using ObjectPtr = std::unique_ptr<Object, Unref>;

// Lets go of an object that must end on this thread, and on no other that has it for a moment, as
// GLib has while it tells of a signal: Aravis ends threads of its own with the object, and one that
// is to end itself ends the program. Nothing is told of it any more.
template <typename Object>
void EndHere(ObjectPtr<Object> held) noexcept {
    struct Others {
        std::mutex mutex;
        std::condition_variable changed;
        bool areGone = false;
    };
    if (held == nullptr) {
        return;
    }
    constexpr std::chrono::seconds longest{10};
    Others others;
    GObject* const object = G_OBJECT(held.get());
    const auto tell = +[](gpointer data, GObject*, gboolean isLast) {
        Others& told = *static_cast<Others*>(data);
        const std::scoped_lock lock(told.mutex);
        told.areGone = isLast != FALSE;
        told.changed.notify_all();
    };
    g_signal_handlers_destroy(object);
    g_object_add_toggle_ref(object, tell, &others);
    held.reset();
    {
        std::unique_lock lock(others.mutex);
        others.changed.wait_for(lock, longest, [&] { return others.areGone; });
    }
    g_object_remove_toggle_ref(object, tell, &others);
}

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
