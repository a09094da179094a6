#include "orlixcamera/codecs/tiffdecoder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/tifffile.h"
#include "orlixcamera/codecs/tiffrows.h"

namespace Orlix {

namespace {

struct Compression {
    std::uint16_t code;
    std::uint64_t largestRatio;  // bytes of samples that one byte of file can give
};

// The fax codes write an unchanged row with one bit, whatever its width.
constexpr std::uint64_t ratioOfFax = 65536;

// The form of fax codes whose rows begin at even bytes (32771) is left out: libtiff skips one pair
// of bytes too much behind some rows, and can't read what it has written itself.
constexpr std::array<Compression, 10> compressions = {{
    {COMPRESSION_NONE, 1},
    {COMPRESSION_PACKBITS, 64},
    {COMPRESSION_LZW, 2048},
    {COMPRESSION_ADOBE_DEFLATE, 1032},
    {COMPRESSION_DEFLATE, 1032},
    {COMPRESSION_JPEG, 2048},
    {COMPRESSION_ZSTD, 65536},
    {COMPRESSION_CCITTRLE, ratioOfFax},
    {COMPRESSION_CCITTFAX3, ratioOfFax},
    {COMPRESSION_CCITTFAX4, ratioOfFax},
}};

std::uint64_t largestRatio(const TiffLayout& layout) {
    const auto* found =
        std::find_if(compressions.begin(), compressions.end(),
                     [&](const Compression& known) { return known.code == layout.compression; });
    if (found == compressions.end() || TIFFIsCODECConfigured(layout.compression) == 0) {
        throw CodecError("compression " + std::to_string(layout.compression) + " is not supported");
    }
    return found->largestRatio;
}

class TiffDecoder {
public:
    TiffDecoder(const InputFile& file, const TiffNeeds& needs)
        : file_(file, needs), tiff_(file_.Handle()), layout_(file_.ReadLayout()) {}

    // How the file has to be opened so that Decode() can do its work.
    [[nodiscard]] TiffNeeds Needs() const;
    [[nodiscard]] DecodedPicture Decode(const COrlixImageBase& image);

private:
    void RequireSupported() const;
    [[nodiscard]] bool NeedsColorConversion() const;
    void ReadDirectly();
    void ReadRows(const TiffRows& rows);
    void ReadTiles(const TiffRows& rows);
    void ReadTile(const TiffRows& rows, unsigned plane, std::uint32_t left, std::uint32_t top,
                  void* tile);
    void Put(const TiffRows& rows, unsigned plane, const unsigned char* source, std::uint32_t x,
             std::uint32_t y, std::uint32_t pixels) const;
    void ReadColorStrips();
    void ReadColorTiles();
    void PutColors(const std::uint32_t* source, std::uint32_t x, std::uint32_t y,
                   std::uint32_t pixels) const;
    [[nodiscard]] std::uint64_t PieceSize() const;
    void RequirePlausiblePiece() const;
    void FlipRows() const;

