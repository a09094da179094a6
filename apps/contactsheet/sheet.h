// A contact sheet: small pictures in a grid on one large picture.
#pragma once

#include <cstdint>

#include "orlixcamera/orliximage.h"

namespace Orlix::App {

// For one thread. Pictures go into cells from left to right, line by line.
class Sheet {
public:
    // Throws an exception of the image library if the sheet would be too large.
    Sheet(std::uint32_t columns, std::uint32_t rows);

    // Shrinks the picture to its cell, keeping its proportions. Cells beyond the last are ignored.
    void add(const COrlixImage& picture);
    // A cell for a picture that is not there.
    void addMissing();
    [[nodiscard]] const COrlixImage& image() const noexcept { return image_; }

private:
    struct Place {
        std::uint32_t x;
        std::uint32_t y;
    };

    [[nodiscard]] bool nextPlace(Place& place);
    void fill(Place place, std::uint32_t width, std::uint32_t height, std::uint8_t grey);
    void setPixel(std::uint32_t x, std::uint32_t y, const std::uint8_t* rgb);

    std::uint32_t columns_;
    std::uint32_t rows_;
    std::uint32_t next_ = 0;
    COrlixImage image_;
};

}  // namespace Orlix::App
