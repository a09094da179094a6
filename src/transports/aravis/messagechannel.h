// The events of a GigE Vision camera: a socket that the camera is told of through its registers,
// and a thread that takes messages from it, answers them and gives them on.
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "aravis/connection.h"
#include "aravis/eventpacket.h"
#include "aravis/socket.h"

namespace Orlix::Aravis {

class MessageChannel {
public:
    using Deliver = std::function<void(const Transport::EventMessage&)>;

    // Null for a camera without a message channel, and for one that refuses to be told, which is
    // told to the message sink. `deliver` is called on the channel's thread.
    [[nodiscard]] static std::unique_ptr<MessageChannel> Open(
        std::shared_ptr<Connection> connection, Deliver deliver);
    // Turns the channel off. Waits for a call of `deliver`, unless this is inside one.
    ~MessageChannel();
    MessageChannel(const MessageChannel&) = delete;
    MessageChannel& operator=(const MessageChannel&) = delete;

private:
    // What the thread uses, and keeps when it ends the channel itself.
    struct Receiver {
        UdpSocket socket;
        Deliver deliver;
        std::string label;
        std::uint32_t camera = 0;
        std::atomic<bool> quit{false};
        std::array<std::optional<std::uint16_t>, 16> lastRequests;
        std::size_t nextRequest = 0;

        void run();
        void takeGuarded(std::span<const std::uint8_t> packet, const sockaddr_in& sender) noexcept;
        void take(std::span<const std::uint8_t> packet, const sockaddr_in& sender);
        [[nodiscard]] bool isRepeated(std::uint16_t requestId);
    };

    explicit MessageChannel(std::shared_ptr<Connection> connection);

    [[nodiscard]] bool open(Deliver deliver);
    void announce();

    const std::shared_ptr<Connection> connection_;
    const std::shared_ptr<Receiver> receiver_ = std::make_shared<Receiver>();
    std::thread thread_;
};

}  // namespace Orlix::Aravis
