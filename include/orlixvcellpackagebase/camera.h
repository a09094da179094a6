// The node that owns a camera device: finds it in the host's resource pool, opens it, and hands its
// images, events and chunk data to the graph. A host creates it through create_Camera; a camera
// dialog that has the node object assigns a device through the four members that the package
// exports.
//
// Get the object from a node: static_cast<Camera*>(node->getRawPointer()), after a look at
// node->getTypeInfo(). All members may be called from any thread, but those for a camera dialog.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orlixcamera/cameraenums.h"
#include "orlixcamera/imageeventhandler.h"
#include "orlixdataprocessingcore/core/advancednode.h"
#include "orlixdataprocessingcore/core/nodemapcontainer.h"
#include "orlixdataprocessingcore/core/resourceinfo.h"
#include "orlixdataprocessingcore/threading/uniquelock.h"
#include "orlixvcellpackagebase/api.h"
#include "orlixvcellpackagebase/threadedconfigurationeventhandler.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;
using Orlix::DataProcessing::Core::ResourceInfo;

class ParameterTree;
struct EventPinMapping;
struct PinMapping;

// The values are those of saved recipes.
enum class AcquisitionMode : std::int32_t { SingleFrame = 0, Continuous = 1 };
// On comes first: recipes have it so.
enum class FixCorruptImages : std::int32_t { On = 0, Off = 1 };
// The node map whose settings a configuration set holds.
enum class StreamType : std::int32_t {
    CameraInstance = 0,
    StreamGrabber = 1,
    CameraDevice = 2,
    DeviceTransportLayer = 3,
};

// What a camera dialog shows, in the pool's order.
struct DeviceData {
    struct DeviceEntry {
        ResourceInfo info;
        bool inUse = false;
    };

    std::vector<ResourceInfo> transportLayers;
    std::vector<DeviceEntry> devices;
};

