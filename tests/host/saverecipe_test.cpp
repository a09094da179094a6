// The command save: a recipe through its nodes and back to a file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "host/support/fiforeader.h"
#include "host/support/recipes.h"
#include "orlixhost/filedescriptor.h"

namespace Orlix::Host::Testing {
namespace {

using Json = nlohmann::ordered_json;

class SaveCommand : public testing::Test {
protected:
    SaveCommand() {
        recipe_ = folder_.write("r.json", R"({"comment": "mine", "version": 1, "nodes": [
            {"name": "Loader", "position": [10, 20], "type": "ImageLoading",
             "settings": {"sourcePath": "images", "framesPerSecond": 50}},
            {"name": "Converter", "type": "ImageFormatConverter",
             "uuid": "4049EA56-3827-4faf-9478-c3ba02e4a0cb",
             "settings": {"OutputPixelFormat": 17301505}}],
            "connections": [{"from": "Loader.Image", "to": "Converter.Image", "color": "red"}]})");
        writePictures(folder_, "images", 1);
    }

    ProgramResult save(const std::string& source, const std::string& target) {
        return runOrlix({"save", source, "-o", target});
    }

    TemporaryFolder folder_;
    std::string recipe_;
};

TEST_F(SaveCommand, WritesSettingsAnewAndKeepsEverythingElse) {
    const ProgramResult result = save(recipe_, folder_ / "saved.json");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "saved.json"));
    EXPECT_EQ(saved.at("comment"), "mine");
    EXPECT_EQ(saved.at("connections")[0].at("color"), "red");
    EXPECT_EQ(saved.at("nodes")[0], Json::parse(R"({
        "name": "Loader", "position": [10, 20], "type": "ImageLoading",
        "uuid": "4f2b72dc-294b-4503-885a-6b73d26eb6d7",
        "settings": {"sourcePath": "images", "sortBy": 0, "numberOfImages": 1,
                     "framesPerSecond": 50, "numberOfRuns": 1, "runContinuously": false}})"));
    EXPECT_EQ(saved.at("nodes")[1].at("uuid"), "4049EA56-3827-4faf-9478-c3ba02e4a0cb");
    EXPECT_EQ(saved.at("nodes")[1].at("settings").at("OutputPixelFormat"), 17301505);
    EXPECT_EQ(saved.at("nodes")[1].at("settings").at("OutputOrientation"), "Unchanged");
}

TEST_F(SaveCommand, SavedRecipeIsSavedTheSameAgain) {
    EXPECT_EQ(save(recipe_, folder_ / "one.json").exitCode, 0);
    EXPECT_EQ(save(folder_ / "one.json", folder_ / "two.json").exitCode, 0);
    EXPECT_EQ(readFile(folder_ / "one.json"), readFile(folder_ / "two.json"));
}

TEST_F(SaveCommand, MayReplaceItsSource) {
    ASSERT_EQ(::chmod(recipe_.c_str(), 0600), 0);
    const ProgramResult result = save(recipe_, recipe_);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(readFile(recipe_).find("\"numberOfRuns\": 1"), std::string::npos);
    struct stat status {};
    ASSERT_EQ(::stat(recipe_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(folder_.list(), (std::vector<std::string>{"images", "r.json"}));
}

TEST_F(SaveCommand, PathIsRelativeToTheFolderOfTheNewFile) {
    std::filesystem::create_directory(folder_ / "below");
    const ProgramResult result = runOrlix({"save", "r.json", "-o", "below/r.json"}, folder_.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "below/r.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sourcePath"), "../images");
}

// Behind a link, ".." is not the folder that the text says.
TEST_F(SaveCommand, PathsThatGoUpBehindALinkMeanWhatTheFileSystemSays) {
    std::filesystem::create_directories(folder_ / "real/inner");
    std::filesystem::create_directory_symlink(folder_ / "real/inner", folder_ / "link");
    std::filesystem::rename(folder_ / "images", folder_ / "real/images");
    std::filesystem::rename(recipe_, folder_ / "real/r.json");
    const ProgramResult result = save(folder_ / "link/../r.json", folder_ / "link/../saved.json");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "saved.json"));
    const Json saved = Json::parse(readFile(folder_ / "real/saved.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sourcePath"), "images");
}

TEST_F(SaveCommand, APipeIsWrittenToAndStays) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    Program program(orlixFile(), {"save", recipe_, "-o", pipe});
    const std::string text = FifoReader(pipe).readToEnd();
    EXPECT_EQ(program.wait().exitCode, 0);
    EXPECT_EQ(Json::parse(text).at("nodes").size(), 2U);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(SaveCommand, APipeWhoseReaderGoesAwayIsAnError) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    Program program("/bin/sh", {"-c",
                                "exec 3<>\"$2\"; exec 4>\"$2\"; exec 3<&-; exec \"$0\" save "
                                "\"$1\" -o /dev/fd/4",
                                orlixFile(), recipe_, pipe});
    expectFailure(program.wait(), "/dev/fd/4: can not write: Broken pipe");
}

TEST_F(SaveCommand, ALinkStaysAlsoIfItsTargetIsNotThereYet) {
    std::filesystem::create_directory(folder_ / "below");
    std::filesystem::create_symlink("second", folder_ / "below/first");
    std::filesystem::create_symlink("../new.json", folder_ / "below/second");
    const ProgramResult result = save(recipe_, folder_ / "below/first");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "below/first"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "below/second"));
    EXPECT_EQ(Json::parse(readFile(folder_ / "new.json")).at("nodes").size(), 2U);
}

