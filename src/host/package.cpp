#include "orlixhost/package.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "host/catalogreader.h"
#include "host/message.h"
#include "orlixhost/paths.h"

namespace Orlix::Host {
namespace {

namespace fs = std::filesystem;

// `lower` has small letters, as recipes are read; a catalog may have others.
bool isSameUuid(const std::string& uuid, const std::string& lower) {
    return std::equal(uuid.begin(), uuid.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b;
    });
}

// The table of entry points, version 2.
constexpr unsigned int interfaceVersion = 2;
using GetInterfaceVersion = unsigned int();
using CreateInfo = char*();
using DestroyInfo = void(char**);
using CreateNode = DataProcessing::Core::INode*(const Package::PoolPointer&);
using DestroyNode = void(DataProcessing::Core::INode*);

// What this host is, for modules that ask for a newer one.
constexpr std::array<int, 3> softwareVersion = {3, 0, 1};
constexpr std::array<int, 3> fileVersion = {1, 0, 0};

// Null if the library has no such symbol.
template <typename Function>
Function* symbol(void* library, const std::string& name) {
    return reinterpret_cast<Function*>(::dlsym(library, name.c_str()));
}

// "1.2.3"; what is left out or no number counts as 0.
std::array<int, 3> parseVersion(const std::string& text) {
    std::array<int, 3> version{};
    std::sscanf(text.c_str(), "%d.%d.%d", &version[0], &version[1], &version[2]);
    return version;
}

void checkUsable(const Module& module) {
    if (module.interfaceType != "Native") {
        fail("has the interface type " + inQuotes(module.interfaceType) +
             ", and this host runs \"Native\" only");
    }
    if (parseVersion(module.minRequiredSoftwareVersion) > softwareVersion) {
        fail("needs a host of version " + module.minRequiredSoftwareVersion + " or later");
    }
    if (parseVersion(module.minRequiredFileVersion) > fileVersion) {
        fail("needs recipes of version " + module.minRequiredFileVersion + " or later");
    }
}

void* openLibrary(const std::string& file) {
    if (file.empty()) {
        fail("the name of the package file is empty");
    }
    // A name without a slash would be searched in the system's folders.
    const fs::path path = absolutePath(file);
    std::error_code failure;
    if (!fs::exists(path, failure)) {
        fail(file + ": there is no such package file");
    }
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = ::dlerror();
        fail(file + ": is no package that can be loaded: " + (reason != nullptr ? reason : ""));
    }
    return library;
}

}  // namespace

std::shared_ptr<const Package> Package::load(const std::string& file) {
    std::shared_ptr<Package> package(new Package(file, openLibrary(file)));
    package->readInterfaceVersion();
    package->readCatalog();
    package->checkModules();
    return package;
}

std::string Package::defaultFile() {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    const fs::path tree = program.parent_path().parent_path();
    return (tree / "lib" / "libOrlixVCellPackageBase.so").string();
}

Package::Package(std::string file, void* library) : file_(std::move(file)), library_(library) {}

// The library stays: code of it may be on any thread and behind any value.
Package::~Package() = default;

void Package::readInterfaceVersion() const {
    for (const char* name : {"get_InterfaceVersion", "create_StaticInfo", "destroy_Info"}) {
        if (::dlsym(library_, name) == nullptr) {
            fail(file_ + ": is no package: it has no entry point " + name);
        }
    }
    const unsigned int version = symbol<GetInterfaceVersion>(library_, "get_InterfaceVersion")();
    if (version != interfaceVersion) {
        fail(file_ + ": has the interface version " + std::to_string(version) +
             ", and this host knows version " + std::to_string(interfaceVersion) + " only");
    }
}

void Package::readCatalog() {
    char* info = symbol<CreateInfo>(library_, "create_StaticInfo")();
    if (info == nullptr) {
        fail(file_ + ": gives no catalog");
    }
    catalog_ = info;
    symbol<DestroyInfo>(library_, "destroy_Info")(&info);
    const Json catalog = parseJson(catalog_, file_ + ": catalog");
    modules_ = readModules(catalog, file_);
    version_ = readCatalogText(catalog, "Version", file_);
    vendor_ = readCatalogText(catalog, "Vendor", file_);
}

void Package::checkModules() const {
    for (const Module& module : modules_) {
        for (const std::string& name : {"create_" + module.name, "destroy_" + module.name}) {
            if (::dlsym(library_, name.c_str()) == nullptr) {
                fail(file_ + ": is no package: it has no entry point " + name);
            }
        }
    }
}

Package::NodePointer Package::createNode(const Module& module, const PoolPointer& pool) const {
    return withPlace("type " + inQuotes(module.name), [&]() -> NodePointer {
        checkUsable(module);
        auto* create = symbol<CreateNode>(library_, "create_" + module.name);
        auto* destroy = symbol<DestroyNode>(library_, "destroy_" + module.name);
        DataProcessing::Core::INode* node = create(pool);
        if (node == nullptr) {
            fail("there is no memory for a node");
        }
        return {node, destroy};
    });
}

void PackageList::add(std::shared_ptr<const Package> package) {
    packages_.push_back(std::move(package));
}

PackageList::Entry PackageList::find(const std::string& name, const std::string& uuid) const {
    std::string known;
    for (const auto& package : packages_) {
        for (const Module& module : package->modules()) {
            const auto& uuids = module.supportedUuids;
            const auto isAsked = [&](const std::string& own) { return isSameUuid(own, uuid); };
            const bool matches =
                uuid.empty()
                    ? module.name == name
                    : isAsked(module.uuid) || std::any_of(uuids.begin(), uuids.end(), isAsked);
            if (matches) {
                return {package, &module};
            }
            known += (known.empty() ? "" : ", ") + module.name;
        }
    }
    const std::string what = uuid.empty() ? inQuotes(name) : "uuid " + inQuotes(uuid);
    fail("there is no node type " + what + "; the packages have " + known);
}

}  // namespace Orlix::Host
