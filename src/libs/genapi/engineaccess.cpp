// What may be done with a node now. Not implemented beats not available beats locked; then comes
// the mode of the register or of the target, and what the description or the user imposes narrows.
#include "genapi/engine.h"
#include "genapi/engineerror.h"

namespace GenApi::Detail {

namespace {

const char* nameOf(EAccessMode mode) {
    constexpr std::array<const char*, 5> names = {"NI", "NA", "WO", "RO", "RW"};
    return names[static_cast<std::size_t>(mode)];
}

}  // namespace

EAccessMode Engine::access(NodeId id, Ask ask) {
    denialCount_ = 0;
    const EAccessMode mode = coreAccess(id, ask);
    // Ranges count for the node that is asked for, not for those that use its value: two ranges
    // that need each other's values are no circle.
    if (IsAvailable(mode) && !rangesReadable(id)) {
        return NA;
    }
    return mode;
}

EAccessMode Engine::report(NodeId id) {
    try {
        return access(id, Ask::writing);
    } catch (const GenICam::GenericException&) {
        if (mustTravel_) {
            throw;
        }
        return NA;
    }
}

void Engine::requireReadable(NodeId id) {
    const EAccessMode mode = access(id, Ask::reading);
    if (!IsReadable(mode)) {
        GENAPI_THROW(AccessException, says(id, std::string("is not readable, its access mode is ") +
                                                   nameOf(mode) + explainDenial()));
    }
}

void Engine::requireWritable(NodeId id) {
    const EAccessMode mode = access(id, Ask::writing);
    if (!IsWritable(mode)) {
        GENAPI_THROW(AccessException, says(id, std::string("is not writable, its access mode is ") +
                                                   nameOf(mode) + explainDenial()));
    }
}

void Engine::imposeAccess(NodeId id, EAccessMode mode) {
    nodes_[id].imposedAccess = static_cast<std::uint8_t>(
        Combine(static_cast<EAccessMode>(nodes_[id].imposedAccess), mode));
    touch(id);
}

EAccessMode Engine::deny(NodeId id, Denial why, NodeId culprit, EAccessMode mode) {
    if (denialCount_ < denials_.size()) {
        denials_[denialCount_++] = {id, culprit, why};
    }
    return mode;
}

std::string Engine::explainDenial(std::size_t mark) const {
    std::string text;
    for (std::size_t i = denialCount_; i > mark; --i) {
        text += ": " + textOf(i - 1);
    }
    return text + ".";
}

std::string Engine::textOf(std::size_t denial) const {
    const DenialStep& step = denials_[denial];
    const auto quoted = [&](NodeId id) { return "'" + std::string(d_->nameOf(id)) + "'"; };
    const std::string node = quoted(step.node);
    const std::string culprit = step.culprit == noNode ? "" : quoted(step.culprit);
    switch (step.why) {
        case Denial::broken:
            return node + " is not available, " +
                   std::string(d_->text(d_->nodes[step.node].broken));
        case Denial::notImplemented:
            return node + " is not implemented, as " + culprit + " says";
        case Denial::notAvailable:
            return node + " is not available, as " + culprit + " says";
        case Denial::locked:
            return node + " is locked by " + culprit;
        case Denial::mode:
            return node + " is for writing only";
        case Denial::imposed:
            return "the mode of " + node + " is imposed";
        case Denial::notConnected:
            return "the port " + node + " is not connected";
        case Denial::link:
            return node + " needs " + culprit + ", which is not readable";
        case Denial::failed:
            // Without its point.
            return failure_.substr(0, failure_.find_last_not_of('.') + 1);
        case Denial::table:
            return node + " has no value for the index in " + culprit;
        case Denial::none:
            break;
    }
    return "";
}

EAccessMode Engine::coreAccess(NodeId id, Ask ask) {
    // Most nodes are registers at a fixed place that only their port decides about.
    if (isUnconditional(id) && isRegister(node(id).kind)) {
        const RegisterDetail& detail = registerOf(id);
        if (detail.fixedPlace && isUnconditional(detail.port)) {
            const EAccessMode port = portAccess(detail.port);
            return IsAvailable(port) ? Combine(static_cast<EAccessMode>(detail.access), port)
                                     : port;
        }
    }
    return conditionalAccess(id, ask);
}

EAccessMode Engine::conditionalAccess(NodeId id, Ask ask) {
    const Visit visit(*this, id, ask == Ask::reading ? busyReading : busyWriting);
    const Node& self = node(id);
    if (self.broken.count != 0) {
        return deny(id, Denial::broken, noNode, NA);
    }
    if (self.implemented.count != 0) {
        const EAccessMode implemented = implementedAccess(id);
        if (!IsAvailable(implemented)) {
            return implemented;
        }
    }
    for (const NodeId link : d_->list(self.available)) {
        if (condition(link) != Condition::yes) {
            return deny(id, Denial::notAvailable, link, NA);
        }
    }
    EAccessMode mode = sourceAccess(id, ask);
    if (ask == Ask::writing && IsWritable(mode)) {
        for (const NodeId link : d_->list(self.locked)) {
            if (condition(link) != Condition::no) {
                mode = deny(id, Denial::locked, link, mode == RW ? RO : NA);
                break;
            }
        }
    }
    const auto imposed = Combine(static_cast<EAccessMode>(self.imposedAccess),
                                 static_cast<EAccessMode>(nodes_[id].imposedAccess));
    const EAccessMode combined = Combine(mode, imposed);
    return combined == mode ? mode : deny(id, Denial::imposed, noNode, combined);
}

// What the device has is fixed, so one good answer serves for good.
EAccessMode Engine::implementedAccess(NodeId id) {
    NodeState& state = nodes_[id];
    if (state.implemented == Implemented::yes) {
        return RW;
    }
    for (const NodeId link : d_->list(node(id).implemented)) {
        const Condition answer =
            state.implemented == Implemented::no ? Condition::no : condition(link);
        if (answer == Condition::no) {
            state.implemented = Implemented::no;
            return deny(id, Denial::notImplemented, link, NI);
        }
        if (answer == Condition::unreadable) {
            return deny(id, Denial::link, link, NA);
        }
    }
    state.implemented = Implemented::yes;
    return RW;
}

Engine::Condition Engine::condition(NodeId link) {
    const std::size_t mark = denialCount_;
    try {
        if (!IsReadable(coreAccess(link, Ask::reading))) {
            return Condition::unreadable;
        }
        denialCount_ = mark;
        const bool holds =
            valueTypeOf(node(link).kind) == ValueType::real ? real(link) != 0 : integer(link) != 0;
        return holds ? Condition::yes : Condition::no;
    } catch (const GenICam::GenericException& error) {
        if (mustTravel_) {
            throw;
        }
        denialCount_ = mark;
        failure_ = error.GetDescription();
        deny(link, Denial::failed, noNode, NA);
        return Condition::unreadable;
    }
}

bool Engine::linkReadable(NodeId owner, NodeId link) {
    const std::size_t mark = denialCount_;
    const EAccessMode mode = link == noNode ? RO : coreAccess(link, Ask::reading);
    if (IsReadable(mode)) {
        denialCount_ = mark;
        return true;
    }
    if (mode == WO && denialCount_ == mark) {
        deny(link, Denial::mode, noNode, mode);
    }
    deny(owner, Denial::link, link, NA);
    return false;
}

bool Engine::rangesReadable(NodeId id) {
    const Kind kind = node(id).kind;
    if (kind != Kind::integer && kind != Kind::floating) {
        return true;
    }
    const NumberDetail& detail = d_->numbers[node(id).detail];
    return linkReadable(id, detail.minimum.link) && linkReadable(id, detail.maximum.link) &&
           linkReadable(id, detail.increment.link);
}

EAccessMode Engine::sourceAccess(NodeId id, Ask ask) {
    const Node& self = node(id);
    switch (self.kind) {
        case Kind::category:
        case Kind::enumEntry:
            return RO;
        case Kind::port:
            return portAccess(id);
        case Kind::configText:
        case Kind::configInteger:
            return linkReadable(id, d_->configKeys[self.detail].rom) ? RO : NA;
        case Kind::integer:
        case Kind::floating:
            return numberAccess(id, ask);
        case Kind::command:
            // Without a register there is nothing that tells how far it is.
            return self.value == noNode ? WO : coreAccess(self.value, ask);
        default:
            break;
    }
    if (isRegister(self.kind)) {
        return registerAccess(id);
    }
    if (isFormula(self.kind)) {
        return formulaAccess(id, ask);
    }
    return self.value == noNode ? RW : coreAccess(self.value, ask);
}

EAccessMode Engine::numberAccess(NodeId id, Ask ask) {
    const NumberDetail& detail = d_->numbers[node(id).detail];
    if (detail.index == noNode && detail.copiesBefore.count + detail.copiesAfter.count == 0) {
        return node(id).value == noNode ? RW : coreAccess(node(id).value, ask);
    }
    if (detail.index != noNode) {
        if (!linkReadable(id, detail.index)) {
            return NA;
        }
        const Number source = sourceOf(id);
        if (!source.given) {
            return deny(id, Denial::table, detail.index, NA);
        }
        return source.link == noNode ? RO : coreAccess(source.link, ask);
    }
    EAccessMode mode = node(id).value == noNode ? RW : coreAccess(node(id).value, ask);
    for (const Slice list : {detail.copiesBefore, detail.copiesAfter}) {
        for (const NodeId copy : d_->list(list)) {
            // A copy is written, never read.
            const EAccessMode other = coreAccess(copy, ask);
            if (!IsAvailable(other)) {
                return other;
            }
            const bool writable =
                IsWritable(other) && (ask == Ask::reading || node(id).value == noNode ||
                                      increment(copy) == increment(node(id).value));
            if (!writable && IsWritable(mode)) {
                mode = deny(id, Denial::link, copy, mode == RW ? RO : NA);
            }
        }
    }
    return mode;
}

EAccessMode Engine::registerAccess(NodeId id) {
    const RegisterDetail& detail = registerOf(id);
    const EAccessMode port = coreAccess(detail.port, Ask::reading);
    if (!IsAvailable(port)) {
        return port == NI ? NI : NA;
    }
    for (std::uint32_t i = 0; i < detail.terms.count; ++i) {
        const AddressTerm& term = d_->terms[detail.terms.begin + i];
        if (!linkReadable(id, term.node) || !linkReadable(id, term.offsetNode)) {
            return NA;
        }
    }
    if (!linkReadable(id, detail.length.link)) {
        return NA;
    }
    return Combine(static_cast<EAccessMode>(detail.access), port);
}

EAccessMode Engine::portAccess(NodeId id) {
    IPort* port = connected(id);
    if (port == nullptr) {
        return deny(id, Denial::notConnected, noNode, NA);
    }
    EAccessMode mode = NA;
    throughPort([&] { mode = port->GetAccessMode(); });
    return mode;
}

}  // namespace GenApi::Detail
