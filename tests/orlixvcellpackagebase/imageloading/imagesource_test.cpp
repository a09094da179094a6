#include "imageloading/imagesource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <locale>
#include <map>
#include <string>

#include "support/temporaryfolder.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> enumerate(const std::string& path) {
    std::vector<std::string> texts;
    for (const auto& image : enumerateImages(path.c_str())) {
        texts.push_back(image.str());
    }
    return texts;
}

template <typename... FileSystems>
std::string enumerateError(const std::string& path, const FileSystems&... fileSystem) {
    try {
        static_cast<void>(enumerateImages(path.c_str(), fileSystem...));
        return "";
    } catch (const fs::filesystem_error& error) {
        return error.what();
    }
}

std::vector<gcstring> order(std::vector<gcstring> paths, SortBy sortBy) {
    orderImages(paths, sortBy);
    return paths;
}

// Compares without regard to case, as the locales of some languages do.
class CaselessCollate : public std::collate<char> {
protected:
    int do_compare(const char* low1, const char* high1, const char* low2,
                   const char* high2) const override {
        const int result = lower(low1, high1).compare(lower(low2, high2));
        return (result > 0) - (result < 0);
    }

private:
    static std::string lower(const char* begin, const char* end) {
        std::string text(begin, end);
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        return text;
    }
};

TEST(SupportedExtension, SixExtensionsCountInAnyCase) {
    for (const char* extension : {".bmp", ".jpg", ".jpeg", ".png", ".tif", ".tiff"}) {
        EXPECT_TRUE(isSupportedExtension(extension)) << extension;
    }
    EXPECT_TRUE(isSupportedExtension(".JpEg"));
    EXPECT_TRUE(isSupportedExtension(".JPEG"));
}

TEST(SupportedExtension, EverythingElseIsNoImage) {
    for (const char* extension : {"", ".", "png", ".pn", ".pngs", ".gif", "..png", ".p ng"}) {
        EXPECT_FALSE(isSupportedExtension(extension)) << extension;
    }
}

TEST(ImageSource, FolderYieldsItsImagesWithoutSubfolders) {
    const TemporaryFolder folder;
    folder.addFile("a.PNG");
    folder.addFile("b.tiff");
    folder.addFile("c.txt");
    folder.addFolder("d.png");
    folder.addFile("d.png/e.png");
    EXPECT_THAT(enumerate(folder.path()),
                UnorderedElementsAre(folder / "a.PNG", folder / "b.tiff"));
}

TEST(ImageSource, NothingIsFoundAtAPathWithANullCharacter) {
    const TemporaryFolder folder;
    folder.addFile("a.png");
    const std::string path = folder.path().string();
    EXPECT_EQ(enumerateImages(gcstring(path.data(), path.size())).size(), 1U);
    for (const std::string& longer : {path + '\0', path + "/a.png" + '\0' + ".png"}) {
        EXPECT_THAT(enumerateImages(gcstring(longer.data(), longer.size())), IsEmpty());
    }
}

TEST(ImageSource, FileNamedLikeAnExtensionIsNoImage) {
    const TemporaryFolder folder;
    folder.addFile(".png");
    EXPECT_THAT(enumerate(folder.path()), IsEmpty());
    EXPECT_THAT(enumerate(folder / ".png"), IsEmpty());
}

TEST(ImageSource, SingleFileIsAcceptedByItsExtensionAlone) {
    const TemporaryFolder folder;
    folder.addFile("x.png");
    folder.addFile("x.txt");
    EXPECT_THAT(enumerate(folder / "x.png"), ElementsAre(folder / "x.png"));
    EXPECT_THAT(enumerate(folder / "x.txt"), IsEmpty());
}

TEST(ImageSource, SingleFileIsReturnedAsItWasGiven) {
    const TemporaryFolder folder;
    folder.addFolder("sub");
    folder.addFile("x.png");
    EXPECT_THAT(enumerate(folder / "sub/../x.png"), ElementsAre(folder / "sub/../x.png"));
}

TEST(ImageSource, PathsComeOutInThePreferredSeparators) {
    const TemporaryFolder folder;
    folder.addFile("x.png");
    const std::string expected = fs::path(folder / "x.png").make_preferred().string();
    EXPECT_THAT(enumerate(folder / "x.png"), ElementsAre(expected));
    EXPECT_THAT(enumerate(folder.path()), ElementsAre(expected));
}

TEST(ImageSource, PathThatDoesNotExistYieldsNothing) {
    const TemporaryFolder folder;
    EXPECT_THAT(enumerate(folder / "absent"), IsEmpty());
    EXPECT_THAT(enumerate(folder / "absent.png"), IsEmpty());
}

TEST(ImageSource, NamesBeyondAsciiAreKept) {
    const TemporaryFolder folder;
    folder.addFile("Prüfling № 1.png");
    EXPECT_THAT(enumerate(folder.path()), ElementsAre(folder / "Prüfling № 1.png"));
}

TEST(ImageSource, LinksAreFollowedAndDanglingOnesAreListed) {
    const TemporaryFolder folder;
    folder.addFolder("images");
    folder.addFolder("other");
    folder.addFile("real.png");
    fs::create_symlink(folder / "other", folder / "images/folder.png");
    fs::create_symlink(folder / "real.png", folder / "images/link.png");
    fs::create_symlink(folder / "absent.png", folder / "images/dangling.png");
    EXPECT_THAT(enumerate(folder / "images"),
                UnorderedElementsAre(folder / "images/link.png", folder / "images/dangling.png"));
}