// Inputs: none.
// Outputs: "Image", the acquired image, or an image that carries the error of a frame that failed;
// "ImageCorrupt", while FixCorruptImages is On, whether the frame failed; one output for each event
// pin and each chunk pin that the user has configured. Image, ImageCorrupt and chunk pins of a
// frame form one update; an event is an update of its own.
// Parameters of the map "@vCell": categories DeviceEnumerationControl, SelectedDeviceInformation,
// AcquisitionControl, EventOutputControl, ChunkOutputControl, ConfigurationSetPersistence.
// Start argument: "AcquisitionMode", "Continuous" or "SingleFrame".
//
//     {"name": "Camera", "type": "Camera", "uuid": "846bca11-6bf2-4895-88c4-fe038f5a659c",
//      "settings": {"DeviceProperties": {"DeviceClass": "OrlixEmulated"},
//                   "EventConfiguration":
//                       ["End.Type=Integer.EventName=ExposureEnd.ValueName=EventExposureEnd"],
//                   "ChunkPinConfigurations": ["Exposure.Type=Float.ValueName=ChunkExposureTime"],
//                   "AcquisitionMode": 1, "FixCorruptImages": 1,
//                   "FeatureStreams": {"@CameraDevice": "Width\t640\n"}}}
//
// Life: needs a resource pool, and throws InvalidArgumentException without one. A device is held
// from allocateResources to freeResources or to its loss, which is an error on the node. A receiver
// that hears of the loss may free the resources at once, and must not destroy the node.
// One recursive lock guards everything; handlers of settings, of node maps and of the loss run with
// it free (those of the loss's end don't), and a frame becomes a job with it free. An event waits
// for space and becomes a job with it held.
class Camera : public Orlix::DataProcessing::Core::AdvancedNode,
               public Orlix::DataProcessing::Core::INodeMapContainer,
               public Orlix::CImageEventHandler,
               public ThreadedConfigurationEventHandler {
public:
    explicit Camera(const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool);
    ~Camera() override;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    Orlix::DataProcessing::Utils::TypeInfo getTypeInfo(bool throwOnError) const override;
    const void* getRawPointer() const override;
    void* getRawPointer() override;

    bool isForwardingUpdates() const override;

    // Refused with an exception while the node runs.
    void loadSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(
        const std::shared_ptr<Orlix::DataProcessing::Core::ISettings>& settings) override;

    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    std::shared_ptr<Orlix::DataProcessing::Utils::ISignal<void()>> getNodeMapsChangedSignal()
        override;

    // For a camera dialog, on the host's thread while the node is stopped; these take no lock.

    // The properties that now bind the node to a device.
    [[nodiscard]] ORLIXVCELLPACKAGEBASE_API ResourceInfo getActiveAssignmentProperties() const;
    // The fewest properties that find the device again, also on another computer.
    [[nodiscard]] ORLIXVCELLPACKAGEBASE_API ResourceInfo getAssignmentProperties(
        const ResourceInfo& device, const std::vector<ResourceInfo>& allDevices);
    // What there is now. Throws RuntimeException if a device comes or goes meanwhile.
    [[nodiscard]] ORLIXVCELLPACKAGEBASE_API DeviceData getCameraDeviceData();
    // Takes effect with the next allocation. Takes the node's lock.
    ORLIXVCELLPACKAGEBASE_API void setActiveAssignmentProperties(const ResourceInfo& properties);

    // The generated description of the parameters, for looking at.
    [[nodiscard]] gcstring describeParameters();

    // The owner's side of the parameters.

    [[nodiscard]] AcquisitionMode getAcquisitionMode() const;
    void setAcquisitionMode(AcquisitionMode value);
    [[nodiscard]] FixCorruptImages getFixCorruptImages() const;
    void setFixCorruptImages(FixCorruptImages value);

    [[nodiscard]] bool isExecutingDeviceListUpdate() const { return false; }
    void executeDeviceListUpdate();
    [[nodiscard]] std::uint64_t getDeviceSelector() const;
    void setDeviceSelector(std::uint64_t value);
    [[nodiscard]] bool isExecutingDeviceChoose() const { return false; }
    void executeDeviceChoose();

    [[nodiscard]] std::uint64_t getDevicePropertySelector() const;
    void setDevicePropertySelector(std::uint64_t value);
    [[nodiscard]] gcstring getDevicePropertyKey() const;
    void setDevicePropertyKey(const gcstring& text);
    [[nodiscard]] gcstring getDevicePropertyValue() const;
    void setDevicePropertyValue(const gcstring& text);
    [[nodiscard]] bool isExecutingDevicePropertyAdd() const { return false; }
    void executeDevicePropertyAdd();
    [[nodiscard]] bool isExecutingDevicePropertyRemove() const { return false; }
    void executeDevicePropertyRemove();

    [[nodiscard]] std::uint64_t getEventPinSelector() const;
    void setEventPinSelector(std::uint64_t value);
    // Throws std::out_of_range for a selector beyond the list, unlike getChunkPinValue.
    [[nodiscard]] gcstring getEventPinConfiguration() const;
    void setEventPinConfiguration(const gcstring& text);
    [[nodiscard]] bool isExecutingEventPinAdd() const { return false; }
    void executeEventPinAdd();
    [[nodiscard]] bool isExecutingEventPinRemove() const { return false; }
    void executeEventPinRemove();
    // All at once; the entries stay, and an edit of one makes their outputs anew.
    void removeEventOutputs();

    [[nodiscard]] std::uint64_t getChunkPinSelector() const;
    void setChunkPinSelector(std::uint64_t value);
    [[nodiscard]] gcstring getChunkPinValue() const;
    void setChunkPinValue(const gcstring& text);
    [[nodiscard]] bool isExecutingChunkPinAdd() const { return false; }
    void executeChunkPinAdd();
    [[nodiscard]] bool isExecutingChunkPinRemove() const { return false; }
    void executeChunkPinRemove();

    [[nodiscard]] StreamType getStreamType() const;
    void setStreamType(StreamType value);
    [[nodiscard]] bool isExecutingOFSFetch() const { return false; }
    void executeOFSFetch();
    // Makes an empty text of a set that has none, which then counts as staged.
    [[nodiscard]] gcstring getOFSStagedContent() const;
    void setOFSStagedContent(const gcstring& text);
    [[nodiscard]] bool isExecutingOFSCommit() const { return false; }
    void executeOFSCommit();
    [[nodiscard]] bool isExecutingOFSClear() const { return false; }
    void executeOFSClear();

    // The library's side: its grab thread, and what the node does when a device comes and goes.

    void OnImageGrabbed(Orlix::CInstantCamera& camera,
                        const Orlix::CGrabResultPtr& grabResult) override;
    void OnAttached(Orlix::CInstantCamera& camera) override;
    void OnDetached(Orlix::CInstantCamera& camera) override;
    void OnOpened(Orlix::CInstantCamera& camera) override;

protected:
    [[nodiscard]] std::vector<std::shared_ptr<Orlix::DataProcessing::Core::IError>>
    allocateAdditionalResources(
        const std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool>& pool,
        bool flag) override;
    void freeAdditionalResources(bool flag) override;
    void onStarting(const Orlix::DataProcessing::Core::NodeArgumentCollection& arguments) override;
    void onStopping() override;

private:
    struct Impl;
    class EventHandler;
    using Variant = Orlix::DataProcessing::Utils::Variant;
    using Guard = Orlix::DataProcessing::Threading::UniqueLock<
        Orlix::DataProcessing::Threading::IRecursiveLockable>;

    // The lock comes from the base, which outlives the private data: a handler of the library may
    // still be at work while that is taken down.
    [[nodiscard]] Guard lockNode() const;

    // Construction
    void connectToPool();
    void disconnectFromPool();
    void publish();
    void buildParameterTree();
    void addSelectedDeviceParameters(ParameterTree& tree);
    void addAcquisitionParameters(ParameterTree& tree);
    void addDeviceParameters(ParameterTree& tree);
    void addDevicePropertyParameters(ParameterTree& tree);
    void addEventPinParameters(ParameterTree& tree);
    void addChunkPinParameters(ParameterTree& tree);
    void addConfigurationSetParameters(ParameterTree& tree);

    // The list of devices, and the properties of the one to take
    void updateResources();
    void appendDeviceProperties(const ResourceInfo& properties);
    [[nodiscard]] bool updateDevicePropertyPorts();
    void setDevicePropertyPortsAvailable(bool available);
    void updateDevicePropertySelectorMaximum();

    void createImageCorruptOutput();
    void createPinOutput(const gcstring& name, const gcstring& description,
                         const Orlix::DataProcessing::Utils::TypeInfo& type);

    // Taking a device and giving it back
    void pickDevice(bool maySearchTwice);
    [[nodiscard]] const char* takeDevice();
    void allocateCamera(Guard& guard, bool flag);
    void publishDevice();
    void transferDeviceSets(Guard& guard);
    void freeCamera(Guard& guard);
    void endRemoval(Guard& guard);
    void releaseCamera();
    [[nodiscard]] bool isCameraOpen() const;
    void withdrawDevice();
    void showSelectedDevice();
    void showNoDeviceSelected();
    void setSelectedDevicePortsAvailable(bool available);
    void writeSelectedDevice(const std::array<gcstring, 4>& texts);
    void handleCameraDeviceRemoved() override;
    void resetDeviceRemovedError();

    // A run
    [[nodiscard]] std::optional<AcquisitionMode> getRequestedMode(
        const Orlix::DataProcessing::Core::NodeArgumentCollection& arguments) const;
    [[nodiscard]] std::optional<AcquisitionMode> getConfiguredMode() const;
    void startGrabbing(AcquisitionMode mode);
    void outputFrame(const Orlix::CGrabResultPtr& grabResult);
    [[nodiscard]] bool isOfThisRun(const Orlix::CGrabResultPtr& grabResult) const;
    void fillImageOutput(const Orlix::CGrabResultPtr& grabResult, Variant& image, bool& corrupt);
    [[nodiscard]] Variant fixCorruptedImage(const Orlix::CGrabResultPtr& grabResult);
    void readChunkValues(const Orlix::CGrabResultPtr& grabResult,
                         Orlix::DataProcessing::Core::PinValues& outputs);

    // Events
    [[nodiscard]] bool isOtherOutput(const gcstring& name) const;
    [[nodiscard]] bool isEventOutput(const gcstring& name) const;
    [[nodiscard]] bool openEventPin(Orlix::CInstantCamera& camera, const gcstring& configuration,
                                    Orlix::ECameraEventRegistrationMode mode);
    [[nodiscard]] bool turnEventOn(Orlix::CInstantCamera& camera, const gcstring& eventName);
    void registerEventHandler(Orlix::CInstantCamera& camera, const EventPinMapping& mapping,
                              Orlix::ECameraEventRegistrationMode mode);
    void outputEventValue(const gcstring& pinName, Variant value);

    // Event pins
    void setEventPinParametersAvailable(bool available);
    void setEventPinEntryAvailable(bool available);
    void updateEventPinSelectorMaximum();
    [[nodiscard]] bool hasOutput(const gcstring& name);
    void createEventOutputs();
    void removeEventPin();

    // Chunk pins
    void setChunkPinParametersAvailable(bool available);
    void setChunkPinEntryAvailable(bool available);
    void updateChunkPinSelectorMaximum();
    void rebuildChunkPins();
    void removeChunkOutputs();
    void createChunkOutput(const PinMapping& mapping);

    // Configuration sets
    void setOFSParametersAvailable(bool available);
    void updateFetchAvailability();
    void fetchSelectedSet();
    [[nodiscard]] gcstring modifyOFSStagedContent(const gcstring& stagedText) const;
    void commitOFS(StreamType type);
    void transferOFSActiveContentToCamera(StreamType type);
    void loadActiveSet(StreamType type);

    // Settings
    void saveLists(Orlix::DataProcessing::Core::ISettings& store) const;
    void saveActiveSets(Orlix::DataProcessing::Core::ISettings& store) const;
    void resetSettings();
    void loadLists(Orlix::DataProcessing::Core::ISettings& store);
    void loadActiveSets(Orlix::DataProcessing::Core::ISettings& store);
    void loadModes(Orlix::DataProcessing::Core::ISettings& store);
    void updatePortsOfLists();

    const std::unique_ptr<Impl> impl_;
};

}  // namespace Plugin::OrlixVCellPackageBase
