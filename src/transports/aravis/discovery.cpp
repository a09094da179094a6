#include "aravis/discovery.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "aravis/survey.h"
#include "orlixcamera/deviceproperties.h"
#include "orlixcamera/transport/announcer.h"

namespace Orlix::Aravis {
namespace {

// Between two looks.
constexpr std::chrono::milliseconds pause{2000};
// After one that failed, at least.
constexpr std::chrono::milliseconds retryPause{200};
constexpr std::array protocols = {Protocol::GigE, Protocol::Usb3};

std::vector<Found> ofProtocol(const std::vector<Found>& cameras, Protocol protocol) {
    std::vector<Found> chosen;
    std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(chosen),
                 [&](const Found& camera) { return camera.protocol == protocol; });
    return chosen;
}

bool isSame(const Found& first, const Found& second) {
    return HaveSameProperties(first.info, second.info);
}

bool haveSame(const std::vector<Found>& first, const std::vector<Found>& second) {
    return first.size() == second.size() &&
           std::is_permutation(first.begin(), first.end(), second.begin(), isSame);
}

}  // namespace

class Discovery::State {
public:
    void run() noexcept {
        while (lookGuarded() && pauseUntilNext()) {
        }
    }

    void quit() {
        {
            const std::scoped_lock lock(mutex_);
            quit_ = true;
            changed_.notify_all();
        }
        for (const Protocol protocol : protocols) {
            announcerOf(protocol).Set({});
        }
    }

    void lose(const gcstring& fullName) {
        const std::scoped_lock lock(mutex_);
        lost_.push_back(fullName);
        changed_.notify_all();
    }

    std::vector<Found> waitForCameras(Protocol protocol) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return looked_ || quit_; });
        return ofProtocol(cameras_, protocol);
    }

    std::vector<Found> waitForKnown(Protocol protocol) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return looked_ || quit_; });
        std::vector<Found> known = ofProtocol(cameras_, protocol);
        const std::vector<Found> gone = ofProtocol(gone_, protocol);
        known.insert(known.end(), gone.begin(), gone.end());
        return known;
    }

    Transport::Announcer& announcerOf(Protocol protocol) {
        return announcers_.at(static_cast<std::size_t>(protocol));
    }

private:
    // A look that failed, for want of memory say, is one that found what was there before.
    bool lookGuarded() noexcept {
        try {
            return look();
        } catch (...) {
            std::unique_lock lock(mutex_);
            looked_ = true;
            changed_.notify_all();
            // Also where a loss is still to be told, which may be what has failed.
            changed_.wait_for(lock, retryPause, [this] { return quit_; });
            return !quit_;
        }
    }

    // False once nobody wants to know.
    bool look() {
        dropLost();
        const std::vector<Found> before = getCameras();
        std::vector<Found> now = TakeSurvey(before);
        {
            const std::scoped_lock lock(mutex_);
            // Lost while the look went on: whether they are back shows the next one.
            dropLostFrom(now);
        }
        return publish(before, now);
    }

    // A camera that was lost has gone, even if it is back before anybody looks.
    void dropLost() {
        const std::vector<Found> before = getCameras();
        std::vector<Found> now = before;
        {
            const std::scoped_lock lock(mutex_);
            dropLostFrom(now);
            lost_.clear();
        }
        if (now.size() != before.size()) {
            static_cast<void>(publish(before, now));
        }
    }

    void dropLostFrom(std::vector<Found>& cameras) const {
        std::erase_if(cameras, [this](const Found& camera) {
            return std::find(lost_.begin(), lost_.end(), camera.info.GetFullName()) != lost_.end();
        });
    }

    std::vector<Found> getCameras() {
        const std::scoped_lock lock(mutex_);
        return cameras_;
    }

    bool publish(const std::vector<Found>& before, const std::vector<Found>& now) {
        {
            const std::scoped_lock lock(mutex_);
            if (quit_) {
                return false;
            }
            remember(before, now);
            cameras_ = now;
            looked_ = true;
            changed_.notify_all();
        }
        for (const Protocol protocol : protocols) {
            if (!haveSame(ofProtocol(before, protocol), ofProtocol(now, protocol))) {
                announcerOf(protocol).Tell();
            }
        }
        return true;
    }

    void remember(const std::vector<Found>& before, const std::vector<Found>& now) {
        const auto isIn = [](const std::vector<Found>& cameras, const Found& camera) {
            return std::any_of(cameras.begin(), cameras.end(), [&](const Found& other) {
                return other.info.GetFullName() == camera.info.GetFullName();
            });
        };
        std::erase_if(gone_, [&](const Found& camera) { return isIn(now, camera); });
        for (const Found& camera : before) {
            if (!isIn(now, camera)) {
                gone_.push_back(camera);
            }
        }
    }

    bool pauseUntilNext() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, pause, [this] { return quit_ || !lost_.empty(); });
        return !quit_;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Found> cameras_;
    std::vector<Found> gone_;
    std::vector<gcstring> lost_;  // full names, since the last look began
    bool looked_ = false;
    bool quit_ = false;
    std::array<Transport::Announcer, protocols.size()> announcers_;
};

// Nobody waits for the end of a look.
Discovery::Discovery() : state_(std::make_shared<State>()) {
    std::thread([state = state_] { state->run(); }).detach();
}

Discovery::~Discovery() {
    state_->quit();
}

std::vector<Found> Discovery::GetCameras(Protocol protocol) const {
    return state_->waitForCameras(protocol);
}

std::vector<Found> Discovery::GetKnown(Protocol protocol) const {
    return state_->waitForKnown(protocol);
}

void Discovery::SetChanged(Protocol protocol, std::function<void()> changed) {
    state_->announcerOf(protocol).Set(std::move(changed));
}

void Discovery::Lose(const gcstring& fullName) {
    state_->lose(fullName);
}

}  // namespace Orlix::Aravis
