// A TIFF file opened for reading through libtiff, with its errors kept apart from those of other
// files, and the description of its first picture. Objects belong to one thread.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>

#include "orlixcamera/codecs/inputfile.h"

namespace Orlix {

// What the tags tell about the picture, with the defaults of the format filled in.
struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planarConfig = PLANARCONFIG_CONTIG;
    std::uint16_t compression = COMPRESSION_NONE;
    std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    bool isTiled = false;

    [[nodiscard]] bool IsPlanar() const {
        return planarConfig == PLANARCONFIG_SEPARATE && samples > 1;
    }
};

// Where libtiff finds the bytes: it asks for one piece after the other, or has all of them in
// memory at once.
enum class TiffAccess { Pieces, Memory };

struct TiffNeeds {
    TiffAccess access = TiffAccess::Pieces;
    // What libtiff may take for one piece of its own, where that is much.
    std::uint64_t memory = 0;

    [[nodiscard]] bool operator==(const TiffNeeds&) const = default;
};

// Every function throws CodecError.
class TiffFile {
public:
    // `file` must live longer than this object.
    TiffFile(const InputFile& file, const TiffNeeds& needs);
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    [[nodiscard]] TIFF* Handle() const { return handle_.get(); }
    [[nodiscard]] std::uint64_t FileSize() const { return file_.Size(); }
    [[nodiscard]] std::uint64_t MemoryLimit() const { return memoryLimit_; }
    [[nodiscard]] TiffLayout ReadLayout() const;

    // Throws unless the file tells of every strip or tile where it lies, has that place, and enough
    // of it. libtiff would read what else is there, the header of the file first.
    void RequireData(const TiffLayout& layout) const;

    // Throws what libtiff complained about unless `isGood`; also if it only warned of damage, or
    // called the result good all the same.
    void Check(bool isGood) const;

private:
    struct Close {
        void operator()(TIFF* handle) const { TIFFClose(handle); }
    };
    struct Callbacks;

    // What a strip or tile takes without compression; codes end by themselves.
    [[nodiscard]] std::uint64_t SizeOfPiece(const TiffLayout& layout, std::uint32_t number) const;
    // The first complaint is the cause, later ones are its consequences.
    void Keep(std::string text);

    const InputFile& file_;
    std::uint64_t memoryLimit_;
    std::uint64_t position_ = 0;
    std::string firstError_;
    bool isDamaged_ = false;
    bool areCountsGuessed_ = false;  // those of the strips, since the file's can't be right
    std::shared_ptr<void> bytes_;    // of the whole file, if they are in memory
    std::unique_ptr<TIFF, Close> handle_;
};

}  // namespace Orlix
