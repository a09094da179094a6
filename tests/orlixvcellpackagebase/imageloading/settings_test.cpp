// Getters and setters of ImageLoading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "genapi/genapi.h"
#include "support/imageloadingfixture.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Core = Orlix::DataProcessing::Core;
namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Settings =
    std::tuple<gcstring, SortBy, std::uint64_t, std::uint64_t, std::uint64_t, bool, bool>;

class ImageLoadingSettings : public ImageLoadingFixture {
protected:
    ImageLoadingSettings() {
        connection = node.getSettingsChangedSignal()->connect([this] { ++changes; });
    }

    Settings all() {
        Settings s;
        node.getSettings(std::get<0>(s), std::get<1>(s), std::get<2>(s), std::get<3>(s),
                         std::get<4>(s), std::get<5>(s), std::get<6>(s));
        return s;
    }

    std::string setSettings(const Settings& s) {
        const auto call = [&] {
            node.setSettings(std::get<0>(s), std::get<1>(s), std::get<2>(s), std::get<3>(s),
                             std::get<4>(s), std::get<5>(s), std::get<6>(s));
        };
        return getFailure<GenICam::GenericException>(call);
    }

    GenApi::INode* parameter(const char* name) {
        return node.getNodeMapInfos().at(0).GetNodeMap()->GetNode(name);
    }

    std::shared_ptr<Utils::IConnection> connection;
    int changes = 0;
};

TEST_F(ImageLoadingSettings, InitialValues) {
    EXPECT_EQ(all(), Settings("", Ascending, 1, 1, 1, false, false));
    EXPECT_EQ(node.getSourcePath(), "");
    EXPECT_EQ(node.getSortBy(), Ascending);
    EXPECT_EQ(node.getNumberOfImages(), 1U);
    EXPECT_EQ(node.getFramesPerSecond(), 1U);
    EXPECT_EQ(node.getNumberOfRuns(), 1U);
    EXPECT_FALSE(node.getRunContinuously());
    EXPECT_FALSE(node.getStoreAbsolutePath());
}

TEST_F(ImageLoadingSettings, EverySetterStoresAndNotifiesOnce) {
    node.setSourcePath("x");
    node.setSortBy(Random);
    node.setNumberOfImages(2);
    node.setFramesPerSecond(3);
    node.setNumberOfRuns(4);
    node.setRunContinuously(true);
    node.setStoreAbsolutePath(true);
    EXPECT_EQ(all(), Settings("x", Random, 2, 3, 4, true, true));
    EXPECT_EQ(changes, 7);
}

TEST_F(ImageLoadingSettings, SettersWithThePresentValueNotifyNobody) {
    node.setSourcePath("");
    node.setSortBy(Ascending);
    node.setNumberOfImages(1);
    node.setFramesPerSecond(1);
    node.setNumberOfRuns(1);
    node.setRunContinuously(false);
    node.setStoreAbsolutePath(false);
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageLoadingSettings, BlanksAroundThePathAreDropped) {
    node.setSourcePath(" \t/images and more/ \n");
    EXPECT_EQ(node.getSourcePath(), "/images and more/");
}

TEST_F(ImageLoadingSettings, BlanksAroundTheSamePathCountAsAChange) {
    node.setSourcePath("/images");
    node.setSourcePath("/images");
    EXPECT_EQ(changes, 1);
    node.setSourcePath(" /images ");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(node.getSourcePath(), "/images");
}

TEST_F(ImageLoadingSettings, MaximaOfTheParametersBindTheNodeMapOnly) {
    node.setFramesPerSecond(2000);
    EXPECT_EQ(node.getFramesPerSecond(), 2000U);
    GenApi::CIntegerPtr rate(parameter("FramesPerSecond"));
    EXPECT_THROW(rate->SetValue(501), GenICam::GenericException);
    rate->SetValue(500);
    EXPECT_EQ(node.getFramesPerSecond(), 500U);
}

TEST_F(ImageLoadingSettings, ZeroIsRefusedWithALine) {
    const Utils::LogCapture capture;
    const auto failure = [](auto call) {
        return getFailure<GenICam::InvalidArgumentException>(call);
    };
    EXPECT_EQ(failure([&] { node.setNumberOfImages(0); }),
              "NumberOfImages must be greater than 0.");
    EXPECT_EQ(failure([&] { node.setFramesPerSecond(0); }),
              "FramesPerSecond must be greater than 0.");
    EXPECT_EQ(failure([&] { node.setNumberOfRuns(0); }), "NumberOfRuns must be greater than 0.");
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(
            StartsWith(failureLine("setNumberOfImages", "NumberOfImages must be greater than 0.")),
            StartsWith(
                failureLine("setFramesPerSecond", "FramesPerSecond must be greater than 0.")),
            StartsWith(failureLine("setNumberOfRuns", "NumberOfRuns must be greater than 0."))));
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageLoadingSettings, EverySetterIsRefusedWhileRunning) {
    useThreeImages();
    node.start(Arguments());
    changes = 0;
    const auto before = all();
    const Utils::LogCapture capture;
    const std::string message = "vCell must not be running to set the settings.";
    const auto failure = [](auto call) { return getFailure<GenICam::RuntimeException>(call); };
    EXPECT_EQ(failure([&] { node.setSourcePath("x"); }), message);
    EXPECT_EQ(failure([&] { node.setSortBy(Random); }), message);
    EXPECT_EQ(failure([&] { node.setNumberOfImages(2); }), message);
    EXPECT_EQ(failure([&] { node.setFramesPerSecond(2); }), message);
    EXPECT_EQ(failure([&] { node.setNumberOfRuns(2); }), message);
    EXPECT_EQ(failure([&] { node.setRunContinuously(true); }), message);
    EXPECT_EQ(failure([&] { node.setStoreAbsolutePath(true); }), message);
    EXPECT_EQ(setSettings(Settings("x", Random, 2, 3, 4, true, true)), message);
    const auto line = [&](const char* function) {
        return StartsWith(failureLine(function, message.c_str()));
    };
    EXPECT_THAT(
        getLines(capture, category),
        ElementsAre(line("setSourcePath"), line("setSortBy"), line("setNumberOfImages"),
                    line("setFramesPerSecond"), line("setNumberOfRuns"), line("setRunContinuously"),
                    line("setStoreAbsolutePath"), line("setSettings")));
    node.stop();
    EXPECT_EQ(all(), before);
    EXPECT_EQ(changes, 0);
}

