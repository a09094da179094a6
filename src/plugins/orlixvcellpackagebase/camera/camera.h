// The node that owns a camera device. So far it takes its place in recipes and catalogs: it can be
// created, shown and stored, and it reserves its output pin.
#pragma once

#include <memory>
#include <vector>

#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"

namespace Plugin::OrlixVCellPackageBase {

// Inputs: none.
// Outputs: "Image", the acquired image.
// Parameters of the map "@vCell": the category Root.
//
//     {"name": "Camera", "type": "Camera", "uuid": "846bca11-6bf2-4895-88c4-fe038f5a659c"}
//
// Life: needs a resource pool, and throws InvalidArgumentException without one. All members may be
// called from any thread. Settings are refused while the node runs.
class Camera : public Orlix::DataProcessing::Core::AdvancedNode,
               public Orlix::DataProcessing::Core::INodeMapContainer {
public:
    explicit Camera(const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool);
    ~Camera() override;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    Orlix::DataProcessing::Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    bool isForwardingUpdates() const override;

    void loadSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& settings) override;

    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    std::shared_ptr<Orlix::DataProcessing::Utils::ISignal<void()>> getNodeMapsChangedSignal()
        override;

private:
    struct Impl;

    void buildParameterTree();

    const std::unique_ptr<Impl> impl_;
};

}  // namespace Plugin::OrlixVCellPackageBase
