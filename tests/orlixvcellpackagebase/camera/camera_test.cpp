#include "orlixvcellpackagebase/camera.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "support/memorysettings.h"
#include "support/testpool.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr auto category = "orlix.dataprocessing.vcell.Camera";

class CameraNode : public testing::Test {
protected:
    [[nodiscard]] std::string failureLine(const char* function, const char* message) const {
        return "3 Camera " + toText(&node) +
               ": Plugin::OrlixVCellPackageBase::Camera::" + function + " failed. Message: \"" +
               message + "\" (src/plugins/";
    }

    Camera node{std::make_shared<TestPool>()};
};

TEST(CameraWithoutPool, IsRefusedWithALineAndAMessageThatEndsInABlank) {
    const Utils::LogCapture capture;
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([] { const Camera camera(nullptr); }),
              "Resource pool must not be nullptr. ");
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(AllOf(
                    StartsWith("3 Camera 0x"),
                    HasSubstr(": Plugin::OrlixVCellPackageBase::Camera::Camera failed. Message: "
                              "\"Resource pool must not be nullptr. \" "
                              "(src/plugins/orlixvcellpackagebase/camera/camera.cpp:"))));
}

TEST_F(CameraNode, HasOneImageOutput) {
    const auto outputs = node.getOutputDescriptors();
    ASSERT_THAT(outputs, SizeIs(1));
    EXPECT_EQ(outputs[0].name, "Image");
    EXPECT_EQ(outputs[0].description, "The image output.");
    EXPECT_EQ(outputs[0].type, Utils::TypeInfo::getTypeInfo<Core::Image>(true));
    EXPECT_TRUE(outputs[0].optional);
    EXPECT_EQ(outputs[0].maxJobCount, Core::unlimitedJobs);
    EXPECT_THAT(node.getInputDescriptors(), IsEmpty());
    EXPECT_FALSE(node.isForwardingUpdates());
}

TEST_F(CameraNode, PublishesItsNodeMapFirstAndThatOfTheCameraObject) {
    const auto infos = node.getNodeMapInfos();
    ASSERT_THAT(infos, SizeIs(2));
    EXPECT_EQ(infos[0].GetIdentifier(), "@vCell");
    EXPECT_EQ(infos[0].GetDisplayName(), "Camera");
    const GenApi::CCategoryPtr root(infos[0].GetNodeMap()->GetNode("Root"));
    EXPECT_TRUE(root.IsValid());
    EXPECT_EQ(infos[1].GetIdentifier(), "@CameraInstance");
    EXPECT_EQ(infos[1].GetDisplayName(), "Camera Instance");
    EXPECT_NE(infos[1].GetNodeMap()->GetNode("MaxNumBuffer"), nullptr);
    EXPECT_NE(node.getNodeMapsChangedSignal(), nullptr);
}

TEST_F(CameraNode, IsRegisteredUnderItsFullName) {
    EXPECT_EQ(node.getTypeInfo(true).getIdentifier(), "Plugin::OrlixVCellPackageBase::Camera");
    Core::INode& base = node;
    EXPECT_EQ(Utils::object_cast<Core::INodeMapContainer>(&base), &node);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
