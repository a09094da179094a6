#include "orlixcamera/codecs/rawtiff.h"

#include <tiffio.h>

#include <map>

namespace Orlix::Test {

namespace {

using Fields = std::map<std::uint16_t, std::vector<std::uint32_t>>;

constexpr std::uint32_t headerSize = 8;
constexpr std::uint16_t longType = 4;

void append(Bytes& bytes, std::uint32_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

Fields fieldsOf(const RawTiff& form, std::uint32_t dataStart) {
    Fields fields = {
        {TIFFTAG_IMAGEWIDTH, {form.width}},        {TIFFTAG_IMAGELENGTH, {form.height}},
        {TIFFTAG_BITSPERSAMPLE, {form.bits}},      {TIFFTAG_COMPRESSION, {form.compression}},
        {TIFFTAG_PHOTOMETRIC, {form.photometric}}, {TIFFTAG_SAMPLESPERPIXEL, {1}}};
    std::vector<std::uint32_t> offsets;
    std::vector<std::uint32_t> counts;
    for (const Bytes& piece : form.pieces) {
        offsets.push_back(dataStart);
        counts.push_back(static_cast<std::uint32_t>(piece.size()));
        dataStart += counts.back();
    }
    for (const TiffField& field : form.more) {
        fields[field.first] = field.second;
    }
    const bool isTiled = fields.contains(TIFFTAG_TILEWIDTH);
    fields.try_emplace(isTiled ? TIFFTAG_TILEOFFSETS : TIFFTAG_STRIPOFFSETS, offsets);
    fields.try_emplace(isTiled ? TIFFTAG_TILEBYTECOUNTS : TIFFTAG_STRIPBYTECOUNTS, counts);
    return fields;
}

// The directory, and behind it the values that have no place in it.
Bytes directoryOf(const Fields& fields, std::uint32_t start) {
    Bytes entries;
    Bytes values;
    const auto valuesStart = static_cast<std::uint32_t>(start + 2 + 12 * fields.size() + 4);
    append(entries, static_cast<std::uint32_t>(fields.size()), 2);
    for (const auto& [tag, numbers] : fields) {
        append(entries, tag, 2);
        append(entries, longType, 2);
        append(entries, static_cast<std::uint32_t>(numbers.size()), 4);
        const bool isInPlace = numbers.size() == 1;
        if (!isInPlace) {
            append(entries, static_cast<std::uint32_t>(valuesStart + values.size()), 4);
        }
        for (const std::uint32_t number : numbers) {
            append(isInPlace ? entries : values, number, 4);
        }
    }
    append(entries, 0, 4);
    entries.insert(entries.end(), values.begin(), values.end());
    return entries;
}

}  // namespace

Bytes makeTiff(const RawTiff& form) {
    Bytes data;
    for (const Bytes& piece : form.pieces) {
        data.insert(data.end(), piece.begin(), piece.end());
    }
    const bool isInFront = form.directory == DirectoryPlace::InFrontOfData;
    const auto behind = static_cast<std::uint32_t>(headerSize + data.size() + data.size() % 2);
    const std::uint32_t start = isInFront ? headerSize : behind;
    // Its size does not depend on where the data lies.
    const std::size_t size = directoryOf(fieldsOf(form, 0), start).size();
    const auto dataStart = static_cast<std::uint32_t>(isInFront ? headerSize + size : headerSize);
    const Bytes directory = directoryOf(fieldsOf(form, dataStart), start);
    Bytes bytes = {'I', 'I', 42, 0};
    append(bytes, start, 4);
    bytes.insert(bytes.end(), isInFront ? directory.begin() : data.begin(),
                 isInFront ? directory.end() : data.end());
    bytes.resize(isInFront ? dataStart : start);
    bytes.insert(bytes.end(), isInFront ? data.begin() : directory.begin(),
                 isInFront ? data.end() : directory.end());
    return bytes;
}

}  // namespace Orlix::Test
