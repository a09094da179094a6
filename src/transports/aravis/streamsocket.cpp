#include "aravis/streamsocket.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <memory>
#include <thread>

namespace Orlix::Aravis {
namespace {

// Aravis tells the port of its socket, but not the socket.
bool isUdpSocketOfPort(int descriptor, guint16 port) {
    int type = 0;
    socklen_t length = sizeof type;
    sockaddr_in name{};
    socklen_t nameLength = sizeof name;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) == 0 &&
           type == SOCK_DGRAM &&
           ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &nameLength) == 0 &&
           name.sin_family == AF_INET && ntohs(name.sin_port) == port;
}

int findSocket(guint16 port) {
    struct Close {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };
    const std::unique_ptr<DIR, Close> folder(::opendir("/proc/self/fd"));
    while (const dirent* const entry = folder != nullptr ? ::readdir(folder.get()) : nullptr) {
        const int descriptor = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && isUdpSocketOfPort(descriptor, port)) {
            return descriptor;
        }
    }
    return -1;
}

}  // namespace

StreamSocket::StreamSocket(ArvStream& stream) {
    if (ARV_IS_GV_STREAM(&stream)) {
        descriptor_ = findSocket(arv_gv_stream_get_port(ARV_GV_STREAM(&stream)));
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

void StreamSocket::Mute() const noexcept {
    sock_filter refuse = BPF_STMT(BPF_RET | BPF_K, 0);
    const sock_fprog program{1, &refuse};
    if (descriptor_ < 0 ||
        ::setsockopt(descriptor_, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0) {
        return;
    }
    constexpr int attempts = 50;
    constexpr std::chrono::milliseconds step{1};
    int waiting = 1;
    for (int attempt = 0; attempt < attempts && waiting > 0; ++attempt) {
        std::this_thread::sleep_for(step);
        if (::ioctl(descriptor_, FIONREAD, &waiting) != 0) {
            return;
        }
    }
}

}  // namespace Orlix::Aravis
