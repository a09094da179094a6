// Runs with --frames whose outputs come at different rates: cameras with few buffers give a frame
// each time that the test asks for one.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

#include "genapi/inodemap.h"
#include "genapi/pointer.h"
#include "host/support/recipes.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/outputsink.h"
#include "orlixdataprocessingcore/graph/graph.h"
#include "orlixhost/package.h"
#include "orlixhost/recipegraph.h"
#include "orlixhost/resourcepool.h"
#include "orlixhost/runner.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;

// Counts the values of a pin, beside the run. While it is full the node behind it waits.
class Counter final : public Core::IOutputSink {
public:
    void put(const std::shared_ptr<Core::IGraphUpdate>&,
             const DataProcessing::Utils::Variant&) override {
        const std::scoped_lock lock(mutex_);
        ++count_;
        changed_.notify_all();
    }
    void skip(const std::shared_ptr<Core::IGraphUpdate>&) override {}
    bool hasSpace() const override {
        const std::scoped_lock lock(mutex_);
        return !isFull_;
    }
    void setSpaceListener(const std::weak_ptr<Core::ISpaceListener>& listener) override {
        const std::scoped_lock lock(mutex_);
        listener_ = listener;
    }

    // False if they don't come: whoever fails should not hang.
    [[nodiscard]] bool waitFor(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(60), [&] { return count_ >= count; });
    }
    void setFull(bool isFull) {
        std::shared_ptr<Core::ISpaceListener> listener;
        {
            const std::scoped_lock lock(mutex_);
            isFull_ = isFull;
            listener = listener_.lock();
        }
        if (!isFull && listener != nullptr) {
            listener->onSpaceAvailable();
        }
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::weak_ptr<Core::ISpaceListener> listener_;
    int count_ = 0;
    bool isFull_ = false;
};

class LimitedRun : public testing::Test {
protected:
    LimitedRun() {
        packages_.add(Package::load(Testing::packageFile()));
        packages_.add(Package::load(Testing::testPackage("testnodes")));
    }

    [[nodiscard]] static std::string camera(const std::string& name) {
        return R"({"name": ")" + name + R"(", "type": "Camera", "settings": {"FeatureStreams": {
            "@StreamGrabber0": "MaxNumBuffer\t4\n",
            "@CameraDevice": "Width\t64\nHeight\t64\nTriggerSelector\tFrameStart\nTriggerMode\tOn\nTriggerSource\tSoftware\n"}}})";
    }
    void open(const std::string& nodes, const std::string& connections) {
        CameraOptions cameras;
        cameras.emulatedCameras = 2;
        cameras.realCameras = RealCameras::LeftOut;
        graph_ = std::make_unique<RecipeGraph>(
            Recipe::parse(R"({"version": 1, "nodes": [)" + nodes + R"(], "connections": [)" +
                              connections + "]}",
                          "r.json", {}),
            packages_, createResourcePool(cameras));
        graph_->connect();
    }
    [[nodiscard]] std::shared_ptr<Counter> count(const char* node,
                                                 const char* pin = "Image") const {
        auto counter = std::make_shared<Counter>();
        graph_->graph().attachSink(node, pin, counter);
        return counter;
    }
    void trigger(const char* camera) const {
        const auto node = graph_->graph().getNode(camera);
        auto& maps = dynamic_cast<Core::INodeMapContainer&>(*node);
        for (const Core::NodeMapInfo& info : maps.getNodeMapInfos()) {
            if (info.GetIdentifier() == "@CameraDevice") {
                GenApi::CCommandPtr(info.GetNodeMap()->GetNode("TriggerSoftware"))->Execute();
            }
        }
    }
    // One frame after another.
    [[nodiscard]] bool grab(const char* camera, Counter& counter, int count) const {
        for (int frame = 1; frame <= count; ++frame) {
            trigger(camera);
            if (!counter.waitFor(frame)) {
                ADD_FAILURE() << camera << " stands still behind frame " << frame - 1;
                return false;
            }
        }
        return true;
    }
    // What happens in the run; false ends it.
    void run(std::uint64_t frames, const std::function<bool()>& script) {
        RunOptions options;
        options.frames = frames;
        Runner runner(*graph_, options);
        RunObserver observer;
        observer.onStarted = [&] {
            if (!script()) {
                runner.requestStop();
            }
        };
        for (const OutputReport& output : runner.run(observer).outputs) {
            frames_[output.node] = output.frames;
        }
    }

    PackageList packages_;
    std::unique_ptr<RecipeGraph> graph_;
    std::map<std::string, std::uint64_t> frames_;
};

TEST_F(LimitedRun, AnotherCameraIsNotHeldUpByTheCountedOne) {
    open(camera("Counted") + ", " + camera("Fast"), "");
    const auto counted = count("Counted");
    const auto fast = count("Fast");
    run(2, [&] { return grab("Fast", *fast, 30) && grab("Counted", *counted, 2); });
    EXPECT_EQ(frames_, (std::map<std::string, std::uint64_t>{{"Counted", 2}, {"Fast", 30}}));
}

// Nor is a node behind it, which has no frames of its own.
TEST_F(LimitedRun, NodeBehindAnotherCameraIsNotHeldUpEither) {
    open(camera("Counted") + ", " + camera("Fast") +
             R"(, {"name": "Converter", "type": "ImageFormatConverter"})",
         R"({"from": "Fast.Image", "to": "Converter.Image"})");
    const auto counted = count("Counted");
    const auto converted = count("Converter");
    run(2, [&] { return grab("Fast", *converted, 30) && grab("Counted", *counted, 2); });
    EXPECT_EQ(frames_, (std::map<std::string, std::uint64_t>{{"Counted", 2}, {"Converter", 30}}));
}

// An input that keeps its value brings no updates: the node's are those of the other input.
TEST_F(LimitedRun, NodeThatKeepsAnImageOfTheCountedCameraIsNotHeldUpByIt) {
    constexpr int many = 2000;  // more than wait for a counted pin
    open(camera("Camera") + R"(, {"name": "Counted", "type": "ImageFormatConverter"},
             {"name": "Numbers", "type": "ValueSource", "settings": {"count": 2000}},
             {"name": "Beside", "type": "Beside"})",
         R"({"from": "Camera.Image", "to": "Counted.Image"},
            {"from": "Camera.Image", "to": "Beside.Image"},
            {"from": "Numbers.Number", "to": "Beside.Number"})");
    const auto counted = count("Counted");
    const auto numbers = count("Beside", "Number");
    run(2, [&] { return numbers->waitFor(many) && grab("Camera", *counted, 2); });
    EXPECT_EQ(frames_["Counted"], 2U);
    EXPECT_EQ(frames_["Beside"], std::uint64_t{many});
}

TEST_F(LimitedRun, ValuesOfTheCountedCameraBehindTheLastFrameAreNoPartOfTheResult) {
    open(camera("Camera") + R"(, {"name": "Counted", "type": "ImageFormatConverter"},
                                {"name": "Fast", "type": "ImageFormatConverter"})",
         R"({"from": "Camera.Image", "to": "Counted.Image"},
            {"from": "Camera.Image", "to": "Fast.Image"})");
    const auto counted = count("Counted");
    const auto fast = count("Fast");
    counted->setFull(true);
    run(1, [&] {
        const bool isAhead = grab("Camera", *fast, 2);
        counted->setFull(false);
        return isAhead && counted->waitFor(1);
    });
    EXPECT_EQ(frames_, (std::map<std::string, std::uint64_t>{{"Counted", 1}, {"Fast", 1}}));
}

}  // namespace
}  // namespace Orlix::Host
