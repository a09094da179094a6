#include "orlixcamera/emulated/agenda.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace Orlix::Emulated {

struct Agenda::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::multimap<Clock::time_point, std::function<void()>> tasks;
    bool ended = false;
    std::thread thread;

    void run() {
        std::unique_lock lock(mutex);
        while (!ended) {
            if (tasks.empty()) {
                changed.wait(lock);
            } else if (tasks.begin()->first > Clock::now()) {
                const Clock::time_point next = tasks.begin()->first;
                changed.wait_until(lock, next);
            } else {
                auto task = tasks.extract(tasks.begin());
                lock.unlock();
                task.mapped()();
                task = {};
                lock.lock();
            }
        }
    }
};

Agenda::Agenda() : state_(std::make_shared<State>()) {}

Agenda::~Agenda() {
    std::multimap<Clock::time_point, std::function<void()>> left;
    std::thread thread;
    {
        const std::scoped_lock lock(state_->mutex);
        state_->ended = true;
        state_->changed.notify_all();
        left.swap(state_->tasks);
        thread.swap(state_->thread);
    }
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
    } else if (thread.joinable()) {
        thread.join();
    }
}

void Agenda::Add(Clock::time_point time, std::function<void()> task) {
    const std::scoped_lock lock(state_->mutex);
    state_->tasks.emplace(time, std::move(task));
    if (!state_->thread.joinable()) {
        state_->thread = std::thread([state = state_] { state->run(); });
    }
    state_->changed.notify_all();
}

}  // namespace Orlix::Emulated
