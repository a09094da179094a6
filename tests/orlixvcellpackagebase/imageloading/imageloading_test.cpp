#include "orlixvcellpackagebase/imageloading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <system_error>

#include "genapi/genapi.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "support/imageloadingfixture.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class ImageLoadingNode : public ImageLoadingFixture {
protected:
    GenApi::INodeMap& map() { return *node.getNodeMapInfos().at(0).GetNodeMap(); }
    bool isWritable(const char* name) { return GenApi::IsWritable(map().GetNode(name)); }

    std::vector<bool> writabilities() {
        std::vector<bool> flags;
        for (const char* name : {"SourcePath", "SortBy", "NumberOfImages", "FramesPerSecond",
                                 "NumberOfRuns", "RunContinuously", "StoreAbsolutePath"}) {
            flags.push_back(isWritable(name));
        }
        return flags;
    }
};

TEST_F(ImageLoadingNode, HasThreeOutputsAndNoInput) {
    const auto outputs = node.getOutputDescriptors();
    ASSERT_THAT(outputs, SizeIs(3));
    EXPECT_EQ(outputs[0].name, "Image");
    EXPECT_EQ(outputs[0].description, "Loaded image.");
    EXPECT_EQ(outputs[0].type, Utils::TypeInfo::getTypeInfo<Core::Image>(true));
    EXPECT_EQ(outputs[1].name, "ImagePath");
    EXPECT_EQ(outputs[1].description, "Full path of the currently loaded image.");
    EXPECT_EQ(outputs[1].type, Utils::TypeInfo::getTypeInfo<Core::String>(true));
    EXPECT_EQ(outputs[2].name, "RunCount");
    EXPECT_EQ(outputs[2].description, "Number of the current run.");
    EXPECT_EQ(outputs[2].type, Utils::TypeInfo::getTypeInfo<Core::Integer>(true));
    for (const auto& output : outputs) {
        EXPECT_TRUE(output.optional);
        EXPECT_EQ(output.maxJobCount, Core::unlimitedJobs);
    }
    EXPECT_THAT(node.getInputDescriptors(), IsEmpty());
    EXPECT_FALSE(node.isForwardingUpdates());
}

TEST_F(ImageLoadingNode, PublishesOneNodeMap) {
    const auto infos = node.getNodeMapInfos();
    ASSERT_THAT(infos, SizeIs(1));
    EXPECT_EQ(infos[0].GetIdentifier(), "@vCell");
    EXPECT_EQ(infos[0].GetDisplayName(), "Image Loading");
    EXPECT_NE(infos[0].GetNodeMap()->GetNode("Root"), nullptr);
    EXPECT_NE(node.getNodeMapsChangedSignal(), nullptr);
}

TEST_F(ImageLoadingNode, IsRegisteredUnderItsFullName) {
    const Utils::TypeInfo type = node.getTypeInfo(true);
    EXPECT_EQ(type.getIdentifier(), "Plugin::OrlixVCellPackageBase::ImageLoading");
    EXPECT_TRUE(type.canConvert(Utils::TypeInfo::getTypeInfo<Core::AdvancedNode>(true)));
    EXPECT_TRUE(type.canConvert(Utils::TypeInfo::getTypeInfo<Core::INodeMapContainer>(true)));
    Core::INode& base = node;
    EXPECT_EQ(base.getRawPointer(), &node);
    EXPECT_EQ(Utils::object_cast<Core::INodeMapContainer>(&base), &node);
}

TEST_F(ImageLoadingNode, StartWithoutSourcePathFailsWithOneLine) {
    const Utils::LogCapture capture;
    EXPECT_EQ(startFailure(), "No image source path was specified.");
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(StartsWith(failureLine("onStarting", "No image source path was specified."))));
    EXPECT_EQ(static_cast<Core::INode&>(node).getState(), Core::NodeState::Stopped);
    EXPECT_THAT(writabilities(), ElementsAre(true, true, true, true, true, true, true));
}

