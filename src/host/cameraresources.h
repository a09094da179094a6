// What a resource pool has of cameras: a resource for each layer and for each camera that its layer
// finds. Owned by the pool. Any thread may call.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "orlixdataprocessingcore/core/defaultresourcepool.h"
#include "orlixdataprocessingcore/core/resourcepool.h"

namespace Orlix {
class CInfoBase;
class ICameraLayer;
}  // namespace Orlix

namespace Orlix::Host {

class CameraResources {
public:
    // Makes layers that take time to begin, or to look for cameras.
    using LateLayers = std::function<std::vector<std::shared_ptr<ICameraLayer>>()>;

    explicit CameraResources(std::vector<std::shared_ptr<ICameraLayer>> layers,
                             LateLayers late = {});
    // Waits for a search that is under way, unless it is the search that lets go last.
    ~CameraResources();
    // To be called before the owner lets go of what it watches: when it returns, no search and no
    // layer is at work here any more, but for one that runs on this very thread.
    void end();
    CameraResources(const CameraResources&) = delete;
    CameraResources& operator=(const CameraResources&) = delete;

    // Fills the pool with what the layers list now; those that are late are not waited for. No lock
    // is held while a layer looks or the pool tells.
    void refresh(DataProcessing::Core::DefaultResourcePool& pool);
    // From now on a change that a layer notices refreshes the pool, as long as that lives. To be
    // called once, before the first search.
    void watch(const std::shared_ptr<DataProcessing::Core::DefaultResourcePool>& pool);

    // Makes the late layers and waits for their cameras on a thread of its own, unless that has
    // been done or is under way; then the watched pool is refreshed. A search that fails is a line
    // of the log, and the next call begins another one.
    void beginSearch();
    // Returns when no search is under way. False if there was none, or it has failed.
    [[nodiscard]] bool waitForSearch();
    // Whether a refresh of the pool has listed what the search has found.
    [[nodiscard]] bool isSearchListed();

private:
    using ResourceMap = DataProcessing::Core::IResourcePool::ResourceMap;
    class LayerCameras;
    using Layers = std::vector<std::shared_ptr<LayerCameras>>;
    enum class Search { NotBegun, UnderWay, Done };

    [[nodiscard]] ResourceMap enumerate();
    [[nodiscard]] Layers getLayers();
    void watch(LayerCameras& layer);
    void refreshWatched() noexcept;
    [[nodiscard]] bool isSearchDone();
    void search() noexcept;
    void addLateLayers();
    void endSearch(Search state) noexcept;

    const LateLayers late_;
    std::weak_ptr<DataProcessing::Core::DefaultResourcePool> pool_;
    std::mutex beginning_;  // of a search; outside of mutex_
    std::thread searcher_;
    std::mutex mutex_;
    std::condition_variable searchEnded_;
    Search search_;
    bool isSearchListed_ = false;
    Layers layers_;
    std::uint64_t changesBegun_ = 0;  // of the pool's list
};

}  // namespace Orlix::Host
