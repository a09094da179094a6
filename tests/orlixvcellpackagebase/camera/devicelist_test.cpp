// The pool's devices as Camera shows them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <limits>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "gcbase/gcexception.h"
#include "support/camerafixture.h"

namespace Plugin::OrlixVCellPackageBase {
namespace {

namespace Utils = Orlix::DataProcessing::Utils;
using testing::ElementsAre;
using testing::IsEmpty;

const auto first = makeInfo({{"ModelName", "A"},
                             {"SerialNumber", "1"},
                             {"UserDefinedName", "left"},
                             {"VendorName", "Tarvek"}});
const auto second = makeInfo({{"ModelName", "B"}, {"SerialNumber", "2"}});

class CameraDeviceList : public CameraFixture {
protected:
    [[nodiscard]] std::vector<std::string> shown() {
        return {text("DeviceModelName"), text("DeviceVendorName"), text("DeviceSerialNumber"),
                text("DeviceUserDefinedName")};
    }
};

TEST_F(CameraDeviceList, WithoutCamerasItsPortsAreUnavailableAndTheSelectorKeepsItsMaximum) {
    for (const char* name : {"DeviceSelector", "DeviceModelName", "DeviceVendorName",
                             "DeviceSerialNumber", "DeviceUserDefinedName", "DeviceChoose"}) {
        EXPECT_FALSE(isAvailable(name)) << name;
    }
    // The port's own number; the feature that is not available hides it.
    EXPECT_EQ(number("DeviceSelectorMax"), std::numeric_limits<std::int64_t>::max());
    resources.add(first);
    resources.add(second);
    EXPECT_EQ(maximum("DeviceSelector"), 1);
    resources.pool->setResources({});
    EXPECT_FALSE(isAvailable("DeviceSelector"));
    EXPECT_EQ(number("DeviceSelectorMax"), 1);
    resources.add(first);
    EXPECT_EQ(maximum("DeviceSelector"), 0);
}

TEST_F(CameraDeviceList, IsFilledBeforeTheFirstAccess) {
    resources.add(first);
    EXPECT_TRUE(isAvailable("DeviceSelector"));
    EXPECT_THAT(shown(), ElementsAre("A", "Tarvek", "1", "left"));
    EXPECT_EQ(resources.refreshes, 0);
}

TEST_F(CameraDeviceList, AMissingPropertyIsAnEmptyText) {
    resources.add(second);
    EXPECT_THAT(shown(), ElementsAre("B", "", "2", ""));
}

TEST_F(CameraDeviceList, FollowsTheSelectorInThePoolsOrder) {
    resources.add(second);
    resources.add(first);
    setNumber("DeviceSelector", 1);
    EXPECT_THAT(shown(), ElementsAre("B", "", "2", ""));
    setNumber("DeviceSelector", 0);
    EXPECT_THAT(shown(), ElementsAre("A", "Tarvek", "1", "left"));
}

TEST_F(CameraDeviceList, ASelectorBeyondTheListShowsThatNoDeviceIsListed) {
    resources.add(first);
    node().setDeviceSelector(7);
    EXPECT_EQ(node().getDeviceSelector(), 7U);
    EXPECT_THAT(shown(), ElementsAre("No device listed", "No device listed", "No device listed",
                                     "No device listed"));
}

TEST_F(CameraDeviceList, EveryChangeOfThePoolFallsBackToTheFirstDevice) {
    resources.add(first);
    resources.add(second);
    setNumber("DeviceSelector", 1);
    resources.add(makeInfo({{"ModelName", "C"}}));
    EXPECT_EQ(number("DeviceSelector"), 0);
    EXPECT_EQ(maximum("DeviceSelector"), 2);
    EXPECT_THAT(shown(), ElementsAre("A", "Tarvek", "1", "left"));
}

TEST_F(CameraDeviceList, AnUpdateShowsBeforeTheCommandReturns) {
    resources.onRefresh = [](CountingPool::Pool& pool) {
        pool.addResource(first, std::make_shared<TestDeviceResource>());
    };
    execute("DeviceListUpdate");
    EXPECT_EQ(resources.refreshes, 1);
    EXPECT_TRUE(isAvailable("DeviceChoose"));
    EXPECT_THAT(shown(), ElementsAre("A", "Tarvek", "1", "left"));
}

TEST_F(CameraDeviceList, AFailingUpdateIsOnlyLogged) {
    static_cast<void>(node());
    const Utils::LogCapture capture;
    resources.onRefresh = [](CountingPool::Pool&) {
        throw GenICam::RuntimeException("layer", __FILE__, __LINE__);
    };
    execute("DeviceListUpdate");
    resources.onRefresh = [](CountingPool::Pool&) { throw std::runtime_error("driver"); };
    execute("DeviceListUpdate");
    resources.onRefresh = [](CountingPool::Pool&) { throw 1; };
    execute("DeviceListUpdate");
    const std::string start = "4 Camera " + toText(&node());
    EXPECT_THAT(getLines(capture, category),
                ElementsAre(start + ": Exception caught while updating resources. Message: layer",
                            start + ": Exception caught while updating resources. Message: driver",
                            start + ": Unknown exception caught while updating resources."));
}

TEST_F(CameraDeviceList, ANodeIsDestroyedWithItsSubscription) {
    static_cast<void>(node());
    const auto held = node().getNodeMapsChangedSignal();
    EXPECT_EQ(resources.pool->getResourcesChangedSignal()->size(), 1U);
    destroyNode();
    EXPECT_EQ(resources.pool->getResourcesChangedSignal()->size(), 0U);
    resources.add(first);
}

TEST_F(CameraDeviceList, AChangeWhileAnotherThreadHoldsTheLockIsServedLaterAndNotWaitedFor) {
    static_cast<void>(node());
    std::promise<void> shownOnce;
    GenApi::INode* selector = feature("DeviceSelector");
    const auto handle = GenApi::Register(
        selector,
        [&, done = false](GenApi::INode*) mutable {
            if (!std::exchange(done, true)) {
                shownOnce.set_value();
            }
        },
        GenApi::cbPostOutsideLock);
    {
        const GenApi::AutoLock guard(map().GetLock());
        std::thread([&] { resources.add(first); }).join();  // would never end if it waited
        EXPECT_FALSE(isAvailable("DeviceSelector"));
    }
    shownOnce.get_future().wait();
    // The callback comes with the first of the changes; the lock is free once all are made.
    const GenApi::AutoLock guard(map().GetLock());
    EXPECT_TRUE(isAvailable("DeviceSelector"));
    GenApi::Deregister(selector, handle);
}

TEST_F(CameraDeviceList, TwoNodesThatRefreshAtOnceNeverLockEachOther) {
    Camera other(resources.pool);
    std::atomic<int> serial{0};
    resources.onRefresh = [&](CountingPool::Pool& pool) {
        pool.addResource(makeInfo({{"SerialNumber", std::to_string(++serial).c_str()}}),
                         std::make_shared<TestDeviceResource>());
    };
    // The other node's last device may come to the list a little after both have ended.
    std::promise<void> complete;
    GenApi::INode* selector = feature("DeviceSelector");
    const auto handle = GenApi::Register(
        selector,
        [&, once = std::make_shared<std::once_flag>()](GenApi::INode*) {
            if (maximum("DeviceSelector") == 399) {
                std::call_once(*once, [&] { complete.set_value(); });
            }
        },
        GenApi::cbPostOutsideLock);
    const auto refresh = [](Camera& camera) {
        for (int i = 0; i < 200; ++i) {
            camera.executeDeviceListUpdate();
        }
    };
    std::thread thread([&] { refresh(other); });
    refresh(node());
    thread.join();
    complete.get_future().wait();
    GenApi::Deregister(selector, handle);
}

TEST_F(CameraDeviceList, ANodeMayBeDestroyedInAnEmission) {
    auto doomed = std::make_unique<Camera>(resources.pool);
    const auto connection =
        resources.pool->getResourcesChangedSignal()->connect([&] { doomed.reset(); });
    Camera after(resources.pool);
    resources.add(first);
    EXPECT_EQ(doomed, nullptr);
    EXPECT_EQ(resources.pool->getResourcesChangedSignal()->size(), 2U);
    connection->disconnect();
}

TEST_F(CameraDeviceList, DeviceDataHasLayersAndDevicesInThePoolsOrder) {
    const auto used = resources.add(second);
    resources.add(first);
    resources.pool->addResource(makeInfo({{"DeviceClass", "Layer"}}),
                                std::make_shared<TestLayerResource>());
    used->unused = false;
    const DeviceData data = node().getCameraDeviceData();
    EXPECT_EQ(resources.refreshes, 1);
    ASSERT_EQ(data.transportLayers.size(), 1U);
    EXPECT_EQ(data.transportLayers[0].GetDeviceClass(), "Layer");
    ASSERT_EQ(data.devices.size(), 2U);
    EXPECT_TRUE(data.devices[0].info.IsSubset(first));
    EXPECT_FALSE(data.devices[0].inUse);
    EXPECT_TRUE(data.devices[1].info.IsSubset(second));
    EXPECT_TRUE(data.devices[1].inUse);
}

TEST_F(CameraDeviceList, DeviceDataRefusesADeviceThatIsNotUnique) {
    resources.add(makeInfo({{"ModelName", "A"}}));
    resources.add(first);
    EXPECT_EQ(getFailure<GenICam::RuntimeException>(
                  [&] { static_cast<void>(node().getCameraDeviceData()); }),
              "Device not found in ResourcePool or Device is not unique");
}

// A pool that fails where a node is being made.
class FailingPool final : public Orlix::DataProcessing::Core::DefaultResourcePool {
public:
    ResourceMap getResources(const Utils::TypeInfo& /*type*/) override {
        throw std::runtime_error("no list");
    }
};

TEST(CameraConstruction, AFailureEndsTheSubscriptionFirst) {
    const auto pool = std::make_shared<FailingPool>();
    EXPECT_EQ(getFailure<std::runtime_error>([&] { const Camera camera(pool); }), "no list");
    EXPECT_EQ(pool->getResourcesChangedSignal()->size(), 0U);
    pool->addResource(first, std::make_shared<TestDeviceResource>());
}

// A pool whose list changes while a node is being made.
class RestlessPool final : public Orlix::DataProcessing::Core::DefaultResourcePool {
public:
    std::shared_ptr<Utils::ISignal<void()>> getResourcesChangedSignal() override { return signal_; }
    std::shared_ptr<Orlix::DataProcessing::Threading::IThreadPool> getThreadPool() override {
        return withoutThreads ? nullptr : DefaultResourcePool::getThreadPool();
    }

