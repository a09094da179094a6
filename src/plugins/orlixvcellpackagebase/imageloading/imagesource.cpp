#include "imageloading/imagesource.h"

#include <algorithm>
#include <locale>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "imageloading/paths.h"
#include "orlixdataprocessingcore/utils/helper.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;
using Orlix::DataProcessing::Core::Helper;
namespace fs = std::filesystem;

namespace {

const std::map<gcstring, std::set<gcstring>>& extensionsByFormat() {
    static const std::map<gcstring, std::set<gcstring>> table{
        {"BMP", {"BMP"}},
        {"JPG", {"JPG", "JPEG"}},
        {"PNG", {"PNG"}},
        {"TIF", {"TIF", "TIFF"}},
    };
    return table;
}

std::set<gcstring> collectExtensions() {
    std::set<gcstring> all;
    for (const auto& [format, extensions] : extensionsByFormat()) {
        for (const gcstring& extension : extensions) {
            all.insert(Helper::toUpper(extension));
        }
    }
    return all;
}

bool hasSupportedExtension(const fs::path& path) {
    return isSupportedExtension(path.extension().string());
}

// The operation's name is part of the message that a user sees when a start fails.
void throwOn(const std::error_code& error, const char* operation, const fs::path& path) {
    if (error) {
        throw fs::filesystem_error(operation, path, error);
    }
}

constexpr FileSystem systemsOwn{
    [](const fs::path& path, std::error_code& error) { return fs::status(path, error); },
    [](fs::directory_iterator& entry, std::error_code& error) { entry.increment(error); },
};

fs::file_status getStatus(const fs::path& path, const FileSystem& fileSystem) {
    std::error_code error;
    const fs::file_status status = fileSystem.getStatus(path, error);
    if (status.type() == fs::file_type::not_found) {
        return status;
    }
    throwOn(error, status.type() == fs::file_type::unknown ? "exists" : "status", path);
    return status;
}

bool isImageEntry(const fs::directory_entry& entry) {
    std::error_code error;
    const fs::file_status status = entry.status(error);
    // A link without a target is listed; loading it tells what is wrong.
    if (status.type() != fs::file_type::not_found) {
        throwOn(error, "directory_entry::status", entry.path());
    }
    return status.type() != fs::file_type::directory && hasSupportedExtension(entry.path());
}

std::vector<gcstring> enumerateFolder(const fs::path& folder, const FileSystem& fileSystem) {
    std::vector<gcstring> images;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    throwOn(error, "directory_iterator::directory_iterator", folder);
    while (entry != fs::directory_iterator()) {
        if (isImageEntry(*entry)) {
            images.push_back(toPreferredText(entry->path()));
        }
        fileSystem.advance(entry, error);
        throwOn(error, "directory_iterator::operator++", folder);
    }
    return images;
}

// The lesser text first, by the collation of one locale.
class LocaleLess {
public:
    bool operator()(const gcstring& left, const gcstring& right) const {
        return locale_(std::string(left.c_str()), std::string(right.c_str()));
    }

private:
    std::locale locale_;
};

}  // namespace

bool isSupportedExtension(std::string_view extension) {
    static const std::set<gcstring> supported = collectExtensions();
    if (!extension.starts_with('.')) {
        return false;
    }
    const std::string name(extension.substr(1));
    return supported.contains(Helper::toUpper(gcstring(name.c_str())));
}

std::vector<gcstring> enumerateImages(const gcstring& sourcePath) {
    return enumerateImages(sourcePath, systemsOwn);
}

std::vector<gcstring> enumerateImages(const gcstring& sourcePath, const FileSystem& fileSystem) {
    // No file has a null character in its name; the system would look for what is in front of it.
    if (sourcePath.find('\0') != gcstring::npos) {
        return {};
    }
    const fs::path path(sourcePath.c_str());
    const fs::file_status status = getStatus(path, fileSystem);
    if (status.type() == fs::file_type::not_found) {
        return {};
    }
    if (status.type() == fs::file_type::directory) {
        return enumerateFolder(path, fileSystem);
    }
    if (!hasSupportedExtension(path)) {
        return {};
    }
    return {toPreferredText(path)};
}

void orderImages(std::vector<gcstring>& paths, SortBy order) {
    switch (order) {
        case Random:
            shuffle(paths);
            break;
        case Ascending:
            std::sort(paths.begin(), paths.end(), LocaleLess());
            break;
        default:
            // Values from outside that are no member of the enumeration count as descending.
            std::sort(paths.rbegin(), paths.rend(), LocaleLess());
    }
}

void shuffle(std::vector<gcstring>& paths) {
    std::random_device device;
    std::mt19937 generator(device());
    shuffle(paths, generator);
}

void shuffle(std::vector<gcstring>& paths, std::mt19937& generator) {
    for (std::size_t index = 1; index < paths.size(); ++index) {
        std::uniform_int_distribution<std::size_t> draw(0, index);
        const std::size_t other = draw(generator);
        if (other != index) {
            std::swap(paths[index], paths[other]);
        }
    }
}

}  // namespace Plugin::OrlixVCellPackageBase
