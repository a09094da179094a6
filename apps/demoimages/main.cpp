// The program demoimages: a folder of test pictures in all file formats, with a recipe that
// replays and converts them, and a recipe that grabs from an emulated camera.
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

// The feature stream sets the camera up as often as it is opened: a moving colour pattern as a
// Bayer picture, and a chunk with each frame. The event pin switches its event on by itself.
constexpr const char* cameraRecipe =
    R"({
  "version": 1,
  "nodes": [
    {
      "name": "Camera",
      "type": "Camera",
      "settings": {
        "DeviceProperties": {"DeviceClass": "OrlixEmulated"},
        "EventConfiguration": [
          "ExposureEnd.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEndFrameID"
        ],
        "ChunkPinConfigurations": ["ExposureTime.Type=Float.ValueName=ChunkExposureTime"],
        "AcquisitionMode": 1,
        "FixCorruptImages": 1,
        "FeatureStreams": {
          "@CameraDevice": "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n)"
    R"(PixelFormat\tBayerRG8\nWidth\t320\nHeight\t240\nTestPattern\tColorBar\n)"
    R"(ExposureTime\t2500\nAcquisitionFrameRateEnable\t1\nAcquisitionFrameRate\t25\n)"
    R"(ChunkModeActive\t1\nChunkSelector\tExposureTime\nChunkEnable\t1\n"
        }
      }
    },
    {
      "name": "Converter",
      "type": "ImageFormatConverter",
      "settings": {
        "OutputPixelFormat": 35127316
      }
    }
  ],
  "connections": [
    {"from": "Camera.Image", "to": "Converter.Image"}
  ]
}
)";

void writeText(const std::filesystem::path& path, const char* text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw GenICam::RuntimeException(("can not write " + path.string()).c_str(), __FILE__,
                                        __LINE__);
    }
}

void makeDemo(const std::filesystem::path& folder) {
    const std::filesystem::path images = folder / "images";
    std::filesystem::create_directories(images);
    for (const Picture& picture : pictures) {
        saveImage(GenICam::gcstring((images / picture.name).string()),
                  makePicture(picture.pattern, picture.pixelType, width, height));
    }
    writeText(folder / "recipe.json", recipe);
    writeText(folder / "camera-recipe.json", cameraRecipe);
    std::cout << std::size(pictures) << " pictures in " << images.string() << "\n"
              << "recipe " << (folder / "recipe.json").string() << "\n"
              << "recipe " << (folder / "camera-recipe.json").string() << "\n";
}

int run(int argc, char** argv) {
    CLI::App app("Makes test pictures in all file formats, a recipe for them and one for a camera",
                 "demoimages");
    std::string folder;
    app.add_option("DIR", folder, "Folder to make; gets images/ and two recipes")->required();
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