TEST_F(ImageLoadingSettings, RangeIsCheckedBeforeTheState) {
    useThreeImages();
    node.start(Arguments());
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([this] { node.setNumberOfImages(0); }),
              "NumberOfImages must be greater than 0.");
    node.stop();
}

TEST_F(ImageLoadingSettings, AllAtOnceAreStoredWithOneNotification) {
    const Settings settings(" x ", Descending, 2, 3000, 4, true, true);
    EXPECT_EQ(setSettings(settings), "no exception");
    EXPECT_EQ(all(), settings);
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(GenApi::IsWritable(parameter("NumberOfRuns")));
    setSettings(settings);
    EXPECT_EQ(changes, 2);
}

TEST_F(ImageLoadingSettings, AllAtOnceTellEveryParameterAlsoWithoutAChange) {
    std::vector<std::string> told;
    std::vector<std::pair<GenApi::INode*, GenApi::CallbackHandleType>> callbacks;
    for (const char* name : {"SourcePath", "SortBy", "NumberOfImages", "FramesPerSecond",
                             "NumberOfRuns", "RunContinuously", "StoreAbsolutePath"}) {
        callbacks.emplace_back(parameter(name),
                               GenApi::Register(parameter(name), [&told](GenApi::INode* changed) {
                                   told.emplace_back(changed->GetName().str());
                               }));
    }
    const Settings settings("x", Ascending, 1, 1, 1, false, false);
    for (int round = 0; round < 2; ++round) {
        told.clear();
        setSettings(settings);
        EXPECT_THAT(told, ElementsAre("SourcePath", "SortBy", "NumberOfImages", "FramesPerSecond",
                                      "NumberOfRuns", "RunContinuously", "StoreAbsolutePath"));
    }
    for (const auto& [changed, handle] : callbacks) {
        changed->DeregisterCallback(handle);
    }
}

TEST_F(ImageLoadingSettings, AllAtOnceAreCheckedInTheOrderOfTheArguments) {
    const Utils::LogCapture capture;
    EXPECT_EQ(setSettings(Settings("", Ascending, 0, 0, 0, false, false)),
              "Source path must not be empty.");
    EXPECT_EQ(setSettings(Settings("x", Ascending, 0, 0, 0, false, false)),
              "NumberOfImages must be greater than 0.");
    EXPECT_EQ(setSettings(Settings("x", Ascending, 1, 0, 0, false, false)),
              "FramesPerSecond must be greater than 0.");
    EXPECT_EQ(setSettings(Settings("x", Ascending, 1, 1, 0, false, false)),
              "NumberOfRuns must be greater than 0.");
    EXPECT_EQ(all(), Settings("", Ascending, 1, 1, 1, false, false));
    EXPECT_EQ(changes, 0);
    const auto line = [&](const char* message) {
        return StartsWith(failureLine("setSettings", message));
    };
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(line("Source path must not be empty."),
                            line("NumberOfImages must be greater than 0."),
                            line("FramesPerSecond must be greater than 0."),
                            line("NumberOfRuns must be greater than 0.")));
}

TEST_F(ImageLoadingSettings, ChangesReachTheNodeMapAndItsCallbacks) {
    int calls = 0;
    GenApi::INode* number = parameter("NumberOfImages");
    const auto handle = GenApi::Register(number, [&](GenApi::INode*) { ++calls; });
    node.setNumberOfImages(7);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(GenApi::CIntegerPtr(number)->GetValue(), 7);
    GenApi::CIntegerPtr(number)->SetValue(8);
    EXPECT_EQ(node.getNumberOfImages(), 8U);
    number->DeregisterCallback(handle);
}

TEST_F(ImageLoadingSettings, ObserversDoNotRunUnderTheNodesLock) {
    bool owned = true;
    const auto observer = node.getSettingsChangedSignal()->connect(
        [&] { owned = node.getNodeMapInfos().at(0).GetNodeMap()->GetLock().IsOwned(); });
    node.setNumberOfImages(7);
    EXPECT_FALSE(owned);
    owned = true;
    setSettings(Settings("x", Random, 2, 3, 4, true, true));
    EXPECT_FALSE(owned);
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
