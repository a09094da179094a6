#include "genapi/loadcontext.h"

#include "gcbase/gcexception.h"

namespace GenApi::Detail {

void LoadContext::remark(LoadSeverity severity, XmlElement element, std::string_view name,
                         std::string reason) {
    LoadReport& report = description.report;
    if (report.remarks.size() >= maximumRemarks) {
        ++report.notListed;
        return;
    }
    report.remarks.push_back({severity, std::string(element.name()), std::string(name),
                              element.line(), std::move(reason), element.document()});
}

void LoadContext::spend(std::size_t bytes) {
    if (bytes > room) {
        throw GenICam::RuntimeException(
            "Node map description: the nodes would take far more memory than its text.", __FILE__,
            __LINE__);
    }
    room -= bytes;
}

Slice LoadContext::store(std::string_view value) {
    if (value.empty()) {
        return {};
    }
    spend(value.size());
    const Slice slice{static_cast<std::uint32_t>(description.texts.size()),
                      static_cast<std::uint32_t>(value.size())};
    description.texts.append(value);
    return slice;
}

Slice LoadContext::store(const std::vector<NodeId>& list) {
    spend(list.size() * sizeof(NodeId));
    const Slice slice{static_cast<std::uint32_t>(description.links.size()),
                      static_cast<std::uint32_t>(list.size())};
    description.links.insert(description.links.end(), list.begin(), list.end());
    return slice;
}

}  // namespace GenApi::Detail
