#include "host/support/terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace Orlix::Host::Testing {

Terminal::Terminal() : end_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (end_ >= 0 && ::grantpt(end_) == 0 && ::unlockpt(end_) == 0) {
        childEnd_ = ::open(::ptsname(end_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    termios mode{};
    if (childEnd_ < 0 || ::tcgetattr(childEnd_, &mode) != 0) {
        throw std::runtime_error("no pseudo terminal");
    }
    // What is written arrives as it is.
    ::cfmakeraw(&mode);
    ::tcsetattr(childEnd_, TCSANOW, &mode);
}

Terminal::~Terminal() {
    closeChildEnd();
    ::close(end_);
}

void Terminal::closeChildEnd() {
    if (childEnd_ >= 0) {
        ::close(childEnd_);
        childEnd_ = -1;
    }
}

void Terminal::setColumns(unsigned short columns) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = columns;
    ::ioctl(end_, TIOCSWINSZ, &size);
}

bool Terminal::waitFor(const std::regex& pattern) {
    while (!std::regex_search(text_, pattern)) {
        if (!readSome()) {
            return false;
        }
    }
    return true;
}

std::string Terminal::readToEnd() {
    while (readSome()) {
    }
    return text_;
}

bool Terminal::readSome() {
    std::array<char, 4096> block{};
    const ssize_t count = ::read(end_, block.data(), block.size());
    if (count > 0) {
        text_.append(block.data(), static_cast<std::size_t>(count));
    }
    // EIO tells that nobody has the other end any more.
    return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace Orlix::Host::Testing
