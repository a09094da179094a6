// One opening of a camera: Aravis' device object with the control of the camera, used by one thread
// at a time. Shared by device, streams and helper threads; the device closes it. Once the camera is
// lost, every use of it fails at once, and the object is taken down on a thread of its own: to take
// leave of a dead camera takes Aravis seconds.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "aravis/found.h"
#include "aravis/glib.h"

namespace Orlix::Aravis {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    // Throws AccessException "Device '...' is in use by another program (address).", and
    // RuntimeException if it can't be reached. `lost` is called once, on any thread, when the
    // camera is lost.
    [[nodiscard]] static std::shared_ptr<Connection> Open(const Found& camera,
                                                          std::function<void()> lost);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] const Found& GetCamera() const noexcept { return camera_; }
    [[nodiscard]] const std::shared_ptr<const std::string>& GetDescription() const noexcept {
        return description_;
    }

    // Whole ranges, or an exception: AccessException where the camera refuses, TimeoutException
    // where it doesn't answer.
    void Read(std::int64_t address, void* buffer, std::size_t length);
    void Write(std::int64_t address, const void* buffer, std::size_t length);
    [[nodiscard]] std::uint32_t ReadRegister(std::uint32_t address);
    void WriteRegister(std::uint32_t address, std::uint32_t value);
    // Throws RuntimeException once the camera is lost or the connection closed.
    void Use(const std::function<void(ArvDevice*)>& action);

    // Since when a thread has been inside Use; none if none is.
    [[nodiscard]] bool IsBusy() const;
    void SetLost();
    [[nodiscard]] bool IsLost() const;
    // Asks a camera on the network for a sign of life, where Aravis would wait for seconds for a
    // dead one; without an answer it is lost.
    void CheckAlive();
    // No use from now on; gives up control, if there is one to give up.
    void Close() noexcept;
    // "Device '...' was removed.", or that it isn't open.
    [[noreturn]] void ThrowGone() const;

private:
    Connection(const Found& camera, std::function<void()> lost);

    void open();
    void requireControl(ArvDevice* device) const;
    void watchControl(ArvDevice* device);
    void loadDescription(ArvDevice* device);
    void release() noexcept;
    void transferIn(ArvDevice* device, std::uint64_t address, void* buffer, std::size_t length);
    void transferOut(ArvDevice* device, std::uint64_t address, const void* buffer,
                     std::size_t length);
    [[nodiscard]] bool isNumber(std::uint64_t address, std::size_t length) const noexcept;
    [[noreturn]] void throwFailed(const char* what, std::uint64_t address, std::size_t length,
                                  const Error& error) const;

    const Found camera_;
    const std::function<void()> lostHandler_;
    std::shared_ptr<const std::string> description_;
    bool numbersByRegister_ = false;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    ObjectPtr<ArvDevice> device_;
    bool busy_ = false;
    bool lost_ = false;
    bool closed_ = false;
};

}  // namespace Orlix::Aravis
