// The socket of an Aravis stream, which Aravis keeps to itself: found by its port.
#pragma once

#include <arv.h>

#include <cstddef>

namespace Orlix::Aravis {

// Without a socket, as for USB, nothing happens.
class StreamSocket {
public:
    explicit StreamSocket(ArvStream& stream);

    // At once, while Aravis waits for the first packet, when many more have been dropped already.
    // Returns the size that the kernel gave, 0 without a socket.
    std::size_t SetReceiveBuffer(std::size_t size) const noexcept;
    // From now on the kernel drops what comes: afterwards the stream writes into no buffer, though
    // its thread still runs. Waits for what lies in the socket to be taken out, some milliseconds.
    void Mute() const noexcept;

private:
    int descriptor_ = -1;
};

}  // namespace Orlix::Aravis
