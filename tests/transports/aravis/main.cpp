#include <gtest/gtest.h>

#include <cstring>

#include "aravis/support/network.h"

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
