#include "orlixcamera/codecs/jpegfiles.h"

#include <cstdio>
#include <cstdlib>

extern "C" {
#include <jpeglib.h>
}

namespace Orlix::Test {

namespace {

J_COLOR_SPACE inputSpace(JpegColors colors) {
    switch (colors) {
        case JpegColors::Gray:
            return JCS_GRAYSCALE;
        case JpegColors::Cmyk:
        case JpegColors::Ycck:
            return JCS_CMYK;
        default:
            return JCS_RGB;
    }
}

J_COLOR_SPACE fileSpace(JpegColors colors) {
    switch (colors) {
        case JpegColors::Gray:
            return JCS_GRAYSCALE;
        case JpegColors::Rgb:
            return JCS_RGB;
        case JpegColors::YCbCr:
            return JCS_YCbCr;
        case JpegColors::Cmyk:
            return JCS_CMYK;
        default:
            return JCS_YCCK;
    }
}

void setUp(jpeg_compress_struct& info, const JpegForm& form, int components) {
    info.image_width = form.width;
    info.image_height = form.height;
    info.input_components = components;
    info.in_color_space = inputSpace(form.colors);
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, fileSpace(form.colors));
    jpeg_set_quality(&info, 100, TRUE);
    info.comp_info[0].h_samp_factor = form.horizontalSampling;
    info.comp_info[0].v_samp_factor = form.verticalSampling;
    if (form.isProgressive) {
        jpeg_simple_progression(&info);
    }
    if (form.adobeMarker == AdobeMarker::LeftOut) {
        info.write_Adobe_marker = FALSE;
    }
}

}  // namespace

Bytes makeJpeg(const JpegForm& form, const Bytes& pixels) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &data, &size);
    const std::size_t rowBytes = pixels.size() / form.height;
    setUp(info, form, static_cast<int>(rowBytes / form.width));
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPROW>(pixels.data() + info.next_scanline * rowBytes);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes file(data, data + size);
    std::free(data);
    return file;
}

}  // namespace Orlix::Test
