// Finds the parameter that an address of a shared port belongs to. Filled while a node map is
// built, sorted once, then only read; all under the node's lock.
#pragma once

#include <cstdint>
#include <vector>

#include "anythingtonodemapadapter/api.h"

namespace AnythingToNodeMapAdapter::Detail {

class CBasicNodeMapPort;

// The block of one parameter. A null port keeps the addresses, which then read as zeros.
struct CParameterEntry {
    std::int64_t start = 0;
    std::int64_t length = 0;
    CBasicNodeMapPort* port = nullptr;
};

class ANYTHINGTONODEMAPADAPTER_API CMultiParameterPortDemultiplexer {
public:
    virtual ~CMultiParameterPortDemultiplexer() = default;

    // Nothing can be added once sorted.
    void add(CBasicNodeMapPort& port);
    void remove(const CBasicNodeMapPort& port);
    void sort();
    void clear();

    // The record that holds the whole range; null without one, and always before sort().
    [[nodiscard]] const CParameterEntry* find(std::int64_t address, std::int64_t length) const;

private:
    bool sorted_ = false;
    std::vector<CParameterEntry> entries_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
