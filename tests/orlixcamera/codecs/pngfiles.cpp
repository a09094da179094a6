#include "orlixcamera/codecs/pngfiles.h"

#include <png.h>

#include <cstdio>
#include <cstdlib>

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

}  // namespace Orlix::Test
