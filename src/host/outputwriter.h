// Writes the values of a run's open outputs to a folder: images as one file each, everything else
// and all errors as lines of values.jsonl. See docs/recipe-format.md for the names.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/runstate.h"
#include "host/textfile.h"
#include "host/writequeue.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {

// A folder that is made, with those above it that were missing; they go at the end, with the files
// that were written to them, unless they are kept. Any thread may note a file.
class MadeFolders {
public:
    // Throws RuntimeException that names the folder if it can not be made.
    explicit MadeFolders(const std::filesystem::path& folder);
    ~MadeFolders();
    MadeFolders(const MadeFolders&) = delete;
    MadeFolders& operator=(const MadeFolders&) = delete;

    // A file that is about to be made.
    void noteFile(const std::string& path);
    void keep() noexcept;
    void remove() noexcept;

private:
    std::mutex mutex_;
    std::vector<std::filesystem::path> paths_;  // files last noted first, folders innermost first
};

// Any thread may add values, and none of them waits for the disk. The first failure ends the run
// through its state; what comes later is thrown away.
class OutputWriter {
public:
    // Makes the folder if need be; throws RuntimeException that names it if it can not be made.
    OutputWriter(std::string folder, std::vector<OpenOutput> outputs,
                 std::shared_ptr<RunState> state, const std::function<void()>& onSpace);
    ~OutputWriter();
    OutputWriter(const OutputWriter&) = delete;
    OutputWriter& operator=(const OutputWriter&) = delete;

    // When every node has started. Sources may send before that: their values wait, so that a run
    // that does not start leaves the files of an earlier one alone. More than can wait is written
    // all the same, since a source may wait for space before its start returns.
    void begin();
    void add(OutputValue value);
    [[nodiscard]] bool hasSpace() const;
    [[nodiscard]] std::size_t waiting() const;
    [[nodiscard]] std::size_t capacity() const;
    // Writes what waits; a failure is in the state.
    void finish();
    // In place of finish() when there was no run: drops what waits, and removes the folder with
    // what was written if it was made for that run.
    void discard();

private:
    void writeImage(const OutputValue& value);
    void writeLine(const OutputValue& value);
    // Makes values.jsonl, empty.
    void openLines();
    [[nodiscard]] std::string imagePath(const OutputValue& value) const;

    std::string folder_;
    MadeFolders madeFolders_;
    std::vector<OpenOutput> outputs_;
    std::shared_ptr<RunState> state_;
    std::unique_ptr<AppendFile> lines_;
    WriteQueue lineQueue_;
    WriteQueue imageQueue_;
};

}  // namespace Orlix::Host
