#include "orlixcamera/codecs/outputfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/codecs/codecerror.h"

namespace Orlix {

namespace {

// A name that no other writer of this folder uses, short whatever the length of the final one.
std::string temporaryName(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    return folder + ".orlix-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) +
           ".tmp";
}

}  // namespace

OutputFile::OutputFile(const char* path) : path_(path) {
    // A file of that name can only be the left-over of a process that ended in the middle.
    constexpr int mostTries = 100;
    for (int i = 0; i < mostTries && descriptor_ < 0; ++i) {
        temporaryPath_ = temporaryName(path_);
        descriptor_ = ::open(temporaryPath_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST) {
            break;
        }
    }
    if (descriptor_ < 0) {
        throw systemError("the file can not be created", errno);
    }
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        ::unlink(temporaryPath_.c_str());
    }
}

void OutputFile::Write(std::uint64_t offset, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size > 0) {
        const ssize_t count = ::pwrite(descriptor_, bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno != EINTR) {
            throw systemError("the file can not be written", errno);
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        bytes += done;
        offset += done;
        size -= done;
    }
    size_ = std::max(size_, offset);
}

std::size_t OutputFile::Read(std::uint64_t offset, void* data, std::size_t size) const {
    const ssize_t count = ::pread(descriptor_, data, size, static_cast<off_t>(offset));
    if (count < 0) {
        throw systemError("the file can not be read back", errno);
    }
    return static_cast<std::size_t>(count);
}

void OutputFile::Commit() {
    // Some file systems report a full disk only now.
    const int descriptor = std::exchange(descriptor_, -1);
    const bool isClosed = ::close(descriptor) == 0;
    if (!isClosed || std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
        const int cause = errno;
        ::unlink(temporaryPath_.c_str());
        throw systemError("the file can not be written", cause);
    }
}

BufferedWriter::BufferedWriter(OutputFile& file)
    : file_(file), buffer_(BufferPool::Instance().Allocate(pieceSize)) {}

void BufferedWriter::Write(const void* data, std::size_t size) {
    if (size > pieceSize - filled_) {
        Flush();
    }
    if (size > pieceSize) {
        file_.Write(offset_, data, size);
        offset_ += size;
        return;
    }
    std::memcpy(static_cast<unsigned char*>(buffer_.get()) + filled_, data, size);
    filled_ += size;
}

void BufferedWriter::Flush() {
    file_.Write(offset_, buffer_.get(), filled_);
    offset_ += filled_;
    filled_ = 0;
}

}  // namespace Orlix
