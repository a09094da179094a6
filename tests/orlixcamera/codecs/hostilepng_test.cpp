// PNG chunks that no honest writer makes, with checksums that fit all the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "orlixcamera/codecs/damagetest.h"
#include "orlixcamera/codecs/pngfiles.h"
#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {
namespace {

constexpr std::uint32_t width = 33;
constexpr std::uint32_t height = 18;

std::uint32_t crcOf(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int i = 0; i < 8; ++i) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

using Chunks = std::vector<std::string>;  // name and data

void appendBig(Bytes& bytes, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (24 - 8 * i)));
    }
}

Bytes joinChunks(const Chunks& chunks) {
    Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const std::string& chunk : chunks) {
        appendBig(bytes, static_cast<std::uint32_t>(chunk.size() - 4));
        bytes.insert(bytes.end(), chunk.begin(), chunk.end());
        appendBig(bytes, crcOf(chunk));
    }
    return bytes;
}

Chunks splitChunks(const Bytes& bytes) {
    Chunks chunks;
    for (std::size_t i = 8; i + 12 <= bytes.size();) {
        const std::size_t size = std::size_t{bytes[i + 2]} << 8U | bytes[i + 3];
        const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(i + 4);
        chunks.emplace_back(start, start + static_cast<std::ptrdiff_t>(4 + size));
        i += 12 + size;
    }
    return chunks;
}

class HostilePng : public HostileTest {
protected:
    void TryForm(PngForm form, std::size_t rowBytes) {
        form.width = width;
        form.height = height;
        writePng(folder.File("whole"), form, noise(height * rowBytes));
        const Chunks chunks = splitChunks(readFile(folder.File("whole")));
        ASSERT_EQ(joinChunks(chunks), readFile(folder.File("whole")));
        TryBytes(chunks);
        TryOrders(chunks);
    }

private:
    void TryBytes(const Chunks& chunks) {
        for (std::size_t c = 0; c < chunks.size(); ++c) {
            for (std::size_t i = 0; i < std::min<std::size_t>(chunks[c].size(), 60); ++i) {
                for (const std::uint32_t value : boundaryValues) {
                    Chunks changed = chunks;
                    changed[c][i] = static_cast<char>(value);
                    TryToLoad(joinChunks(changed));
                }
            }
        }
        // The kinds of picture in every combination with every depth.
        for (char kind = 0; kind < 8; ++kind) {
            for (const char depth : {'\1', '\2', '\4', '\10', '\20'}) {
                for (const char interlace : {'\0', '\1'}) {
                    Chunks changed = chunks;
                    changed[0][12] = depth;
                    changed[0][13] = kind;
                    changed[0][16] = interlace;
                    TryToLoad(joinChunks(changed));
                }
            }
        }
    }

    void TryOrders(const Chunks& chunks) {
        for (std::size_t c = 0; c < chunks.size(); ++c) {
            Chunks without = chunks;
            without.erase(without.begin() + static_cast<std::ptrdiff_t>(c));
            TryToLoad(joinChunks(without));
            for (std::size_t other = 0; other < chunks.size(); ++other) {
                Chunks twice = chunks;
                twice.insert(twice.begin() + static_cast<std::ptrdiff_t>(other), chunks[c]);
                TryToLoad(joinChunks(twice));
                Chunks swapped = chunks;
                std::swap(swapped[c], swapped[other]);
                TryToLoad(joinChunks(swapped));
            }
            for (const std::size_t size : {0U, 1U, 2U, 3U, 5U, 7U, 300U, 769U, 3000U}) {
                Chunks resized = chunks;
                resized[c].resize(4 + size);
                TryToLoad(joinChunks(resized));
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
