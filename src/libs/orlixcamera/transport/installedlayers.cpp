#include "orlixcamera/installedlayers.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/instantcamera/messages.h"
#include "orlixcamera/transport/backend.h"
#include "orlixcamera/transport/transport.h"

namespace Orlix {
namespace {

namespace fs = std::filesystem;
using Layers = std::vector<std::shared_ptr<Transport::ILayer>>;

[[noreturn]] void fail(const std::string& text) {
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

fs::path folderOfThisLibrary() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&CreateInstalledLayers), &info) == 0) {
        return {};
    }
    std::error_code failure;
    const fs::path file = fs::canonical(info.dli_fname, failure);
    return failure ? fs::path() : file.parent_path();
}

// In the order of their names, so that layers don't change places between runs.
std::vector<fs::path> findBackends(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string name = at->path().filename().string();
        if (name.starts_with(Transport::backendFilePrefix) && name.ends_with(".so")) {
            files.push_back(at->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// A module stays loaded: its code may be on any thread and behind any layer.
Transport::CreateLayer openBackend(const fs::path& file) {
    void* const library = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        const char* const reason = ::dlerror();
        fail(reason != nullptr ? reason : "no reason is known");
    }
    void* const function = ::dlsym(library, Transport::createLayerName);
    if (function == nullptr) {
        fail(std::string("it has no function '") + Transport::createLayerName + "'");
    }
    return reinterpret_cast<Transport::CreateLayer>(function);
}

void addLayersOf(const fs::path& file, Layers& layers) {
    const Transport::CreateLayer create = openBackend(file);
    std::uint32_t number = 0;
    while (Transport::ILayer* const layer = create(Transport::backendVersion, number)) {
        layers.emplace_back(layer);
        ++number;
    }
    if (number == 0) {
        fail("it gives this library no layer; it may be built for another version of it");
    }
}

}  // namespace

std::vector<std::shared_ptr<Transport::ILayer>> CreateInstalledLayers() {
    Layers layers;
    for (const fs::path& file : findBackends(folderOfThisLibrary())) {
        try {
            addLayersOf(file, layers);
        } catch (...) {
            Detail::Tell("The transport back end " + file.string() +
                         " can't be used: " + Detail::TextOfCurrentException());
        }
    }
    return layers;
}

}  // namespace Orlix
