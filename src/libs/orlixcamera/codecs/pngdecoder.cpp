#include "orlixcamera/codecs/pngdecoder.h"

#include <spng.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/pngchunks.h"

namespace Orlix {

namespace {

// Deflate packs at most 1032 to one.
constexpr std::uint64_t largestRatio = 1032;

struct FreeContext {
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

// What a kind of PNG becomes, and how libspng is to deliver it.
struct Target {
    EPixelType pixelType;
    int format;
    int flags;
    // 0, or the bytes at the start of each delivered pixel that are kept; the rest is alpha that
    // the pixel type has no room for.
    std::size_t keptBytes = 0;
};

struct Rule {
    int colorType;
    bool isDeep;
    bool isTransparent;  // by a colour or palette entries that are, not by samples
    Target target;
};

constexpr int gray = SPNG_COLOR_TYPE_GRAYSCALE;
constexpr int grayAlpha = SPNG_COLOR_TYPE_GRAYSCALE_ALPHA;
constexpr int color = SPNG_COLOR_TYPE_TRUECOLOR;
constexpr int colorAlpha = SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
constexpr int palette = SPNG_COLOR_TYPE_INDEXED;

constexpr Target transparent8 = {PixelType_RGBA8Packed, SPNG_FMT_RGBA8, SPNG_DECODE_TRNS};

constexpr std::array<Rule, 14> rules = {{
    {gray, false, false, {PixelType_Mono8, SPNG_FMT_G8, 0}},
    {gray, false, true, transparent8},
    {gray, true, false, {PixelType_Mono16, SPNG_FMT_PNG, 0}},
    {gray, true, true, {PixelType_Mono16, SPNG_FMT_PNG, 0}},
    {grayAlpha, false, false, {PixelType_RGBA8Packed, SPNG_FMT_RGBA8, 0}},
    {grayAlpha, true, false, {PixelType_Mono16, SPNG_FMT_PNG, 0, 2}},
    {color, false, false, {PixelType_RGB8Packed, SPNG_FMT_RGB8, 0}},
    {color, false, true, transparent8},
    {color, true, false, {PixelType_RGB16Packed, SPNG_FMT_PNG, 0}},
    {color, true, true, {PixelType_RGB16Packed, SPNG_FMT_PNG, 0}},
    {colorAlpha, false, false, {PixelType_RGBA8Packed, SPNG_FMT_RGBA8, 0}},
    {colorAlpha, true, false, {PixelType_RGB16Packed, SPNG_FMT_PNG, 0, 6}},
    {palette, false, false, {PixelType_RGB8Packed, SPNG_FMT_RGB8, 0}},
    {palette, false, true, transparent8},
}};

Target chooseTarget(const spng_ihdr& header, bool isTransparent) {
    const auto* rule = std::find_if(rules.begin(), rules.end(), [&](const Rule& known) {
        return known.colorType == header.color_type && known.isDeep == (header.bit_depth == 16) &&
               known.isTransparent == isTransparent;
    });
    if (rule == rules.end()) {
        throw CodecError("colour type " + std::to_string(header.color_type) + " is not supported");
    }
    return rule->target;
}

std::uint64_t bitsPerPixel(const spng_ihdr& header) {
    switch (header.color_type) {
        case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA:
            return 2UL * header.bit_depth;
        case SPNG_COLOR_TYPE_TRUECOLOR:
            return 3UL * header.bit_depth;
        case SPNG_COLOR_TYPE_TRUECOLOR_ALPHA:
            return 4UL * header.bit_depth;
        default:
            return header.bit_depth;
    }
}

// Where the pixels of an interlace pass lie in the picture.
struct Pass {
    std::uint32_t firstX;
    std::uint32_t stepX;
};

constexpr std::array<Pass, 7> adam7 = {{{0, 8}, {4, 8}, {0, 4}, {2, 4}, {0, 2}, {1, 2}, {0, 1}}};

class PngDecoder {
public:
    explicit PngDecoder(const InputFile& file);

    [[nodiscard]] DecodedPicture Decode(const COrlixImageBase& image);

private:
    // Throws for an error code of libspng.
    void Check(int result) const;
    [[nodiscard]] spng_ihdr ReadHeader();
    [[nodiscard]] bool ReadTransparency();
    void RequireTransparencies(int count) const;
    void DecodeWhole(const Target& target);
    void DecodeWithoutAlpha(const Target& target);
    void KeepColors(const spng_row_info& row, const unsigned char* source, std::size_t pixelBytes,
                    std::size_t keptBytes) const;
    static int ReadBytes(spng_ctx*, void* self, void* target, std::size_t size);

