// When the pool looks for real cameras, and who waits for them. The real ones are of a layer that
// answers when the test lets it.
#include "host/camerapool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "host/support/gate.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/emulated/layer.h"
#include "orlixdataprocessingcore/utils/log.h"

namespace Orlix::Host {
namespace {

using Testing::Gate;
namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

const Utils::TypeInfo& deviceType() {
    static const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    return type;
}

// One real camera, which can't be had.
class SlowLayer final : public ICameraLayer {
public:
    explicit SlowLayer(Gate& gate) : gate_(gate) {
        info_.SetPropertyValue(Key::DeviceClass, "Real");
    }
    const CInfoBase& GetInfo() const noexcept override { return info_; }
    std::vector<CDeviceInfo> EnumerateDevices() override {
        gate_.wait();
        CDeviceInfo camera;
        camera.SetPropertyValue(Key::DeviceClass, "Real");
        camera.SetPropertyValue(Key::FullName, "Real#1");
        return {camera};
    }
    std::shared_ptr<ICameraDevice> CreateDevice(const CDeviceInfo&) override { return nullptr; }
    void SetDevicesChanged(std::function<void()>) override {}

private:
    Gate& gate_;
    CDeviceInfo info_;
};

// Counts the emissions of the pool.
class Changes {
public:
    explicit Changes(Core::IResourcePool& pool)
        : connection_(pool.getResourcesChangedSignal()->connect([this] {
              const std::scoped_lock lock(mutex_);
              ++count_;
              changed_.notify_all();
          }),
                      true) {}

    void waitFor(int count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return count_ >= count; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
    const Utils::ScopedConnection connection_;
};

class CameraPoolSearch : public testing::Test {
protected:
    ~CameraPoolSearch() override { gate_.open(); }

    std::vector<std::shared_ptr<ICameraLayer>> makeLate() {
        if (searches_++ < failures_) {
            throw GenICam::RuntimeException("No socket.", __FILE__, __LINE__);
        }
        return {std::make_shared<SlowLayer>(gate_)};
    }
    [[nodiscard]] std::vector<std::string> classesOf(
        const Core::IResourcePool::ResourceMap& resources) const {
        std::vector<std::string> classes;
        for (const auto& [info, resource] : resources) {
            classes.push_back(info.GetDeviceClass().str());
        }
        return classes;
    }
    [[nodiscard]] std::vector<std::string> listed() const {
        return classesOf(pool_->getResources(deviceType()));
    }
    [[nodiscard]] std::vector<std::string> find(const char* deviceClass) const {
        Core::ResourceInfo filter;
        filter.SetPropertyValue(Key::DeviceClass, deviceClass);
        return classesOf(pool_->findResources(filter, deviceType()));
    }

    using Names = std::vector<std::string>;
    const Names emulatedOnly_ = {"OrlixEmulated"};
    const Names both_ = {"OrlixEmulated", "Real"};

