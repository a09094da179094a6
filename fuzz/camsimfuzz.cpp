// The simulated camera behind its socket: datagrams in any order from two programs, one of which
// may have control, a stream and a message channel from the start, and time that passes. Whatever
// comes, the answer is one of this protocol or none. Nothing is sent: its channels have no sockets.
//
// The first byte says how the camera is met, then come steps: a byte for who and what, and what
// that needs.
#include <algorithm>
#include <cstring>
#include <vector>

#include "device.h"
#include "gvcp.h"
#include "messagechannel.h"
#include "orlixcamera/emulated/camera.h"
#include "orlixcamera/emulated/description.h"
#include "orlixcamera/emulated/registertable.h"
#include "streamer.h"

namespace {

using namespace Orlix;
using namespace Orlix::Camsim;
namespace At = Emulated::At;

constexpr int noSocket = -1;
constexpr Endpoint clients[] = {{0x7F000001, 4001}, {0x7F000001, 4002}};
constexpr Command commands[] = {Command::Discovery, Command::ForceIp,     Command::ReadReg,
                                Command::WriteReg,  Command::ReadMem,     Command::WriteMem,
                                Command::Event,     Command::PacketResend};

class Input {
public:
    explicit Input(Bytes bytes) : bytes_(bytes) {}
    [[nodiscard]] bool isEmpty() const { return bytes_.empty(); }
    std::uint8_t byte() {
        const Bytes one = bytes(1);
        return one.empty() ? std::uint8_t{0} : one[0];
    }
    std::size_t word() {
        const std::size_t high = byte();
        return high << 8 | byte();
    }
    Bytes bytes(std::size_t count) {
        const Bytes taken = bytes_.first(std::min(count, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return taken;
    }

private:
    Bytes bytes_;
};

const ServedDescription& description() {
    static const ServedDescription made =
        MakeDescription(*Emulated::GetDescriptionFile(), FileForm::Plain, EventIds::Short);
    return made;
}

std::shared_ptr<Emulated::Camera> makeCamera() {
    static const auto agenda = std::make_shared<Emulated::Agenda>();
    Emulated::Place place;
    place.agenda = agenda;
    place.plugChanged = [] {};
    return std::make_shared<Emulated::Camera>(Emulated::Identity(), std::move(place));
}

// All that a server has but the sockets.
class Simulation final : private IChannels, private Emulated::Holder {
public:
    void handle(Bytes datagram, const Endpoint& client, Arrival arrival) {
        check(gvcp_.Handle(datagram, client, arrival).bytes, datagram);
        if (!device_.HasPower()) {
            device_.LosePower();
            gvcp_.Forget();
        }
    }
    void letTimePass(std::chrono::milliseconds time) {
        device_.CheckHeartbeat(Clock::now() + time);
    }
    // A program that has control and both channels.
    void beginControlled(bool acquires) {
        write(Reg::control, Bit::controlled);
        write(Reg::streamAddress, clients[0].address);
        write(Reg::streamPort, 5001);
        write(Reg::messageAddress, clients[0].address);
        write(Reg::messagePort, 5002);
        // Small frames are made quickly.
        writeCamera(At::width, 64);
        writeCamera(At::height, 64);
        if (acquires) {
            writeCamera(At::acquisitionStart, 1);
        }
    }

private:
    std::shared_ptr<Emulated::Holder> GetHolder() override {
        return {std::shared_ptr<Emulated::Holder>(), static_cast<Emulated::Holder*>(this)};
    }
    void SetStream(Emulated::Session session, const StreamSettings& settings) override {
        streamer_.Set(session, settings);
    }
    void FireTestPacket(const StreamSettings& settings) override {
        streamer_.FireTestPacket(settings);
    }
    void SetMessages(const MessageSettings& settings) override { messages_.Set(settings); }
    bool OnEvent(const Emulated::Event& event) noexcept override { return messages_.Push(event); }
    void OnLost() noexcept override {}

    void write(std::uint32_t address, std::uint32_t value) {
        std::uint8_t bytes[sizeof value];
        Put(bytes, value);
        static_cast<void>(device_.Write(clients[0], address, bytes));
    }
    void writeCamera(std::int64_t address, std::int64_t value) {
        std::uint8_t bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        static_cast<void>(
            device_.Write(clients[0], cameraBase + static_cast<std::uint32_t>(address), bytes));
    }
    static void check(Bytes answer, Bytes datagram) {
        if (answer.empty()) {
            return;
        }
        const bool isSound = datagram.size() >= commandHeaderSize &&
                             answer.size() >= commandHeaderSize &&
                             answer.size() <= commandHeaderSize + mostCommandBytes &&
                             Get<std::uint16_t>(&answer[4]) == answer.size() - commandHeaderSize &&
                             Get<std::uint16_t>(&answer[6]) == Get<std::uint16_t>(&datagram[6]) &&
                             (datagram[1] & wantsAnswer) != 0;
        if (!isSound) {
            __builtin_trap();
        }
    }

    Statistics statistics_;
    Silence silence_;
    const WireFaults faults_{WireOptions()};
    const std::shared_ptr<Emulated::Camera> camera_ = makeCamera();
    MessageChannel messages_{noSocket, {}, silence_, statistics_};
    Streamer streamer_{camera_, noSocket, {}, faults_, silence_, statistics_};
    Device device_{camera_, {}, description(), *this, statistics_};
    Gvcp gvcp_{device_, streamer_, statistics_};
};

// With a header that is right, so that what is behind it is looked at.
std::vector<std::uint8_t> makeCommand(Input& input, std::uint16_t id) {
    constexpr std::size_t longest = 600;
    const Command command = commands[input.byte() % std::size(commands)];
    const std::uint8_t flags = input.byte();
    const Bytes body = input.bytes(input.word() % longest);
    std::vector<std::uint8_t> datagram(commandHeaderSize);
    datagram[0] = commandKey;
    datagram[1] = flags;
    Put(&datagram[2], static_cast<std::uint16_t>(command));
    Put(&datagram[4], static_cast<std::uint16_t>(body.size()));
    Put(&datagram[6], id);
    datagram.insert(datagram.end(), body.begin(), body.end());
    return datagram;
}

enum class Step : std::uint8_t { Command, Repeat, Raw, Time };

void run(Simulation& simulation, Input& input) {
    constexpr std::size_t longestRaw = 2000;
    std::vector<std::uint8_t> datagram;
    for (std::uint16_t id = 1; !input.isEmpty(); ++id) {
        const std::uint8_t how = input.byte();
        const Endpoint& client = clients[how >> 2 & 1];
        const Arrival arrival = (how & 8) != 0 ? Arrival::Broadcast : Arrival::Own;
        switch (static_cast<Step>(how & 3)) {
            case Step::Time:
                simulation.letTimePass(std::chrono::milliseconds(16 * input.byte()));
                continue;
            case Step::Command:
                datagram = makeCommand(input, id);
                break;
            case Step::Raw: {
                const Bytes raw = input.bytes(input.word() % longestRaw);
                datagram.assign(raw.begin(), raw.end());
                break;
            }
            case Step::Repeat:
                break;
        }
        simulation.handle(datagram, client, arrival);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    Simulation simulation;
    const std::uint8_t beginning = input.byte();
    if ((beginning & 1) != 0) {
        simulation.beginControlled((beginning & 2) != 0);
    }
    run(simulation, input);
    return 0;
}
