// Reads of a GigE Vision device beside Aravis, over a socket of its own and with time-outs of its
// own: any program may read a device that another controls. One thread at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "aravis/socket.h"

namespace Orlix::Aravis {

inline constexpr std::uint16_t gvcpPort = 3956;

class GvcpClient {
public:
    enum class Answer : std::uint8_t {
        Given,
        Refused,   // a sign of life only: a refusal, the answer to an earlier question, or a
                   // request for more time than it gets
        None,      // nothing came, or the system has no way to the address
        NotAsked,  // the system has no socket for the question
    };

    // How often a command is sent, and how long each waits for its answer. A device that asks for
    // more time gets half a second, once.
    struct Patience {
        unsigned int attempts = 3;
        std::chrono::milliseconds each{100};
    };

    explicit GvcpClient(std::uint32_t address);

    [[nodiscard]] std::uint32_t GetLocalAddress() const { return socket_.GetLocalAddress(); }

    [[nodiscard]] Answer ReadRegister(std::uint32_t address, std::uint32_t& value,
                                      const Patience& patience);
    // A multiple of 4 bytes, at most 512.
    [[nodiscard]] Answer ReadMemory(std::uint32_t address, std::span<std::uint8_t> bytes,
                                    const Patience& patience);

private:
    // The answer's content goes into answer_.
    [[nodiscard]] Answer ask(std::uint16_t command, std::span<const std::uint8_t> content,
                             const Patience& patience);
    [[nodiscard]] std::optional<Answer> await(std::uint16_t command,
                                              std::chrono::milliseconds timeOut);

    const std::uint32_t address_;
    UdpSocket socket_;
    bool usable_ = false;  // the system has a way to the address
    bool heard_ = false;   // something of the device came since the question
    std::uint16_t requestId_ = 0;
    std::vector<std::uint8_t> answer_;
};

}  // namespace Orlix::Aravis
