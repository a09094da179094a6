// One opening of a camera: Aravis' device object with the control of the camera, and the thread on
// which alone it is used. Shared by device, streams and helper threads; the device closes it. Who
// uses it waits for that thread, but no longer than until the camera is lost: Aravis needs seconds
// for an access to a dead camera, and for taking leave of it, and has them to itself.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "aravis/control.h"
#include "aravis/found.h"
#include "aravis/glib.h"

namespace Orlix::Aravis {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    // Runs on the connection's thread, maybe after the caller has left: it owns what it uses.
    using Action = std::function<void(ArvDevice*)>;

    // Throws AccessException "Device '...' is in use by another program (address).", with "at
    // ADDRESS" of the program where the camera tells it, and RuntimeException if it can't be
    // reached. `lost` is called once, on a thread of its own, when the camera is lost.
    [[nodiscard]] static std::shared_ptr<Connection> Open(const Found& camera,
                                                          std::function<void()> lost);
    ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] const Found& GetCamera() const noexcept { return camera_; }
    [[nodiscard]] const std::shared_ptr<const std::string>& GetDescription() const noexcept {
        return description_;
    }

    // Whole ranges, or an exception: AccessException where the camera refuses, TimeoutException
    // where it doesn't answer, RuntimeException as soon as it is lost or the connection closed.
    void Read(std::int64_t address, void* buffer, std::size_t length);
    void Write(std::int64_t address, const void* buffer, std::size_t length);
    [[nodiscard]] std::uint32_t ReadRegister(std::uint32_t address);
    void WriteRegister(std::uint32_t address, std::uint32_t value);

    // A stream, to be given back with BeginDrop; null with the reason in `why`. Throws like an
    // access.
    [[nodiscard]] ObjectPtr<ArvStream> CreateStream(
        const std::function<ArvStream*(ArvDevice*, Error&)>& create, std::string& why);
    // One end of a stream. AwaitDrop tells whether its receiving thread has ended; it waits for
    // that until the camera is lost, or for as long as Aravis takes.
    struct Task;
    using Drop = std::shared_ptr<Task>;
    enum class Until : std::uint8_t { Lost, Done };
    [[nodiscard]] Drop BeginDrop(ObjectPtr<ArvStream> stream) noexcept;
    [[nodiscard]] bool AwaitDrop(const Drop& drop, Until until) const noexcept;

    // One look at a camera on the network; finds it lost where it is out of doubt. A camera that
    // answers nobody but its controller is asked on the connection's thread, not by the client.
    [[nodiscard]] ControlSign LookForControl(GvcpClient& client,
                                             const GvcpClient::Patience& patience);
    // Whether the camera may be unable to answer just now: it works on a write, which may be one to
    // its flash memory. A camera that streams is not.
    [[nodiscard]] bool MayBeMute() const;
    void SetLost() noexcept;
    [[nodiscard]] bool IsLost() const;
    // Neither lost nor closed.
    [[nodiscard]] bool IsUsable() const;
    // Asks a camera on the network for a sign of life; without an answer it is lost.
    void CheckAlive() noexcept;
    // No use from now on; gives up control, unless the camera is lost meanwhile.
    void Close() noexcept;
    // "Device '...' was removed.", or that it isn't open.
    [[noreturn]] void ThrowGone() const;

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;
    enum class Purpose : std::uint8_t { Any, Write, Stream };

    Connection(const Found& camera, std::function<void()> lost);

    // Opening, on the caller's thread.
    void open();
    [[nodiscard]] std::uint32_t requireFree() const;
    [[nodiscard]] ObjectPtr<ArvDevice> openDevice(std::uint32_t localAddress) const;
    void requireControl(ArvDevice* device);
    void watchControl(ArvDevice* device);
    void loadDescription(ArvDevice* device);
    void startThreads();
    void tellLoss() const noexcept;

    // Uses. `perform` rethrows what the action has thrown.
    void use(Action action, Purpose purpose);
    void perform(Action action, Purpose purpose);
    [[nodiscard]] bool isControlTaken();
    [[nodiscard]] ControlSign lookAsController();
    [[nodiscard]] bool isAtStream() const;
    void listenForOthers(GvcpClient& client);
    Drop begin(Action drop);
    void transferIn(ArvDevice* device, std::uint64_t address, void* buffer, std::size_t length);
    void transferOut(ArvDevice* device, std::uint64_t address, const void* buffer,
                     std::size_t length);
    [[nodiscard]] bool isNumber(std::uint64_t address, std::size_t length) const noexcept;
    [[noreturn]] void throwFailed(const char* what, std::uint64_t address, std::size_t length,
                                  const Error& error);

    // On the connection's thread.
    void serve() noexcept;
    [[nodiscard]] bool waitForWork(Lock& lock);
    void execute(Task& task, Lock& lock) noexcept;
    void release() noexcept;
    void learnHeartbeat(ArvDevice* device);
    void keepControl() noexcept;

    const Found camera_;
    const std::function<void()> lostHandler_;
    std::shared_ptr<const std::string> description_;
    Holder holder_;
    bool numbersByRegister_ = false;
    std::atomic<bool> answersControllerOnly_{false};
    std::atomic<std::uint64_t> answers_{0};  // that the camera gave to accesses

    ObjectPtr<ArvDevice> device_;              // of the connection's thread, like the next
    std::chrono::milliseconds signPeriod_{0};  // 0: Aravis' own signs are enough

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;  // for those who wait for something to be done
    std::condition_variable work_;             // for the connection's thread
    std::deque<std::shared_ptr<Task>> tasks_;
    unsigned int streams_ = 0;
    const Task* current_ = nullptr;  // that the connection's thread is at, since:
    Clock::time_point begun_;
    bool lost_ = false;
    bool closed_ = false;
    bool released_ = false;
};

}  // namespace Orlix::Aravis
