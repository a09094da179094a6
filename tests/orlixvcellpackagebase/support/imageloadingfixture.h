// An ImageLoading node with a folder of its own, a clock that stands still and a recorder at each
// pin.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "orlixdataprocessingcore/core/handle.h"
#include "orlixdataprocessingcore/core/image.h"
#include "orlixdataprocessingcore/core/integer.h"
#include "orlixdataprocessingcore/core/nodearguments.h"
#include "orlixdataprocessingcore/core/string.h"
#include "orlixvcellpackagebase/imageloading.h"
#include "support/fakeframeclock.h"
#include "support/recordingsink.h"
#include "support/temporaryfolder.h"
#include "support/texts.h"

namespace Plugin::OrlixVCellPackageBase {

class ImageLoadingFixture : public testing::Test {
protected:
    using Image = Orlix::DataProcessing::Core::Image;
    using Integer = Orlix::DataProcessing::Core::Integer;
    using String = Orlix::DataProcessing::Core::String;
    using Arguments = Orlix::DataProcessing::Core::NodeArgumentCollection;
    using Variant = Orlix::DataProcessing::Utils::Variant;

    static constexpr auto category = "orlix.dataprocessing.vcell.ImageLoading";

    ~ImageLoadingFixture() override { clock->permit(FakeFrameClock::noLimit); }

    // Three pictures, 1, 2 and 3 pixels wide, in a folder that the node reads.
    void useThreeImages() {
        folder.addImage("a.png", 1);
        folder.addImage("b.png", 2);
        folder.addImage("c.png", 3);
        node.setSourcePath(folder.path().c_str());
    }

    static Arguments acquisitionMode(const char* mode) {
        Arguments arguments;
        arguments.setArgument("AcquisitionMode", Variant(String(gcstring(mode))));
        return arguments;
    }

    // Lets the node run to its natural end, then stops it.
    void runToEnd(const Arguments& arguments = Arguments()) {
        node.start(arguments);
        clock->waitForWorkerEnd();
        node.stop();
    }

    std::string startFailure() {
        return getFailure<GenICam::RuntimeException>([this] { node.start(Arguments()); });
    }

    // The line of a failed operation; its last part is the place in the source.
    [[nodiscard]] std::string failureLine(const char* function, const char* message) const {
        return "3 ImageLoading " + toText(&node) +
               ": Plugin::OrlixVCellPackageBase::ImageLoading::" + function +
               " failed. Message: \"" + message + "\" (src/plugins/orlixvcellpackagebase/";
    }

    // Names of the files that went out, without their folder.
    [[nodiscard]] std::vector<std::string> paths() const {
        std::vector<std::string> names;
        for (const Variant& value : pathSink->values()) {
            names.push_back(std::filesystem::path(value.get<String>(true)->get().c_str())
                                .lexically_relative(folder.path())
                                .string());
        }
        return names;
    }

    [[nodiscard]] std::vector<std::uint32_t> widths() const {
        std::vector<std::uint32_t> widths;
        for (const Variant& value : imageSink->values()) {
            widths.push_back(value.get<Image>(true)->getWidth());
        }
        return widths;
    }

    [[nodiscard]] std::vector<std::int64_t> runs() const {
        std::vector<std::int64_t> runs;
        for (const Variant& value : runSink->values()) {
            runs.push_back(value.get<Integer>(true)->get());
        }
        return runs;
    }

private:
    std::shared_ptr<RecordingSink> attachSink(const char* pin) {
        auto sink = std::make_shared<RecordingSink>();
        handles.push_back(node.attachOutputSink(pin, sink));
        return sink;
    }

    std::vector<std::shared_ptr<Orlix::DataProcessing::Core::IHandle>> handles;

protected:
    const TemporaryFolder folder;
    const std::shared_ptr<FakeFrameClock> clock = std::make_shared<FakeFrameClock>();
    ImageLoading node{nullptr, clock};
    const std::shared_ptr<RecordingSink> imageSink = attachSink("Image");
    const std::shared_ptr<RecordingSink> pathSink = attachSink("ImagePath");
    const std::shared_ptr<RecordingSink> runSink = attachSink("RunCount");
};

}  // namespace Plugin::OrlixVCellPackageBase
