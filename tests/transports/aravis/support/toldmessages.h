// What the camera library tells without a caller, while an object of this kind lives; one at a
// time.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "orlixcamera/messagesink.h"

namespace Orlix::Aravis::Testing {

class ToldMessages {
public:
    ToldMessages() : before_(SetMessageSink(&take)) {
        const std::scoped_lock lock(mutex);
        texts.clear();
    }
    ~ToldMessages() { SetMessageSink(before_); }
    ToldMessages(const ToldMessages&) = delete;
    ToldMessages& operator=(const ToldMessages&) = delete;

    // How many have that part.
    [[nodiscard]] std::size_t Count(const std::string& part) const {
        const std::scoped_lock lock(mutex);
        return count(part);
    }
    void WaitFor(const std::string& part) const {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return count(part) > 0; });
    }

private:
    static std::size_t count(const std::string& part) {
        return static_cast<std::size_t>(std::count_if(
            texts.begin(), texts.end(),
            [&](const std::string& text) { return text.find(part) != std::string::npos; }));
    }
    static void take(const char* message) noexcept {
        const std::scoped_lock lock(mutex);
        texts.emplace_back(message);
        changed.notify_all();
    }

    inline static std::mutex mutex;
    inline static std::condition_variable changed;
    inline static std::vector<std::string> texts;

    const MessageSink before_;
};

}  // namespace Orlix::Aravis::Testing
