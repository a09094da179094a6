// PNG chunks that no honest writer makes, with checksums that fit all the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/pngfiles.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;

class HostilePng : public HostileTest {
protected:
    void TryForm(PngForm form, std::size_t rowBytes) {
        form.width = width;
        form.height = height;
        writePng(folder.File("whole"), form, noise(height * rowBytes));
        const PngChunkList chunks = splitPngChunks(readFile(folder.File("whole")));
        ASSERT_EQ(joinPngChunks(chunks), readFile(folder.File("whole")));
        TryBytes(chunks);
        TryOrders(chunks);
    }

private:
    void TryBytes(const PngChunkList& chunks) {
        for (std::size_t c = 0; c < chunks.size(); ++c) {
            for (std::size_t i = 0; i < std::min<std::size_t>(chunks[c].size(), 60); ++i) {
                for (const std::uint32_t value : boundaryValues) {
                    PngChunkList changed = chunks;
                    changed[c][i] = static_cast<char>(value);
                    TryToLoad(joinPngChunks(changed));
                }
            }
        }
        // The kinds of picture in every combination with every depth.
        for (char kind = 0; kind < 8; ++kind) {
            for (const char depth : {'\1', '\2', '\4', '\10', '\20'}) {
                for (const char interlace : {'\0', '\1'}) {
                    PngChunkList changed = chunks;
                    changed[0][12] = depth;
                    changed[0][13] = kind;
                    changed[0][16] = interlace;
                    TryToLoad(joinPngChunks(changed));
                }
            }
        }
    }

    void TryOrders(const PngChunkList& chunks) {
        for (std::size_t c = 0; c < chunks.size(); ++c) {
            PngChunkList without = chunks;
            without.erase(without.begin() + static_cast<std::ptrdiff_t>(c));
            TryToLoad(joinPngChunks(without));
            for (std::size_t other = 0; other < chunks.size(); ++other) {
                PngChunkList twice = chunks;
                twice.insert(twice.begin() + static_cast<std::ptrdiff_t>(other), chunks[c]);
                TryToLoad(joinPngChunks(twice));
                PngChunkList swapped = chunks;
                std::swap(swapped[c], swapped[other]);
                TryToLoad(joinPngChunks(swapped));
            }
            for (const std::size_t size : {0U, 1U, 2U, 3U, 5U, 7U, 300U, 769U, 3000U}) {
                PngChunkList resized = chunks;
                resized[c].resize(4 + size);
                TryToLoad(joinPngChunks(resized));
            }
        }
    }
};

TEST_F(HostilePng, Gray) {
    TryForm({.colorType = 0, .transparentSample = 5}, width);
}

TEST_F(HostilePng, RgbOf16BitsWithAlphaInterlaced) {
    TryForm({.colorType = 6, .bits = 16, .isInterlaced = true}, width * 8);
}

TEST_F(HostilePng, GrayOf16BitsWithAlpha) {
    TryForm({.colorType = 4, .bits = 16}, width * 4);
}

TEST_F(HostilePng, PaletteOf4BitsWithAlpha) {
    PngForm form{.colorType = 3, .bits = 4, .isInterlaced = true};
    form.palette.assign(16, {1, 2, 3});
    form.paletteAlpha = {1, 2, 3};
    TryForm(form, (width + 1) / 2);
}

}  // namespace
}  // namespace Orlix::Test
