#include "aravis/gvcpclient.h"

#include <algorithm>
#include <array>

#include "aravis/bigendian.h"

namespace Orlix::Aravis {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::uint8_t key = 0x42;
constexpr std::uint8_t acknowledge = 0x01;
constexpr std::uint16_t readRegister = 0x0080;
constexpr std::uint16_t readMemory = 0x0084;
constexpr std::uint16_t pending = 0x0089;
constexpr std::size_t headerSize = 8;
constexpr std::size_t largestContent = 540;

milliseconds until(Clock::time_point deadline) {
    return std::chrono::ceil<milliseconds>(deadline - Clock::now());
}

}  // namespace

GvcpClient::GvcpClient(std::uint32_t address)
    : address_(address), usable_(socket_.Connect(address, gvcpPort)) {}

GvcpClient::Answer GvcpClient::ReadRegister(std::uint32_t address, std::uint32_t& value,
                                            const Patience& patience) {
    std::array<std::uint8_t, 4> content{};
    PutNumber(content.data(), 4, address);
    const Answer answer = ask(readRegister, content, patience);
    if (answer != Answer::Given || answer_.size() < 4) {
        return answer == Answer::Given ? Answer::Refused : answer;
    }
    value = static_cast<std::uint32_t>(GetNumber(answer_.data(), 4));
    return answer;
}

GvcpClient::Answer GvcpClient::ReadMemory(std::uint32_t address, std::span<std::uint8_t> bytes,
                                          const Patience& patience) {
    constexpr std::size_t addressSize = 4;
    std::array<std::uint8_t, 8> content{};
    PutNumber(content.data(), 4, address);
    PutNumber(content.data() + 6, 2, bytes.size());
    const Answer answer = ask(readMemory, content, patience);
    if (answer != Answer::Given || answer_.size() < addressSize + bytes.size()) {
        return answer == Answer::Given ? Answer::Refused : answer;
    }
    std::copy_n(answer_.begin() + addressSize, bytes.size(), bytes.begin());
    return answer;
}

GvcpClient::Answer GvcpClient::ask(std::uint16_t command, std::span<const std::uint8_t> content,
                                   const Patience& patience) {
    usable_ = usable_ || socket_.Connect(address_, gvcpPort);
    if (!usable_) {
        return socket_.IsOpen() ? Answer::None : Answer::NotAsked;
    }
    heard_ = false;
    requestId_ =
        requestId_ == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(requestId_ + 1);
    std::vector<std::uint8_t> packet(headerSize);
    packet[0] = key;
    packet[1] = acknowledge;
    PutNumber(packet.data() + 2, 2, command);
    PutNumber(packet.data() + 4, 2, content.size());
    PutNumber(packet.data() + 6, 2, requestId_);
    packet.insert(packet.end(), content.begin(), content.end());
    for (unsigned int attempt = 0; attempt < patience.attempts; ++attempt) {
        static_cast<void>(socket_.Send(packet));
        if (const auto answer = await(command, patience.each)) {
            return *answer;
        }
    }
    return heard_ ? Answer::Refused : Answer::None;
}

std::optional<GvcpClient::Answer> GvcpClient::await(std::uint16_t command, milliseconds timeOut) {
    // A device that is there may ask for time; more than this is not given, however often it asks.
    constexpr milliseconds longest{500};
    Clock::time_point deadline = Clock::now() + timeOut;
    const Clock::time_point last = deadline + longest;
    bool isPending = false;
    for (milliseconds left = timeOut; left.count() > 0; left = until(deadline)) {
        answer_.resize(largestContent + headerSize);
        const std::size_t size = socket_.Receive(answer_, left);
        if (size < headerSize) {
            continue;
        }
        // The answer to an earlier question is late, and the device there all the same.
        heard_ = true;
        if (GetNumber(answer_.data() + 6, 2) != requestId_) {
            continue;
        }
        const std::uint64_t status = GetNumber(answer_.data(), 2);
        const std::uint64_t kind = GetNumber(answer_.data() + 2, 2);
        if (kind == pending && size >= headerSize + 4) {
            isPending = true;
            deadline = std::min(
                last, deadline + milliseconds(GetNumber(answer_.data() + headerSize + 2, 2)));
            continue;
        }
        answer_.resize(size);
        answer_.erase(answer_.begin(), answer_.begin() + headerSize);
        return status == 0 && kind == command + 1U ? Answer::Given : Answer::Refused;
    }
    return isPending ? std::optional(Answer::Refused) : std::nullopt;
}

}  // namespace Orlix::Aravis
