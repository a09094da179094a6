// The life of a node: resources, start, stop, end. Its jobs are in nodejobs.cpp.
#include "orlixdataprocessingcore/core/nodebase_impl.h"

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/catchladder.h"

namespace Orlix::DataProcessing::Core {

NodeBase::Impl::Impl(NodeBase& owner, const std::shared_ptr<IResourcePool>& resourcePool)
    : pool(resourcePool),
      lock(std::make_shared<Threading::RecursiveCLock>()),
      owner_(owner),
      jobs_([this](SourceJob&& job) { runSourceJob(std::move(job), Admission::Granted); }) {}

NodeBase::Impl::~Impl() = default;

void NodeBase::Impl::setLock(const std::shared_ptr<Threading::IRecursiveLockable>& newLock) {
    if (!newLock) {
        throw GenICam::InvalidArgumentException("No lock passed.", __FILE__, __LINE__);
    }
    if (lockIsSet_) {
        throw GenICam::RuntimeException("The lock of a node can be set only once.", __FILE__,
                                        __LINE__);
    }
    lock = newLock;
    lockIsSet_ = true;
}

std::vector<std::shared_ptr<IError>> NodeBase::Impl::allocate() {
    allocated_ = true;
    std::vector<std::shared_ptr<IError>> failures;
    try {
        failures = owner_.allocateAdditionalResources(pool, true);
    } catch (...) {
        failures.push_back(Utils::makeErrorOfCurrentException(
            "Unknown exception caught while allocating resources.", __FILE__, __LINE__));
    }
    allocationFailed_ = !failures.empty();
    return failures;
}

void NodeBase::Impl::free() {
    allocationFailed_ = false;
    if (allocated_.exchange(false)) {
        owner_.freeAdditionalResources(false);
    }
}

void NodeBase::Impl::start(const NodeArgumentCollection& arguments) {
    leaveStopped();
    errors.setJobError(nullptr);
    openForJobs();
    try {
        stateChanged.emit();
        owner_.onStarting(arguments);
    } catch (...) {
        failStart();
        throw;
    }
    setState(NodeState::Running);
    if (stopRequested_.exchange(false)) {
        stop();
        return;
    }
    canExecuteChanged.emit();
}

// Under the node's lock, so that a setter that has seen the node stopped ends first.
void NodeBase::Impl::leaveStopped() {
    const Threading::UniqueLock<Threading::IRecursiveLockable> guard(*lock);
    if (state_ != NodeState::Stopped) {
        throw GenICam::RuntimeException("The node is started already.", __FILE__, __LINE__);
    }
    if (allocationFailed_) {
        throw GenICam::RuntimeException(
            "The node can't start: its resources could not be allocated.", __FILE__, __LINE__);
    }
    stopRequested_ = false;
    state_ = NodeState::Starting;
}

void NodeBase::Impl::setState(NodeState state) {
    state_ = state;
    stateChanged.emit();
}

void NodeBase::Impl::failStart() {
    space_.close();
    closeForJobs();
    jobs_.finish();
    setState(NodeState::Stopped);
}

void NodeBase::Impl::stop() {
    // A stop during the start takes effect when onStarting has returned: nobody waits for anybody.
    stopRequested_ = true;
    auto running = NodeState::Running;
    if (state_ == NodeState::Starting) {
        space_.close();
        return;
    }
    if (!state_.compare_exchange_strong(running, NodeState::Stopping)) {
        return;
    }
    space_.close();
    stateChanged.emit();
    try {
        owner_.onStopping();
    } catch (...) {
        endRun();
        throw;
    }
    endRun();
}

void NodeBase::Impl::endRun() {
    closeForJobs();
    jobs_.finish();
    waitForExecution();
    setState(NodeState::Stopped);
}

void NodeBase::Impl::waitForExecution() {
    if (executor_.load() == std::this_thread::get_id()) {
        return;  // stopped from within its own job
    }
    std::unique_lock guard(executionMutex_);
    executionEnded_.wait(guard, [&] { return !executing_; });
    // No job begins any more. The table keeps sinks alive that may be detached by now.
    routes_.reset();
    routesVersion_ = 0;
}

void NodeBase::Impl::openForJobs() {
    {
        std::lock_guard guard(abortMutex_);
        aborted_.clear();
        anyAborted_ = false;
    }
    {
        std::lock_guard guard(deliveryMutex_);
        acceptsJobs_ = true;
    }
    space_.open();
}

// A delivery that is under way ends first.
void NodeBase::Impl::closeForJobs() {
    std::lock_guard guard(deliveryMutex_);
    acceptsJobs_ = false;
}

void NodeBase::Impl::cleanup() {
    guarded(&owner_, "stopping a node", [&] { stop(); });
    guarded(&owner_, "freeing the resources of a node", [&] { free(); });
    guarded(&owner_, "detaching the sinks of a node", [&] { outputs.detachAll(); });
}

}  // namespace Orlix::DataProcessing::Core
