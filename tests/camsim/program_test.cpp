// The real program: events, heartbeats, silence, resets, its options and its end.
#include <gtest/gtest.h>

#include <cstring>

#include "bootstrap.h"
#include "camsim/support/camsim.h"
#include "camsim/support/gevclient.h"
#include "genapi/genapi.h"
#include "orlixcamera/emulated/event.h"
#include "orlixcamera/emulated/registertable.h"
#include "serveddescription.h"

namespace Orlix::Camsim::Testing {
namespace {

namespace At = Emulated::At;

constexpr std::int64_t on = 1;

// A program in control that gets the test events.
class EventClient {
public:
    explicit EventClient(const std::vector<std::string>& arguments = {}, std::uint32_t timeout = 0,
                         std::uint32_t retries = 0)
        : process(arguments), client(process.port()) {
        constexpr auto test = static_cast<std::int64_t>(Emulated::EventKind::Test);
        client.takeControl();
        client.set(At::eventNotification + test * Emulated::bankStep, on);
        EXPECT_EQ(client.write(Reg::messageTimeout, timeout), Status::Success);
        EXPECT_EQ(client.write(Reg::messageRetries, retries), Status::Success);
        EXPECT_EQ(client.write(Reg::messageAddress, 0x7F000001), Status::Success);
        EXPECT_EQ(client.write(Reg::messagePort, messages.port()), Status::Success);
    }
    void fire() { client.set(At::testEventGenerate, on); }
    void acknowledge(const Buffer& message) {
        messages.send(Writer()
                          .add(std::uint16_t{0})
                          .add(static_cast<std::uint16_t>(Get<std::uint16_t>(&message[2]) + 1))
                          .add(std::uint16_t{0})
                          .add(Get<std::uint16_t>(&message[6]))
                          .bytes(),
                      messages.lastSender());
    }

