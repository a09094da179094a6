// What the graph costs per value: one more node on the same thread, a hop from thread to thread,
// and how many nodes it bears. GStreamer's identity and queue stand beside it where they are there.
//
// A chain is run at two lengths; the difference is what an element costs, without the source and
// the sink. The CPU column adds up all threads.
#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <string>

#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixdataprocessingcore/utils/property.h"

#ifdef ORLIX_HAS_GSTREAMER
#include <gst/gst.h>
#endif

namespace {

using namespace Orlix::DataProcessing;
using Core::Integer;
using Core::PinValues;
using GenICam::gcstring;
using Utils::Variant;

// Values in a queue between two threads, here as in the rival.
constexpr std::size_t queueLength = 200;

class Source final : public Core::AdvancedNode {
public:
    Source() : AdvancedNode(nullptr) {
        createOutput("Out", "", Utils::TypeInfo::getTypeInfo<Integer>(true), true,
                     Core::unlimitedJobs);
    }
    ~Source() override { cleanup(); }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}

    void send(const Variant& value) {
        if (waitUntilSpaceAvailable()) {
            createJob(factory_->createUpdate(this, nullptr), PinValues{{"Out", value}}, {});
        }
    }

private:
    std::shared_ptr<Core::IUpdateFactory> factory_ = Core::getDefaultUpdateFactory();
};

class PassThrough final : public Core::SimpleNode {
public:
    PassThrough() : SimpleNode(nullptr) {
        createInput("In", "", input_, Variant(Integer()), false, Core::unlimitedJobs);
        createOutput("Out", "", output_, true, Core::unlimitedJobs);
    }
    ~PassThrough() override { cleanup(); }
    void loadSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void saveSettings(const std::shared_ptr<Core::ISettings>&) override {}
    void execute() override { output_.setValue(input_.getValue()); }

private:
    Utils::ResettableProperty<Integer> input_;
    Utils::ResettableProperty<Integer> output_;
};

class CountingSink final : public Core::IOutputSink {
public:
    void put(const std::shared_ptr<Core::IGraphUpdate>&, const Variant&) override {
        if (count_.fetch_add(1) + 1 == awaited_.load()) {
            count_.notify_all();
        }
    }
    void skip(const std::shared_ptr<Core::IGraphUpdate>&) override {}
    bool hasSpace() const override { return true; }
    void setSpaceListener(const std::weak_ptr<Core::ISpaceListener>&) override {}

    void waitFor(std::uint64_t count) {
        awaited_ = count;
        for (std::uint64_t now = count_; now < count; now = count_) {
            count_.wait(now);
        }
    }

private:
    std::atomic<std::uint64_t> count_{0};
    std::atomic<std::uint64_t> awaited_{0};
};

// A source, so many nodes in a row, and a sink that counts.
class Chain {
public:
    explicit Chain(int length) : graph_(Core::GraphOptions{queueLength}) {
        graph_.addNode("0", source_);
        for (int index = 1; index <= length; ++index) {
            const gcstring name(std::to_string(index));
            graph_.addNode(name, std::make_shared<PassThrough>());
            graph_.connect(gcstring(std::to_string(index - 1)), "Out", name, "In");
        }
        graph_.attachSink(gcstring(std::to_string(length)), "Out", sink_);
        graph_.start({});
    }

    // Sends so many values and waits until the last has arrived.
    void run(std::uint64_t count) {
        for (std::uint64_t index = 0; index < count; ++index) {
            source_->send(value_);
        }
        sent_ += count;
        sink_->waitFor(sent_);
    }

private:
    Core::Graph graph_;
    std::shared_ptr<Source> source_ = std::make_shared<Source>();
    std::shared_ptr<CountingSink> sink_ = std::make_shared<CountingSink>();
    std::uint64_t sent_ = 0;
    const Variant value_{Integer(1)};
};

// The time shown is that of one iteration, which is so many values.
constexpr int valuesPerRun = 100000;

void runChain(benchmark::State& state, int length, int values) {
    Chain chain(length);
    for (auto _ : state) {
        chain.run(static_cast<std::uint64_t>(values));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * values);
}

// One more node: compare lengths 1 and 11.
void Orlix_NodesOnOneThread(benchmark::State& state) {
    runChain(state, static_cast<int>(state.range(0)), valuesPerRun);
}
BENCHMARK(Orlix_NodesOnOneThread)->Arg(1)->Arg(11)->MeasureProcessCPUTime()->UseRealTime();

// The hop from the source's thread to a worker: compare with length 0, which has none.
void Orlix_HopToAnotherThread(benchmark::State& state) {
    runChain(state, static_cast<int>(state.range(0)), valuesPerRun);
}
BENCHMARK(Orlix_HopToAnotherThread)->Arg(0)->Arg(1)->MeasureProcessCPUTime()->UseRealTime();

void Orlix_GraphOfNodes(benchmark::State& state) {
    runChain(state, static_cast<int>(state.range(0)), valuesPerRun / 100);
}
BENCHMARK(Orlix_GraphOfNodes)->Arg(10)->Arg(100)->Arg(1000)->MeasureProcessCPUTime()->UseRealTime();

#ifdef ORLIX_HAS_GSTREAMER

// fakesrc, so many of the element, fakesink: run to the end of the stream once per iteration.
void runPipeline(benchmark::State& state, const std::string& element, int length,
                 int values = valuesPerRun) {
    std::string description = "fakesrc num-buffers=" + std::to_string(values);
    for (int index = 0; index < length; ++index) {
        description += " ! " + element;
    }
    description += " ! fakesink sync=false";
    for (auto _ : state) {
        state.PauseTiming();
        GstElement* const pipeline = gst_parse_launch(description.c_str(), nullptr);
        GstBus* const bus = gst_element_get_bus(pipeline);
        state.ResumeTiming();
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstMessage* const message = gst_bus_timed_pop_filtered(
            bus, GST_CLOCK_TIME_NONE,
            static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        state.PauseTiming();
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
            state.SkipWithError("the pipeline failed");
        }
        gst_message_unref(message);
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(bus);
        gst_object_unref(pipeline);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * values);
}

void GStreamer_GraphOfIdentities(benchmark::State& state) {
    runPipeline(state, "identity silent=true", static_cast<int>(state.range(0)),
                valuesPerRun / 100);
}
BENCHMARK(GStreamer_GraphOfIdentities)
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void GStreamer_Identity(benchmark::State& state) {
    runPipeline(state, "identity silent=true", static_cast<int>(state.range(0)));
}
BENCHMARK(GStreamer_Identity)->Arg(1)->Arg(11)->MeasureProcessCPUTime()->UseRealTime();

void GStreamer_Queue(benchmark::State& state) {
    runPipeline(state, "queue max-size-bytes=0 max-size-time=0", static_cast<int>(state.range(0)));
}
BENCHMARK(GStreamer_Queue)->Arg(0)->Arg(1)->MeasureProcessCPUTime()->UseRealTime();

#endif

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
#ifdef ORLIX_HAS_GSTREAMER
    gst_init(nullptr, nullptr);
#else
    benchmark::AddCustomContext("GStreamer", "not there, no comparison");
#endif
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
