#include "server.h"

#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/description.h"
#include "packetsender.h"

namespace Orlix::Camsim {
namespace {

constexpr std::size_t largestDatagram = 65536;

std::shared_ptr<Emulated::Camera> makeCamera(const ServerOptions& options) {
    Emulated::Identity identity;
    identity.vendor = options.identity.vendor;
    identity.model = options.identity.model;
    identity.version = options.identity.version;
    identity.serialNumber = options.identity.serial;
    identity.userDefinedName = options.identity.userName;
    identity.chunkByteOrder = Transport::ChunkByteOrder::BigEndian;  // that of GigE Vision
    Emulated::Place place;
    place.address = TextOf(options.identity.address);
    place.agenda = std::make_shared<Emulated::Agenda>();
    place.plugChanged = [] {};
    auto camera = std::make_shared<Emulated::Camera>(identity, std::move(place));
    camera->LoadFaults(options.faultScript);
    return camera;
}

// Broadcasts arrive at sockets that are bound to them; a network without any has none.
std::vector<Socket> openBroadcasts(const Endpoint& own, std::uint32_t subnetMask) {
    constexpr std::uint32_t everyone = 0xFFFFFFFF;
    std::vector<Socket> sockets;
    for (const std::uint32_t address : {everyone, own.address | ~subnetMask}) {
        try {
            sockets.emplace_back(Endpoint{address, own.port}, Sharing::WithOthers);
            if (const auto interface = FindInterface(own.address)) {
                sockets.back().BindToInterface(interface->name);
            }
        } catch (const GenICam::RuntimeException&) {
        }
    }
    return sockets;
}

// The server itself outlives its camera's session; who holds this owns nothing.
std::shared_ptr<Emulated::Holder> borrowed(Emulated::Holder& holder) {
    return {std::shared_ptr<Emulated::Holder>(), &holder};
}

}  // namespace

Server::Server(const ServerOptions& options)
    : faults_(options.wire),
      commands_({options.identity.address, options.port}, Sharing::Alone),
      streamSocket_({options.identity.address, 0}, Sharing::Alone),
      messageSocket_({options.identity.address, 0}, Sharing::Alone),
      endpoint_(commands_.GetEndpoint()),
      camera_(makeCamera(options)),
      messages_(messageSocket_.Get(), options.messages, silence_, statistics_),
      streamer_(camera_, streamSocket_.Get(), options.stream, faults_, silence_, statistics_),
      device_(camera_, options.identity,
              MakeDescription(*Emulated::GetDescriptionFile(), options.file, options.messages.ids),
              *this, statistics_),
      gvcp_(device_, streamer_, statistics_),
      datagram_(largestDatagram) {
    commands_.AllowBroadcast();
    broadcasts_ = openBroadcasts(endpoint_, options.identity.subnetMask);
    device_.SetSourcePorts(streamSocket_.GetEndpoint().port, messageSocket_.GetEndpoint().port);
    startTimers();
}

Server::~Server() = default;

void Server::Run(int signals, const std::function<void()>& report) {
    std::vector<pollfd> files = {
        {signals, POLLIN, 0}, {loss_.Get(), POLLIN, 0}, {commands_.Get(), POLLIN, 0}};
    for (const Socket& socket : broadcasts_) {
        files.push_back({socket.Get(), POLLIN, 0});
    }
    const std::size_t firstBroadcast = files.size() - broadcasts_.size();
    while (true) {
        runTimers(Clock::now());
        if (::poll(files.data(), files.size(), waitingTime()) < 0) {
            continue;
        }
        if ((files[0].revents & POLLIN) != 0 && !takeSignals(signals, report)) {
            return;
        }
        noticeLoss();
        if ((files[2].revents & POLLIN) != 0) {
            receive(commands_, Arrival::Own);
        }
        for (std::size_t index = firstBroadcast; index < files.size(); ++index) {
            if ((files[index].revents & POLLIN) != 0) {
                receive(broadcasts_[index - firstBroadcast], Arrival::Broadcast);
            }
        }
        device_.CheckHeartbeat(Clock::now());
    }
}

// All that have come, before the next datagram. False to end.
bool Server::takeSignals(int signals, const std::function<void()>& report) {
    signalfd_siginfo signal{};
    while (::read(signals, &signal, sizeof signal) == sizeof signal) {
        if (signal.ssi_signo == SIGUSR1) {
            report();
        } else if (signal.ssi_signo == SIGUSR2) {
            onSignal();
        } else {
            return false;
        }
    }
    return true;
}

// Milliseconds until something has to be done without a datagram.
int Server::waitingTime() const {
    constexpr std::int64_t longest = 60'000;
    TimePoint next = Clock::now() + std::chrono::milliseconds(longest);
    if (const auto deadline = device_.GetDeadline()) {
        next = std::min(next, *deadline);
    }
    for (const Timer& timer : timers_) {
        next = std::min(next, timer.time);
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, longest));
}

