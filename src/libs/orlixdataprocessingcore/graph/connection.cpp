#include "orlixdataprocessingcore/graph/connection.h"

#include "orlixdataprocessingcore/graph/graphnode.h"

namespace Orlix::DataProcessing::Core {

Connection::Connection(ConnectionEnds ends, std::shared_ptr<GraphNode> from,
                       std::shared_ptr<GraphNode> to, bool needed, std::size_t capacity)
    : ends_(std::move(ends)),
      from_(std::move(from)),
      to_(std::move(to)),
      needed_(needed),
      capacity_(capacity),
      lowMark_(capacity / 2) {}

void Connection::put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) {
    to_->arrive(*this, update, value);
}

void Connection::skip(const std::shared_ptr<IGraphUpdate>& update) {
    to_->arrive(*this, update, Utils::Variant());
}

bool Connection::hasSpace() const {
    if (size_.load() < capacity_ || unlimited_.load()) {
        return true;
    }
    // Either the consumer sees the mark when it takes the next values, or it has taken them by now.
    starved_.store(true);
    return size_.load() <= lowMark_;
}

void Connection::tellSpace() {
    if (!starved_.load() || size_.load() > lowMark_ || !starved_.exchange(false)) {
        return;
    }
    std::shared_ptr<ISpaceListener> listener;
    {
        std::lock_guard guard(listenerMutex_);
        listener = listener_.lock();
    }
    if (listener) {
        listener->onSpaceAvailable();
    }
}

void Connection::setSpaceListener(const std::weak_ptr<ISpaceListener>& listener) {
    std::lock_guard guard(listenerMutex_);
    listener_ = listener;
}

}  // namespace Orlix::DataProcessing::Core
