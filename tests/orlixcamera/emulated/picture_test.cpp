// What the sensor sees beside its patterns: image files and noise, through the stream.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/emulated/cameratools.h"
#include "orlixcamera/orliximage.h"

namespace {

using namespace EmulatedTest;
using Orlix::COrlixImage;
using Transport::FrameFate;
using Transport::StreamBuffer;
using Bytes = std::vector<std::uint8_t>;

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "emulated.XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string file(const char* name) const { return path_ + "/" + name; }
    [[nodiscard]] const char* path() const { return path_.c_str(); }
    // Pixels count up from the first one, byte by byte.
    void addPicture(const char* name, Orlix::EPixelType type, std::uint32_t width,
                    std::uint32_t height, std::uint8_t first) const {
        COrlixImage image;
        image.Reset(type, width, height);
        auto* const data = static_cast<std::uint8_t*>(image.GetBuffer());
        for (std::size_t place = 0; place < image.GetImageSize(); ++place) {
            data[place] = static_cast<std::uint8_t>(first + place);
        }
        image.Save(file(name).c_str());
    }

private:
    std::string path_;
};

class EmulatedPicture : public testing::Test {
protected:
    EmulatedPicture() {
        camera.features.set("ExposureTime", "5000");  // shows the scene as it is
        camera.features.integer("Width")->SetValue(4);
        camera.features.integer("Height")->SetValue(2);
    }
    void startFrames(std::size_t count) {
        camera.features.set("AcquisitionMode", "MultiFrame");
        camera.features.integer("AcquisitionFrameCount")
            ->SetValue(static_cast<std::int64_t>(count));
        camera.start(count);
    }
    [[nodiscard]] Bytes next() const {
        const StreamBuffer* const buffer = camera.wait();
        if (buffer == nullptr || buffer->fate != FrameFate::Delivered) {
            ADD_FAILURE() << "no picture came";
            return Bytes(64);
        }
        const auto* data = static_cast<const std::uint8_t*>(buffer->data);
        return {data, data + buffer->filled};
    }
    [[nodiscard]] Bytes snap() {
        startFrames(1);
        Bytes picture = next();
        camera.waitForEnd();
        camera.stream->Stop();
        return picture;
    }

    TemporaryFolder folder;
    Layer layer{1};
    StreamingCamera camera{layer};
};

TEST_F(EmulatedPicture, FilesOfAFolderComeInTheOrderOfTheirNames) {
    folder.addPicture("b.png", Orlix::PixelType_Mono8, 4, 2, 100);
    folder.addPicture("a.bmp", Orlix::PixelType_Mono8, 4, 2, 10);
    folder.addPicture("c.TIF", Orlix::PixelType_Mono8, 4, 2, 200);
    std::ofstream(folder.file("notes.txt")) << "no picture";
    camera.features.set("ImageFolder", folder.path());
    EXPECT_EQ(camera.features.get("ImageFolder"), folder.path());
    startFrames(5);
    for (const std::size_t first : {10U, 100U, 200U, 10U, 100U}) {
        const Bytes picture = next();
        for (std::size_t place = 0; place < picture.size(); ++place) {
            ASSERT_EQ(picture[place], first + place);
        }
    }
}

TEST_F(EmulatedPicture, FileIsRepeatedOverTheSensorAndFollowsOffsetAndReversal) {
    folder.addPicture("a.png", Orlix::PixelType_Mono8, 3, 3, 0);
    camera.features.set("ImageFolder", folder.path());
    EXPECT_EQ(snap(), (Bytes{0, 1, 2, 0, 3, 4, 5, 3}));
    camera.features.integer("OffsetX")->SetValue(4);
    camera.features.integer("OffsetY")->SetValue(2);
    EXPECT_EQ(snap(), (Bytes{7, 8, 6, 7, 1, 2, 0, 1}));
    camera.features.set("ReverseX", "1");
    EXPECT_EQ(snap(), (Bytes{7, 6, 8, 7, 1, 0, 2, 1}));
    camera.features.set("ReverseY", "1");
    EXPECT_EQ(snap(), (Bytes{1, 0, 2, 1, 7, 6, 8, 7}));
}

