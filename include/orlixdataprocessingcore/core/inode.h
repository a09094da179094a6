// A node of the graph as its driver sees it: typed input and output pins, resources, start and
// stop, execution of jobs, errors. All operations are safe from any thread and are called with the
// node's lock free; signals fire with no lock held.
//
// Life: created; allocateResources; start; jobs; stop; freeResources; destroyed. cleanup() ends
// whatever is left, so that a node can be destroyed in any state.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/error.h"
#include "orlixdataprocessingcore/utils/iobject.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixdataprocessingcore/utils/variant.h"

namespace Orlix::DataProcessing::Core {

using GenICam::gcstring;

class IGraphUpdate;
class IHandle;
class IOutputSink;
class IResourcePool;
class NodeArgumentCollection;

enum class NodeState : std::int32_t { Stopped = 0, Starting = 1, Running = 2, Stopping = 3 };

enum class StartExecutionResult : std::int32_t {
    Executed = 0,    // a job was taken and has been run
    NoJob = 1,       // the caller's function had none to give
    NotRunning = 2,  // the node is not started
    Busy = 3,        // another job is being run, or an output has no space
};

// No limit of jobs, for a pin.
inline constexpr std::uint64_t unlimitedJobs = ~std::uint64_t{0};

struct InputDescriptor {
    gcstring name;
    gcstring description;
    Utils::TypeInfo type;
    bool optional = false;  // the node also runs without a connection here
    std::uint64_t maxJobCount = unlimitedJobs;
};

struct OutputDescriptor {
    gcstring name;
    gcstring description;
    Utils::TypeInfo type;
    bool optional = false;  // a job may leave this pin out
    std::uint64_t maxJobCount = unlimitedJobs;
    // Of a pin that begins updates: pins of different groups never have a value in the same one.
    gcstring updateGroup = {};
};

// Oldest first; two errors are the same entry only if they are the same object.
struct ORLIXDATAPROCESSINGCORE_API ErrorComparer {
    bool operator()(const std::shared_ptr<IError>& a, const std::shared_ptr<IError>& b) const;
};

using ErrorSet = std::multiset<std::shared_ptr<IError>, ErrorComparer>;
using PinValues = std::map<gcstring, Utils::Variant>;
using JobResults = std::map<std::shared_ptr<IGraphUpdate>, PinValues>;
using JobFunction = std::function<JobResults(const std::shared_ptr<IGraphUpdate>&, PinValues)>;
// Gives the next job: fills in the update and the value of each input; false if there is none.
using JobProvider = std::function<bool(std::shared_ptr<IGraphUpdate>&, PinValues&)>;
using FinishedValues = std::map<gcstring, std::shared_ptr<Utils::Variant>>;

using VoidSignal = Utils::ISignal<void()>;
using TextSignal = Utils::ISignal<void(const gcstring&)>;
using UpdateSignal = Utils::ISignal<void(const std::shared_ptr<IGraphUpdate>&)>;
using FinishingSignal =
    Utils::ISignal<void(const std::shared_ptr<IGraphUpdate>&, const FinishedValues&)>;
using ErrorSignal = Utils::ISignal<void(const ErrorSet&, const ErrorSet&)>;

// The order of the virtual operations is part of the interface. Unknown pin names throw
// InvalidArgumentException, operations that the state forbids RuntimeException; both name the pin.
class ORLIXDATAPROCESSINGCORE_API INode : public Utils::IObject {
public:
    // Whether a value that arrives leads to values that leave under the same update.
    [[nodiscard]] virtual bool isForwardingUpdates() const = 0;

    // Inputs. A pin takes one connection at a time; its type is settled when it is made.
    [[nodiscard]] virtual std::vector<InputDescriptor> getInputDescriptors() = 0;
    [[nodiscard]] virtual std::shared_ptr<VoidSignal> getInputsChangedSignal() const = 0;
    [[nodiscard]] virtual std::shared_ptr<IHandle> configureInputType(
        const gcstring& name, const Utils::TypeInfo& type) = 0;
    virtual void unconfigureInputType(const std::shared_ptr<IHandle>& handle) = 0;
    [[nodiscard]] virtual bool isConfigured(const std::shared_ptr<IHandle>& handle) const = 0;
    [[nodiscard]] virtual bool canConfigure(const gcstring& name) const = 0;
    // On, as at first: every job needs a new value of the pin. Off: the pin keeps its last value,
    // and a job that comes without one uses that.
    virtual void setAutoResetEnabled(const gcstring& name, bool enabled) = 0;
    [[nodiscard]] virtual bool isAutoResetEnabled(const gcstring& name) const = 0;
    [[nodiscard]] virtual std::shared_ptr<TextSignal> getAutoResetChangedSignal() const = 0;

    // Outputs. Any number of sinks on a pin, served in the order of their attachment.
    [[nodiscard]] virtual std::vector<OutputDescriptor> getOutputDescriptors() = 0;
    [[nodiscard]] virtual std::shared_ptr<VoidSignal> getOutputsChangedSignal() const = 0;
    [[nodiscard]] virtual std::shared_ptr<IHandle> attachOutputSink(
        const gcstring& name, const std::shared_ptr<IOutputSink>& sink) = 0;
    virtual void detachOutputSink(const std::shared_ptr<IHandle>& handle) = 0;
    [[nodiscard]] virtual bool isOutputSinkAttached(
        const std::shared_ptr<IHandle>& handle) const = 0;

    // Life. Allocation reports what failed instead of throwing; start throws and leaves the node
    // stopped; stop never hangs and never throws for a node that is stopped.
    [[nodiscard]] virtual std::vector<std::shared_ptr<IError>> allocateResources() = 0;
    virtual void freeResources() = 0;
    virtual void start(const NodeArgumentCollection& arguments) = 0;
    virtual void stop() = 0;
    [[nodiscard]] virtual NodeState getState() = 0;
    [[nodiscard]] virtual std::shared_ptr<VoidSignal> getStateChangedSignal() const = 0;

    // Execution. One job at a time; startExecution runs it in the calling thread.
    [[nodiscard]] virtual bool canExecute() const = 0;
    // Fires when canExecute has become true.
    [[nodiscard]] virtual std::shared_ptr<VoidSignal> getCanExecuteSignal() const = 0;
    [[nodiscard]] virtual StartExecutionResult startExecution(const JobProvider& provider) = 0;
    [[nodiscard]] virtual std::shared_ptr<UpdateSignal> getExecutionStartedSignal() const = 0;
    // Before the outputs leave.
    [[nodiscard]] virtual std::shared_ptr<FinishingSignal> getExecutionFinishingSignal() const = 0;
    [[nodiscard]] virtual std::shared_ptr<UpdateSignal> getExecutionFinishedSignal() const = 0;

    // Errors that hold now. The signal has the old and the new set.
    [[nodiscard]] virtual bool hasError() const = 0;
    [[nodiscard]] virtual ErrorSet getErrors() = 0;
    [[nodiscard]] virtual std::shared_ptr<ErrorSignal> getErrorChangedSignal() const = 0;

    [[nodiscard]] virtual std::shared_ptr<VoidSignal> getSettingsChangedSignal() const = 0;
};

}  // namespace Orlix::DataProcessing::Core
