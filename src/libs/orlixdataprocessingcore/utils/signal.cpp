#include "orlixdataprocessingcore/utils/signal.h"

#include <utility>

#include "orlixdataprocessingcore/utils/failure.h"

namespace Orlix::DataProcessing::Utils {

IConnection::~IConnection() = default;

namespace Detail {

namespace {

CatId getCatIdSlotCombiner() {
    static const CatId id = getCatId("orlix.dataprocessing.utils.SlotCombiner");
    return id;
}

// The innermost emission of each thread.
thread_local EmissionFrame* innermost = nullptr;

}  // namespace

EmissionFrame::EmissionFrame() noexcept : previous_(std::exchange(innermost, this)) {}

EmissionFrame::~EmissionFrame() {
    innermost = previous_;
}

void EmissionFrame::park(const void* list, std::int64_t step) noexcept {
    for (const EmissionFrame* frame = innermost; frame != nullptr; frame = frame->previous_) {
        frame->parkHere(list, step);
    }
}

bool EmissionFrame::isRunning(const void* connection) noexcept {
    for (const EmissionFrame* frame = innermost; frame != nullptr; frame = frame->previous_) {
        if (frame->isRunningHere(connection)) {
            return true;
        }
    }
    return false;
}

void logSlotException(const void* combiner, const char* message) {
    logCaught({"SlotCombiner", combiner, getCatIdSlotCombiner()}, "invoking a slot", message);
}

}  // namespace Detail

ScopedConnection::ScopedConnection(std::shared_ptr<IConnection> connection,
                                   bool waitForRunningCalls)
    : connection_(std::move(connection)), waitForRunningCalls_(waitForRunningCalls) {}

ScopedConnection::ScopedConnection(ScopedConnection&& other) noexcept
    : connection_(std::exchange(other.connection_, nullptr)),
      waitForRunningCalls_(other.waitForRunningCalls_) {}

ScopedConnection& ScopedConnection::operator=(ScopedConnection&& other) noexcept {
    if (this != &other) {
        set(std::exchange(other.connection_, nullptr), other.waitForRunningCalls_);
    }
    return *this;
}

ScopedConnection::~ScopedConnection() {
    reset();
}

void ScopedConnection::set(std::shared_ptr<IConnection> connection, bool waitForRunningCalls) {
    if (connection == connection_) {
        waitForRunningCalls_ = waitForRunningCalls;
        return;
    }
    reset();
    connection_ = std::move(connection);
    waitForRunningCalls_ = waitForRunningCalls;
}

void ScopedConnection::reset() noexcept {
    // Taken out first: the wait can let a slot run that looks at this object.
    const std::shared_ptr<IConnection> connection = std::exchange(connection_, nullptr);
    if (connection == nullptr) {
        return;
    }
    // Disconnected first: a slot that still runs may unblock its connection, but not connect it.
    connection->disconnect();
    if (waitForRunningCalls_) {
        connection->setBlocked(false, true);
    }
}

}  // namespace Orlix::DataProcessing::Utils
