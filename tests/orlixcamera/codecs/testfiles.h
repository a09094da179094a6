// What the codec tests share: a folder that goes away with its test, bytes, and comparisons.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "orlixcamera/orliximage.h"

namespace Orlix::Test {

using Bytes = std::vector<unsigned char>;

class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
    // The path of a file in it, as the library takes it.
    [[nodiscard]] std::string File(const std::string& name) const {
        return (path_ / name).string();
    }
    // Writes the file and returns its path.
    [[nodiscard]] std::string Write(const std::string& name, const Bytes& bytes) const;

private:
    std::filesystem::path path_;
};

[[nodiscard]] Bytes readFile(const std::string& path);

// Bytes that look random and are always the same.
[[nodiscard]] Bytes noise(std::size_t size, std::uint32_t seed = 1);

[[nodiscard]] COrlixImage load(const std::string& path);
// What the exception of a load says.
[[nodiscard]] std::string loadError(const std::string& path);

[[nodiscard]] Bytes pixelsOf(const COrlixImage& image);
void expectImage(const COrlixImage& image, EPixelType pixelType, std::uint32_t width,
                 std::uint32_t height, const Bytes& pixels);
// Each byte differs by no more than the tolerance.
void expectNear(const Bytes& actual, const Bytes& expected, int tolerance);

// The bytes of 16-bit samples in the order of the machine.
[[nodiscard]] Bytes nativeBytes(const std::vector<std::uint16_t>& samples);

}  // namespace Orlix::Test
