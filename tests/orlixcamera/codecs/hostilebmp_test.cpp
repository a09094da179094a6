// BMP headers that no honest writer makes: fields of two and four bytes at every place.
#include <gtest/gtest.h>

#include <cstdint>

#include "orlixcamera/codecs/bmpfiles.h"
#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;
constexpr std::size_t pixels = std::size_t{width} * height;

class HostileBmp : public HostileTest {
protected:
    void TryFields(const Bytes& whole, std::size_t headerSize) {
        for (std::size_t place = 2; place < 14 + headerSize; place += 2) {
            for (const std::uint32_t value : boundaryValues) {
                for (const std::size_t size : {std::size_t{2}, std::size_t{4}}) {
                    Bytes bytes = whole;
                    putLittle(bytes, place, value, size);
                    TryToLoad(bytes, 4096);
                }
            }
        }
    }
};

TEST_F(HostileBmp, PlainForms) {
    for (const unsigned bits : {1U, 4U, 8U, 16U, 24U, 32U}) {
        BmpForm form{.width = width, .height = height, .bits = static_cast<std::uint16_t>(bits)};
        if (bits <= 8) {
            form.palette.assign(std::size_t{1} << bits, {1, 2, 3});
        }
        const Bytes rows = noise(height * ((width * bits + 7) / 8));
        TryFields(makeBmp(form, bmpRows(form, rows)), 40);
    }
}

TEST_F(HostileBmp, MaskedForms) {
    for (const unsigned bits : {16U, 32U}) {
        const BmpForm form{.width = width,
                           .height = -static_cast<int>(height),
                           .bits = static_cast<std::uint16_t>(bits),
                           .compression = 3,
                           .headerSize = 124,
                           .masks = {0x7C00, 0x03E0, 0x001F, 0x8000}};
        TryFields(makeBmp(form, bmpRows(form, noise(pixels * bits / 8))), 60);
    }
}

TEST_F(HostileBmp, RunLengths) {
    for (const unsigned bits : {4U, 8U}) {
        BmpForm form{.width = width,
                     .height = height,
                     .bits = static_cast<std::uint16_t>(bits),
                     .compression = bits == 4 ? 2U : 1U};
        form.palette.assign(std::size_t{1} << bits, {1, 2, 3});
        Bytes codes;
        for (std::uint32_t y = 0; y < height; ++y) {
            codes.insert(codes.end(), {33, 1, 0, 0});
        }
        codes.insert(codes.end(), {0, 1});
        TryFields(makeBmp(form, codes), 40);
        // Any codes at all, too.
        for (std::uint32_t seed = 0; seed < 300; ++seed) {
            Bytes random = noise(200, seed);
            for (std::size_t i = 0; i < random.size(); i += 2 + seed % 3) {
                random[i] = static_cast<unsigned char>(random[i] % 5);
            }
            TryToLoad(makeBmp(form, random), 4096);
        }
    }
}

TEST_F(HostileBmp, OldestForm) {
    BmpForm form{.width = width, .height = height, .bits = 8, .headerSize = 12};
    form.palette.assign(256, {1, 2, 3});
    TryFields(makeBmp(form, bmpRows(form, noise(pixels))), 12);
}

}  // namespace
}  // namespace Orlix::Test
