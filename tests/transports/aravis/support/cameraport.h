// The port of a camera's commands, in the hands of a test.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "aravis/gvcpclient.h"

namespace Orlix::Aravis::Testing {

class CameraPort {
public:
    CameraPort() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(gvcpPort);
        EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    }
    ~CameraPort() { ::close(socket_); }
    CameraPort(const CameraPort&) = delete;
    CameraPort& operator=(const CameraPort&) = delete;

    // The next command, empty for none within the time.
    [[nodiscard]] std::vector<std::uint8_t> Take(std::chrono::milliseconds timeOut,
                                                 sockaddr_in& sender) const {
        pollfd wait{socket_, POLLIN, 0};
        if (::poll(&wait, 1, static_cast<int>(timeOut.count())) <= 0) {
            return {};
        }
        std::vector<std::uint8_t> packet(2048);
        socklen_t length = sizeof sender;
        const ssize_t size = ::recvfrom(socket_, packet.data(), packet.size(), 0,
                                        reinterpret_cast<sockaddr*>(&sender), &length);
        packet.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return packet;
    }
    void Answer(std::span<const std::uint8_t> packet, const sockaddr_in& receiver) const {
        EXPECT_EQ(::sendto(socket_, packet.data(), packet.size(), 0,
                           reinterpret_cast<const sockaddr*>(&receiver), sizeof receiver),
                  static_cast<ssize_t>(packet.size()));
    }

private:
    const int socket_;
};

}  // namespace Orlix::Aravis::Testing
