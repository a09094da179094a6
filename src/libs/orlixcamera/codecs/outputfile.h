// Writing of a file that appears under its name only when it is complete. Objects belong to one
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Orlix {

// Writes to a file of another name in the same folder, which Commit renames. Without Commit
// nothing is left. Every function throws CodecError.
class OutputFile {
public:
    // The path is in UTF-8.
    explicit OutputFile(const char* path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void Write(std::uint64_t offset, const void* data, std::size_t size);
    // Reads back; returns fewer bytes than asked at the end of the file.
    [[nodiscard]] std::size_t Read(std::uint64_t offset, void* data, std::size_t size) const;
    [[nodiscard]] std::uint64_t Size() const { return size_; }
    void Commit();

private:
    std::string path_;
    std::string temporaryPath_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

// Appends to a file in large pieces.
class BufferedWriter {
public:
    explicit BufferedWriter(OutputFile& file);

    void Write(const void* data, std::size_t size);
    // To be called at the end; the destructor writes nothing, since it could not tell a failure.
    void Flush();

private:
    static constexpr std::size_t pieceSize = std::size_t{128} << 10U;

    OutputFile& file_;
    std::uint64_t offset_ = 0;
    std::shared_ptr<void> buffer_;
    std::size_t filled_ = 0;
};

}  // namespace Orlix
