#include "orlixcamera/codecs/pngfiles.h"

#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Orlix::Test {

namespace {

void setTransparency(png_structp png, png_infop info, const PngForm& form) {
    if (!form.paletteAlpha.empty()) {
        png_set_tRNS(png, info, form.paletteAlpha.data(),
                     static_cast<int>(form.paletteAlpha.size()), nullptr);
    }
    if (form.transparentSample >= 0) {
        const auto sample = static_cast<png_uint_16>(form.transparentSample);
        const png_color_16 color = {0, sample, sample, sample, sample};
        png_set_tRNS(png, info, nullptr, 0, &color);
    }
}

void setHeader(png_structp png, png_infop info, const PngForm& form) {
    png_set_IHDR(png, info, form.width, form.height, form.bits, form.colorType,
                 form.isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_color> colors;
    for (const auto& color : form.palette) {
        colors.push_back({color[0], color[1], color[2]});
    }
    if (!colors.empty()) {
        png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    }
    setTransparency(png, info, form);
}

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

void appendBig(Bytes& bytes, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (24 - 8 * i)));
    }
}

}  // namespace

void writePng(const std::string& path, const PngForm& form, const Bytes& rows) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(
        PNG_LIBPNG_VER_STRING, nullptr, [](png_structp, png_const_charp) { std::abort(); },
        nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    setHeader(png, info, form);
    png_write_info(png, info);
    std::vector<png_bytep> pointers;
    for (std::size_t y = 0; y < form.height; ++y) {
        pointers.push_back(const_cast<png_bytep>(rows.data() + y * rows.size() / form.height));
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

Bytes joinPngChunks(const PngChunkList& chunks) {
    Bytes bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const std::string& chunk : chunks) {
        appendBig(bytes, static_cast<std::uint32_t>(chunk.size() - 4));
        bytes.insert(bytes.end(), chunk.begin(), chunk.end());
        appendBig(bytes, crcOf(chunk));
    }
    return bytes;
}

PngChunkList splitPngChunks(const Bytes& bytes) {
    PngChunkList chunks;
    for (std::size_t i = 8; i + 12 <= bytes.size();) {
        const std::size_t size = std::size_t{bytes[i + 2]} << 8U | bytes[i + 3];
        const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(i + 4);
        chunks.emplace_back(start, start + static_cast<std::ptrdiff_t>(4 + size));
        i += 12 + size;
    }
    return chunks;
}

}  // namespace Orlix::Test
