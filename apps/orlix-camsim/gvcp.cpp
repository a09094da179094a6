#include "gvcp.h"

#include <algorithm>

namespace Orlix::Camsim {
namespace {

constexpr std::size_t wordSize = 4;
constexpr std::uint16_t answerBit = 1;

bool isAligned(std::size_t value) {
    return value % wordSize == 0;
}

std::uint32_t wordAt(Bytes bytes, std::size_t offset) {
    return Get<std::uint32_t>(bytes.data() + offset);
}

std::vector<std::uint8_t> makeAnswer(Status status, std::uint16_t command, std::uint16_t id,
                                     Bytes body) {
    std::vector<std::uint8_t> answer(commandHeaderSize + body.size());
    Put(&answer[0], static_cast<std::uint16_t>(status));
    Put(&answer[2], static_cast<std::uint16_t>(command | answerBit));
    Put(&answer[4], static_cast<std::uint16_t>(body.size()));
    Put(&answer[6], id);
    std::copy(body.begin(), body.end(), answer.begin() + commandHeaderSize);
    return answer;
}

void setIndex(std::vector<std::uint8_t>& body, std::size_t index) {
    body.assign(wordSize, 0);
    Put(&body[2], static_cast<std::uint16_t>(index));
}

}  // namespace

Gvcp::Gvcp(Device& device, IResender& resender, Statistics& statistics)
    : device_(device), resender_(resender), statistics_(statistics) {}

// Silence for what is no command: whoever sent it doesn't speak this protocol. A command whose
// length lies is answered, as its sender can learn from it.
Answer Gvcp::Handle(Bytes datagram, const Endpoint& client, Arrival arrival) {
    if (datagram.size() < commandHeaderSize || datagram[0] != commandKey) {
        ++statistics_.ignoredDatagrams;
        return {};
    }
    Request request;
    request.flags = datagram[1];
    request.command = static_cast<Command>(Get<std::uint16_t>(&datagram[2]));
    request.id = Get<std::uint16_t>(&datagram[6]);
    request.body = datagram.subspan(commandHeaderSize);
    request.client = client;
    request.arrival = arrival;
    if (!isForThisDevice(request)) {
        ++statistics_.ignoredDatagrams;
        return {};
    }
    ++statistics_.commands;
    const bool isWhole = Get<std::uint16_t>(&datagram[4]) == request.body.size();
    if (!isWhole || request.id == 0) {
        ++statistics_.failedCommands;
        return (request.flags & wantsAnswer) == 0
                   ? Answer{}
                   : Answer{makeAnswer(Status::InvalidHeader, Get<std::uint16_t>(&datagram[2]),
                                       request.id, {})};
    }
    device_.Heard(client, Clock::now());
    const Recent* const recent = findRecent(client);
    if (recent != nullptr && std::equal(datagram.begin(), datagram.end(), recent->datagram.begin(),
                                        recent->datagram.end())) {
        ++statistics_.repeatedCommands;
        return {recent->answer};
    }
    Answer answer = execute(request);
    const bool canRepeat = request.command != Command::Discovery &&
                           request.command != Command::PacketResend &&
                           request.command != Command::ForceIp;
    if (canRepeat) {
        remember(client, datagram, answer);
    }
    return answer;
}

// A broadcast is for everyone who has no address yet; that of an address names its receiver.
bool Gvcp::isForThisDevice(const Request& request) const {
    constexpr std::size_t macEnd = 8;
    constexpr std::size_t macHighAt = 2;
    constexpr std::size_t macLowAt = 4;
    if (request.command != Command::ForceIp) {
        return request.arrival == Arrival::Own || request.command == Command::Discovery;
    }
    const Bootstrap& bootstrap = device_.GetBootstrap();
    return request.body.size() >= macEnd &&
           Get<std::uint16_t>(request.body.data() + macHighAt) == bootstrap.Value(Reg::macHigh) &&
           wordAt(request.body, macLowAt) == bootstrap.Value(Reg::macLow);
}

Answer Gvcp::execute(const Request& request) {
    if (request.command == Command::Discovery) {
        return discover(request);
    }
    if (request.command == Command::PacketResend) {
        resend(request);
        return {};
    }
    Body body;
    const std::optional<Status> status = run(request, body);
    if (!status) {
        return {};
    }
    statistics_.failedCommands += *status != Status::Success ? 1 : 0;
    if ((request.flags & wantsAnswer) == 0) {
        return {};
    }
    return {makeAnswer(*status, static_cast<std::uint16_t>(request.command), request.id, body)};
}

std::optional<Status> Gvcp::run(const Request& request, Body& body) {
    switch (request.command) {
        case Command::ForceIp:
            return forceIp(request);
        case Command::ReadReg:
            return readRegisters(request, body);
        case Command::WriteReg:
            return writeRegisters(request, body);
        case Command::ReadMem:
            return readMemory(request, body);
        case Command::WriteMem:
            return writeMemory(request, body);
        default:
            return Status::NotImplemented;
    }
}

// A sender in another subnet can't be reached directly, if it doesn't mind a broadcast.
Answer Gvcp::discover(const Request& request) {
    if ((request.flags & wantsAnswer) == 0) {
        return {};
    }
    const Bootstrap& bootstrap = device_.GetBootstrap();
    Body body(Reg::discoveryEnd);
    device_.RefreshName();
    static_cast<void>(bootstrap.Read(Reg::version, body));
    const std::uint32_t mask = bootstrap.Value(Reg::subnetMask);
    const std::uint32_t own = bootstrap.Value(Reg::address);
    const bool isNear = (request.client.address & mask) == (own & mask);
    return {
        makeAnswer(Status::Success, static_cast<std::uint16_t>(request.command), request.id, body),
        !isNear && (request.flags & mayBroadcastAnswer) != 0};
}

// The address belongs to the machine that this program runs on.
Status Gvcp::forceIp(const Request& request) {
    constexpr std::size_t bodySize = 56;
    return request.body.size() == bodySize ? Status::NotImplemented : Status::InvalidParameter;
}

// What could be read before the first failure goes with the answer.
std::optional<Status> Gvcp::readRegisters(const Request& request, Body& body) {
    if (request.body.empty() || !isAligned(request.body.size()) ||
        request.body.size() > mostCommandBytes) {
        return Status::InvalidParameter;
    }
    for (std::size_t offset = 0; offset < request.body.size(); offset += wordSize) {
        const std::uint32_t address = wordAt(request.body, offset);
        std::array<std::uint8_t, wordSize> word{};
        const std::optional<Status> status = isAligned(address)
                                                 ? device_.Read(request.client, address, word)
                                                 : std::optional(Status::BadAlignment);
        if (status != Status::Success) {
            return status;
        }
        body.insert(body.end(), word.begin(), word.end());
    }
    return Status::Success;
}

// The answer tells how many were written.
std::optional<Status> Gvcp::writeRegisters(const Request& request, Body& body) {
    constexpr std::size_t pairSize = 2 * wordSize;
    setIndex(body, 0);
    if (request.body.empty() || request.body.size() % pairSize != 0 ||
        request.body.size() > mostCommandBytes) {
        return Status::InvalidParameter;
    }
    for (std::size_t offset = 0; offset < request.body.size(); offset += pairSize) {
        const std::uint32_t address = wordAt(request.body, offset);
        const std::optional<Status> status =
            isAligned(address) ? device_.Write(request.client, address,
                                               request.body.subspan(offset + wordSize, wordSize))
                               : std::optional(Status::BadAlignment);
        if (status != Status::Success) {
            return status;
        }
        setIndex(body, offset / pairSize + 1);
    }
    return Status::Success;
}

std::optional<Status> Gvcp::readMemory(const Request& request, Body& body) {
    constexpr std::size_t bodySize = 8;
    constexpr std::size_t countAt = 6;
    if (request.body.size() != bodySize) {
        return Status::InvalidParameter;
    }
    const std::uint32_t address = wordAt(request.body, 0);
    const std::size_t count = Get<std::uint16_t>(request.body.data() + countAt);
    if (!isAligned(address) || !isAligned(count)) {
        return Status::BadAlignment;
    }
    if (count == 0 || count > mostMemoryBytes) {
        return Status::InvalidParameter;
    }
    body.resize(wordSize + count);
    Put(body.data(), address);
    const auto status = device_.Read(request.client, address, MutableBytes(body).subspan(wordSize));
    if (status != Status::Success) {
        body.clear();
    }
    return status;
}

// The answer tells how many bytes were written.
std::optional<Status> Gvcp::writeMemory(const Request& request, Body& body) {
    setIndex(body, 0);
    if (request.body.size() <= wordSize || request.body.size() > wordSize + mostMemoryBytes) {
        return Status::InvalidParameter;
    }
    const std::uint32_t address = wordAt(request.body, 0);
    const Bytes data = request.body.subspan(wordSize);
    if (!isAligned(address) || !isAligned(data.size())) {
        return Status::BadAlignment;
    }
    const auto status = device_.Write(request.client, address, data);
    if (status == Status::Success) {
        setIndex(body, data.size());
    }
    return status;
}

// Only who has control gets a stream, so only he may ask for more of it; the thread that receives
// it may do so from a port of its own.
void Gvcp::resend(const Request& request) {
    constexpr std::size_t shortSize = 12;
    constexpr std::size_t longSize = 20;
    constexpr std::uint32_t shortMask = lastPacketId;
    const bool longIds = (request.flags & hasLongIds) != 0;
    if (request.body.size() != (longIds ? longSize : shortSize) ||
        !device_.IsFromController(request.client.address) ||
        Get<std::uint16_t>(request.body.data()) != 0) {
        ++statistics_.failedCommands;
        return;
    }
    const std::uint32_t mask = longIds ? lastLongPacketId : shortMask;
    ResendRequest wanted;
    wanted.longIds = longIds;
    wanted.blockId = longIds ? Get<std::uint64_t>(request.body.data() + shortSize)
                             : Get<std::uint16_t>(request.body.data() + 2);
    wanted.firstPacket = wordAt(request.body, 4) & mask;
    wanted.lastPacket = wordAt(request.body, 8) & mask;
    if (!longIds && wanted.lastPacket == lastPacketId) {
        wanted.lastPacket = lastLongPacketId;
    }
    resender_.Resend(wanted);
}

Gvcp::Recent* Gvcp::findRecent(const Endpoint& client) noexcept {
    const auto found = std::find_if(recent_.begin(), recent_.end(),
                                    [&](const Recent& one) { return one.client == client; });
    return found == recent_.end() ? nullptr : &*found;
}

void Gvcp::remember(const Endpoint& client, Bytes datagram, const Answer& answer) {
    constexpr std::size_t mostClients = 16;
    Recent* recent = findRecent(client);
    if (recent == nullptr) {
        if (recent_.size() == mostClients) {
            recent_.pop_front();
        }
        recent = &recent_.emplace_back();
        recent->client = client;
    }
    recent->datagram.assign(datagram.begin(), datagram.end());
    recent->answer = answer.bytes;
}

}  // namespace Orlix::Camsim
