// The simulated camera as a whole: an emulated camera, its device, its two channels, and the loop
// that takes commands from the network until it is told to end.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device.h"
#include "gvcp.h"
#include "messagechannel.h"
#include "sockets.h"
#include "statistics.h"
#include "streamer.h"
#include "wirefaults.h"

namespace Orlix::Camsim {

struct ServerOptions {
    DeviceIdentity identity;
    std::uint16_t port = gvcpPort;  // 0 for one that is free
    FileForm file = FileForm::Plain;
    std::string faultScript;
    WireOptions wire;
    StreamOptions stream;
    MessageOptions messages;
};

// Throws GenericException that says what is wrong with an option, or why the address can't be used.
class Server final : private IChannels, private Emulated::Holder {
public:
    explicit Server(const ServerOptions& options);
    ~Server() override;

    // Until a signal of `signals`, a descriptor of signalfd that doesn't block, tells to end.
    // SIGUSR1 makes it call `report`, SIGUSR2 is the occasion of the faults that wait for a signal.
    void Run(int signals, const std::function<void()>& report);

    [[nodiscard]] Endpoint GetEndpoint() const noexcept { return endpoint_; }
    [[nodiscard]] const Statistics& GetStatistics() const noexcept { return statistics_; }

private:
    using TimePoint = Clock::time_point;
    struct Timer {
        TimePoint time;
        WireRule rule;
    };

    std::shared_ptr<Emulated::Holder> GetHolder() override;
    void SetStream(Emulated::Session session, const StreamSettings& settings) override;
    void FireTestPacket(const StreamSettings& settings) override;
    void SetMessages(const MessageSettings& settings) override;
    bool OnEvent(const Emulated::Event& event) noexcept override;
    void OnLost() noexcept override;

    void startTimers();
    void runTimers(TimePoint now);
    [[nodiscard]] bool takeSignals(int signals, const std::function<void()>& report);
    void onSignal();
    void begin(const WireRule& rule);
    [[nodiscard]] int waitingTime() const;
    void receive(const Socket& socket, Arrival arrival);
    void answer(const Answer& answer, const Endpoint& client);
    void noticeLoss();

    Statistics statistics_;
    Silence silence_;
    const WireFaults faults_;
    Socket commands_;
    std::vector<Socket> broadcasts_;
    Socket streamSocket_;
    Socket messageSocket_;
    EventFile loss_;
    std::atomic<bool> isLost_{false};
    bool hadPower_ = true;
    Endpoint endpoint_;
    std::shared_ptr<Emulated::Camera> camera_;
    MessageChannel messages_;
    Streamer streamer_;
    Device device_;
    Gvcp gvcp_;
    std::vector<Timer> timers_;
    std::vector<std::uint8_t> datagram_;
};

}  // namespace Orlix::Camsim
