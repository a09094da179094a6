// Takes one datagram of GVCP and makes the answer. It knows no sockets, so that any bytes can be
// tried on it. One thread at a time; that of the server.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "device.h"
#include "protocol.h"

namespace Orlix::Camsim {

// What a client asked to be sent again.
struct ResendRequest {
    std::uint64_t blockId = 0;
    std::uint32_t firstPacket = 0;
    std::uint32_t lastPacket = 0;  // included
    bool longIds = false;
};

class IResender {
public:
    virtual ~IResender() = default;
    virtual void Resend(const ResendRequest& request) = 0;
};

enum class Arrival : std::uint8_t { Own, Broadcast };

struct Answer {
    std::vector<std::uint8_t> bytes;  // empty for none
    bool toEveryone = false;          // broadcast it
};

class Gvcp {
public:
    Gvcp(Device& device, IResender& resender, Statistics& statistics);

    [[nodiscard]] Answer Handle(Bytes datagram, const Endpoint& client, Arrival arrival);
    // Answers that are kept for repeated commands count no more.
    void Forget() noexcept { recent_.clear(); }

private:
    struct Request {
        std::uint8_t flags = 0;
        Command command{};
        std::uint16_t id = 0;
        Bytes body;
        Endpoint client;
        Arrival arrival{};
    };
    // The last command of a client. One that comes again, since its answer got lost, must not be
    // executed twice.
    struct Recent {
        Endpoint client;
        std::vector<std::uint8_t> datagram;
        std::vector<std::uint8_t> answer;
    };
    using Body = std::vector<std::uint8_t>;

    [[nodiscard]] Answer execute(const Request& request);
    [[nodiscard]] Answer discover(const Request& request);
    [[nodiscard]] std::optional<Status> run(const Request& request, Body& body);
    [[nodiscard]] static Status forceIp(const Request& request);
    [[nodiscard]] std::optional<Status> readRegisters(const Request& request, Body& body);
    [[nodiscard]] std::optional<Status> writeRegisters(const Request& request, Body& body);
    [[nodiscard]] std::optional<Status> readMemory(const Request& request, Body& body);
    [[nodiscard]] std::optional<Status> writeMemory(const Request& request, Body& body);
    void resend(const Request& request);
    [[nodiscard]] bool isForThisDevice(const Request& request) const;
    [[nodiscard]] Recent* findRecent(const Endpoint& client) noexcept;
    void remember(const Endpoint& client, Bytes datagram, const Answer& answer);

    Device& device_;
    IResender& resender_;
    Statistics& statistics_;
    std::deque<Recent> recent_;
};

}  // namespace Orlix::Camsim
