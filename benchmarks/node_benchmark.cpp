// What a host pays for the package's nodes: reading and writing a parameter through a node's map,
// making a node with its map, and passing a frame through a converter that has nothing to convert,
// where the counter of copied pixels has to stay at zero.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "genapi/genapi.h"
#include "orlixcamera/copycounter.h"
#include "orlixcamera/orliximage.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixvcellpackagebase/entrypoints.h"

namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using Plugin::OrlixVCellPackageBase::DestroyNode;
using NodePointer = std::unique_ptr<Core::INode, DestroyNode*>;

NodePointer makeImageLoading() {
    return {create_ImageLoading(nullptr), &destroy_ImageLoading};
}

NodePointer makeConverter() {
    return {create_ImageFormatConverter(nullptr), &destroy_ImageFormatConverter};
}

GenApi::INodeMap& mapOf(Core::INode& node) {
    auto* container = Utils::object_cast<Core::INodeMapContainer>(&node);
    return *container->getNodeMapInfos().front().GetNodeMap();
}

void readParameter(benchmark::State& state) {
    const NodePointer node = makeImageLoading();
    const GenApi::CIntegerPtr rate(mapOf(*node).GetNode("FramesPerSecond"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(rate->GetValue());
    }
}
BENCHMARK(readParameter)->Name("ImageLoading/read FramesPerSecond");

void writeParameter(benchmark::State& state) {
    const NodePointer node = makeImageLoading();
    const GenApi::CIntegerPtr rate(mapOf(*node).GetNode("FramesPerSecond"));
    std::int64_t value = 0;
    for (auto _ : state) {
        value = value % 500 + 1;
        rate->SetValue(value);
    }
}
BENCHMARK(writeParameter)->Name("ImageLoading/write FramesPerSecond");

void createNode(benchmark::State& state, NodePointer (*make)()) {
    for (auto _ : state) {
        const NodePointer node = make();
        benchmark::DoNotOptimize(&mapOf(*node));
    }
}
BENCHMARK_CAPTURE(createNode, ImageLoading, &makeImageLoading)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(createNode, ImageFormatConverter, &makeConverter)->Unit(benchmark::kMicrosecond);

// Five megapixels in the format that the converter is set to.
Utils::COWPtr<Core::Image> makeFrame() {
    Orlix::COrlixImage image;
    image.Reset(Orlix::PixelType_Mono8, 2592, 1944);
    std::memset(image.GetBuffer(), 100, image.GetImageSize());
    return Utils::COWPtr<Core::Image>::make(image, nullptr, false);
}

void forwardFrame(benchmark::State& state) {
    const NodePointer node = makeConverter();
    GenApi::CEnumerationPtr(mapOf(*node).GetNode("OutputPixelFormat"))->FromString("Mono8");
    const auto input =
        node->configureInputType("Image", Utils::TypeInfo::getTypeInfo<Core::Image>(true));
    node->start(Core::NodeArgumentCollection());
    const auto factory = Core::getDefaultUpdateFactory();
    const Utils::Variant frame(makeFrame());
    const auto provide = [&](std::shared_ptr<Core::IGraphUpdate>& update, Core::PinValues& values) {
        update = factory->createUpdate(node.get(), nullptr);
        values["Image"] = frame;
        return true;
    };
    Orlix::PixelCopyCounter::Reset();
    for (auto _ : state) {
        if (node->startExecution(provide) != Core::StartExecutionResult::Executed) {
            state.SkipWithError("the job was not run");
        }
    }
    state.counters["bytes copied"] = static_cast<double>(Orlix::PixelCopyCounter::Read());
    if (Orlix::PixelCopyCounter::Read() != 0) {
        state.SkipWithError("pixels were copied");
    }
    node->stop();
}
BENCHMARK(forwardFrame)->Name("ImageFormatConverter/forward a frame");

}  // namespace

BENCHMARK_MAIN();
