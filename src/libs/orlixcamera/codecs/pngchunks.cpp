#include "orlixcamera/codecs/pngchunks.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

std::uint32_t readNumber(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | bytes[3];
}

}  // namespace

void PngChunks::Read(void* data, std::size_t size) {
    auto* target = static_cast<unsigned char*>(data);
    while (size > 0) {
        if (headLeft_ == 0 && bodyLeft_ == 0) {
            FindChunk();
        }
        std::size_t count = 0;
        if (headLeft_ > 0) {
            count = std::min(size, headLeft_);
            std::memcpy(target, head_.data() + headSize - headLeft_, count);
            headLeft_ -= count;
        } else {
            count = std::min<std::size_t>(size, bodyLeft_);
            reader_.Read(target, count);
            bodyLeft_ -= count;
        }
        target += count;
        size -= count;
    }
}

void PngChunks::FindChunk() {
    for (;;) {
        reader_.Read(head_.data(), headSize);
        const std::uint32_t size = readNumber(head_.data());
        transparencyCount_ += IsTransparency() ? 1 : 0;
        if (IsOfPicture(size)) {
            headLeft_ = headSize;
            bodyLeft_ = std::uint64_t{size} + checksumSize;
            return;
        }
        Skip(size);
    }
}

bool PngChunks::IsTransparency() const {
    return std::string_view(reinterpret_cast<const char*>(head_.data()) + 4, 4) == "tRNS";
}

// Names of what no reader may do without begin with a capital letter. A size that is none is left
// to the decoder to tell of.
bool PngChunks::IsOfPicture(std::uint32_t size) const {
    const bool isCritical = (head_[4] & 0x20U) == 0;
    return isCritical || IsTransparency() || size > INT32_MAX;
}

void PngChunks::Skip(std::uint32_t size) {
    std::array<unsigned char, 4096> piece{};
    auto checksum = ::crc32(0, head_.data() + 4, 4);
    while (size > 0) {
        const auto count = std::min(size, static_cast<std::uint32_t>(piece.size()));
        reader_.Read(piece.data(), count);
        checksum = ::crc32(checksum, piece.data(), count);
        size -= count;
    }
    reader_.Read(piece.data(), checksumSize);
    if (readNumber(piece.data()) != checksum) {
        throw CodecError("a checksum is wrong");
    }
}

}  // namespace Orlix
