#include "orlixcamera/codecs/bmpheader.h"

#include <algorithm>
#include <bit>
#include <string>

#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/decodedpicture.h"

namespace Orlix {

namespace {

constexpr std::size_t fileHeaderSize = 14;
constexpr std::uint32_t coreHeaderSize = 12;  // the oldest form, with 16-bit sizes
constexpr std::uint32_t infoHeaderSize = 40;
constexpr std::uint32_t maskedHeaderSize = 52;  // from here on the colour masks are part of it
constexpr std::uint32_t alphaHeaderSize = 56;   // and the alpha mask, too
constexpr std::size_t masksPosition = fileHeaderSize + infoHeaderSize;

// Values of the compression field.
enum : std::uint32_t {
    plain = 0,
    runLength8 = 1,
    runLength4 = 2,
    bitFields = 3,
    alphaBitFields = 6
};

// Little-endian numbers at fixed places of the header.
class Fields {
public:
    explicit Fields(const InputFile& file)
        : count_(file.ReadSome(0, bytes_.data(), bytes_.size())) {}

    [[nodiscard]] std::uint32_t Word(std::size_t position) const {
        return At(position) | (At(position + 1) << 8U);
    }
    [[nodiscard]] std::uint32_t Long(std::size_t position) const {
        return Word(position) | (Word(position + 2) << 16U);
    }

private:
    [[nodiscard]] std::uint32_t At(std::size_t position) const {
        if (position >= count_) {
            throw truncatedFile();
        }
        return bytes_.at(position);
    }

