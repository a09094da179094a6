#include "genapi/ziptext.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <optional>

#include "genapi/engineerror.h"
#include "genapi/xmltext.h"

namespace GenApi::Detail {

namespace {

constexpr std::string_view localSignature("PK\3\4", 4);
constexpr std::string_view centralSignature("PK\1\2", 4);
constexpr std::string_view endSignature("PK\5\6", 4);
constexpr std::size_t localSize = 30;
constexpr std::size_t centralSize = 46;
constexpr std::size_t endSize = 22;
constexpr std::size_t maximumComment = 0xFFFF;
constexpr std::uint64_t stored = 0;
constexpr std::uint64_t deflated = 8;

[[noreturn]] void refuse(const std::string& why) {
    GENAPI_THROW(RuntimeException, "Node map description: the zip container " + why);
}

// `count` bytes at an offset; refused where the container has not got them.
std::string_view part(std::string_view bytes, std::uint64_t offset, std::uint64_t count) {
    if (offset > bytes.size() || count > bytes.size() - offset) {
        refuse("is cut off.");
    }
    return bytes.substr(offset, count);
}

std::uint64_t number(std::string_view bytes, std::uint64_t offset, std::size_t count) {
    const std::string_view digits = part(bytes, offset, count);
    std::uint64_t value = 0;
    for (std::size_t i = count; i > 0; --i) {
        value = value << 8 | static_cast<std::uint8_t>(digits[i - 1]);
    }
    return value;
}

// One file as the directory at the container's end tells it.
struct Member {
    std::string_view name;
    std::uint64_t flags, method, checksum, packedSize, size, localOffset;

    [[nodiscard]] bool isXml() const {
        constexpr std::string_view ending = ".xml";
        return name.size() > ending.size() &&
               std::equal(
                   ending.begin(), ending.end(), name.end() - ending.size(),
                   [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
    }
    [[nodiscard]] bool isFolder() const { return !name.empty() && name.back() == '/'; }
};

// The record at the end has a comment of up to 64 KiB behind it.
std::size_t findEnd(std::string_view bytes) {
    const std::size_t place = bytes.rfind(endSignature);
    if (place == std::string_view::npos || bytes.size() - place < endSize ||
        bytes.size() - place > endSize + maximumComment) {
        refuse("has no directory.");
    }
    return place;
}

Member readMember(std::string_view bytes, std::uint64_t offset) {
    if (part(bytes, offset, centralSize).substr(0, 4) != centralSignature) {
        refuse("has a broken directory.");
    }
    Member member{};
    member.flags = number(bytes, offset + 8, 2);
    member.method = number(bytes, offset + 10, 2);
    member.checksum = number(bytes, offset + 16, 4);
    member.packedSize = number(bytes, offset + 20, 4);
    member.size = number(bytes, offset + 24, 4);
    member.localOffset = number(bytes, offset + 42, 4);
    member.name = part(bytes, offset + centralSize, number(bytes, offset + 28, 2));
    return member;
}

Member chooseMember(std::string_view bytes) {
    const std::size_t end = findEnd(bytes);
    const std::uint64_t count = number(bytes, end + 10, 2);
    std::uint64_t offset = number(bytes, end + 16, 4);
    std::optional<Member> only;
    std::uint64_t files = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const Member member = readMember(bytes, offset);
        if (member.isXml()) {
            return member;
        }
        if (!member.isFolder()) {
            only = member;
            ++files;
        }
        offset += centralSize + member.name.size() + number(bytes, offset + 30, 2) +
                  number(bytes, offset + 32, 2);
    }
    if (files != 1) {
        refuse("has no XML file.");
    }
    return *only;
}

std::string_view packedBytes(std::string_view bytes, const Member& member) {
    if (part(bytes, member.localOffset, localSize).substr(0, 4) != localSignature) {
        refuse("has a directory that leads to no file.");
    }
    const std::uint64_t begin = member.localOffset + localSize +
                                number(bytes, member.localOffset + 26, 2) +
                                number(bytes, member.localOffset + 28, 2);
    return part(bytes, begin, member.packedSize);
}

// The output has the room that the directory tells, so a bomb ends there.
std::string inflate(std::string_view packed, std::size_t size) {
    std::string text(size, '\0');
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
        refuse("could not be unpacked for lack of memory.");
    }
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    const int result = ::inflate(&stream, Z_FINISH);
    const bool isWhole = result == Z_STREAM_END && stream.total_out == size;
    inflateEnd(&stream);
    if (!isWhole) {
        refuse("has a file that can not be unpacked to the size it tells.");
    }
    return text;
}

}  // namespace

bool isZip(std::string_view bytes) {
    return bytes.substr(0, localSignature.size()) == localSignature;
}

std::string unzipDescription(std::string_view bytes) {
    if (!isZip(bytes)) {
        refuse("does not begin as one.");
    }
    const Member member = chooseMember(bytes);
    constexpr std::uint64_t encrypted = 1;
    if ((member.flags & encrypted) != 0) {
        refuse("is encrypted.");
    }
    if (member.size > XmlText::maximumSize) {
        refuse("has a text of " + std::to_string(member.size) + " bytes; at most " +
               std::to_string(XmlText::maximumSize) + " are taken.");
    }
    const std::string_view packed = packedBytes(bytes, member);
    std::string text;
    if (member.method == stored && packed.size() == member.size) {
        text = packed;
    } else if (member.method == deflated) {
        text = inflate(packed, static_cast<std::size_t>(member.size));
    } else {
        refuse("is packed in a way that is unknown here (method " + std::to_string(member.method) +
               ").");
    }
    const auto* first = reinterpret_cast<const Bytef*>(text.data());
    if (::crc32(0, first, static_cast<uInt>(text.size())) != member.checksum) {
        refuse("has a text whose check sum is wrong.");
    }
    return text;
}

}  // namespace GenApi::Detail
