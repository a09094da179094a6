#include "host/textfile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "host/descriptorname.h"
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

// Short, whatever the length of the final name, and not to be guessed: in a folder that others may
// write to, nobody can put a file or a link in its way.
std::string temporaryName() {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number)) {
        fail("can not get a random number from the system");
    }
    return ".orlix-text-" + std::to_string(number) + ".tmp";
}

// A new file in a folder, which goes at the end unless it has taken its place.
class TemporaryFile {
public:
    // Whether there is one shows isOpen of the file.
    explicit TemporaryFile(const fs::path& folder)
        : path_((folder / temporaryName()).string()),
          file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666)) {
        if (!file_.isOpen()) {
            path_.clear();
        }
    }
    ~TemporaryFile() {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] FileDescriptor& file() { return file_; }
    // False with errno.
    [[nodiscard]] bool moveTo(const fs::path& target) {
        if (::rename(path_.c_str(), target.c_str()) != 0) {
            return false;
        }
        path_.clear();
        return true;
    }

private:
    std::string path_;
    FileDescriptor file_;
};

// For a pipe or a terminal that somebody has set not to block.
bool waitForSpace(int file) {
    pollfd state{file, POLLOUT, 0};
    return ::poll(&state, 1, -1) > 0 || errno == EINTR;
}

void writeAll(int file, const std::string& text, const std::string& path) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file, text.data() + written, text.size() - written);
        if (count < 0 && (errno == EINTR || (errno == EAGAIN && waitForSpace(file)))) {
            continue;
        }
        if (count < 0) {
            failWithErrno(path, "can not write");
        }
        written += static_cast<std::size_t>(count);
    }
}

// The rename itself is durable only once its folder is.
void syncFolder(const fs::path& folder) {
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.isOpen()) {
        ::fsync(file.get());
    }
}

// Behind links, also where the last one leads to a file that isn't there yet.
fs::path targetOf(const std::string& path) {
    constexpr int maxLinks = 40;  // as many as the system follows
    std::error_code failure;
    fs::path target = fs::absolute(path, failure);
    for (int link = 0; !failure; ++link) {
        target = fs::weakly_canonical(target, failure);
        std::error_code ignored;
        if (failure || !fs::is_symlink(fs::symlink_status(target, ignored))) {
            break;
        }
        target = target.parent_path() / fs::read_symlink(target, failure);
        if (link == maxLinks) {
            failure = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        }
    }
    if (failure) {
        failFor(path, "can not write", failure.message());
    }
    if (fs::is_directory(target, failure)) {
        failFor(path, "can not write", "is a folder");
    }
    return target;
}

// What is inherited is meant; what this process has opened for itself is nobody's to write to.
int duplicateInherited(int number) {
    const int flags = ::fcntl(number, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) != 0) {
        errno = EBADF;
    }
    return flags < 0 || (flags & FD_CLOEXEC) != 0 ? -1 : ::fcntl(number, F_DUPFD_CLOEXEC, 0);
}

// Opened by its name, the file would be written from its beginning, over what is there.
int openDescriptor(const DescriptorName& name, const std::string& path) {
    return name.isOwn ? duplicateInherited(name.number)
                      : ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY);
}

// A device, a pipe or a socket: a file in its place would take it away from everybody.
bool isSpecial(const std::string& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode) && !S_ISDIR(found.st_mode);
}

void writeStream(FileDescriptor file, const std::string& path, const std::string& text) {
    if (!file.isOpen()) {
        failWithErrno(path, "can not write");
    }
    writeAll(file.get(), text, path);
    if (!file.close()) {
        failWithErrno(path, "can not write");
    }
}

void replaceFile(const std::string& path, const std::string& text) {
    const fs::path target = targetOf(path);
    TemporaryFile temporary(target.parent_path());
    FileDescriptor& file = temporary.file();
    if (!file.isOpen()) {
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
    if (!temporary.moveTo(target)) {
        failWithErrno(path, "can not replace");
    }
    syncFolder(target.parent_path());
}

}  // namespace

std::string readTextFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) {
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
    if (const auto name = parseDescriptorName(path)) {
        writeStream(FileDescriptor(openDescriptor(*name, path)), path, text);
    } else if (isSpecial(path)) {
        writeStream(FileDescriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY)), path,
                    text);
    } else {
        replaceFile(path, text);
    }
}

AppendFile::AppendFile(std::string path)
    : path_(std::move(path)),
      file_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666)) {
    if (!file_.isOpen()) {
        failWithErrno(path_, "can not write");
    }
}

// What a full disk has cut is taken away, so that the file ends with a whole line.
void AppendFile::append(const std::string& text) {
    try {
        writeAll(file_.get(), text, path_);
    } catch (...) {
        static_cast<void>(::ftruncate(file_.get(), size_) == 0);  // fails for a pipe
        throw;
    }
    size_ += static_cast<off_t>(text.size());
}

}  // namespace Orlix::Host
