// The parameter tree of ImageFormatConverter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "genapi/genapi.h"
#include "imageformatconverter/imageformatconverter.h"
#include "support/golden.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

using testing::ElementsAre;

class ImageFormatConverterParameters : public testing::Test {
protected:
    GenApi::INodeMap& map() { return *node.getNodeMapInfos().at(0).GetNodeMap(); }

    ImageFormatConverter node{nullptr};
};

TEST_F(ImageFormatConverterParameters, DescriptionIsTheGoldenOne) {
    expectGolden(node.describeParameters().str(), "imageformatconverter.xml");
}

TEST_F(ImageFormatConverterParameters, AreFeaturesOfTheRootInTheirOrder) {
    GenApi::FeatureList_t features;
    GenApi::CCategoryPtr(map().GetNode("Root"))->GetFeatures(features);
    std::vector<std::string> names;
    for (auto* feature : features) {
        names.push_back(feature->GetNode()->GetName().str());
    }
    EXPECT_THAT(names, ElementsAre("OutputPixelFormat", "OutputBitAlignment", "OutputOrientation",
                                   "OutputPaddingX", "MaxNumThreads"));
}

TEST_F(ImageFormatConverterParameters, EveryEntryCanBeChosen) {
    for (const char* name : {"OutputPixelFormat", "OutputBitAlignment", "OutputOrientation"}) {
        const GenApi::CEnumerationPtr parameter(map().GetNode(name));
        GenApi::NodeList_t entries;
        parameter->GetEntries(entries);
        EXPECT_FALSE(entries.empty());
        for (auto* entry : entries) {
            const auto value = GenApi::CEnumEntryPtr(entry)->GetValue();
            parameter->SetIntValue(value);
            EXPECT_EQ(parameter->GetIntValue(), value);
        }
    }
}

TEST_F(ImageFormatConverterParameters, PaddingHasTheRangeOf32Bits) {
    const GenApi::CIntegerPtr padding(map().GetNode("OutputPaddingX"));
    EXPECT_EQ(padding->GetMin(), 0);
    EXPECT_EQ(padding->GetMax(), 4294967295);
    EXPECT_EQ(padding->GetInc(), 1);
    padding->SetValue(16);
    EXPECT_EQ(node.getOutputPaddingX(), 16);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
