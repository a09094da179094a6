// A reader of a named pipe in place of a file that a run writes: who reads it knows when something
// has been written, and holds the run back as long as he likes.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace Orlix::Host::Testing {

class FifoReader {
public:
    // Blocks until the run opens the other end.
    explicit FifoReader(const std::string& path) : file_(::open(path.c_str(), O_RDONLY)) {}
    ~FifoReader() { ::close(file_); }
    FifoReader(const FifoReader&) = delete;
    FifoReader& operator=(const FifoReader&) = delete;

    // Blocks until the run has written something.
    void waitForFirstByte() {
        char first = 0;
        EXPECT_EQ(::read(file_, &first, 1), 1);
        text_ += first;
    }
    // Everything that was ever written.
    std::string readToEnd() {
        char block[4096];
        for (ssize_t count = 0; (count = ::read(file_, block, sizeof block)) > 0;) {
            text_.append(block, static_cast<std::size_t>(count));
        }
        return text_;
    }

private:
    int file_;
    std::string text_;
};

}  // namespace Orlix::Host::Testing
