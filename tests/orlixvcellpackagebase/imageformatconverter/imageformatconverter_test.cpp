#include "imageformatconverter/imageformatconverter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "support/memorysettings.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Value = MemorySettings::Value;

class ImageFormatConverterNode : public testing::Test {
protected:
    ImageFormatConverterNode() {
        connection = node.getSettingsChangedSignal()->connect([this] { ++changes; });
    }

    GenApi::INode* parameter(const char* name) {
        return node.getNodeMapInfos().at(0).GetNodeMap()->GetNode(name);
    }

    template <typename E>
    std::string loadFailure() {
        return getFailure<E>([this] { node.loadSettings(store); });
    }

    ImageFormatConverter node{nullptr};
    std::shared_ptr<Utils::IConnection> connection;
    int changes = 0;
    std::shared_ptr<MemorySettings> store = std::make_shared<MemorySettings>();
};

TEST_F(ImageFormatConverterNode, HasOneInputAndOneOutput) {
    const auto image = Utils::TypeInfo::getTypeInfo<Core::Image>(true);
    const auto inputs = node.getInputDescriptors();
    ASSERT_THAT(inputs, SizeIs(1));
    EXPECT_EQ(inputs[0].name, "Image");
    EXPECT_EQ(inputs[0].description, "Input image");
    EXPECT_EQ(inputs[0].type, image);
    EXPECT_FALSE(inputs[0].optional);
    EXPECT_EQ(inputs[0].maxJobCount, Core::unlimitedJobs);
    const auto outputs = node.getOutputDescriptors();
    ASSERT_THAT(outputs, SizeIs(1));
    EXPECT_EQ(outputs[0].name, "Image");
    EXPECT_EQ(outputs[0].description, "Output image");
    EXPECT_EQ(outputs[0].type, image);
    EXPECT_TRUE(outputs[0].optional);
    EXPECT_EQ(outputs[0].maxJobCount, Core::unlimitedJobs);
    EXPECT_TRUE(node.isForwardingUpdates());
}

TEST_F(ImageFormatConverterNode, PublishesOneNodeMap) {
    const auto infos = node.getNodeMapInfos();
    ASSERT_THAT(infos, SizeIs(1));
    EXPECT_EQ(infos[0].GetIdentifier(), "@vCell");
    EXPECT_EQ(infos[0].GetDisplayName(), "Image Format Converter");
    EXPECT_NE(infos[0].GetNodeMap()->GetNode("Root"), nullptr);
    EXPECT_NE(node.getNodeMapsChangedSignal(), nullptr);
}

TEST_F(ImageFormatConverterNode, IsRegisteredUnderItsFullName) {
    EXPECT_EQ(node.getTypeInfo(true).getIdentifier(),
              "Plugin::OrlixVCellPackageBase::ImageFormatConverter");
    Core::INode& base = node;
    EXPECT_EQ(base.getRawPointer(), &node);
    EXPECT_EQ(Utils::object_cast<Core::INodeMapContainer>(&base), &node);
}

TEST_F(ImageFormatConverterNode, OneThreadIsTheDefaultAndTheRestIsTheLibrarys) {
    const Orlix::CImageFormatConverter library;
    EXPECT_EQ(node.getMaxNumThreads(), 1);
    EXPECT_EQ(node.getOutputPixelFormat(),
              static_cast<unsigned int>(library.OutputPixelFormat.GetValue()));
    EXPECT_EQ(node.getOutputBitAlignment(), library.OutputBitAlignment.GetValue());
    EXPECT_EQ(node.getOutputOrientationEnums(), library.OutputOrientation.GetValue());
    EXPECT_EQ(node.getOutputPaddingX(), library.OutputPaddingX.GetValue());
}

TEST_F(ImageFormatConverterNode, SettersStoreAndNotifyAlsoWithoutAChange) {
    node.setOutputPixelFormat(Orlix::PixelType_Mono16);
    node.setOutputBitAlignment(Orlix::OutputBitAlignment_MsbAligned);
    node.setOutputOrientationEnums(Orlix::OutputOrientation_TopDown);
    node.setOutputPaddingX(12);
    node.setMaxNumThreads(1);
    EXPECT_EQ(node.getOutputPixelFormat(), 0x01100007U);
    EXPECT_EQ(node.getOutputBitAlignment(), Orlix::OutputBitAlignment_MsbAligned);
    EXPECT_EQ(node.getOutputOrientationEnums(), Orlix::OutputOrientation_TopDown);
    EXPECT_EQ(node.getOutputPaddingX(), 12);
    EXPECT_EQ(node.getMaxNumThreads(), 1);
    EXPECT_EQ(changes, 5);
}

