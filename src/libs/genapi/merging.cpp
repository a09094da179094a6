#include "genapi/merging.h"

#include <string>

#include "genapi/elements.h"
#include "genapi/numbertext.h"

namespace GenApi::Detail {

namespace {

std::string placeOf(XmlElement element) {
    const std::uint32_t document = element.document();
    return "line " + std::to_string(element.line()) +
           (document == 0 ? std::string(" of the description")
                          : " of the injected description " + std::to_string(document));
}

int priorityOf(XmlElement element, LoadContext& context) {
    const auto text = element.attribute("MergePriority");
    if (!text) {
        return 0;
    }
    const auto value = parseInteger(*text);
    if (!value || *value < -1 || *value > 1) {
        context.drop(element, element.valueOf("Name"),
                     "The MergePriority '" + std::string(*text) + "' is none of -1, 0 and 1.");
        return 0;
    }
    return static_cast<int>(*value);
}

}  // namespace

void MergePlan::add(XmlElement root, LoadContext& context) {
    for (const XmlElement element : root.children()) {
        if (element.name() == "Group") {
            add(element, context);  // the depth of the text bounds this
        } else if (element.name() == "StructReg") {
            for (const XmlElement entry : element.children()) {
                if (entry.name() == "StructEntry") {
                    addNode(entry, context);
                }
            }
        } else if (kindOf(element.name())) {
            addNode(element, context);
        }
    }
}

void MergePlan::addNode(XmlElement element, LoadContext& context) {
    const std::string_view name = element.valueOf("Name");
    if (name.empty()) {
        return;
    }
    const Candidate added{element, priorityOf(element, context)};
    const auto [place, isNew] = known_.try_emplace(name, added);
    // Names that one text has twice are nothing to merge.
    if (!isNew && place->second.element.document() != element.document()) {
        resolve(place->second, added, context);
    }
}

void MergePlan::resolve(Candidate& known, const Candidate& added, LoadContext& context) {
    const bool isCategory =
        known.element.name() == "Category" && added.element.name() == "Category";
    const bool addedCounts = added.priority > known.priority;
    const XmlElement winner = addedCounts ? added.element : known.element;
    const XmlElement loser = addedCounts ? known.element : added.element;
    const std::string name(winner.valueOf("Name"));
    if (isCategory) {
        std::vector<XmlElement> features = std::move(joining_[loser.key()]);
        features.insert(features.begin(), loser);
        auto& list = joining_[winner.key()];
        list.insert(list.end(), features.begin(), features.end());
    } else if (added.priority == known.priority) {
        added.element.fail("the name '" + name + "' is taken by the node of " +
                           placeOf(known.element) + ", and the MergePriority of both is " +
                           std::to_string(added.priority) + ".");
    } else {
        context.warn(loser, name,
                     "The node of " + placeOf(winner) + " counts in place of this one.");
    }
    replaced_.insert(loser.key());
    if (addedCounts) {
        known = added;
    }
}

const std::vector<XmlElement>* MergePlan::joining(XmlElement element) const {
    const auto place = joining_.find(element.key());
    return place == joining_.end() ? nullptr : &place->second;
}

}  // namespace GenApi::Detail
