#include <gtest/gtest.h>

#include <algorithm>

#include "orlixcamera/codecs/jpegfiles.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 45;
constexpr std::uint32_t height = 37;

// Soft slopes, so that the loss of the codec is small.
Bytes slopes(std::size_t channels) {
    Bytes pixels;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (std::size_t i = 0; i < channels; ++i) {
                const std::size_t value = 20 + 3 * x * (i % 2) + 4 * y * ((i + 1) % 2) + 10 * i;
                pixels.push_back(static_cast<unsigned char>(value));
            }
        }
    }
    return pixels;
}

Bytes inverted(Bytes bytes) {
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(~byte);
    }
    return bytes;
}

// The light that inks of this coverage leave.
Bytes lightOf(const Bytes& inks) {
    Bytes light;
    for (std::size_t i = 0; i < inks.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            light.push_back(
                static_cast<unsigned char>((255 - inks[i + c]) * (255 - inks[i + 3]) / 255));
        }
    }
    return light;
}

class JpegDecoder : public testing::TestWithParam<bool> {
protected:
    void Check(JpegForm form, const Bytes& source, EPixelType pixelType, const Bytes& expected,
               int tolerance) const {
        form.width = width;
        form.height = height;
        form.isProgressive = GetParam();
        const COrlixImage image = load(folder.Write("a.jpg", makeJpeg(form, source)));
        EXPECT_EQ(image.GetPixelType(), pixelType);
        EXPECT_EQ(image.GetWidth(), width);
        EXPECT_EQ(image.GetHeight(), height);
        expectNear(pixelsOf(image), expected, tolerance);
    }

    TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Baseline, JpegDecoder, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Progressive, JpegDecoder, testing::Values(true));

TEST_P(JpegDecoder, GrayIsMono8) {
    Check({.colors = JpegColors::Gray}, slopes(1), PixelType_Mono8, slopes(1), 2);
}

TEST_P(JpegDecoder, YCbCrIsRgb8Packed) {
    Check({}, slopes(3), PixelType_RGB8Packed, slopes(3), 4);
}

TEST_P(JpegDecoder, SubsampledChromaIsRgb8Packed) {
    for (const int vertical : {1, 2}) {
        Check({.horizontalSampling = 2, .verticalSampling = vertical}, slopes(3),
              PixelType_RGB8Packed, slopes(3), 6);
    }
}

// Smaller than the blocks of the codec, and not of whole groups of chroma.
TEST_P(JpegDecoder, EverySmallSizeIsWhole) {
    for (std::uint32_t w = 1; w <= 17; w += 2) {
        for (std::uint32_t h = 1; h <= 18; ++h) {
            const JpegForm form{.width = w,
                                .height = h,
                                .horizontalSampling = 2,
                                .verticalSampling = 2,
                                .isProgressive = GetParam()};
            const Bytes source(std::size_t{3} * w * h, 77);
            const COrlixImage image = load(folder.Write("a.jpg", makeJpeg(form, source)));
            EXPECT_EQ(image.GetWidth(), w);
            EXPECT_EQ(image.GetHeight(), h);
            expectNear(pixelsOf(image), source, 2);
        }
    }
}

TEST_P(JpegDecoder, RgbIsRgb8Packed) {
    Check({.colors = JpegColors::Rgb}, slopes(3), PixelType_RGB8Packed, slopes(3), 3);
}

TEST_P(JpegDecoder, CmykOfAdobeIsStoredInverted) {
    for (const JpegColors colors : {JpegColors::Cmyk, JpegColors::Ycck}) {
        Check({.colors = colors}, inverted(slopes(4)), PixelType_RGB8Packed, lightOf(slopes(4)), 5);
    }
}

TEST_P(JpegDecoder, CmykWithoutMarkerIsStoredAsInk) {
    Check({.colors = JpegColors::Cmyk, .adobeMarker = AdobeMarker::LeftOut}, slopes(4),
          PixelType_RGB8Packed, lightOf(slopes(4)), 5);
}

