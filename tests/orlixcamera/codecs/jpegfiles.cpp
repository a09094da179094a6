#include "orlixcamera/codecs/jpegfiles.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

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

std::vector<jpeg_scan_info> scansOf(const JpegForm& form, int components) {
    std::vector<jpeg_scan_info> scans;
    for (int i = 0; i < components; ++i) {
        scans.push_back({1, {i}, 0, form.isProgressive ? 0 : 63, 0, 0});
    }
    for (int i = 0; form.isProgressive && i < components; ++i) {
        scans.push_back({1, {i}, 1, 63, 0, 0});
    }
    return scans;
}

void setUp(jpeg_compress_struct& info, const JpegForm& form, int components,
           const std::vector<jpeg_scan_info>& scans) {
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
    if (form.scans == JpegScans::OneForEachComponent) {
        info.scan_info = scans.data();
        info.num_scans = static_cast<int>(scans.size());
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
    const auto components = static_cast<int>(rowBytes / form.width);
    const std::vector<jpeg_scan_info> scans = scansOf(form, components);
    setUp(info, form, components, scans);
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

Bytes leaveOutScans(const Bytes& file, const std::function<bool(const JpegScan&)>& isLeftOut) {
    Bytes result(file.begin(), file.begin() + 2);
    // Each part begins with 0xFF, a name and its size; behind the head of a scan its codes follow,
    // in which 0xFF comes with 0 or the number of a restart.
    for (std::size_t i = 2; i + 3 < file.size();) {
        std::size_t end = i + 2 + (std::size_t{file[i + 2]} << 8U | file[i + 3]);
        const bool isScan = file[i + 1] == 0xDA;
        while (isScan &&
               !(file[end] == 0xFF && file[end + 1] != 0 && (file[end + 1] & 0xF8U) != 0xD0)) {
            ++end;
        }
        if (!isScan || !isLeftOut({file[i + 5], file[i + 7]})) {
            result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(i),
                          file.begin() + static_cast<std::ptrdiff_t>(end));
        }
        i = end;
    }
    result.insert(result.end(), {0xFF, 0xD9});
    return result;
}

}  // namespace Orlix::Test
