#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it

extern "C" {
#include <jpeglib.h>
}

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"
#include "orlixcamera/codecs/encoders.h"
#include "orlixcamera/codecs/imagerows.h"

namespace Orlix {

namespace {

J_COLOR_SPACE colorSpaceOf(EPixelType pixelType) {
    switch (pixelType) {
        case PixelType_Mono8:
            return JCS_GRAYSCALE;
        case PixelType_RGB8Packed:
            return JCS_EXT_RGB;
        case PixelType_BGR8Packed:
            return JCS_EXT_BGR;
        default:
            return JCS_UNKNOWN;
    }
}

// Drives one compressor; the rules for jumps and exceptions are those of the decoder.
class JpegEncoder {
public:
    JpegEncoder(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options)
        : file_(file), image_(image), quality_(std::clamp(options.jpegQuality, 1, 100)) {
        info_.err = jpeg_std_error(&errors_);
        info_.client_data = this;
        errors_.error_exit = [](j_common_ptr info) {
            JpegEncoder& self = Of(info->client_data);
            info->err->format_message(info, self.message_.data());
            std::longjmp(self.jump_, 1);
        };
        errors_.emit_message = [](j_common_ptr, int) {};
        target_.init_destination = [](j_compress_ptr info) { Of(info->client_data).Rewind(); };
        target_.empty_output_buffer = [](j_compress_ptr info) -> boolean {
            Of(info->client_data).Drain(pieceSize);
            return TRUE;
        };
        target_.term_destination = [](j_compress_ptr info) {
            JpegEncoder& self = Of(info->client_data);
            self.Drain(pieceSize - self.target_.free_in_buffer);
        };
    }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;
    ~JpegEncoder() { jpeg_destroy_compress(&info_); }

    void Encode() {
        if (std::max(image_.GetWidth(), image_.GetHeight()) > JPEG_MAX_DIMENSION) {
            throw CodecError("the image is larger than the format allows");
        }
        rows_ = std::make_unique<ImageRows>(image_, ColorOrder::AsStored);
        buffer_ = BufferPool::Instance().Allocate(pieceSize);
        if (!Run()) {
            throw CodecError(message_.data());
        }
    }

private:
    static constexpr std::size_t pieceSize = std::size_t{64} << 10U;

    static JpegEncoder& Of(void* client) { return *static_cast<JpegEncoder*>(client); }

    // Holds no object with a destructor, since an error jumps out of the middle.
    [[nodiscard]] bool Run() {
        // NOLINTNEXTLINE(bugprone-*): the only way in which libjpeg reports an error
        if (setjmp(jump_) != 0) {
            return false;
        }
        jpeg_create_compress(&info_);
        info_.dest = &target_;
        info_.image_width = image_.GetWidth();
        info_.image_height = image_.GetHeight();
        info_.in_color_space = colorSpaceOf(image_.GetPixelType());
        info_.input_components = info_.in_color_space == JCS_GRAYSCALE ? 1 : 3;
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, quality_, TRUE);
        jpeg_start_compress(&info_, TRUE);
        WriteRows();
        jpeg_finish_compress(&info_);
        return true;
    }

    void WriteRows() {
        while (info_.next_scanline < info_.image_height) {
            // libjpeg only reads the row, though its type does not say so.
            auto* row = const_cast<JSAMPROW>(rows_->Row(info_.next_scanline));
            jpeg_write_scanlines(&info_, &row, 1);
        }
    }

    void Rewind() {
        target_.next_output_byte = static_cast<JOCTET*>(buffer_.get());
        target_.free_in_buffer = pieceSize;
    }

    // The exception must end before the jump, or its memory would be lost.
    void Drain(std::size_t size) {
        bool failed = false;
        try {
            file_.Write(offset_, buffer_.get(), size);
        } catch (const std::exception& error) {
            std::snprintf(message_.data(), message_.size(), "%s", error.what());
            failed = true;
        }
        if (failed) {
            std::longjmp(jump_, 1);
        }
        offset_ += size;
        Rewind();
    }

    OutputFile& file_;
    const COrlixImageBase& image_;
    int quality_;
    std::uint64_t offset_ = 0;
    std::unique_ptr<ImageRows> rows_;
    std::shared_ptr<void> buffer_;
    jpeg_compress_struct info_{};
    jpeg_error_mgr errors_{};
    jpeg_destination_mgr target_{};
    std::jmp_buf jump_{};
    std::array<char, JMSG_LENGTH_MAX> message_{};
};

}  // namespace

bool canEncodeJpeg(EPixelType pixelType) {
    return colorSpaceOf(pixelType) != JCS_UNKNOWN;
}

void encodeJpeg(const COrlixImageBase& image, OutputFile& file, const ImageSaveOptions& options) {
    JpegEncoder(image, file, options).Encode();
}

}  // namespace Orlix
