#include "aravis/messagechannel.h"

#include <arpa/inet.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "aravis/bootstrap.h"
#include "aravis/gvcpclient.h"
#include "aravis/messages.h"
#include "gcbase/gcexception.h"
#include "orlixcamera/messagesink.h"

namespace Orlix::Aravis {
namespace {

constexpr std::uint32_t answerTime = 200;  // milliseconds that the camera waits for an answer
constexpr std::uint32_t retryCount = 3;

}  // namespace

std::unique_ptr<MessageChannel> MessageChannel::Open(std::shared_ptr<Connection> connection,
                                                     Deliver deliver) {
    std::unique_ptr<MessageChannel> channel(new MessageChannel(std::move(connection)));
    try {
        return channel->open(std::move(deliver)) ? std::move(channel) : nullptr;
    } catch (const GenICam::GenericException& error) {
        Tell("Device '" + channel->connection_->GetCamera().label +
             "' has no events for this program: " + error.GetDescription());
        return nullptr;
    }
}

MessageChannel::MessageChannel(std::shared_ptr<Connection> connection)
    : connection_(std::move(connection)) {}

bool MessageChannel::open(Deliver deliver) {
    if (connection_->ReadRegister(Bootstrap::messageChannelCount) == 0) {
        return false;
    }
    const Found& camera = connection_->GetCamera();
    receiver_->deliver = std::move(deliver);
    receiver_->label = camera.label;
    receiver_->camera = camera.address;
    if (!receiver_->socket.Bind(GvcpClient(camera.address).GetLocalAddress())) {
        throw GenICam::RuntimeException("the system gives no socket for them.", __FILE__, __LINE__);
    }
    thread_ = std::thread([receiver = receiver_] { receiver->run(); });
    announce();
    return true;
}

// The port last: it turns the channel on.
void MessageChannel::announce() {
    connection_->WriteRegister(Bootstrap::messageAddress, receiver_->socket.GetLocalAddress());
    for (const auto& [address, value] : {std::pair{Bootstrap::messageTimeOut, answerTime},
                                         std::pair{Bootstrap::messageRetryCount, retryCount}}) {
        try {
            connection_->WriteRegister(address, value);
        } catch (const GenICam::GenericException&) {
            // Not every camera has a choice of these.
        }
    }
    connection_->WriteRegister(Bootstrap::messagePort, receiver_->socket.GetLocalPort());
}

MessageChannel::~MessageChannel() {
    if (!thread_.joinable()) {
        return;
    }
    try {
        connection_->WriteRegister(Bootstrap::messagePort, 0);
    } catch (const GenICam::GenericException&) {
        // A camera that is lost sends nothing.
    }
    receiver_->quit = true;
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void MessageChannel::Receiver::run() {
    constexpr std::size_t largestPacket = 65536;
    constexpr std::chrono::milliseconds slice{100};
    std::vector<std::uint8_t> packet(largestPacket);
    while (!quit) {
        sockaddr_in sender{};
        const std::size_t size = socket.Receive(packet, slice, &sender);
        // Others have no say in what this camera tells.
        if (size > 0 && ntohl(sender.sin_addr.s_addr) == camera) {
            takeGuarded({packet.data(), size}, sender);
        }
    }
}

// A message that can't be had, for want of memory say, is no end of the others.
void MessageChannel::Receiver::takeGuarded(std::span<const std::uint8_t> packet,
                                           const sockaddr_in& sender) noexcept {
    try {
        take(packet, sender);
    } catch (...) {
        TellMessage("A message of a camera was lost: it can't be given on.");
    }
}

void MessageChannel::Receiver::take(std::span<const std::uint8_t> packet,
                                    const sockaddr_in& sender) {
    const auto header = ReadEventHeader(packet);
    if (!header) {
        return;
    }
    if (header->wantsAnswer) {
        static_cast<void>(socket.SendTo(MakeEventAnswer(*header), sender));
    }
    // Sent again because the answer got lost. What wants none is never sent again, and its number
    // needn't count.
    if (header->wantsAnswer && isRepeated(header->requestId)) {
        return;
    }
    const EventList list = ReadEvents(*header, packet);
    for (const Transport::EventMessage& event : list.events) {
        if (!quit) {
            deliver(event);
        }
    }
    if (!list.isWhole) {
        Tell("Device '" + label + "' sent a message with a damaged event.");
    }
}

bool MessageChannel::Receiver::isRepeated(std::uint16_t requestId) {
    const std::optional<std::uint16_t> wanted(requestId);
    if (std::find(lastRequests.begin(), lastRequests.end(), wanted) != lastRequests.end()) {
        return true;
    }
    lastRequests[nextRequest] = wanted;
    nextRequest = (nextRequest + 1) % lastRequests.size();
    return false;
}

}  // namespace Orlix::Aravis
