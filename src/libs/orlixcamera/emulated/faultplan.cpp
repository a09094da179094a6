#include "orlixcamera/emulated/faultplan.h"

#include <algorithm>
#include <iterator>

namespace Orlix::Emulated {
namespace {

bool includes(const FaultRule& rule, std::uint64_t frameId) {
    return rule.occasion == Occasion::Frame && frameId >= rule.firstFrame &&
           frameId <= rule.lastFrame && (frameId - rule.firstFrame) % rule.frameStep == 0;
}

// A name without its selector value stands for all of them.
bool concerns(const FaultRule& rule, std::string_view registerName) {
    return rule.feature == registerName ||
           rule.feature == registerName.substr(0, registerName.find(" of "));
}

void add(const FaultRule& rule, FrameFaults& faults) {
    switch (rule.fault) {
        case Fault::MissingPackets:
            faults.missingPackets += static_cast<std::uint64_t>(rule.amount);
            break;
        case Fault::ResentPackets:
            faults.resentPackets += static_cast<std::uint64_t>(rule.amount);
            break;
        case Fault::WrongSize:
            faults.sizeChange += rule.amount;
            break;
        case Fault::BadTrailer:
            faults.badTrailer = true;
            break;
        case Fault::LostEnd:
            faults.lostEnd = true;
            break;
        case Fault::CutChunk:
            faults.cutChunk = true;
            break;
        case Fault::UnknownChunk:
            faults.unknownChunk = true;
            break;
        case Fault::Late:
            faults.late += rule.duration;
            break;
        case Fault::Events:
            faults.events += static_cast<std::uint64_t>(rule.amount);
            break;
        case Fault::Unplug:
            faults.unplug = true;
            faults.unplugged = rule.duration;
            break;
        case Fault::Refuse:
        case Fault::TimeOut:
        case Fault::InUse:
            break;  // the parser lets none through
    }
}

}  // namespace

void FaultPlan::Load(const std::vector<FaultRule>& rules, std::uint32_t camera) {
    rules_.clear();
    std::copy_if(rules.begin(), rules.end(), std::back_inserter(rules_),
                 [&](const FaultRule& rule) { return rule.camera == 0 || rule.camera == camera; });
    done_.assign(rules_.size(), false);
    hasUnknownChunk_ = std::any_of(rules_.begin(), rules_.end(), [](const FaultRule& rule) {
        return rule.fault == Fault::UnknownChunk;
    });
    hasAccess_ = std::any_of(rules_.begin(), rules_.end(), [](const FaultRule& rule) {
        return rule.occasion == Occasion::Read || rule.occasion == Occasion::Write;
    });
}

FrameFaults FaultPlan::TakeFrame(std::uint64_t frameId) {
    FrameFaults faults;
    for (std::size_t index = 0; index < rules_.size(); ++index) {
        if (includes(rules_[index], frameId)) {
            if (const FaultRule* const rule = TakeRule(index)) {
                add(*rule, faults);
            }
        }
    }
    return faults;
}

std::vector<FaultRule> FaultPlan::Take(Occasion occasion, std::string_view registerName) {
    std::vector<FaultRule> rules;
    const bool isAccess = occasion == Occasion::Read || occasion == Occasion::Write;
    for (std::size_t index = 0; (hasAccess_ || !isAccess) && index < rules_.size(); ++index) {
        if (rules_[index].occasion == occasion &&
            (!isAccess || concerns(rules_[index], registerName))) {
            if (const FaultRule* const rule = TakeRule(index)) {
                rules.push_back(*rule);
            }
        }
    }
    return rules;
}

const FaultRule* FaultPlan::TakeRule(std::size_t index) {
    if (done_[index]) {
        return nullptr;
    }
    done_[index] = rules_[index].once;
    return &rules_[index];
}

}  // namespace Orlix::Emulated
