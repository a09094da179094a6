// soak SECONDS: two emulated cameras with chunk pins and event pins, a converter and a consumer
// that is too slow now and then, while each camera is unplugged and plugged in again every two
// seconds and some frames fail. The run must end with every frame accounted for, with no more
// memory than after its first minute, and with every thread and descriptor given back.
//
// Prints the accounts. Ends with 1 and a line for each thing that is wrong.
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixhost/package.h"
#include "orlixhost/recipe.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"
#include "orlixhost/runner.h"
#include "soak/frameaccount.h"
#include "soak/processstate.h"

namespace {

using namespace Soak;
namespace Core = Orlix::DataProcessing::Core;
namespace Host = Orlix::Host;
namespace Utils = Orlix::DataProcessing::Utils;

constexpr char recipe[] = R"({"version": 1,
  "nodes": [
    {"name": "First", "type": "Camera", "settings": {
        "DeviceProperties": {"SerialNumber": "EMU-0001"},
        "EventConfiguration":
            ["End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID"],
        "ChunkPinConfigurations": [
            "FrameId.Type=Integer.ValueName=ChunkFrameID",
            "Exposure.Type=Float.ValueName=ChunkExposureTime",
            "Gain.Type=Float.SelectorName=ChunkGainSelector.SelectorValue=Red.ValueName=ChunkGain"],
        "FeatureStreams": {"@CameraDevice":
            "PixelFormat\tBayerRG8\nWidth\t320\nHeight\t240\nExposureTime\t1000\n)"
                          R"(AcquisitionFrameRateEnable\t1\nAcquisitionFrameRate\t200\n)"
                          R"(ChunkModeActive\t1\nChunkSelector\tFrameID\nChunkEnable\t1\n)"
                          R"(ChunkSelector\tExposureTime\nChunkEnable\t1\n)"
                          R"(ChunkSelector\tGain\nChunkEnable\t1\n"}}},
    {"name": "Second", "type": "Camera", "settings": {
        "DeviceProperties": {"SerialNumber": "EMU-0002"},
        "EventConfiguration":
            ["End.Type=Integer.EventName=FrameStart.ValueName=EventFrameStartFrameID"],
        "ChunkPinConfigurations": ["FrameId.Type=Integer.ValueName=ChunkFrameID"],
        "FeatureStreams": {
            "@StreamGrabber0": "MaxNumBuffer\t20\n",
            "@CameraDevice": "PixelFormat\tMono8\nWidth\t64\nHeight\t64\nExposureTime\t100\n)"
                          R"(AcquisitionFrameRateEnable\t1\nAcquisitionFrameRate\t1000\n)"
                          R"(ChunkModeActive\t1\nChunkSelector\tFrameID\nChunkEnable\t1\n"}}},
    {"name": "Converter", "type": "ImageFormatConverter",
        "settings": {"OutputPixelFormat": 35127316}}],
  "connections": [{"from": "First.Image", "to": "Converter.Image"}]})";

constexpr char faults[] =
    "camera 1 every 2 s: unplug for 200 ms\n"
    "camera 2 every 2 s: unplug for 300 ms\n"
    "frame 20 every 50: missing packets 1\n"
    "frame 33 every 50: cut chunk\n"
    "frame 41 every 70: late 20 ms\n"
    "start: events 20\n";

constexpr double warmUpSeconds = 4.5;
// When a run has taken all that it will; a short one has less time for it.
double settlingSeconds(double seconds) {
    return std::min(60.0, seconds / 3);
}

// A process's memory breathes with what is under way, the allocator keeps a cache for each thread,
// and the process-wide pool keeps a thread more or less. A leak of 1 KiB with each frame, of 100
// KiB or a thread with each opening of a camera, or of any descriptor goes beyond this in half a
// minute.
constexpr Margins duringRun{4096, 1024, 2, 0};
constexpr Margins afterRun{4096, 512, 0, 0};

