#include "aravis/heartbeat.h"

#include <chrono>
#include <new>
#include <utility>

#include "aravis/gvcpclient.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds period{200};
constexpr milliseconds answerTime{100};
// Silence for that long is the loss of the camera.
constexpr milliseconds longestSilence{600};
// A camera that writes to its flash memory may be unable to answer a second question.
constexpr milliseconds longestSilenceWhenMute{2000};

}  // namespace

Heartbeat::Heartbeat(std::shared_ptr<Connection> connection)
    : connection_(std::move(connection)), thread_([this] {
          if (connection_->GetCamera().protocol == Protocol::GigE) {
              watchNetwork();
          } else {
              watchUsb();
          }
      }) {}

Heartbeat::~Heartbeat() {
    {
        const std::scoped_lock lock(mutex_);
        quit_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

bool Heartbeat::pause() {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, period, [this] { return quit_; });
}

void Heartbeat::watchNetwork() {
    GvcpClient client(connection_->GetCamera().address);
    Clock::time_point lastSign = Clock::now();
    unsigned int unanswered = 0;
    while (pause() && !connection_->IsLost()) {
        const Clock::time_point asked = Clock::now();
        const ControlSign sign = ask(client);
        if (sign == ControlSign::NotAsked) {
            continue;
        }
        if (sign != ControlSign::None) {
            lastSign = asked;
            unanswered = 0;
            continue;
        }
        const milliseconds patience =
            connection_->MayBeMute() ? longestSilenceWhenMute : longestSilence;
        // One question alone may have met a busy moment of this computer.
        constexpr unsigned int enough = 2;
        if (++unanswered >= enough && Clock::now() - lastSign >= patience) {
            connection_->SetLost();
        }
    }
}

// A camera that was restarted in between answers, but has no controller any more. Without the
// memory for a question nothing is known.
ControlSign Heartbeat::ask(GvcpClient& client) const noexcept {
    try {
        return connection_->LookForControl(client, {2, answerTime});
    } catch (...) {
        return ControlSign::NotAsked;
    }
}

// The first word of a USB3 Vision camera's memory is its version of the standard. A camera that was
// pulled out fails this at once.
void Heartbeat::watchUsb() {
    unsigned int failures = 0;
    while (pause() && !connection_->IsLost()) {
        try {
            static_cast<void>(connection_->ReadRegister(0));
            failures = 0;
        } catch (const GenICam::AccessException&) {
            failures = 0;  // it refuses, so it is there
        } catch (const std::bad_alloc&) {
            // Nothing is known.
        } catch (const GenICam::GenericException&) {
            constexpr unsigned int enough = 3;
            if (++failures >= enough) {
                connection_->SetLost();
            }
        }
    }
}

}  // namespace Orlix::Aravis
