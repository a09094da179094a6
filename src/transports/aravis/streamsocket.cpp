#include "aravis/streamsocket.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <memory>
#include <thread>

namespace Orlix::Aravis {
namespace {

// Aravis tells the port of its socket, but not the socket.
bool isUdpSocketAt(int descriptor, std::uint32_t address, guint16 port) {
    int type = 0;
    socklen_t length = sizeof type;
    sockaddr_in name{};
    socklen_t nameLength = sizeof name;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) == 0 &&
           type == SOCK_DGRAM &&
           ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &nameLength) == 0 &&
           name.sin_family == AF_INET && ntohs(name.sin_port) == port &&
           (name.sin_addr.s_addr == INADDR_ANY || ntohl(name.sin_addr.s_addr) == address);
}

// Looked at once more by its new handle, since the old one is another's to close at any time.
int takeIfSocketAt(int descriptor, std::uint32_t address, guint16 port) {
    if (!isUdpSocketAt(descriptor, address, port)) {
        return -1;
    }
    const int taken = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (taken >= 0 && !isUdpSocketAt(taken, address, port)) {
        ::close(taken);
        return -1;
    }
    return taken;
}

int findSocket(std::uint32_t address, guint16 port) {
    struct Close {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };
    const std::unique_ptr<DIR, Close> folder(::opendir("/proc/self/fd"));
    while (const dirent* const entry = folder != nullptr ? ::readdir(folder.get()) : nullptr) {
        if (entry->d_name[0] == '.') {
            continue;
        }
        const int taken = takeIfSocketAt(std::atoi(entry->d_name), address, port);
        if (taken >= 0) {
            return taken;
        }
    }
    return -1;
}

}  // namespace

StreamSocket::StreamSocket(ArvStream& stream, std::uint32_t address) {
    if (ARV_IS_GV_STREAM(&stream)) {
        descriptor_ = findSocket(address, arv_gv_stream_get_port(ARV_GV_STREAM(&stream)));
    }
}

StreamSocket::~StreamSocket() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::size_t StreamSocket::SetReceiveBuffer(std::size_t size) const noexcept {
    const int asked = static_cast<int>(std::min<std::size_t>(size, INT_MAX / 2));
    int given = 0;
    socklen_t length = sizeof given;
    if (descriptor_ < 0 ||
        ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &asked, sizeof asked) != 0 ||
        ::getsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &given, &length) != 0) {
        return 0;
    }
    // The kernel doubles what it grants, for its own book-keeping.
    return static_cast<std::size_t>(given) / 2;
}

bool StreamSocket::Mute() const noexcept {
    sock_filter refuse = BPF_STMT(BPF_RET | BPF_K, 0);
    const sock_fprog program{1, &refuse};
    return descriptor_ >= 0 &&
           ::setsockopt(descriptor_, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
}

bool StreamSocket::AwaitEmpty(std::chrono::milliseconds timeOut) const noexcept {
    constexpr std::chrono::milliseconds step{1};
    constexpr int enough = 4;
    const auto deadline = std::chrono::steady_clock::now() + timeOut;
    int waiting = 0;
    for (int empty = 0; descriptor_ >= 0 && ::ioctl(descriptor_, FIONREAD, &waiting) == 0;) {
        empty = waiting == 0 ? empty + 1 : 0;
        if (empty == enough) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(step);
    }
    return false;
}

}  // namespace Orlix::Aravis
