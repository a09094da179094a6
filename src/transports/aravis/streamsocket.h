// The socket of an Aravis stream, which Aravis keeps to itself: found by its address and port.
#pragma once

#include <arv.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace Orlix::Aravis {

// A second handle of it, which stays valid when the stream is gone. Without a socket, as for USB,
// nothing happens.
class StreamSocket {
public:
    StreamSocket() = default;
    // Owns it.
    explicit StreamSocket(int descriptor) noexcept : descriptor_(descriptor) {}
    // `address` is this computer's, host order.
    StreamSocket(ArvStream& stream, std::uint32_t address);
    ~StreamSocket();
    StreamSocket(StreamSocket&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    StreamSocket& operator=(StreamSocket&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    [[nodiscard]] bool IsKnown() const noexcept { return descriptor_ >= 0; }
    [[nodiscard]] int Get() const noexcept { return descriptor_; }
    // At once, while Aravis waits for the first packet, when many more have been dropped already.
    // Returns the size that the kernel gave, 0 without a socket.
    std::size_t SetReceiveBuffer(std::size_t size) const noexcept;
    // From now on the kernel drops what comes. False without a socket.
    [[nodiscard]] bool Mute() const noexcept;
    // Waits until nothing lies in the socket, and comes for some milliseconds; false after the
    // time.
    [[nodiscard]] bool AwaitEmpty(std::chrono::milliseconds timeOut) const noexcept;

private:
    int descriptor_ = -1;
};

}  // namespace Orlix::Aravis
