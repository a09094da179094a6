#include "orlixcamera/codecs/tifffile.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <span>
#include <string_view>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/decodedpicture.h"

namespace Orlix {

namespace {

// A warning, by the start of the name of what gives it and a part of its text.
struct Sign {
    std::string_view module;
    std::string_view text;
};

// Codecs that paint over what is missing, or drop what is too much, only warn of it.
constexpr std::array<Sign, 6> lostData = {{
    {"JPEGLib", "Corrupt"},
    {"JPEGLib", "Premature"},
    {"JPEGPreDecode", "Improper JPEG strip/tile size"},
    {"Fax", "Premature"},
    {"Fax", "Line length mismatch"},
    {"PackBits", "Discarding"},
}};

constexpr std::array<Sign, 1> guessedCounts = {
    {{"TIFFReadDirectory", "\"StripByteCounts\" field, ignoring"}}};

bool TellsOf(std::span<const Sign> signs, const char* module, std::string_view text) {
    const std::string_view name = module != nullptr ? module : "";
    return std::any_of(signs.begin(), signs.end(), [&](const Sign& sign) {
        return name.starts_with(sign.module) && text.find(sign.text) != std::string_view::npos;
    });
}

}  // namespace

// libtiff's view of the file. No exception may pass through it, so failures become messages.
struct TiffFile::Callbacks {
    static TiffFile& Of(void* handle) { return *static_cast<TiffFile*>(handle); }

    static tmsize_t Read(thandle_t handle, void* data, tmsize_t size) {
        TiffFile& self = Of(handle);
        try {
            const std::size_t count =
                self.file_.ReadSome(self.position_, data, static_cast<std::size_t>(size));
            self.position_ += count;
            return static_cast<tmsize_t>(count);
        } catch (const std::exception& error) {
            self.Keep(error.what());
            return -1;
        }
    }

    static tmsize_t Write(thandle_t, void*, tmsize_t) { return -1; }

    static toff_t Seek(thandle_t handle, toff_t offset, int origin) {
        TiffFile& self = Of(handle);
        const std::uint64_t base = origin == SEEK_CUR   ? self.position_
                                   : origin == SEEK_END ? self.file_.Size()
                                                        : 0;
        self.position_ = base + offset;
        return self.position_;
    }

    static int CloseFile(thandle_t) { return 0; }

    static toff_t Size(thandle_t handle) { return Of(handle).file_.Size(); }

    // A copy takes the place of the mapping that libtiff asks for.
    static int Map(thandle_t handle, void** base, toff_t* size) {
        TiffFile& self = Of(handle);
        try {
            self.bytes_ = BufferPool::Instance().Allocate(self.file_.Size());
            self.file_.Read(0, self.bytes_.get(), self.file_.Size());
        } catch (const std::exception& error) {
            self.Keep(error.what());
            return 0;
        }
        *base = self.bytes_.get();
        *size = self.file_.Size();
        return 1;
    }

    static void Unmap(thandle_t, void*, toff_t) {}

    // What opens a file may get over; a picture that has met an error is not what was written,
    // though the fax codes go on and call each row a good one.
    [[gnu::format(printf, 4, 0)]] static int Error(TIFF*, void* user, const char*,
                                                   const char* format, va_list arguments) {
        TiffFile& self = Of(user);
        self.isDamaged_ = self.isDamaged_ || self.handle_ != nullptr;
        self.Keep(Format(format, arguments));
        return 1;
    }

    [[gnu::format(printf, 4, 0)]] static int Warning(TIFF*, void* user, const char* module,
                                                     const char* format, va_list arguments) {
        TiffFile& self = Of(user);
        const std::string text = Format(format, arguments);
        if (TellsOf(guessedCounts, module, text)) {
            self.areCountsGuessed_ = true;
        }
        if (TellsOf(lostData, module, text) && text.find("extraneous") == std::string::npos) {
            self.isDamaged_ = true;
            self.Keep(text);
        }
        return 1;
    }

    [[gnu::format(printf, 1, 0)]] static std::string Format(const char* format, va_list arguments) {
        std::array<char, 500> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        return text.data();
    }
};

namespace {

// What the library allocates for tables and strips is a small multiple of what is in the file.
std::uint64_t memoryLimitFor(const InputFile& file, const TiffNeeds& needs) {
    constexpr std::uint64_t smallest = std::uint64_t{64} << 20U;
    const std::uint64_t largest = std::numeric_limits<tmsize_t>::max();
    return std::min(std::max({smallest, saturatingProduct(4, file.Size()), needs.memory}), largest);
}

}  // namespace

TiffFile::TiffFile(const InputFile& file, const TiffNeeds& needs)
    : file_(file), memoryLimit_(memoryLimitFor(file, needs)) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(memoryLimit_));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &Callbacks::Error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &Callbacks::Warning, this);
    const char* const mode = needs.access == TiffAccess::Memory ? "r" : "rm";
    handle_.reset(TIFFClientOpenExt("picture", mode, this, &Callbacks::Read, &Callbacks::Write,
                                    &Callbacks::Seek, &Callbacks::CloseFile, &Callbacks::Size,
                                    &Callbacks::Map, &Callbacks::Unmap, options.get()));
    Check(handle_ != nullptr);
}

void TiffFile::Keep(std::string text) {
    if (firstError_.empty()) {
        firstError_ = std::move(text);
    }
}

void TiffFile::Check(bool isGood) const {
    if (!isGood || isDamaged_) {
        throw CodecError(firstError_.empty() ? "the file is damaged" : firstError_);
    }
}

void TiffFile::RequireData(const TiffLayout& layout) const {
    // Codes end by themselves; without one, a guess may reach into what follows the picture.
    if (areCountsGuessed_ && layout.compression == COMPRESSION_NONE) {
        throw CodecError("the byte counts of its strips do not fit the picture");
    }
    constexpr std::uint64_t headerSize = 8;
    const std::uint64_t size = FileSize();
    TIFF* tiff = handle_.get();
    const std::uint32_t count = layout.isTiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t offset = TIFFGetStrileOffset(tiff, i);
        const std::uint64_t bytes = TIFFGetStrileByteCount(tiff, i);
        if (offset < headerSize || offset > size || bytes > size - offset ||
            bytes < SizeOfPiece(layout, i)) {
            throw CodecError("the file does not hold the data of " +
                             std::string(layout.isTiled ? "tile " : "strip ") + std::to_string(i));
        }
    }
}

std::uint64_t TiffFile::SizeOfPiece(const TiffLayout& layout, std::uint32_t number) const {
    TIFF* tiff = handle_.get();
    if (layout.compression != COMPRESSION_NONE) {
        return 0;
    }
    if (layout.isTiled) {
        return TIFFTileSize64(tiff);
    }
    std::uint32_t rows = layout.height;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    rows = std::clamp(rows, std::uint32_t{1}, layout.height);
    const std::uint64_t stripsOfPlane = (std::uint64_t{layout.height} + rows - 1) / rows;
    const auto firstRow = static_cast<std::uint32_t>(number % stripsOfPlane * rows);
    return TIFFVStripSize64(tiff, std::min(rows, layout.height - firstRow));
}

TiffLayout TiffFile::ReadLayout() const {
    TIFF* tiff = handle_.get();
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planarConfig);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &layout.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.sampleFormat);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric) == 0) {
        layout.photometric = layout.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    }
    layout.isTiled = TIFFIsTiled(tiff) != 0;
    return layout;
}

}  // namespace Orlix
