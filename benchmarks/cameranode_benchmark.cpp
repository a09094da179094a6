// What a frame costs from the filled buffer to the values on the open pins of the node Camera, with
// no chunk pin and with three; how long the node takes from nothing to grabbing; and whether a
// graph of camera and converter keeps up with 10,000 small frames a second. Pixels are passed on by
// reference: the counter of copied pixels has to stay at zero.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "instantdevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/copycounter.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixhost/package.h"
#include "orlixhost/recipe.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"

namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Host = Orlix::Host;
namespace Utils = Orlix::DataProcessing::Utils;
using InstantCamera::Chunks;

constexpr char plainRecipe[] = R"({"version": 1, "nodes": [{"name": "Camera", "type": "Camera"}],
    "connections": []})";
constexpr char chunkRecipe[] = R"({"version": 1,
    "nodes": [{"name": "Camera", "type": "Camera", "settings": {"ChunkPinConfigurations": [
        "A.Type=Float.ValueName=ChunkExposureTime", "B.Type=Integer.ValueName=ChunkFrameID",
        "C.Type=Integer.ValueName=ChunkTimestamp"]}}],
    "connections": []})";
constexpr char graphRecipe[] = R"({"version": 1,
    "nodes": [{"name": "Camera", "type": "Camera", "settings": {"FeatureStreams": {"@CameraDevice":
            "PixelFormat\tMono8\nWidth\t64\nHeight\t64\nExposureTime\t10\n)"
                               R"(AcquisitionFrameRateEnable\t1\nAcquisitionFrameRate\t10000\n"}}},
        {"name": "Converter", "type": "ImageFormatConverter",
            "settings": {"OutputPixelFormat": 17301505}}],
    "connections": [{"from": "Camera.Image", "to": "Converter.Image"}]})";

const Host::PackageList& packages() {
    static const Host::PackageList list = [] {
        Host::PackageList made;
        made.add(Host::Package::load(Host::Package::defaultFile()));
        return made;
    }();
    return list;
}

// CPU time of all threads: those that only wait have none.
double processSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Takes everything at once, and measures from its first value to its last.
class MeterSink final : public Core::IOutputSink {
public:
    explicit MeterSink(std::uint64_t values) : values_(values) {}

    void put(const std::shared_ptr<Core::IGraphUpdate>&, const Utils::Variant&) override {
        const std::uint64_t count = ++count_;
        if (count == 1) {
            first_ = processSeconds();
        } else if (count == values_) {
            seconds_ = processSeconds() - first_;
            done_ = true;
            done_.notify_all();
        }
    }
    void skip(const std::shared_ptr<Core::IGraphUpdate>&) override {}
    [[nodiscard]] bool hasSpace() const override { return true; }
    void setSpaceListener(const std::weak_ptr<Core::ISpaceListener>&) override {}

    [[nodiscard]] double waitForSeconds() {
        done_.wait(false);
        return seconds_;
    }
    [[nodiscard]] std::uint64_t getCount() const { return count_; }

private:
    const std::uint64_t values_;
    std::atomic<std::uint64_t> count_{0};
    double first_ = 0;
    double seconds_ = 0;
    std::atomic<bool> done_{false};
};

// A recipe that is ready to run.
class Recipe {
public:
    Recipe(const char* text, const std::shared_ptr<Core::IResourcePool>& pool)
        : recipe_(Host::Recipe::parse(text, "benchmark", ""), packages(), pool) {
        recipe_.connect();
    }

    std::shared_ptr<MeterSink> attach(const char* node, const char* pin, std::uint64_t values) {
        const auto sink = std::make_shared<MeterSink>(values);
        recipe_.graph().attachSink(node, pin, sink);
        return sink;
    }
    void start() {
        if (!recipe_.graph().allocateResources().errors.empty()) {
            throw std::runtime_error("no camera");
        }
        recipe_.start(Core::NodeArgumentCollection());
    }
    void stop() {
        recipe_.graph().stop(Core::StopMode::Drain);
        recipe_.graph().freeResources();
    }
    // Of the camera object behind the first node.
    [[nodiscard]] std::int64_t total(const char* name) {
        auto& container = dynamic_cast<Core::INodeMapContainer&>(*recipe_.nodes().front());
        GenApi::INodeMap& map = *container.getNodeMapInfos().at(1).GetNodeMap();
        return GenApi::CIntegerPtr(map.GetNode(name))->GetValue();
    }

private:
    Host::RecipeGraph recipe_;
};

// CPU time of the thread that brings a frame from the filled buffer to the pins, and the buffer
// back into the queue.
void bufferToPins(benchmark::State& state, const char* text, Chunks chunks) {
    constexpr std::uint64_t frames = 100000;
    static_cast<void>(Orlix::PixelCopyCounter::Reset());
    for (auto _ : state) {
        Recipe recipe(text, Host::createResourcePool(
                                {Orlix::CreateCameraLayer(InstantCamera::createLayer(chunks))}));
        const auto images = recipe.attach("Camera", "Image", frames);
        std::vector<std::shared_ptr<MeterSink>> values;
        for (const char* pin : {"A", "B", "C"}) {
            if (chunks == Chunks::Three) {
                values.push_back(recipe.attach("Camera", pin, frames));
            }
        }
        recipe.start();
        state.SetIterationTime(images->waitForSeconds() / double(frames - 1));
        recipe.stop();
        for (const auto& sink : values) {
            if (sink->getCount() != images->getCount()) {
                state.SkipWithError("values of a chunk pin are missing");
            }
        }
    }
    state.counters["copied bytes"] = static_cast<double>(Orlix::PixelCopyCounter::Read());
}
BENCHMARK_CAPTURE(bufferToPins, without_chunks, plainRecipe, Chunks::None)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(bufferToPins, three_chunk_pins, chunkRecipe, Chunks::Three)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMicrosecond);

// From a node without a device to one that grabs from an emulated camera.
void openAllocateStart(benchmark::State& state) {
    Recipe recipe(plainRecipe, Host::createResourcePool(Host::CameraOptions{1, ""}));
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        recipe.start();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        recipe.stop();
    }
}
BENCHMARK(openAllocateStart)->UseManualTime()->Unit(benchmark::kMillisecond);

// 10,000 frames of 64 x 64 a second through camera, converter and an open output, for five seconds.
void graphRate(benchmark::State& state) {
    constexpr std::uint64_t frames = 50000;
    double mean = 0;
    std::int64_t lost = 0;
    static_cast<void>(Orlix::PixelCopyCounter::Reset());
    for (auto _ : state) {
        Recipe recipe(graphRecipe, Host::createResourcePool(Host::CameraOptions{1, ""}));
        const auto images = recipe.attach("Converter", "Image", frames);
        const auto begin = std::chrono::steady_clock::now();
        recipe.start();
        static_cast<void>(images->waitForSeconds());
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        recipe.stop();
        mean = double(frames) / taken.count();
        lost += recipe.total("TotalLostForBuffer");
    }
    state.counters["asked/s"] = 10000;
    state.counters["mean/s"] = mean;
    state.counters["lost"] = static_cast<double>(lost);
    state.counters["copied bytes"] = static_cast<double>(Orlix::PixelCopyCounter::Read());
}
BENCHMARK(graphRate)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();
