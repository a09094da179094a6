#include "orlixcamera/codecs/tiffrows.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>

#include "orlixcamera/codecs/cmyk.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

// Inks are given as coverage: 0 is paper, the largest value is solid colour.
template <typename Sample>
void inkToLight(const unsigned char* source, unsigned char* target, std::uint32_t pixels,
                std::size_t samples) {
    std::array<Sample, 4> ink{};
    for (std::uint32_t x = 0; x < pixels; ++x, source += samples * sizeof(Sample)) {
        std::memcpy(ink.data(), source, sizeof(ink));
        for (std::size_t i = 0; i < 3; ++i, target += sizeof(Sample)) {
            const Sample light =
                multiplyFractions(static_cast<Sample>(~ink.at(i)), static_cast<Sample>(~ink[3]));
            std::memcpy(target, &light, sizeof(light));
        }
    }
}

// The black plane comes last and darkens what the others have made.
template <typename Sample>
void darken(const unsigned char* black, unsigned char* target, std::uint32_t pixels) {
    for (std::uint32_t x = 0; x < pixels; ++x, black += sizeof(Sample)) {
        Sample key = 0;
        std::memcpy(&key, black, sizeof(key));
        for (int i = 0; i < 3; ++i, target += sizeof(Sample)) {
            Sample light = 0;
            std::memcpy(&light, target, sizeof(light));
            light = multiplyFractions(light, static_cast<Sample>(~key));
            std::memcpy(target, &light, sizeof(light));
        }
    }
}

template <typename Sample>
void scatter(const unsigned char* source, unsigned char* target, std::size_t targetBytes,
             std::uint32_t pixels, Sample flip) {
    for (std::uint32_t x = 0; x < pixels; ++x, source += sizeof(Sample), target += targetBytes) {
        Sample value = 0;
        std::memcpy(&value, source, sizeof(value));
        value = static_cast<Sample>(value ^ flip);
        std::memcpy(target, &value, sizeof(value));
    }
}

void invert(unsigned char* bytes, std::size_t count) {
    std::transform(bytes, bytes + count, bytes,
                   [](unsigned char value) { return static_cast<unsigned char>(~value); });
}

// Calls with the value of each sample of 1 to 8 bits, the first in the highest bits of a byte.
template <typename Use>
void forEachSmallSample(const unsigned char* source, unsigned bits, std::uint32_t pixels,
                        const Use& use) {
    const unsigned mask = (1U << bits) - 1;
    for (std::uint32_t x = 0; x < pixels; ++x) {
        const std::uint64_t bit = std::uint64_t{x} * bits;
        use((source[bit / 8] >> (8 - bits - bit % 8)) & mask);
    }
}

// Alpha is what is called so, and the unnamed fourth sample of a colour picture.
bool readAlpha(const TiffFile& file, const TiffLayout& layout, std::size_t colors) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(file.Handle(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (layout.samples <= colors) {
        return false;
    }
    if (count == 0 || kinds == nullptr) {
        return colors == 3;
    }
    return kinds[0] != EXTRASAMPLE_UNSPECIFIED || colors == 3;
}

}  // namespace

TiffRows::TiffRows(const TiffFile& file, const TiffLayout& layout) : layout_(layout) {
    ChooseForm();
    ChoosePixelType(form_ != Form::Ink && readAlpha(file, layout, form_ == Form::Light ? 3 : 1));
    if (form_ == Form::Palette) {
        ReadPalette(file);
    }
}

void TiffRows::ChooseForm() {
    switch (layout_.photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE:
            form_ = Form::Gray;
            return;
        case PHOTOMETRIC_PALETTE:
            form_ = Form::Palette;
            return;
        case PHOTOMETRIC_RGB:
        case PHOTOMETRIC_YCBCR:  // the JPEG codec converts it
            form_ = Form::Light;
            return;
        case PHOTOMETRIC_SEPARATED:
            form_ = Form::Ink;
            return;
        default:
            throw CodecError("photometric interpretation " + std::to_string(layout_.photometric) +
                             " is not supported");
    }
}

void TiffRows::ChoosePixelType(bool hasAlpha) {
    const std::size_t needed = form_ == Form::Ink ? 4 : form_ == Form::Light ? 3 : 1;
    const bool isSmall = layout_.bits == 1 || layout_.bits == 2 || layout_.bits == 4;
    const bool mayBeSmall = needed == 1 && layout_.samples == 1;
    const bool isDeep = layout_.bits == 16 && form_ != Form::Palette;
    if (layout_.samples < needed || !(layout_.bits == 8 || isDeep || (isSmall && mayBeSmall))) {
        throw CodecError("a picture of " + std::to_string(layout_.samples) + " samples of " +
                         std::to_string(layout_.bits) + " bits per pixel is not supported");
    }
    if (isDeep) {
        pixelType_ = form_ == Form::Gray ? PixelType_Mono16 : PixelType_RGB16Packed;
    } else if (hasAlpha && form_ != Form::Palette) {
        pixelType_ = PixelType_RGBA8Packed;
    } else {
        pixelType_ = form_ == Form::Gray ? PixelType_Mono8 : PixelType_RGB8Packed;
    }
}

// Colours have 16 bits, but some writers fill only the lower eight.
void TiffRows::ReadPalette(const TiffFile& file) {
    std::array<std::uint16_t*, 3> maps{};
    if (TIFFGetField(file.Handle(), TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) == 0) {
        throw CodecError("the palette is missing");
    }
    const std::size_t count = std::size_t{1} << layout_.bits;
    const bool isWide = std::any_of(maps.begin(), maps.end(), [&](const std::uint16_t* map) {
        return std::any_of(map, map + count, [](std::uint16_t value) { return value > 255; });
    });
    palette_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            palette_[i].at(c) = static_cast<unsigned char>(maps.at(c)[i] >> (isWide ? 8 : 0));
        }
    }
}

