#include "orlixcamera/codecs/bmpfiles.h"

#include <algorithm>
#include <cstdlib>

namespace Orlix::Test {

namespace {

void append(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

void appendSize(Bytes& bytes, const BmpForm& form) {
    const bool isCore = form.headerSize == 12;
    append(bytes, form.headerSize, 4);
    append(bytes, static_cast<std::uint32_t>(form.width), isCore ? 2 : 4);
    append(bytes, static_cast<std::uint32_t>(form.height), isCore ? 2 : 4);
    append(bytes, 1, 2);
    append(bytes, form.bits, 2);
    if (!isCore) {
        append(bytes, form.compression, 4);
        append(bytes, 0, 4);
        append(bytes, 0, 4);
        append(bytes, 0, 4);
        append(bytes, static_cast<std::uint32_t>(form.palette.size()), 4);
        append(bytes, 0, 4);
    }
}

}  // namespace

Bytes makeBmp(const BmpForm& form, const Bytes& data) {
    Bytes info;
    appendSize(info, form);
    for (const std::uint32_t mask : form.masks) {
        append(info, mask, 4);
    }
    info.resize(std::max<std::size_t>(info.size(), form.headerSize));
    for (const auto& color : form.palette) {
        info.insert(info.end(), color.begin(), color.end());
        if (form.headerSize != 12) {
            info.push_back(0);
        }
    }
    Bytes file = {'B', 'M'};
    append(file, static_cast<std::uint32_t>(14 + info.size() + data.size()), 4);
    append(file, 0, 4);
    append(file, static_cast<std::uint32_t>(14 + info.size()), 4);
    file.insert(file.end(), info.begin(), info.end());
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

Bytes bmpRows(const BmpForm& form, const Bytes& rows) {
    const auto height = static_cast<std::size_t>(std::abs(form.height));
    const std::size_t rowBytes = rows.size() / height;
    Bytes result;
    for (std::size_t i = 0; i < height; ++i) {
        const std::size_t y = form.height < 0 ? i : height - 1 - i;
        const auto row = rows.begin() + static_cast<std::ptrdiff_t>(y * rowBytes);
        result.insert(result.end(), row, row + static_cast<std::ptrdiff_t>(rowBytes));
        result.resize((result.size() + 3) / 4 * 4);
    }
    return result;
}

}  // namespace Orlix::Test
