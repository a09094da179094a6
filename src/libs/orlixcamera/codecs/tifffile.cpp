#include "orlixcamera/codecs/tifffile.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

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

    [[gnu::format(printf, 4, 0)]] static int Error(TIFF*, void* user, const char*,
                                                   const char* format, va_list arguments) {
        Of(user).Keep(Format(format, arguments));
        return 1;
    }

    // The JPEG codec paints over missing data and only warns of it.
    [[gnu::format(printf, 4, 0)]] static int Warning(TIFF*, void* user, const char* module,
                                                     const char* format, va_list arguments) {
        if (module == nullptr || std::string_view(module) != "JPEGLib") {
            return 1;
        }
        const std::string text = Format(format, arguments);
        const bool isHarmless = text.find("extraneous") != std::string::npos;
        const bool isDamage = text.find("Corrupt") != std::string::npos ||
                              text.find("Premature") != std::string::npos;
        if (isDamage && !isHarmless) {
            Of(user).isDamaged_ = true;
            Of(user).Keep(text);
        }
        return 1;
    }

    [[gnu::format(printf, 1, 0)]] static std::string Format(const char* format, va_list arguments) {
        std::array<char, 500> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        return text.data();
    }
};

TiffFile::TiffFile(const InputFile& file, TiffAccess access) : file_(file) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    // What the library allocates for tables and strips, a small multiple of what is in the file.
    constexpr std::uint64_t smallestLimit = std::uint64_t{64} << 20U;
    const std::uint64_t limit = std::max(smallestLimit, 4 * std::min(file.Size(), UINT64_MAX / 8));
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(limit));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &Callbacks::Error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &Callbacks::Warning, this);
    const char* const mode = access == TiffAccess::Memory ? "r" : "rm";
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
