// The rows of an image as an encoder wants them: the top one first, and the colours in the order
// of the file format. One object serves one encoder.
#pragma once

#include <cstdint>
#include <memory>

#include "orlixcamera/orliximage.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix {

enum class ColorOrder { AsStored, RedFirst, BlueFirst };

class ImageRows {
public:
    // The image must live longer than this object, and be valid.
    ImageRows(const COrlixImageBase& image, ColorOrder order);

    [[nodiscard]] std::uint32_t Width() const { return image_.GetWidth(); }
    [[nodiscard]] std::uint32_t Height() const { return image_.GetHeight(); }
    [[nodiscard]] std::size_t RowBytes() const { return planes_.planes[0].lineBytes; }

    // Valid until the next call.
    [[nodiscard]] const unsigned char* Row(std::uint32_t y) const;
    // A row of a plane as it is stored. `y` counts the rows of that plane.
    [[nodiscard]] const unsigned char* PlaneRow(std::size_t plane, std::uint32_t y) const;

private:
    const COrlixImageBase& image_;
    ImagePlanes planes_;
    std::shared_ptr<void> swappedRow_;  // only where red and blue have to change places
};

}  // namespace Orlix