    TiffFile file_;
    TIFF* tiff_;
    TiffLayout layout_;
    std::uint64_t largestRatio_ = 1;
    DecodedPicture picture_;
};

// libtiff converts the colours of a strip or tile, or of one of each plane, that it has decoded
// into memory of its own, which may be as large as any that a file of this size can hold. Those of
// bare tiles it converts only from memory: it takes the buffer that it has read one into, which is
// rounded up, for a tile of a wrong size.
TiffNeeds TiffDecoder::Needs() const {
    if (!NeedsColorConversion()) {
        return {};
    }
    if (layout_.compression == COMPRESSION_NONE) {
        return {layout_.isTiled ? TiffAccess::Memory : TiffAccess::Pieces};
    }
    const std::uint64_t planes = layout_.IsPlanar() ? layout_.samples : 1;
    if (saturatingProduct(PieceSize(), planes) <= file_.MemoryLimit()) {
        return {};
    }
    return {TiffAccess::Pieces, saturatingProduct(file_.FileSize(), largestRatio(layout_))};
}

void TiffDecoder::RequireSupported() const {
    if (layout_.sampleFormat != SAMPLEFORMAT_UINT && layout_.sampleFormat != SAMPLEFORMAT_VOID) {
        throw CodecError("samples that are not unsigned integers are not supported");
    }
    // Subsampled colour has at least its luma in full.
    const std::uint64_t samples =
        layout_.photometric == PHOTOMETRIC_YCBCR ? 1 : std::uint64_t{layout_.samples};
    const std::uint64_t rowBytes =
        bytesForBits(std::uint64_t{layout_.width} * layout_.bits * samples);
    requirePlausibleSize(layout_.width, layout_.height, saturatingProduct(rowBytes, layout_.height),
                         file_.FileSize(), largestRatio_);
}

// Colour spaces that need arithmetic are left to libtiff, strip by strip.
bool TiffDecoder::NeedsColorConversion() const {
    const bool isJpegDone =
        layout_.compression == COMPRESSION_JPEG && !layout_.IsPlanar() && layout_.bits == 8;
    return (layout_.photometric == PHOTOMETRIC_YCBCR && !isJpegDone) ||
           layout_.photometric == PHOTOMETRIC_CIELAB;
}

void TiffDecoder::ReadDirectly() {
    std::uint32_t rowsPerStrip = layout_.height;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    rowsPerStrip = std::clamp(rowsPerStrip, std::uint32_t{1}, layout_.height);
    std::uint32_t strip = 0;
    for (std::uint64_t y = 0; y < layout_.height; y += rowsPerStrip, ++strip) {
        const std::uint64_t rows = std::min<std::uint64_t>(rowsPerStrip, layout_.height - y);
        const auto bytes = static_cast<tmsize_t>(rows * picture_.stride);
        file_.Check(TIFFReadEncodedStrip(tiff_, strip, picture_.Row(y), bytes) == bytes);
    }
}

void TiffDecoder::Put(const TiffRows& rows, unsigned plane, const unsigned char* source,
                      std::uint32_t x, std::uint32_t y, std::uint32_t pixels) const {
    unsigned char* target = picture_.Row(y) + picture_.stride / picture_.width * x;
    if (layout_.IsPlanar()) {
        rows.ConvertPlane(plane, source, target, pixels);
    } else {
        rows.Convert(source, target, pixels);
    }
}

void TiffDecoder::ReadRows(const TiffRows& rows) {
    const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize64(tiff_));
    file_.Check(rowBytes >= bytesForBits(std::uint64_t{layout_.width} * layout_.bits *
                                         (layout_.IsPlanar() ? 1U : layout_.samples)));
    const std::shared_ptr<void> row = BufferPool::Instance().Allocate(rowBytes);
    const unsigned planes = layout_.IsPlanar() ? rows.PlaneCount() : 1;
    for (unsigned plane = 0; plane < planes; ++plane) {
        for (std::uint32_t y = 0; y < layout_.height; ++y) {
            file_.Check(TIFFReadScanline(tiff_, row.get(), y, static_cast<std::uint16_t>(plane)) ==
                        1);
            Put(rows, plane, static_cast<const unsigned char*>(row.get()), 0, y, layout_.width);
        }
    }
}

// Of a strip or tile, decoded.
std::uint64_t TiffDecoder::PieceSize() const {
    return layout_.isTiled ? TIFFTileSize64(tiff_) : TIFFStripSize64(tiff_);
}

// A tile may be larger than the picture, but not than what the file could give.
void TiffDecoder::RequirePlausiblePiece() const {
    const std::uint64_t bytes = PieceSize();
    if (bytes == 0 || bytes > saturatingProduct(file_.FileSize(), largestRatio_)) {
        throw CodecError("the header tells " + std::string(layout_.isTiled ? "tiles" : "strips") +
                         " of " + std::to_string(bytes) + " bytes, more than a file of " +
                         std::to_string(file_.FileSize()) + " bytes can hold");
    }
}

void TiffDecoder::ReadTile(const TiffRows& rows, unsigned plane, std::uint32_t left,
                           std::uint32_t top, void* tile) {
    std::uint32_t tileWidth = 0;
    std::uint32_t tileHeight = 0;
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth);
    TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &tileHeight);
    const tmsize_t bytes = TIFFTileSize(tiff_);
    const std::uint32_t number =
        TIFFComputeTile(tiff_, left, top, 0, static_cast<std::uint16_t>(plane));
    file_.Check(TIFFReadEncodedTile(tiff_, number, tile, bytes) == bytes);
    const auto rowBytes = static_cast<std::size_t>(TIFFTileRowSize(tiff_));
    const std::uint32_t width = std::min(tileWidth, layout_.width - left);
    const std::uint32_t height = std::min(tileHeight, layout_.height - top);
    for (std::uint32_t y = 0; y < height; ++y) {
        Put(rows, plane, static_cast<const unsigned char*>(tile) + y * rowBytes, left, top + y,
            width);
    }
}

void TiffDecoder::ReadTiles(const TiffRows& rows) {
    std::uint32_t tileWidth = 0;
    std::uint32_t tileHeight = 0;
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth);
    TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &tileHeight);
    file_.Check(tileWidth != 0 && tileHeight != 0);
    RequirePlausiblePiece();
    const std::shared_ptr<void> tile = BufferPool::Instance().Allocate(TIFFTileSize64(tiff_));
    const unsigned planes = layout_.IsPlanar() ? rows.PlaneCount() : 1;
    for (unsigned plane = 0; plane < planes; ++plane) {
        for (std::uint64_t y = 0; y < layout_.height; y += tileHeight) {
            for (std::uint64_t x = 0; x < layout_.width; x += tileWidth) {
                ReadTile(rows, plane, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                         tile.get());
            }
        }
    }
}

