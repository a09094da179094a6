#include "orlixcamera/persistence/featurereader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "gcbase/gcexception.h"
#include "genapi/inodemap.h"
#include "genapi/pointer.h"
#include "genapi/synch.h"
#include "orlixcamera/persistence/featurestream.h"
#include "orlixcamera/persistence/featurevalue.h"
#include "orlixcamera/persistence/selectors.h"

namespace Orlix {

namespace {

// A selector, and the value that it has where a line is for.
struct Selection {
    GenApi::INode* selector = nullptr;
    std::optional<std::string> value;  // none until it is known
};

struct Feature {
    FeatureLine line;
    GenApi::INode* node = nullptr;  // null for an unknown name
    std::vector<GenApi::INode*> selectors;
    std::vector<Selection> late;  // selectors whose value shows when the line is reached
    bool isSelector = false;
    bool isLast = false;  // no later line gives the same feature another value
};

class FeatureReader {
public:
    FeatureReader(std::string_view text, GenApi::INodeMap& map, ReadBack readBack)
        : readBack_(readBack) {
        for (FeatureLine& line : parseFeatureStream(text)) {
            resolve(std::move(line), map);
        }
        markLast();
    }

    void read() {
        runRound();
        // Another round helps where the range of one value depends on a later one.
        for (std::size_t before = problems_.size() + 1;
             !problems_.empty() && problems_.size() < before;) {
            before = problems_.size();
            selectFirst();
            runRound();
        }
        if (!problems_.empty()) {
            fail();
        }
    }

private:
    void runRound() {
        problems_.clear();
        writeAll();
        if (readBack_ == ReadBack::Yes) {
            selectFirst();
            compareAll();
        }
    }

    void resolve(FeatureLine&& line, GenApi::INodeMap& map) {
        Feature feature;
        feature.node = map.GetNode(GenICam::gcstring(line.name));
        if (feature.node != nullptr && !GenApi::CValuePtr(feature.node).IsValid()) {
            feature.node = nullptr;
        }
        feature.line = std::move(line);
        if (feature.node != nullptr) {
            feature.selectors = findSelectors(*feature.node);
            feature.isSelector = isSelector(*feature.node);
            for (GenApi::INode* const selector : feature.selectors) {
                if (isLate(*selector)) {
                    feature.late.push_back({selector, std::nullopt});
                } else {
                    keepFirst(*selector);
                }
            }
            selected_.insert(feature.node);
            set_.insert(feature.node);
        }
        features_.push_back(std::move(feature));
    }

    // A selector that no line before has set, and that is itself selected by one that a line has
    // set: what it is there isn't known before that is written.
    [[nodiscard]] bool isLate(GenApi::INode& selector) const {
        if (set_.contains(&selector)) {
            return false;
        }
        const auto outer = findSelectors(selector);
        return std::any_of(outer.begin(), outer.end(),
                           [this](const GenApi::INode* each) { return set_.contains(each); });
    }

    // A selector that no line before has set decides by the value that it has now.
    void keepFirst(GenApi::INode& selector) {
        try {
            if (selected_.insert(&selector).second && isPersistable(selector)) {
                first_.emplace_back(&selector, readFeature(selector));
            }
        } catch (const GenICam::GenericException&) {
            return;  // a later line may set it right; what is written before goes where it may
        }
    }

    // As it was before the first line.
    void selectFirst() {
        for (const auto& [selector, value] : first_) {
            try {
                writeFeature(*selector, value);
                unset_.erase(selector);
            } catch (const GenICam::GenericException&) {
                unset_.insert(selector);
            }
        }
    }

    // What they are when the line is reached for the first time, they are at every later time.
    void selectLate(Feature& feature) {
        for (Selection& selection : feature.late) {
            try {
                if (selection.value) {
                    writeFeature(*selection.selector, *selection.value);
                } else if (isPersistable(*selection.selector)) {
                    selection.value = readFeature(*selection.selector);
                }
                unset_.erase(selection.selector);
            } catch (const GenICam::GenericException&) {
                unset_.insert(selection.selector);
            }
        }
    }

