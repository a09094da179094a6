// The life of a node: resources, start, stop, end. Its jobs are in nodejobs.cpp.
#include "orlixdataprocessingcore/core/nodebase_impl.h"

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixdataprocessingcore/utils/failure.h"

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
    std::vector<std::shared_ptr<IError>> failures;
    try {
        failures = owner_.allocateAdditionalResources(pool, true);
    } catch (...) {
        failures.push_back(
            Utils::makeErrorOfCaught("Unknown exception caught while allocating resources."));
    }
    allocationFailed_ = !failures.empty();
    return failures;
}

// Also when nothing was allocated: the node may have more to give up than it has allocated.
void NodeBase::Impl::free() {
    allocationFailed_ = false;
    owner_.freeAdditionalResources(false);
}

// Makes the calling thread the one that changes the state, until the scope ends. Its end is the
// last that the thread touches of the node, so whoever waits for it may free the node.
class NodeBase::Impl::LifeScope {
public:
    explicit LifeScope(Impl& node) : node_(node) {}
    ~LifeScope() {
        if (entered_) {
            std::lock_guard guard(node_.lifeMutex_);
            if (--node_.lifeDepth_ == 0) {
                node_.lifeThread_ = {};
                node_.lifeChanged_.notify_all();
            }
        }
    }
    LifeScope(const LifeScope&) = delete;
    LifeScope& operator=(const LifeScope&) = delete;

    // Under the mutex.
    [[nodiscard]] bool isFree() const {
        return node_.lifeThread_ == std::thread::id() ||
               node_.lifeThread_ == std::this_thread::get_id();
    }
    void enter() {
        node_.lifeThread_ = std::this_thread::get_id();
        ++node_.lifeDepth_;
        entered_ = true;
    }

private:
    Impl& node_;
    bool entered_ = false;
};

void NodeBase::Impl::start(const NodeArgumentCollection& arguments) {
    if (state_ == NodeState::Stopped) {
        finishJobs();  // of a run that one of its own jobs has stopped
    }
    LifeScope life(*this);
    leaveStopped(life);
    try {
        // Made in the run, so that it is behind every update from before.
        openForJobs(lastUpdateSoFar());
        errors.clearJobError();
        stateChanged.emit();
        owner_.onStarting(arguments);
    } catch (...) {
        failStart();
        throw;
    }
    if (!enterRunning()) {
        stop();
        return;
    }
    canExecuteChanged.emit();
}

// Under the node's lock, so that a setter that has seen the node stopped ends first.
void NodeBase::Impl::leaveStopped(LifeScope& life) {
    for (;;) {
        waitForEndOfRun(life);
        const Threading::UniqueLock<Threading::IRecursiveLockable> nodeGuard(*lock);
        std::lock_guard guard(lifeMutex_);
        if (state_ != NodeState::Stopped) {
            throw GenICam::RuntimeException("The node is started already.", __FILE__, __LINE__);
        }
        if (allocationFailed_) {
            throw GenICam::RuntimeException(
                "The node can't start: its resources could not be allocated.", __FILE__, __LINE__);
        }
        if (life.isFree()) {
            life.enter();
            stopRequested_ = false;
            state_ = NodeState::Starting;
            return;
        }
    }
}

// Another thread may still be at the end of the last run. A job must not wait for it, since it may
// be waiting for the job.
void NodeBase::Impl::waitForEndOfRun(const LifeScope& life) {
    std::unique_lock guard(lifeMutex_);
    const bool mayWait = !isInOwnJob();
    lifeChanged_.wait(guard,
                      [&] { return !mayWait || life.isFree() || state_ != NodeState::Stopped; });
    if (!mayWait && !life.isFree()) {
        throw GenICam::RuntimeException("The node is still being stopped.", __FILE__, __LINE__);
    }
}

// False if a stop has been asked for meanwhile.
bool NodeBase::Impl::enterRunning() {
    bool stays = false;
    {
        std::lock_guard guard(lifeMutex_);
        stays = !stopRequested_;
        state_ = NodeState::Running;
        lifeChanged_.notify_all();
    }
    stateChanged.emit();
    return stays;
}

