// Both operations of allocating reach those of the base class, whatever became of the device. The
// library's do nothing, so this program has its own in their place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/core/errors.h"
#include "support/scriptedcamera.h"

namespace {

using Orlix::DataProcessing::Core::ErrorList;

std::function<ErrorList(bool)> baseAllocates = [](bool) { return ErrorList(); };
std::function<void(bool)> baseFrees = [](bool) {};

}  // namespace

namespace Orlix::DataProcessing::Core {

std::vector<std::shared_ptr<IError>> NodeBase::allocateAdditionalResources(
    const std::shared_ptr<IResourcePool>&, bool flag) {
    return baseAllocates(flag);
}

void NodeBase::freeAdditionalResources(bool flag) {
    baseFrees(flag);
}

}  // namespace Orlix::DataProcessing::Core

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

class CameraAllocationBase : public ScriptedCamera {
protected:
    void SetUp() override {
        static_cast<void>(camera());
        baseAllocates = [this](bool flag) {
            calls.push_back(flag ? "allocate(true)" : "allocate(false)");
            return ErrorList{
                std::make_shared<Core::InvalidValueError>("of the base", Utils::DateTime::now())};
        };
        baseFrees = [this](bool flag) { calls.push_back(flag ? "free(true)" : "free(false)"); };
    }
    void TearDown() override {
        destroyCamera();
        baseAllocates = [](bool) { return ErrorList(); };
        baseFrees = [](bool) {};
    }
    Errors allocate(bool flag) {
        return camera().allocateAdditionalResources(resources.pool, flag);
    }

    std::vector<std::string> calls;
};

TEST_F(CameraAllocationBase, ASecondAllocationReturnsItsResultAlone) {
    EXPECT_THAT(descriptionsOf(allocate(true)), ElementsAre("of the base"));
    EXPECT_THAT(descriptionsOf(allocate(false)), ElementsAre("of the base"));
    EXPECT_THAT(calls, ElementsAre("allocate(true)", "allocate(false)"));
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened"));
}

TEST_F(CameraAllocationBase, ItsErrorsFollowThoseOfTheDevice) {
    commit(StreamType::CameraDevice, "NoSuchFeature=1");
    EXPECT_THAT(descriptionsOf(allocate(true)),
                ElementsAre("Failed to load feature streams from active configuration set.",
                            "of the base"));
}

TEST_F(CameraAllocationBase, WhatItThrowsIsLoggedAndInTheList) {
    resource->unused = false;
    baseAllocates = [](bool) -> ErrorList { throw std::runtime_error("thrown by the base"); };
    const Utils::LogCapture capture;
    EXPECT_THAT(descriptionsOf(allocate(false)),
                ElementsAre("No unused camera found to allocate.", "thrown by the base"));
    EXPECT_EQ(getLines(capture, category).back(),
              "4 Camera " + toText(static_cast<const Camera*>(&camera())) +
                  ": Exception caught while allocating additional resources.. Message: thrown by "
                  "the base");
}

TEST_F(CameraAllocationBase, AFreeReachesItAlsoWhereTheDeviceIsKept) {
    static_cast<void>(allocate(false));
    camera().freeAdditionalResources(true);
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened"));
    camera().freeAdditionalResources(false);
    EXPECT_THAT(calls, ElementsAre("allocate(false)", "free(true)", "free(false)"));
    EXPECT_THAT(camera().calls, ElementsAre("attached", "opened", "closed", "detached"));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
