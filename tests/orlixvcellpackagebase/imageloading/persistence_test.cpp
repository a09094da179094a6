// How ImageLoading lives in a recipe.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/imageloadingfixture.h"
#include "support/memorysettings.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace fs = std::filesystem;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Value = MemorySettings::Value;

// Each test may change the current directory of the process.
class ImageLoadingPersistence : public ImageLoadingFixture {
protected:
    ~ImageLoadingPersistence() override { fs::current_path(directory); }

    static std::shared_ptr<MemorySettings> unsavedRecipe() {
        return std::make_shared<MemorySettings>();
    }
    static std::shared_ptr<MemorySettings> recipeIn(const std::string& path) {
        return std::make_shared<MemorySettings>(path);
    }

    std::string savePath(const std::shared_ptr<MemorySettings>& store) {
        node.saveSettings(store);
        return std::get<gcstring>(store->at("sourcePath")).c_str();
    }

    template <typename E>
    std::string errorOf(void (ImageLoading::*operation)(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>&)) {
        return getFailure<E>([&] { (node.*operation)(nullptr); });
    }

    const fs::path directory = fs::current_path();
};

TEST_F(ImageLoadingPersistence, KeysAreWrittenInOrderWithTheirTypes) {
    node.setSettings("/images", Random, 2, 3, 4, true, false);
    const auto store = unsavedRecipe();
    node.saveSettings(store);
    EXPECT_THAT(store->keys(), ElementsAre("sourcePath", "sortBy", "numberOfImages",
                                           "framesPerSecond", "numberOfRuns", "runContinuously"));
    EXPECT_EQ(store->at("sourcePath"), Value(gcstring("/images")));
    EXPECT_EQ(store->at("sortBy"), Value(std::int64_t{2}));
    EXPECT_EQ(store->at("numberOfImages"), Value(std::uint64_t{2}));
    EXPECT_EQ(store->at("framesPerSecond"), Value(std::uint64_t{3}));
    EXPECT_EQ(store->at("numberOfRuns"), Value(std::uint64_t{4}));
    EXPECT_EQ(store->at("runContinuously"), Value(true));
}

TEST_F(ImageLoadingPersistence, LoadAppliesWhatTheStoreHas) {
    const auto store = unsavedRecipe();
    store->set("sourcePath", gcstring("/images"));
    store->set("sortBy", std::int64_t{1});
    store->set("numberOfImages", std::uint64_t{5});
    store->set("framesPerSecond", std::int64_t{6});
    store->set("numberOfRuns", std::uint64_t{7});
    store->set("runContinuously", true);
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "/images");
    EXPECT_EQ(node.getSortBy(), Descending);
    EXPECT_EQ(node.getNumberOfImages(), 5U);
    EXPECT_EQ(node.getFramesPerSecond(), 6U);
    EXPECT_EQ(node.getNumberOfRuns(), 7U);
    EXPECT_TRUE(node.getRunContinuously());
}

TEST_F(ImageLoadingPersistence, SortOrderBeyond32BitsIsRefusedWithKeyAndValue) {
    const auto store = unsavedRecipe();
    store->set("sortBy", std::int64_t{4294967298});  // its lower half alone would be Random
    try {
        node.loadSettings(store);
        FAIL() << "loaded";
    } catch (const GenICam::InvalidArgumentException& exception) {
        EXPECT_STREQ(exception.GetDescription(),
                     "Can't load \"sortBy\": 4294967298 is no number of 32 bits.");
    }
    EXPECT_EQ(node.getSortBy(), Ascending);
}

TEST_F(ImageLoadingPersistence, NegativeRateIsRefusedWithKeyAndValue) {
    const auto store = unsavedRecipe();
    store->set("framesPerSecond", std::int64_t{-1});
    try {
        node.loadSettings(store);
        FAIL() << "loaded";
    } catch (const GenICam::InvalidArgumentException& exception) {
        EXPECT_STREQ(exception.GetDescription(),
                     "Can't load \"framesPerSecond\": -1 is no number of frames.");
    }
    EXPECT_EQ(node.getFramesPerSecond(), 1U);
}

TEST_F(ImageLoadingPersistence, APathWithANullCharacterIsRefusedWithItsKey) {
    for (const auto& store : {unsavedRecipe(), recipeIn("/")}) {
        store->set("sourcePath", gcstring("tmp\0z", 5));
        try {
            node.loadSettings(store);
            FAIL() << "loaded";
        } catch (const GenICam::InvalidArgumentException& exception) {
            EXPECT_STREQ(exception.GetDescription(),
                         "Can't load \"sourcePath\": the path contains a null character.");
        }
        EXPECT_EQ(node.getSourcePath(), "");
    }
}

