#include <gtest/gtest.h>

#include <cstring>

#include "aravis/support/network.h"

#if defined(__SANITIZE_THREAD__)
// Also for those who run the program by itself and not through ctest.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() {
    return "suppressions=" ORLIX_THREAD_SUPPRESSIONS;
}
#endif

int main(int count, char** arguments) {
    // Who only asks for the names of the tests needs no network.
    bool lists = false;
    for (int index = 1; index < count; ++index) {
        lists = lists || std::strstr(arguments[index], "list_tests") != nullptr;
    }
    if (!lists) {
        Orlix::Aravis::Testing::enterOwnNetwork(arguments);
    }
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
