// The private data of Camera, shared by the files that implement it, and the types of its ports.
//
// All fields but the atomic one are guarded by the node's lock. Fields are destroyed from the
// last to the first: the instant camera waits for its threads then, and what their handlers read
// stands before it.
#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <vector>

#include "anythingtonodemapadapter/commandparameterport.h"
#include "anythingtonodemapadapter/enumentryparameterport.h"
#include "anythingtonodemapadapter/enumparameterport.h"
#include "anythingtonodemapadapter/integerparameterport.h"
#include "anythingtonodemapadapter/stringparameterport.h"
#include "camera/pinmapping.h"
#include "nodedata.h"
#include "orlixcamera/cameradevice.h"
#include "orlixcamera/instantcamera.h"
#include "orlixdataprocessingcore/core/errors.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/utils/signal.h"
#include "orlixvcellpackagebase/camera.h"

namespace Plugin::OrlixVCellPackageBase {

using AcquisitionModePort = AnythingToNodeMapAdapter::EnumParameterPortRelay<
    AcquisitionMode, Camera, &Camera::getAcquisitionMode, &Camera::setAcquisitionMode>;
using FixCorruptImagesPort = AnythingToNodeMapAdapter::EnumParameterPortRelay<
    FixCorruptImages, Camera, &Camera::getFixCorruptImages, &Camera::setFixCorruptImages>;
// A text that the node writes and a user reads.
using ShownTextPort =
    AnythingToNodeMapAdapter::StringParameterPort<gcstring, AnythingToNodeMapAdapter::NoAction>;

struct Camera::Impl {
    template <typename Enumeration>
    using EntryPointer =
        std::shared_ptr<AnythingToNodeMapAdapter::EnumEntryParameterPort<Enumeration>>;
    using ShownTextPointer = std::shared_ptr<ShownTextPort>;
    using SelectorPointer = std::shared_ptr<AnythingToNodeMapAdapter::IntegerParameterPortBase>;
    using TextPointer = PortPointer<AnythingToNodeMapAdapter::IStringParameterPort>;
    using CommandPointer = PortPointer<AnythingToNodeMapAdapter::ICommandParameterPort>;

    struct DeviceProperty {
        gcstring key;
        gcstring value;
    };

    // Shared with hosts that hold the signal, and with ~Camera, which takes them out under the lock
    // and ends the connection with it free.
    struct Signals {
        NodeMapsSignal nodeMapsChanged;
        Orlix::DataProcessing::Utils::ScopedConnection poolConnection;
    };

    // Frames of later runs of the library than this one may be put out. Read without the lock.
    std::atomic<std::uint64_t> lastRunOfFrames{0};
    // Events that the library counts up to this one came before the run, or outside of one.
    std::uint64_t lastEventBeforeRun = noEvents;
    static constexpr std::uint64_t noEvents = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t eventPinSelector = 0;
    std::uint64_t deviceSelector = 0;
    std::uint64_t devicePropertySelector = 0;
    std::uint64_t chunkPinSelector = 0;
    FixCorruptImages fixCorruptImages = FixCorruptImages::Off;
    AcquisitionMode acquisitionMode = AcquisitionMode::Continuous;
    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter adapter{"Device"};

    std::shared_ptr<AcquisitionModePort> acquisitionModePort;
    EntryPointer<AcquisitionMode> singleFrameEntry;
    EntryPointer<AcquisitionMode> continuousEntry;
    std::shared_ptr<FixCorruptImagesPort> fixCorruptImagesPort;
    EntryPointer<FixCorruptImages> onEntry;
    EntryPointer<FixCorruptImages> offEntry;
    ShownTextPointer selectedDeviceModelNamePort;
    ShownTextPointer selectedDeviceVendorNamePort;
    ShownTextPointer selectedDeviceSerialNumberPort;
    ShownTextPointer selectedDeviceUserDefinedNamePort;
    ShownTextPointer deviceModelNamePort;
    ShownTextPointer deviceVendorNamePort;
    ShownTextPointer deviceSerialNumberPort;
    ShownTextPointer deviceUserDefinedNamePort;
    CommandPointer deviceListUpdatePort;
    SelectorPointer deviceSelectorPort;
    CommandPointer deviceChoosePort;
    SelectorPointer devicePropertySelectorPort;
    TextPointer devicePropertyKeyPort;
    TextPointer devicePropertyValuePort;
    CommandPointer devicePropertyAddPort;
    CommandPointer devicePropertyRemovePort;
    SelectorPointer eventPinSelectorPort;
    TextPointer eventPinConfigurationPort;
    CommandPointer eventPinAddPort;
    CommandPointer eventPinRemovePort;
    SelectorPointer chunkPinSelectorPort;
    TextPointer chunkPinValuePort;
    CommandPointer chunkPinAddPort;
    CommandPointer chunkPinRemovePort;

    std::vector<ResourceInfo> deviceList;
    std::vector<Orlix::DataProcessing::Core::NodeMapInfo> nodeMaps;
    std::vector<DeviceProperty> deviceProperties;
    std::vector<gcstring> eventPinConfigurations;
    std::vector<gcstring> eventOutputNames;
    std::vector<gcstring> chunkPinConfigurations;
    PinMappingMap chunkPinMappings;
    std::vector<gcstring> chunkOutputNames;
    std::shared_ptr<Orlix::DataProcessing::Core::IResourcePool> resourcePool;
    std::shared_ptr<Orlix::ICameraDevice> device;
    Orlix::CInstantCamera instantCamera;
    std::shared_ptr<Signals> signals;
    bool allocatedWithFlag = false;
    std::shared_ptr<Orlix::DataProcessing::Threading::RecursiveCLock> lock;
    std::shared_ptr<Orlix::DataProcessing::Core::IError> deviceRemovedError;

    CommandPointer configurationSetFetchPort;
    CommandPointer configurationSetCommitPort;
    CommandPointer configurationSetClearPort;
    TextPointer configurationSetStagedPort;
    ShownTextPointer configurationSetActivePort;
    PortPointer<AnythingToNodeMapAdapter::IEnumParameterPort> configurationSetSelectorPort;
    EntryPointer<StreamType> cameraInstanceEntry;
    EntryPointer<StreamType> streamGrabberEntry;
    EntryPointer<StreamType> cameraDeviceEntry;
    EntryPointer<StreamType> deviceTransportLayerEntry;

    StreamType streamType = StreamType::CameraInstance;
    std::map<gcstring, StreamType> identifierToStreamType;
    std::map<StreamType, gcstring> streamTypeToIdentifier;
    std::map<StreamType, gcstring> stagedStreams;
    std::map<StreamType, gcstring> activeStreams;
    std::map<StreamType, bool> streamPending;
};

// Keeps the maximum of a selector at the last index of its list, -1 for an empty list, and lowers
// the selector first where it lies beyond, by numbers with a sign.
template <typename SetSelector>
void updateSelectorMaximum(AnythingToNodeMapAdapter::IntegerParameterPortBase& port,
                           std::size_t listSize, SetSelector setSelector) {
    const auto maximum = static_cast<std::int64_t>(listSize) - 1;
    if (port.getMax() == maximum) {
        return;
    }
    if (port.getValue() > maximum) {
        setSelector(static_cast<std::uint64_t>(maximum));
    }
    port.setMax(maximum);
    port.notify();
}

}  // namespace Plugin::OrlixVCellPackageBase