TEST_F(ImageLoadingPersistence, AbsentKeysKeepTheirValuesApartFromThePath) {
    node.setSettings("/images", Random, 2, 3, 4, true, true);
    node.loadSettings(unsavedRecipe());
    EXPECT_EQ(node.getSourcePath(), "");
    EXPECT_EQ(node.getSortBy(), Random);
    EXPECT_EQ(node.getNumberOfImages(), 2U);
    EXPECT_EQ(node.getFramesPerSecond(), 3U);
    EXPECT_EQ(node.getNumberOfRuns(), 4U);
    EXPECT_TRUE(node.getRunContinuously());
    EXPECT_TRUE(node.getStoreAbsolutePath());
}

TEST_F(ImageLoadingPersistence, EmptyPathLeavesOutTheKeyAndALoadClearsThePath) {
    const auto store = unsavedRecipe();
    node.saveSettings(store);
    EXPECT_FALSE(store->contains(MemorySettings::SettingsPath("sourcePath")));
    node.setSourcePath("/images");
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "");
}

TEST_F(ImageLoadingPersistence, PathIsStoredRelativeToTheRecipe) {
    folder.addFolder("recipe/img");
    node.setSourcePath((folder / "recipe/img").c_str());
    EXPECT_EQ(savePath(recipeIn(folder / "recipe")), "img");
    node.setSourcePath((folder / "recipe/./img/../img").c_str());
    EXPECT_EQ(savePath(recipeIn(folder / "recipe")), "img");
    node.setSourcePath((folder / "other").c_str());
    EXPECT_EQ(savePath(recipeIn(folder / "recipe")), "../other");
}

// The folder is not there yet, so that nothing but the current one tells where it will be.
TEST_F(ImageLoadingPersistence, ARelativePathThatIsNotThereIsStoredRelativeToTheRecipe) {
    folder.addFolder("recipe");
    fs::current_path(folder.path());
    node.setSourcePath("nodir/x");
    EXPECT_EQ(savePath(recipeIn(folder / "recipe")), "../nodir/x");
}

TEST_F(ImageLoadingPersistence, RecipeFolderItselfIsADotAndComesBack) {
    node.setSourcePath(folder.path().c_str());
    const auto store = recipeIn(folder.path());
    EXPECT_EQ(savePath(store), ".");
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath().str(), folder.path().string());
}

TEST_F(ImageLoadingPersistence, PathIsStoredAsGivenWithoutAUsableRecipeFolder) {
    node.setSourcePath("some/relative path");
    EXPECT_EQ(savePath(unsavedRecipe()), "some/relative path");
    EXPECT_EQ(savePath(recipeIn(folder / "absent")), "some/relative path");
}

TEST_F(ImageLoadingPersistence, StoreAbsolutePathStoresThePathAsGiven) {
    node.setSourcePath((folder / "img").c_str());
    node.setStoreAbsolutePath(true);
    EXPECT_EQ(savePath(recipeIn(folder.path())), folder / "img");
}

TEST_F(ImageLoadingPersistence, SaveLogsTheRecipeFolder) {
    const Utils::LogCapture capture;
    node.saveSettings(recipeIn(folder.path()));
    EXPECT_THAT(getLines(capture, category), ElementsAre("6 ImageLoading: Load settings from \"" +
                                                         folder.path().string() + "\""));
    node.setStoreAbsolutePath(true);
    node.saveSettings(recipeIn(folder.path()));
    node.setStoreAbsolutePath(false);
    node.saveSettings(unsavedRecipe());
    EXPECT_EQ(getLines(capture, category).size(), 1U);
}

TEST_F(ImageLoadingPersistence, RecipeThatMovesWithItsImagesFindsThem) {
    folder.addFolder("first/img");
    node.setSourcePath((folder / "first/img").c_str());
    const auto saved = recipeIn(folder / "first");
    ASSERT_EQ(savePath(saved), "img");
    fs::rename(folder / "first", folder / "second");
    const auto moved = recipeIn(folder / "second");
    moved->set("sourcePath", saved->at("sourcePath"));
    node.loadSettings(moved);
    EXPECT_EQ(node.getSourcePath().str(), folder / "second/img");
    EXPECT_FALSE(node.getStoreAbsolutePath());
}

