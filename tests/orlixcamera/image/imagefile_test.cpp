#include "orlixcamera/imagefile.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <filesystem>
#include <functional>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/copycounter.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 7;
constexpr std::uint32_t height = 5;

COrlixImage makeImage(EPixelType pixelType, std::size_t paddingX = 0,
                      EImageOrientation orientation = ImageOrientation_TopDown) {
    const std::uint64_t size = ComputeBufferSize(pixelType, width, height, paddingX);
    COrlixImage image;
    image.CopyImage(noise(size).data(), size, pixelType, width, height, paddingX, orientation);
    return image;
}

// The rows without padding, the top one first.
Bytes tightRows(const COrlixImage& image) {
    std::size_t stride = 0;
    EXPECT_TRUE(image.GetStride(stride));
    const auto* data = static_cast<const unsigned char*>(image.GetBuffer());
    Bytes rows;
    for (std::size_t i = 0; i < height; ++i) {
        const bool isTopDown = image.GetOrientation() == ImageOrientation_TopDown;
        const unsigned char* row = data + (isTopDown ? i : height - 1 - i) * stride;
        rows.insert(rows.end(), row, row + stride - image.GetPaddingX());
    }
    return rows;
}

Bytes swapped(Bytes bytes, std::size_t pixelBytes) {
    for (std::size_t i = 0; i < bytes.size(); i += pixelBytes) {
        std::swap(bytes[i], bytes[i + 2]);
    }
    return bytes;
}

class ImageFile : public testing::Test {
protected:
    [[nodiscard]] std::string SaveError(const std::function<void()>& call) const {
        try {
            call();
        } catch (const GenICam::GenericException& error) {
            return error.GetDescription();
        }
        return "no exception";
    }

    // What the folder holds must be exactly the files of the test.
    [[nodiscard]] std::size_t FileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }

    TemporaryFolder folder;
};

TEST_F(ImageFile, WhatALosslessFormatHoldsComesBackUnchanged) {
    const struct {
        const char* name;
        std::vector<EPixelType> pixelTypes;
    } cases[] = {
        {"a.png",
         {PixelType_Mono8, PixelType_Mono16, PixelType_RGB8Packed, PixelType_RGBA8Packed,
          PixelType_RGB16Packed}},
        {"a.tif",
         {PixelType_Mono8, PixelType_Mono16, PixelType_RGB8Packed, PixelType_RGBA8Packed,
          PixelType_RGB16Packed}},
        {"a.bmp", {PixelType_Mono8, PixelType_BGR8Packed, PixelType_BGRA8Packed}},
    };
    for (const auto& [name, pixelTypes] : cases) {
        for (const EPixelType pixelType : pixelTypes) {
            for (const std::size_t padding : {0U, 3U}) {
                for (const auto orientation :
                     {ImageOrientation_TopDown, ImageOrientation_BottomUp}) {
                    const COrlixImage image = makeImage(pixelType, padding, orientation);
                    saveImage(folder.File(name).c_str(), image);
                    expectImage(load(folder.File(name)), pixelType, width, height,
                                tightRows(image));
                }
            }
        }
    }
    EXPECT_EQ(FileCount(), 3U);
}

TEST_F(ImageFile, ColorsInTheOtherOrderAreSwapped) {
    const struct {
        const char* name;
        EPixelType saved;
        EPixelType loaded;
        std::size_t pixelBytes;
    } cases[] = {
        {"a.png", PixelType_BGR8Packed, PixelType_RGB8Packed, 3},
        {"a.png", PixelType_BGRA8Packed, PixelType_RGBA8Packed, 4},
        {"a.tif", PixelType_BGR8Packed, PixelType_RGB8Packed, 3},
        {"a.tif", PixelType_BGRA8Packed, PixelType_RGBA8Packed, 4},
        {"a.bmp", PixelType_RGB8Packed, PixelType_BGR8Packed, 3},
        {"a.bmp", PixelType_RGBA8Packed, PixelType_BGRA8Packed, 4},
    };
    for (const auto& [name, saved, loaded, pixelBytes] : cases) {
        const COrlixImage image = makeImage(saved, 2);
        image.Save(folder.File(name).c_str());
        expectImage(load(folder.File(name)), loaded, width, height,
                    swapped(tightRows(image), pixelBytes));
    }
}

