#include "orlixcamera/codecs/jpegdecoder.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it
#include <string>
#include <utility>

extern "C" {
#include <jerror.h>
#include <jpeglib.h>
}

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/cmyk.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

// A block of 64 samples takes at least one bit a component. Subsampled to the utmost this gives
// about 1400 bytes of picture from one byte of file.
constexpr std::uint64_t largestRatio = 2048;
// Each scan of a progressive picture costs a pass over the whole of it. Encoders make about ten.
constexpr int mostScans = 100;

// Of all other warnings the picture is not what was written. Pictures of one pass need no numbers
// of their pass, so that there are writers that leave them 0.
bool isHarmless(int warning) {
    return warning == JWRN_EXTRANEOUS_DATA || warning == JWRN_ADOBE_XFORM ||
           warning == JWRN_JFIF_MAJOR || warning == JWRN_BOGUS_ICC ||
           warning == JWRN_NOT_SEQUENTIAL;
}

// Drives one decompressor. libjpeg reports errors by a jump over its own C frames. Each function
// that calls it sets the jump anew and holds no object with a destructor; everything that must
// survive is a member. No C++ exception passes through libjpeg.
class JpegDecoder {
public:
    explicit JpegDecoder(const InputFile& file);
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;
    ~JpegDecoder() { jpeg_destroy_decompress(&info_); }

    [[nodiscard]] DecodedPicture Decode(const COrlixImageBase& image);

private:
    using Step = void (JpegDecoder::*)();

    // Runs a step and throws what it fails with.
    void Guard(Step step);
    [[nodiscard]] bool Run(Step step);

    void Create();
    void ReadHeader();
    void Start();
    void NoteScan();
    void ReadRows();
    void ReadInkRows();
    void Finish() { static_cast<void>(jpeg_finish_decompress(&info_)); }

    void RequireSupported() const;
    void InkToLight(unsigned char* target) const;

    [[noreturn]] void Fail(const char* cause);
    void FillBuffer();
    void Skip(long count);

    static JpegDecoder& Of(void* client) { return *static_cast<JpegDecoder*>(client); }
    static void InstallCallbacks(jpeg_source_mgr& source);

    BufferedReader reader_;
    std::uint64_t fileSize_;
    jpeg_decompress_struct info_{};
    jpeg_error_mgr errors_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    std::bitset<MAX_COMPONENTS> scanned_;  // the components that a scan has been met of
    std::jmp_buf jump_{};
    std::array<char, JMSG_LENGTH_MAX> message_{};
    DecodedPicture picture_;
    std::shared_ptr<void> inkRow_;
};

JpegDecoder::JpegDecoder(const InputFile& file) : reader_(file), fileSize_(file.Size()) {
    info_.err = jpeg_std_error(&errors_);
    info_.client_data = this;
    errors_.error_exit = [](j_common_ptr info) {
        JpegDecoder& self = Of(info->client_data);
        info->err->format_message(info, self.message_.data());
        std::longjmp(self.jump_, 1);
    };
    errors_.emit_message = [](j_common_ptr info, int level) {
        if (level < 0 && !isHarmless(info->err->msg_code)) {
            info->err->error_exit(info);
        }
    };
    progress_.progress_monitor = [](j_common_ptr info) { Of(info->client_data).NoteScan(); };
    InstallCallbacks(source_);
    // Create() clears the structure except for these two members.
    Guard(&JpegDecoder::Create);
}

void JpegDecoder::InstallCallbacks(jpeg_source_mgr& source) {
    source.init_source = [](j_decompress_ptr) {};
    source.term_source = [](j_decompress_ptr) {};
    source.resync_to_restart = jpeg_resync_to_restart;
    source.fill_input_buffer = [](j_decompress_ptr info) -> boolean {
        Of(info->client_data).FillBuffer();
        return TRUE;
    };
    source.skip_input_data = [](j_decompress_ptr info, long count) {
        Of(info->client_data).Skip(count);
    };
}

void JpegDecoder::Fail(const char* cause) {
    std::snprintf(message_.data(), message_.size(), "%s", cause);
    std::longjmp(jump_, 1);
}

// The exception must end before the jump, or its memory would be lost.
void JpegDecoder::FillBuffer() {
    bool failed = false;
    try {
        const std::span<const unsigned char> piece = reader_.NextPiece();
        source_.next_input_byte = piece.data();
        source_.bytes_in_buffer = piece.size();
    } catch (const std::exception& error) {
        std::snprintf(message_.data(), message_.size(), "%s", error.what());
        failed = true;
    }
    if (failed) {
        std::longjmp(jump_, 1);
    }
    if (source_.bytes_in_buffer == 0) {
        Fail("the file is truncated");
    }
}

