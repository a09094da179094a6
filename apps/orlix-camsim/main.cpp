// The program orlix-camsim: the emulated camera as a GigE Vision device on the network. It ends
// with SIGINT or SIGTERM and tells its statistics then, and whenever it gets SIGUSR1; SIGUSR2
// begins the faults that a wire script keeps for it.
#include <signal.h>
#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sstream>

#include "gcbase/gcexception.h"
#include "server.h"
#include "sockets.h"

namespace Orlix::Camsim {
namespace {

// The command line, as far as it needs translation.
struct CommandLine {
    ServerOptions options;
    std::string address = "127.0.0.1";
    std::string faults;
    std::string wire;
    bool zip = false;
};

// The text itself, or with "@FILE" that of the file.
std::string scriptOf(const std::string& text) {
    if (text.empty() || text[0] != '@') {
        return text;
    }
    std::ifstream file(text.substr(1), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        throw GenICam::RuntimeException(("can not read " + text.substr(1)).c_str(), __FILE__,
                                        __LINE__);
    }
    return content.str();
}

void addIdentity(CLI::App& app, CommandLine& line) {
    DeviceIdentity& identity = line.options.identity;
    app.add_option(
           "--address", line.address,
           "Address of the device; only it and the broadcast addresses of its network are bound")
        ->type_name("IP")
        ->capture_default_str();
    app.add_option("--port", line.options.port, "UDP port of the commands, 0 for a free one")
        ->capture_default_str();
    app.add_option("--vendor", identity.vendor, "Name of the manufacturer")->capture_default_str();
    app.add_option("--model", identity.model, "Name of the model")->capture_default_str();
    app.add_option("--device-version", identity.version, "Version of the device")
        ->capture_default_str();
    app.add_option("--serial", identity.serial, "Serial number, up to 15 bytes")
        ->capture_default_str();
    app.add_option("--user-name", identity.userName, "User-defined name");
    app.add_option("--tick-frequency", identity.tickFrequency, "Ticks a second of the clock")
        ->check(CLI::Range(std::uint64_t{1}, fastestClock))
        ->capture_default_str();
    app.add_flag("--zip", line.zip, "Serve the description as a zip file");
}

void addFaults(CLI::App& app, CommandLine& line) {
    WireOptions& wire = line.options.wire;
    app.add_option("--fault", line.faults, "Fault script of the camera, or @FILE")
        ->type_name("SCRIPT");
    app.add_option("--wire", line.wire, "Fault script of the network, or @FILE")
        ->type_name("SCRIPT");
    const auto percent = CLI::Range(0.0, 100.0);
    app.add_option("--loss", wire.lossPercent, "Packets of frames that get lost, in percent")
        ->check(percent);
    app.add_option("--duplicate", wire.duplicatePercent, "Packets that come twice, in percent")
        ->check(percent);
    app.add_option("--reorder", wire.reorderPercent, "Packets that come late, in percent")
        ->check(percent);
    app.add_option("--seed", wire.seed, "Which packets these are")->capture_default_str();
    app.add_option("--resends", wire.resends, "What happens to requests to send packets again")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Resends>{
            {"answer", Resends::Answer}, {"ignore", Resends::Ignore}, {"deny", Resends::Deny}}))
        ->option_text("answer|ignore|deny");
}

