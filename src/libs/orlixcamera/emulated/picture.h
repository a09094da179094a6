// The pictures of the emulated sensor in every pixel format. All patterns repeat after 256 lines,
// so those lines are painted once for each change of a setting, and a frame is made of copies of
// them, from a place that moves. One thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orlixcamera/emulated/registers.h"
#include "orlixcamera/pixel/planes.h"

namespace Orlix::Emulated {

class Picture {
public:
    // Paints if anything changed; allocates only for a larger width than before.
    void Prepare(const PictureSettings& settings);
    // The bytes of a frame as prepared.
    [[nodiscard]] std::size_t GetSize() const noexcept {
        return static_cast<std::size_t>(planes_.size);
    }
    // What the sensor sees, in a word: the name of the test pattern, or "Scene".
    [[nodiscard]] const std::string& GetSceneName() const noexcept { return sceneName_; }
    // Writes GetSize() bytes. The first frame has the number 0.
    void Write(void* buffer, std::uint64_t frameNumber) const;

private:
    void paintPlane(std::size_t plane);
    void writePlane(std::uint8_t* out, std::size_t plane, std::uint64_t shift) const;

    PictureSettings settings_;
    bool prepared_ = false;
    std::string sceneName_;
    ImagePlanes planes_;
    std::array<std::vector<std::uint8_t>, 3> lines_;  // of each plane, one behind the other
};

}  // namespace Orlix::Emulated
