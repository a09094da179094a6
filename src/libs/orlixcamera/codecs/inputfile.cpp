#include "orlixcamera/codecs/inputfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

// The size of a regular file; throws for everything that a picture can't be read from.
std::uint64_t requirePicture(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw systemError("the file can not be examined", errno);
    }
    if (S_ISDIR(status.st_mode)) {
        throw CodecError("it is a folder");
    }
    if (!S_ISREG(status.st_mode)) {
        throw CodecError("it is not a regular file");
    }
    if (status.st_size <= 0) {
        throw CodecError("the file is empty");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

// Takes `count` bytes off the front of the parts.
std::span<iovec> skip(std::span<iovec> parts, std::size_t count) {
    while (!parts.empty() && count >= parts.front().iov_len) {
        count -= parts.front().iov_len;
        parts = parts.subspan(1);
    }
    if (!parts.empty()) {
        parts.front().iov_base = static_cast<unsigned char*>(parts.front().iov_base) + count;
        parts.front().iov_len -= count;
    }
    return parts;
}

}  // namespace

// Without O_NONBLOCK the opening of a named pipe would wait for a writer.
InputFile::InputFile(const char* path)
    : descriptor_(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor_ < 0) {
        throw systemError("the file can not be opened", errno);
    }
    try {
        size_ = requirePicture(descriptor_);
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

InputFile::~InputFile() {
    ::close(descriptor_);
}

std::size_t InputFile::ReadSome(std::uint64_t offset, void* data, std::size_t size) const {
    if (offset > static_cast<std::uint64_t>(LLONG_MAX)) {
        return 0;
    }
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::pread(descriptor_, static_cast<unsigned char*>(data) + done,
                                      size - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno != EINTR) {
            throw systemError("the file can not be read", errno);
        }
        if (count == 0) {
            break;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return done;
}

void InputFile::Read(std::uint64_t offset, void* data, std::size_t size) const {
    if (ReadSome(offset, data, size) != size) {
        throw truncatedFile();
    }
}

void InputFile::ReadScattered(std::uint64_t offset, std::span<iovec> parts) const {
    parts = skip(parts, 0);
    while (!parts.empty()) {
        const auto batch = static_cast<int>(std::min<std::size_t>(parts.size(), IOV_MAX));
        const ssize_t count =
            ::preadv(descriptor_, parts.data(), batch, static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            throw systemError("the file can not be read", errno);
        }
        if (count == 0) {
            throw truncatedFile();
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        offset += done;
        parts = skip(parts, done);
    }
}

BufferedReader::BufferedReader(const InputFile& file, std::uint64_t offset)
    : file_(file), offset_(offset), buffer_(BufferPool::Instance().Allocate(pieceSize)) {}

std::span<const unsigned char> BufferedReader::NextPiece() {
    if (!rest_.empty()) {
        return std::exchange(rest_, {});
    }
    const std::size_t count = file_.ReadSome(offset_, buffer_.get(), pieceSize);
    offset_ += count;
    return {static_cast<const unsigned char*>(buffer_.get()), count};
}

void BufferedReader::Read(void* data, std::size_t size) {
    auto* target = static_cast<unsigned char*>(data);
    while (size > 0) {
        if (rest_.empty()) {
            rest_ = NextPiece();
        }
        if (rest_.empty()) {
            throw truncatedFile();
        }
        const std::size_t count = std::min(size, rest_.size());
        std::memcpy(target, rest_.data(), count);
        rest_ = rest_.subspan(count);
        target += count;
        size -= count;
    }
}

}  // namespace Orlix
