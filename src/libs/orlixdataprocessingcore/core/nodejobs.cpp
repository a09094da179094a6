// The jobs of a node: those that a driver gives it, and those that a source makes.
#include <algorithm>

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

// Makes the calling thread the one that executes, if there is none.
class NodeBase::Impl::ExecutionScope {
public:
    explicit ExecutionScope(Impl& node) : node_(node), taken_(!node.executing_.exchange(true)) {
        if (!taken_) {
            // Either the other thread sees this and fires the signal, or it has ended by now.
            node_.refused_ = true;
            taken_ = !node.executing_.exchange(true);
        }
        if (taken_) {
            node_.executor_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
    }
    ~ExecutionScope() {
        if (taken_) {
            node_.executor_.store({}, std::memory_order_relaxed);
            node_.executing_.store(false);
            node_.afterExecution();
        }
    }
    ExecutionScope(const ExecutionScope&) = delete;
    ExecutionScope& operator=(const ExecutionScope&) = delete;

    [[nodiscard]] bool taken() const noexcept { return taken_; }

private:
    Impl& node_;
    bool taken_;
};

void NodeBase::Impl::afterExecution() {
    // Either this sees that somebody waits, or the waiter sees the flag cleared.
    if (executionWaiters_ != 0) {
        std::lock_guard guard(executionMutex_);
        executionEnded_.notify_all();
    }
    if (state_ == NodeState::Running && refused_ && refused_.exchange(false)) {
        canExecuteChanged.emit();
    }
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
    std::shared_ptr<IGraphUpdate> update;
    PinValues values = std::move(spareInputs_);
    if (!provider(update, values)) {
        spareInputs_ = std::move(values);
        return StartExecutionResult::NoJob;
    }
    if (!update) {
        throw GenICam::InvalidArgumentException("The job has no update.", __FILE__, __LINE__);
    }
    executionStarted.emit(update);
    runJob(update, std::move(values));
    executionFinished.emit(update);
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

void NodeBase::Impl::runJob(const std::shared_ptr<IGraphUpdate>& update, PinValues&& values) {
    if (takeAborted(*update)) {
        routes_->skip(update);
        return;
    }
    JobResults results;
    try {
        results = requireUpdates(owner_.run(update, std::move(values)));
        errors.setJobError(nullptr);
    } catch (...) {
        fillWithError(results[update], *routes_, reportCurrentException());
    }
    if (owner_.isForwardingUpdates()) {
        results.try_emplace(update);  // an update that comes in leaves again, if only with skips
    }
    forEachInOrder(results, [this](JobResults::node_type&& result) {
        announce(result.key(), result.mapped());
        deliver(*routes_, std::move(result.key()), result.mapped());
        keepSpare(std::move(result));
    });
}

JobResults NodeBase::Impl::runSimple(const std::shared_ptr<IGraphUpdate>& update,
                                     PinValues&& values, SimpleNode& node) {
    // Whatever happens, the properties and the spare map hold on to no value afterwards.
    struct Release {
        Impl& impl;
        PinValues& values;
        ~Release() {
            impl.bindings.release();
            resetAll(values);
            impl.spareInputs_ = std::move(values);
        }
    };
    const Release release{*this, values};
    bindings.prepare(values);
    node.execute();

    JobResults results;
    if (spareResult_.empty()) {
        bindings.collect(results[update]);
    } else {
        spareResult_.key() = update;
        bindings.collect(spareResult_.mapped());
        results.insert(std::move(spareResult_));
    }
    return results;
}

void NodeBase::Impl::keepSpare(JobResults::node_type&& result) {
    spareResult_ = std::move(result);
    spareResult_.key().reset();
    resetAll(spareResult_.mapped());
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
void NodeBase::Impl::announce(const std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
    if (!executionFinishing.isUsed()) {
        return;
    }
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
    if (acceptsJobs_) {
        jobs_.push(std::move(job));
    }
}

void NodeBase::Impl::runSourceJob(SourceJob&& job, Admission admission) {
    if (admission == Admission::Granted) {
        space_.notify();  // one job fewer waits
    }
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
        std::lock_guard guard(deliveryMutex_);
        if (acceptsJobs_ || admission == Admission::Granted) {
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
        errors.setJobError(nullptr);
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

bool NodeBase::Impl::takeAborted(const IGraphUpdate& update) {
    if (!anyAborted_) {
        return false;
    }
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