    void markLast() {
        std::map<const GenApi::INode*, std::string> selected;
        for (const auto& [selector, value] : first_) {
            selected[selector] = normalize(*selector, value);
        }
        std::map<std::string, Feature*> last;
        for (Feature& feature : features_) {
            if (feature.node == nullptr) {
                continue;
            }
            selected[feature.node] = normalize(*feature.node, feature.line.value);
            std::string place = feature.line.name;
            for (const GenApi::INode* const selector : feature.selectors) {
                place += '\n' + selected[selector];
            }
            Feature*& previous = last[place];
            if (previous != nullptr) {
                previous->isLast = false;
            }
            previous = &feature;
            feature.isLast = true;
        }
        // Whether a later line is for the place of such a one can't be told beforehand.
        std::set<const GenApi::INode*> later;
        for (auto feature = features_.rbegin(); feature != features_.rend(); ++feature) {
            const bool isFollowed = !later.insert(feature->node).second;
            feature->isLast = feature->isLast && !(isFollowed && !feature->late.empty());
        }
    }

    void writeAll() {
        for (Feature& feature : features_) {
            if (feature.node == nullptr) {
                problems_[&feature] = "there is no such feature";
            } else {
                write(feature);
            }
        }
    }

    void write(Feature& feature) {
        selectLate(feature);
        if (const GenApi::INode* const selector = findUnset(feature)) {
            problems_[&feature] = "its selector " + selector->GetName().str() + " is not set";
            unset_.insert(feature.node);
            return;
        }
        try {
            writeFeature(*feature.node, feature.line.value);
            unset_.erase(feature.node);
            if (feature.isSelector && readBack_ == ReadBack::Yes && !compare(feature)) {
                unset_.insert(feature.node);  // what follows would go to another place
            }
        } catch (const GenICam::GenericException& exception) {
            problems_[&feature] = exception.GetDescription();
            unset_.insert(feature.node);
        }
    }

    // A selector of the feature whose line failed: the value would go to another place.
    [[nodiscard]] const GenApi::INode* findUnset(const Feature& feature) const {
        for (const GenApi::INode* const selector : feature.selectors) {
            if (unset_.contains(selector)) {
                return selector;
            }
        }
        return nullptr;
    }

    void compareAll() {
        for (Feature& feature : features_) {
            if (feature.node == nullptr || problems_.contains(&feature)) {
                continue;
            }
            if (feature.isSelector) {
                write(feature);
            } else if (feature.isLast) {
                selectLate(feature);
                if (findUnset(feature) == nullptr) {
                    static_cast<void>(compare(feature));
                }
            }
        }
    }

    // False, and a problem, for a feature that reads another value than was written.
    [[nodiscard]] bool compare(const Feature& feature) {
        try {
            if (!GenApi::IsReadable(feature.node) || readsAs(*feature.node, feature.line.value)) {
                return true;
            }
            problems_[&feature] = "\"" + feature.line.value + "\" was written, \"" +
                                  readFeature(*feature.node) + "\" is read";
        } catch (const GenICam::GenericException& exception) {
            problems_[&feature] = exception.GetDescription();
        }
        return false;
    }

    [[noreturn]] void fail() const {
        std::string message = "The feature stream could not be loaded whole.";
        for (const Feature& feature : features_) {
            const auto problem = problems_.find(&feature);
            if (problem != problems_.end()) {
                message += " Line " + std::to_string(feature.line.number) + ", " +
                           feature.line.name + ": " + problem->second +
                           (problem->second.ends_with('.') ? "" : ".");
            }
        }
        throw GenICam::RuntimeException(message.c_str(), __FILE__, __LINE__);
    }

    const ReadBack readBack_;
    std::vector<Feature> features_;
    std::vector<std::pair<GenApi::INode*, std::string>> first_;  // of selectors, the outer first
    std::set<const GenApi::INode*> set_;                         // by a line so far
    std::set<const GenApi::INode*> selected_;  // those of first_, and what the lines are for
    std::map<const Feature*, std::string> problems_;
    std::set<const GenApi::INode*> unset_;  // whose latest line could not be written
};

}  // namespace

void readFeatureStream(std::string_view text, GenApi::INodeMap& map, ReadBack readBack) {
    const GenApi::AutoLock guard(map.GetLock());
    FeatureReader(text, map, readBack).read();
}

}  // namespace Orlix
