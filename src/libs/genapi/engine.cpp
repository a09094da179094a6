// State, invalidation, polling. Values, access, ranges, writing and registers have files of their
// own: engine*.cpp.
#include "genapi/engine.h"

#include <limits>

#include "genapi/engineerror.h"

namespace GenApi::Detail {

Engine::Engine(std::shared_ptr<const Description> description)
    : d_(std::move(description)),
      nodes_(d_->nodes.size()),
      registers_(d_->registers.size()),
      ports_(d_->ports.size()),
      heldNumbers_(d_->heldNumbers),
      heldTexts_(d_->heldTexts),
      pollElapsed_(d_->polled.size(), 0) {
    for (const Node& node : d_->nodes) {
        if (node.held == noSlot) {
            continue;
        }
        switch (node.kind) {
            case Kind::integer:
                heldNumbers_[node.held].integer = d_->numbers[node.detail].value.integer;
                break;
            case Kind::floating:
                heldNumbers_[node.held].real = d_->numbers[node.detail].value.real;
                break;
            case Kind::boolean:
                heldNumbers_[node.held].integer = d_->booleans[node.detail].value.integer;
                break;
            case Kind::enumeration:
                heldNumbers_[node.held].integer = d_->enumerations[node.detail].value.integer;
                break;
            case Kind::command:
                heldNumbers_[node.held].integer = d_->commands[node.detail].value.integer;
                break;
            case Kind::string:
                heldTexts_[node.held] = d_->text(d_->strings[node.detail].value);
                break;
            default:
                break;
        }
    }
}

std::string Engine::says(NodeId id, std::string_view rest) const {
    std::string text = "Node '";
    text += d_->nameOf(id);
    text += "' ";
    text += rest;
    return text;
}

void Engine::refuseVisit(NodeId id, bool circle) {
    if (circle) {
        GENAPI_THROW(RuntimeException,
                     says(id, "can not be evaluated: its links lead in a circle back to it."));
    }
    if (node(id).broken.count != 0) {
        GENAPI_THROW(AccessException,
                     says(id, "is not available, " + std::string(d_->text(node(id).broken)) + "."));
    }
    // Going on elsewhere would only cost more.
    mustTravel_ = true;
    if (stepsLeft_ == 0) {
        GENAPI_THROW(
            RuntimeException,
            says(id, "can not be evaluated: the access takes more than " +
                         std::to_string(maximumSteps) + " steps through the description."));
    }
    GENAPI_THROW(RuntimeException, says(id, "can not be evaluated: its links are deeper than " +
                                                std::to_string(maximumDepth) + "."));
}

// Drops the bytes of all that depends on the node and gathers whom to tell.
void Engine::touch(NodeId id) {
    ++generation_;
    for (const NodeId reached : d_->closure(id)) {
        if (isRegister(node(reached).kind)) {
            dropBytes(node(reached).detail);
        }
        NodeState& state = nodes_[reached];
        if (state.watched && !state.queued) {
            state.queued = true;
            changed_.push_back(reached);
        }
    }
}

void Engine::dropClosureBytes(NodeId id) {
    ++generation_;
    for (const NodeId reached : d_->closure(id)) {
        if (isRegister(node(reached).kind)) {
            dropBytes(node(reached).detail);
        }
    }
}

void Engine::invalidate(NodeId id) {
    touch(id);
    // The bytes behind a feature are what it would answer with again.
    NodeId source = node(id).value;
    for (int depth = 0; source != noNode && depth < maximumDepth; ++depth) {
        if (isRegister(node(source).kind)) {
            dropBytes(node(source).detail);
        }
        source = node(source).value;
    }
}

void Engine::invalidateAll() {
    ++generation_;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        if (isRegister(d_->nodes[i].kind)) {
            dropBytes(d_->nodes[i].detail);
        }
        if (nodes_[i].watched && !nodes_[i].queued) {
            nodes_[i].queued = true;
            changed_.push_back(static_cast<NodeId>(i));
        }
    }
}

// Two lists change places, so that neither is allocated anew for each call from outside.
std::span<const NodeId> Engine::takeChanges() {
    taken_.clear();
    taken_.swap(changed_);
    for (const NodeId id : taken_) {
        nodes_[id].queued = false;
    }
    return taken_;
}

void Engine::poll(std::int64_t milliseconds) {
    for (std::size_t i = 0; i < d_->polled.size(); ++i) {
        const NodeId id = d_->polled[i];
        const std::int64_t period = node(id).pollingTime;
        std::int64_t& elapsed = pollElapsed_[i];
        // A wait longer than all periods counts as one.
        elapsed = milliseconds > std::numeric_limits<std::int64_t>::max() - elapsed
                      ? period
                      : elapsed + milliseconds;
        if (elapsed < period) {
            continue;
        }
        elapsed = 0;
        if (isPollable(id)) {
            invalidate(id);
        }
    }
}

bool Engine::isPollable(NodeId id) {
    const NodeId block = node(id).blockPolling;
    if (block != noNode && condition(block) == Condition::yes) {
        return false;
    }
    switch (node(id).kind) {
        case Kind::command:
            if (nodes_[id].running) {
                // Asking tells those who wait when it comes to its end.
                (void)isDone(id);
            }
            return false;
        case Kind::enumeration: {
            if (!IsReadable(access(id, Ask::reading))) {
                return false;
            }
            const NodeId entry = currentEntry(id);
            return entry != noNode && d_->entries[node(entry).detail].selfClearing;
        }
        default:
            return !isRegister(node(id).kind) || registerOf(id).access != WO;
    }
}

void Engine::connect(NodeId portNode, IPort* port) {
    PortState& state = ports_[node(portNode).detail];
    if (state.port != port) {
        state.port = port;
        touch(portNode);
    }
}

}  // namespace GenApi::Detail