TEST_F(SaveCommand, LinksThatLeadRoundAreAnError) {
    std::filesystem::create_symlink("b", folder_ / "a");
    std::filesystem::create_symlink("a", folder_ / "b");
    expectFailure(save(recipe_, folder_ / "a"),
                  (folder_ / "a") + ": can not write: Too many levels of symbolic links");
}

TEST_F(SaveCommand, StandardOutputIsAFileLikeAnyOther) {
    const ProgramResult result = save(recipe_, "/dev/stdout");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(Json::parse(result.out).at("nodes").size(), 2U);
}

// The shell's files stay the same files, whatever is in them before and written to them after.
TEST_F(SaveCommand, StandardOutputThatIsAFileIsWrittenToAtItsPlace) {
    const std::string file = folder_.write("all.txt", "before\n");
    const auto inode = [&] {
        struct stat status {};
        EXPECT_EQ(::stat(file.c_str(), &status), 0);
        return status.st_ino;
    };
    const auto before = inode();
    const std::string command = orlixFile() + " save " + recipe_ + " -o ";
    const std::string link = folder_ / "link";
    std::filesystem::create_symlink("/dev/stdout", link);
    const auto run = [&](const std::string& script) {
        const ProgramResult result = Program("/bin/sh", {"-c", script}, folder_.path()).wait();
        EXPECT_EQ(result.exitCode, 0) << script << "\n" << result.err;
        EXPECT_EQ(inode(), before) << script;
        return readFile(file);
    };
    ASSERT_EQ(save(recipe_, folder_ / "saved.json").exitCode, 0);
    const std::string saved = readFile(folder_ / "saved.json");
    std::string expected = "before\n";
    for (const std::string& name :
         {std::string("/dev/stdout"), std::string("/dev/fd/1"), std::string("/proc/self/fd/1"),
          std::string("/proc/self/fd/../fd/1"), link}) {
        expected += saved;
        EXPECT_EQ(run(command + name + " >> all.txt"), expected) << name;
    }
    EXPECT_EQ(run("{ echo first; " + command + "/dev/stdout; echo after; } > all.txt"),
              "first\n" + saved + "after\n");
    EXPECT_EQ(run("{ " + command + "/dev/fd/3; } 3> all.txt"), saved);
    EXPECT_EQ(run(command + "/dev/stderr 2> all.txt"), saved);
    EXPECT_EQ(run(": > all.txt; exec 3>> all.txt; " + command + "/proc/$$/fd/3"), saved);
}

TEST_F(SaveCommand, DescriptorThatIsNotOpenOrNotInheritedIsNoFileToWriteTo) {
    const FileDescriptor own(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    const int high = ::fcntl(own.get(), F_DUPFD_CLOEXEC, 70);
    for (const int number : {high, 977}) {
        const std::string name = "/dev/fd/" + std::to_string(number);
        expectFailure(save(recipe_, name), name + ": can not write: Bad file descriptor");
    }
    ::close(high);
}

TEST_F(SaveCommand, PathsOfWhatGoesToAStreamAreRelativeToTheCurrentFolder) {
    const ProgramResult result = runOrlix({"save", recipe_, "-o", "/dev/stdout"}, folder_.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(result.out);
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sourcePath"), "images");
    const ProgramResult loaded =
        Program("/bin/sh", {"-c", orlixFile() + " save /dev/stdin -o two.json < r.json"},
                folder_.path())
            .wait();
    EXPECT_EQ(loaded.exitCode, 0) << loaded.err;
    EXPECT_EQ(readFile(folder_ / "two.json"), result.out);
}

// Whoever may write to the folder knows what the file is called only when it is there.
TEST_F(SaveCommand, TemporaryFileIsNewAndItsNameIsAnotherEachTime) {
    std::filesystem::create_directory(folder_ / "out");
    const int watch = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    ASSERT_GE(::inotify_add_watch(watch, (folder_ / "out").c_str(), IN_CREATE), 0);
    ASSERT_EQ(save(recipe_, folder_ / "out/one.json").exitCode, 0);
    ASSERT_EQ(save(recipe_, folder_ / "out/one.json").exitCode, 0);
    alignas(inotify_event) std::array<char, 4096> events{};
    const ssize_t size = ::read(watch, events.data(), events.size());
    ::close(watch);
    std::set<std::string> names;
    for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(&events[std::size_t(at)]);
        names.insert(event->name);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    EXPECT_EQ(names.size(), 2U);
    for (const std::string& name : names) {
        EXPECT_TRUE(std::regex_match(name, std::regex("\\.orlix-text-[0-9]{10,20}\\.tmp"))) << name;
    }
    EXPECT_EQ(folder_.list("out"), std::vector<std::string>{"one.json"});
}

TEST_F(SaveCommand, SetIsPartOfWhatIsSaved) {
    const ProgramResult result =
        runOrlix({"save", recipe_, "-o", folder_ / "saved.json", "--set", "Loader.SortBy=Random"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const Json saved = Json::parse(readFile(folder_ / "saved.json"));
    EXPECT_EQ(saved.at("nodes")[0].at("settings").at("sortBy"), 2);
}

TEST_F(SaveCommand, RecipeThatIsNotSoundIsNotSaved) {
    folder_.write("bad.json", R"({"version": 1, "nodes": [
        {"name": "C", "type": "ImageFormatConverter", "settings": {"Typo": 1}}]})");
    const ProgramResult result = save(folder_ / "bad.json", folder_ / "saved.json");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "saved.json"));
}

TEST_F(SaveCommand, ValidateSaysThatARecipeIsValid) {
    const ProgramResult result = runOrlix({"validate", recipe_});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, recipe_ +
                              " is valid: 2 nodes, 1 connection; open outputs: "
                              "Loader.ImagePath Loader.RunCount Converter.Image\n");
}

}  // namespace
}  // namespace Orlix::Host::Testing
