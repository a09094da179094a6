// From a source path to the list of image files, and the order of that list. Paths are UTF-8 text;
// only names are looked at, no file is opened.
//
// Free functions without state; safe from any thread.
#pragma once

#include <filesystem>
#include <random>
#include <string_view>
#include <system_error>
#include <vector>

#include "gcbase/gcstring.h"
#include "orlixvcellpackagebase/imageloading.h"

namespace Plugin::OrlixVCellPackageBase {

// How the file system is asked, so that a test can let it fail as a real one rarely does.
struct FileSystem {
    std::filesystem::file_status (*getStatus)(const std::filesystem::path& path,
                                              std::error_code& error);
    void (*advance)(std::filesystem::directory_iterator& entry, std::error_code& error);
};

// Takes an extension with its dot; upper and lower case are alike.
[[nodiscard]] bool isSupportedExtension(std::string_view extension);

// The images of a folder, in no particular order and without those of its subfolders, or the one
// image that the path names, as it was given. Empty if there are none or the path does not exist.
// Throws std::filesystem::filesystem_error if the path can't be looked at.
[[nodiscard]] std::vector<GenICam::gcstring> enumerateImages(const GenICam::gcstring& sourcePath);
[[nodiscard]] std::vector<GenICam::gcstring> enumerateImages(const GenICam::gcstring& sourcePath,
                                                             const FileSystem& fileSystem);

// Sorts by the rules of the global locale of this moment, or shuffles.
void orderImages(std::vector<GenICam::gcstring>& paths, SortBy order);

// Every order is equally likely; seeded anew by the system at each call.
void shuffle(std::vector<GenICam::gcstring>& paths);
void shuffle(std::vector<GenICam::gcstring>& paths, std::mt19937& generator);

}  // namespace Plugin::OrlixVCellPackageBase
