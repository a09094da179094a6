#include "anythingtonodemapadapter/multiparameterportdemultiplexer.h"

#include <algorithm>

#include "anythingtonodemapadapter/basicnodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

namespace {

// Written so that no sum can overflow, whatever the address.
bool contains(const CParameterEntry& entry, std::int64_t address, std::int64_t length) {
    return length >= 0 && address >= entry.start && length <= entry.length &&
           address - entry.start <= entry.length - length;
}

}  // namespace

void CMultiParameterPortDemultiplexer::add(CBasicNodeMapPort& port) {
    if (!sorted_) {
        entries_.push_back({port.registerStart(), port.registerLength(), &port});
    }
}

void CMultiParameterPortDemultiplexer::remove(const CBasicNodeMapPort& port) {
    // A failed rebuild may have given the port another block, so its own record goes first.
    auto found = std::find_if(entries_.begin(), entries_.end(),
                              [&port](const auto& entry) { return entry.port == &port; });
    if (found == entries_.end()) {
        found = std::find_if(entries_.begin(), entries_.end(), [&port](const auto& entry) {
            return contains(entry, port.registerStart(), port.registerLength());
        });
    }
    if (found != entries_.end()) {
        found->port = nullptr;
    }
}

void CMultiParameterPortDemultiplexer::sort() {
    std::sort(entries_.begin(), entries_.end(),
              [](const auto& a, const auto& b) { return a.start < b.start; });
    sorted_ = true;
}

void CMultiParameterPortDemultiplexer::clear() {
    entries_.clear();
    sorted_ = false;
}

const CParameterEntry* CMultiParameterPortDemultiplexer::find(std::int64_t address,
                                                              std::int64_t length) const {
    if (!sorted_) {
        return nullptr;
    }
    const auto found = std::find_if(
        entries_.begin(), entries_.end(),
        [address, length](const auto& entry) { return contains(entry, address, length); });
    return found == entries_.end() ? nullptr : &*found;
}

}  // namespace AnythingToNodeMapAdapter::Detail
