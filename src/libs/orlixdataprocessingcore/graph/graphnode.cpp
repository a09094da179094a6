#include "orlixdataprocessingcore/graph/graphnode.h"

#include "orlixdataprocessingcore/core/nodebase.h"
#include "orlixdataprocessingcore/core/nodedriver.h"
#include "orlixdataprocessingcore/core/nodelog.h"
#include "orlixdataprocessingcore/graph/connection.h"

namespace Orlix::DataProcessing::Core {

namespace {

// Jobs in a row while they are short: a turn at the queue costs as much as several of them.
constexpr unsigned int longestBatch = 64;
// Every so many turns the length of a job is measured; reading the clock costs something too.
constexpr unsigned int turnsPerMeasurement = 16;
// A job of this length is worth another thread at once.
constexpr std::chrono::microseconds longJob{20};
// Jobs up to this length are not worth one even in batches.
constexpr std::chrono::microseconds lightJob{2};

}  // namespace

GraphNode::GraphNode(const gcstring& name, const std::shared_ptr<INode>& node,
                     const std::shared_ptr<Threading::Activity>& activity)
    : name_(name),
      node_(node),
      base_(dynamic_cast<NodeBase*>(node.get())),
      activity_(activity),
      provider_([this](std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
          return takeJob(update, values);
      }) {}

void GraphNode::connectInput(Connection& connection) {
    isSource_ = false;
    join.add(connection);
}

std::uint64_t GraphNode::failedJobs() const {
    return base_ != nullptr ? NodeDriver::failedJobs(*base_) : 0;
}

void GraphNode::arrive(Connection& connection, std::shared_ptr<IGraphUpdate>& update,
                       Utils::Variant& value) {
    if (join.arrive(connection, update, value)) {
        schedule(connection.from());
    }
}

void GraphNode::wake() {
    if (join.wake()) {
        schedule(nullptr);
    }
}

void GraphNode::setKeepsLastValue(Connection& connection, bool keeps) {
    if (join.setKeepsLastValue(connection, keeps)) {
        schedule(nullptr);
    }
}

void GraphNode::schedule(const GraphNode* producer) {
    Threading::Scheduler::instance().schedule(*this, producer);
}

GraphNode::Turn GraphNode::serve() noexcept {
    using Clock = std::chrono::steady_clock;
    const bool measured = weight_ == Weight::Long || turns_++ % turnsPerMeasurement == 0;
    const unsigned int longest = measured ? 1 : longestBatch;
    for (unsigned int done = 0; done < longest;) {
        const auto begin = measured ? Clock::now() : Clock::time_point();
        const Step step = stepUpTo(longest, done);
        if (measured && step == Step::Progress) {
            weigh(Clock::now() - begin);
        }
        // At rest, another thread may schedule the node anew, so nothing of it is touched then.
        const bool rests = step == Step::Busy ? join.block() : !join.hasMore() && join.retire();
        if (rests) {
            return Turn::Done;
        }
    }
    return weight_ == Weight::Long ? Turn::Again : Turn::AgainSoon;
}

void GraphNode::weigh(std::chrono::steady_clock::duration job) {
    const Weight former = weight_;
    weight_ = job > longJob ? Weight::Long : job > lightJob ? Weight::Short : Weight::Light;
    if (former == Weight::Light && weight_ == Weight::Long) {
        // More likely its thread was interrupted: the next turn, measured again, will tell.
        weight_ = Weight::Short;
        turns_ = 0;
    }
}

// As many steps as the queues allow, and one at least; `done` counts them.
GraphNode::Step GraphNode::stepUpTo(unsigned int longest, unsigned int& done) {
    const NodeDriver::Reservation reservation(base_);
    Step step = Step::Progress;
    do {
        step = this->step();
        ++done;
    } while (step == Step::Progress && join.hasMore() && done < longest);
    return step;
}

GraphNode::Step GraphNode::step() {
    asked_ = false;
    const StartExecutionResult result = callNode();
    if (result == StartExecutionResult::Busy) {
        return Step::Busy;
    }
    if (!asked_) {
        dropSet();  // the node is stopped, or has failed before it asked: its values must not wait
    }
    if (skipped_) {
        passSkip();
    }
    return Step::Progress;
}

StartExecutionResult GraphNode::callNode() {
    StartExecutionResult result = StartExecutionResult::NotRunning;
    guarded(node_.get(), "executing a job", [&] { result = node_->startExecution(provider_); });
    return result;
}

bool GraphNode::takeJob(std::shared_ptr<IGraphUpdate>& update, PinValues& values) {
    asked_ = true;
    switch (join.take(update, values)) {
        case Taken::Job:
            return true;
        case Taken::Skipped:
            skipped_ = std::move(update);
            return false;
        case Taken::Nothing:
            break;
    }
    return false;
}

void GraphNode::disconnectOutput(const std::shared_ptr<IOutputSink>& sink) {
    std::erase_if(outputs_, [&](const auto& output) { return output.lock() == sink; });
}

void GraphNode::dropSet() {
    std::shared_ptr<IGraphUpdate> update;
    if (join.drop(update) == Taken::Skipped) {
        skipped_ = std::move(update);
    }
}

// An update that a forwarding node will not pass on is told to those behind it.
void GraphNode::passSkip() {
    const std::shared_ptr<IGraphUpdate> update = std::move(skipped_);
    skipped_.reset();
    if (!node_->isForwardingUpdates()) {
        return;
    }
    if (base_ != nullptr) {
        NodeDriver::skip(*base_, update);
        return;
    }
    for (const auto& output : outputs_) {
        if (const auto sink = output.lock()) {
            sink->skip(update);
        }
    }
}

}  // namespace Orlix::DataProcessing::Core
