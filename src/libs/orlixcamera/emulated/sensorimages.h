// The image files of a folder as what a sensor sees: one after the other, in the order of their
// names, repeated over the whole sensor. Unchanged once loaded, so any thread may read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orlixcamera/orliximage.h"

namespace Orlix::Emulated {

// 16 bits a colour, cut to what a format holds when it is written.
struct Colour {
    std::uint32_t red;
    std::uint32_t green;
    std::uint32_t blue;
};

class SensorImages {
public:
    // Throws RuntimeException that names the folder, or the file, if there is no image file, one
    // can't be read, or all of them need too much memory.
    [[nodiscard]] static std::shared_ptr<const SensorImages> Load(const std::string& folder);

    [[nodiscard]] std::size_t GetCount() const noexcept { return images_.size(); }
    // The name of the file, without its folder.
    [[nodiscard]] const std::string& GetName(std::size_t image) const {
        return images_[image].name;
    }
    // Any place; the picture is repeated.
    [[nodiscard]] Colour GetColour(std::size_t image, std::uint32_t x, std::uint32_t y) const;

private:
    struct Entry {
        std::string name;
        COrlixImage image;
    };

    std::vector<Entry> images_;
};

}  // namespace Orlix::Emulated
