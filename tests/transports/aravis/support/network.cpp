#include "aravis/support/network.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace Orlix::Aravis::Testing {
namespace {

constexpr const char* mark = "ORLIX_TEST_NETWORK";

bool canUnshare() {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execlp("unshare", "unshare", "-Urn", "true", nullptr);
        ::_exit(1);
    }
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

void setFlagsUp(int control, const char* name) {
    ifreq request{};
    std::strncpy(request.ifr_name, name, IFNAMSIZ - 1);
    static_cast<void>(::ioctl(control, SIOCGIFFLAGS, &request));
    request.ifr_flags |= IFF_UP;
    static_cast<void>(::ioctl(control, SIOCSIFFLAGS, &request));
}

void setAddress(int control, const char* name, const char* address) {
    ifreq request{};
    std::strncpy(request.ifr_name, name, IFNAMSIZ - 1);
    sockaddr_in value{};
    value.sin_family = AF_INET;
    static_cast<void>(::inet_pton(AF_INET, address, &value.sin_addr));
    std::memcpy(&request.ifr_addr, &value, sizeof value);
    static_cast<void>(::ioctl(control, SIOCSIFADDR, &request));
    static_cast<void>(::inet_pton(AF_INET, "255.0.0.0", &value.sin_addr));
    std::memcpy(&request.ifr_netmask, &value, sizeof value);
    static_cast<void>(::ioctl(control, SIOCSIFNETMASK, &request));
}

// Returns what it was before.
int exchangeLoopbackMtu(int bytes) {
    const int control = ::socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
    static_cast<void>(::ioctl(control, SIOCGIFMTU, &request));
    const int before = request.ifr_mtu;
    request.ifr_mtu = bytes;
    static_cast<void>(::ioctl(control, SIOCSIFMTU, &request));
    ::close(control);
    return before;
}

// Cameras may have 127.0.0.1 and 127.0.0.2.
void setUpLoopback() {
    const int control = ::socket(AF_INET, SOCK_DGRAM, 0);
    setFlagsUp(control, "lo");
    setAddress(control, "lo:1", "127.0.0.2");
    setFlagsUp(control, "lo:1");
    ::close(control);
}

}  // namespace

void enterOwnNetwork(char** arguments) {
    if (std::getenv(mark) != nullptr) {
        setUpLoopback();
        return;
    }
    if (!canUnshare()) {
        return;
    }
    ::setenv(mark, "1", 1);
    std::vector<char*> command;
    std::string program = "unshare";
    std::string options = "-Urn";
    command.push_back(program.data());
    command.push_back(options.data());
    for (; *arguments != nullptr; ++arguments) {
        command.push_back(*arguments);
    }
    command.push_back(nullptr);
    ::execvp("unshare", command.data());
}

SmallPackets::SmallPackets(int bytes) : before_(exchangeLoopbackMtu(bytes)) {}

SmallPackets::~SmallPackets() {
    exchangeLoopbackMtu(before_);
}

std::string whyNoNetwork() {
    return std::getenv(mark) != nullptr
               ? ""
               : "this system allows no network namespace: 'unshare -Urn true' fails";
}

}  // namespace Orlix::Aravis::Testing
