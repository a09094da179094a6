// The parameter tree of ImageLoading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "orlixvcellpackagebase/imageloading.h"
#include "support/golden.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// Writes 1.024 for 1024, as some languages' locales do.
class GroupingNumbers : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class ImageLoadingParameters : public testing::Test {
protected:
    GenApi::INodeMap& map() { return *node.getNodeMapInfos().at(0).GetNodeMap(); }

    ImageLoading node{nullptr};
};

TEST_F(ImageLoadingParameters, DescriptionIsTheGoldenOne) {
    expectGolden(node.describeParameters().str(), "imageloading.xml");
}

TEST_F(ImageLoadingParameters, DescriptionDoesNotDependOnTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new GroupingNumbers));
    const std::string description = ImageLoading(nullptr).describeParameters().str();
    std::locale::global(before);
    EXPECT_EQ(description, node.describeParameters().str());
}

TEST_F(ImageLoadingParameters, AreFeaturesOfTheRootInTheirOrder) {
    GenApi::FeatureList_t features;
    GenApi::CCategoryPtr(map().GetNode("Root"))->GetFeatures(features);
    std::vector<std::string> names;
    for (auto* feature : features) {
        names.push_back(feature->GetNode()->GetName().str());
    }
    EXPECT_THAT(names, ElementsAre("SourcePath", "SortBy", "NumberOfImages", "FramesPerSecond",
                                   "NumberOfRuns", "RunContinuously", "StoreAbsolutePath"));
}

TEST_F(ImageLoadingParameters, CanBeReadAndWrittenThroughTheNodeMap) {
    GenApi::CStringPtr(map().GetNode("SourcePath"))->SetValue("/images");
    GenApi::CEnumerationPtr(map().GetNode("SortBy"))->FromString("Random");
    GenApi::CIntegerPtr(map().GetNode("NumberOfImages"))->SetValue(2);
    GenApi::CIntegerPtr(map().GetNode("FramesPerSecond"))->SetValue(3);
    GenApi::CIntegerPtr(map().GetNode("NumberOfRuns"))->SetValue(4);
    GenApi::CBooleanPtr(map().GetNode("RunContinuously"))->SetValue(true);
    GenApi::CBooleanPtr(map().GetNode("StoreAbsolutePath"))->SetValue(true);
    EXPECT_EQ(node.getSourcePath(), "/images");
    EXPECT_EQ(node.getSortBy(), Random);
    EXPECT_EQ(node.getNumberOfImages(), 2U);
    EXPECT_EQ(node.getFramesPerSecond(), 3U);
    EXPECT_EQ(node.getNumberOfRuns(), 4U);
    EXPECT_TRUE(node.getRunContinuously());
    EXPECT_TRUE(node.getStoreAbsolutePath());
    EXPECT_EQ(GenApi::CStringPtr(map().GetNode("SourcePath"))->GetValue(), "/images");
    EXPECT_EQ(GenApi::CEnumerationPtr(map().GetNode("SortBy"))->ToString(), "Random");
}

TEST_F(ImageLoadingParameters, RandomHasNoAvailabilityRegisterUnlikeTheOtherEntries) {
    const std::string description = node.describeParameters().str();
    EXPECT_THAT(description, HasSubstr("EnumEntry_SortBy_AscendingIsAvailable"));
    EXPECT_THAT(description, HasSubstr("EnumEntry_SortBy_DescendingIsAvailable"));
    EXPECT_THAT(description, Not(HasSubstr("EnumEntry_SortBy_RandomIsAvailable")));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