// A burst of commands costs one wait, but nobody who sends without an end keeps all else from being
// done.
void Server::receive(const Socket& socket, Arrival arrival) {
    constexpr int mostAtOnce = 64;
    for (int count = 0; count < mostAtOnce; ++count) {
        sockaddr_in address{};
        socklen_t addressSize = sizeof address;
        const ssize_t size =
            ::recvfrom(socket.Get(), datagram_.data(), datagram_.size(), MSG_DONTWAIT,
                       reinterpret_cast<sockaddr*>(&address), &addressSize);
        if (size < 0) {
            return;
        }
        noticeLoss();
        if (silence_.IsOn() || !device_.HasPower()) {
            ++statistics_.ignoredDatagrams;
            continue;
        }
        const Endpoint client = ToEndpoint(address);
        answer(
            gvcp_.Handle(Bytes(datagram_).first(static_cast<std::size_t>(size)), client, arrival),
            client);
    }
}

void Server::answer(const Answer& answer, const Endpoint& client) {
    constexpr std::uint32_t everyone = 0xFFFFFFFF;
    if (answer.bytes.empty()) {
        return;
    }
    const sockaddr_in address =
        ToSocketAddress(answer.toEveryone ? Endpoint{everyone, client.port} : client);
    if (::sendto(commands_.Get(), answer.bytes.data(), answer.bytes.size(), 0,
                 reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
        ++statistics_.sendErrors;
    }
}

void Server::noticeLoss() {
    const bool hasPower = device_.HasPower();
    const bool wentOff = std::exchange(hadPower_, hasPower) && !hasPower;
    if (isLost_.exchange(false) || wentOff) {
        loss_.Take();
        device_.LosePower();
        gvcp_.Forget();
    }
}

void Server::startTimers() {
    for (const WireRule& rule : faults_.GetRules()) {
        if (rule.occasion == WireOccasion::After || rule.occasion == WireOccasion::Every) {
            timers_.push_back({Clock::now() + rule.time, rule});
        }
    }
}

void Server::runTimers(TimePoint now) {
    for (Timer& timer : timers_) {
        if (now < timer.time) {
            continue;
        }
        begin(timer.rule);
        const bool repeats = timer.rule.occasion == WireOccasion::Every;
        timer.time =
            repeats ? now + std::max<Clock::duration>(timer.rule.time, std::chrono::milliseconds(1))
                    : TimePoint::max();
    }
    std::erase_if(timers_, [](const Timer& timer) { return timer.time == TimePoint::max(); });
}

void Server::onSignal() {
    for (const WireRule& rule : faults_.GetRules()) {
        if (rule.occasion == WireOccasion::Signal) {
            begin(rule);
        }
    }
}

// A silence without an end that begins with a signal ends with the next one.
void Server::begin(const WireRule& rule) {
    const bool hasEnd = rule.duration != std::chrono::nanoseconds(0);
    if (rule.fault == WireFault::Reset) {
        camera_->Unplug(rule.duration);
    } else if (rule.occasion == WireOccasion::Signal && !hasEnd && silence_.IsOn()) {
        silence_.End();
    } else {
        silence_.BeginFor(rule.duration);
    }
}

std::shared_ptr<Emulated::Holder> Server::GetHolder() {
    return borrowed(*this);
}

void Server::SetStream(Emulated::Session session, const StreamSettings& settings) {
    streamer_.Set(session, settings);
}

void Server::FireTestPacket(const StreamSettings& settings) {
    streamer_.FireTestPacket(settings);
}

void Server::SetMessages(const MessageSettings& settings) {
    messages_.Set(settings);
}

bool Server::OnEvent(const Emulated::Event& event) noexcept {
    return messages_.Push(event);
}

void Server::OnLost() noexcept {
    isLost_ = true;
    loss_.Raise();
}

}  // namespace Orlix::Camsim