TEST_F(ImageLoadingNode, FailureCarriesTheSourceFileOfItsLine) {
    const Utils::LogCapture capture;
    try {
        node.start(Arguments());
        FAIL();
    } catch (const GenICam::RuntimeException& exception) {
        EXPECT_STREQ(exception.GetSourceFileName(),
                     "src/plugins/orlixvcellpackagebase/imageloading/imageloading.cpp");
        EXPECT_THAT(
            getLines(capture, category),
            ElementsAre(testing::EndsWith(" (" + std::string(exception.GetSourceFileName()) + ":" +
                                          std::to_string(exception.GetSourceLine()) + ")")));
    }
}

TEST_F(ImageLoadingNode, StartWithoutImagesFailsWithOneLine) {
    folder.addFile("x.txt");
    const Utils::LogCapture capture;
    for (const std::string& path : {folder / "absent", folder / "x.txt", folder.path().string()}) {
        node.setSourcePath(path.c_str());
        EXPECT_EQ(startFailure(), "No images found in specified image source path.") << path;
    }
    const auto line =
        StartsWith(failureLine("onStarting", "No images found in specified image source path."));
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line, line));
    EXPECT_TRUE(isWritable("SourcePath"));
}

TEST_F(ImageLoadingNode, FileSystemErrorFailsTheStart) {
    std::filesystem::create_symlink(folder / "loop.png", folder / "loop.png");
    node.setSourcePath((folder / "loop.png").c_str());
    EXPECT_THROW(node.start(Arguments()), std::filesystem::filesystem_error);
    EXPECT_EQ(static_cast<Core::INode&>(node).getState(), Core::NodeState::Stopped);
    EXPECT_TRUE(isWritable("SourcePath"));
}

TEST_F(ImageLoadingNode, SingleFrameEmitsOneSetWhateverTheRuns) {
    useThreeImages();
    node.setNumberOfImages(3);
    node.setNumberOfRuns(5);
    node.setRunContinuously(true);
    runToEnd(acquisitionMode("SingleFrame"));
    EXPECT_THAT(paths(), ElementsAre("a.png"));
    EXPECT_THAT(widths(), ElementsAre(1U));
    EXPECT_THAT(runs(), ElementsAre(1));
    EXPECT_THAT(clock->sleeps(), IsEmpty());
}

TEST_F(ImageLoadingNode, OtherAcquisitionModesAreLikeNone) {
    useThreeImages();
    node.setNumberOfRuns(2);
    const Utils::LogCapture capture;
    for (const char* mode : {"Continuous", "singleframe", ""}) {
        runToEnd(acquisitionMode(mode));
    }
    runToEnd();
    EXPECT_THAT(paths(), SizeIs(8));
    EXPECT_THAT(getLines(capture, category), IsEmpty());
}

TEST_F(ImageLoadingNode, AcquisitionModeOfAnotherTypeIsLoggedAndIgnored) {
    useThreeImages();
    node.setNumberOfRuns(2);
    const std::string line = "4 ImageLoading " + toText(&node) +
                             ": Argument \"AcquisitionMode\" is not of type \"String\" or invalid "
                             "and is therefore ignored.";
    const Utils::LogCapture capture;
    Arguments arguments;
    arguments.setArgument("AcquisitionMode", Variant(Integer(1)));
    runToEnd(arguments);
    arguments.setArgument("AcquisitionMode", Variant());
    runToEnd(arguments);
    EXPECT_THAT(paths(), SizeIs(4));
    EXPECT_THAT(getLines(capture, category), ElementsAre(line, line));
}

TEST_F(ImageLoadingNode, ParametersAreReadOnlyUntilTheHostStops) {
    useThreeImages();
    node.start(Arguments());
    EXPECT_THAT(writabilities(), ElementsAre(false, false, false, false, false, false, true));
    clock->waitForWorkerEnd();
    EXPECT_FALSE(isWritable("SourcePath"));
    EXPECT_NE(static_cast<Core::INode&>(node).getState(), Core::NodeState::Stopped);
    node.stop();
    EXPECT_THAT(writabilities(), ElementsAre(true, true, true, true, true, true, true));
}

TEST_F(ImageLoadingNode, NumberOfRunsIsReadOnlyWhileRunningContinuously) {
    node.setRunContinuously(true);
    EXPECT_FALSE(isWritable("NumberOfRuns"));
    node.setRunContinuously(false);
    EXPECT_TRUE(isWritable("NumberOfRuns"));
}

