// The pictures of the emulated sensor in every pixel format. All patterns repeat after 256 lines,
// so those lines are painted once for each change of a setting, and a frame is made of copies of
// them, from a place that moves; of image files each is painted whole. With noise there are a few
// paintings of each line to choose from. One thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orlixcamera/emulated/registers.h"
#include "orlixcamera/pixel/pixeltable.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix::Emulated {

// What tells which samples a pixel of a plane has.
struct PlaneStyle {
    const PixelFormat& format;
    std::size_t plane;
};

class ORLIXCAMERA_API Picture {
public:
    // Paints what changed; allocates only for more pixels than before. The first frame has the
    // number 0.
    void Prepare(const PictureSettings& settings, std::uint64_t frameNumber);
    // The bytes of a frame as prepared.
    [[nodiscard]] std::size_t GetSize() const noexcept {
        return static_cast<std::size_t>(planes_.size);
    }
    // What the sensor sees, in a word: the name of the test pattern or the image file, or "Scene".
    [[nodiscard]] const std::string& GetSceneName() const noexcept {
        return painted_[current_].name;
    }
    // Writes GetSize() bytes of the frame as prepared.
    void Write(void* buffer, std::uint64_t frameNumber) const;

private:
    struct Painted {
        bool valid = false;
        std::size_t image = 0;
        std::string name;
        std::array<std::vector<std::uint8_t>, 3> lines;  // of each plane, one behind the other
    };

    void fitCache();
    [[nodiscard]] std::uint32_t paintedLines() const noexcept;
    void paintPlane(Painted& painted, std::size_t plane) const;
    template <typename ColourOf>
    void paintLine(const PlaneStyle& style, std::uint32_t line, std::uint8_t* out,
                   const ColourOf& colourOf) const;
    void writePlane(std::uint8_t* out, std::size_t plane, std::uint64_t frameNumber) const;

    PictureSettings settings_;
    bool prepared_ = false;
    bool showsFiles_ = false;
    std::uint32_t variantCount_ = 1;
    ImagePlanes planes_;
    std::vector<Painted> painted_;
    std::size_t current_ = 0;
};

}  // namespace Orlix::Emulated
