// The mistakes in calls of Aravis that GLib has told while an object of this kind lives; one at a
// time. GLib tells them on stderr and goes on, so that no test would see them.
#pragma once

#include <atomic>

#include "aravis/glib.h"

namespace Orlix::Aravis::Testing {

class Criticals {
public:
    Criticals() : before_(g_log_set_default_handler(&take, this)) {}
    ~Criticals() { g_log_set_default_handler(before_, nullptr); }
    Criticals(const Criticals&) = delete;
    Criticals& operator=(const Criticals&) = delete;

    [[nodiscard]] int Count() const { return count_; }

private:
    static void take(const gchar* domain, GLogLevelFlags level, const gchar* text,
                     gpointer self) noexcept {
        const auto all = static_cast<unsigned>(level);
        if ((all & (unsigned{G_LOG_LEVEL_CRITICAL} | unsigned{G_LOG_LEVEL_ERROR})) != 0) {
            ++static_cast<Criticals*>(self)->count_;
        }
        g_log_default_handler(domain, level, text, nullptr);
    }

    const GLogFunc before_;
    std::atomic<int> count_{0};
};

}  // namespace Orlix::Aravis::Testing
