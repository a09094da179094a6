// What the graph costs per value: one more node on the same thread, a hop from thread to thread,
// and how many nodes it bears. GStreamer's identity and queue stand beside it where they are there.
//
// A chain is run at two lengths; the difference is what an element costs, without the source and
// the sink. The table at the end has these differences in CPU time of all threads, of the best of
// all repetitions, which go through both sides in random order: what else runs on the machine only
// adds to a time, and so it hits both sides alike.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

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
            source_->send(Variant(Integer(index)));  // one of its own, as every frame is
        }
        sent_ += count;
        sink_->waitFor(sent_);
    }

private:
    Core::Graph graph_;
    std::shared_ptr<Source> source_ = std::make_shared<Source>();
    std::shared_ptr<CountingSink> sink_ = std::make_shared<CountingSink>();
    std::uint64_t sent_ = 0;
};

// One line of the table: what the longer chain costs more than the shorter one.
struct Row {
    const char* what;
    int shorter;
    int longer;
    int values;  // on their way through the chain in one iteration
    const char* element;
};

constexpr Row rows[] = {
    {"a hop from thread to thread", 0, 1, 100000, "queue"},
    {"one more node, from 1 to 11", 1, 11, 100000, "identity"},
    {"one more node, from 10 to 100", 10, 100, 1000, "identity"},
    {"one more node, from 100 to 1,000", 100, 1000, 1000, "identity"},
};

std::string nameOf(const char* element, int length, int values) {
    return std::string(element) + "/" + std::to_string(length) + " nodes/" +
           std::to_string(values) + " values";
}

constexpr const char* graphNode = "graph";

void runChain(benchmark::State& state, int length, int values) {
    Chain chain(length);
    for (auto _ : state) {
        chain.run(static_cast<std::uint64_t>(values));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * values);
}

#ifdef ORLIX_HAS_GSTREAMER

// With as many places as the graph has.
const std::map<std::string, std::string> elements = {
    {"identity", "identity silent=true"},
    {"queue", "queue max-size-bytes=0 max-size-time=0 max-size-buffers=200"},
};

std::string describePipeline(const std::string& element, int length, int values) {
    std::string description = "fakesrc num-buffers=" + std::to_string(values);
    for (int index = 0; index < length; ++index) {
        description += " ! " + elements.at(element);
    }
    return description + " ! fakesink sync=false";
}

// Ready to go: what it takes to bring a pipeline up isn't its cost per value.
GstElement* makePipeline(const std::string& description) {
    GstElement* const pipeline = gst_parse_launch(description.c_str(), nullptr);
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    gst_element_get_state(pipeline, nullptr, nullptr, GST_CLOCK_TIME_NONE);
    return pipeline;
}

// Runs to the end of the stream once per iteration.
void runPipeline(benchmark::State& state, const std::string& element, int length, int values) {
    for (auto _ : state) {
        state.PauseTiming();
        GstElement* const pipeline = makePipeline(describePipeline(element, length, values));
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

#endif

// Several rows share a chain: it is registered once.
void registerChain(std::vector<std::string>& known, const char* element, int length, int values) {
    const std::string name = nameOf(element, length, values);
    if (std::find(known.begin(), known.end(), name) != known.end()) {
        return;
    }
    known.push_back(name);
    const auto run = [=](benchmark::State& state) {
        if (element == graphNode) {
            runChain(state, length, values);
            return;
        }
#ifdef ORLIX_HAS_GSTREAMER
        runPipeline(state, element, length, values);
#endif
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->MeasureProcessCPUTime()->UseRealTime();
}

void registerRows() {
    std::vector<std::string> known;
    for (const Row& row : rows) {
        for (const int length : {row.shorter, row.longer}) {
            registerChain(known, graphNode, length, row.values);
#ifdef ORLIX_HAS_GSTREAMER
            registerChain(known, row.element, length, row.values);
#endif
        }
    }
}

// Prints the runs as usual and keeps their times for the table.
class TableReporter : public benchmark::ConsoleReporter {
public:
    TableReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                keep(run.run_name.function_name,
                     run.cpu_accumulated_time / static_cast<double>(run.iterations));
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void printTable() const {
        std::printf(
            "\nCPU time per value, the best of all repetitions\n\n"
            "| cost | graph | GStreamer | ratio |\n|---|---|---|---|\n");
        for (const Row& row : rows) {
            const double ours = costOf(graphNode, row);
            const double theirs = costOf(row.element, row);
            std::printf("| %s | %.0f ns | %.0f ns | %.2f |\n", row.what, ours, theirs,
                        theirs > 0 ? ours / theirs : 0);
        }
    }

private:
    void keep(const std::string& name, double seconds) {
        const auto [entry, isNew] = best_.emplace(name, seconds);
        entry->second = std::min(entry->second, seconds);
    }

    // Nanoseconds per value and element; 0 for what has not been run.
    [[nodiscard]] double costOf(const char* element, const Row& row) const {
        const auto shorter = best_.find(nameOf(element, row.shorter, row.values));
        const auto longer = best_.find(nameOf(element, row.longer, row.values));
        if (shorter == best_.end() || longer == best_.end()) {
            return 0;
        }
        return (longer->second - shorter->second) * 1e9 / (row.longer - row.shorter) / row.values;
    }

    std::map<std::string, double> best_;  // seconds of an iteration
};

// The command line may say otherwise.
std::vector<char*> withDefaults(int argc, char** argv) {
    static char repetitions[] = "--benchmark_repetitions=15";
    static char interleaving[] = "--benchmark_enable_random_interleaving=true";
    static char minimum[] = "--benchmark_min_time=0.05";
    std::vector<char*> arguments{argv[0], repetitions, interleaving, minimum};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    return arguments;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<char*> arguments = withDefaults(argc, argv);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
#ifdef ORLIX_HAS_GSTREAMER
    gst_init(nullptr, nullptr);
#else
    benchmark::AddCustomContext("GStreamer", "not there, no comparison");
#endif
    registerRows();
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printTable();
    benchmark::Shutdown();
    return 0;
}