TEST_F(ImageFile, PlanesAreStoredAsPlanes) {
    for (const auto& [planar, packed, sampleBytes] :
         {std::tuple(PixelType_RGB8Planar, PixelType_RGB8Packed, 1U),
          std::tuple(PixelType_RGB16Planar, PixelType_RGB16Packed, 2U)}) {
        const COrlixImage image = makeImage(planar, 4);
        saveImage(folder.File("a.tiff").c_str(), image);
        std::size_t stride = 0;
        EXPECT_TRUE(image.GetStride(stride));
        const auto* data = static_cast<const unsigned char*>(image.GetBuffer());
        Bytes expected;
        for (std::size_t i = 0; i < std::size_t{width} * height * 3; ++i) {
            const std::size_t pixel = i / 3;
            const unsigned char* sample =
                data + (i % 3 * height + pixel / width) * stride + pixel % width * sampleBytes;
            expected.insert(expected.end(), sample, sample + sampleBytes);
        }
        expectImage(load(folder.File("a.tiff")), packed, width, height, expected);
        TIFF* tiff = TIFFOpen(folder.File("a.tiff").c_str(), "r");
        std::uint16_t config = 0;
        TIFFGetField(tiff, TIFFTAG_PLANARCONFIG, &config);
        EXPECT_EQ(config, PLANARCONFIG_SEPARATE);
        TIFFClose(tiff);
    }
}

// The samples of the file, group by group.
Bytes rawGroups(const std::string& path, std::uint16_t& groupWidth, std::uint16_t& groupHeight) {
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    Bytes bytes(1000);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_YCBCRSUBSAMPLING, &groupWidth, &groupHeight);
    const tmsize_t size = TIFFReadRawStrip(tiff, 0, bytes.data(), 1000);
    TIFFClose(tiff);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

TEST_F(ImageFile, YuvPlanesAreStoredAsGroupsOfSamples) {
    const struct {
        EPixelType pixelType;
        std::uint32_t groupWidth;
        std::uint32_t groupHeight;
    } cases[] = {{PixelType_YUV444Planar, 1, 1},
                 {PixelType_YUV422Planar, 2, 1},
                 {PixelType_YUV420Planar, 2, 2}};
    for (const auto& [pixelType, groupWidth, groupHeight] : cases) {
        const COrlixImage image = makeImage(pixelType);
        saveImage(folder.File("a.tif").c_str(), image);
        std::uint16_t fileGroupWidth = 0;
        std::uint16_t fileGroupHeight = 0;
        const Bytes groups = rawGroups(folder.File("a.tif"), fileGroupWidth, fileGroupHeight);
        EXPECT_EQ(fileGroupWidth, groupWidth);
        EXPECT_EQ(fileGroupHeight, groupHeight);
        const std::uint32_t columns = (width + groupWidth - 1) / groupWidth;
        const std::uint32_t rows = (height + groupHeight - 1) / groupHeight;
        const std::size_t luma = std::size_t{groupWidth} * groupHeight;
        ASSERT_EQ(groups.size(), columns * rows * (luma + 2));
        // The first group of the second row of groups, which is whole in every form.
        const auto* planes = static_cast<const unsigned char*>(image.GetBuffer());
        std::size_t lumaStride = 0;
        EXPECT_TRUE(image.GetStride(lumaStride));
        const unsigned char* group = groups.data() + columns * (luma + 2);
        EXPECT_EQ(group[0], planes[lumaStride * groupHeight]);
        EXPECT_EQ(group[luma - 1],
                  planes[lumaStride * (2 * std::size_t{groupHeight} - 1) + groupWidth - 1]);
        const unsigned char* blue = planes + lumaStride * height;
        EXPECT_EQ(group[luma], blue[columns]);
        EXPECT_EQ(group[luma + 1], blue[std::size_t{columns} * rows + columns]);
    }
}