TEST_F(ImageLoadingPersistence, RelativePathIsMadeCanonicalIfItsTargetExists) {
    folder.addFolder("recipe");
    folder.addFolder("images");
    fs::create_directory_symlink(folder / "images", folder / "recipe/link");
    const auto store = recipeIn(folder / "recipe");
    store->set("sourcePath", gcstring("link/../images"));
    node.setStoreAbsolutePath(true);
    const Utils::LogCapture capture;
    node.loadSettings(store);
    const std::string base = folder / "recipe";
    EXPECT_EQ(node.getSourcePath().str(), folder / "images");
    EXPECT_FALSE(node.getStoreAbsolutePath());
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre("6 ImageLoading: Load settings...", "7 ImageLoading: basePath : '" + base + "'",
                    "7 ImageLoading: Using relative path result in source Path : '" +
                        (folder / "images") + "'"));
}

TEST_F(ImageLoadingPersistence, RelativePathWithoutTargetIsJoinedOnly) {
    const auto store = recipeIn(folder.path());
    store->set("sourcePath", gcstring("absent/../img"));
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath().str(), folder / "absent/../img");
    EXPECT_FALSE(node.getStoreAbsolutePath());
}

TEST_F(ImageLoadingPersistence, AbsolutePathIsTakenAsStored) {
    const auto store = recipeIn(folder.path());
    store->set("sourcePath", gcstring("/some/../images"));
    const Utils::LogCapture capture;
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "/some/../images");
    EXPECT_TRUE(node.getStoreAbsolutePath());
    EXPECT_EQ(getLines(capture, category).back(),
              "7 ImageLoading: Using absolute path for source : '/some/../images'");
}

TEST_F(ImageLoadingPersistence, RelativePathWithoutRecipeFolderCountsAsAbsolute) {
    const auto store = unsavedRecipe();
    store->set("sourcePath", gcstring("img"));
    const Utils::LogCapture capture;
    node.loadSettings(store);
    EXPECT_EQ(node.getSourcePath(), "img");
    EXPECT_TRUE(node.getStoreAbsolutePath());
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("6 ImageLoading: Load settings...",
                            "7 ImageLoading: Using absolute path for source : 'img'"));
}

TEST_F(ImageLoadingPersistence, LoadEntersTheRecipeFolder) {
    node.loadSettings(recipeIn(folder.path()));
    EXPECT_EQ(fs::current_path(), folder.path());
}

TEST_F(ImageLoadingPersistence, RecipeFolderThatDoesNotExistFailsTheLoad) {
    node.setSourcePath("/images");
    const auto store = recipeIn(folder / "absent");
    store->set("sourcePath", gcstring("img"));
    try {
        node.loadSettings(store);
        FAIL();
    } catch (const fs::filesystem_error& error) {
        EXPECT_THAT(error.what(), HasSubstr(": current_path(const path&): "));
    }
    EXPECT_EQ(node.getSourcePath(), "");
    EXPECT_EQ(fs::current_path(), directory);
}

TEST_F(ImageLoadingPersistence, RecipeFolderThatCanNotBeCheckedIsAnError) {
    fs::create_symlink(folder / "loop", folder / "loop");
    const auto store = recipeIn(folder / "loop");
    for (auto operation : {&ImageLoading::loadSettings, &ImageLoading::saveSettings}) {
        try {
            (node.*operation)(store);
            FAIL();
        } catch (const fs::filesystem_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(": exists: "));
        }
    }
}

TEST_F(ImageLoadingPersistence, StoredZeroEndsTheLoadAndWhatWasReadStays) {
    const auto store = unsavedRecipe();
    store->set("sortBy", std::int64_t{2});
    store->set("numberOfImages", std::uint64_t{0});
    store->set("framesPerSecond", std::uint64_t{9});
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([&] { node.loadSettings(store); }),
              "NumberOfImages must be greater than 0.");
    EXPECT_EQ(node.getSortBy(), Random);
    EXPECT_EQ(node.getFramesPerSecond(), 1U);
}

TEST_F(ImageLoadingPersistence, NullStoreIsRefusedWithoutALine) {
    const Utils::LogCapture capture;
    using E = GenICam::InvalidArgumentException;
    EXPECT_EQ(errorOf<E>(&ImageLoading::loadSettings), "ptrSettings is a null pointer (nullptr).");
    EXPECT_EQ(errorOf<E>(&ImageLoading::saveSettings), "ptrSettings is a null pointer (nullptr).");
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(ImageLoadingPersistence, RunningNodeIsNeitherLoadedNorSaved) {
    useThreeImages();
    node.start(Arguments());
    const Utils::LogCapture capture;
    const auto store = unsavedRecipe();
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { node.loadSettings(store); }),
              "Node must be in stopped state to deserialize.");
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { node.saveSettings(store); }),
              "Node must be in stopped state to serialize.");
    EXPECT_THAT(store->keys(), IsEmpty());
    EXPECT_EQ(node.getSourcePath().str(), folder.path().string());
    EXPECT_THAT(getLines(capture, category), IsEmpty());
    node.stop();
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