TEST(ImageSource, StatusThatCanNotBeQueriedIsAFileSystemError) {
    const TemporaryFolder folder;
    const std::string loop = folder / "loop.png";
    fs::create_symlink(loop, loop);
    EXPECT_EQ(enumerateError(loop),
              "filesystem error: status: Too many levels of symbolic links [" + loop + "]");
}

TEST(ImageSource, EntryThatCanNotBeQueriedIsAFileSystemError) {
    const TemporaryFolder folder;
    fs::create_symlink(folder / "loop.png", folder / "loop.png");
    EXPECT_THAT(enumerateError(folder.path()), HasSubstr(" directory_entry::status: "));
}

// Takes from the process the right to open files, which not even its rights as root outweigh.
class WithoutFileHandles {
public:
    WithoutFileHandles() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        const rlimit none{0, before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~WithoutFileHandles() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &before_), 0); }
    WithoutFileHandles(const WithoutFileHandles&) = delete;
    WithoutFileHandles& operator=(const WithoutFileHandles&) = delete;

private:
    rlimit before_{};
};

TEST(ImageSource, FolderThatCanNotBeOpenedIsAFileSystemError) {
    const TemporaryFolder folder;
    folder.addFile("x.png");
    std::string error;
    {
        const WithoutFileHandles limit;
        error = enumerateError(folder.path());
    }
    EXPECT_EQ(error,
              "filesystem error: directory_iterator::directory_iterator: Too many open files [" +
                  folder.path().string() + "]");
}

// A file system that fails on demand.
fs::file_status getStatus(const fs::path& path, std::error_code& error) {
    return fs::status(path, error);
}
fs::file_status getUnknownStatus(const fs::path& /*path*/, std::error_code& error) {
    error = std::make_error_code(std::errc::value_too_large);
    return fs::file_status(fs::file_type::unknown);
}
void advance(fs::directory_iterator& entry, std::error_code& error) {
    entry.increment(error);
}
void failToAdvance(fs::directory_iterator& entry, std::error_code& error) {
    entry = fs::directory_iterator();
    error = std::make_error_code(std::errc::io_error);
}

TEST(ImageSource, StatusThatIsUnknownIsAFileSystemErrorOfItsOwn) {
    const TemporaryFolder folder;
    EXPECT_EQ(enumerateError(folder.path(), FileSystem{getUnknownStatus, advance}),
              "filesystem error: exists: Value too large for defined data type [" +
                  folder.path().string() + "]");
}

TEST(ImageSource, FolderThatCanNotBeReadOnIsAFileSystemError) {
    const TemporaryFolder folder;
    folder.addFile("x.png");
    EXPECT_EQ(enumerateError(folder.path(), FileSystem{getStatus, failToAdvance}),
              "filesystem error: directory_iterator::operator++: Input/output error [" +
                  folder.path().string() + "]");
}

TEST(ImageOrder, AscendingIsByteWiseInTheDefaultLocale) {
    EXPECT_THAT(order({"a.png", "img2.png", "B.png", "img10.png"}, Ascending),
                ElementsAre("B.png", "a.png", "img10.png", "img2.png"));
}

TEST(ImageOrder, DescendingPutsTheLesserTextLast) {
    EXPECT_THAT(order({"a.png", "B.png", "c.png"}, Descending),
                ElementsAre("c.png", "a.png", "B.png"));
}

TEST(ImageOrder, UnknownOrderCountsAsDescending) {
    EXPECT_THAT(order({"a", "c", "b"}, static_cast<SortBy>(7)), ElementsAre("c", "b", "a"));
}

TEST(ImageOrder, GlobalLocaleOfTheMomentDecides) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new CaselessCollate));
    const auto sorted = order({"B.png", "a.png"}, Ascending);
    std::locale::global(before);
    EXPECT_THAT(sorted, ElementsAre("a.png", "B.png"));
}

TEST(ImageOrder, RandomKeepsAllImages) {
    EXPECT_THAT(order({"a", "b", "c", "d", "e"}, Random),
                UnorderedElementsAre("a", "b", "c", "d", "e"));
}

TEST(Shuffle, SwapsEachElementFromTheSecondOnWithOneUpToItself) {
    std::mt19937 generator(12345);
    std::mt19937 twin(12345);
    std::vector<gcstring> expected{"a", "b", "c", "d"};
    for (std::size_t i = 1; i < expected.size(); ++i) {
        const auto j = std::uniform_int_distribution<std::size_t>(0, i)(twin);
        const gcstring other = expected[j];
        expected[j] = expected[i];
        expected[i] = other;
    }
    std::vector<gcstring> shuffled{"a", "b", "c", "d"};
    shuffle(shuffled, generator);
    EXPECT_EQ(shuffled, expected);
}

TEST(Shuffle, EveryOrderComesUpAboutAsOften) {
    std::mt19937 generator(1);
    std::map<std::vector<gcstring>, int> counts;
    for (int i = 0; i < 6000; ++i) {
        std::vector<gcstring> paths{"a", "b", "c"};
        shuffle(paths, generator);
        ++counts[paths];
    }
    ASSERT_EQ(counts.size(), 6U);
    for (const auto& [paths, count] : counts) {
        EXPECT_NEAR(count, 1000, 200);
    }
}

TEST(Shuffle, ListsOfOneOrNoneAreNotTouched) {
    std::mt19937 generator(1);
    const std::mt19937 untouched(1);
    std::vector<gcstring> one{"a"};
    std::vector<gcstring> none;
    shuffle(one, generator);
    shuffle(none, generator);
    EXPECT_THAT(one, ElementsAre("a"));
    EXPECT_THAT(none, IsEmpty());
    EXPECT_EQ(generator, untouched);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
