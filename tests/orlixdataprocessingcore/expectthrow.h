// Expects an exception of exactly that class and description, and gives it to further checks.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <typeinfo>

#include "gcbase/gcexception.h"

namespace Orlix::Test {

// What was thrown, to look at its source file.
struct Thrown {
    std::string description;
    std::string sourceFile;
};

template <typename Exception>
Thrown expectThrow(const std::function<void()>& function, const std::string& description) {
    try {
        function();
    } catch (const GenICam::GenericException& exception) {
        EXPECT_TRUE(typeid(exception) == typeid(Exception)) << exception.what();
        EXPECT_EQ(exception.GetDescription(), description);
        return {exception.GetDescription(), exception.GetSourceFileName()};
    }
    ADD_FAILURE() << "nothing thrown, expected: " << description;
    return {};
}

}  // namespace Orlix::Test