void addChannels(CLI::App& app, CommandLine& line) {
    StreamOptions& stream = line.options.stream;
    MessageOptions& messages = line.options.messages;
    app.add_option("--keep", stream.keptBlocks, "Frames that are kept for being sent again")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    app.add_option("--first-block", stream.firstBlock, "Number of the first frame of a stream")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--link-speed", stream.linkMegabits,
                   "Megabits a second that the frames are sent with, 0 for no limit")
        ->capture_default_str();
    app.add_flag_callback(
        "--segment", [&stream] { stream.segmenting = Segmenting::On; },
        "Let the system cut large datagrams into packets; faster, but not for raw sockets here");
    app.add_flag_callback(
        "--chunks-only", [&stream] { stream.chunkPayload = ChunkPayload::Alone; },
        "Frames with chunks have no picture");
    app.add_option("--payload-type", stream.payloadType,
                   "What frames are said to be, instead of what they are; 5 is a picture with "
                   "chunks as cameras of GigE Vision 1.x send it");
    app.add_option("--events", messages.form, "Events with their values, or only their ids")
        ->transform(CLI::CheckedTransformer(std::map<std::string, EventForm>{
            {"data", EventForm::Data}, {"plain", EventForm::Plain}}))
        ->option_text("data|plain");
    app.add_option("--event-ids", messages.ids, "Size of the frame numbers in events")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, EventIds>{{"16", EventIds::Short}, {"64", EventIds::Long}}))
        ->option_text("16|64");
    app.add_option("--event-batch", messages.mostRecords, "Events in one datagram at most")
        ->check(CLI::Range(1, 20))
        ->capture_default_str();
}

void checkText(const char* option, const std::string& text, std::size_t most) {
    if (text.size() > most) {
        const std::string message = std::string(option) + ": \"" + text + "\" is longer than " +
                                    std::to_string(most) + " bytes";
        throw GenICam::InvalidArgumentException(message.c_str(), __FILE__, __LINE__);
    }
}

void complete(CommandLine& line) {
    DeviceIdentity& identity = line.options.identity;
    checkText("--vendor", identity.vendor, 31);
    checkText("--model", identity.model, 31);
    checkText("--device-version", identity.version, 31);
    checkText("--serial", identity.serial, 15);
    checkText("--user-name", identity.userName, 15);
    identity.address = ParseAddress(line.address);
    const auto interface = FindInterface(identity.address);
    if (!interface) {
        throw GenICam::InvalidArgumentException(
            ("--address: no network of this machine has " + line.address).c_str(), __FILE__,
            __LINE__);
    }
    identity.subnetMask = interface->subnetMask;
    constexpr std::uint32_t fastest = 100'000;
    const std::uint32_t speed = line.options.stream.linkMegabits;
    identity.linkMegabits = speed == 0 ? fastest : speed;
    line.options.stream.tickFrequency = identity.tickFrequency;
    line.options.messages.tickFrequency = identity.tickFrequency;
    line.options.file = line.zip ? FileForm::Zipped : FileForm::Plain;
    line.options.faultScript = scriptOf(line.faults);
    line.options.wire.rules = ParseWireScript(scriptOf(line.wire));
}

// Blocked before there is any thread, so that they come through the descriptor only.
OwnedFile blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGUSR1, SIGUSR2}) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return OwnedFile(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

void serve(const ServerOptions& options) {
    const OwnedFile signals = blockSignals();
    Server server(options);
    const auto report = [&] { std::cout << server.GetStatistics().ToJson() << std::endl; };
    std::cout << "Simulated camera '" << options.identity.serial << "' listens on "
              << TextOf(server.GetEndpoint()) << "." << std::endl;
    server.Run(signals.Get(), report);
    report();
}

int run(int argc, char** argv) {
    CLI::App app("Serves an emulated camera as a GigE Vision device", "orlix-camsim");
    CommandLine line;
    addIdentity(app, line);
    addFaults(app, line);
    addChannels(app, line);
    try {
        app.parse(argc, argv);
        complete(line);
        serve(line.options);
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 1;
    } catch (const GenICam::GenericException& error) {
        std::cerr << "orlix-camsim: " << error.GetDescription() << "\n";
    } catch (const std::exception& error) {
        std::cerr << "orlix-camsim: " << error.what() << "\n";
    }
    return 1;
}

}  // namespace
}  // namespace Orlix::Camsim

int main(int argc, char** argv) {
    return Orlix::Camsim::run(argc, argv);
}