    CamsimProcess process;
    GevClient client;
    UdpSocket messages;
};

TEST(CamsimEvents, AnEventComesWithItsData) {
    EventClient events;
    events.fire();
    const Buffer message = events.messages.receive();
    ASSERT_EQ(message.size(), 8U + 16 + 8);
    EXPECT_EQ(message[0], commandKey);
    EXPECT_EQ(message[1], 0) << "without a time-out nobody waits for an acknowledge";
    EXPECT_EQ(Get<std::uint16_t>(&message[2]), static_cast<std::uint16_t>(Command::EventData));
    EXPECT_EQ(Get<std::uint16_t>(&message[4]), message.size() - 8);
    EXPECT_EQ(Get<std::uint16_t>(&message[10]), 0x9006U);
    EXPECT_EQ(Get<std::uint16_t>(&message[12]), 0xFFFFU) << "of no stream channel";
    std::uint64_t time = 0;
    std::memcpy(&time, &message[24], sizeof time);
    EXPECT_EQ(Get<std::uint64_t>(&message[16]), time);
    EXPECT_EQ(events.messages.lastSender(), events.client.read(Reg::messageSource));
}

TEST(CamsimEvents, AnEventThatIsNotAcknowledgedComesAgainWithItsNumber) {
    EventClient events({}, 20, 2);
    events.fire();
    const Buffer message = events.messages.receive();
    EXPECT_EQ(message[1], wantsAnswer);
    EXPECT_EQ(events.messages.receive(), message);
    EXPECT_EQ(events.messages.receive(), message);
    nlohmann::json statistics;
    do {
        statistics = events.process.statistics();
    } while (statistics["lostEvents"] == 0);
    EXPECT_EQ(statistics["events"], 1);
    EXPECT_EQ(statistics["eventRetries"], 2);
}

TEST(CamsimEvents, AnAcknowledgeEndsTheWait) {
    EventClient events({}, 60'000, 5);
    for (std::uint16_t number = 1; number <= 3; ++number) {
        events.fire();
        const Buffer message = events.messages.receive();
        EXPECT_EQ(Get<std::uint16_t>(&message[6]), number);
        events.acknowledge(message);
    }
    const nlohmann::json statistics = events.process.stop();
    EXPECT_EQ(statistics["eventRetries"], 0);
    EXPECT_EQ(statistics["lostEvents"], 0);
}

TEST(CamsimEvents, LongIdsTellTheSizeOfEachRecord) {
    EventClient events({"--event-ids", "64", "--event-batch", "4", "--fault", "stop: events 4"});
    events.client.set(At::acquisitionStop, on);
    std::size_t records = 0;
    while (records < 4) {
        const Buffer message = events.messages.receive();
        EXPECT_EQ(message[1], hasLongIds);
        for (std::size_t at = 8; at < message.size(); ++records) {
            EXPECT_EQ(Get<std::uint16_t>(&message[at]), 24U + 8);
            EXPECT_EQ(Get<std::uint16_t>(&message[at + 2]), 0x9006U);
            at += Get<std::uint16_t>(&message[at]);
        }
    }
    EXPECT_EQ(records, 4U);
}

TEST(CamsimEvents, PlainEventsHaveNoData) {
    EventClient events({"--events", "plain"});
    events.fire();
    const Buffer message = events.messages.receive();
    EXPECT_EQ(Get<std::uint16_t>(&message[2]), static_cast<std::uint16_t>(Command::Event));
    EXPECT_EQ(message.size(), 8U + 16);
}

TEST(CamsimProgram, ControlIsLostWithoutAHeartbeat) {
    CamsimProcess process;
    GevClient owner(process.port());
    owner.takeControl();
    ASSERT_EQ(owner.write(Reg::heartbeat, 500), Status::Success);
    GevClient watcher(process.port());
    while (watcher.read(Reg::control) != 0) {
    }
    EXPECT_EQ(owner.write(Reg::heartbeat, 600), Status::AccessDenied);
    EXPECT_EQ(process.stop()["controlLosses"], 1);
}

// Asks again and again until the device answers; by a client of its own, since what was asked too
// often is answered later.
void waitUntilAnswered(const CamsimProcess& process) {
    constexpr int shortTime = 20;
    GevClient client(process.port());
    do {
        client.send(commandOf(Command::Discovery, {}, 1));
    } while (!client.tryReceive(shortTime));
}

TEST(CamsimProgram, ASilentDeviceAnswersLater) {
    CamsimProcess process({"--wire", "on signal: silence for 300 ms"});
    process.signal();
    waitUntilAnswered(process);
}

// What comes meanwhile is not heard, nor is it kept.
TEST(CamsimProgram, ASilenceWithoutAnEndLastsFromOneSignalToTheNext) {
    CamsimProcess process({"--wire", "on signal: silence"});
    GevClient client(process.port());
    for (int round = 1; round <= 2; ++round) {
        process.signal();
        client.send(commandOf(Command::Discovery, {}, 1));
        // What is sent may be on its way for a while.
        constexpr int enoughLooks = 10'000;
        for (int look = 0; process.statistics()["ignoredDatagrams"] < round; ++look) {
            ASSERT_LT(look, enoughLooks);
        }
        process.signal();
        EXPECT_EQ(client.read(Reg::version), 0x00020000U);
    }
    EXPECT_EQ(process.stop()["commands"], 2);
}

TEST(CamsimProgram, ADeviceIsResetWithASignal) {
    CamsimProcess process({"--wire", "on signal: reset for 100 ms"});
    GevClient client(process.port());
    client.takeControl();
    process.signal();
    waitUntilAnswered(process);
    EXPECT_EQ(client.read(Reg::control), 0U);
}

TEST(CamsimProgram, ADeviceThatIsResetForgetsWhoControlsIt) {
    CamsimProcess process({"--fault", "stop: unplug for 100 ms"});
    GevClient client(process.port());
    client.takeControl();
    ASSERT_EQ(client.write(Reg::heartbeat, 900), Status::Success);
    const Buffer stop = Writer()
                            .add(cameraBase + static_cast<std::uint32_t>(At::acquisitionStop))
                            .add(registerBytes(on))
                            .bytes();
    client.send(commandOf(Command::WriteMem, stop, 500));
    waitUntilAnswered(process);
    GevClient watcher(process.port());
    EXPECT_EQ(watcher.read(Reg::control), 0U);
    EXPECT_EQ(watcher.read(Reg::heartbeat), 3000U);
}

std::string readDescription(GevClient& client) {
    const Buffer url = client.readMemory(Reg::firstUrl, 512);
    unsigned address = 0;
    unsigned length = 0;
    const char* text = reinterpret_cast<const char*>(url.data());
    EXPECT_EQ(std::sscanf(std::strchr(text, ';'), ";%x;%x", &address, &length), 2);
    std::string file;
    while (file.size() < length) {
        const std::size_t left = (length - file.size() + 3) / 4 * 4;
        const Buffer piece =
            client.readMemory(address + static_cast<std::uint32_t>(file.size()),
                              static_cast<std::uint16_t>(std::min<std::size_t>(left, 512)));
        file.append(piece.begin(), piece.end());
    }
    file.resize(length);
    return file;
}

TEST(CamsimProgram, TheDescriptionIsServedPlainAndZipped) {
    for (const bool zipped : {false, true}) {
        CamsimProcess process(zipped ? std::vector<std::string>{"--zip"}
                                     : std::vector<std::string>{});
        GevClient client(process.port());
        const std::string file = readDescription(client);
        EXPECT_EQ(file.substr(0, 2), zipped ? "PK" : "<?");
        const GenApi::CNodeMapRef map =
            GenApi::CNodeMapFactory(GenApi::ContentType_Xml, file.data(), file.size())
                .CreateNodeMap();
        EXPECT_NE(map->GetNode("GevSCPSPacketSize"), nullptr);
    }
}

TEST(CamsimProgram, SaysWhereItListensAndWhoItIs) {
    CamsimProcess process({"--serial", "LEFT-1", "--user-name", "Left", "--model", "Eye"});
    EXPECT_EQ(process.greeting(), "Simulated camera 'LEFT-1' listens on 127.0.0.1:" +
                                      std::to_string(process.port()) + ".");
    GevClient client(process.port());
    const Ack ack = client.run(Command::Discovery, {});
    EXPECT_STREQ(reinterpret_cast<const char*>(&ack.body[0x68]), "Eye");
    EXPECT_STREQ(reinterpret_cast<const char*>(&ack.body[0xD8]), "LEFT-1");
    EXPECT_STREQ(reinterpret_cast<const char*>(&ack.body[0xE8]), "Left");
}

TEST(CamsimProgram, HostileDatagramsAreCountedAndSurvived) {
    CamsimProcess process;
    GevClient client(process.port());
    for (std::size_t size = 0; size < 64; ++size) {
        client.send(Buffer(size, 0xFF));
    }
    Buffer huge(60'000, wantsAnswer);
    huge[0] = commandKey;
    client.send(huge);
    EXPECT_EQ(parseAck(client.receive()).status, Status::InvalidHeader);
    EXPECT_EQ(client.read(Reg::version), 0x00020000U);
    EXPECT_EQ(process.stop()["ignoredDatagrams"], 64);
}

TEST(CamsimProgram, MistakesOfTheCommandLineEndItWithAMessage) {
    const auto messageOf = [](const std::string& options) {
        const CommandResult result = runShell(std::string(ORLIX_CAMSIM_FILE) + " " + options);
        EXPECT_EQ(result.exitCode, 1) << options;
        return result.text;
    };
    EXPECT_EQ(messageOf("--address 1.2.3"),
              "orlix-camsim: '1.2.3' is no address such as "
              "127.0.0.1.\n");
    EXPECT_EQ(messageOf("--serial 1234567890123456"),
              "orlix-camsim: --serial: \"1234567890123456\" is longer than 15 bytes\n");
    EXPECT_EQ(messageOf("--wire 'frame x'"),
              "orlix-camsim: Wire script, line 1, column 7: expected the number of a frame, from "
              "1 on, found 'x'.\n");
    EXPECT_EQ(messageOf("--fault 'frame 1: missing packet 3'"),
              "orlix-camsim: Fault script, line 1, column 18: expected 'packets', found "
              "'packet'.\n");
    EXPECT_EQ(messageOf("--fault @/nowhere"), "orlix-camsim: can not read /nowhere\n");
    CamsimProcess other;
    EXPECT_EQ(messageOf("--port " + std::to_string(other.port())),
              "orlix-camsim: Can't use the address 127.0.0.1:" + std::to_string(other.port()) +
                  ": Address already in use.\n");
}

}  // namespace
}  // namespace Orlix::Camsim::Testing
