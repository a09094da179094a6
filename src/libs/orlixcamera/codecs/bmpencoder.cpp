#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/encoders.h"
#include "orlixcamera/codecs/imagerows.h"

namespace Orlix {

namespace {

constexpr std::uint32_t fileHeaderSize = 14;
constexpr std::uint32_t infoHeaderSize = 40;
constexpr std::uint32_t alphaHeaderSize = 108;  // the form in which a file has an alpha mask
constexpr std::uint32_t grayEntries = 256;

// Appends little-endian numbers.
class Fields {
public:
    Fields& Word(std::uint32_t value) { return Bytes(value, 2); }
    Fields& Long(std::uint32_t value) { return Bytes(value, 4); }

    Fields& Zeros(std::size_t count) {
        size_ += count;  // the array is zero from the start
        return *this;
    }

    void WriteTo(BufferedWriter& writer) const { writer.Write(bytes_.data(), size_); }

private:
    Fields& Bytes(std::uint32_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes_.at(size_++) = static_cast<unsigned char>(value >> (8 * i));
        }
        return *this;
    }

    std::array<unsigned char, 128> bytes_{};
    std::size_t size_ = 0;
};

class BmpEncoder {
public:
    BmpEncoder(const COrlixImageBase& image, OutputFile& file)
        : writer_(file),
          rows_(image, ColorOrder::BlueFirst),
          bits_(BitsPerPixel(image.GetPixelType())),
          fill_((4 - rows_.RowBytes() % 4) % 4) {}

    void Encode() {
        WriteHeader();
        WritePalette();
        constexpr std::array<unsigned char, 4> zeros{};
        for (std::uint32_t y = rows_.Height(); y-- > 0;) {
            writer_.Write(rows_.Row(y), rows_.RowBytes());
            writer_.Write(zeros.data(), fill_);
        }
        writer_.Flush();
    }

private:
    [[nodiscard]] bool HasAlpha() const { return bits_ == 32; }
    [[nodiscard]] bool IsGray() const { return bits_ == 8; }

    void WriteHeader() {
        const std::uint32_t headerSize = HasAlpha() ? alphaHeaderSize : infoHeaderSize;
        const std::uint32_t offset = fileHeaderSize + headerSize + (IsGray() ? 4 * grayEntries : 0);
        const std::uint64_t pixelBytes = (rows_.RowBytes() + fill_) * rows_.Height();
        constexpr std::uint32_t largest = std::numeric_limits<std::int32_t>::max();
        if (offset + pixelBytes > std::numeric_limits<std::uint32_t>::max() ||
            std::max(rows_.Width(), rows_.Height()) > largest) {
            throw CodecError("the image is larger than the format allows");
        }
        const auto size = static_cast<std::uint32_t>(pixelBytes);
        constexpr std::uint32_t signature = 'B' | ('M' << 8U);
        constexpr std::uint32_t bitFields = 3;
        constexpr std::uint32_t dotsPerMeter = 2835;
        Fields fields;
        fields.Word(signature).Long(offset + size).Long(0).Long(offset).Long(headerSize);
        fields.Long(rows_.Width()).Long(rows_.Height()).Word(1).Word(bits_);
        fields.Long(HasAlpha() ? bitFields : 0).Long(size).Long(dotsPerMeter).Long(dotsPerMeter);
        fields.Long(IsGray() ? grayEntries : 0).Long(0);
        if (HasAlpha()) {
            constexpr std::uint32_t deviceColors = 0x73524742;  // "sRGB"
            fields.Long(0x00FF0000).Long(0x0000FF00).Long(0x000000FF).Long(0xFF000000);
            fields.Long(deviceColors).Zeros(std::size_t{3} * 16);
        }
        fields.WriteTo(writer_);
    }

    void WritePalette() {
        for (std::uint32_t i = 0; IsGray() && i < grayEntries; ++i) {
            Fields entry;
            entry.Long(i * 0x010101).WriteTo(writer_);
        }
    }

    BufferedWriter writer_;
    ImageRows rows_;
    std::uint32_t bits_;
    std::size_t fill_;
};

}  // namespace

bool canEncodeBmp(EPixelType pixelType) {
    constexpr std::array<EPixelType, 5> known = {PixelType_Mono8, PixelType_RGB8Packed,
                                                 PixelType_BGR8Packed, PixelType_RGBA8Packed,
                                                 PixelType_BGRA8Packed};
    return std::find(known.begin(), known.end(), pixelType) != known.end();
}

void encodeBmp(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions&) {
    BmpEncoder(image, file).Encode();
}

}  // namespace Orlix
