#include "orlixdataprocessingcore/core/nodeerrors.h"

#include <functional>

namespace Orlix::DataProcessing::Core {

bool ErrorComparer::operator()(const std::shared_ptr<IError>& a,
                               const std::shared_ptr<IError>& b) const {
    if (!a || !b) {
        return !a && b;
    }
    const auto timeOfA = a->getTimestamp();
    const auto timeOfB = b->getTimestamp();
    if (timeOfA < timeOfB) {
        return true;
    }
    return !(timeOfB < timeOfA) && std::less<const IError*>()(a.get(), b.get());
}

bool NodeErrors::set(const std::shared_ptr<IError>& error) {
    ErrorSet before;
    ErrorSet after;
    {
        std::lock_guard guard(mutex_);
        if (!error || contains(error)) {
            return false;
        }
        before = errors_;
        errors_.insert(error);
        after = errors_;
    }
    changed_.emit(before, after);
    return true;
}

bool NodeErrors::reset(const std::shared_ptr<IError>& error) {
    ErrorSet before;
    ErrorSet after;
    {
        std::lock_guard guard(mutex_);
        if (!error || !contains(error)) {
            return false;
        }
        before = errors_;
        errors_.erase(error);
        after = errors_;
    }
    changed_.emit(before, after);
    return true;
}

void NodeErrors::setJobError(const std::shared_ptr<IError>& error) {
    ErrorSet before;
    ErrorSet after;
    {
        std::lock_guard guard(mutex_);
        before = errors_;
        if (jobError_) {
            errors_.erase(jobError_);
        }
        jobError_ = error;
        if (error && !contains(error)) {
            errors_.insert(error);
        }
        hasJobError_.store(error != nullptr, std::memory_order_release);
        after = errors_;
    }
    changed_.emit(before, after);
}

bool NodeErrors::any() const {
    std::lock_guard guard(mutex_);
    return !errors_.empty();
}

ErrorSet NodeErrors::all() const {
    std::lock_guard guard(mutex_);
    return errors_;
}

bool NodeErrors::contains(const std::shared_ptr<IError>& error) const {
    return errors_.find(error) != errors_.end();
}

}  // namespace Orlix::DataProcessing::Core