// Holds the camera up for longer than its buffers last, now and then.
class SlowSink final : public Core::IOutputSink {
public:
    void put(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant&) override {
        if (++count_ % 1500 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(80));
        }
    }
    void skip(const std::shared_ptr<Core::IGraphUpdate>&) override {}
    [[nodiscard]] bool hasSpace() const override { return true; }
    void setSpaceListener(const std::weak_ptr<Core::ISpaceListener>&) override {}

private:
    std::atomic<std::uint64_t> count_{0};
};

// Counts how often a node got a device.
class OpeningCounter {
public:
    explicit OpeningCounter(Core::INode& node)
        : maps_(dynamic_cast<Core::INodeMapContainer&>(node)),
          connection_(maps_.getNodeMapsChangedSignal()->connect([this] { count(); }), true) {}

    [[nodiscard]] std::int64_t get() const { return count_; }

private:
    void count() {
        constexpr std::size_t mapsWithoutDevice = 2;
        count_ += maps_.getNodeMapInfos().size() > mapsWithoutDevice ? 1 : 0;
    }

    Core::INodeMapContainer& maps_;
    std::atomic<std::int64_t> count_{0};
    Utils::ScopedConnection connection_;
};

const Host::OutputReport& reportOf(const Host::RunReport& report, const std::string& node,
                                   const std::string& pin) {
    for (const Host::OutputReport& output : report.outputs) {
        if (output.node == node && output.pin == pin) {
            return output;
        }
    }
    throw std::runtime_error("there is no open output " + node + "." + pin);
}

struct Outcome {
    std::vector<FrameAccount> accounts;
    std::vector<Sample> samples;
};

// Everything that a run needs is made for it and ends with it.
Outcome run(const Host::PackageList& packages, double seconds) {
    const auto pool =
        Host::createResourcePool(Host::CameraOptions{2, faults, Host::RealCameras::LeftOut});
    Host::RecipeGraph graph(Host::Recipe::parse(recipe, "soak", ""), packages, pool);
    graph.connect();
    graph.graph().attachSink("Second", "Image", std::make_shared<SlowSink>());
    const OpeningCounter openings[] = {OpeningCounter(*graph.nodes()[0]),
                                       OpeningCounter(*graph.nodes()[1])};
    Outcome outcome;
    Host::RunOptions options;
    options.seconds = seconds;
    options.recover = true;
    Host::RunObserver observer;
    observer.onProgress = [&outcome](const Host::RunProgress& progress) {
        outcome.samples.push_back({progress.seconds, readProcessState()});
    };
    Host::Runner runner(graph, options);
    const Host::RunReport report = runner.run(observer);
    const char* const imageNodes[] = {"Converter", "Second"};
    for (std::size_t i = 0; i < std::size(openings); ++i) {
        const std::string& name = graph.recipe().nodes()[i].name;
        outcome.accounts.push_back(
            {name, readCameraCounts(*graph.nodes()[i]), openings[i].get(),
             static_cast<std::int64_t>(report.dropped), reportOf(report, imageNodes[i], "Image"),
             reportOf(report, name, "FrameId"), reportOf(report, name, "End")});
    }
    return outcome;
}

void print(const FrameAccount& account) {
    const CameraCounts& camera = account.camera;
    std::printf(
        "%s: %lld sent = %lld delivered + %lld failed + %lld lost for a buffer + %lld skipped; "
        "%llu images with %llu errors, %llu chunks, %llu events, %lld openings\n",
        account.name.c_str(), static_cast<long long>(camera.sent),
        static_cast<long long>(camera.delivered), static_cast<long long>(camera.failed),
        static_cast<long long>(camera.lostForBuffer), static_cast<long long>(camera.skipped),
        static_cast<unsigned long long>(account.images.frames),
        static_cast<unsigned long long>(account.images.errors),
        static_cast<unsigned long long>(account.chunks.frames),
        static_cast<unsigned long long>(account.events.frames),
        static_cast<long long>(account.ends));
}

