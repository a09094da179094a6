// Steps of an allocation that fail, and those behind them.
#include "camera/allocationstep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "camera/log.h"
#include "gcbase/gcexception.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;

constexpr auto category = "orlix.dataprocessing.vcell.Camera";
constexpr auto doing = "allocating additional resources.";

class AllocationStep : public testing::Test {
protected:
    template <class Step>
    void run(Step&& step) {
        runAllocationStep(errors, CameraLog::getSubject(nullptr), doing, step);
    }
    [[nodiscard]] std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const auto& error : errors) {
            all.push_back(error->getName().str() + ": " + error->getDescription().str());
        }
        return all;
    }

    Core::ErrorList errors;
};

TEST_F(AllocationStep, ItsErrorsFollowThoseOfTheStepBefore) {
    const auto error = [](const char* text) {
        return std::make_shared<Core::InvalidValueError>(text, Utils::DateTime::now());
    };
    run([&] { return Core::ErrorList{error("first")}; });
    run([&] { return Core::ErrorList(); });
    run([&] { return Core::ErrorList{error("second"), error("third")}; });
    EXPECT_THAT(texts(), ElementsAre("InvalidValueError: first", "InvalidValueError: second",
                                     "InvalidValueError: third"));
}

TEST_F(AllocationStep, WhatItThrowsIsLoggedAndTheNextStepComes) {
    const Utils::LogCapture capture;
    run([]() -> Core::ErrorList {
        throw GenICam::RuntimeException("refused", __FILE__, __LINE__);
    });
    run([]() -> Core::ErrorList { throw std::runtime_error("standard"); });
    run([]() -> Core::ErrorList { throw 1; });
    EXPECT_THAT(texts(),
                ElementsAre("GenICamExceptionError: refused", "StdExceptionError: standard",
                            "UnknownExceptionError: Unknown exception caught while allocating "
                            "additional resources."));
    const std::string caught = "Exception caught while allocating additional resources.. Message: ";
    EXPECT_THAT(getLines(capture, category),
                ElementsAre("4 Camera: " + caught + "refused", "4 Camera: " + caught + "standard",
                            "4 Camera: Unknown exception caught while allocating additional "
                            "resources.."));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
