#include "orlixcamera/codecs/bmpdecoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/bmpheader.h"
#include "orlixcamera/codecs/bmprunlength.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

bool isGray(const BmpHeader& header) {
    return std::all_of(header.palette.begin(), header.palette.end(), [](const auto& color) {
        return color[0] == color[1] && color[1] == color[2];
    });
}

EPixelType pixelTypeOf(const BmpHeader& header) {
    if (header.bitsPerPixel <= 8) {
        return isGray(header) ? PixelType_Mono8 : PixelType_BGR8Packed;
    }
    return header.channels[3].bits != 0 ? PixelType_BGRA8Packed : PixelType_BGR8Packed;
}

// Rows of the file that can be used as they are.
bool isStoredAsDelivered(const BmpHeader& header) {
    if (header.bitsPerPixel == 24) {
        return true;
    }
    const auto isByte = [&](std::size_t i) {
        return header.channels.at(i).bits == 8 && header.channels.at(i).shift == 8 * i;
    };
    return header.bitsPerPixel == 32 && isByte(0) && isByte(1) && isByte(2) && isByte(3);
}

// The row of the picture that is the given one of the file.
std::uint32_t pictureRow(const BmpHeader& header, std::uint32_t fileRow) {
    return header.rowOrder == BmpRowOrder::TopDown ? fileRow : header.height - 1 - fileRow;
}

// The system scatters the rows right into their places, in either order, some hundred at a call.
void readRows(const InputFile& file, const BmpHeader& header, const DecodedPicture& picture) {
    constexpr std::uint32_t batch = 512;
    std::array<unsigned char, 4> fill{};
    std::array<iovec, std::size_t{2} * batch> parts{};
    const std::uint64_t fillBytes = header.Stride() - header.RowBytes();
    for (std::uint32_t first = 0; first < header.height; first += batch) {
        std::size_t count = 0;
        for (std::uint32_t y = first; y < header.height && y - first < batch; ++y) {
            parts.at(count++) = {picture.Row(pictureRow(header, y)), header.RowBytes()};
            // Some writers leave out the fill of the last row.
            if (fillBytes != 0 && y + 1 < header.height) {
                parts.at(count++) = {fill.data(), fillBytes};
            }
        }
        file.ReadScattered(header.pixelOffset + first * header.Stride(),
                           std::span(parts).first(count));
    }
}

// Turns a stored row of palette indices into pixels of the picture.
void expandIndices(const BmpHeader& header, const unsigned char* source, unsigned char* target,
                   bool toGray) {
    const unsigned bits = header.bitsPerPixel;
    const unsigned mask = (1U << bits) - 1;
    for (std::uint32_t x = 0; x < header.width; ++x) {
        const std::uint64_t bit = std::uint64_t{x} * bits;
        const auto shift = static_cast<unsigned>(8 - bits - bit % 8);
        const auto& color = header.palette[(source[bit / 8] >> shift) & mask];
        if (toGray) {
            target[x] = color[0];
        } else {
            std::copy(color.begin(), color.end(), target + std::size_t{3} * x);
        }
    }
}

// The sample of a channel, scaled to eight bits.
unsigned char sampleOf(std::uint32_t pixel, BmpChannel channel) {
    if (channel.bits == 0) {
        return 0;
    }
    const std::uint64_t largest = (std::uint64_t{1} << channel.bits) - 1;
    const std::uint64_t value = (pixel >> channel.shift) & largest;
    return static_cast<unsigned char>((value * 255 + largest / 2) / largest);
}

void expandMasked(const BmpHeader& header, const unsigned char* source, unsigned char* target) {
    const std::size_t pixelBytes = header.bitsPerPixel / 8;
    const std::size_t channelCount = header.channels[3].bits != 0 ? 4 : 3;
    for (std::uint32_t x = 0; x < header.width; ++x, source += pixelBytes) {
        std::uint32_t pixel = source[0] | (std::uint32_t{source[1]} << 8U);
        if (pixelBytes == 4) {
            pixel |= (std::uint32_t{source[2]} << 16U) | (std::uint32_t{source[3]} << 24U);
        }
        for (std::size_t i = 0; i < channelCount; ++i) {
            *target++ = sampleOf(pixel, header.channels[i]);
        }
    }
}

// The common picture of 32 bits whose last byte means nothing.
void dropFourthByte(const BmpHeader& header, const unsigned char* source, unsigned char* target) {
    for (std::uint32_t x = 0; x < header.width; ++x, source += 4, target += 3) {
        std::memcpy(target, source, 3);
    }
}

bool hasByteChannels(const BmpHeader& header) {
    for (std::size_t i = 0; i < 3; ++i) {
        if (header.channels.at(i).bits != 8 || header.channels.at(i).shift != 8 * i) {
            return false;
        }
    }
    return header.bitsPerPixel == 32 && header.channels[3].bits == 0;
}

void expandRow(const BmpHeader& header, const unsigned char* source, const DecodedPicture& picture,
               std::uint32_t y) {
    unsigned char* target = picture.Row(y);
    if (header.bitsPerPixel <= 8) {
        expandIndices(header, source, target, picture.pixelType == PixelType_Mono8);
    } else if (hasByteChannels(header)) {
        dropFourthByte(header, source, target);
    } else {
        expandMasked(header, source, target);
    }
}

void expandRows(const InputFile& file, const BmpHeader& header, const DecodedPicture& picture) {
    BufferedReader reader(file, header.pixelOffset);
    const std::shared_ptr<void> row = BufferPool::Instance().Allocate(header.Stride());
    for (std::uint32_t y = 0; y < header.height; ++y) {
        const bool isLast = y + 1 == header.height;
        reader.Read(row.get(), isLast ? header.RowBytes() : header.Stride());
        expandRow(header, static_cast<const unsigned char*>(row.get()), picture,
                  pictureRow(header, y));
    }
}

void requireAllRows(const InputFile& file, const BmpHeader& header) {
    const std::uint64_t needed =
        saturatingProduct(header.Stride(), header.height) - (header.Stride() - header.RowBytes());
    const std::uint64_t present =
        file.Size() > header.pixelOffset ? file.Size() - header.pixelOffset : 0;
    if (needed > present) {
        throw truncatedFile();
    }
}

}  // namespace

DecodedPicture decodeBmp(const InputFile& file, const COrlixImageBase& image) {
    const BmpHeader header = readBmpHeader(file);
    const bool isRunLength = header.compression != BmpCompression::None;
    // Empty rows take two bytes, so a wide picture may unpack to much more than it seems.
    constexpr std::uint64_t runLengthRatio = 4096;
    requirePlausibleSize(header.width, header.height,
                         saturatingProduct(header.RowBytes(), header.height), file.Size(),
                         isRunLength ? runLengthRatio : 1);
    if (!isRunLength) {
        requireAllRows(file, header);
    }
    DecodedPicture picture =
        allocatePicture(image, pixelTypeOf(header), header.width, header.height);
    if (isRunLength) {
        decodeBmpRuns(file, header, picture);
    } else if (isStoredAsDelivered(header)) {
        readRows(file, header, picture);
    } else {
        expandRows(file, header, picture);
    }
    return picture;
}

}  // namespace Orlix
