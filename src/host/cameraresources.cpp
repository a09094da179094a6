#include "host/cameraresources.h"

#include <atomic>
#include <map>
#include <utility>

#include "host/message.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
#include "orlixcamera/deviceproperties.h"
#include "orlixdataprocessingcore/utils/log.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

class LayerResource final : public Core::ITlResource {
    ORLIX_OBJECT(Core::ITlResource)
};

Utils::CatId getCatIdResources() {
    static const Utils::CatId id = Utils::getCatId("orlix.host.CameraResources");
    return id;
}

// Who holds a camera, known by the object that was given out; kept as long as the camera is there.
struct Holding {
    std::mutex mutex;
    std::weak_ptr<ICameraDevice> device;
};

class DeviceResource final : public Core::IDeviceResource {
    ORLIX_OBJECT(Core::IDeviceResource)

public:
    DeviceResource(std::shared_ptr<ICameraLayer> layer, const CDeviceInfo& info,
                   std::shared_ptr<Holding> holding)
        : layer_(std::move(layer)), info_(info), holding_(std::move(holding)) {}

    std::shared_ptr<ICameraDevice> acquireDevice(bool shared) override {
        const std::scoped_lock lock(holding_->mutex);
        if (auto held = holding_->device.lock()) {
            return shared ? held : nullptr;
        }
        try {
            auto device = layer_->CreateDevice(info_);
            holding_->device = device;
            return device;
        } catch (...) {
            Utils::createLogEntry(Utils::Severitiy::Warning, getCatIdResources(),
                                  "Host: Camera %s can't be acquired. Message: %s",
                                  info_.GetFullName().c_str(), currentMessage().c_str());
            return nullptr;
        }
    }
    bool isUnused() override {
        const std::scoped_lock lock(holding_->mutex);
        return holding_->device.expired();
    }

    [[nodiscard]] const CDeviceInfo& info() const noexcept { return info_; }
    [[nodiscard]] const std::shared_ptr<Holding>& holding() const noexcept { return holding_; }

private:
    const std::shared_ptr<ICameraLayer> layer_;
    const CDeviceInfo info_;
    const std::shared_ptr<Holding> holding_;
};

}  // namespace

// What one layer has, and its resources.
class CameraResources::LayerCameras {
public:
    explicit LayerCameras(std::shared_ptr<ICameraLayer> cameraLayer)
        : layer(std::move(cameraLayer)) {}

    const std::shared_ptr<ICameraLayer> layer;

    void addTo(ResourceMap& resources) {
        Devices found;
        const std::uint64_t look = ++looks;
        const std::vector<CDeviceInfo> infos = layer->EnumerateDevices();
        const std::scoped_lock lock(mutex);
        for (const CDeviceInfo& info : infos) {
            const auto device = resourceFor(info);
            found.emplace(info.GetFullName(), device);
            resources.emplace(Core::ResourceInfo(info), device);
        }
        // An older list than the one that is there must not take a camera from its holder.
        if (look > lookOfDevices) {
            lookOfDevices = look;
            devices.swap(found);
        } else {
            devices.merge(found);  // it may be the only one so far to know a camera
        }
        resources.emplace(Core::ResourceInfo(layer->GetInfo()), resource);
    }

private:
    using Devices = std::map<GenICam::gcstring, std::shared_ptr<DeviceResource>>;

    // A camera that is still there keeps its resource; one that got another name keeps its holder.
    std::shared_ptr<DeviceResource> resourceFor(const CDeviceInfo& info) {
        const auto known = devices.find(info.GetFullName());
        if (known == devices.end()) {
            return std::make_shared<DeviceResource>(layer, info, std::make_shared<Holding>());
        }
        if (HaveSameProperties(known->second->info(), info)) {
            return known->second;
        }
        return std::make_shared<DeviceResource>(layer, info, known->second->holding());
    }

    const std::shared_ptr<LayerResource> resource = std::make_shared<LayerResource>();
    std::mutex mutex;
    Devices devices;  // by full name
    std::uint64_t lookOfDevices = 0;
    std::atomic<std::uint64_t> looks{0};
};

namespace {

template <typename Wrapper>
std::vector<std::shared_ptr<Wrapper>> wrap(std::vector<std::shared_ptr<ICameraLayer>> layers) {
    std::vector<std::shared_ptr<Wrapper>> wrapped;
    wrapped.reserve(layers.size());
    for (auto& layer : layers) {
        wrapped.push_back(std::make_shared<Wrapper>(std::move(layer)));
    }
    return wrapped;
}

void tellFailure(const char* what) noexcept {
    try {
        Utils::createLogEntry(Utils::Severitiy::Error, getCatIdResources(), "Host: %s. Message: %s",
                              what, currentMessage().c_str());
    } catch (...) {
        // There is no memory left to tell of it.
    }
}

}  // namespace

