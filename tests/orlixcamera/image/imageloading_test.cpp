#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/jpegfiles.h"
#include "orlixcamera/codecs/pngfiles.h"
#include "orlixcamera/codecs/testfiles.h"
#include "orlixcamera/copycounter.h"

namespace Orlix::Test {
namespace {

class ImageLoading : public testing::Test {
protected:
    void ExpectError(const std::string& path, const std::string& cause) const {
        EXPECT_EQ(loadError(path), "Cannot load image file '" + path + "': " + cause + ".");
    }

    TemporaryFolder folder;
};

TEST_F(ImageLoading, AMissingFileIsNamed) {
    ExpectError(folder.File("none.png"), "the file can not be opened: No such file or directory");
}

TEST_F(ImageLoading, AFileThatMayNotBeReadIsNamed) {
    const std::string path = folder.Write("a.png", {1});
    ::chmod(path.c_str(), 0);
    // The superuser may read every file, so this thread becomes somebody else for the moment.
    const int user = ::setfsuid(65534);
    const std::string error = loadError(path);
    ::setfsuid(static_cast<uid_t>(user));
    EXPECT_EQ(error, "Cannot load image file '" + path +
                         "': the file can not be opened: Permission denied.");
}

TEST_F(ImageLoading, AFolderIsNoPicture) {
    ExpectError(folder.Path().string(), "it is a folder");
}

TEST_F(ImageLoading, ANamedPipeIsRefusedWithoutWaiting) {
    ::mkfifo(folder.File("pipe.png").c_str(), 0600);
    ExpectError(folder.File("pipe.png"), "it is not a regular file");
}

TEST_F(ImageLoading, ADeviceIsRefused) {
    ExpectError("/dev/zero", "it is not a regular file");
}

TEST_F(ImageLoading, AnEmptyFileIsNamed) {
    ExpectError(folder.Write("a.png", {}), "the file is empty");
}

TEST_F(ImageLoading, AnEmptyPathIsNamed) {
    ExpectError("", "the path is empty");
}

TEST_F(ImageLoading, APathWithANullCharacterIsNotCutShort) {
    writePng(folder.File("a.png"), {.width = 1, .height = 1}, {1});
    COrlixImage image;
    const std::string path = folder.File("a.png") + std::string("\0b", 2);
    EXPECT_THROW(image.Load(GenICam::gcstring(path)), GenICam::RuntimeException);
}

TEST_F(ImageLoading, UnknownContentIsNamedWhateverTheExtension) {
    for (const Bytes& bytes : {Bytes{'x'}, Bytes(1000, 'x'), Bytes{'B'}, Bytes{0x89, 'P', 'N'}}) {
        ExpectError(folder.Write("a.png", bytes), "the content is none of BMP, JPEG, PNG and TIFF");
    }
}

TEST_F(ImageLoading, TheContentTellsTheFormatAndNotTheExtension) {
    writePng(folder.File("a.jpg"), {.width = 3, .height = 1}, {1, 2, 3});
    expectImage(load(folder.File("a.jpg")), PixelType_Mono8, 3, 1, {1, 2, 3});
}

TEST_F(ImageLoading, APathInUtf8IsFound) {
    const std::string path = folder.File("Bild \xC3\xA4\xE6\xBC\xA2.png");
    writePng(path, {.width = 1, .height = 1}, {9});
    expectImage(load(path), PixelType_Mono8, 1, 1, {9});
}

TEST_F(ImageLoading, ALinkIsFollowed) {
    writePng(folder.File("a.png"), {.width = 1, .height = 1}, {9});
    std::filesystem::create_symlink(folder.File("a.png"), folder.File("b.png"));
    EXPECT_EQ(load(folder.File("b.png")).GetWidth(), 1U);
}

TEST_F(ImageLoading, AFailedLoadLeavesTheImageAsItWas) {
    COrlixImage image;
    image.CopyImage("abcd", 4, PixelType_Mono8, 2, 2, 0);
    EXPECT_THROW(image.Load(folder.File("none.png").c_str()), GenICam::RuntimeException);
    expectImage(image, PixelType_Mono8, 2, 2, {'a', 'b', 'c', 'd'});
}

TEST_F(ImageLoading, ALoadLeavesOtherHandlesOfTheOldBufferAlone) {
    writePng(folder.File("a.png"), {.width = 2, .height = 2}, {1, 2, 3, 4});
    COrlixImage image;
    image.CopyImage("abcd", 4, PixelType_Mono8, 2, 2, 0);
    const COrlixImage other = image;
    image.Load(folder.File("a.png").c_str());
    expectImage(image, PixelType_Mono8, 2, 2, {1, 2, 3, 4});
    expectImage(other, PixelType_Mono8, 2, 2, {'a', 'b', 'c', 'd'});
}

TEST_F(ImageLoading, LoadingAndHandingOnCopiesNoPixel) {
    const std::string path =
        folder.Write("a.jpg", makeJpeg({.width = 64, .height = 64}, Bytes(64 * 64 * 3, 99)));
    PixelCopyCounter::Reset();
    COrlixImage image = load(path);
    const COrlixImage handed = std::move(image);
    const COrlixImage shared = handed;
    EXPECT_EQ(shared.GetBuffer(), handed.GetBuffer());
    EXPECT_EQ(PixelCopyCounter::Read(), 0U);
}

TEST_F(ImageLoading, ASequenceOfPicturesTakesItsMemoryFromThePool) {
    writePng(folder.File("a.png"), {.width = 500, .height = 500, .colorType = 2},
             noise(std::size_t{500} * 500 * 3));
    static_cast<void>(load(folder.File("a.png")));
    const std::uint64_t before = BufferPool::Instance().GetStatistics().allocations;
    for (int i = 0; i < 5; ++i) {
        static_cast<void>(load(folder.File("a.png")));
    }
    EXPECT_EQ(BufferPool::Instance().GetStatistics().allocations, before);
}

TEST_F(ImageLoading, ManyThreadsLoadAtOnce) {
    const Bytes pixels = noise(std::size_t{40} * 30 * 3);
    COrlixImage image;
    image.CopyImage(pixels.data(), pixels.size(), PixelType_RGB8Packed, 40, 30, 0);
    const std::vector<std::string> names = {"a.png", "a.tif", "a.bmp", "a.jpg"};
    for (const std::string& name : names) {
        image.Save(folder.File(name).c_str());
    }
    const std::string broken = folder.Write("b.tif", {'I', 'I', '*', 0, 9, 9, 9, 9});
    const auto work = [&](std::size_t first) {
        for (std::size_t i = first; i < first + 40; ++i) {
            EXPECT_EQ(load(folder.File(names[i % names.size()])).GetWidth(), 40U);
            EXPECT_NE(loadError(broken).find(broken), std::string::npos);
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 4; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace Orlix::Test
