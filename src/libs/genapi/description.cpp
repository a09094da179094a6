#include "genapi/description.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace GenApi::Detail {

void NameIndex::reserve(std::size_t count) {
    slots_.assign(std::bit_ceil(std::max<std::size_t>(count, 4) * 2), noNode);
}

std::size_t NameIndex::slotOf(std::string_view name, std::span<const Node> nodes,
                              const std::string& texts) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(name) & mask;
    while (slots_[slot] != noNode) {
        const Slice other = nodes[slots_[slot]].name;
        if (std::string_view(texts).substr(other.begin, other.count) == name) {
            break;
        }
        slot = (slot + 1) & mask;
    }
    return slot;
}

NodeId NameIndex::insert(std::string_view name, NodeId id, std::span<const Node> nodes,
                         const std::string& texts) {
    NodeId& place = slots_[slotOf(name, nodes, texts)];
    const NodeId before = place;
    if (before == noNode) {
        place = id;
    }
    return before;
}

NodeId NameIndex::find(std::string_view name, std::span<const Node> nodes,
                       const std::string& texts) const {
    return slots_.empty() ? noNode : slots_[slotOf(name, nodes, texts)];
}

// Big endian counts from the highest bit. Ends the wrong way round mean the same field.
std::optional<BitField> bitFieldOf(const RegisterDetail& detail, int bits) {
    if (!detail.hasBits) {
        return BitField{0, bits};
    }
    int low = std::min(detail.lsb, detail.msb);
    int high = std::max(detail.lsb, detail.msb);
    if (detail.bigEndian) {
        const int turned = bits - 1 - high;
        high = bits - 1 - low;
        low = turned;
    }
    return low < 0 || high >= bits ? std::nullopt : std::optional(BitField{low, high - low + 1});
}

bool isPossibleLength(Kind kind, std::int64_t bytes) {
    constexpr std::int64_t most = std::int64_t{64} * 1024 * 1024;
    if (kind == Kind::floatReg) {
        return bytes == 4 || bytes == 8;
    }
    const bool isNumber = kind == Kind::intReg || kind == Kind::maskedIntReg;
    return bytes >= 1 && bytes <= (isNumber ? 8 : most);
}

Description::~Description() {
    for (std::size_t i = 0; closures_ != nullptr && i < nodes.size(); ++i) {
        delete[] closures_[i].load(std::memory_order_relaxed);
    }
}

std::span<const KeptText> Description::keptOf(NodeId id) const {
    const auto range =
        std::equal_range(keptTexts.begin(), keptTexts.end(), KeptText{"", id, {}, {}},
                         [](const KeptText& a, const KeptText& b) { return a.node < b.node; });
    return {range.first, range.second};
}

void Description::prepareClosures() {
    closures_ = std::make_unique<std::atomic<const NodeId*>[]>(nodes.size());
}

void Description::shrink() {
    const auto each = [](auto&... arrays) { (arrays.shrink_to_fit(), ...); };
    each(nodes, numbers, booleans, enumerations, entries, commands, strings, registers,
         registerNodes, ports, portNodes, configKeys, formulas, variables, polled, keptTexts, links,
         terms, indexed, validValues, texts, dependants, dependantLinks, providers, providerLinks,
         report.remarks);
}

std::span<const NodeId> Description::closure(NodeId id) const {
    std::atomic<const NodeId*>& place = closures_[id];
    const NodeId* known = place.load(std::memory_order_acquire);
    if (known == nullptr) {
        std::unique_ptr<NodeId[]> computed = computeClosure(id);
        if (place.compare_exchange_strong(known, computed.get(), std::memory_order_acq_rel)) {
            known = computed.release();
        }
    }
    return {known + 1, *known};
}

std::unique_ptr<NodeId[]> Description::computeClosure(NodeId id) const {
    // Reverse post-order of a depth-first walk puts every node behind its causes. The walk keeps
    // its own stack: a chain of dependants may be as long as the description.
    struct Step {
        NodeId node;
        std::uint32_t next;
    };
    std::vector<bool> seen(nodes.size(), false);
    std::vector<Step> path = {{id, 0}};
    std::vector<NodeId> finished;
    seen[id] = true;
    while (!path.empty()) {
        Step& step = path.back();
        const Slice out = dependants[step.node];
        if (step.next == out.count) {
            finished.push_back(step.node);
            path.pop_back();
            continue;
        }
        const NodeId next = dependantLinks[out.begin + step.next++];
        if (!seen[next]) {
            seen[next] = true;
            path.push_back({next, 0});
        }
    }
    auto result = std::make_unique<NodeId[]>(finished.size() + 1);
    result[0] = static_cast<NodeId>(finished.size());
    std::reverse_copy(finished.begin(), finished.end(), result.get() + 1);
    return result;
}

}  // namespace GenApi::Detail
