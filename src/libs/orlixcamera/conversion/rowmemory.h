// The memory in which rows of a picture become other rows. A strip of a picture has one; it owns
// nothing.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Orlix {

// Rows of one strip: four windows for raw or luma and chroma rows, and three rows for pixels of up
// to six bytes. All begin at a cache line and may be read and written a vector beyond their end;
// the windows also before their beginning.
class RowMemory {
public:
    static constexpr std::size_t Windows = 4;
    static constexpr std::size_t PixelRows = 3;

    // What one strip of a picture of this width needs.
    [[nodiscard]] static std::size_t Size(std::size_t width) {
        return Windows * WindowSize(width) + PixelRows * PixelRowSize(width);
    }

    RowMemory(std::uint8_t* memory, std::size_t width) : memory_(memory), width_(width) {}

    [[nodiscard]] std::uint8_t* Window(std::size_t number) const {
        return memory_ + number * WindowSize(width_) + Line;
    }
    [[nodiscard]] std::uint8_t* PixelRow(std::size_t number) const {
        return memory_ + Windows * WindowSize(width_) + number * PixelRowSize(width_);
    }

private:
    static constexpr std::size_t Line = 64;
    // Room for a sample behind the last and the longest vector.
    static constexpr std::size_t Beyond = 3 * Line;

    static std::size_t Round(std::size_t size) { return (size + Line - 1) / Line * Line; }
    static std::size_t WindowSize(std::size_t width) { return Line + Round(2 * width + Beyond); }
    static std::size_t PixelRowSize(std::size_t width) { return Round(6 * width + Beyond); }

    std::uint8_t* memory_;
    std::size_t width_;
};

// At least so many bytes at the beginning of a cache line, which belong to the calling thread until
// its next call and stay for it. Throws std::bad_alloc.
[[nodiscard]] std::uint8_t* RowsOfThisThread(std::size_t size);

}  // namespace Orlix
