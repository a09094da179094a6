// The uses of a connection, and its thread, which is the only one to call Aravis with the device.
#include <algorithm>
#include <utility>

#include "aravis/accesstask.h"
#include "aravis/bootstrap.h"
#include "aravis/connection.h"
#include "aravis/systemlock.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using GenICam::AccessException;
using std::chrono::milliseconds;

// A camera of the network that refuses may have another controller by now, and this program doesn't
// know it. What is plugged into this computer has no other.
void Connection::use(Action action, Purpose purpose) {
    try {
        perform(std::move(action), purpose);
    } catch (const AccessException&) {
        if (camera_.protocol != Protocol::GigE || !isControlTaken()) {
            throw;
        }
        ThrowGone();
    }
}

// The last question is the controller's own: to take control that it has is nothing to a camera.
bool Connection::isControlTaken() {
    if (!answersControllerOnly_) {
        GvcpClient client(camera_.address);
        const ControlSign sign = LookForControl(client, {2, milliseconds(100)});
        if (IsLost()) {
            return true;
        }
        if (sign == ControlSign::None || (sign == ControlSign::Held && holder_.IsKnown())) {
            return false;
        }
    }
    try {
        perform(
            [this](ArvDevice* device) {
                std::uint32_t privilege = 0;
                transferIn(device, Bootstrap::controlPrivilege, &privilege, sizeof privilege);
                transferOut(device, Bootstrap::controlPrivilege, &privilege, sizeof privilege);
            },
            Purpose::Any);
    } catch (const AccessException&) {
        SetLost();
    } catch (const GenICam::GenericException&) {
        // No proof of anything.
    }
    return IsLost();
}

void Connection::perform(Action action, Purpose purpose) {
    const auto task = std::make_shared<Task>();
    task->action = std::move(action);
    task->purpose = purpose;
    Lock lock(mutex_);
    if (lost_ || closed_) {
        lock.unlock();
        ThrowGone();
    }
    tasks_.push_back(task);
    work_.notify_one();
    changed_.wait(lock, [&] { return task->isDone || lost_; });
    const bool isDone = task->isDone;
    lock.unlock();
    if (!isDone) {
        ThrowGone();
    }
    if (task->failure) {
        std::rethrow_exception(task->failure);
    }
}

// Of a stream that is made when nobody waits for it any more the connection's thread disposes.
ObjectPtr<ArvStream> Connection::CreateStream(
    const std::function<ArvStream*(ArvDevice*, Error&)>& create, std::string& why) {
    struct Result {
        ObjectPtr<ArvStream> stream;
        std::string why;
    };
    const auto result = std::make_shared<Result>();
    const auto dispose = [&] { begin([result](ArvDevice*) { result->stream.reset(); }); };
    {
        const std::scoped_lock lock(mutex_);
        ++streams_;
    }
    try {
        perform(
            [result, create](ArvDevice* device) {
                Error error;
                result->stream.reset(create(device, error));
                result->why = result->stream != nullptr ? "" : error.Text();
            },
            Purpose::Stream);
    } catch (...) {
        dispose();
        throw;
    }
    if (result->stream == nullptr) {
        why = result->why;
        dispose();
    }
    return std::move(result->stream);
}

Connection::Drop Connection::BeginDrop(ObjectPtr<ArvStream> stream) noexcept {
    // Shared only since functions are copied.
    return begin([held = std::shared_ptr<ArvStream>(std::move(stream))](ArvDevice*) mutable {
        held.reset();
    });
}

Connection::Drop Connection::begin(Action drop) {
    const auto task = std::make_shared<Task>();
    task->isDrop = true;
    task->action = std::move(drop);
    const std::scoped_lock lock(mutex_);
    tasks_.push_back(task);
    work_.notify_one();
    return task;
}

bool Connection::AwaitDrop(const Drop& drop, Until until) const noexcept {
    Lock lock(mutex_);
    changed_.wait(lock, [&] { return drop->isDone || (until == Until::Lost && lost_); });
    return drop->isDone;
}

void Connection::serve() noexcept {
    {
        Lock lock(mutex_);
        while (waitForWork(lock)) {
            const std::shared_ptr<Task> task = std::move(tasks_.front());
            tasks_.pop_front();
            execute(*task, lock);
        }
    }
    release();
}

// Signs of life for the camera in between; false when all is done and nothing more can come.
bool Connection::waitForWork(Lock& lock) {
    while (tasks_.empty()) {
        if (closed_ && streams_ == 0) {
            return false;
        }
        if (signPeriod_ == milliseconds(0) || lost_) {
            work_.wait(lock);
        } else if (work_.wait_for(lock, signPeriod_) == std::cv_status::timeout) {
            lock.unlock();
            keepControl();
            lock.lock();
        }
    }
    return true;
}

// Accesses of those who have left are not begun.
void Connection::execute(Task& task, Lock& lock) noexcept {
    const bool isBegun = !lost_ || task.isDrop;
    if (isBegun) {
        current_ = &task;
        begun_ = Clock::now();
        lock.unlock();
        try {
            task.action(device_.get());
        } catch (...) {
            task.failure = std::current_exception();
        }
        task.action = nullptr;  // what it owns may be a stream, which needs its time to end
        lock.lock();
        current_ = nullptr;
    }
    streams_ -= task.isDrop ? 1 : 0;
    task.isDone = isBegun;
    changed_.notify_all();
}

// The system lock is for cameras that answer: others wait for it, and a dead one takes seconds.
void Connection::release() noexcept {
    Lock lock(mutex_);
    const bool lost = lost_;
    lock.unlock();
    if (lost) {
        EndHere(std::move(device_));
    } else {
        const std::scoped_lock system(SystemLock());
        EndHere(std::move(device_));
    }
    lock.lock();
    released_ = true;
    changed_.notify_all();
}

// Aravis gives a sign once a second, whatever time-out the camera has been set to.
void Connection::learnHeartbeat(ArvDevice* device) {
    constexpr std::uint32_t longEnough = 3000;
    constexpr std::uint32_t shortest = 10;
    constexpr std::uint32_t signsInTime = 3;
    Error error;
    std::uint32_t timeOut = longEnough;
    if (camera_.protocol != Protocol::GigE ||
        arv_device_read_register(device, Bootstrap::heartbeatTimeOut, &timeOut, error.Out()) ==
            FALSE) {
        timeOut = longEnough;
    }
    signPeriod_ =
        milliseconds(timeOut >= longEnough ? 0 : std::max(timeOut / signsInTime, shortest));
}

// Any command of the controller is a sign. One that fails is told by nobody but the heartbeat.
void Connection::keepControl() noexcept {
    Error error;
    std::uint32_t privilege = 0;
    static_cast<void>(arv_device_read_register(device_.get(), Bootstrap::controlPrivilege,
                                               &privilege, error.Out()));
}

}  // namespace Orlix::Aravis
