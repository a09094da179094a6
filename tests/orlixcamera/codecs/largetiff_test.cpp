// TIFF files whose strips or tiles are far larger, once decoded, than the file.
#include <gtest/gtest.h>
#include <tiffio.h>
#include <zlib.h>

#include <string>
#include <vector>

#include "orlixcamera/codecs/rawtiff.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

Bytes deflate(const Bytes& bytes) {
    Bytes packed(compressBound(bytes.size()));
    uLongf size = packed.size();
    EXPECT_EQ(compress2(packed.data(), &size, bytes.data(), bytes.size(), 1), Z_OK);
    packed.resize(size);
    return packed;
}

// One piece is the whole picture.
RawTiff yuvPicture(std::uint32_t size, bool isTiled) {
    RawTiff form{.width = size,
                 .height = size,
                 .compression = COMPRESSION_ADOBE_DEFLATE,
                 .photometric = PHOTOMETRIC_YCBCR};
    form.more = {{TIFFTAG_BITSPERSAMPLE, {8, 8, 8}},
                 {TIFFTAG_SAMPLESPERPIXEL, {3}},
                 {TIFFTAG_YCBCRSUBSAMPLING, {1, 1}}};
    if (isTiled) {
        form.more.push_back({TIFFTAG_TILEWIDTH, {size}});
        form.more.push_back({TIFFTAG_TILELENGTH, {size}});
    }
    return form;
}

// One gray all over.
void expectGray(const COrlixImage& image, std::uint32_t size, unsigned char gray) {
    EXPECT_EQ(image.GetPixelType(), PixelType_RGB8Packed);
    const std::size_t bytes = std::size_t{3} * size * size;
    ASSERT_EQ(image.GetImageSize(), bytes);
    const auto* const pixels = static_cast<const unsigned char*>(image.GetBuffer());
    for (const std::size_t place : {std::size_t{0}, bytes / 2, bytes - 1}) {
        EXPECT_NEAR(pixels[place], gray, 1) << place;
    }
}

// libtiff decodes such a piece into memory of its own, and is told a limit for that.
TEST(LargeTiff, APieceOfBrightnessAndDifferencesMayDecodeToMuch) {
    constexpr std::uint32_t size = 4752;
    const TemporaryFolder folder;
    Bytes rows(std::size_t{3} * size * size, 128);
    for (std::size_t i = 0; i < rows.size(); i += 3) {
        rows[i] = 200;
    }
    const Bytes packed = deflate(rows);
    for (const bool isTiled : {false, true}) {
        RawTiff form = yuvPicture(size, isTiled);
        form.pieces = {packed};
        expectGray(load(folder.Write("a.tif", makeTiff(form))), size, 200);
    }
}

// It holds one of each at once.
TEST(LargeTiff, PiecesOfThreePlanesMayDecodeToMuchTogether) {
    constexpr std::uint32_t size = 4752;
    const TemporaryFolder folder;
    const Bytes luma = deflate(Bytes(std::size_t{size} * size, 200));
    const Bytes chroma = deflate(Bytes(std::size_t{size} * size, 128));
    for (const bool isTiled : {false, true}) {
        RawTiff form = yuvPicture(size, isTiled);
        form.more.push_back({TIFFTAG_PLANARCONFIG, {PLANARCONFIG_SEPARATE}});
        form.pieces = {luma, chroma, chroma};
        expectGray(load(folder.Write("a.tif", makeTiff(form))), size, 200);
    }
}

TEST(LargeTiff, APieceOfMoreThanTheFileCanHoldIsAnError) {
    constexpr std::uint32_t size = 416;
    const TemporaryFolder folder;
    for (const bool isTiled : {false, true}) {
        RawTiff form = yuvPicture(size, isTiled);
        form.pieces = {Bytes(60)};
        const Bytes bytes = makeTiff(form);
        const std::string path = folder.Write("a.tif", bytes);
        EXPECT_EQ(loadError(path), "Cannot load TIFF image file '" + path + "': the header tells " +
                                       (isTiled ? "tiles" : "strips") +
                                       " of 519168 bytes, more than a file of " +
                                       std::to_string(bytes.size()) + " bytes can hold.");
    }
}

}  // namespace
}  // namespace Orlix::Test
