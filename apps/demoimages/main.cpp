// The program demoimages: a folder of test pictures in all file formats, with a recipe that
// replays and converts them.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "gcbase/gcexception.h"
#include "orlixcamera/imagefile.h"
#include "patterns.h"

namespace Orlix::App {
namespace {

constexpr std::uint32_t width = 320;
constexpr std::uint32_t height = 240;

struct Picture {
    const char* name;
    Pattern pattern;
    EPixelType pixelType;
};

constexpr Picture pictures[] = {
    {"01-ramp-gray8.bmp", Pattern::Ramp, PixelType_Mono8},
    {"02-bars-colour8.bmp", Pattern::Bars, PixelType_BGR8Packed},
    {"03-rings-gray8.jpg", Pattern::Rings, PixelType_Mono8},
    {"04-waves-colour8.jpg", Pattern::Waves, PixelType_RGB8Packed},
    {"05-wheel-gray8.png", Pattern::Wheel, PixelType_Mono8},
    {"06-ramp-colour8.png", Pattern::Ramp, PixelType_RGB8Packed},
    {"07-rings-gray16.png", Pattern::Rings, PixelType_Mono16},
    {"08-waves-colour16.png", Pattern::Waves, PixelType_RGB16Packed},
    {"09-bars-gray8.tif", Pattern::Bars, PixelType_Mono8},
    {"10-wheel-colour8.tif", Pattern::Wheel, PixelType_RGB8Packed},
    {"11-waves-gray16.tif", Pattern::Waves, PixelType_Mono16},
    {"12-rings-colour16.tif", Pattern::Rings, PixelType_RGB16Packed},
};

constexpr const char* recipe = R"({
  "version": 1,
  "nodes": [
    {
      "name": "Loader",
      "type": "ImageLoading",
      "settings": {
        "sourcePath": "images",
        "numberOfImages": 12,
        "framesPerSecond": 25,
        "runContinuously": true
      }
    },
    {
      "name": "Converter",
      "type": "ImageFormatConverter",
      "settings": {
        "OutputPixelFormat": 17301505
      }
    }
  ],
  "connections": [
    {"from": "Loader.Image", "to": "Converter.Image"}
  ]
}
)";

void makeDemo(const std::filesystem::path& folder) {
    const std::filesystem::path images = folder / "images";
    std::filesystem::create_directories(images);
    for (const Picture& picture : pictures) {
        saveImage(GenICam::gcstring((images / picture.name).string()),
                  makePicture(picture.pattern, picture.pixelType, width, height));
    }
    std::ofstream file(folder / "recipe.json", std::ios::binary);
    file << recipe;
    file.close();
    if (!file) {
        throw GenICam::RuntimeException("can not write recipe.json", __FILE__, __LINE__);
    }
    std::cout << std::size(pictures) << " pictures in " << images.string() << "\n"
              << "recipe " << (folder / "recipe.json").string() << "\n";
}

int run(int argc, char** argv) {
    CLI::App app("Makes test pictures in all file formats and a recipe for them", "demoimages");
    std::string folder;
    app.add_option("DIR", folder, "Folder to make; gets images/ and recipe.json")->required();
    try {
        app.parse(argc, argv);
        makeDemo(folder);
        return 0;
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const GenICam::GenericException& error) {
        std::cerr << "demoimages: " << error.GetDescription() << "\n";
    } catch (const std::exception& error) {
        std::cerr << "demoimages: " << error.what() << "\n";
    }
    return 1;
}

}  // namespace
}  // namespace Orlix::App

int main(int argc, char** argv) {
    return Orlix::App::run(argc, argv);
}
