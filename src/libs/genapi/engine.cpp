// State, invalidation, polling. Values, access, ranges, writing and registers have files of their
// own: engine*.cpp.
#include "genapi/engine.h"

#include <algorithm>
#include <limits>

#include "genapi/engineerror.h"

namespace GenApi::Detail {

Engine::Engine(std::shared_ptr<const Description> description)
    : d_(std::move(description)),
      nodes_(d_->nodes.size()),
      registers_(d_->registers.size()),
      hasBytes_(d_->registers.size(), 0),
      ports_(d_->ports.size()),
      heldNumbers_(d_->heldNumbers),
      heldTexts_(d_->heldTexts),
      pollElapsed_(d_->polled.size(), 0),
      variablesSeen_(d_->formulas.size(), 0) {
    for (std::size_t i = 0; i < d_->registerNodes.size(); ++i) {
        nodes_[d_->registerNodes[i]].reg = static_cast<std::uint32_t>(i);
    }
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
    // Innermost first.
    std::vector<NodeId> way;
    for (const Path* step = path_; step != nullptr; step = step->outer()) {
        if (step->id() != (way.empty() ? id : way.back())) {
            way.push_back(step->id());
        }
    }
    const auto quoted = [&](NodeId node) { return "'" + std::string(d_->nameOf(node)) + "'"; };
    std::string text;
    if (!way.empty()) {
        text = "Node " + quoted(way.back()) + " leads ";
        // Of an endless way the ends are enough.
        constexpr std::size_t most = 8;
        for (std::size_t i = way.size() - 1; i-- > 0;) {
            if (i >= most && way.size() - i > most) {
                continue;
            }
            text += (i + 2 == way.size() ? "through " : ", ") + quoted(way[i]);
            text += i == most ? ", ..." : "";
        }
        text += (way.size() > 1 ? " to " : "to ") + quoted(id) + ": ";
    }
    text += "Node ";
    text += quoted(id);
    text += ' ';
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
    ++moment_;
    for (const NodeId reached : d_->closure(id)) {
        NodeState& state = nodes_[reached];
        if (state.reg != noSlot) {
            dropBytes(state.reg);
        }
        if (state.watched && !state.queued) {
            state.queued = true;
            changed_.push_back(reached);
        }
    }
}

void Engine::dropClosureBytes(NodeId id) {
    ++generation_;
    ++moment_;
    for (const NodeId reached : d_->closure(id)) {
        if (const std::uint32_t reg = nodes_[reached].reg; reg != noSlot) {
            dropBytes(reg);
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
    ++moment_;
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
            return !isWriteOnly(id);
    }
}

// Whether it, or where it takes its value, can only be written: there is nothing to poll.
bool Engine::isWriteOnly(NodeId id) const {
    for (int depth = 0; node(id).value != noNode && depth < maximumDepth; ++depth) {
        id = node(id).value;
    }
    return isRegister(node(id).kind) && registerOf(id).access == WO;
}

void Engine::connect(NodeId portNode, IPort* port) {
    PortState& state = ports_[node(portNode).detail];
    if (state.port == port) {
        return;
    }
    state.port = port;
    for (PortState& one : ports_) {
        const auto isSame = [&](const PortState& other) { return other.port == one.port; };
        one.isShared =
            one.port != nullptr && std::count_if(ports_.begin(), ports_.end(), isSame) > 1;
    }
    touch(portNode);
}

}  // namespace GenApi::Detail
