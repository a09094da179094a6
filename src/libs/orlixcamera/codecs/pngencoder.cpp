#include <spng.h>

#include <algorithm>
#include <memory>
#include <string>

#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/encoders.h"
#include "orlixcamera/codecs/imagerows.h"

namespace Orlix {

namespace {

struct FreeContext {
    void operator()(spng_ctx* context) const { spng_ctx_free(context); }
};

struct PngForm {
    std::uint8_t colorType;
    std::uint8_t bits;
};

PngForm formOf(EPixelType pixelType) {
    switch (pixelType) {
        case PixelType_Mono8:
            return {SPNG_COLOR_TYPE_GRAYSCALE, 8};
        case PixelType_Mono16:
            return {SPNG_COLOR_TYPE_GRAYSCALE, 16};
        case PixelType_RGB8Packed:
        case PixelType_BGR8Packed:
            return {SPNG_COLOR_TYPE_TRUECOLOR, 8};
        case PixelType_RGBA8Packed:
        case PixelType_BGRA8Packed:
            return {SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, 8};
        case PixelType_RGB16Packed:
            return {SPNG_COLOR_TYPE_TRUECOLOR, 16};
        default:
            return {0, 0};
    }
}

class PngEncoder {
public:
    PngEncoder(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options)
        : writer_(file),
          rows_(image, ColorOrder::RedFirst),
          context_(spng_ctx_new(SPNG_CTX_ENCODER)) {
        const PngForm form = formOf(image.GetPixelType());
        spng_ihdr header{};
        header.width = image.GetWidth();
        header.height = image.GetHeight();
        header.color_type = form.colorType;
        header.bit_depth = form.bits;
        Check(context_ != nullptr ? 0 : SPNG_EMEM);
        Check(spng_set_png_stream(context_.get(), &PngEncoder::WriteBytes, this));
        Check(spng_set_ihdr(context_.get(), &header));
        Check(spng_set_option(context_.get(), SPNG_IMG_COMPRESSION_LEVEL,
                              std::clamp(options.pngCompressionLevel, 0, 9)));
        // One filter for all rows: trying each of them costs more than it saves.
        Check(spng_set_option(context_.get(), SPNG_FILTER_CHOICE, SPNG_FILTER_CHOICE_SUB));
    }

    void Encode() {
        Check(spng_encode_image(context_.get(), nullptr, 0, SPNG_FMT_PNG,
                                SPNG_ENCODE_PROGRESSIVE | SPNG_ENCODE_FINALIZE));
        for (std::uint32_t y = 0; y < rows_.Height(); ++y) {
            const int result = spng_encode_row(context_.get(), rows_.Row(y), rows_.RowBytes());
            Check(result == SPNG_EOI ? 0 : result);
        }
        writer_.Flush();
    }

private:
    // No exception may pass through libspng.
    static int WriteBytes(spng_ctx*, void* self, void* source, std::size_t size) {
        auto& encoder = *static_cast<PngEncoder*>(self);
        try {
            encoder.writer_.Write(source, size);
            return 0;
        } catch (const std::exception& error) {
            encoder.writeError_ = error.what();
            return SPNG_IO_ERROR;
        }
    }

    void Check(int result) const {
        if (result != 0) {
            throw CodecError(!writeError_.empty() ? writeError_ : spng_strerror(result));
        }
    }

    BufferedWriter writer_;
    ImageRows rows_;
    std::unique_ptr<spng_ctx, FreeContext> context_;
    std::string writeError_;
};

}  // namespace

bool canEncodePng(EPixelType pixelType) {
    return formOf(pixelType).bits != 0;
}

void encodePng(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options) {
    PngEncoder(image, file, options).Encode();
}

}  // namespace Orlix