TEST_F(ImageLoadingNode, NumberOfRunsStaysReadOnlyAfterAContinuousRun) {
    useThreeImages();
    node.setRunContinuously(true);
    runToEnd(acquisitionMode("SingleFrame"));
    EXPECT_THAT(writabilities(), ElementsAre(true, true, true, true, false, true, true));
}

TEST_F(ImageLoadingNode, StoreAbsolutePathLooksWritableDuringARunButRefuses) {
    useThreeImages();
    node.start(Arguments());
    GenApi::CBooleanPtr parameter(map().GetNode("StoreAbsolutePath"));
    EXPECT_TRUE(GenApi::IsWritable(parameter));
    EXPECT_EQ(getFailure<GenICam::RuntimeException>([&] { parameter->SetValue(true); }),
              "vCell must not be running to set the settings.");
    EXPECT_FALSE(parameter->GetValue());
    node.stop();
}

TEST_F(ImageLoadingNode, SecondStartBeginsAnewWithANewList) {
    useThreeImages();
    node.setNumberOfImages(10);
    node.setNumberOfRuns(2);
    runToEnd();
    EXPECT_THAT(runs(), ElementsAre(1, 1, 1, 2, 2, 2));
    std::filesystem::remove(folder / "a.png");
    folder.addImage("d.png", 4);
    runToEnd(acquisitionMode("SingleFrame"));
    runToEnd();
    EXPECT_THAT(paths(), ElementsAre("a.png", "b.png", "c.png", "a.png", "b.png", "c.png", "b.png",
                                     "b.png", "c.png", "d.png", "b.png", "c.png", "d.png"));
    EXPECT_THAT(runs(), ElementsAre(1, 1, 1, 2, 2, 2, 1, 1, 1, 1, 2, 2, 2));
}

TEST_F(ImageLoadingNode, ValuesOfOneTurnShareAnUpdate) {
    useThreeImages();
    node.setNumberOfImages(2);
    runToEnd();
    EXPECT_EQ(imageSink->updates(), pathSink->updates());
    EXPECT_EQ(imageSink->updates(), runSink->updates());
    ASSERT_THAT(imageSink->updates(), SizeIs(2));
    EXPECT_NE(imageSink->updates()[0], imageSink->updates()[1]);
    EXPECT_EQ(imageSink->updates()[0]->getParent(), nullptr);
}

// Gives new threads stacks beyond the address space, so that none can be made.
class WithoutThreads {
public:
    WithoutThreads() {
        EXPECT_EQ(::pthread_getattr_default_np(&before_), 0);
        pthread_attr_t huge;
        EXPECT_EQ(::pthread_attr_init(&huge), 0);
        EXPECT_EQ(::pthread_attr_setstacksize(&huge, std::size_t{1} << 56U), 0);
        EXPECT_EQ(::pthread_setattr_default_np(&huge), 0);
        EXPECT_EQ(::pthread_attr_destroy(&huge), 0);
    }
    ~WithoutThreads() {
        EXPECT_EQ(::pthread_setattr_default_np(&before_), 0);
        EXPECT_EQ(::pthread_attr_destroy(&before_), 0);
    }
    WithoutThreads(const WithoutThreads&) = delete;
    WithoutThreads& operator=(const WithoutThreads&) = delete;

private:
    pthread_attr_t before_{};
};

TEST_F(ImageLoadingNode, WithoutAThreadTheStartFailsAndParametersStayReadOnlyUntilTheNextStop) {
    useThreeImages();
    std::error_code error;
    {
        const WithoutThreads none;
        error = getErrorCode([&] { node.start(Arguments()); });
    }
    EXPECT_EQ(error, std::errc::resource_unavailable_try_again);
    EXPECT_EQ(static_cast<Core::INode&>(node).getState(), Core::NodeState::Stopped);
    EXPECT_THAT(writabilities(), ElementsAre(false, false, false, false, false, false, true));
    runToEnd(acquisitionMode("SingleFrame"));
    EXPECT_THAT(paths(), ElementsAre("a.png"));
    EXPECT_THAT(writabilities(), ElementsAre(true, true, true, true, true, true, true));
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