void TiffDecoder::PutColors(const std::uint32_t* source, std::uint32_t x, std::uint32_t y,
                            std::uint32_t pixels) const {
    unsigned char* target = picture_.Row(y) + std::size_t{3} * x;
    for (const std::uint32_t* end = source + pixels; source != end; ++source) {
        *target++ = static_cast<unsigned char>(TIFFGetR(*source));
        *target++ = static_cast<unsigned char>(TIFFGetG(*source));
        *target++ = static_cast<unsigned char>(TIFFGetB(*source));
    }
}

// libtiff delivers these rows with the lowest first.
void TiffDecoder::ReadColorStrips() {
    RequirePlausiblePiece();
    std::uint32_t rowsPerStrip = layout_.height;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    rowsPerStrip = std::clamp(rowsPerStrip, std::uint32_t{1}, layout_.height);
    const std::size_t width = layout_.width;
    const std::shared_ptr<void> strip = BufferPool::Instance().Allocate(4 * width * rowsPerStrip);
    auto* const raster = static_cast<std::uint32_t*>(strip.get());
    for (std::uint64_t top = 0; top < layout_.height; top += rowsPerStrip) {
        const auto rows =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(rowsPerStrip, layout_.height - top));
        const auto first = static_cast<std::uint32_t>(top);
        file_.Check(TIFFReadRGBAStripExt(tiff_, first, raster, 1) == 1);
        for (std::uint32_t y = 0; y < rows; ++y) {
            PutColors(raster + width * (rows - 1 - y), 0, first + y, layout_.width);
        }
    }
}

void TiffDecoder::ReadColorTiles() {
    std::uint32_t tileWidth = 0;
    std::uint32_t tileHeight = 0;
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth);
    TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &tileHeight);
    file_.Check(tileWidth != 0 && tileHeight != 0);
    RequirePlausiblePiece();
    const std::shared_ptr<void> tile =
        BufferPool::Instance().Allocate(std::size_t{4} * tileWidth * tileHeight);
    auto* const raster = static_cast<std::uint32_t*>(tile.get());
    for (std::uint64_t top = 0; top < layout_.height; top += tileHeight) {
        for (std::uint64_t left = 0; left < layout_.width; left += tileWidth) {
            const auto x = static_cast<std::uint32_t>(left);
            const auto y = static_cast<std::uint32_t>(top);
            file_.Check(TIFFReadRGBATileExt(tiff_, x, y, raster, 1) == 1);
            const std::uint32_t rows = std::min(tileHeight, layout_.height - y);
            for (std::uint32_t i = 0; i < rows; ++i) {
                PutColors(raster + std::size_t{tileWidth} * (tileHeight - 1 - i), x, y + i,
                          std::min(tileWidth, layout_.width - x));
            }
        }
    }
}

void TiffDecoder::FlipRows() const {
    for (std::uint32_t y = 0; y < picture_.height / 2; ++y) {
        unsigned char* upper = picture_.Row(y);
        std::swap_ranges(upper, upper + picture_.stride, picture_.Row(picture_.height - 1 - y));
    }
}

DecodedPicture TiffDecoder::Decode(const COrlixImageBase& image) {
    largestRatio_ = largestRatio(layout_);
    RequireSupported();
    file_.RequireData(layout_);
    if (NeedsColorConversion()) {
        picture_ = allocatePicture(image, PixelType_RGB8Packed, layout_.width, layout_.height);
        // Kept from libtiff, which would turn each strip by itself.
        TIFFSetField(tiff_, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        layout_.isTiled ? ReadColorTiles() : ReadColorStrips();
    } else {
        if (layout_.photometric == PHOTOMETRIC_YCBCR) {
            TIFFSetField(tiff_, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        }
        const TiffRows rows(file_, layout_);
        picture_ = allocatePicture(image, rows.PixelType(), layout_.width, layout_.height);
        const bool isDirect = !layout_.isTiled && !layout_.IsPlanar() &&
                              rows.IsStoredAsDelivered() &&
                              TIFFScanlineSize64(tiff_) == picture_.stride;
        isDirect ? ReadDirectly() : layout_.isTiled ? ReadTiles(rows) : ReadRows(rows);
    }
    if (layout_.orientation == ORIENTATION_BOTLEFT) {
        FlipRows();
    }
    return std::move(picture_);
}

}  // namespace

DecodedPicture decodeTiff(const InputFile& file, const COrlixImageBase& image) {
    TiffDecoder decoder(file, {});
    const TiffNeeds needs = decoder.Needs();
    return needs == TiffNeeds{} ? decoder.Decode(image) : TiffDecoder(file, needs).Decode(image);
}

}  // namespace Orlix