void NodeBase::Impl::setState(NodeState state) {
    {
        std::lock_guard guard(lifeMutex_);
        state_ = state;
        lifeChanged_.notify_all();
    }
    stateChanged.emit();
}

void NodeBase::Impl::failStart() {
    space_.close();
    closeForJobs();
    jobs_.finish();
    setState(NodeState::Stopped);
}

// A stop during the start takes effect when onStarting has returned. The caller waits for that, and
// for a stop that another thread is at, unless it is itself what that thread waits for.
void NodeBase::Impl::stop() {
    LifeScope life(*this);
    NodeState found = NodeState::Stopped;
    {
        std::unique_lock guard(lifeMutex_);
        stopRequested_ = stopRequested_ || state_ == NodeState::Starting;
        if (state_ == NodeState::Starting || state_ == NodeState::Running) {
            // Before the wait for another thread: what that is at may need somebody who waits here.
            space_.close();
        }
        const bool isAwaited = isInOwnJob();
        const auto changes = [&] {
            return state_ == NodeState::Starting || state_ == NodeState::Stopping;
        };
        lifeChanged_.wait(
            guard, [&] { return life.isFree() || (isAwaited && state_ != NodeState::Running); });
        if (!life.isFree() || changes()) {
            return;
        }
        life.enter();
        found = state_;
        if (found == NodeState::Running) {
            space_.close();
            state_ = NodeState::Stopping;
            lifeChanged_.notify_all();
        }
    }
    if (found == NodeState::Stopped) {
        finishJobs();  // of a run that one of its own jobs has stopped
        return;
    }
    try {
        stateChanged.emit();
        owner_.onStopping();
    } catch (...) {
        endRun();
        throw;
    }
    endRun();
}

void NodeBase::Impl::endRun() {
    closeForJobs();
    finishJobs();
    if (executor_.load() != std::this_thread::get_id()) {
        // No job begins any more, and none of them is under way. The table keeps sinks alive that
        // may be detached by now.
        routes_.reset();
        routesVersion_ = 0;
    }
    setState(NodeState::Stopped);
}

bool NodeBase::Impl::isInOwnJob() const {
    return executor_.load() == std::this_thread::get_id() || isInSourceJob();
}

void NodeBase::Impl::finishJobs() {
    jobs_.finish();
    waitForExecution();
}

void NodeBase::Impl::waitForExecution() {
    if (executor_.load() == std::this_thread::get_id()) {
        return;  // stopped from within its own job
    }
    ++executionWaiters_;
    {
        std::unique_lock guard(executionMutex_);
        executionEnded_.wait(guard, [&] { return !executing_; });
    }
    --executionWaiters_;
}

// 0 if that doesn't matter. The factory is foreign: no lock may be held.
std::uint64_t NodeBase::Impl::lastUpdateSoFar() const {
    if (!onlyUpdatesOfTheRun_) {
        return 0;
    }
    const auto mark = updateFactory()->createUpdate(&owner_, nullptr);
    return mark == nullptr ? 0 : mark->getSequenceNumber();
}

void NodeBase::Impl::openForJobs(std::uint64_t lastUpdateBefore) {
    // A stop that has come meanwhile has closed the space for this run.
    const std::lock_guard life(lifeMutex_);
    {
        std::lock_guard guard(abortMutex_);
        aborted_.clear();
        anyAborted_ = false;
    }
    {
        std::lock_guard guard(deliveryMutex_);
        ++run_;
        lastUpdateBefore_ = lastUpdateBefore;
        acceptsJobs_ = true;
    }
    if (!stopRequested_) {
        space_.open();
    }
}

bool NodeBase::Impl::acceptsJobsOf(const IGraphUpdate& update) const {
    return acceptsJobs_ &&
           (!onlyUpdatesOfTheRun_ || update.getSequenceNumber() > lastUpdateBefore_);
}

std::shared_ptr<IUpdateFactory> NodeBase::Impl::updateFactory() const {
    return pool ? pool->getUpdateFactory() : getDefaultUpdateFactory();
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
