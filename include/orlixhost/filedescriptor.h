// The owner of a file descriptor: closes it at the end. For one thread at a time.
#pragma once

#include <unistd.h>

#include <utility>

namespace Orlix::Host {

class FileDescriptor {
public:
    // A negative value, as a call that failed returns it, is no file.
    explicit FileDescriptor(int value = -1) noexcept : value_(value) {}
    ~FileDescriptor() { static_cast<void>(close()); }
    FileDescriptor(FileDescriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor& operator=(FileDescriptor&&) = delete;

    [[nodiscard]] bool isOpen() const noexcept { return value_ >= 0; }
    [[nodiscard]] int get() const noexcept { return value_; }
    // False with errno: an error of an earlier write may show up only here.
    [[nodiscard]] bool close() noexcept {
        const int value = std::exchange(value_, -1);
        return value < 0 || ::close(value) == 0;
    }

private:
    int value_;
};

}  // namespace Orlix::Host
