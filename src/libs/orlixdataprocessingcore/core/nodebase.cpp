#include "orlixdataprocessingcore/core/nodebase.h"

#include "gcbase/gcexception.h"
#include "orlixdataprocessingcore/core/nodebase_impl.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/services.h"

namespace Orlix::DataProcessing::Core {

NodeBase::NodeBase(const std::shared_ptr<IResourcePool>& pool)
    : impl_(std::make_shared<Impl>(*this, pool)) {}

NodeBase::~NodeBase() = default;

Utils::TypeInfo NodeBase::getTypeInfo(bool throwOnError) const {
    return Utils::TypeInfo::getTypeInfo<NodeBase>(throwOnError);
}

const void* NodeBase::getRawPointer() const {
    return this;
}

void* NodeBase::getRawPointer() {
    return this;
}

bool NodeBase::isForwardingUpdates() const {
    return false;
}

// Inputs

std::vector<InputDescriptor> NodeBase::getInputDescriptors() {
    return impl().inputs.descriptors();
}

std::shared_ptr<VoidSignal> NodeBase::getInputsChangedSignal() const {
    return impl().inputsChanged.get();
}

std::shared_ptr<IHandle> NodeBase::configureInputType(const gcstring& name,
                                                      const Utils::TypeInfo& type) {
    auto handle = impl().inputs.configure(name, type);
    try {
        onInputTypeConfigured(name, type);
    } catch (...) {
        if (impl().inputs.isConfigured(handle)) {
            static_cast<void>(impl().inputs.unconfigure(handle));
        }
        throw;
    }
    return handle;
}

void NodeBase::unconfigureInputType(const std::shared_ptr<IHandle>& handle) {
    onInputTypeUnconfigured(impl().inputs.unconfigure(handle));
}

bool NodeBase::isConfigured(const std::shared_ptr<IHandle>& handle) const {
    return impl().inputs.isConfigured(handle);
}

bool NodeBase::canConfigure(const gcstring& name) const {
    return impl().inputs.canConfigure(name);
}

void NodeBase::setAutoResetEnabled(const gcstring& name, bool enabled) {
    if (impl().inputs.setAutoReset(name, enabled)) {
        impl().autoResetChanged.emit(name);
    }
}

bool NodeBase::isAutoResetEnabled(const gcstring& name) const {
    return impl().inputs.isAutoReset(name);
}

std::shared_ptr<TextSignal> NodeBase::getAutoResetChangedSignal() const {
    return impl().autoResetChanged.get();
}

std::uint64_t NodeBase::getMaxInputJobCount() const {
    return impl().inputs.smallestJobCount();
}

void NodeBase::removeInput(const gcstring& name) {
    impl().inputs.remove(name);
    impl().bindings.unbindInput(name);
    impl().inputsChanged.emit();
}

void NodeBase::onInputTypeConfigured(const gcstring&, const Utils::TypeInfo&) {}

void NodeBase::onInputTypeUnconfigured(const gcstring&) {}

// Outputs

std::vector<OutputDescriptor> NodeBase::getOutputDescriptors() {
    return impl().outputs.descriptors();
}

std::shared_ptr<VoidSignal> NodeBase::getOutputsChangedSignal() const {
    return impl().outputsChanged.get();
}

std::shared_ptr<IHandle> NodeBase::attachOutputSink(const gcstring& name,
                                                    const std::shared_ptr<IOutputSink>& sink) {
    return impl().outputs.attach(name, sink, impl().weak_from_this());
}

void NodeBase::detachOutputSink(const std::shared_ptr<IHandle>& handle) {
    impl().outputs.detach(handle);
    impl().onSpaceAvailable();  // a sink that was full holds nobody back any more
}

bool NodeBase::isOutputSinkAttached(const std::shared_ptr<IHandle>& handle) const {
    return impl().outputs.isAttached(handle);
}

void NodeBase::removeOutput(const gcstring& name) {
    impl().outputs.remove(name);
    impl().bindings.unbindOutput(name);
    impl().onSpaceAvailable();
    impl().outputsChanged.emit();
}

// Life

std::vector<std::shared_ptr<IError>> NodeBase::allocateResources() {
    return impl().allocate();
}

void NodeBase::freeResources() {
    impl().free();
}

void NodeBase::start(const NodeArgumentCollection& arguments) {
    impl().start(arguments);
}

void NodeBase::stop() {
    impl().stop();
}

NodeState NodeBase::getState() {
    return impl().state();
}

NodeState NodeBase::getState() const {
    return impl().state();
}

std::shared_ptr<VoidSignal> NodeBase::getStateChangedSignal() const {
    return impl().stateChanged.get();
}

void NodeBase::cleanup() {
    impl().cleanup();
}

std::vector<std::shared_ptr<IError>> NodeBase::allocateAdditionalResources(
    const std::shared_ptr<IResourcePool>&, bool) {
    return {};
}

void NodeBase::freeAdditionalResources(bool) {}

void NodeBase::onStarting(const NodeArgumentCollection&) {}

void NodeBase::onStopping() {}

void NodeBase::setLock(const std::shared_ptr<Threading::IRecursiveLockable>& lock) {
    impl().setLock(lock);
}

std::shared_ptr<Threading::IRecursiveLockable> NodeBase::getLock() const {
    return impl().lock;
}

// Jobs

bool NodeBase::canExecute() const {
    return impl().canExecute();
}

std::shared_ptr<VoidSignal> NodeBase::getCanExecuteSignal() const {
    return impl().canExecuteChanged.get();
}

StartExecutionResult NodeBase::startExecution(const JobProvider& provider) {
    if (!provider) {
        throw GenICam::InvalidArgumentException("No job provider passed.", __FILE__, __LINE__);
    }
    return impl().execute(provider);
}

std::shared_ptr<UpdateSignal> NodeBase::getExecutionStartedSignal() const {
    return impl().executionStarted.get();
}

std::shared_ptr<FinishingSignal> NodeBase::getExecutionFinishingSignal() const {
    return impl().executionFinishing.get();
}

std::shared_ptr<UpdateSignal> NodeBase::getExecutionFinishedSignal() const {
    return impl().executionFinished.get();
}

// Those that override it move the values out.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
JobResults NodeBase::run(const std::shared_ptr<IGraphUpdate>&, PinValues) {
    return {};
}

void NodeBase::abort(const std::shared_ptr<IGraphUpdate>& update) {
    impl().abort(update);
}

// Errors and settings

bool NodeBase::hasError() const {
    return impl().errors.any();
}

ErrorSet NodeBase::getErrors() {
    return impl().errors.all();
}

std::shared_ptr<ErrorSignal> NodeBase::getErrorChangedSignal() const {
    return impl().errors.changedSignal();
}

bool NodeBase::setError(const std::shared_ptr<IError>& error) {
    return impl().errors.set(error);
}

bool NodeBase::resetError(const std::shared_ptr<IError>& error) {
    return impl().errors.reset(error);
}

std::shared_ptr<VoidSignal> NodeBase::getSettingsChangedSignal() const {
    return impl().settingsChanged.get();
}

void NodeBase::notifySettingsChanged() {
    impl().settingsChanged.emit();
}

// Services

std::shared_ptr<IBufferProvider> NodeBase::getBufferProvider() const {
    return impl().pool ? impl().pool->getBufferProvider() : getDefaultBufferProvider();
}

std::shared_ptr<Threading::IThreadPool> NodeBase::getThreadPool() const {
    return impl().pool ? impl().pool->getThreadPool() : getDefaultThreadPool();
}

}  // namespace Orlix::DataProcessing::Core
