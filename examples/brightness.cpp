// Runs a recipe and tells how bright each picture of its first open image output is:
//
//     brightness RECIPE FRAMES
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <numeric>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixhost/package.h"
#include "orlixhost/recipe.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"
#include "orlixhost/runner.h"

namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Host = Orlix::Host;

// The mean of the pixels, or -1 for what is no good picture of 8 bits in gray.
double brightnessOf(const Core::Image& image) {
    if (image.hasError(true) || image.getPixelType() != Orlix::PixelType_Mono8) {
        return -1;
    }
    const auto* row = static_cast<const std::uint8_t*>(image.getDataConst());
    std::uint64_t sum = 0;
    for (std::uint32_t y = 0; y < image.getHeight(); ++y) {
        sum = std::accumulate(row, row + image.getWidth(), sum);
        row += image.getWidth() + image.getLinePadding();
    }
    const double pixels = static_cast<double>(image.getWidth()) * image.getHeight();
    return static_cast<double>(sum) / pixels;
}

// Reads an output. Called on the threads of the graph.
class BrightnessSink final : public Core::IOutputSink {
public:
    void put(const std::shared_ptr<Core::IGraphUpdate>&,
             const Orlix::DataProcessing::Utils::Variant& value) override {
        const auto* image = value.get<Core::Image>(false);
        const double brightness = image == nullptr ? -1 : brightnessOf(*image);
        const std::scoped_lock lock(mutex_);
        values_.push_back(brightness);
    }
    void skip(const std::shared_ptr<Core::IGraphUpdate>&) override {}
    bool hasSpace() const override { return true; }
    void setSpaceListener(const std::weak_ptr<Core::ISpaceListener>&) override {}

    std::vector<double> values() const {
        const std::scoped_lock lock(mutex_);
        return values_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<double> values_;
};

void run(const char* recipe, std::uint64_t frames) {
    Host::PackageList packages;
    packages.add(Host::Package::load(Host::Package::defaultFile()));
    Host::CameraOptions cameras;
    cameras.emulatedCameras = 1;
    Host::RecipeGraph graph(Host::Recipe::load(recipe), packages,
                            Host::createResourcePool(cameras));
    // Here a program sets parameters: graph.set("Loader.FramesPerSecond=100");
    graph.connect();

    Host::RunOptions options;
    options.frames = frames;
    Host::Runner runner(graph, options);  // throws if there is no open image output
    const auto sink = std::make_shared<BrightnessSink>();
    for (const Host::OpenOutput& output : graph.openOutputs()) {
        if (output.isImage) {
            graph.graph().attachSink(output.node.c_str(), output.pin.c_str(), sink);
            break;
        }
    }
    const Host::RunReport report = runner.run({});

    // The limit is the runner's: the sink is also given what was under way behind it.
    std::vector<double> values = sink->values();
    values.resize(std::min<std::size_t>(values.size(), frames));
    for (const double value : values) {
        std::cout << value << "\n";
    }
    std::cout << Host::reportAsJson(report) << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    const std::uint64_t frames = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
    if (frames == 0) {
        std::cerr << "brightness RECIPE FRAMES\n";
        return 1;
    }
    try {
        run(argv[1], frames);
        return 0;
    } catch (const GenICam::GenericException& error) {
        std::cerr << error.GetDescription() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
