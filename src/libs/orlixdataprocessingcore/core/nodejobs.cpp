// The jobs of a node: those that a driver gives it, and those that a source makes.
#include <algorithm>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/errorvalue.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/nodebase_impl.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/core/pinwalk.h"
#include "orlixdataprocessingcore/core/simplenode.h"
#include "orlixdataprocessingcore/utils/failure.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Aborts that are remembered for updates that have not come yet.
constexpr std::size_t longestAbortList = 1024;

void fillWithError(PinValues& values, const OutputRoutes& routes,
                   const std::shared_ptr<IError>& error) {
    for (const OutputRoute& route : routes.routes) {
        if (route.isGone) {
            continue;
        }
        values.insert_or_assign(route.pin, makeErrorValue(route.type, error));
    }
}

struct ClearedAtTheEnd {
    PinValues& values;
    ~ClearedAtTheEnd() { resetAll(values); }
};

// Calls `handle` with the results of one job by ascending update, each taken out of the map.
template <typename Handle>
void forEachInOrder(JobResults& results, const Handle& handle) {
    if (results.size() == 1) {
        handle(results.extract(results.begin()));
        return;
    }
    std::vector<JobResults::node_type> ordered;
    while (!results.empty()) {
        ordered.push_back(results.extract(results.begin()));
    }
    std::sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) {
        return a.key()->getSequenceNumber() < b.key()->getSequenceNumber();
    });
    for (auto& result : ordered) {
        handle(std::move(result));
    }
}

// A job may make updates of its own, but each result needs one.
JobResults requireUpdates(JobResults&& results) {
    if (results.count(nullptr) != 0) {
        throw GenICam::InvalidArgumentException("A result has no update.", __FILE__, __LINE__);
    }
    return std::move(results);
}

}  // namespace

// Makes the calling thread the one that executes, if there is none or it is that already.
class NodeBase::Impl::ExecutionScope {
public:
    explicit ExecutionScope(Impl& node)
        : node_(node),
          reserved_(node.takeReservation()),
          taken_(reserved_ || node.beginExecution()) {}
    ~ExecutionScope() {
        if (reserved_) {
            node_.reserved_ = true;
        } else if (taken_) {
            node_.endExecution();
        }
    }
    ExecutionScope(const ExecutionScope&) = delete;
    ExecutionScope& operator=(const ExecutionScope&) = delete;

    [[nodiscard]] bool taken() const noexcept { return taken_; }

private:
    Impl& node_;
    const bool reserved_;
    const bool taken_;
};

// Notes that the calling thread is inside a job of a source: whoever stops that node may be waiting
// for the thread. A slot of the job may send the next, on this node or another.
class NodeBase::Impl::SourceJobScope {
public:
    explicit SourceJobScope(const Impl& node)
        : node_(node), outer_(std::exchange(innermost_, this)) {}
    ~SourceJobScope() { innermost_ = outer_; }
    SourceJobScope(const SourceJobScope&) = delete;
    SourceJobScope& operator=(const SourceJobScope&) = delete;

    [[nodiscard]] static bool contains(const Impl& node) noexcept {
        const SourceJobScope* scope = innermost_;
        while (scope != nullptr && &scope->node_ != &node) {
            scope = scope->outer_;
        }
        return scope != nullptr;
    }

private:
    static thread_local const SourceJobScope* innermost_;

    const Impl& node_;
    const SourceJobScope* const outer_;
};

thread_local const NodeBase::Impl::SourceJobScope* NodeBase::Impl::SourceJobScope::innermost_ =
    nullptr;

bool NodeBase::Impl::beginExecution() {
    if (executing_.exchange(true)) {
        // Either the other thread sees this and fires the signal, or it has ended by now.
        refused_ = true;
        if (executing_.exchange(true)) {
            return false;
        }
    }
    executor_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    return true;
}

void NodeBase::Impl::endExecution() {
    executor_.store({}, std::memory_order_relaxed);
    executing_.store(false);
    // Either this sees that somebody waits, or the waiter sees the flag cleared.
    if (executionWaiters_ != 0) {
        std::lock_guard guard(executionMutex_);
        executionEnded_.notify_all();
    }
    if (state_ == NodeState::Running && refused_ && refused_.exchange(false)) {
        canExecuteChanged.emit();
    }
}

bool NodeBase::Impl::reserve() {
    if (!beginExecution()) {
        return false;
    }
    reserved_ = true;
    return true;
}