TEST_F(ImageFile, AStoredYuvPictureLoadsAsRgb) {
    // Gray of 128 but for the luma, so that the colours are known.
    for (const EPixelType pixelType :
         {PixelType_YUV444Planar, PixelType_YUV422Planar, PixelType_YUV420Planar}) {
        COrlixImage image;
        image.Reset(pixelType, width, height);
        std::size_t stride = 0;
        EXPECT_TRUE(image.GetStride(stride));
        auto* data = static_cast<unsigned char*>(image.GetBuffer());
        std::fill_n(data, image.GetImageSize(), static_cast<unsigned char>(128));
        Bytes expected;
        for (std::uint32_t y = 0; y < height; ++y) {
            for (std::uint32_t x = 0; x < width; ++x) {
                data[y * stride + x] = static_cast<unsigned char>(10 * x + 20 * y);
                expected.insert(expected.end(), 3, data[y * stride + x]);
            }
        }
        saveImage(folder.File("a.tif").c_str(), image);
        const COrlixImage loaded = load(folder.File("a.tif"));
        EXPECT_EQ(loaded.GetPixelType(), PixelType_RGB8Packed);
        expectNear(pixelsOf(loaded), expected, 1);
    }
}

TEST_F(ImageFile, UnscaledSamplesAndPatternsAreStoredAsGray) {
    saveImage(folder.File("a.tif").c_str(), makeImage(PixelType_Mono12));
    expectImage(load(folder.File("a.tif")), PixelType_Mono16, width, height,
                pixelsOf(makeImage(PixelType_Mono12)));
    saveImage(folder.File("a.tif").c_str(), makeImage(PixelType_BayerRG8));
    expectImage(load(folder.File("a.tif")), PixelType_Mono8, width, height,
                pixelsOf(makeImage(PixelType_BayerRG8)));
}

TEST_F(ImageFile, JpegIsNearAndBetterWithMoreQuality) {
    for (const EPixelType pixelType :
         {PixelType_Mono8, PixelType_RGB8Packed, PixelType_BGR8Packed}) {
        COrlixImage image;
        image.Reset(pixelType, 64, 64, 5);
        std::size_t stride = 0;
        EXPECT_TRUE(image.GetStride(stride));
        auto* data = static_cast<unsigned char*>(image.GetBuffer());
        Bytes expected;
        for (std::size_t y = 0; y < 64; ++y) {
            for (std::size_t x = 0; x < 64; ++x) {
                for (std::size_t i = 0; i < (stride - 5) / 64; ++i) {
                    const std::size_t channel = pixelType == PixelType_BGR8Packed ? 2 - i : i;
                    data[y * stride + x * ((stride - 5) / 64) + channel] =
                        static_cast<unsigned char>(2 * x + y + 20 * i);
                    expected.push_back(static_cast<unsigned char>(2 * x + y + 20 * i));
                }
            }
        }
        saveImage(folder.File("low.jpg").c_str(), image, {.jpegQuality = 10});
        saveImage(folder.File("high.jpeg").c_str(), image, {.jpegQuality = 100});
        expectNear(pixelsOf(load(folder.File("high.jpeg"))), expected, 3);
        EXPECT_LT(std::filesystem::file_size(folder.File("low.jpg")),
                  std::filesystem::file_size(folder.File("high.jpeg")));
    }
}

TEST_F(ImageFile, ALargePictureIsWrittenInManyPieces) {
    const Bytes pixels = noise(std::size_t{2000} * 1500 * 3);
    COrlixImage image;
    image.CopyImage(pixels.data(), pixels.size(), PixelType_RGB8Packed, 2000, 1500, 0);
    for (const char* name : {"a.png", "a.tif"}) {
        saveImage(folder.File(name).c_str(), image, {.pngCompressionLevel = 0});
        expectImage(load(folder.File(name)), PixelType_RGB8Packed, 2000, 1500, pixels);
    }
    saveImage(folder.File("a.jpg").c_str(), image);
    EXPECT_EQ(load(folder.File("a.jpg")).GetHeight(), 1500U);
}

