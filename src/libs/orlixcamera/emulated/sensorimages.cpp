#include "orlixcamera/emulated/sensorimages.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <filesystem>

#include "gcbase/gcexception.h"

namespace Orlix::Emulated {
namespace {

constexpr std::uint64_t mostBytes = std::uint64_t{512} << 20U;
constexpr std::uint32_t levelStep = 0x0101;  // from 8 to 16 bits

bool isImageFile(const std::filesystem::directory_entry& entry) {
    constexpr std::array<const char*, 6> extensions = {".bmp", ".jpeg", ".jpg",
                                                       ".png", ".tif",  ".tiff"};
    std::string extension = entry.path().extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    std::error_code error;  // one that can't be looked at is none
    return entry.is_regular_file(error) &&
           std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

[[noreturn]] void refuse(const std::string& folder, const std::string& reason) {
    const std::string text = "Image folder '" + folder + "': " + reason;
    throw GenICam::RuntimeException(text.c_str(), __FILE__, __LINE__);
}

std::vector<std::filesystem::path> listImages(const std::string& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator place(folder, error), end; !error && place != end;
         place.increment(error)) {
        if (isImageFile(*place)) {
            files.push_back(place->path());
        }
    }
    if (error) {
        refuse(folder, error.message() + ".");
    }
    if (files.empty()) {
        refuse(folder, "there is no BMP, JPEG, PNG or TIFF file.");
    }
    std::sort(files.begin(), files.end());
    return files;
}

template <typename Sample>
std::uint32_t sampleAt(const std::uint8_t* pixel, std::size_t index) {
    Sample sample = 0;
    std::memcpy(&sample, pixel + index * sizeof sample, sizeof sample);
    return sizeof sample == 1 ? sample * levelStep : sample;
}

}  // namespace

std::shared_ptr<const SensorImages> SensorImages::Load(const std::string& folder) {
    auto images = std::make_shared<SensorImages>();
    std::uint64_t bytes = 0;
    for (const std::filesystem::path& file : listImages(folder)) {
        Entry entry;
        entry.name = file.filename().string();
        entry.image.Load(GenICam::gcstring(file.string()));
        bytes += entry.image.GetImageSize();
        if (bytes > mostBytes) {
            refuse(folder, "its pictures need more than 512 MiB.");
        }
        images->images_.push_back(std::move(entry));
    }
    return images;
}

Colour SensorImages::GetColour(std::size_t index, std::uint32_t x, std::uint32_t y) const {
    const COrlixImage& image = images_[index].image;
    const std::uint32_t width = image.GetWidth();
    const std::uint32_t height = image.GetHeight();
    const std::size_t pixelSize = BitsPerPixel(image.GetPixelType()) / 8;
    const std::size_t place = std::size_t{y % height} * width + x % width;
    const auto* pixel = static_cast<const std::uint8_t*>(image.GetBuffer()) + place * pixelSize;
    const auto byte = [pixel](std::size_t sample) { return sampleAt<std::uint8_t>(pixel, sample); };
    const auto word = [pixel](std::size_t sample) {
        return sampleAt<std::uint16_t>(pixel, sample);
    };
    switch (image.GetPixelType()) {
        case PixelType_Mono8:
            return {byte(0), byte(0), byte(0)};
        case PixelType_Mono16:
            return {word(0), word(0), word(0)};
        case PixelType_BGR8Packed:
        case PixelType_BGRA8Packed:
            return {byte(2), byte(1), byte(0)};
        case PixelType_RGB16Packed:
            return {word(0), word(1), word(2)};
        default:  // RGB8Packed and RGBA8Packed
            return {byte(0), byte(1), byte(2)};
    }
}

}  // namespace Orlix::Emulated