void NodeBase::Impl::endReservation() {
    reserved_ = false;
    endExecution();
}

// Not for a job inside of a job.
bool NodeBase::Impl::takeReservation() {
    return executor_.load(std::memory_order_relaxed) == std::this_thread::get_id() &&
           std::exchange(reserved_, false);
}

bool NodeBase::Impl::canExecute() const {
    return state_ == NodeState::Running && !executing_ && outputs.routes()->hasSpace();
}

StartExecutionResult NodeBase::Impl::execute(const JobProvider& provider) {
    const ExecutionScope scope(*this);
    if (!scope.taken()) {
        return StartExecutionResult::Busy;
    }
    if (state_ != NodeState::Running) {
        return StartExecutionResult::NotRunning;
    }
    if (!renewRoutes().hasSpace()) {
        return StartExecutionResult::Busy;
    }
    // Whatever happens, the map that the next job uses again holds on to no value.
    const ClearedAtTheEnd cleared{inputValues_};
    std::shared_ptr<IGraphUpdate> update;
    if (!provider(update, inputValues_)) {
        return StartExecutionResult::NoJob;
    }
    if (!update) {
        throw GenICam::InvalidArgumentException("The job has no update.", __FILE__, __LINE__);
    }
    executionStarted.emit(update);
    runJob(std::move(update));
    return StartExecutionResult::Executed;
}

const OutputRoutes& NodeBase::Impl::renewRoutes() {
    const std::uint64_t version = outputs.version();
    if (version != routesVersion_) {
        routes_ = outputs.routes();
        routesVersion_ = version;
    }
    return *routes_;
}

void NodeBase::Impl::runJob(std::shared_ptr<IGraphUpdate>&& update) {
    if (takeAborted(*update)) {
        routes_->skip(update);
        executionFinished.emit(update);
    } else if (simple_ != nullptr) {
        runSimpleJob(std::move(update));
    } else {
        runGeneralJob(update);
        executionFinished.emit(update);
    }
}

void NodeBase::Impl::runSimpleJob(std::shared_ptr<IGraphUpdate>&& update) {
    try {
        runSimple(inputValues_, outputValues_);
        errors.clearJobError();
    } catch (...) {
        fillWithError(outputValues_, *routes_, reportCurrentException());
    }
    const ClearedAtTheEnd cleared{outputValues_};
    announce(update, outputValues_);
    // The update leaves with the outputs unless a slot will still ask for it.
    const auto finished = executionFinished.isUsed() ? update : nullptr;
    deliver(*routes_, std::move(update), outputValues_);
    if (finished) {
        executionFinished.emit(finished);
    }
}

// Whatever happens, the properties hold on to no value afterwards.
void NodeBase::Impl::runSimple(PinValues& given, PinValues& made) {
    try {
        bindings.prepare(given);
        simple_->execute();
        bindings.collect(made);
    } catch (...) {
        bindings.release();
        throw;
    }
    bindings.releaseInputs();
}

void NodeBase::Impl::runGeneralJob(const std::shared_ptr<IGraphUpdate>& update) {
    JobResults results;
    try {
        results = requireUpdates(owner_.run(update, std::move(inputValues_)));
        errors.clearJobError();
    } catch (...) {
        fillWithError(results[update], *routes_, reportCurrentException());
    }
    if (owner_.isForwardingUpdates()) {
        results.try_emplace(update);  // an update that comes in leaves again, if only with skips
    }
    forEachInOrder(results, [this](JobResults::node_type&& result) {
        announce(result.key(), result.mapped());
        deliver(*routes_, std::move(result.key()), result.mapped());
    });
}

void NodeBase::Impl::skip(const std::shared_ptr<IGraphUpdate>& update) {
    outputs.routes()->skip(update);
}

void NodeBase::Impl::deliver(const OutputRoutes& routes, std::shared_ptr<IGraphUpdate>&& update,
                             PinValues& values) {
    if (takeAborted(*update)) {
        routes.skip(update);
    } else {
        routes.deliver(std::move(update), values);
    }
}

// The slots may replace a value before it leaves.
void NodeBase::Impl::announceToSlots(const std::shared_ptr<IGraphUpdate>& update,
                                     PinValues& values) {
    FinishedValues finished;
    for (auto& [pin, value] : values) {
        finished.emplace(pin, std::make_shared<Utils::Variant>(std::move(value)));
    }
    executionFinishing.emit(update, finished);
    for (auto& [pin, value] : values) {
        value = *finished[pin];
    }
}