    PngChunks chunks_;
    std::uint64_t fileSize_;
    std::unique_ptr<spng_ctx, FreeContext> context_;
    std::string readError_;
    spng_ihdr header_{};
    DecodedPicture picture_;
};

PngDecoder::PngDecoder(const InputFile& file)
    : chunks_(file), fileSize_(file.Size()), context_(spng_ctx_new(0)) {
    if (context_ == nullptr) {
        throw CodecError("no memory is left");
    }
    // By itself it would leave out a transparency whose checksum is wrong.
    Check(spng_set_crc_action(context_.get(), SPNG_CRC_ERROR, SPNG_CRC_ERROR));
    Check(spng_set_png_stream(context_.get(), &PngDecoder::ReadBytes, this));
}

// No exception may pass through libspng.
int PngDecoder::ReadBytes(spng_ctx*, void* self, void* target, std::size_t size) {
    auto& decoder = *static_cast<PngDecoder*>(self);
    try {
        decoder.chunks_.Read(target, size);
        return 0;
    } catch (const std::exception& error) {
        decoder.readError_ = error.what();
        return SPNG_IO_ERROR;
    }
}

void PngDecoder::Check(int result) const {
    if (result == 0) {
        return;
    }
    throw CodecError(!readError_.empty() ? readError_ : spng_strerror(result));
}

spng_ihdr PngDecoder::ReadHeader() {
    spng_ihdr header{};
    Check(spng_get_ihdr(context_.get(), &header));
    const std::uint64_t rowBytes = bytesForBits(header.width * bitsPerPixel(header));
    requirePlausibleSize(header.width, header.height, saturatingProduct(rowBytes, header.height),
                         fileSize_, largestRatio);
    return header;
}

bool PngDecoder::ReadTransparency() {
    spng_trns transparency{};
    const int found = spng_get_trns(context_.get(), &transparency);
    Check(found == SPNG_ECHUNKAVAIL ? 0 : found);
    RequireTransparencies(found == 0 ? 1 : 0);
    return found == 0;
}

// libspng leaves out a transparency that is of a wrong size or in a wrong place, or a second one,
// without a word. Beside samples of alpha it means nothing.
void PngDecoder::RequireTransparencies(int count) const {
    const bool hasAlpha = header_.color_type == grayAlpha || header_.color_type == colorAlpha;
    if (!hasAlpha && chunks_.TransparencyCount() != count) {
        throw CodecError("the transparency is damaged");
    }
}

void PngDecoder::DecodeWhole(const Target& target) {
    Check(spng_decode_image(context_.get(), picture_.buffer.get(), picture_.size, target.format,
                            target.flags));
}

void PngDecoder::KeepColors(const spng_row_info& row, const unsigned char* source,
                            std::size_t pixelBytes, std::size_t keptBytes) const {
    const bool isInterlaced = header_.interlace_method != 0;
    const Pass pass = isInterlaced ? adam7.at(static_cast<std::size_t>(row.pass)) : adam7.back();
    unsigned char* target = picture_.Row(row.row_num);
    for (std::uint64_t x = pass.firstX; x < picture_.width; x += pass.stepX) {
        std::memcpy(target + x * keptBytes, source, keptBytes);
        source += pixelBytes;
    }
}

// libspng would deliver the alpha samples, too, so the rows take a detour through the cache.
void PngDecoder::DecodeWithoutAlpha(const Target& target) {
    Check(spng_decode_image(context_.get(), nullptr, 0, target.format,
                            target.flags | SPNG_DECODE_PROGRESSIVE));
    const std::size_t pixelBytes = target.keptBytes + 2;
    const std::size_t rowBytes = pixelBytes * picture_.width;
    const std::shared_ptr<void> row = BufferPool::Instance().Allocate(rowBytes);
    int result = 0;
    while (result == 0) {
        spng_row_info info{};
        Check(spng_get_row_info(context_.get(), &info));
        result = spng_decode_scanline(context_.get(), row.get(), rowBytes);
        if (result == 0 || result == SPNG_EOI) {
            KeepColors(info, static_cast<const unsigned char*>(row.get()), pixelBytes,
                       target.keptBytes);
        }
    }
    Check(result == SPNG_EOI ? 0 : result);
}

DecodedPicture PngDecoder::Decode(const COrlixImageBase& image) {
    header_ = ReadHeader();
    const bool isTransparent = ReadTransparency();
    const Target target = chooseTarget(header_, isTransparent);
    picture_ = allocatePicture(image, target.pixelType, header_.width, header_.height);
    if (target.keptBytes == 0) {
        DecodeWhole(target);
    } else {
        DecodeWithoutAlpha(target);
    }
    // Reads on to the end mark, since a file without it was cut off.
    Check(spng_decode_chunks(context_.get()));
    RequireTransparencies(isTransparent ? 1 : 0);
    return std::move(picture_);
}

}  // namespace

DecodedPicture decodePng(const InputFile& file, const COrlixImageBase& image) {
    return PngDecoder(file).Decode(image);
}

}  // namespace Orlix