TEST_F(ImageFile, SavingCopiesNoPixelsForKeeps) {
    const COrlixImage image = makeImage(PixelType_RGB8Packed);
    PixelCopyCounter::Reset();
    saveImage(folder.File("a.png").c_str(), image);
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

TEST_F(ImageFile, TheFormatCanBeToldByHand) {
    CImagePersistence::Save(ImageFileFormat_Png, folder.File("noextension").c_str(),
                            makeImage(PixelType_Mono8));
    EXPECT_EQ(load(folder.File("noextension")).GetPixelType(), PixelType_Mono8);
    EXPECT_EQ(readFile(folder.File("noextension"))[1], 'P');
}

TEST_F(ImageFile, ExtensionsTellTheFormat) {
    const auto formatOf = [](const char* path) { return CImagePersistence::FormatOfPath(path); };
    EXPECT_EQ(formatOf("a.png"), ImageFileFormat_Png);
    EXPECT_EQ(formatOf("/x.y/a.b.TIFF"), ImageFileFormat_Tiff);
    EXPECT_EQ(formatOf("a.Tif"), ImageFileFormat_Tiff);
    EXPECT_EQ(formatOf("a.jpeg"), ImageFileFormat_Jpeg);
    EXPECT_EQ(formatOf("a.JPG"), ImageFileFormat_Jpeg);
    EXPECT_EQ(formatOf("a.bmp"), ImageFileFormat_Bmp);
    EXPECT_EQ(formatOf(".png"), ImageFileFormat_Undefined);
    EXPECT_EQ(formatOf("folder.png/a"), ImageFileFormat_Undefined);
    EXPECT_EQ(formatOf("a.gif"), ImageFileFormat_Undefined);
    EXPECT_EQ(formatOf(""), ImageFileFormat_Undefined);
}

TEST_F(ImageFile, WhatAFormatCanNotHoldIsRefused) {
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Png, PixelType_RGB8Planar));
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Jpeg, PixelType_Mono16));
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Bmp, PixelType_Mono16));
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Tiff, PixelType_Mono12p));
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Tiff, PixelType_Undefined));
    EXPECT_FALSE(CImagePersistence::CanSave(ImageFileFormat_Undefined, PixelType_Mono8));
    EXPECT_TRUE(CImagePersistence::CanSave(ImageFileFormat_Tiff, PixelType_YUV420Planar));
    const std::string path = folder.File("a.png");
    EXPECT_EQ(SaveError([&] { saveImage(path.c_str(), makeImage(PixelType_RGB8Planar)); }),
              "Cannot save PNG image file '" + path +
                  "': the format can not hold the pixel type RGB8Planar (0x02180021).");
    EXPECT_EQ(FileCount(), 0U);
}

TEST_F(ImageFile, AnUnknownExtensionIsRefused) {
    const std::string path = folder.File("a.gif");
    EXPECT_EQ(
        SaveError([&] { saveImage(path.c_str(), makeImage(PixelType_Mono8)); }),
        "Cannot save image file '" + path + "': the extension is none of BMP, JPEG, PNG and TIFF.");
}

TEST_F(ImageFile, AnEmptyImageIsRefused) {
    EXPECT_EQ(SaveError([&] { saveImage(folder.File("a.png").c_str(), COrlixImage()); }),
              "An empty image can not be saved.");
}

TEST_F(ImageFile, AMissingFolderIsNamed) {
    const std::string path = folder.File("none/a.png");
    EXPECT_EQ(SaveError([&] { saveImage(path.c_str(), makeImage(PixelType_Mono8)); }),
              "Cannot save PNG image file '" + path +
                  "': the file can not be created: No such file or directory.");
}

TEST_F(ImageFile, AFailureAtTheEndLeavesNothingBehind) {
    std::filesystem::create_directory(folder.File("a.png"));
    const std::string error =
        SaveError([&] { saveImage(folder.File("a.png").c_str(), makeImage(PixelType_Mono8)); });
    EXPECT_EQ(error, "Cannot save PNG image file '" + folder.File("a.png") +
                         "': the file can not be written: Is a directory.");
    EXPECT_EQ(FileCount(), 1U);
}

TEST_F(ImageFile, AnImageThatTheFormatIsTooSmallForLeavesTheOldFile) {
    const std::string path = folder.File("a.jpg");
    saveImage(path.c_str(), makeImage(PixelType_Mono8));
    const Bytes before = readFile(path);
    Bytes row(70000);
    COrlixImage wide;
    wide.AttachUserBuffer(row.data(), row.size(), PixelType_Mono8, 70000, 1);
    EXPECT_EQ(
        SaveError([&] { saveImage(path.c_str(), wide); }),
        "Cannot save JPEG image file '" + path + "': the image is larger than the format allows.");
    EXPECT_EQ(readFile(path), before);
    EXPECT_EQ(FileCount(), 1U);
}

}  // namespace
}  // namespace Orlix::Test
