// Builds the parameter tree of a node: hands its ports to the adapter and links each to a category.
// Used in a node's constructor only, under the node's lock.
#pragma once

#include <memory>

#include "anythingtonodemapadapter/adapter.h"
#include "anythingtonodemapadapter/categoryparameterport.h"
#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "orlixdataprocessingcore/threading/recursiveclock.h"

namespace Plugin::OrlixVCellPackageBase {

// Refers to the node's adapter, which keeps everything that is added.
class ParameterTree {
public:
    explicit ParameterTree(AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter& adapter)
        : adapter_(adapter) {
        adapter_.addParameter(
            std::make_shared<AnythingToNodeMapAdapter::CategoryParameterPort>(root));
    }

    // Adds the parameter and shows it as the last one of the category. Returns the port.
    template <typename Port>
    std::shared_ptr<Port> add(std::shared_ptr<Port> port, const char* category = root) {
        adapter_.addParameter(port);
        adapter_.addDependency(category, "Feature", port->getName());
        return port;
    }

    // Adds a category without showing it, and shows it as the last one of "Root".
    template <typename Category>
    void addCategory(std::shared_ptr<Category> category) {
        adapter_.addParameter(category);
    }
    void showCategory(const char* name) { adapter_.addDependency(root, "Feature", name); }

    // The selector switches what the other parameter shows.
    void select(const char* selector, const char* selected) {
        adapter_.addDependency(selector, "Selected", selected);
    }

    // Adds an entry to an enumeration that is in the tree. Returns the entry.
    template <typename T>
    std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<T>> addEntry(
        const GenICam::gcstring& enumeration,
        std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<T>> entry) {
        adapter_.addEnumEntry(enumeration, entry);
        return entry;
    }

    // The last step: makes the live map, which takes the node's lock for every access.
    void createNodeMap(Orlix::DataProcessing::Threading::RecursiveCLock& lock) {
        adapter_.createNodeMap(&lock.getLock(), "", "");
    }

private:
    static constexpr const char* root = "Root";

    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter& adapter_;
};

}  // namespace Plugin::OrlixVCellPackageBase