TEST_P(JpegDecoder, AFileThatEndsAnywhereIsTruncated) {
    const Bytes whole =
        makeJpeg({.width = width, .height = height, .isProgressive = GetParam()}, slopes(3));
    for (std::size_t size = 3; size < whole.size(); size += size < 50 ? 1 : 11) {
        const std::string path = folder.Write(
            "cut.jpg", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(loadError(path),
                  "Cannot load JPEG image file '" + path + "': the file is truncated.");
    }
    const std::string path = folder.Write("cut.jpg", Bytes(whole.begin(), whole.end() - 1));
    EXPECT_EQ(loadError(path),
              "Cannot load JPEG image file '" + path + "': the file is truncated.");
}

TEST_P(JpegDecoder, AnEndMarkInTheMiddleIsAnError) {
    Bytes bytes =
        makeJpeg({.width = width, .height = height, .isProgressive = GetParam()}, slopes(3));
    bytes.resize(bytes.size() * 3 / 4);
    bytes.insert(bytes.end(), {0xFF, 0xD9});
    const std::string path = folder.Write("a.jpg", bytes);
    EXPECT_EQ(loadError(path).rfind("Cannot load JPEG image file '" + path + "': ", 0), 0U);
}

TEST_P(JpegDecoder, AColorComponentWithoutAScanIsAnError) {
    const Bytes whole = makeJpeg({.width = width,
                                  .height = height,
                                  .isProgressive = GetParam(),
                                  .scans = JpegScans::OneForEachComponent},
                                 slopes(3));
    expectNear(pixelsOf(load(folder.Write("a.jpg", whole))), slopes(3), 4);
    ASSERT_EQ(leaveOutScans(whole, [](const JpegScan&) { return false; }), whole);
    for (int missing = 1; missing <= 3; ++missing) {
        const Bytes bytes =
            leaveOutScans(whole, [=](const JpegScan& scan) { return scan.component == missing; });
        const std::string path = folder.Write("b.jpg", bytes);
        EXPECT_EQ(loadError(path), "Cannot load JPEG image file '" + path +
                                       "': the scan of a colour component is missing.")
            << missing;
    }
}

TEST_P(JpegDecoder, BytesBehindTheEndAreNoError) {
    Bytes bytes =
        makeJpeg({.width = width, .height = height, .isProgressive = GetParam()}, slopes(3));
    bytes.resize(bytes.size() + 100);
    EXPECT_EQ(load(folder.Write("a.jpg", bytes)).GetWidth(), width);
}

// Such a file is a coarse picture, but a legal one.
TEST(JpegDecoderBounds, AProgressivePictureMayEndBehindItsFirstScans) {
    const TemporaryFolder folder;
    const Bytes whole = makeJpeg({.width = width,
                                  .height = height,
                                  .colors = JpegColors::Gray,
                                  .isProgressive = true,
                                  .scans = JpegScans::OneForEachComponent},
                                 slopes(1));
    const Bytes coarse =
        leaveOutScans(whole, [](const JpegScan& scan) { return scan.firstCoefficient > 0; });
    ASSERT_LT(coarse.size(), whole.size());
    expectNear(pixelsOf(load(folder.Write("a.jpg", coarse))), slopes(1), 20);
}

TEST(JpegDecoderBounds, NumbersOfThePassMeanNothingInAPictureOfOnePass) {
    const TemporaryFolder folder;
    Bytes bytes = makeJpeg({.width = width, .height = height}, slopes(3));
    const Bytes pixels = pixelsOf(load(folder.Write("a.jpg", bytes)));
    const Bytes start = {0xFF, 0xDA, 0, 12};  // a scan of three components
    const auto scan = std::search(bytes.begin(), bytes.end(), start.begin(), start.end());
    ASSERT_NE(scan, bytes.end());
    ASSERT_EQ(Bytes(scan + 11, scan + 14), (Bytes{0, 63, 0}));
    std::fill_n(scan + 11, 3, static_cast<unsigned char>(0));
    expectImage(load(folder.Write("a.jpg", bytes)), PixelType_RGB8Packed, width, height, pixels);
}

TEST(JpegDecoderBounds, AHeaderThatLiesAboutTheSizeAllocatesNothing) {
    const TemporaryFolder folder;
    Bytes bytes = makeJpeg({.width = 16, .height = 16, .colors = JpegColors::Gray}, Bytes(256));
    for (std::size_t i = 2; i + 9 < bytes.size(); ++i) {
        if (bytes[i] == 0xFF && bytes[i + 1] == 0xC0) {
            bytes[i + 5] = bytes[i + 7] = 0xFF;  // the high bytes of height and width
            break;
        }
    }
    const std::string path = folder.Write("a.jpg", bytes);
    EXPECT_EQ(loadError(path),
              "Cannot load JPEG image file '" + path +
                  "': the header tells a size of 65296 x 65296 pixels, more than a file of " +
                  std::to_string(bytes.size()) + " bytes can hold.");
}

TEST(JpegDecoderBounds, ABlankPictureOfManyPixelsIsAccepted) {
    const TemporaryFolder folder;
    const JpegForm form{.width = 4000,
                        .height = 3000,
                        .horizontalSampling = 2,
                        .verticalSampling = 2,
                        .isProgressive = true};
    const std::string path =
        folder.Write("a.jpg", makeJpeg(form, Bytes(std::size_t{4000} * 3000 * 3, 128)));
    EXPECT_EQ(load(path).GetWidth(), 4000U);
}

}  // namespace
}  // namespace Orlix::Test
