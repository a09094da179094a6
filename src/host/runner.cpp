#include "orlixhost/runner.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>

#include "host/camerapool.h"
#include "host/jsontext.h"
#include "host/losswatch.h"
#include "host/message.h"
#include "host/nodelines.h"
#include "host/outputtap.h"
#include "host/outputwriter.h"
#include "host/recovery.h"
#include "host/runstate.h"
#include "host/settingsdocument.h"
#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixhost/jsonsettings.h"
#include "orlixhost/paths.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {
namespace {

using DataProcessing::Core::Graph;
using DataProcessing::Core::StopMode;
using Seconds = std::chrono::duration<double>;

namespace Utils = DataProcessing::Utils;

Utils::CatId getCatIdRunner() {
    static const Utils::CatId id = Utils::getCatId("orlix.host.Runner");
    return id;
}

constexpr std::chrono::milliseconds progressPeriod{200};
constexpr std::chrono::milliseconds recoveryPeriod{20};

DataProcessing::Core::NodeArgumentCollection startArguments(const RunOptions& options) {
    DataProcessing::Core::NodeArgumentCollection arguments;
    for (const auto& [name, value] : options.arguments) {
        const DataProcessing::Core::String text{GenICam::gcstring(value)};
        arguments.setArgument(GenICam::gcstring(name), DataProcessing::Utils::Variant(text));
    }
    return arguments;
}

// The pin that counts: the first image, or else the first of all.
std::size_t countedOutput(const std::vector<OpenOutput>& outputs) {
    const auto image = std::find_if(outputs.begin(), outputs.end(),
                                    [](const OpenOutput& output) { return output.isImage; });
    return image == outputs.end() ? 0 : static_cast<std::size_t>(image - outputs.begin());
}

// From which nodes updates come to a node, as its inputs are when the run begins.
class Feeders {
public:
    explicit Feeders(const RecipeGraph& graph) {
        const auto& nodes = graph.recipe().nodes();
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (graph.nodes()[i]->isForwardingUpdates()) {
                addFeeders(nodes[i].name, *graph.nodes()[i], graph.recipe().connections());
            }
        }
    }

    // Those whose updates come to the node, which may be one of them itself.
    [[nodiscard]] std::set<std::string> sourcesOf(const std::string& node) const {
        std::set<std::string> sources;
        std::set<std::string> seen{node};
        for (std::vector<std::string> open{node}; !open.empty();) {
            const std::string current = std::move(open.back());
            open.pop_back();
            const auto found = feeders_.find(current);
            if (found == feeders_.end()) {
                sources.insert(current);
                continue;
            }
            std::copy_if(found->second.begin(), found->second.end(), std::back_inserter(open),
                         [&](const std::string& feeder) { return seen.insert(feeder).second; });
        }
        return sources;
    }

private:
    // An input that keeps its last value takes no part, unless all inputs do.
    void addFeeders(const std::string& name, const DataProcessing::Core::INode& node,
                    const std::vector<RecipeConnection>& connections) {
        std::vector<std::string> joined;
        std::vector<std::string> kept;
        for (const RecipeConnection& connection : connections) {
            if (connection.toNode == name) {
                const bool resets = node.isAutoResetEnabled(GenICam::gcstring(connection.toPin));
                (resets ? joined : kept).push_back(connection.fromNode);
            }
        }
        if (!joined.empty() || !kept.empty()) {
            feeders_[name] = joined.empty() ? kept : joined;
        }
    }

    std::map<std::string, std::vector<std::string>> feeders_;
};

}  // namespace

class Runner::Impl {
public:
    Impl(RecipeGraph& graph, RunOptions options)
        : recipe_(graph),
          options_(std::move(options)),
          outputs_(graph.openOutputs()),
          counted_(countedOutput(outputs_)) {
        if (options_.frames && (outputs_.empty() || !outputs_[counted_].isImage)) {
            fail(graph.recipe().source() + ": there is no open image output that --frames counts");
        }
        if (!options_.outFolder.empty()) {
            makeWriter();
        }
    }