TEST_F(ImageFormatConverterNode, LibraryChecksTheValues) {
    EXPECT_THROW(node.setOutputPixelFormat(1), GenICam::OutOfRangeException);
    EXPECT_THROW(node.setOutputPaddingX(-1), GenICam::OutOfRangeException);
    EXPECT_THROW(node.setMaxNumThreads(0), GenICam::OutOfRangeException);
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageFormatConverterNode, ParametersCanBeChangedWhileRunning) {
    node.start(Core::NodeArgumentCollection());
    node.setOutputPaddingX(3);
    EXPECT_EQ(node.getOutputPaddingX(), 3);
    GenApi::CEnumerationPtr(parameter("OutputPixelFormat"))->FromString("Mono8");
    EXPECT_EQ(node.getOutputPixelFormat(), 0x01080001U);
    node.stop();
}

TEST_F(ImageFormatConverterNode, NodeMapShowsTheLibrarysThreadLimits) {
    const Orlix::CImageFormatConverter library;
    const GenApi::CIntegerPtr threads(parameter("MaxNumThreads"));
    EXPECT_EQ(threads->GetValue(), 1);
    EXPECT_EQ(threads->GetMin(), library.MaxNumThreads.GetMin());
    EXPECT_EQ(threads->GetMax(), library.MaxNumThreads.GetMax());
    EXPECT_EQ(threads->GetInc(), library.MaxNumThreads.GetInc());
    EXPECT_EQ(parameter("MaxNumThreads")->GetToolTip(),
              library.MaxNumThreads.GetInfo(Orlix::ParameterInfo_ToolTip));
}

TEST_F(ImageFormatConverterNode, ObserversDoNotRunUnderTheNodesLock) {
    bool owned = true;
    const auto observer = node.getSettingsChangedSignal()->connect(
        [&] { owned = node.getNodeMapInfos().at(0).GetNodeMap()->GetLock().IsOwned(); });
    node.setOutputPaddingX(1);
    EXPECT_FALSE(owned);
}

TEST_F(ImageFormatConverterNode, RecipeHasTheFormatAsANumberAndTheOrientationAsAWord) {
    node.setOutputPixelFormat(Orlix::PixelType_Mono8);
    node.setOutputOrientationEnums(Orlix::OutputOrientation_BottomUp);
    node.setOutputBitAlignment(Orlix::OutputBitAlignment_MsbAligned);
    node.setOutputPaddingX(2);
    node.saveSettings(store);
    EXPECT_THAT(store->keys(),
                ElementsAre("OutputPixelFormat", "OutputOrientation", "OutputBitAlignment",
                            "OutputPaddingX", "MaxNumThreads"));
    EXPECT_EQ(store->at("OutputPixelFormat"), Value(std::uint64_t{17301505}));
    EXPECT_EQ(store->at("OutputOrientation"), Value(gcstring("BottomUp")));
    EXPECT_EQ(store->at("OutputBitAlignment"), Value(gcstring("MsbAligned")));
    EXPECT_EQ(store->at("OutputPaddingX"), Value(std::int64_t{2}));
    EXPECT_EQ(store->at("MaxNumThreads"), Value(std::int64_t{1}));
}

TEST_F(ImageFormatConverterNode, EveryWordSurvivesSaveAndLoad) {
    for (auto orientation : {Orlix::OutputOrientation_BottomUp, Orlix::OutputOrientation_TopDown,
                             Orlix::OutputOrientation_Unchanged}) {
        for (auto alignment :
             {Orlix::OutputBitAlignment_LsbAligned, Orlix::OutputBitAlignment_MsbAligned}) {
            node.setOutputOrientationEnums(orientation);
            node.setOutputBitAlignment(alignment);
            node.saveSettings(store);
            ImageFormatConverter other(nullptr);
            other.loadSettings(store);
            EXPECT_EQ(other.getOutputOrientationEnums(), orientation);
            EXPECT_EQ(other.getOutputBitAlignment(), alignment);
        }
    }
}

TEST_F(ImageFormatConverterNode, AbsentKeysKeepTheirValues) {
    node.setOutputOrientationEnums(Orlix::OutputOrientation_TopDown);
    node.setOutputPaddingX(7);
    store->set("OutputPixelFormat", std::uint64_t{0x01080001});
    node.loadSettings(store);
    EXPECT_EQ(node.getOutputOrientationEnums(), Orlix::OutputOrientation_TopDown);
    EXPECT_EQ(node.getOutputPaddingX(), 7);
    EXPECT_EQ(node.getOutputPixelFormat(), 0x01080001U);
}

