// An archive of one file, as cameras keep their description to save memory.
#include <zlib.h>

#include "gcbase/gcexception.h"
#include "serveddescription.h"

namespace Orlix::Camsim {
namespace {

// Archives have their lowest byte first.
template <typename Number>
void append(std::string& text, Number number) {
    for (std::size_t index = 0; index < sizeof number; ++index) {
        text += static_cast<char>(number >> 8 * index & 0xFF);
    }
}

std::string deflated(const std::string& content) {
    z_stream stream{};
    constexpr int rawFormat = -15;
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, rawFormat, 9, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw GenICam::RuntimeException("The description can't be compressed.", __FILE__, __LINE__);
    }
    std::string packed(deflateBound(&stream, content.size()), '\0');
    std::string source = content;  // the library takes no constant
    stream.next_in = reinterpret_cast<Bytef*>(source.data());
    stream.avail_in = static_cast<uInt>(source.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) {
        throw GenICam::RuntimeException("The description can't be compressed.", __FILE__, __LINE__);
    }
    return packed;
}

// What the local header and that of the directory have in common.
std::string commonHeader(const std::string& name, const std::string& content,
                         const std::string& packed) {
    constexpr std::uint16_t versionNeeded = 20;
    constexpr std::uint16_t deflate = 8;
    constexpr std::uint16_t firstDay = 0x21;  // of 1980, January
    const auto sum = static_cast<std::uint32_t>(crc32(
        0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
    std::string text;
    append(text, versionNeeded);
    append(text, std::uint16_t{0});
    append(text, deflate);
    append(text, std::uint16_t{0});
    append(text, firstDay);
    append(text, sum);
    append(text, static_cast<std::uint32_t>(packed.size()));
    append(text, static_cast<std::uint32_t>(content.size()));
    append(text, static_cast<std::uint16_t>(name.size()));
    append(text, std::uint16_t{0});
    return text;
}

}  // namespace

std::string ZipOneFile(const std::string& name, const std::string& content) {
    const std::string packed = deflated(content);
    const std::string common = commonHeader(name, content, packed);
    const std::string file = "PK\x03\x04" + common + name + packed;
    std::string directory = "PK\x01\x02";
    append(directory, std::uint16_t{20});
    directory += common;
    directory += std::string(14, '\0') + name;  // no comment, first disk, at the start of the file
    std::string end = "PK\x05\x06" + std::string(4, '\0');
    append(end, std::uint16_t{1});
    append(end, std::uint16_t{1});
    append(end, static_cast<std::uint32_t>(directory.size()));
    append(end, static_cast<std::uint32_t>(file.size()));
    append(end, std::uint16_t{0});
    return file + directory + end;
}

}  // namespace Orlix::Camsim
