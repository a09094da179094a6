#include "orlixcamera/persistence/featurewriter.h"

#include <algorithm>
#include <map>
#include <set>

#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
#include "genapi/synch.h"
#include "orlixcamera/persistence/featurestream.h"
#include "orlixcamera/persistence/featurevalue.h"
#include "orlixcamera/persistence/selectors.h"

namespace Orlix {

namespace {

using Nodes = std::vector<GenApi::INode*>;

// Those that others depend on come first. The relation is transitive, so that a feature with fewer
// others before it comes first; the two of a circle, such as a size and its offset, stay as they
// are in the description.
void sortByDependency(Nodes& features) {
    std::map<const GenApi::INode*, std::size_t> causes;
    for (GenApi::INode* const feature : features) {
        GenApi::NodeList_t dependents;
        feature->GetChildren(dependents, GenApi::ctAllDependingNodes);
        for (const GenApi::INode* const dependent : dependents) {
            causes[dependent] += dependent == feature ? 0U : 1U;
        }
    }
    std::stable_sort(
        features.begin(), features.end(),
        [&](const GenApi::INode* a, const GenApi::INode* b) { return causes[a] < causes[b]; });
}

// Gives selectors back the value that they had. Unnoticed by callers if even that fails: there is
// an exception under way already, or the device refuses its own value.
class SelectorGuard {
public:
    explicit SelectorGuard(GenApi::INode& selector)
        : selector_(selector), before_(readFeature(selector)) {}
    ~SelectorGuard() {
        try {
            writeFeature(selector_, before_);
        } catch (...) {
        }
    }
    SelectorGuard(const SelectorGuard&) = delete;
    SelectorGuard& operator=(const SelectorGuard&) = delete;

    [[nodiscard]] const std::string& GetBefore() const noexcept { return before_; }

private:
    GenApi::INode& selector_;
    const std::string before_;
};

// Whether one of the selectors before that one has it as one of what it selects.
bool isNested(const Nodes& selectors, std::size_t depth) {
    const Nodes outer = findSelectors(*selectors[depth]);
    const auto place = selectors.begin() + static_cast<std::ptrdiff_t>(depth);
    return std::any_of(selectors.begin(), place, [&](GenApi::INode* selector) {
        return std::find(outer.begin(), outer.end(), selector) != outer.end();
    });
}

class FeatureWriter {
public:
    explicit FeatureWriter(GenApi::INodeMap& map) : map_(map), text_(featureStreamHeader) {
        appendComment(text_, map.GetVendorName().str() + " " + map.GetModelName().str());
    }

    std::string write() {
        collect();
        writeAll(plain_);
        for (auto& [selectors, features] : selected_) {
            sortByDependency(features);
            writeGroup(selectors, 0, features);
        }
        writeSelectors();
        return std::move(text_);
    }

private:
    void collect() {
        GenApi::NodeList_t nodes;
        map_.GetNodes(nodes);
        for (GenApi::INode* const node : nodes) {
            if (node->IsStreamable()) {
                place(*node);
            }
        }
        std::erase_if(plain_, [&](GenApi::INode* node) { return moved_.contains(node); });
        sortByDependency(plain_);
    }

    void place(GenApi::INode& node) {
        Nodes selectors = findSelectors(node);
        // A selector that can't be moved shows one thing only.
        std::erase_if(selectors, [](GenApi::INode* selector) {
            return !isPersistable(*selector) || listSelectorValues(*selector).empty();
        });
        if (selectors.empty()) {
            plain_.push_back(&node);
            return;
        }
        moved_.insert(selectors.begin(), selectors.end());
        const auto same = std::find_if(selected_.begin(), selected_.end(),
                                       [&](const auto& group) { return group.first == selectors; });
        if (same != selected_.end()) {
            same->second.push_back(&node);
        } else {
            selected_.emplace_back(std::move(selectors), Nodes{&node});
        }
    }

    void writeFeatureLine(GenApi::INode& node) {
        if (!isPersistable(node)) {
            return;
        }
        const std::string value = readFeature(node);
        if (canBeWritten(node, value)) {
            appendFeatureLine(text_, node.GetName().view(), value);
        }
    }

    void writeAll(const Nodes& features) {
        for (GenApi::INode* const feature : features) {
            writeFeatureLine(*feature);
        }
    }

    // Once for each value of the selector at `depth` and of those below it.
    void writeGroup(const Nodes& selectors, std::size_t depth, const Nodes& features) {
        if (depth == selectors.size()) {
            writeAll(features);
            return;
        }
        GenApi::INode& selector = *selectors[depth];
        if (!isPersistable(selector)) {
            return;  // an outer selector has taken it away
        }
        const SelectorGuard guard(selector);
        for (const std::string& value : listSelectorValues(selector)) {
            writeFeature(selector, value);
            appendFeatureLine(text_, selector.GetName().view(), value);
            writeGroup(selectors, depth + 1, features);
        }
        if (isNested(selectors, depth)) {
            // Here, too, it has a value of its own.
            appendFeatureLine(text_, selector.GetName().view(), guard.GetBefore());
        }
    }

    // What selectors show in the end is part of the state.
    void writeSelectors() {
        std::set<GenApi::INode*> written;
        for (const auto& group : selected_) {
            for (GenApi::INode* const selector : group.first) {
                if (written.insert(selector).second) {
                    writeFeatureLine(*selector);
                }
            }
        }
    }

    GenApi::INodeMap& map_;
    std::string text_;
    Nodes plain_;
    std::vector<std::pair<Nodes, Nodes>> selected_;  // selectors, and what they select
    std::set<GenApi::INode*> moved_;                 // selectors of any group
};

}  // namespace

std::string writeFeatureStream(GenApi::INodeMap& map) {
    const GenApi::AutoLock guard(map.GetLock());
    return FeatureWriter(map).write();
}

}  // namespace Orlix
