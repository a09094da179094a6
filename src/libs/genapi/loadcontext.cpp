#include "genapi/loadcontext.h"

#include "genapi/numbertext.h"

namespace GenApi::Detail {

void LoadContext::remark(LoadSeverity severity, pugi::xml_node element, std::string_view name,
                         std::string reason) {
    LoadReport& report = description.report;
    if (report.remarks.size() >= maximumRemarks) {
        ++report.notListed;
        return;
    }
    report.remarks.push_back(
        {severity, element.name(), std::string(name), lineOf(element), std::move(reason)});
}

std::uint32_t LoadContext::lineOf(pugi::xml_node element) const {
    const auto offset = element.offset_debug();
    return offset < 0 ? 0 : text.place(static_cast<std::size_t>(offset)).line;
}

Slice LoadContext::store(std::string_view value) {
    if (value.empty()) {
        return {};
    }
    const Slice slice{static_cast<std::uint32_t>(description.texts.size()),
                      static_cast<std::uint32_t>(value.size())};
    description.texts.append(value);
    return slice;
}

Slice LoadContext::store(const std::vector<NodeId>& list) {
    const Slice slice{static_cast<std::uint32_t>(description.links.size()),
                      static_cast<std::uint32_t>(list.size())};
    description.links.insert(description.links.end(), list.begin(), list.end());
    return slice;
}

std::string rawTextOf(pugi::xml_node element) {
    std::string text;
    for (const pugi::xml_node part : element.children()) {
        if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) {
            text += part.value();
        }
    }
    return text;
}

std::string textOf(pugi::xml_node element) {
    return std::string(trim(rawTextOf(element)));
}

}  // namespace GenApi::Detail
