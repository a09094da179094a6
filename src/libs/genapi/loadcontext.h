// What the steps of loading share: the description in the making and the list of what was left out.
// Lives for one load on one thread.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "genapi/description.h"
#include "genapi/xmlelement.h"

namespace GenApi::Detail {

// `dependant` must be invalidated when `provider` is.
struct Edge {
    NodeId provider;
    NodeId dependant;
    auto operator<=>(const Edge&) const = default;
};

enum class StringPolicy { keepAll, dropLongTexts };

struct LoadContext {
    static constexpr std::size_t maximumRemarks = 1000;

    Description& description;
    StringPolicy strings;
    // Bytes that the description may still take: a small text can ask for much, as each entry of a
    // struct has a copy of all that its parent has.
    std::size_t room;
    std::vector<Edge> reads;
    // IntSwissKnife elements inside registers, which are nodes as well.
    std::unordered_map<const void*, NodeId> inlineNodes;

    void remark(LoadSeverity severity, XmlElement element, std::string_view name,
                std::string reason);
    void warn(XmlElement element, std::string_view name, std::string reason) {
        remark(LoadSeverity::warning, element, name, std::move(reason));
    }
    void drop(XmlElement element, std::string_view name, std::string reason) {
        remark(LoadSeverity::dropped, element, name, std::move(reason));
    }

    // RuntimeException if that is more than there is room for.
    void spend(std::size_t bytes);
    void addRead(NodeId provider, NodeId dependant) {
        spend(sizeof(Edge));
        reads.push_back({provider, dependant});
    }
    // Keeps a text in the description.
    [[nodiscard]] Slice store(std::string_view value);
    // Keeps a list of links in the description.
    [[nodiscard]] Slice store(const std::vector<NodeId>& list);
};

}  // namespace GenApi::Detail