TEST_F(EmulatedPicture, BinnedPlacesOfTheSensorAreOne) {
    folder.addPicture("a.bmp", Orlix::PixelType_Mono8, 8, 4, 0);
    const Bytes scene = [&] {
        camera.features.integer("Width")->SetValue(8);
        return snap();
    }();
    camera.features.integer("Width")->SetValue(4);
    camera.features.integer("BinningHorizontal")->SetValue(2);
    const Bytes half = snap();
    for (std::size_t column = 0; column < half.size() / 2; ++column) {
        EXPECT_NEAR(half[column], (scene[2 * column] + scene[2 * column + 1]) / 2, 1);
    }
    camera.features.integer("BinningVertical")->SetValue(2);
    camera.features.set("ImageFolder", folder.path());
    // Of 0, 1, 8 and 9 the mean is 4 and a half.
    EXPECT_EQ(snap(), (Bytes{4, 6, 8, 10, 20, 22, 24, 26}));
    camera.features.set("ReverseX", "1");
    EXPECT_EQ(snap(), (Bytes{10, 8, 6, 4, 26, 24, 22, 20}));
}

TEST_F(EmulatedPicture, AnEntryThatCantBeLookedAtIsNoPicture) {
    folder.addPicture("b.png", Orlix::PixelType_Mono8, 4, 2, 100);
    std::filesystem::create_symlink("a.png", folder.file("a.png"));
    camera.features.set("ImageFolder", folder.path());
    EXPECT_EQ(snap()[0], 100);
}

TEST_F(EmulatedPicture, FilesOfEveryDepthAndColourFillEveryFormat) {
    folder.addPicture("rgb.png", Orlix::PixelType_RGB8Packed, 4, 2, 0);
    camera.features.set("ImageFolder", folder.path());
    camera.features.set("PixelFormat", "RGB8");
    Bytes picture = snap();
    ASSERT_EQ(picture.size(), 24U);
    EXPECT_EQ(picture[4], 4);
    camera.features.set("PixelFormat", "BGR8");
    EXPECT_EQ(snap()[4], 4);
    EXPECT_EQ(snap()[3], 5);
    camera.features.set("PixelFormat", "BayerRG8");
    picture = snap();
    EXPECT_EQ(picture[0], 0);   // red of the first pixel
    EXPECT_EQ(picture[1], 4);   // green of the second
    EXPECT_EQ(picture[4], 13);  // green of the second line
    EXPECT_EQ(picture[5], 17);  // blue
    NodeList_t entries;
    camera.features.enumeration("PixelFormat")->GetEntries(entries);
    for (const auto& [name, type] : {std::pair{"rgb.png", Orlix::PixelType_RGB16Packed},
                                     std::pair{"grey.png", Orlix::PixelType_Mono16},
                                     std::pair{"bgr.bmp", Orlix::PixelType_BGR8Packed},
                                     std::pair{"rgba.png", Orlix::PixelType_RGBA8Packed},
                                     std::pair{"bgra.bmp", Orlix::PixelType_BGRA8Packed}}) {
        folder.addPicture(name, type, 5, 3, 7);
    }
    camera.features.integer("Width")->SetValue(64);
    camera.features.integer("Height")->SetValue(48);
    for (INode* node : entries) {
        const CEnumEntryPtr entry(node);
        camera.features.enumeration("PixelFormat")->FromString(entry->GetSymbolic());
        camera.features.set("ImageFolder", folder.path());
        startFrames(5);
        for (int frame = 0; frame < 5; ++frame) {
            EXPECT_EQ(next().size(), camera.payload()) << entry->GetSymbolic();
        }
        camera.waitForEnd();
        camera.stream->Stop();
    }
}

TEST_F(EmulatedPicture, ExposureAndGainMakeFilesBrighter) {
    folder.addPicture("a.png", Orlix::PixelType_Mono8, 4, 2, 100);
    camera.features.set("ImageFolder", folder.path());
    camera.features.set("ExposureTime", "2500");
    EXPECT_EQ(snap()[2], 51);
    camera.features.set("ExposureTime", "10000");
    EXPECT_EQ(snap()[2], 204);
    camera.features.set("Gain", "20");
    EXPECT_EQ(snap()[2], 255);
}

TEST_F(EmulatedPicture, SceneComesBackWithAnEmptyFolderAndPatternsGoFirst) {
    const Bytes scene = snap();
    folder.addPicture("a.png", Orlix::PixelType_Mono8, 4, 2, 100);
    camera.features.set("ImageFolder", folder.path());
    EXPECT_NE(snap(), scene);
    camera.features.set("TestPattern", "Black");
    EXPECT_EQ(snap(), Bytes(8, 0));
    camera.features.set("TestPattern", "Off");
    camera.features.set("ImageFolder", "");
    EXPECT_EQ(snap(), scene);
}

