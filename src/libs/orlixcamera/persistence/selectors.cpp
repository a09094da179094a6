#include "orlixcamera/persistence/selectors.h"

#include <algorithm>
#include <utility>

#include "genapi/pointer.h"

namespace Orlix {

namespace {

// More places of a table than cameras have; a wide integer is no selector that can be walked.
constexpr std::int64_t longestRange = 4096;

void listEntries(GenApi::IEnumeration& selector, std::vector<std::string>& values) {
    GenApi::NodeList_t entries;
    selector.GetEntries(entries);
    for (GenApi::INode* const entry : entries) {
        if (GenApi::IsAvailable(entry)) {
            values.push_back(GenApi::CEnumEntryPtr(entry)->GetSymbolic().str());
        }
    }
}

void listNumbers(GenApi::IInteger& selector, std::vector<std::string>& values) {
    const std::int64_t first = selector.GetMin();
    const std::int64_t last = selector.GetMax();
    const std::int64_t step = std::max<std::int64_t>(selector.GetInc(), 1);
    const auto length = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
    if (last < first || length / static_cast<std::uint64_t>(step) >= longestRange) {
        return;
    }
    for (std::uint64_t offset = 0; offset <= length; offset += static_cast<std::uint64_t>(step)) {
        values.push_back(std::to_string(first + static_cast<std::int64_t>(offset)));
    }
}

std::vector<GenApi::INode*> collectSelectors(GenApi::INode& node) {
    std::vector<GenApi::INode*> found;
    std::vector<GenApi::INode*> open{&node};
    while (!open.empty()) {
        const GenApi::CSelectorPtr selected(open.back());
        open.pop_back();
        GenApi::FeatureList_t selecting;
        if (selected.IsValid()) {
            selected->GetSelectingFeatures(selecting);
        }
        for (GenApi::IValue* const feature : selecting) {
            GenApi::INode* const selector = feature->GetNode();
            if (selector != &node &&
                std::find(found.begin(), found.end(), selector) == found.end()) {
                found.push_back(selector);
                open.push_back(selector);
            }
        }
    }
    std::reverse(found.begin(), found.end());
    return found;
}

}  // namespace

std::vector<GenApi::INode*> findSelectors(GenApi::INode& node) {
    std::vector<std::pair<std::size_t, GenApi::INode*>> ordered;
    for (GenApi::INode* const selector : collectSelectors(node)) {
        ordered.emplace_back(collectSelectors(*selector).size(), selector);
    }
    // One that selects another is selected by fewer.
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<GenApi::INode*> selectors;
    for (const auto& [count, selector] : ordered) {
        selectors.push_back(selector);
    }
    return selectors;
}

bool isSelector(GenApi::INode& node) {
    const GenApi::CSelectorPtr selector(&node);
    return selector.IsValid() && selector->IsSelector();
}

std::vector<std::string> listSelectorValues(GenApi::INode& selector) {
    std::vector<std::string> values;
    switch (selector.GetPrincipalInterfaceType()) {
        case GenApi::intfIEnumeration:
            listEntries(*GenApi::CEnumerationPtr(&selector), values);
            break;
        case GenApi::intfIInteger:
            listNumbers(*GenApi::CIntegerPtr(&selector), values);
            break;
        case GenApi::intfIBoolean:
            values = {"false", "true"};
            break;
        default:
            break;
    }
    return values;
}

}  // namespace Orlix
