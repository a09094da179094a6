// Loading a picture file beside the bare codec library that does the same work: the file is opened,
// decoded into memory that is at hand, and closed. Pairs of one picture follow each other; the time
// of "Load" over that of "Bare" is the price of the interface.
#include <benchmark/benchmark.h>
#include <spng.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" {
#include <jpeglib.h>
}

#include "orlixcamera/imagefile.h"
#include "orlixcamera/orliximage.h"

namespace {

using namespace Orlix;

constexpr std::uint32_t width = 2048;
constexpr std::uint32_t height = 1536;

// Slopes with noise: compresses about as well as a camera's picture.
COrlixImage makePicture(EPixelType pixelType) {
    COrlixImage image;
    image.Reset(pixelType, width, height);
    std::size_t stride = 0;
    static_cast<void>(image.GetStride(stride));
    auto* bytes = static_cast<unsigned char*>(image.GetBuffer());
    std::mt19937 random(1);
    for (std::size_t i = 0; i < image.GetImageSize(); ++i) {
        const std::size_t slope = i % stride * 200 / stride + i / stride / 32;
        bytes[i] = static_cast<unsigned char>(slope + (random() & 7U));
    }
    return image;
}

// The files live as long as the program.
class Pictures {
public:
    Pictures() {
        std::string name = (std::filesystem::temp_directory_path() / "orlix-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        saveImage(Path("color.jpg").c_str(), makePicture(PixelType_RGB8Packed));
        saveImage(Path("gray.jpg").c_str(), makePicture(PixelType_Mono8));
        saveImage(Path("color.png").c_str(), makePicture(PixelType_RGB8Packed));
        saveImage(Path("gray.png").c_str(), makePicture(PixelType_Mono8));
        saveImage(Path("gray16.png").c_str(), makePicture(PixelType_Mono16));
        saveImage(Path("plain.tif").c_str(), makePicture(PixelType_RGB8Packed));
        WriteTiff("lzw.tif", COMPRESSION_LZW);
        WriteTiff("deflate.tif", COMPRESSION_ADOBE_DEFLATE);
    }
    ~Pictures() { std::filesystem::remove_all(folder_); }

    [[nodiscard]] std::string Path(const char* name) const { return folder_ / name; }

private:
    void WriteTiff(const char* name, int compression) const {
        COrlixImage image = makePicture(PixelType_RGB8Packed);
        TIFF* tiff = TIFFOpen(Path(name).c_str(), "w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 64);
        auto* bytes = static_cast<unsigned char*>(image.GetBuffer());
        for (std::uint32_t strip = 0; strip < height / 64; ++strip) {
            constexpr tmsize_t stripBytes = tmsize_t{width} * 3 * 64;
            TIFFWriteEncodedStrip(tiff, strip, bytes + strip * stripBytes, stripBytes);
        }
        TIFFClose(tiff);
    }

    std::filesystem::path folder_;
};

const Pictures& pictures() {
    static const Pictures files;
    return files;
}

using Bytes = std::vector<unsigned char>;

void decodeJpeg(const std::string& path, Bytes& target) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    jpeg_start_decompress(&info);
    const std::size_t stride =
        std::size_t{info.output_width} * static_cast<std::size_t>(info.output_components);
    target.resize(stride * info.output_height);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = target.data() + info.output_scanline * stride;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    std::fclose(file);
}

void decodePng(const std::string& path, Bytes& target) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    spng_ctx* context = spng_ctx_new(0);
    spng_set_png_file(context, file);
    std::size_t size = 0;
    spng_decoded_image_size(context, SPNG_FMT_PNG, &size);
    target.resize(size);
    if (spng_decode_image(context, target.data(), size, SPNG_FMT_PNG, 0) != 0) {
        std::abort();
    }
    spng_decode_chunks(context);
    spng_ctx_free(context);
    std::fclose(file);
}

void decodeTiff(const std::string& path, Bytes& target) {
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    const auto stripBytes = static_cast<std::size_t>(TIFFStripSize(tiff));
    target.resize(std::size_t{width} * height * 3);
    for (std::uint32_t strip = 0; strip < TIFFNumberOfStrips(tiff); ++strip) {
        const std::size_t offset = strip * stripBytes;
        const std::size_t size = std::min(stripBytes, target.size() - offset);
        TIFFReadEncodedStrip(tiff, strip, target.data() + offset, static_cast<tmsize_t>(size));
    }
    TIFFClose(tiff);
}

void Bare(benchmark::State& state, void (*decode)(const std::string&, Bytes&), const char* name) {
    const std::string path = pictures().Path(name);
    Bytes target;
    for (auto _ : state) {
        decode(path, target);
        benchmark::DoNotOptimize(target.data());
    }
}

void Load(benchmark::State& state, const char* name) {
    const GenICam::gcstring path(pictures().Path(name));
    for (auto _ : state) {
        COrlixImage image;
        image.Load(path);
        benchmark::DoNotOptimize(image.GetBuffer());
    }
}

struct Pair {
    const char* file;
    void (*decode)(const std::string&, Bytes&);
};

constexpr Pair pairs[] = {
    {"color.jpg", decodeJpeg}, {"gray.jpg", decodeJpeg},    {"color.png", decodePng},
    {"gray.png", decodePng},   {"gray16.png", decodePng},   {"plain.tif", decodeTiff},
    {"lzw.tif", decodeTiff},   {"deflate.tif", decodeTiff},
};

}  // namespace

int main(int argc, char** argv) {
    for (const Pair& pair : pairs) {
        const std::string name = pair.file;
        benchmark::RegisterBenchmark(("Bare/" + name).c_str(), Bare, pair.decode, pair.file)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("Load/" + name).c_str(), Load, pair.file)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
