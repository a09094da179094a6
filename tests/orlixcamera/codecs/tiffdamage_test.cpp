// TIFF files whose pixels are not all there, or not as they were written: libtiff would deliver
// something for each of them.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "orlixcamera/codecs/rawtiff.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/codecs/tifffiles.h"

namespace Orlix::Test {
namespace {

using Numbers = std::vector<std::uint32_t>;

class TiffDamage : public testing::Test {
protected:
    // What is told behind the name of the file; the whole text if that is not what it begins with.
    [[nodiscard]] std::string CauseOf(const Bytes& bytes) const {
        const std::string path = folder.Write("a.tif", bytes);
        const std::string start = "Cannot load TIFF image file '" + path + "': ";
        const std::string text = loadError(path);
        return text.starts_with(start) ? text.substr(start.size()) : text;
    }

    void ExpectPixels(const RawTiff& form, const Bytes& pixels) const {
        expectImage(load(folder.Write("a.tif", makeTiff(form))),
                    form.bits == 16 ? PixelType_Mono16 : PixelType_Mono8, form.width, form.height,
                    pixels);
    }

    TemporaryFolder folder;
};

TEST_F(TiffDamage, AStripThatTheDirectoryDoesNotTellOfIsAnError) {
    RawTiff form{.width = 2, .height = 3, .more = {{TIFFTAG_ROWSPERSTRIP, {1}}}};
    form.pieces = {{1, 2}, {3, 4}, {5, 6}};
    ExpectPixels(form, {1, 2, 3, 4, 5, 6});
    form.pieces.pop_back();
    EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of strip 2.");
    // Nor is it there if the number of byte counts is right.
    form.more.push_back({TIFFTAG_STRIPBYTECOUNTS, {2, 2, 2}});
    EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of strip 2.");
}

TEST_F(TiffDamage, AStripThatIsToLieInTheHeaderIsAnError) {
    RawTiff form{.width = 2, .height = 2, .more = {{TIFFTAG_ROWSPERSTRIP, {1}}}};
    form.pieces = {{1, 2}, {3, 4}};
    form.more.push_back({TIFFTAG_STRIPOFFSETS, {8, 4}});
    EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of strip 1.");
}

TEST_F(TiffDamage, ATileThatTheDirectoryDoesNotTellOfIsAnError) {
    for (const std::uint32_t bits : {8U, 16U}) {
        RawTiff form{.width = 20,
                     .height = 1,
                     .bits = bits,
                     .more = {{TIFFTAG_TILEWIDTH, {16}}, {TIFFTAG_TILELENGTH, {16}}}};
        form.pieces.assign(2, Bytes(32 * bits, 9));
        ExpectPixels(form, Bytes(std::size_t{20} * bits / 8, 9));
        form.pieces.pop_back();
        EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of tile 1.");
    }
}

TEST_F(TiffDamage, ByteCountsThatTheFileDoesNotHaveAreAnError) {
    RawTiff form{.width = 4,
                 .height = 2,
                 .more = {{TIFFTAG_ROWSPERSTRIP, {1}}, {TIFFTAG_STRIPBYTECOUNTS, {4, 4000}}}};
    form.pieces = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    EXPECT_NE(CauseOf(makeTiff(form)), "no exception");
}

// Behind the data of such a picture lies the directory, which would be its last pixels.
TEST_F(TiffDamage, AByteCountThatIsTooSmallForThePictureIsAnError) {
    RawTiff form{.width = 4, .height = 2};
    form.pieces = {{1, 2, 3, 4, 5}};
    EXPECT_EQ(CauseOf(makeTiff(form)), "the byte counts of its strips do not fit the picture.");
    form.directory = DirectoryPlace::InFrontOfData;
    EXPECT_NE(CauseOf(makeTiff(form)), "no exception");
    form.pieces = {{1, 2, 3, 4, 5, 6, 7, 8}};
    ExpectPixels(form, {1, 2, 3, 4, 5, 6, 7, 8});
}

TEST_F(TiffDamage, AStripOrTileThatIsTooShortIsAnError) {
    RawTiff form{.width = 4, .height = 3, .more = {{TIFFTAG_ROWSPERSTRIP, {2}}}};
    form.pieces = {{1, 2, 3, 4, 5, 6, 7, 8}, {9, 10, 11, 12}};
    ExpectPixels(form, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    form.pieces[1].resize(3);
    EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of strip 1.");
    form.more = {{TIFFTAG_TILEWIDTH, {16}}, {TIFFTAG_TILELENGTH, {16}}};
    form.pieces = {Bytes(256, 9)};
    ExpectPixels(form, Bytes(12, 9));
    // Enough for all that is seen of the tile, but not where a reader looks for it.
    form.pieces[0].resize(255);
    EXPECT_EQ(CauseOf(makeTiff(form)), "the file does not hold the data of tile 0.");
}

TEST_F(TiffDamage, APictureThatIsCutBehindItsDirectoryIsAnError) {
    for (const bool isTiled : {false, true}) {
        for (const std::uint32_t compression : Numbers{COMPRESSION_NONE, COMPRESSION_PACKBITS}) {
            RawTiff form{.width = 16, .height = 32, .compression = compression};
            form.directory = DirectoryPlace::InFrontOfData;
            form.more = isTiled ? std::vector<TiffField>{{TIFFTAG_TILEWIDTH, {16}},
                                                         {TIFFTAG_TILELENGTH, {16}}}
                                : std::vector<TiffField>{{TIFFTAG_ROWSPERSTRIP, {16}}};
            Bytes piece(256, 7);
            if (compression == COMPRESSION_PACKBITS) {
                piece.clear();
                for (int i = 0; i < 16; ++i) {
                    piece.insert(piece.end(), {0xF1, 7});  // sixteen times the 7
                }
            }
            form.pieces = {piece, piece};
            ExpectPixels(form, Bytes(512, 7));
            const Bytes whole = makeTiff(form);
            for (std::size_t size = whole.size() - 2 * piece.size(); size < whole.size(); ++size) {
                const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
                EXPECT_NE(CauseOf(Bytes(whole.begin(), end)), "no exception") << size;
            }
        }
    }
}

TEST_F(TiffDamage, FaxCodesThatMeanNothingAreAnError) {
    for (const std::uint32_t compression :
         Numbers{COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        RawTiff form{.width = 16,
                     .height = 4,
                     .bits = 1,
                     .compression = compression,
                     .photometric = PHOTOMETRIC_MINISWHITE};
        std::vector<Bytes> contents = {Bytes(20, 0)};
        for (std::uint32_t seed = 1; seed < 4; ++seed) {
            contents.push_back(noise(20, seed));
        }
        for (const Bytes& content : contents) {
            form.pieces = {content};
            EXPECT_NE(CauseOf(makeTiff(form)), "no exception")
                << compression << " " << unsigned{content[0]};
        }
    }
}

TEST_F(TiffDamage, FaxDataThatIsOverwrittenIsAnError) {
    for (const std::uint16_t compression : std::vector<std::uint16_t>{
             COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        TiffForm form{.width = 64,
                      .height = 64,
                      .photometric = PHOTOMETRIC_MINISWHITE,
                      .bits = 1,
                      .compression = compression};
        form.rowsPerStrip = 64;
        writeTiff(folder.File("whole.tif"), form, {noise(64 * tiffRowBytes(form))});
        Bytes bytes = readFile(folder.File("whole.tif"));
        EXPECT_EQ(CauseOf(bytes), "no exception") << compression;
        // The data comes first, and is longer than this.
        std::fill_n(bytes.begin() + 50, 40, static_cast<unsigned char>(0));
        EXPECT_NE(CauseOf(bytes), "no exception") << compression;
    }
}

TEST_F(TiffDamage, APackBitsRunThatLeavesThePictureIsAnError) {
    RawTiff form{.width = 4, .height = 2, .compression = COMPRESSION_PACKBITS};
    form.pieces = {{3, 1, 2, 3, 4, 3, 5, 6, 7, 8}};
    ExpectPixels(form, {1, 2, 3, 4, 5, 6, 7, 8});
    form.pieces = {{3, 1, 2, 3, 4, 5, 5, 6, 7, 8, 9, 10}};
    EXPECT_NE(CauseOf(makeTiff(form)), "no exception");
}

// What the smaller picture leaves out would be whatever the memory held before.
TEST_F(TiffDamage, AStripWhoseJpegPictureIsTooSmallIsAnError) {
    TiffForm form{.width = 32, .height = 32, .compression = COMPRESSION_JPEG};
    form.rowsPerStrip = 32;
    writeTiff(folder.File("whole.tif"), form, {Bytes(32 * 32, 90)});
    Bytes bytes = readFile(folder.File("whole.tif"));
    const std::array<unsigned char, 2> start = {0xFF, 0xC0};
    const auto frame = std::search(bytes.begin(), bytes.end(), start.begin(), start.end());
    ASSERT_NE(frame, bytes.end());
    ASSERT_EQ(frame[6], 32);
    frame[6] = 16;
    EXPECT_NE(CauseOf(bytes), "no exception");
}

}  // namespace
}  // namespace Orlix::Test
