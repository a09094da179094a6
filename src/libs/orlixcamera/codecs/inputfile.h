// Reading access to one regular file, by position and in one buffered pass. It reads with pread
// and not through a mapping, since a mapped file that somebody shortens meanwhile would end the
// process. Objects belong to one thread.
#pragma once

#include <sys/uio.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Orlix {

// An open file; closed by the destructor. Every function throws CodecError.
class InputFile {
public:
    // The path is in UTF-8. Only a regular file that is not empty is accepted.
    explicit InputFile(const char* path);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    [[nodiscard]] std::uint64_t Size() const { return size_; }

    // Returns how many bytes there were; fewer than asked only at the end of the file.
    [[nodiscard]] std::size_t ReadSome(std::uint64_t offset, void* data, std::size_t size) const;
    // Throws if the file ends before.
    void Read(std::uint64_t offset, void* data, std::size_t size) const;
    // Fills the parts one after another, straight from the system's cache. The parts get changed.
    void ReadScattered(std::uint64_t offset, std::span<iovec> parts) const;

private:
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

// Reads a file from a position on, in large pieces. The memory comes from the buffer pool, so
// that a sequence of pictures costs no allocation.
class BufferedReader {
public:
    explicit BufferedReader(const InputFile& file, std::uint64_t offset = 0);

    // The next piece, empty at the end of the file. Valid until the next call.
    [[nodiscard]] std::span<const unsigned char> NextPiece();

    // Copies the next bytes. Throws if the file ends before.
    void Read(void* data, std::size_t size);

private:
    static constexpr std::size_t pieceSize = std::size_t{128} << 10U;

    const InputFile& file_;
    std::uint64_t offset_;
    std::shared_ptr<void> buffer_;
    std::span<const unsigned char> rest_;
};

}  // namespace Orlix
