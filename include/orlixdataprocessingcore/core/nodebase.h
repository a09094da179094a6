// What all nodes share: pins, state, lock, errors, signals. A node class derives from SimpleNode or
// AdvancedNode, makes its pins in its constructor and calls cleanup() first in its destructor.
#pragma once

#include <memory>

#include "orlixdataprocessingcore/api.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/threading/lockable.h"
#include "orlixdataprocessingcore/utils/serializable.h"

namespace Orlix::DataProcessing::Threading {
class IThreadPool;
}

namespace Orlix::DataProcessing::Core {

class IBufferProvider;

class ORLIXDATAPROCESSINGCORE_API NodeBase : public INode, public Utils::ISerializable {
public:
    ~NodeBase() override;
    NodeBase(const NodeBase&) = delete;
    NodeBase& operator=(const NodeBase&) = delete;

    Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    bool isForwardingUpdates() const override;

    std::vector<InputDescriptor> getInputDescriptors() override;
    std::shared_ptr<VoidSignal> getInputsChangedSignal() const override;
    std::shared_ptr<IHandle> configureInputType(const gcstring& name,
                                                const Utils::TypeInfo& type) override;
    void unconfigureInputType(const std::shared_ptr<IHandle>& handle) override;
    bool isConfigured(const std::shared_ptr<IHandle>& handle) const override;
    bool canConfigure(const gcstring& name) const override;
    void setAutoResetEnabled(const gcstring& name, bool enabled) override;
    bool isAutoResetEnabled(const gcstring& name) const override;
    std::shared_ptr<TextSignal> getAutoResetChangedSignal() const override;

    std::vector<OutputDescriptor> getOutputDescriptors() override;
    std::shared_ptr<VoidSignal> getOutputsChangedSignal() const override;
    std::shared_ptr<IHandle> attachOutputSink(const gcstring& name,
                                              const std::shared_ptr<IOutputSink>& sink) override;
    void detachOutputSink(const std::shared_ptr<IHandle>& handle) override;
    bool isOutputSinkAttached(const std::shared_ptr<IHandle>& handle) const override;

    std::vector<std::shared_ptr<IError>> allocateResources() override;
    void freeResources() override;
    void start(const NodeArgumentCollection& arguments) override;
    void stop() override;
    NodeState getState() override;
    std::shared_ptr<VoidSignal> getStateChangedSignal() const override;

    bool canExecute() const override;
    std::shared_ptr<VoidSignal> getCanExecuteSignal() const override;
    StartExecutionResult startExecution(const JobProvider& provider) override;
    std::shared_ptr<UpdateSignal> getExecutionStartedSignal() const override;
    std::shared_ptr<FinishingSignal> getExecutionFinishingSignal() const override;
    std::shared_ptr<UpdateSignal> getExecutionFinishedSignal() const override;

    bool hasError() const override;
    ErrorSet getErrors() override;
    std::shared_ptr<ErrorSignal> getErrorChangedSignal() const override;
    std::shared_ptr<VoidSignal> getSettingsChangedSignal() const override;

    // Ends a run as stop does, frees with false, lets no exception out. May be called repeatedly.
    virtual void cleanup();

protected:
    // The node's own resources. The flag is true from allocateResources, false from freeResources.
    [[nodiscard]] virtual std::vector<std::shared_ptr<IError>> allocateAdditionalResources(
        const std::shared_ptr<IResourcePool>& pool, bool flag);
    virtual void freeAdditionalResources(bool flag);

    // Start of a run; an exception fails the start.
    virtual void onStarting(const NodeArgumentCollection& arguments);
    // End of a run; returns only when the node's own work has ended.
    virtual void onStopping();

    // Both throw InvalidArgumentException for an unknown name. Sinks wait for an output made anew.
    virtual void removeInput(const gcstring& name);
    virtual void removeOutput(const gcstring& name);

    // The smallest limit among the inputs.
    [[nodiscard]] virtual std::uint64_t getMaxInputJobCount() const;
    // One job: from the values of the inputs to those of the outputs, by update.
    virtual JobResults run(const std::shared_ptr<IGraphUpdate>& update, PinValues inputs);
    // Gives up an update: jobs of it that wait are dropped, a result that still comes is discarded.
    virtual void abort(const std::shared_ptr<IGraphUpdate>& update);

    virtual void onInputTypeConfigured(const gcstring& name, const Utils::TypeInfo& type);
    virtual void onInputTypeUnconfigured(const gcstring& name);

    // The pool is kept for the three services below; a null pool gives the process-wide ones.
    explicit NodeBase(const std::shared_ptr<IResourcePool>& pool);

    // Makes the given lock the node's lock; once, before the pins are made.
    void setLock(const std::shared_ptr<Threading::IRecursiveLockable>& lock);
    [[nodiscard]] std::shared_ptr<Threading::IRecursiveLockable> getLock() const;
    [[nodiscard]] NodeState getState() const;

    // To be called with the node's lock free.
    void notifySettingsChanged();
    // Add or remove an entry of the error set; false if nothing changed.
    bool setError(const std::shared_ptr<IError>& error);
    bool resetError(const std::shared_ptr<IError>& error);

    [[nodiscard]] std::shared_ptr<IBufferProvider> getBufferProvider() const;
    [[nodiscard]] std::shared_ptr<Threading::IThreadPool> getThreadPool() const;

    class Impl;
    [[nodiscard]] Impl& impl() const noexcept { return *impl_; }

private:
    friend class NodeDriver;

    std::shared_ptr<Impl> impl_;
};

}  // namespace Orlix::DataProcessing::Core
