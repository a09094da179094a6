// What the steps of loading share: the description in the making, the text it comes from, and the
// list of what was left out. Lives for one load on one thread.
#pragma once

#include <compare>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "genapi/description.h"
#include "genapi/xmltext.h"

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
    const XmlText& text;
    StringPolicy strings;
    std::vector<Edge> reads;
    // IntSwissKnife elements inside registers, which are nodes as well.
    std::unordered_map<const void*, NodeId> inlineNodes;

    void remark(LoadSeverity severity, pugi::xml_node element, std::string_view name,
                std::string reason);
    void warn(pugi::xml_node element, std::string_view name, std::string reason) {
        remark(LoadSeverity::warning, element, name, std::move(reason));
    }
    void drop(pugi::xml_node element, std::string_view name, std::string reason) {
        remark(LoadSeverity::dropped, element, name, std::move(reason));
    }

    [[nodiscard]] std::uint32_t lineOf(pugi::xml_node element) const;
    // Keeps a text in the description.
    [[nodiscard]] Slice store(std::string_view value);
    // Keeps a list of links in the description.
    [[nodiscard]] Slice store(const std::vector<NodeId>& list);
};

// All text of an element as it stands; comments inside are skipped.
[[nodiscard]] std::string rawTextOf(pugi::xml_node element);
// The same without white space at its ends.
[[nodiscard]] std::string textOf(pugi::xml_node element);

}  // namespace GenApi::Detail