    bool withoutThreads = false;

private:
    // Emits at once when somebody connects.
    class EagerSignal final : public Utils::ISignal<void()> {
    public:
        std::shared_ptr<Utils::IConnection> connect(std::function<void()> slot,
                                                    const Utils::Trackables& trackables) override {
            auto connection = inner_.connect(std::move(slot), trackables);
            inner_();
            return connection;
        }
        bool empty() const override { return inner_.empty(); }
        std::size_t size() const override { return inner_.size(); }

    private:
        Utils::Signal<void()> inner_;
    };

    std::shared_ptr<EagerSignal> signal_ = std::make_shared<EagerSignal>();
};

TEST(CameraConstruction, AnEmissionBeforeTheParametersAreThereChangesNothing) {
    const auto pool = std::make_shared<RestlessPool>();
    pool->addResource(first, std::make_shared<TestDeviceResource>());
    Camera camera(pool);
    EXPECT_EQ(camera.getDeviceSelector(), 0U);
    const auto maps = camera.getNodeMapInfos();
    EXPECT_TRUE(GenApi::IsAvailable(maps[0].GetNodeMap()->GetNode("DeviceSelector")));
}

TEST(CameraConstruction, NeedsAThreadPool) {
    const auto pool = std::make_shared<RestlessPool>();
    pool->withoutThreads = true;
    const Utils::LogCapture capture;
    EXPECT_EQ(getFailure<GenICam::InvalidArgumentException>([&] { const Camera camera(pool); }),
              "ThreadPool must not be nullptr");
    EXPECT_THAT(getLines(capture, "orlix.dataprocessing.vcell.Camera"), IsEmpty());
}

}  // namespace
}  // namespace Plugin::OrlixVCellPackageBase