TEST_F(ImageFormatConverterNode, LoadSignalsEachKeyAndItsEnd) {
    store->set("OutputPixelFormat", std::uint64_t{0x01080001});
    store->set("OutputPaddingX", std::int64_t{4});
    node.loadSettings(store);
    EXPECT_EQ(changes, 3);
}

TEST_F(ImageFormatConverterNode, LoadReachesTheCallbacksOfTheNodeMap) {
    int calls = 0;
    const auto handle =
        GenApi::Register(parameter("OutputPaddingX"), [&](GenApi::INode*) { ++calls; });
    store->set("OutputPaddingX", std::int64_t{4});
    node.loadSettings(store);
    EXPECT_EQ(calls, 1);
    parameter("OutputPaddingX")->DeregisterCallback(handle);
}

TEST_F(ImageFormatConverterNode, WordsAreComparedWithCase) {
    using E = GenICam::InvalidArgumentException;
    store->set("OutputPixelFormat", std::uint64_t{0x01080001});
    store->set("OutputOrientation", gcstring("bottomup"));
    EXPECT_EQ(loadFailure<E>(), "Unknown symbolic name of output orientation found.");
    // What was read before the failure stays, without the final signal.
    EXPECT_EQ(node.getOutputPixelFormat(), 0x01080001U);
    EXPECT_EQ(changes, 1);
    store->set("OutputOrientation", gcstring("BottomUp"));
    store->set("OutputBitAlignment", gcstring("LSBAligned"));
    EXPECT_EQ(loadFailure<E>(), "Unknown symbolic name of output bit alignment found.");
}

TEST_F(ImageFormatConverterNode, NumberThatIsNoPixelTypeFailsTheLoad) {
    store->set("OutputPixelFormat", std::uint64_t{5});
    EXPECT_THAT(
        loadFailure<GenICam::OutOfRangeException>(),
        testing::StartsWith("The value 5 of parameter OutputPixelFormat is out of range: "));
}

// Cut, the first would be the number of Mono8.
TEST_F(ImageFormatConverterNode, NumberOfMoreThan32BitsFailsTheLoadAndIsTheOneNamed) {
    for (const std::uint64_t number :
         {(std::uint64_t{1} << 32) + 0x01080001, std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
        store->set("OutputPixelFormat", number);
        EXPECT_EQ(loadFailure<GenICam::OutOfRangeException>(),
                  "The value " + std::to_string(number) +
                      " of parameter OutputPixelFormat is out of range: it must be a number of 32 "
                      "bits.");
    }
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageFormatConverterNode, WordsOfTheNodeMapThatAreNoEnumerationAreRefused) {
    const auto before = node.getOutputPixelFormat();
    using E = GenICam::OutOfRangeException;
    const auto write = [&](const char* name, std::int64_t value) {
        return getFailure<E>([&] { GenApi::CIntegerPtr(parameter(name))->SetValue(value); });
    };
    EXPECT_EQ(write("OutputPixelFormatIntValue", 0x101080001),
              "The value 4312268801 of parameter OutputPixelFormat is out of range: it must be a "
              "number of 32 bits.");
    EXPECT_EQ(write("OutputOrientationIntValue", 7),
              "The value 7 of parameter OutputOrientation is out of range: it must be one of "
              "BottomUp, TopDown, Unchanged.");
    EXPECT_EQ(write("OutputBitAlignmentIntValue", 4294967295),
              "The value 4294967295 of parameter OutputBitAlignment is out of range: it must be "
              "one of LsbAligned, MsbAligned.");
    EXPECT_EQ(node.getOutputPixelFormat(), before);
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageFormatConverterNode, NullStoreIsRefusedWithoutALine) {
    const Utils::LogCapture capture;
    using E = GenICam::InvalidArgumentException;
    EXPECT_EQ(getFailure<E>([this] { node.saveSettings(nullptr); }), "ptrSettings is a nullptr");
    EXPECT_EQ(getFailure<E>([this] { node.loadSettings(nullptr); }), "ptrSettings is a nullptr");
    EXPECT_THAT(capture.getLines(), IsEmpty());
}

TEST_F(ImageFormatConverterNode, RunningNodeIsNeitherLoadedNorSaved) {
    node.start(Core::NodeArgumentCollection());
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([this] { node.saveSettings(store); }),
              "Node must be in stopped state to serialize.");
    EXPECT_EQ(loadFailure<GenICam::RuntimeException>(),
              "Node must be in stopped state to deserialize.");
    node.stop();
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