std::shared_ptr<IError> NodeBase::Impl::reportCurrentException() {
    auto error = Utils::makeErrorOfCaught("Unknown exception caught while executing a job.");
    Utils::createLogEntry(Utils::Severitiy::Error, nodeLogCategory(),
                          "Node %p: Job failed. Message: %s", static_cast<const void*>(&owner_),
                          error->getDescription().c_str());
    failedJobs_.fetch_add(1, std::memory_order_relaxed);
    errors.setJobError(error);
    return error;
}

bool NodeBase::Impl::waitUntilSpaceAvailable() {
    return space_.wait([this] {
        const auto routes = outputs.routes();
        return routes->hasSpace() && jobs_.hasSpace(routes->smallestJobCount);
    });
}

void NodeBase::Impl::createJob(SourceJob&& job) {
    if (!job.update) {
        throw GenICam::InvalidArgumentException("No update passed.", __FILE__, __LINE__);
    }
    if (!job.function && jobs_.isIdle()) {
        runSourceJob(std::move(job), Admission::WhileRunning);
        return;
    }
    std::lock_guard guard(deliveryMutex_);
    if (acceptsJobsOf(*job.update)) {
        jobs_.push(std::move(job));
    }
}

// The run that takes a job of the update now; none if no run does.
std::optional<std::uint64_t> NodeBase::Impl::findRun(const IGraphUpdate& update) {
    std::lock_guard guard(deliveryMutex_);
    return acceptsJobsOf(update) ? std::optional(run_) : std::nullopt;
}

bool NodeBase::Impl::isInSourceJob() const {
    return SourceJobScope::contains(*this);
}

void NodeBase::Impl::runSourceJob(SourceJob&& job, Admission admission) {
    std::optional<std::uint64_t> run;
    if (admission == Admission::Granted) {
        space_.notify();  // one job fewer waits
    } else if (run = findRun(*job.update); !run) {
        return;
    }
    const SourceJobScope scope(*this);
    executionStarted.emit(job.update);
    const bool isAborted = takeAborted(*job.update);
    JobResults results;
    if (isAborted) {
        results.emplace(job.update, PinValues());
    } else {
        results = makeResults(job);
    }
    const auto routes = outputs.routes();
    forEachInOrder(results, [&](JobResults::node_type&& result) {
        if (!isAborted) {
            announce(result.key(), result.mapped());
        }
        // Asked again: a slot may have stopped the node, and another run may have begun since.
        std::lock_guard guard(deliveryMutex_);
        if (admission == Admission::Granted || (acceptsJobs_ && run == run_)) {
            deliver(*routes, std::move(result.key()), result.mapped());
        }
    });
    executionFinished.emit(job.update);
}

JobResults NodeBase::Impl::makeResults(SourceJob& job) {
    JobResults results;
    if (!job.function) {
        results.emplace(job.update, std::move(job.values));
        return results;
    }
    try {
        results = requireUpdates(job.function(job.update, std::move(job.values)));
        errors.clearJobError();
    } catch (...) {
        fillWithError(results[job.update], *outputs.routes(), reportCurrentException());
    }
    results.try_emplace(job.update);
    return results;
}

void NodeBase::Impl::abort(const std::shared_ptr<IGraphUpdate>& update) {
    if (!update) {
        throw GenICam::InvalidArgumentException("No update passed.", __FILE__, __LINE__);
    }
    std::lock_guard guard(abortMutex_);
    if (aborted_.size() == longestAbortList) {
        aborted_.erase(aborted_.begin());
    }
    aborted_.push_back(update->getSequenceNumber());
    anyAborted_ = true;
}

bool NodeBase::Impl::findAborted(const IGraphUpdate& update) {
    std::lock_guard guard(abortMutex_);
    const auto found = std::find(aborted_.begin(), aborted_.end(), update.getSequenceNumber());
    if (found == aborted_.end()) {
        return false;
    }
    aborted_.erase(found);
    anyAborted_ = !aborted_.empty();
    return true;
}

void NodeBase::Impl::onSpaceAvailable() {
    space_.notify();
    if (state_ == NodeState::Running) {
        canExecuteChanged.emit();
    }
}

}  // namespace Orlix::DataProcessing::Core