TEST_F(EmulatedPicture, FolderWithoutPicturesIsRefusedAndTheOldOneStays) {
    const auto errorOf = [&](const std::string& path) -> std::string {
        try {
            camera.features.set("ImageFolder", path.c_str());
        } catch (const GenICam::RuntimeException& error) {
            return error.GetDescription();
        }
        return "no error";
    };
    EXPECT_EQ(errorOf(folder.path()), "Image folder '" + std::string(folder.path()) +
                                          "': there is no BMP, JPEG, PNG or TIFF file.");
    EXPECT_EQ(errorOf("/nowhere/at/all"),
              "Image folder '/nowhere/at/all': No such file or directory.");
    std::ofstream(folder.file("broken.png")) << "no picture";
    EXPECT_NE(errorOf(folder.path()).find("broken.png"), std::string::npos);
    EXPECT_EQ(camera.features.get("ImageFolder"), "");
}

TEST_F(EmulatedPicture, NoiseDiffersFromFrameToFrameWithinItsRange) {
    camera.features.integer("Width")->SetValue(64);
    camera.features.integer("Height")->SetValue(48);
    const Bytes clean = snap();
    camera.features.set("NoiseLevel", "5");
    startFrames(3);
    std::set<Bytes> frames;
    for (int frame = 0; frame < 3; ++frame) {
        const Bytes noisy = next();
        int largest = 0;
        for (std::size_t place = 0; place < clean.size(); ++place) {
            largest = std::max(largest, std::abs(noisy[place] - clean[place]));
        }
        EXPECT_GE(largest, 3);
        EXPECT_LE(largest, 6);
        frames.insert(noisy);
    }
    EXPECT_EQ(frames.size(), 3U);
}

TEST_F(EmulatedPicture, TestPatternsHaveNoNoise) {
    camera.features.set("NoiseLevel", "64");
    camera.features.set("TestPattern", "White");
    EXPECT_EQ(snap(), Bytes(8, 255));
}

TEST_F(EmulatedPicture, FilesHaveNoiseToo) {
    folder.addPicture("a.png", Orlix::PixelType_Mono8, 4, 2, 100);
    camera.features.set("ImageFolder", folder.path());
    const Bytes clean = snap();
    camera.features.set("NoiseLevel", "20");
    EXPECT_NE(snap(), clean);
}

TEST_F(EmulatedPicture, MovingPatternMovesInEveryFormat) {
    camera.features.integer("Width")->SetValue(64);
    camera.features.integer("Height")->SetValue(48);
    camera.features.set("ExposureTime", "1");
    NodeList_t entries;
    camera.features.enumeration("PixelFormat")->GetEntries(entries);
    for (INode* node : entries) {
        const CEnumEntryPtr entry(node);
        camera.features.enumeration("PixelFormat")->FromString(entry->GetSymbolic());
        for (const char* pattern : {"GreyVerticalRampMoving", "GreyDiagonalRampMoving"}) {
            camera.features.set("TestPattern", pattern);
            // Two lines a frame: formats of few bits show it later.
            startFrames(129);
            const Bytes first = next();
            for (int frame = 1; frame < 65; ++frame) {
                static_cast<void>(next());
            }
            EXPECT_NE(next(), first) << entry->GetSymbolic() << " " << pattern;
            for (int frame = 66; frame < 128; ++frame) {
                static_cast<void>(next());
            }
            EXPECT_EQ(next(), first) << "after 256 lines";
            camera.waitForEnd();
            camera.stream->Stop();
        }
    }
}

TEST_F(EmulatedPicture, ChunkNamesTheFile) {
    folder.addPicture("first.png", Orlix::PixelType_Mono8, 4, 2, 100);
    camera.features.set("ImageFolder", folder.path());
    camera.features.set("ChunkModeActive", "1");
    camera.features.set("ChunkSelector", "SceneName");
    camera.features.set("ChunkEnable", "1");
    startFrames(1);
    const StreamBuffer* const buffer = camera.wait();
    CChunkAdapterGEV adapter(&camera.features.map());
    adapter.AttachBuffer(static_cast<std::uint8_t*>(buffer->data),
                         static_cast<std::int64_t>(buffer->filled));
    EXPECT_EQ(camera.features.get("ChunkSceneName"), "first.png");
}

}  // namespace
