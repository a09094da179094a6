// No more descriptors for the test program while an object of this kind lives. What is open stays
// so, and may be waited for: poll(2) refuses more descriptors at once than the limit allows. GLib
// ends the program where it gets none, so no thread of Aravis may run meanwhile.
#pragma once

#include <sys/resource.h>

namespace Orlix::Aravis::Testing {

class FewDescriptors {
public:
    FewDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        constexpr rlim_t alwaysOpen = 3;  // input, output, errors
        const rlimit none{alwaysOpen, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit before_{};
};

}  // namespace Orlix::Aravis::Testing
