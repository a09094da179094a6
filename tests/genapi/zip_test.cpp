// Descriptions in zip containers, whole and hostile.
#include <gtest/gtest.h>
#include <zlib.h>

#include "genapi/testmap.h"

using namespace GenApiTest;

namespace {

const std::string text = document("<Integer Name=\"A\"><Value>7</Value></Integer>");

std::string number(std::uint64_t value, int bytes) {
    std::string result;
    for (int i = 0; i < bytes; ++i) {
        result += static_cast<char>(value >> 8 * i);
    }
    return result;
}

std::string deflated(const std::string& plain) {
    std::string packed(compressBound(plain.size()), '\0');
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string input = plain;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

struct Member {
    std::string name = "Camera.XML";
    std::string plain = text;
    std::string packed = deflated(text);
    std::uint64_t method = 8;
    std::uint64_t flags = 0;
    std::uint64_t size = text.size();
};

// Both headers share these fields.
std::string fields(const Member& m) {
    const auto checksum =
        crc32(0, reinterpret_cast<const Bytef*>(m.plain.data()), static_cast<uInt>(m.plain.size()));
    return number(20, 2) + number(m.flags, 2) + number(m.method, 2) + number(0, 4) +
           number(checksum, 4) + number(m.packed.size(), 4) + number(m.size, 4) +
           number(m.name.size(), 2) + number(0, 2);
}

std::string container(const std::vector<Member>& members, const std::string& comment = "") {
    std::string files;
    std::string directory;
    for (const Member& m : members) {
        directory += "PK\1\2" + number(20, 2) + fields(m) + std::string(10, '\0') +
                     number(files.size(), 4) + m.name;
        files += "PK\3\4" + fields(m) + m.name + m.packed;
    }
    return files + directory + "PK\5\6" + number(0, 4) + number(members.size(), 2) +
           number(members.size(), 2) + number(directory.size(), 4) + number(files.size(), 4) +
           number(comment.size(), 2) + comment;
}

CNodeMapRef unpack(const std::string& bytes) {
    return CNodeMapFactory(ContentType_ZippedXml, bytes.data(), bytes.size()).CreateNodeMap();
}

std::string refusal(const std::string& bytes) {
    return errorOf<GenICam::RuntimeException>([&] { (void)unpack(bytes); });
}

const std::string begin = "Node map description: the zip container ";

}  // namespace

TEST(Zip, ADeflatedAndAStoredDescriptionLoad) {
    Member storedMember;
    storedMember.packed = text;
    storedMember.method = 0;
    for (const Member& member : {Member{}, storedMember}) {
        const std::string bytes = container({member}, "a comment");
        EXPECT_EQ(CIntegerPtr(unpack(bytes)->GetNode("A"))->GetValue(), 7);
        EXPECT_EQ(CIntegerPtr(load(bytes)->GetNode("A"))->GetValue(), 7);
    }
}

TEST(Zip, TheXmlFileIsFoundAmongOthers) {
    Member note;
    note.name = "readme.txt";
    EXPECT_NO_THROW((void)unpack(container({note, Member{}})));
    EXPECT_NO_THROW((void)unpack(container({note})));
    EXPECT_EQ(refusal(container({note, note})), begin + "has no XML file.");
    EXPECT_EQ(refusal(container({})), begin + "does not begin as one.");
}

TEST(Zip, AContainerThatIsCutOffIsRefused) {
    const std::string whole = container({Member{}});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_NE(refusal(whole.substr(0, length)), "no exception") << length;
    }
    EXPECT_EQ(refusal(text), begin + "does not begin as one.");
}

TEST(Zip, AnyBrokenByteIsRefusedOrHarmless) {
    const std::string whole = container({Member{}});
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const int flip : {0x01, 0x80, 0xFF}) {
            std::string bytes = whole;
            bytes[i] = static_cast<char>(bytes[i] ^ flip);
            try {
                EXPECT_EQ(CIntegerPtr(unpack(bytes)->GetNode("A"))->GetValue(), 7) << i;
            } catch (const GenICam::RuntimeException& error) {
                EXPECT_EQ(std::string(error.GetDescription()).substr(0, begin.size()), begin);
            }
        }
    }
}

TEST(Zip, ABombIsRefusedBeforeItIsUnpacked) {
    Member large;
    large.size = std::uint64_t{65} * 1024 * 1024;
    EXPECT_EQ(refusal(container({large})),
              begin + "has a text of 68157440 bytes; at most 67108864 are taken.");
    Member lying;
    lying.size = 10;
    EXPECT_EQ(refusal(container({lying})),
              begin + "has a file that can not be unpacked to the size it tells.");
}

TEST(Zip, WhatCanNotBeUnpackedIsNamed) {
    Member secret;
    secret.flags = 1;
    EXPECT_EQ(refusal(container({secret})), begin + "is encrypted.");
    Member other;
    other.method = 12;
    EXPECT_EQ(refusal(container({other})),
              begin + "is packed in a way that is unknown here (method 12).");
    Member wrong;
    wrong.plain = "other text";
    EXPECT_EQ(refusal(container({wrong})), begin + "has a text whose check sum is wrong.");
}
