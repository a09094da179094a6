#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/encoders.h"
#include "orlixcamera/codecs/imagerows.h"

namespace Orlix {

namespace {

struct TiffForm {
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t samples = 0;  // 0: the pixel type can not be stored
    std::uint16_t bits = 8;
    bool isPlanar = false;
    // How many luma samples share their chroma.
    std::uint16_t groupWidth = 1;
    std::uint16_t groupHeight = 1;
};

TiffForm formOf(EPixelType pixelType) {
    switch (pixelType) {
        case PixelType_RGB8Packed:
        case PixelType_BGR8Packed:
            return {PHOTOMETRIC_RGB, 3};
        case PixelType_RGBA8Packed:
        case PixelType_BGRA8Packed:
            return {PHOTOMETRIC_RGB, 4};
        case PixelType_RGB16Packed:
            return {PHOTOMETRIC_RGB, 3, 16};
        case PixelType_RGB8Planar:
            return {PHOTOMETRIC_RGB, 3, 8, true};
        case PixelType_RGB16Planar:
            return {PHOTOMETRIC_RGB, 3, 16, true};
        case PixelType_YUV444Planar:
            return {PHOTOMETRIC_YCBCR, 3, 8, false, 1, 1};
        case PixelType_YUV422Planar:
            return {PHOTOMETRIC_YCBCR, 3, 8, false, 2, 1};
        case PixelType_YUV420Planar:
            return {PHOTOMETRIC_YCBCR, 3, 8, false, 2, 2};
        default:
            break;
    }
    const std::uint32_t bits = BitsPerPixel(pixelType);
    const bool isOneSample = (IsMono(pixelType) || IsBayer(pixelType)) && !IsPacked(pixelType);
    if (isOneSample && (bits == 8 || bits == 16) && pixelType != PixelType_Mono8s) {
        return {PHOTOMETRIC_MINISBLACK, 1, static_cast<std::uint16_t>(bits)};
    }
    return {};
}

class TiffEncoder {
public:
    TiffEncoder(const COrlixImageBase& image, OutputFile& file)
        : image_(image),
          file_(file),
          form_(formOf(image.GetPixelType())),
          rows_(image, ColorOrder::RedFirst) {}

    void Encode() {
        Open();
        WriteTags();
        if (form_.photometric == PHOTOMETRIC_YCBCR) {
            WriteGroups();
        } else {
            WriteSamples();
        }
        Check(TIFFFlush(handle_.get()) == 1);
    }

private:
    struct Close {
        void operator()(TIFF* handle) const { TIFFClose(handle); }
    };

    void Open();
    void WriteTags();
    void WriteColorTags();
    void WriteSamples();
    void WriteGroups();
    void WriteStrip(std::uint32_t strip, const void* data, std::size_t size);
    unsigned char* AppendGroups(std::uint32_t groupRow, unsigned char* target) const;
    [[nodiscard]] std::size_t StripRowBytes() const;
    [[nodiscard]] std::uint32_t RowsPerStrip() const;

    void Check(bool isGood) const {
        if (!isGood) {
            throw CodecError(error_.empty() ? "the picture can not be encoded" : error_);
        }
    }

    // Callbacks of libtiff; no exception may pass through it.
    static TiffEncoder& Of(void* handle) { return *static_cast<TiffEncoder*>(handle); }
    static tmsize_t Read(thandle_t handle, void* data, tmsize_t size);
    static tmsize_t Write(thandle_t handle, void* data, tmsize_t size);
    static toff_t Seek(thandle_t handle, toff_t offset, int origin);
    [[gnu::format(printf, 4, 0)]] static int Error(TIFF*, void* self, const char*,
                                                   const char* format, va_list arguments);

    const COrlixImageBase& image_;
    OutputFile& file_;
    TiffForm form_;
    ImageRows rows_;
    std::uint64_t position_ = 0;
    std::string error_;
    std::unique_ptr<TIFF, Close> handle_;
};

tmsize_t TiffEncoder::Read(thandle_t handle, void* data, tmsize_t size) {
    TiffEncoder& self = Of(handle);
    try {
        const std::size_t count =
            self.file_.Read(self.position_, data, static_cast<std::size_t>(size));
        self.position_ += count;
        return static_cast<tmsize_t>(count);
    } catch (const std::exception& error) {
        self.error_ = error.what();
        return -1;
    }
}

tmsize_t TiffEncoder::Write(thandle_t handle, void* data, tmsize_t size) {
    TiffEncoder& self = Of(handle);
    try {
        self.file_.Write(self.position_, data, static_cast<std::size_t>(size));
        self.position_ += static_cast<std::uint64_t>(size);
        return size;
    } catch (const std::exception& error) {
        self.error_ = error.what();
        return -1;
    }
}

toff_t TiffEncoder::Seek(thandle_t handle, toff_t offset, int origin) {
    TiffEncoder& self = Of(handle);
    const std::uint64_t base = origin == SEEK_CUR   ? self.position_
                               : origin == SEEK_END ? self.file_.Size()
                                                    : 0;
    self.position_ = base + offset;
    return self.position_;
}

int TiffEncoder::Error(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    if (Of(self).error_.empty()) {
        std::array<char, 500> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        Of(self).error_ = text.data();
    }
    return 1;
}

void TiffEncoder::Open() {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &TiffEncoder::Error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, this);
    // Offsets of 32 bits do for most files; the form with 64 bits is known to fewer readers.
    constexpr std::uint64_t mostPixelBytes = 0xF0000000;
    const char* const mode = image_.GetImageSize() > mostPixelBytes ? "w8" : "w";
    handle_.reset(TIFFClientOpenExt(
        "picture", mode, this, &TiffEncoder::Read, &TiffEncoder::Write, &TiffEncoder::Seek,
        [](thandle_t) { return 0; }, [](thandle_t handle) { return Of(handle).file_.Size(); },
        nullptr, nullptr, options.get()));
    Check(handle_ != nullptr);
}

void TiffEncoder::WriteTags() {
    TIFF* const tiff = handle_.get();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, rows_.Width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows_.Height());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form_.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form_.samples);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form_.photometric);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                 form_.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    WriteColorTags();
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, RowsPerStrip());
}

