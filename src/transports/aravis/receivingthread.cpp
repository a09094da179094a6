#include "aravis/receivingthread.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace Orlix::Aravis {

void ReceivingThread::Enter() noexcept {
    id_ = static_cast<pid_t>(::syscall(SYS_gettid));
}

// The file begins with the number of the system call that the thread is in, if it is in one.
bool ReceivingThread::IsIdle() const noexcept {
    const pid_t id = id_;
    std::array<char, 64> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "/proc/self/task/%d/syscall", id));
    const int file = id != 0 ? ::open(text.data(), O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0) {
        return id != 0 && errno == ENOENT && ::access("/proc/self/task", F_OK) == 0;
    }
    const ssize_t size = ::read(file, text.data(), text.size() - 1);
    ::close(file);
    if (size <= 0) {
        return false;
    }
    text[static_cast<std::size_t>(size)] = '\0';
    char* end = nullptr;
    const long call = std::strtol(text.data(), &end, 10);
    return end != text.data() && (call == SYS_poll || call == SYS_ppoll);
}

}  // namespace Orlix::Aravis
