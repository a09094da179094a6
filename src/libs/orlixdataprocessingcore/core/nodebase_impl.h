// The inside of every node: its pins, its state, its jobs. What a node class overrides is called
// through the owner, always with the node's lock free.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/core/inputpins.h"
#include "orlixdataprocessingcore/core/jobqueue.h"
#include "orlixdataprocessingcore/core/lazysignal.h"
#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodeerrors.h"
#include "orlixdataprocessingcore/core/outputpins.h"
#include "orlixdataprocessingcore/core/propertybindings.h"
#include "orlixdataprocessingcore/core/spacegate.h"

namespace Orlix::DataProcessing::Core {

class IUpdateFactory;
class SimpleNode;

// Lives as long as its node and a little longer where a sink still holds it as its listener.
// The node's lock is taken by start() alone, for the moment in which the state leaves Stopped.
class NodeBase::Impl final : public ISpaceListener, public std::enable_shared_from_this<Impl> {
public:
    Impl(NodeBase& owner, const std::shared_ptr<IResourcePool>& pool);
    ~Impl() override;

    // Life
    void setLock(const std::shared_ptr<Threading::IRecursiveLockable>& lock);
    [[nodiscard]] std::vector<std::shared_ptr<IError>> allocate();
    void free();
    void start(const NodeArgumentCollection& arguments);
    void stop();
    void cleanup();
    [[nodiscard]] NodeState state() const noexcept { return state_.load(); }

    // Jobs of a driver
    [[nodiscard]] bool canExecute() const;
    [[nodiscard]] StartExecutionResult execute(const JobProvider& provider);
    // A job of this update will not come: tells the sinks. Only by whoever calls execute().
    void skip(const std::shared_ptr<IGraphUpdate>& update);
    // Keeps all other threads from executing, so that several jobs in a row on this one cost less.
    // False if another thread executes. Between two of them, and to be ended by endReservation().
    [[nodiscard]] bool reserve();
    void endReservation();
    // The jobs of this node are no more than calls of execute() between the bound properties.
    void setSimple(SimpleNode& node) noexcept { simple_ = &node; }
    void runSimple(PinValues& given, PinValues& made);

    // Jobs of a source
    [[nodiscard]] bool waitUntilSpaceAvailable();
    void createJob(SourceJob&& job);

    void abort(const std::shared_ptr<IGraphUpdate>& update);
    void onSpaceAvailable() override;

    [[nodiscard]] bool hasSourceJobs() const { return !jobs_.isIdle(); }
    [[nodiscard]] std::uint64_t failedJobs() const noexcept {
        return failedJobs_.load(std::memory_order_relaxed);
    }

    [[nodiscard]] std::shared_ptr<IUpdateFactory> updateFactory() const;
    void takeOnlyUpdatesOfTheRun() noexcept { onlyUpdatesOfTheRun_ = true; }

    InputPins inputs;
    OutputPins outputs;
    PropertyBindings bindings;
    NodeErrors errors;
    std::shared_ptr<IResourcePool> pool;
    std::shared_ptr<Threading::IRecursiveLockable> lock;

    LazySignal<void()> inputsChanged;
    LazySignal<void()> outputsChanged;
    LazySignal<void(const gcstring&)> autoResetChanged;
    LazySignal<void()> stateChanged;
    LazySignal<void()> canExecuteChanged;
    LazySignal<void(const std::shared_ptr<IGraphUpdate>&)> executionStarted;
    LazySignal<void(const std::shared_ptr<IGraphUpdate>&, const FinishedValues&)>
        executionFinishing;
    LazySignal<void(const std::shared_ptr<IGraphUpdate>&)> executionFinished;
    LazySignal<void()> settingsChanged;

private:
    class ExecutionScope;
    class LifeScope;
    class SourceJobScope;
    // Whether a job of a source may still leave when the node has stopped meanwhile.
    enum class Admission { WhileRunning, Granted };