    void requestStop() { state_->requestStop(); }

    ~Impl() { closeTaps(); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    RunReport run(const RunObserver& observer) {
        struct Closed {
            Impl& self;
            ~Closed() {
                self.closeTaps();
                self.detachTaps();
            }
        };
        const Closed closed{*this};
        RunReport report;
        try {
            begin();
        } catch (...) {
            if (writer_ != nullptr) {
                writer_->discard();
            }
            throw;
        }
        const std::exception_ptr thrown = watchUntilEnd(observer, report.seconds);
        const std::string failure = end();
        if (thrown != nullptr) {
            std::rethrow_exception(thrown);
        }
        if (!failure.empty()) {
            fail(failure);
        }
        for (const auto& tap : *taps_) {
            report.outputs.push_back(tap->report());
        }
        report.dropped = graph().statistics().droppedJobs;
        return report;
    }

private:
    using Taps = std::vector<std::shared_ptr<OutputTap>>;

    Graph& graph() { return recipe_.graph(); }

    void makeWriter() {
        // Absolute, since a node may change the current directory.
        const std::string folder = absolutePath(options_.outFolder);
        writer_ = std::make_shared<OutputWriter>(folder, outputs_, state_,
                                                 forEachTap(&OutputTap::notifySpace));
    }

    // The graph may hold a tap, and with it who calls this, longer than this object lives.
    [[nodiscard]] std::function<void()> forEachTap(void (OutputTap::*function)()) const {
        return [function, weakTaps = std::weak_ptr<Taps>(taps_)] {
            const auto taps = weakTaps.lock();
            for (std::size_t i = 0; taps != nullptr && i < taps->size(); ++i) {
                ((*taps)[i].get()->*function)();
            }
        };
    }

    // Not before the run: what the graph gives before that is of another one.
    void attachTaps() {
        const Feeders feeders(recipe_);
        std::set<std::string> counted;
        if (options_.frames) {
            counted = feeders.sourcesOf(outputs_[counted_].node);
        }
        for (std::size_t i = 0; i < outputs_.size(); ++i) {
            const bool counts = options_.frames && i == counted_;
            const auto own = feeders.sourcesOf(outputs_[i].node);
            const bool shares = std::any_of(own.begin(), own.end(), [&](const std::string& source) {
                return counted.count(source) != 0;
            });
            taps_->push_back(std::make_shared<OutputTap>(
                i, outputs_[i], counts ? *options_.frames : 0, state_, writer_,
                counts ? forEachTap(&OutputTap::release) : std::function<void()>(),
                shares ? TapSource::SameAsCounted : TapSource::Another));
            graph().attachSink(GenICam::gcstring(outputs_[i].node),
                               GenICam::gcstring(outputs_[i].pin), taps_->back());
        }
    }

    // A node that finds no camera has the pool look for real ones, and does not wait for them.
    void allocate() {
        auto* const cameras = dynamic_cast<CameraPool*>(&recipe_.pool());
        const bool mayFindMore = cameras != nullptr && !cameras->listsRealCameras();
        std::string failure = tryToAllocate(mayFindMore ? cameras : nullptr);
        if (!failure.empty() && mayFindMore && cameras->listsRealCameras()) {
            failure = tryToAllocate(nullptr);
        }
        if (!failure.empty()) {
            fail(recipe_.recipe().source() + ": " + failure);
        }
    }

    // Why not, or nothing. After a failure real cameras that the pool looks for are waited for; if
    // they come to the list nobody has to know of the failure.
    [[nodiscard]] std::string tryToAllocate(CameraPool* cameras) {
        NodeLines lines;
        const auto failure = graph().allocateResources();
        if (failure.errors.empty()) {
            return {};
        }
        if (cameras != nullptr && cameras->waitForRealCameras()) {
            lines.drop();
        }
        std::string texts;
        for (const auto& error : failure.errors) {
            texts += (texts.empty() ? "" : "; ") + error->getDescription().str();
        }
        for (const std::string& cause : lines.causesOf(texts)) {
            texts += " " + cause;
        }
        return "node " + inQuotes(failure.node.str()) + propertiesOf(failure.node.str()) +
               ": can not allocate: " + texts;
    }

    // Of the device that the node is to take, as its settings have them.
    [[nodiscard]] std::string propertiesOf(const std::string& node) const {
        std::string texts;
        try {
            const Recipe saved = recipe_.saved(recipe_.recipe().basePath());
            for (std::size_t i = 0; i < saved.nodes().size(); ++i) {
                const Json root = saved.settings(i)->document().root;
                if (saved.nodes()[i].name != node || !root.contains("DeviceProperties")) {
                    continue;
                }
                for (const auto& property : root.at("DeviceProperties").items()) {
                    texts += (texts.empty() ? " (" : ", ") + property.key() + " = " +
                             inQuotes(property.value().get<std::string>());
                }
            }
        } catch (...) {
            return {};  // the node's own message has to do
        }
        return texts.empty() ? "" : texts + ")";
    }

    void begin() {
        const std::string& source = recipe_.recipe().source();
        if (graph().isRunning()) {
            fail(source + ": the graph is running already");
        }
        withPlace(source, [this] { attachTaps(); });
        allocate();
        try {
            losses_ = std::make_unique<LossWatch>(recipe_);
            recipe_.start(startArguments(options_));
        } catch (...) {
            losses_.reset();
            freeAfterFailure();
            throw;
        }
        start_ = RunClock::now();
    }

    // What an observer has thrown, or something else that ends the run, unless it had failed
    // before: the graph runs, and has to be stopped first.
    [[nodiscard]] std::exception_ptr watchUntilEnd(const RunObserver& observer, double& seconds) {
        std::exception_ptr thrown;
        try {
            if (writer_ != nullptr) {
                writer_->begin();
            }
            if (options_.recover) {
                recovery_ = std::make_unique<Recovery>(recipe_, startArguments(options_));
            }
            if (observer.onStarted) {
                observer.onStarted();
            }
            watch(observer.onProgress);
        } catch (...) {
            thrown = state_->failure().empty() ? std::current_exception() : nullptr;
        }
        recovery_.reset();
        seconds = Seconds(RunClock::now() - start_).count();
        return thrown;
    }

    // All of it, whatever fails: what has come is written, and the first failure is returned. The
    // writer learns of none, since it would drop what it has.
    [[nodiscard]] std::string end() {
        std::string first = state_->failure();
        const StopMode mode = first.empty() ? StopMode::Drain : StopMode::Drop;
        const auto step = [&](const char* what, const std::function<void()>& function) {
            const std::string failure = failureOf(what, function);
            first = first.empty() ? failure : first;
        };
        step("can not stop", [&] { graph().stop(mode); });
        losses_.reset();  // a camera that has fallen silent may be missed by the stop only
        step("can not hand on its last values", forEachTap(&OutputTap::releaseAll));
        if (writer_ != nullptr) {
            step("can not be written", [&] { writer_->finish(); });
        }
        first = first.empty() ? state_->failure() : first;
        step("can not free its resources", [&] { graph().freeResources(); });
        return first;
    }

    [[nodiscard]] std::string failureOf(const char* what, const std::function<void()>& step) {
        try {
            step();
            return {};
        } catch (...) {
            const std::string message = currentMessage();
            const std::string node = graph().failedNode().str();
            return recipe_.recipe().source() + (node.empty() ? "" : ": node " + inQuotes(node)) +
                   ": " + what + ": " + message;
        }
    }

    // What fails here leaves a tap behind that is closed.
    void detachTaps() noexcept {
        for (const auto& tap : *taps_) {
            try {
                graph().detachSink(tap);
            } catch (...) {
                Utils::createLogEntry(Utils::Severitiy::Warning, getCatIdRunner(),
                                      "Host: An output is still read. Message: %s",
                                      currentMessage().c_str());
            }
        }
    }

    void closeTaps() noexcept {
        for (const auto& tap : *taps_) {
            tap->close();
        }
    }

    // The failure before is the one to be told.
    void freeAfterFailure() noexcept {
        try {
            graph().freeResources();
        } catch (...) {
            Utils::createLogEntry(Utils::Severitiy::Warning, getCatIdRunner(),
                                  "Host: Resources can't be freed. Message: %s",
                                  currentMessage().c_str());
        }
    }

    void watch(const std::function<void(const RunProgress&)>& onProgress) {
        const auto end = deadlineAfter(start_, options_.seconds);
        auto nextProgress = RunClock::now() + progressPeriod;
        for (;;) {
            auto deadline = std::min(end, idleDeadline());
            if (onProgress) {
                deadline = std::min(deadline, nextProgress);
            }
            if (recovery_ != nullptr) {
                deadline = std::min(deadline, RunClock::now() + recoveryPeriod);
            }
            if (state_->waitUntil(deadline)) {
                return;
            }
            const auto now = RunClock::now();
            if (now >= end || now >= idleDeadline()) {
                return;
            }
            if (recovery_ != nullptr) {
                recovery_->step();
            }
            if (onProgress && now >= nextProgress) {
                nextProgress = now + progressPeriod;
                onProgress(progress());
            }
        }
    }

    // A writer that is at work holds the sources back: the run is not idle then.
    [[nodiscard]] RunClock::time_point idleDeadline() const {
        const bool isWriting = writer_ != nullptr && writer_->waiting() > 0;
        const auto last = isWriting ? RunClock::now() : std::max(start_, state_->lastValue());
        return deadlineAfter(last, options_.idle);
    }

    RunProgress progress() {
        RunProgress progress;
        progress.seconds = Seconds(RunClock::now() - start_).count();
        for (std::size_t i = 0; i < taps_->size(); ++i) {
            const OutputReport report = (*taps_)[i]->report();
            progress.errors += report.errors;
            if (i == counted_) {
                progress.frames = report.frames;
                progress.rate = report.rate;
            }
        }
        for (const auto& connection : graph().statistics().connections) {
            progress.queued += connection.queued;
            progress.capacity += connection.capacity;
        }
        if (writer_ != nullptr) {
            progress.queued += writer_->waiting();
            progress.capacity += writer_->capacity();
        }
        return progress;
    }

    RecipeGraph& recipe_;
    const RunOptions options_;
    const std::vector<OpenOutput> outputs_;
    const std::size_t counted_;
    const std::shared_ptr<RunState> state_ = std::make_shared<RunState>();
    std::shared_ptr<OutputWriter> writer_;
    std::unique_ptr<Recovery> recovery_;
    std::unique_ptr<LossWatch> losses_;
    const std::shared_ptr<Taps> taps_ = std::make_shared<Taps>();
    RunClock::time_point start_;
};

Runner::Runner(RecipeGraph& graph, RunOptions options)
    : impl_(std::make_unique<Impl>(graph, std::move(options))) {}

Runner::~Runner() = default;

void Runner::requestStop() {
    impl_->requestStop();
}

RunReport Runner::run(const RunObserver& observer) {
    return impl_->run(observer);
}

std::string reportAsJson(const RunReport& report) {
    Json outputs = Json::object();
    for (const OutputReport& output : report.outputs) {
        outputs[output.node + "." + output.pin] = {
            {"frames", output.frames}, {"errors", output.errors}, {"rate", output.rate}};
    }
    return printJsonLine(
        {{"outputs", outputs}, {"seconds", report.seconds}, {"dropped", report.dropped}});
}

}  // namespace Orlix::Host