void JpegDecoder::Skip(long count) {
    auto left = static_cast<std::size_t>(std::max(count, 0L));
    while (left > source_.bytes_in_buffer) {
        left -= source_.bytes_in_buffer;
        FillBuffer();
    }
    source_.next_input_byte += left;
    source_.bytes_in_buffer -= left;
}

bool JpegDecoder::Run(Step step) {
    // NOLINTNEXTLINE(bugprone-*): the only way in which libjpeg reports an error
    if (setjmp(jump_) != 0) {
        return false;
    }
    (this->*step)();
    return true;
}

void JpegDecoder::Guard(Step step) {
    if (!Run(step)) {
        throw CodecError(message_.data());
    }
}

void JpegDecoder::Create() {
    jpeg_create_decompress(&info_);
    info_.src = &source_;
    info_.progress = &progress_;
}

void JpegDecoder::ReadHeader() {
    static_cast<void>(jpeg_read_header(&info_, TRUE));
    const bool isInk = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
    if (info_.jpeg_color_space != JCS_GRAYSCALE) {
        info_.out_color_space = isInk ? JCS_CMYK : JCS_RGB;
    }
}

// A picture of several scans is read as a whole here. libjpeg would take a component without any
// for one that is gray all over.
void JpegDecoder::Start() {
    static_cast<void>(jpeg_start_decompress(&info_));
    const auto components = static_cast<std::size_t>(info_.num_components);
    if (jpeg_has_multiple_scans(&info_) != 0 && scanned_.count() != components) {
        Fail("the scan of a colour component is missing");
    }
}

// Called several times in each scan.
void JpegDecoder::NoteScan() {
    if (info_.input_scan_number > mostScans) {
        Fail("the picture has too many scans");
    }
    for (int i = 0; i < info_.comps_in_scan; ++i) {
        scanned_.set(static_cast<std::size_t>(info_.cur_comp_info[i]->component_index));
    }
}

void JpegDecoder::RequireSupported() const {
    if (info_.jpeg_color_space == JCS_UNKNOWN) {
        throw CodecError("a picture of " + std::to_string(info_.num_components) +
                         " components is not supported");
    }
    const auto components = static_cast<std::uint64_t>(info_.num_components);
    requirePlausibleSize(info_.image_width, info_.image_height,
                         components * info_.image_width * info_.image_height, fileSize_,
                         largestRatio);
}

void JpegDecoder::ReadRows() {
    constexpr JDIMENSION batch = 16;
    while (info_.output_scanline < info_.output_height) {
        std::array<JSAMPROW, batch> rows{};
        const JDIMENSION count = std::min(batch, info_.output_height - info_.output_scanline);
        for (JDIMENSION i = 0; i < count; ++i) {
            rows.at(i) = picture_.Row(info_.output_scanline + i);
        }
        static_cast<void>(jpeg_read_scanlines(&info_, rows.data(), count));
    }
}

void JpegDecoder::ReadInkRows() {
    while (info_.output_scanline < info_.output_height) {
        unsigned char* target = picture_.Row(info_.output_scanline);
        auto* row = static_cast<JSAMPROW>(inkRow_.get());
        static_cast<void>(jpeg_read_scanlines(&info_, &row, 1));
        InkToLight(target);
    }
}

// Files with an Adobe marker hold the inks inverted, that is, as light already.
void JpegDecoder::InkToLight(unsigned char* target) const {
    const auto* source = static_cast<const unsigned char*>(inkRow_.get());
    const auto flip = static_cast<unsigned char>(info_.saw_Adobe_marker != 0 ? 0 : 0xFF);
    for (std::uint32_t x = 0; x < picture_.width; ++x, source += 4, target += 3) {
        const auto black = static_cast<unsigned char>(source[3] ^ flip);
        for (int i = 0; i < 3; ++i) {
            const auto ink = static_cast<unsigned char>(source[i] ^ flip);
            target[i] = multiplyFractions(ink, black);
        }
    }
}

DecodedPicture JpegDecoder::Decode(const COrlixImageBase& image) {
    Guard(&JpegDecoder::ReadHeader);
    RequireSupported();
    const bool isGray = info_.jpeg_color_space == JCS_GRAYSCALE;
    picture_ = allocatePicture(image, isGray ? PixelType_Mono8 : PixelType_RGB8Packed,
                               info_.image_width, info_.image_height);
    Guard(&JpegDecoder::Start);
    if (info_.out_color_space == JCS_CMYK) {
        inkRow_ = BufferPool::Instance().Allocate(std::size_t{4} * picture_.width);
        Guard(&JpegDecoder::ReadInkRows);
    } else {
        Guard(&JpegDecoder::ReadRows);
    }
    Guard(&JpegDecoder::Finish);
    return std::move(picture_);
}

}  // namespace

DecodedPicture decodeJpeg(const InputFile& file, const COrlixImageBase& image) {
    return JpegDecoder(file).Decode(image);
}

}  // namespace Orlix
