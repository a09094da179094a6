// Which of the nodes of one name counts where one description is injected into another. Each node
// may state its MergePriority: 1, 0 or -1.
#pragma once

#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "genapi/loadcontext.h"

namespace GenApi::Detail {

// Made once for a load, before the nodes are collected.
class MergePlan {
public:
    // To be called for the description first, then for each injected one. RuntimeException where a
    // name is taken and no priority tells which node counts.
    void add(XmlElement root, LoadContext& context);

    // Whether another node of the element's name counts in its place.
    [[nodiscard]] bool isReplaced(XmlElement element) const {
        return replaced_.count(element.key()) != 0;
    }
    // The categories whose features join those of the element.
    [[nodiscard]] const std::vector<XmlElement>* joining(XmlElement element) const;

private:
    struct Candidate {
        XmlElement element;
        int priority;
    };

    void addNode(XmlElement element, LoadContext& context);
    void resolve(Candidate& known, const Candidate& added, LoadContext& context);

    std::unordered_map<std::string_view, Candidate> known_;
    std::unordered_set<const void*> replaced_;
    std::unordered_map<const void*, std::vector<XmlElement>> joining_;
};

}  // namespace GenApi::Detail