    void leaveStopped(LifeScope& life);
    void waitForEndOfRun(const LifeScope& life);
    [[nodiscard]] bool enterRunning();
    void setState(NodeState state);
    void failStart();
    void endRun();
    void finishJobs();
    void waitForExecution();
    [[nodiscard]] bool isInOwnJob() const;
    [[nodiscard]] bool isInSourceJob() const;
    [[nodiscard]] std::uint64_t lastUpdateSoFar() const;
    void openForJobs(std::uint64_t lastUpdateBefore);
    void closeForJobs();
    [[nodiscard]] bool acceptsJobsOf(const IGraphUpdate& update) const;

    [[nodiscard]] bool beginExecution();
    void endExecution();
    [[nodiscard]] bool takeReservation();

    [[nodiscard]] const OutputRoutes& renewRoutes();
    void runJob(std::shared_ptr<IGraphUpdate>&& update);
    void runGeneralJob(const std::shared_ptr<IGraphUpdate>& update);
    void runSimpleJob(std::shared_ptr<IGraphUpdate>&& update);
    [[nodiscard]] std::optional<std::uint64_t> findRun(const IGraphUpdate& update);
    void runSourceJob(SourceJob&& job, Admission admission);
    [[nodiscard]] JobResults makeResults(SourceJob& job);
    void announce(const std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
        if (executionFinishing.isUsed()) {
            announceToSlots(update, values);
        }
    }
    void announceToSlots(const std::shared_ptr<IGraphUpdate>& update, PinValues& values);
    void deliver(const OutputRoutes& routes, std::shared_ptr<IGraphUpdate>&& update,
                 PinValues& values);
    [[nodiscard]] std::shared_ptr<IError> reportCurrentException();
    [[nodiscard]] bool takeAborted(const IGraphUpdate& update) {
        return anyAborted_ && findAborted(update);
    }
    [[nodiscard]] bool findAborted(const IGraphUpdate& update);

    NodeBase& owner_;
    SimpleNode* simple_ = nullptr;  // the same one, if it is one
    std::atomic<NodeState> state_{NodeState::Stopped};
    bool lockIsSet_ = false;
    std::atomic<bool> allocationFailed_{false};

    // One thread at a time takes the node from state to state; the state changes under this mutex.
    // It is never held while anything foreign is called.
    std::mutex lifeMutex_;
    std::condition_variable lifeChanged_;
    std::thread::id lifeThread_;  // the one that is inside start() or stop()
    unsigned int lifeDepth_ = 0;
    bool stopRequested_ = false;  // while starting

    // One execution at a time. Whoever has set the flag owns the fields below it.
    std::atomic<bool> executing_{false};
    std::atomic<std::thread::id> executor_{};
    std::atomic<bool> refused_{false};  // another thread has found the node busy
    bool reserved_ = false;             // for the executor's next job
    std::shared_ptr<const OutputRoutes> routes_;
    std::uint64_t routesVersion_ = 0;
    // Hold values during a job only; the next one uses their map nodes again.
    PinValues inputValues_;
    PinValues outputValues_;

    std::mutex executionMutex_;
    std::condition_variable executionEnded_;
    std::atomic<unsigned int> executionWaiters_{0};

    // Sources may create jobs on several threads: every output sees them in one order.
    std::mutex deliveryMutex_;
    bool acceptsJobs_ = false;  // under deliveryMutex_, like the numbers
    std::uint64_t run_ = 0;
    std::uint64_t lastUpdateBefore_ = 0;
    bool onlyUpdatesOfTheRun_ = false;
    SpaceGate space_;
    JobQueue jobs_;

    std::mutex abortMutex_;
    std::vector<std::uint64_t> aborted_;  // sequence numbers
    std::atomic<bool> anyAborted_{false};
    std::atomic<std::uint64_t> failedJobs_{0};
};

}  // namespace Orlix::DataProcessing::Core
