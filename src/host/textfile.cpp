#include "host/textfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "host/message.h"

namespace Orlix::Host {
namespace {

namespace fs = std::filesystem;

// Far above any recipe or description; a device that never ends must not fill the memory.
constexpr std::size_t maxTextSize = std::size_t{256} * 1024 * 1024;

[[noreturn]] void failFor(const std::string& path, const std::string& what,
                          const std::string& reason) {
    fail((path.empty() ? "\"\"" : path) + ": " + what + ": " + reason);
}

[[noreturn]] void failWithErrno(const std::string& path, const std::string& what) {
    const int code = errno;
    failFor(path, what, std::generic_category().message(code));
}

// Closes on the way out of a failure.
class FileDescriptor {
public:
    explicit FileDescriptor(int value) : value_(value) {}
    ~FileDescriptor() {
        if (value_ >= 0) {
            ::close(value_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] int get() const { return value_; }
    // A delayed write error can show up only here.
    [[nodiscard]] bool close() {
        const int value = value_;
        value_ = -1;
        return ::close(value) == 0;
    }

private:
    int value_;
};

// Removes the temporary file unless it has taken its place.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    void keep() { path_.clear(); }

private:
    std::string path_;
};

void writeAll(int file, const std::string& text, const std::string& path) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            failWithErrno(path, "can not write");
        }
        written += static_cast<std::size_t>(count);
    }
}

// Short, whatever the length of the final name; no other writer of the folder uses it.
std::string temporaryName() {
    static std::atomic<unsigned int> counter{0};
    return ".orlix-text-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".tmp";
}

// The rename itself is durable only once its folder is.
void syncFolder(const fs::path& folder) {
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.get() >= 0) {
        ::fsync(file.get());
    }
}

fs::path targetOf(const std::string& path) {
    std::error_code failure;
    fs::path target = fs::absolute(path, failure);
    if (!failure) {
        target = fs::weakly_canonical(target, failure);
    }
    if (failure) {
        failFor(path, "can not write", failure.message());
    }
    if (fs::is_directory(target, failure)) {
        failFor(path, "can not write", "is a folder");
    }
    return target;
}

// A device, a pipe or a socket: a file in its place would take it away from everybody.
bool isStream(const std::string& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode) && !S_ISDIR(found.st_mode);
}

void writeStream(const std::string& path, const std::string& text) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (file.get() < 0) {
        failWithErrno(path, "can not write");
    }
    writeAll(file.get(), text, path);
    if (!file.close()) {
        failWithErrno(path, "can not write");
    }
}

void replaceFile(const std::string& path, const std::string& text) {
    const fs::path target = targetOf(path);
    TemporaryFile temporary((target.parent_path() / temporaryName()).string());
    FileDescriptor file(
        ::open(temporary.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.get() < 0) {
        failWithErrno(path, "can not write");
    }
    struct stat old {};
    if (::stat(target.c_str(), &old) == 0 && ::fchmod(file.get(), old.st_mode & 07777U) != 0) {
        failWithErrno(path, "can not keep the permissions");
    }
    writeAll(file.get(), text, path);
    if (::fsync(file.get()) != 0 || !file.close()) {
        failWithErrno(path, "can not write");
    }
    if (::rename(temporary.path().c_str(), target.c_str()) != 0) {
        failWithErrno(path, "can not replace");
    }
    temporary.keep();
    syncFolder(target.parent_path());
}

}  // namespace

std::string readTextFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        failWithErrno(path, "can not read");
    }
    std::string text;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = ::read(file.get(), block.data(), block.size());
        if (count == 0) {
            return text;
        }
        if (count > 0) {
            text.append(block.data(), static_cast<std::size_t>(count));
            if (text.size() > maxTextSize) {
                fail(path + ": can not read: is larger than 256 MiB");
            }
        } else if (errno != EINTR) {
            failWithErrno(path, "can not read");
        }
    }
}

void replaceTextFile(const std::string& path, const std::string& text) {
    if (isStream(path)) {
        writeStream(path, text);
    } else {
        replaceFile(path, text);
    }
}

AppendFile::AppendFile(std::string path)
    : path_(std::move(path)),
      file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666)) {
    if (file_ < 0) {
        failWithErrno(path_, "can not write");
    }
}

AppendFile::~AppendFile() {
    ::close(file_);
}

void AppendFile::append(const std::string& text) {
    writeAll(file_, text, path_);
}

}  // namespace Orlix::Host