std::size_t TiffRows::SourceBytes() const {
    return std::size_t{layout_.samples} * layout_.bits / 8;
}

bool TiffRows::IsStoredAsDelivered() const {
    // Gray with alpha is delivered as three equal colours, whatever else the file has beside it.
    const bool isGrayAlone = form_ == Form::Gray && pixelType_ != PixelType_RGBA8Packed;
    return (isGrayAlone || form_ == Form::Light) && layout_.bits >= 8 &&
           SourceBytes() == TargetBytes() && layout_.photometric != PHOTOMETRIC_MINISWHITE;
}

void TiffRows::Convert(const unsigned char* source, unsigned char* target,
                       std::uint32_t pixels) const {
    switch (form_) {
        case Form::Palette:
            ConvertPalette(source, target, pixels);
            break;
        case Form::Ink:
            (layout_.bits == 16
                 ? inkToLight<std::uint16_t>
                 : inkToLight<std::uint8_t>)(source, target, pixels, layout_.samples);
            break;
        case Form::Gray:
            ConvertGray(source, target, pixels);
            break;
        case Form::Light:
            KeepFirstSamples(source, target, pixels);
            break;
    }
}

void TiffRows::ConvertGray(const unsigned char* source, unsigned char* target,
                           std::uint32_t pixels) const {
    if (pixelType_ == PixelType_RGBA8Packed) {
        ConvertGrayAlpha(source, target, pixels);
        return;
    }
    if (layout_.bits < 8) {
        const unsigned scale = 255 / ((1U << layout_.bits) - 1);
        unsigned char* next = target;
        forEachSmallSample(source, layout_.bits, pixels, [&](unsigned value) {
            *next++ = static_cast<unsigned char>(value * scale);
        });
    } else {
        KeepFirstSamples(source, target, pixels);
    }
    if (layout_.photometric == PHOTOMETRIC_MINISWHITE) {
        invert(target, TargetBytes() * pixels);
    }
}

void TiffRows::ConvertGrayAlpha(const unsigned char* source, unsigned char* target,
                                std::uint32_t pixels) const {
    const unsigned flip = layout_.photometric == PHOTOMETRIC_MINISWHITE ? 0xFF : 0;
    for (std::uint32_t x = 0; x < pixels; ++x, source += layout_.samples, target += 4) {
        std::fill_n(target, 3, static_cast<unsigned char>(source[0] ^ flip));
        target[3] = source[1];
    }
}

void TiffRows::ConvertPalette(const unsigned char* source, unsigned char* target,
                              std::uint32_t pixels) const {
    if (layout_.samples == 1) {
        forEachSmallSample(source, layout_.bits, pixels, [&](unsigned index) {
            target = std::copy(palette_[index].begin(), palette_[index].end(), target);
        });
        return;
    }
    for (std::uint32_t x = 0; x < pixels; ++x, source += layout_.samples) {
        target = std::copy(palette_[source[0]].begin(), palette_[source[0]].end(), target);
    }
}

void TiffRows::KeepFirstSamples(const unsigned char* source, unsigned char* target,
                                std::uint32_t pixels) const {
    const std::size_t sourceBytes = SourceBytes();
    const std::size_t targetBytes = TargetBytes();
    if (sourceBytes == targetBytes) {
        std::memcpy(target, source, targetBytes * pixels);
        return;
    }
    for (std::uint32_t x = 0; x < pixels; ++x, source += sourceBytes, target += targetBytes) {
        std::memcpy(target, source, targetBytes);
    }
}

unsigned TiffRows::PlaneCount() const {
    switch (form_) {
        case Form::Ink:
            return 4;
        case Form::Light:
            return pixelType_ == PixelType_RGBA8Packed ? 4 : 3;
        default:
            return pixelType_ == PixelType_RGBA8Packed ? 2 : 1;
    }
}

void TiffRows::ConvertPlane(unsigned plane, const unsigned char* source, unsigned char* target,
                            std::uint32_t pixels) const {
    const bool isDeep = layout_.bits == 16;
    const auto put = [&](unsigned sample, bool flip) {
        if (isDeep) {
            scatter<std::uint16_t>(source, target + std::size_t{2} * sample, TargetBytes(), pixels,
                                   flip ? 0xFFFF : 0);
        } else {
            scatter<std::uint8_t>(source, target + sample, TargetBytes(), pixels, flip ? 0xFF : 0);
        }
    };
    if (form_ == Form::Ink && plane == 3) {
        (isDeep ? darken<std::uint16_t> : darken<std::uint8_t>)(source, target, pixels);
    } else if (form_ == Form::Palette) {
        forEachSmallSample(source, layout_.bits, pixels, [&](unsigned index) {
            target = std::copy(palette_[index].begin(), palette_[index].end(), target);
        });
    } else if (form_ == Form::Gray && pixelType_ == PixelType_RGBA8Packed) {
        const bool isWhiteZero = layout_.photometric == PHOTOMETRIC_MINISWHITE;
        for (unsigned sample = plane == 0 ? 0 : 3; sample < (plane == 0 ? 3U : 4U); ++sample) {
            put(sample, plane == 0 && isWhiteZero);
        }
    } else {
        put(plane, form_ == Form::Ink || layout_.photometric == PHOTOMETRIC_MINISWHITE);
    }
}

}  // namespace Orlix