void print(const char* when, const ProcessState& state) {
    std::printf("%s: %lld KiB resident, %lld KiB of heap, %lld threads, %lld descriptors\n", when,
                static_cast<long long>(state.residentKiB), static_cast<long long>(state.heapKiB),
                static_cast<long long>(state.threads), static_cast<long long>(state.descriptors));
}

void append(std::vector<std::string>& list, const std::vector<std::string>& more) {
    list.insert(list.end(), more.begin(), more.end());
}

// What must have happened for the run to have shown anything.
std::vector<std::string> findIdleness(const FrameAccount& account, double seconds) {
    std::vector<std::string> found;
    const auto unplugged = static_cast<std::int64_t>(seconds / 2) - 1;
    // Waiting for the camera to come back, and a busy machine, cost a few.
    if (account.ends < unplugged / 2) {
        found.push_back(account.name + ": only " + std::to_string(account.ends) +
                        " openings, though it was unplugged " + std::to_string(unplugged) +
                        " times");
    }
    if (account.camera.failed == 0 || account.images.errors == 0) {
        found.push_back(account.name + ": no frame failed");
    }
    return found;
}

// What is left when nothing is under way: threads of the process-wide pool end some time after
// their last job, and freed memory is given back to the system.
ProcessState readIdleState() {
    std::this_thread::sleep_for(std::chrono::seconds(11));
    malloc_trim(0);
    return readProcessState();
}

// What nobody has to read: removals are wanted, and so are failed frames.
bool isExpected(const std::string& text) {
    const char* const expected[] = {": Device has been removed.", " has a device again.",
                                    ": Input image has an error."};
    return std::any_of(std::begin(expected), std::end(expected),
                       [&](const char* part) { return text.find(part) != std::string::npos; });
}

std::vector<std::string> soak(double seconds) {
    Utils::setLogSink([](const Utils::LogLine& line) {
        if (!isExpected(line.text.str())) {
            std::fprintf(stderr, "%s\n", line.text.c_str());
        }
    });
    Host::PackageList packages;
    packages.add(Host::Package::load(Host::Package::defaultFile()));
    static_cast<void>(run(packages, warmUpSeconds));
    const ProcessState before = readIdleState();
    const Outcome outcome = run(packages, seconds);
    const ProcessState after = readIdleState();

    const double settled = settlingSeconds(seconds);
    const ProcessState first = levelOf(outcome.samples, settled / 2, settled);
    const ProcessState last = levelOf(outcome.samples, seconds * 2 / 3, seconds);
    std::vector<std::string> failures =
        findGrowth("towards the end of the run", first, last, duringRun);
    append(failures, findGrowth("after the run", before, after, afterRun));
    for (const FrameAccount& account : outcome.accounts) {
        print(account);
        append(failures, findMistakes(account));
        append(failures, findIdleness(account, seconds));
    }
    if (outcome.accounts.back().camera.lostForBuffer == 0) {
        failures.emplace_back("the slow consumer cost no frame");
    }
    print("before the run", before);
    print("in the run, at first", first);
    print("in the run, at last", last);
    print("after the run", after);
    return failures;
}

}  // namespace

int main(int argc, char** argv) {
    char* end = nullptr;
    const double seconds = argc == 2 ? std::strtod(argv[1], &end) : 0;
    if (argc != 2 || *end != '\0' || !(seconds >= 10)) {
        std::fprintf(stderr, "soak: needs a number of seconds, at least 10\n");
        return 2;
    }
    // Else each new thread may take an arena of its own, and the resident memory of a short run
    // tells of threads.
    mallopt(M_ARENA_MAX, 1);
    try {
        const std::vector<std::string> failures = soak(seconds);
        for (const std::string& failure : failures) {
            std::fprintf(stderr, "soak: %s\n", failure.c_str());
        }
        return failures.empty() ? 0 : 1;
    } catch (const GenICam::GenericException& exception) {
        std::fprintf(stderr, "soak: %s\n", exception.GetDescription());
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "soak: %s\n", exception.what());
    }
    return 1;
}
