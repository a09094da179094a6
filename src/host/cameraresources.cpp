#include "host/cameraresources.h"

#include <map>
#include <utility>

#include "host/message.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/cameralayer.h"
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
    DeviceResource(std::shared_ptr<ICameraLayer> layer, CDeviceInfo info,
                   std::shared_ptr<Holding> holding)
        : layer_(std::move(layer)), info_(std::move(info)), holding_(std::move(holding)) {}

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

bool isSame(const CInfoBase& first, const CInfoBase& second) {
    return first.IsSubset(second) && second.IsSubset(first);
}

}  // namespace

class CameraResources::Layer {
public:
    explicit Layer(std::shared_ptr<ICameraLayer> cameraLayer) : layer(std::move(cameraLayer)) {}

    const std::shared_ptr<ICameraLayer> layer;

    void addTo(ResourceMap& resources) {
        Devices found;
        const std::vector<CDeviceInfo> infos = layer->EnumerateDevices();
        const std::scoped_lock lock(mutex);
        for (const CDeviceInfo& info : infos) {
            const auto device = resourceFor(info);
            found.emplace(info.GetFullName(), device);
            resources.emplace(Core::ResourceInfo(info), device);
        }
        devices.swap(found);
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
        if (isSame(known->second->info(), info)) {
            return known->second;
        }
        return std::make_shared<DeviceResource>(layer, info, known->second->holding());
    }

    const std::shared_ptr<LayerResource> resource = std::make_shared<LayerResource>();
    std::mutex mutex;
    Devices devices;  // by full name
};

namespace {

template <typename Layer>
std::vector<std::shared_ptr<Layer>> wrap(std::vector<std::shared_ptr<ICameraLayer>> layers) {
    std::vector<std::shared_ptr<Layer>> wrapped;
    for (auto& layer : layers) {
        wrapped.push_back(std::make_shared<Layer>(std::move(layer)));
    }
    return wrapped;
}

}  // namespace

CameraResources::CameraResources(std::vector<std::shared_ptr<ICameraLayer>> layers, LateLayers late)
    : late_(std::move(late)),
      layers_(wrap<Layer>(std::move(layers))),
      complete_(late_ == nullptr) {}

CameraResources::~CameraResources() {
    for (const auto& layer : layers_) {
        layer->layer->SetDevicesChanged({});
    }
}

// Of refreshes that run at once an older list must not reach the pool last: who finds that another
// change of the list has begun since it looked, looks once more.
void CameraResources::refresh(Core::DefaultResourcePool& pool) {
    addLateLayers();
    const auto changesBegun = [this] {
        const std::scoped_lock lock(mutex_);
        return changesBegun_;
    };
    while (true) {
        const std::uint64_t seen = changesBegun();
        const ResourceMap resources = enumerate();
        {
            const std::scoped_lock lock(mutex_);
            if (changesBegun_ != seen) {
                continue;
            }
            ++changesBegun_;
        }
        pool.setResources(resources);
        if (changesBegun() == seen + 1) {
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

void CameraResources::watch(Layer& layer) const {
    layer.layer->SetDevicesChanged([weak = pool_] {
        const auto strong = weak.lock();
        if (strong == nullptr) {
            return;
        }
        try {
            strong->refreshResources({});
        } catch (...) {
            Utils::createLogEntry(Utils::Severitiy::Error, getCatIdResources(),
                                  "Host: The list of cameras can't be refreshed. Message: %s",
                                  currentMessage().c_str());
        }
    });
}

CameraResources::Layers CameraResources::getLayers() {
    const std::scoped_lock lock(mutex_);
    return layers_;
}

void CameraResources::addLateLayers() {
    const std::scoped_lock addition(addition_);
    {
        const std::scoped_lock lock(mutex_);
        const bool isFirst = !std::exchange(refreshed_, true);
        if (complete_ || isFirst) {
            return;
        }
        complete_ = true;
    }
    for (auto& layer : wrap<Layer>(late_())) {
        watch(*layer);
        const std::scoped_lock lock(mutex_);
        layers_.push_back(std::move(layer));
    }
}

CameraResources::ResourceMap CameraResources::enumerate() {
    ResourceMap resources;
    for (const auto& layer : getLayers()) {
        layer->addTo(resources);
    }
    return resources;
}

}  // namespace Orlix::Host