void TiffEncoder::WriteColorTags() {
    TIFF* const tiff = handle_.get();
    if (form_.samples == 4) {
        const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
    if (form_.photometric == PHOTOMETRIC_YCBCR) {
        std::array<float, 6> fullRange = {0, 255, 128, 255, 128, 255};
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, form_.groupWidth, form_.groupHeight);
        TIFFSetField(tiff, TIFFTAG_REFERENCEBLACKWHITE, fullRange.data());
    }
}

// Bytes of a strip for each row of groups; without groups that is a row of the picture.
std::size_t TiffEncoder::StripRowBytes() const {
    if (form_.photometric != PHOTOMETRIC_YCBCR) {
        return rows_.RowBytes();
    }
    const std::size_t groups =
        (std::size_t{rows_.Width()} + form_.groupWidth - 1) / form_.groupWidth;
    return groups * (std::size_t{form_.groupWidth} * form_.groupHeight + 2);
}

// Strips of about a megabyte are written in one call each and read without much memory.
std::uint32_t TiffEncoder::RowsPerStrip() const {
    constexpr std::size_t stripBytes = std::size_t{1} << 20U;
    const std::size_t groupRows = std::max<std::size_t>(1, stripBytes / StripRowBytes());
    return static_cast<std::uint32_t>(std::min<std::size_t>(
        groupRows * form_.groupHeight, std::numeric_limits<std::int32_t>::max()));
}

void TiffEncoder::WriteStrip(std::uint32_t strip, const void* data, std::size_t size) {
    const auto bytes = static_cast<tmsize_t>(size);
    // libtiff only reads the bytes, though its type does not say so.
    Check(TIFFWriteEncodedStrip(handle_.get(), strip, const_cast<void*>(data), bytes) == bytes);
}

void TiffEncoder::WriteSamples() {
    const std::uint32_t rowsPerStrip = std::min(RowsPerStrip(), rows_.Height());
    const std::size_t rowBytes = rows_.RowBytes();
    const std::shared_ptr<void> buffer = BufferPool::Instance().Allocate(rowBytes * rowsPerStrip);
    std::uint32_t strip = 0;
    for (std::size_t plane = 0; plane < (form_.isPlanar ? 3U : 1U); ++plane) {
        for (std::uint32_t top = 0; top < rows_.Height(); ++strip) {
            const std::uint32_t count = std::min(rowsPerStrip, rows_.Height() - top);
            auto* target = static_cast<unsigned char*>(buffer.get());
            for (std::uint32_t end = top + count; top < end; ++top, target += rowBytes) {
                const unsigned char* row =
                    form_.isPlanar ? rows_.PlaneRow(plane, top) : rows_.Row(top);
                std::memcpy(target, row, rowBytes);
            }
            WriteStrip(strip, buffer.get(), rowBytes * count);
        }
    }
}

// The format wants the luma samples of a group, row by row, and then its two chroma samples. At the
// right and lower edges the last luma sample is repeated to fill the group.
unsigned char* TiffEncoder::AppendGroups(std::uint32_t groupRow, unsigned char* target) const {
    const std::uint32_t groups = (rows_.Width() + form_.groupWidth - 1) / form_.groupWidth;
    const unsigned char* blue = rows_.PlaneRow(1, groupRow);
    const unsigned char* red = rows_.PlaneRow(2, groupRow);
    for (std::uint32_t group = 0; group < groups; ++group) {
        for (std::uint32_t i = 0; i < form_.groupHeight; ++i) {
            const std::uint32_t y = std::min(groupRow * form_.groupHeight + i, rows_.Height() - 1);
            const unsigned char* luma = rows_.PlaneRow(0, y);
            for (std::uint32_t j = 0; j < form_.groupWidth; ++j) {
                *target++ = luma[std::min(group * form_.groupWidth + j, rows_.Width() - 1)];
            }
        }
        *target++ = blue[group];
        *target++ = red[group];
    }
    return target;
}

void TiffEncoder::WriteGroups() {
    const std::uint32_t allRows = (rows_.Height() + form_.groupHeight - 1) / form_.groupHeight;
    const std::uint32_t rowsPerStrip = std::min(RowsPerStrip() / form_.groupHeight, allRows);
    const std::shared_ptr<void> buffer =
        BufferPool::Instance().Allocate(StripRowBytes() * rowsPerStrip);
    std::uint32_t strip = 0;
    for (std::uint32_t top = 0; top < allRows; ++strip) {
        const std::uint32_t end = std::min(top + rowsPerStrip, allRows);
        const std::size_t size = StripRowBytes() * (end - top);
        auto* target = static_cast<unsigned char*>(buffer.get());
        for (; top < end; ++top) {
            target = AppendGroups(top, target);
        }
        WriteStrip(strip, buffer.get(), size);
    }
}

}  // namespace

bool canEncodeTiff(EPixelType pixelType) {
    return formOf(pixelType).samples != 0;
}

void encodeTiff(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions&) {
    TiffEncoder(image, file).Encode();
}

}  // namespace Orlix