    Gate gate_;
    std::atomic<int> searches_ = 0;
    int failures_ = 0;
    const std::shared_ptr<Emulated::Layer> emulated_ = std::make_shared<Emulated::Layer>(1);
    std::shared_ptr<CameraPool> pool_ =
        CameraPool::create({CreateCameraLayer(emulated_)}, [this] { return makeLate(); });
};

TEST_F(CameraPoolSearch, EmulatedCamerasThatComeAndGoBeginNoSearch) {
    Changes changes(*pool_);
    emulated_->Unplug(0);
    changes.waitFor(1);
    EXPECT_EQ(listed(), Names());
    emulated_->Plug(0);
    changes.waitFor(2);
    EXPECT_EQ(listed(), emulatedOnly_);
    EXPECT_EQ(searches_, 0);
}

TEST_F(CameraPoolSearch, FindingNothingBeginsNoneEither) {
    EXPECT_EQ(find("Real"), Names());
    EXPECT_EQ(searches_, 0);
}

TEST_F(CameraPoolSearch, RefreshReturnsWithTheListAsItIsAndTheSignalTellsTheRest) {
    Changes changes(*pool_);
    pool_->refreshResources({});
    EXPECT_EQ(listed(), emulatedOnly_);
    gate_.open();
    changes.waitFor(1);
    EXPECT_EQ(listed(), both_);
    pool_->refreshResources({});
    EXPECT_EQ(listed(), both_);
    EXPECT_EQ(searches_, 1);
}

TEST_F(CameraPoolSearch, SearchKeepsNoEmulatedCameraWaiting) {
    Changes changes(*pool_);
    pool_->refreshResources({});
    emulated_->Unplug(0);
    changes.waitFor(1);
    EXPECT_EQ(listed(), Names());
}

TEST_F(CameraPoolSearch, CameraThatIsThereIsFoundAtOnce) {
    pool_->refreshResources({});
    EXPECT_EQ(find("OrlixEmulated"), emulatedOnly_);
}

// Nodes ask under their locks, and some only to know whether a camera is in use.
TEST_F(CameraPoolSearch, WhoAsksForACameraThatIsNotThereDoesNotWait) {
    pool_->refreshResources({});
    EXPECT_EQ(find("Real"), Names());
}

TEST_F(CameraPoolSearch, WhoWaitsHasThemInTheList) {
    EXPECT_FALSE(pool_->waitForRealCameras()) << "nobody looks for them";
    EXPECT_FALSE(pool_->listsRealCameras());
    pool_->refreshResources({});
    EXPECT_FALSE(pool_->listsRealCameras());
    std::thread opener([this] { gate_.open(); });
    EXPECT_TRUE(pool_->waitForRealCameras());
    EXPECT_TRUE(pool_->listsRealCameras());
    EXPECT_EQ(listed(), both_);
    EXPECT_TRUE(pool_->waitForRealCameras());
    opener.join();
}

TEST_F(CameraPoolSearch, WithoutRealCamerasThereIsNothingToWaitFor) {
    const auto pool = CameraPool::create({}, nullptr);
    EXPECT_TRUE(pool->listsRealCameras());
    EXPECT_TRUE(pool->waitForRealCameras());
}

TEST_F(CameraPoolSearch, PoolThatIsMadeForRealCamerasListsThem) {
    gate_.open();
    pool_->lookForRealCameras();
    EXPECT_EQ(listed(), both_);
}

TEST_F(CameraPoolSearch, SearchThatFailsIsToldAndTheNextRefreshBeginsAnother) {
    failures_ = 1;
    gate_.open();
    std::mutex mutex;
    std::vector<std::string> lines;
    Utils::setLogSink([&](const Utils::LogLine& line) {
        const std::scoped_lock lock(mutex);
        lines.push_back(line.text.str());
    });
    pool_->lookForRealCameras();
    Utils::setLogSink(nullptr);
    EXPECT_EQ(lines, Names{"Host: Real cameras can't be looked for. Message: No socket."});
    EXPECT_EQ(listed(), emulatedOnly_);
    pool_->lookForRealCameras();
    EXPECT_EQ(listed(), both_);
    EXPECT_EQ(searches_, 2);
}

TEST_F(CameraPoolSearch, PoolMayEndWhileRealCamerasAreLookedFor) {
    pool_->refreshResources({});
    std::thread opener([this] { gate_.open(); });
    pool_.reset();
    opener.join();
}

// Nothing of it may be left for a thread that nobody waits for: it would end beside the process.
TEST_F(CameraPoolSearch, PoolIsGoneWhenItsOwnerHasLetGo) {
    for (const bool isTelling : {false, true}) {
        bool isGone = false;
        std::shared_ptr<void> end(nullptr, [&isGone](void*) { isGone = true; });
        Gate begun;
        Gate mayGoOn;
        auto pool = CameraPool::create({}, [&, end] {
            std::vector<std::shared_ptr<ICameraLayer>> layers = makeLate();
            if (!isTelling) {
                begun.open();
                mayGoOn.wait();
            }
            return layers;
        });
        end.reset();
        // The refresh below may find them itself.
        static_cast<void>(
            pool->getResourcesChangedSignal()->connect([&, owner = std::this_thread::get_id()] {
                begun.open();
                if (std::this_thread::get_id() != owner) {
                    mayGoOn.wait();
                }
            }));
        gate_.open();
        pool->refreshResources({});
        begun.wait();
        std::thread opener([&] { mayGoOn.open(); });
        pool.reset();
        EXPECT_TRUE(isGone) << isTelling;
        opener.join();
    }
}

// The last one who lets go may be the thread of the search.
TEST_F(CameraPoolSearch, PoolMayEndInTheEmissionOfTheSearch) {
    const auto ended = std::make_shared<Gate>();
    std::shared_ptr<void> end(nullptr, [ended](void*) { ended->open(); });
    auto pool = CameraPool::create({}, [this, end] { return makeLate(); });
    end.reset();
    static_cast<void>(pool->getResourcesChangedSignal()->connect([&] { pool.reset(); }));
    std::shared_ptr<CameraPool>(pool)->refreshResources({});
    gate_.open();
    ended->wait();
}

}  // namespace
}  // namespace Orlix::Host
