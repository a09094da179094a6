// A network of the test program's own, so that tests meet no camera but theirs, and those that run
// at the same time don't meet each other's.
#pragma once

#include <string>

namespace Orlix::Aravis::Testing {

// Runs the program once more in a network namespace; returns only where it is in one already, or
// where the system allows none.
void enterOwnNetwork(char** arguments);

// Empty in a network namespace; otherwise why there is none.
[[nodiscard]] std::string whyNoNetwork();

// A loopback network whose packets have so many bytes at most, while it lives.
class SmallPackets {
public:
    explicit SmallPackets(int bytes);
    ~SmallPackets();
    SmallPackets(const SmallPackets&) = delete;
    SmallPackets& operator=(const SmallPackets&) = delete;

private:
    const int before_;
};

}  // namespace Orlix::Aravis::Testing

// To be the first line of a test, or of SetUp.
#define ORLIX_REQUIRE_NETWORK()                                                \
    if (const auto why = Orlix::Aravis::Testing::whyNoNetwork(); !why.empty()) \
    GTEST_SKIP() << why
