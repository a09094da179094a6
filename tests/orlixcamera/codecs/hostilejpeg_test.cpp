// JPEG segments that no honest writer makes: every byte of them in front of the samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/jpegfiles.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;
constexpr std::size_t pixels = std::size_t{width} * height;

// Sizes, sampling factors, depths and marker codes.
constexpr std::array<unsigned char, 30> codes = {
    0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x08, 0x0C, 0x10, 0x11, 0x12, 0x14, 0x21, 0x22, 0x41,
    0x44, 0x7F, 0x80, 0xC0, 0xC1, 0xC2, 0xC3, 0xC9, 0xCA, 0xD8, 0xD9, 0xDA, 0xDD, 0xFE, 0xFF};

class HostileJpeg : public HostileTest {
protected:
    void TryForm(JpegForm form, std::size_t channels) {
        form.width = width;
        form.height = height;
        const Bytes whole = makeJpeg(form, noise(pixels * channels));
        for (std::size_t start = 2; whole.at(start) == 0xFF;) {
            const std::size_t size = std::size_t{whole[start + 2]} << 8U | whole[start + 3];
            TrySegment(whole, start, 2 + size);
            start += 2 + size;
        }
    }

private:
    void TrySegment(const Bytes& whole, std::size_t start, std::size_t size) {
        const auto first = whole.begin() + static_cast<std::ptrdiff_t>(start);
        const auto last = first + static_cast<std::ptrdiff_t>(size);
        Bytes without(whole.begin(), first);
        without.insert(without.end(), last, whole.end());
        TryToLoad(without);
        Bytes twice(whole.begin(), last);
        twice.insert(twice.end(), first, whole.end());
        TryToLoad(twice);
        // Tables are long and their entries alike.
        for (std::size_t i = 1; i < std::min<std::size_t>(size, 40); ++i) {
            TryByte(whole, start + i);
        }
    }

    void TryByte(const Bytes& whole, std::size_t place) {
        for (const unsigned char value : codes) {
            Bytes bytes = whole;
            bytes[place] = value;
            TryToLoad(bytes);
        }
    }
};

TEST_F(HostileJpeg, Gray) {
    TryForm({.colors = JpegColors::Gray}, 1);
}

TEST_F(HostileJpeg, Subsampled) {
    TryForm({.horizontalSampling = 2, .verticalSampling = 2}, 3);
}

TEST_F(HostileJpeg, Progressive) {
    TryForm({.isProgressive = true}, 3);
}

TEST_F(HostileJpeg, Inks) {
    TryForm({.colors = JpegColors::Ycck}, 4);
}

}  // namespace
}  // namespace Orlix::Test
