#include "orlixdataprocessingcore/graph/connection.h"

#include "orlixdataprocessingcore/graph/graphnode.h"

namespace Orlix::DataProcessing::Core {

Connection::Connection(ConnectionEnds ends, std::shared_ptr<GraphNode> from,
                       std::shared_ptr<GraphNode> to, const ConnectionLimits& limits)
    : ends_(std::move(ends)),
      from_(std::move(from)),
      to_(std::move(to)),
      needed_(limits.needed),
      capacity_(limits.capacity) {}

void Connection::put(const std::shared_ptr<IGraphUpdate>& update, const Utils::Variant& value) {
    putLast(std::shared_ptr<IGraphUpdate>(update), Utils::Variant(value));
}

void Connection::putLast(std::shared_ptr<IGraphUpdate>&& update, Utils::Variant&& value) {
    to_->arrive(*this, update, value);
}

void Connection::skip(const std::shared_ptr<IGraphUpdate>& update) {
    putLast(std::shared_ptr<IGraphUpdate>(update), Utils::Variant());
}

bool Connection::hasSpace() const {
    return size_.load(std::memory_order_acquire) < capacity_ || unlimited_ ||
           to_->join.askForSpace(*this);
}

void Connection::tellSpace() {
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
