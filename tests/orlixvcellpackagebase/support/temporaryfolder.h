// A folder of its own for one test, removed with everything in it at the end.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "orlixcamera/orliximage.h"

namespace Plugin::OrlixVCellPackageBase {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name =
            (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "nodeXXXXXX")
                .string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("can't make " + name);
        }
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const {
        return (path_ / name).string();
    }

    // A file that only looks like what its name says.
    void addFile(const std::string& name) const { std::ofstream(path_ / name) << "no picture"; }
    void addFolder(const std::string& name) const {
        std::filesystem::create_directories(path_ / name);
    }
    // A picture whose width tells it from others.
    void addImage(const std::string& name, std::uint32_t width) const {
        Orlix::COrlixImage image;
        image.Reset(Orlix::PixelType_Mono8, width, 1);
        auto* pixels = static_cast<unsigned char*>(image.GetBuffer());
        std::fill_n(pixels, image.GetImageSize(), static_cast<unsigned char>(width));
        image.Save((path_ / name).c_str());
    }

private:
    std::filesystem::path path_;
};

}  // namespace Plugin::OrlixVCellPackageBase