CameraResources::CameraResources(std::vector<std::shared_ptr<ICameraLayer>> layers, LateLayers late)
    : late_(std::move(late)),
      search_(late_ == nullptr ? Search::Done : Search::NotBegun),
      layers_(wrap<LayerCameras>(std::move(layers))) {}

CameraResources::~CameraResources() {
    end();
    if (searcher_.joinable()) {
        searcher_.detach();  // it is this thread
    }
}

void CameraResources::end() {
    {
        const std::scoped_lock beginning(beginning_);
        if (searcher_.joinable() && searcher_.get_id() != std::this_thread::get_id()) {
            searcher_.join();
        }
    }
    for (const auto& layer : getLayers()) {
        layer->layer->SetDevicesChanged({});
    }
}

// Of refreshes that run at once an older list must not reach the pool last: who finds that another
// change of the list has begun since it looked, looks once more.
void CameraResources::refresh(Core::DefaultResourcePool& pool) {
    const auto changesBegun = [this] {
        const std::scoped_lock lock(mutex_);
        return changesBegun_;
    };
    while (true) {
        const std::uint64_t seen = changesBegun();
        const bool hasSearched = isSearchDone();
        const ResourceMap resources = enumerate();
        {
            const std::scoped_lock lock(mutex_);
            if (changesBegun_ != seen) {
                continue;
            }
            ++changesBegun_;
        }
        pool.setResources(resources);
        const std::scoped_lock lock(mutex_);
        if (changesBegun_ == seen + 1) {
            isSearchListed_ = isSearchListed_ || hasSearched;
            return;
        }
    }
}

void CameraResources::watch(const std::shared_ptr<Core::DefaultResourcePool>& pool) {
    pool_ = pool;
    for (const auto& layer : getLayers()) {
        watch(*layer);
    }
}

// Not as a node or a user refreshes: that cameras come and go is no wish for others.
void CameraResources::watch(LayerCameras& layer) {
    // The pool, which owns this, is held while the call uses it.
    layer.layer->SetDevicesChanged([this, weak = pool_] {
        if (const auto strong = weak.lock()) {
            refreshWatched();
        }
    });
}

// The pool may end here, and this with it: nothing may follow.
void CameraResources::refreshWatched() noexcept {
    const auto pool = pool_.lock();
    try {
        if (pool != nullptr) {
            refresh(*pool);
        }
    } catch (...) {
        tellFailure("The list of cameras can't be refreshed");
    }
}

CameraResources::Layers CameraResources::getLayers() {
    const std::scoped_lock lock(mutex_);
    return layers_;
}

void CameraResources::beginSearch() {
    const std::scoped_lock beginning(beginning_);
    {
        const std::scoped_lock lock(mutex_);
        if (search_ != Search::NotBegun) {
            return;
        }
        search_ = Search::UnderWay;
    }
    if (searcher_.joinable()) {
        searcher_.join();  // of a search that has failed
    }
    try {
        searcher_ = std::thread([this] { search(); });
    } catch (...) {
        endSearch(Search::NotBegun);
        tellFailure("Real cameras can't be looked for");
    }
}

bool CameraResources::waitForSearch() {
    std::unique_lock lock(mutex_);
    searchEnded_.wait(lock, [this] { return search_ != Search::UnderWay; });
    return search_ == Search::Done;
}

bool CameraResources::isSearchDone() {
    const std::scoped_lock lock(mutex_);
    return search_ == Search::Done;
}

bool CameraResources::isSearchListed() {
    const std::scoped_lock lock(mutex_);
    return isSearchListed_;
}

// Who waits is told before the pool tells: a slot may take its time.
void CameraResources::search() noexcept {
    try {
        addLateLayers();
    } catch (...) {
        tellFailure("Real cameras can't be looked for");
        endSearch(Search::NotBegun);
        return;
    }
    endSearch(Search::Done);
    refreshWatched();
}

// All of them or none. They are waited for before anybody else lists them: a refresh, which may run
// on the thread that tells of another layer's cameras, must be quick.
void CameraResources::addLateLayers() {
    const Layers late = wrap<LayerCameras>(late_());
    for (const auto& layer : late) {
        static_cast<void>(layer->layer->EnumerateDevices());
        watch(*layer);
    }
    const std::scoped_lock lock(mutex_);
    layers_.insert(layers_.end(), late.begin(), late.end());
}

void CameraResources::endSearch(Search state) noexcept {
    const std::scoped_lock lock(mutex_);
    search_ = state;
    searchEnded_.notify_all();
}

CameraResources::ResourceMap CameraResources::enumerate() {
    ResourceMap resources;
    for (const auto& layer : getLayers()) {
        layer->addTo(resources);
    }
    return resources;
}

}  // namespace Orlix::Host
