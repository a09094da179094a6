// The bytes of a PNG file as far as they make the picture. What else there is, such as texts, times
// and colour profiles, may be large once unpacked, or of a form that nobody knows: it never decides
// whether a picture can be read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// One thread. Throws CodecError if the file ends, and for a wrong checksum of what is left out.
class PngChunks {
public:
    // `file` must live longer than this object.
    explicit PngChunks(const InputFile& file) : reader_(file) {}

    // Copies the next bytes.
    void Read(void* data, std::size_t size);

    // How many chunks of transparency have been met so far.
    [[nodiscard]] int TransparencyCount() const { return transparencyCount_; }

private:
    // The next chunk of the picture, from its head on.
    void FindChunk();
    [[nodiscard]] bool IsTransparency() const;
    [[nodiscard]] bool IsOfPicture(std::uint32_t size) const;
    void Skip(std::uint32_t size);

    static constexpr std::size_t headSize = 8;      // how many bytes follow, and the name
    static constexpr std::size_t checksumSize = 4;  // behind them

    BufferedReader reader_;
    std::array<unsigned char, headSize> head_{};
    std::size_t headLeft_ = 0;
    std::uint64_t bodyLeft_ = 8;  // the signature of the file comes first
    int transparencyCount_ = 0;
};

}  // namespace Orlix
