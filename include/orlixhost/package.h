// A package of nodes in a shared library, loaded at run time; and the list of those that a run
// knows.
//
// A package is never unloaded: values, errors and jobs hold its code. All functions may be called
// from any thread, except for PackageList::add.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orlixhost/api.h"

namespace Orlix::DataProcessing::Core {
class INode;
class IResourcePool;
}  // namespace Orlix::DataProcessing::Core

namespace Orlix::Host {

// One record of the catalog.
struct Module {
    std::string name;
    std::string uuid;
    std::string objectVersion;
    std::string minRequiredSoftwareVersion;
    std::string minRequiredFileVersion;
    std::string interfaceType;
    std::string displayName;
    std::vector<std::string> tags;
    std::string shortDescription;
    std::string detailedDescription;
    std::vector<std::string> supportedUuids;
    bool hasDynamicInfo = false;
};

class ORLIXHOST_API Package {
public:
    using NodePointer = std::shared_ptr<DataProcessing::Core::INode>;
    using PoolPointer = std::shared_ptr<DataProcessing::Core::IResourcePool>;

    // Throws RuntimeException that begins with the file's name: it is missing, no shared library,
    // no package, of another interface version, or its catalog is broken.
    [[nodiscard]] static std::shared_ptr<const Package> load(const std::string& file);
    // lib/libOrlixVCellPackageBase.so beside the folder of the running program.
    [[nodiscard]] static std::string defaultFile();
    ~Package();
    Package(const Package&) = delete;
    Package& operator=(const Package&) = delete;

    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    // The catalog as the package gives it, byte for byte.
    [[nodiscard]] const std::string& catalog() const noexcept { return catalog_; }
    [[nodiscard]] const std::string& version() const noexcept { return version_; }
    [[nodiscard]] const std::string& vendor() const noexcept { return vendor_; }
    [[nodiscard]] const std::vector<Module>& modules() const noexcept { return modules_; }

    // The node gives itself back to the package when the last pointer goes. Throws RuntimeException
    // that names module and reason.
    [[nodiscard]] NodePointer createNode(const Module& module, const PoolPointer& pool) const;

private:
    Package(std::string file, void* library);
    void readInterfaceVersion() const;
    void readCatalog();
    void checkModules() const;

    std::string file_;
    void* library_;
    std::string catalog_;
    std::string version_;
    std::string vendor_;
    std::vector<Module> modules_;
};

// Packages in the order in which they were added; the first one that has a type gives it.
class ORLIXHOST_API PackageList {
public:
    struct Entry {
        std::shared_ptr<const Package> package;
        const Module* module = nullptr;
    };

    void add(std::shared_ptr<const Package> package);
    [[nodiscard]] const std::vector<std::shared_ptr<const Package>>& packages() const noexcept {
        return packages_;
    }
    // By the identity, if there is one, else by the name. Throws RuntimeException that names what
    // was not found and what there is.
    [[nodiscard]] Entry find(const std::string& name, const std::string& uuid) const;

private:
    std::vector<std::shared_ptr<const Package>> packages_;
};

}  // namespace Orlix::Host