    std::array<std::uint8_t, 128> bytes_{};
    std::size_t count_;
};

void readSize(const Fields& fields, std::uint32_t headerSize, BmpHeader& header) {
    if (headerSize == coreHeaderSize) {
        header.width = fields.Word(18);
        header.height = fields.Word(20);
        header.bitsPerPixel = fields.Word(24);
        return;
    }
    const auto width = static_cast<std::int32_t>(fields.Long(18));
    const std::int64_t height = static_cast<std::int32_t>(fields.Long(22));
    if (width < 0) {
        throw CodecError("the header tells a width of " + std::to_string(width) + " pixels");
    }
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(height < 0 ? -height : height);
    header.rowOrder = height < 0 ? BmpRowOrder::TopDown : BmpRowOrder::BottomUp;
    header.bitsPerPixel = fields.Word(28);
}

BmpCompression compressionOf(std::uint32_t value, const BmpHeader& header) {
    const bool hasMasks = value == bitFields || value == alphaBitFields;
    const bool isTrueColor = header.bitsPerPixel == 16 || header.bitsPerPixel == 32;
    if (value == plain || (hasMasks && isTrueColor)) {
        return BmpCompression::None;
    }
    const bool isBottomUp = header.rowOrder == BmpRowOrder::BottomUp;
    if (value == runLength8 && header.bitsPerPixel == 8 && isBottomUp) {
        return BmpCompression::RunLength8;
    }
    if (value == runLength4 && header.bitsPerPixel == 4 && isBottomUp) {
        return BmpCompression::RunLength4;
    }
    throw CodecError("compression " + std::to_string(value) + " with " +
                     std::to_string(header.bitsPerPixel) + " bits per pixel is not supported");
}

BmpChannel channelOf(std::uint32_t mask, unsigned bitsPerPixel) {
    if (mask == 0) {
        return {};
    }
    const auto shift = static_cast<unsigned>(std::countr_zero(mask));
    const auto bits = static_cast<unsigned>(std::popcount(mask));
    const bool isContiguous = bits == 32 - shift - static_cast<unsigned>(std::countl_zero(mask));
    if (!isContiguous || shift + bits > bitsPerPixel) {
        throw CodecError("a colour mask is damaged");
    }
    return {shift, bits};
}

void readMasks(const Fields& fields, std::uint32_t headerSize, std::uint32_t compression,
               BmpHeader& header) {
    if (compression == plain) {
        const bool isSmall = header.bitsPerPixel == 16;
        header.channels = isSmall ? std::array<BmpChannel, 4>{{{0, 5}, {5, 5}, {10, 5}, {}}}
                                  : std::array<BmpChannel, 4>{{{0, 8}, {8, 8}, {16, 8}, {}}};
        return;
    }
    const bool hasAlpha = headerSize >= alphaHeaderSize || compression == alphaBitFields;
    // The file lists red first.
    for (std::size_t i = 0; i < 3; ++i) {
        header.channels.at(2 - i) =
            channelOf(fields.Long(masksPosition + 4 * i), header.bitsPerPixel);
    }
    const auto isEmpty = [](const BmpChannel& channel) { return channel.bits == 0; };
    if (std::all_of(header.channels.begin(), header.channels.begin() + 3, isEmpty)) {
        throw CodecError("the masks of all colours are empty");
    }
    if (hasAlpha) {
        header.channels[3] = channelOf(fields.Long(masksPosition + 12), header.bitsPerPixel);
    }
}

// A palette may be shorter than the pixels' range; colours that it lacks are black.
void readPalette(const InputFile& file, const Fields& fields, std::uint32_t headerSize,
                 BmpHeader& header) {
    const bool isCore = headerSize == coreHeaderSize;
    const std::uint32_t range = 1U << header.bitsPerPixel;
    const std::uint32_t told = isCore ? 0 : fields.Long(46);
    const std::size_t entrySize = isCore ? 3 : 4;
    const std::uint64_t start = fileHeaderSize + headerSize;
    const std::uint64_t room = header.pixelOffset > start ? header.pixelOffset - start : 0;
    const std::uint64_t count =
        std::min<std::uint64_t>({range, told != 0 ? told : range, room / entrySize});
    std::array<std::uint8_t, 1024> bytes{};
    file.Read(start, bytes.data(), count * entrySize);
    header.palette.resize(range);
    for (std::size_t i = 0; i < count; ++i) {
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(i * entrySize), 3,
                    header.palette[i].begin());
    }
}

void requireKnownForm(std::uint32_t headerSize) {
    constexpr std::array<std::uint32_t, 7> known = {
        coreHeaderSize, infoHeaderSize, maskedHeaderSize, alphaHeaderSize, 64, 108, 124};
    if (std::find(known.begin(), known.end(), headerSize) == known.end()) {
        throw CodecError("a header of " + std::to_string(headerSize) + " bytes is not supported");
    }
}

void requireKnownDepth(unsigned bitsPerPixel) {
    constexpr std::array<unsigned, 6> known = {1, 4, 8, 16, 24, 32};
    if (std::find(known.begin(), known.end(), bitsPerPixel) == known.end()) {
        throw CodecError("a picture of " + std::to_string(bitsPerPixel) +
                         " bits per pixel is not supported");
    }
}

}  // namespace

std::uint64_t BmpHeader::RowBytes() const {
    return bytesForBits(std::uint64_t{width} * bitsPerPixel);
}

std::uint64_t BmpHeader::Stride() const {
    return (RowBytes() + 3) / 4 * 4;
}

BmpHeader readBmpHeader(const InputFile& file) {
    const Fields fields(file);
    const std::uint32_t headerSize = fields.Long(fileHeaderSize);
    requireKnownForm(headerSize);
    BmpHeader header;
    readSize(fields, headerSize, header);
    requireKnownDepth(header.bitsPerPixel);
    header.pixelOffset = fields.Long(10);
    if (header.pixelOffset < fileHeaderSize + headerSize) {
        throw CodecError("the header tells that the pixels begin inside of it");
    }
    const std::uint32_t compression = headerSize == coreHeaderSize ? plain : fields.Long(30);
    header.compression = compressionOf(compression, header);
    if (header.bitsPerPixel <= 8) {
        readPalette(file, fields, headerSize, header);
    } else {
        readMasks(fields, headerSize, compression, header);
    }
    return header;
}

}  // namespace Orlix
