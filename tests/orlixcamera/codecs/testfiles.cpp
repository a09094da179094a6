#include "orlixcamera/codecs/testfiles.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "gcbase/gcexception.h"

namespace Orlix::Test {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "orlix-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::Write(const std::string& name, const Bytes& bytes) const {
    // A new file and not the old one cut to nothing, which some file systems write to disk at once.
    std::filesystem::remove(File(name));
    std::ofstream file(File(name), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return File(name);
}

Bytes readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 generator(seed);
    Bytes bytes(size);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(generator() >> 24U);
    }
    return bytes;
}

COrlixImage load(const std::string& path) {
    COrlixImage image;
    image.Load(path.c_str());
    return image;
}

std::string loadError(const std::string& path) {
    try {
        static_cast<void>(load(path));
    } catch (const GenICam::RuntimeException& error) {
        return error.GetDescription();
    }
    return "no exception";
}

Bytes pixelsOf(const COrlixImage& image) {
    const auto* bytes = static_cast<const unsigned char*>(image.GetBuffer());
    return Bytes(bytes, bytes + image.GetImageSize());
}

void expectImage(const COrlixImage& image, EPixelType pixelType, std::uint32_t width,
                 std::uint32_t height, const Bytes& pixels) {
    EXPECT_EQ(image.GetPixelType(), pixelType);
    EXPECT_EQ(image.GetWidth(), width);
    EXPECT_EQ(image.GetHeight(), height);
    EXPECT_EQ(image.GetPaddingX(), 0U);
    EXPECT_EQ(image.GetOrientation(), ImageOrientation_TopDown);
    EXPECT_EQ(pixelsOf(image), pixels);
}

void expectNear(const Bytes& actual, const Bytes& expected, int tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        ASSERT_NEAR(actual[i], expected[i], tolerance) << "byte " << i;
    }
}

Bytes nativeBytes(const std::vector<std::uint16_t>& samples) {
    Bytes bytes(samples.size() * 2);
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

}  // namespace Orlix::Test
