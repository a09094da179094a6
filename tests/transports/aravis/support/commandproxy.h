// A camera that behaves as the test wants it to: before one that is sound. Commands for the
// camera's port go on to another port, where the sound one is, unless the test has another answer.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <thread>

#include "aravis/bigendian.h"
#include "aravis/support/cameraport.h"

namespace Orlix::Aravis::Testing {

class CommandProxy {
public:
    struct Command {
        std::uint64_t kind = 0;
        std::uint64_t address = 0;
        std::uint64_t value = 0;   // the word behind the address, if there is one
        std::uint16_t sender = 0;  // the port
    };
    enum class Way : std::uint8_t { Forward, Drop, Refuse };
    // Called on the proxy's thread.
    using Judge = std::function<Way(const Command&)>;

    CommandProxy(std::uint32_t address, std::uint16_t port, Judge judge)
        : address_(address), port_(port), judge_(std::move(judge)), thread_([this] { run(); }) {}
    ~CommandProxy() {
        quit_ = true;
        thread_.join();
    }
    CommandProxy(const CommandProxy&) = delete;
    CommandProxy& operator=(const CommandProxy&) = delete;

private:
    static constexpr std::size_t headerSize = 8;

    void run() {
        while (!quit_) {
            sockaddr_in sender{};
            const auto packet = front_.Take(std::chrono::milliseconds(50), sender);
            if (packet.size() >= headerSize) {
                pass(packet, sender);
            }
        }
    }
    void pass(const std::vector<std::uint8_t>& packet, const sockaddr_in& sender) {
        Command command;
        command.kind = GetNumber(packet.data() + 2, 2);
        command.sender = ntohs(sender.sin_port);
        if (packet.size() >= headerSize + 4) {
            command.address = GetNumber(packet.data() + headerSize, 4);
        }
        if (packet.size() >= headerSize + 8) {
            command.value = GetNumber(packet.data() + headerSize + 4, 4);
        }
        const Way way = judge_(command);
        if (way == Way::Forward) {
            forward(packet, sender);
        } else if (way == Way::Refuse) {
            refuse(packet, sender);
        }
    }
    void forward(const std::vector<std::uint8_t>& packet, const sockaddr_in& sender) {
        UdpSocket& back = backs_[sender.sin_port];
        if (back.GetLocalPort() == 0) {
            ASSERT_TRUE(back.Connect(address_, port_));
        }
        ASSERT_TRUE(back.Send(packet));
        std::array<std::uint8_t, 2048> answer{};
        const bool wantsAnswer = (packet[1] & 1U) != 0;
        const std::size_t size =
            wantsAnswer ? back.Receive(answer, std::chrono::milliseconds(1000)) : 0;
        if (size > 0) {
            front_.Answer(std::span(answer).first(size), sender);
        }
    }
    void refuse(const std::vector<std::uint8_t>& packet, const sockaddr_in& sender) const {
        constexpr std::uint64_t writeProtect = 0x8004;
        std::array<std::uint8_t, headerSize + 4> answer{};
        PutNumber(answer.data(), 2, writeProtect);
        PutNumber(answer.data() + 2, 2, GetNumber(packet.data() + 2, 2) + 1);
        PutNumber(answer.data() + 4, 2, 4);
        PutNumber(answer.data() + 6, 2, GetNumber(packet.data() + 6, 2));
        front_.Answer(answer, sender);
    }

    const std::uint32_t address_;
    const std::uint16_t port_;
    const Judge judge_;
    const CameraPort front_;
    std::map<in_port_t, UdpSocket> backs_;  // by the sender, whom the camera tells apart
    std::atomic<bool> quit_{false};
    std::thread thread_;
};

}  // namespace Orlix::Aravis::Testing
