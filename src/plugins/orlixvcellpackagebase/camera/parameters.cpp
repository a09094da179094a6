// The parameter tree of Camera.
#include <initializer_list>
#include <limits>

#include "camera/cameraimpl.h"
#include "camera/names.h"
#include "camera/parametertexts.h"
#include "camera/pinparametertexts.h"
#include "parametertree.h"

namespace Plugin::OrlixVCellPackageBase {

namespace Ports = AnythingToNodeMapAdapter;
namespace Names = CameraNames;
namespace Texts = CameraTexts;

namespace {

template <std::uint64_t (Camera::*getter)() const, void (Camera::*setter)(std::uint64_t)>
using Selector = Ports::IntegerParameterPortRelay<std::uint64_t, Camera, getter, setter>;
template <gcstring (Camera::*getter)() const, void (Camera::*setter)(const gcstring&)>
using Text = Ports::StringParameterPortRelay<Camera, getter, setter>;
template <bool (Camera::*isExecuting)() const, void (Camera::*execute)()>
using Command = Ports::CommandParameterPortRelay<Camera, isExecuting, execute>;

using DeviceListUpdatePort =
    Command<&Camera::isExecutingDeviceListUpdate, &Camera::executeDeviceListUpdate>;
using DeviceSelectorPort = Selector<&Camera::getDeviceSelector, &Camera::setDeviceSelector>;
using DeviceChoosePort = Command<&Camera::isExecutingDeviceChoose, &Camera::executeDeviceChoose>;
using DevicePropertySelectorPort =
    Selector<&Camera::getDevicePropertySelector, &Camera::setDevicePropertySelector>;
using DevicePropertyKeyPort = Text<&Camera::getDevicePropertyKey, &Camera::setDevicePropertyKey>;
using DevicePropertyValuePort =
    Text<&Camera::getDevicePropertyValue, &Camera::setDevicePropertyValue>;
using DevicePropertyAddPort =
    Command<&Camera::isExecutingDevicePropertyAdd, &Camera::executeDevicePropertyAdd>;
using DevicePropertyRemovePort =
    Command<&Camera::isExecutingDevicePropertyRemove, &Camera::executeDevicePropertyRemove>;
using EventPinSelectorPort = Selector<&Camera::getEventPinSelector, &Camera::setEventPinSelector>;
using EventPinConfigurationPort =
    Text<&Camera::getEventPinConfiguration, &Camera::setEventPinConfiguration>;
using EventPinAddPort = Command<&Camera::isExecutingEventPinAdd, &Camera::executeEventPinAdd>;
using EventPinRemovePort =
    Command<&Camera::isExecutingEventPinRemove, &Camera::executeEventPinRemove>;
using ChunkPinSelectorPort = Selector<&Camera::getChunkPinSelector, &Camera::setChunkPinSelector>;
using ChunkPinValuePort = Text<&Camera::getChunkPinValue, &Camera::setChunkPinValue>;
using ChunkPinAddPort = Command<&Camera::isExecutingChunkPinAdd, &Camera::executeChunkPinAdd>;
using ChunkPinRemovePort =
    Command<&Camera::isExecutingChunkPinRemove, &Camera::executeChunkPinRemove>;
using ConfigurationSetSelectorPort =
    Ports::EnumParameterPortRelay<StreamType, Camera, &Camera::getStreamType,
                                  &Camera::setStreamType>;
using ConfigurationSetFetchPort = Command<&Camera::isExecutingOFSFetch, &Camera::executeOFSFetch>;
using ConfigurationSetStagedPort = Text<&Camera::getOFSStagedContent, &Camera::setOFSStagedContent>;
using ConfigurationSetCommitPort =
    Command<&Camera::isExecutingOFSCommit, &Camera::executeOFSCommit>;
using ConfigurationSetClearPort = Command<&Camera::isExecutingOFSClear, &Camera::executeOFSClear>;

constexpr int textLength = 512;
constexpr int streamLength = 100000;
constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();

std::shared_ptr<Ports::DescribedCategoryParameterPort> makeCategory(
    const Texts::CategoryText& text) {
    return std::make_shared<Ports::DescribedCategoryParameterPort>(text.name, text.displayName,
                                                                   text.toolTip, text.description);
}

template <typename Port, typename... More>
std::shared_ptr<Port> makePort(Camera& owner, const Texts::ParameterText& text, More... more) {
    return std::make_shared<Port>(owner, text.name, text.displayName, text.toolTip,
                                  text.description, text.visibility, text.first.available,
                                  text.first.writable, true, true, more...);
}

template <typename Port>
std::shared_ptr<Port> makeSelector(Camera& owner, const Texts::ParameterText& text) {
    return makePort<Port>(owner, text, 0, unlimited, 1, "Linear");
}

template <typename Port>
std::shared_ptr<Port> makeCommand(Camera& owner, const Texts::ParameterText& text) {
    return makePort<Port>(owner, text, true);
}

std::shared_ptr<ShownTextPort> makeShownText(const Texts::ParameterText& text, int length) {
    return std::make_shared<ShownTextPort>(
        Names::noDeviceListed, length, text.name, text.displayName, text.toolTip, text.description,
        text.visibility, text.first.available, text.first.writable, true, true);
}

template <typename Enumeration>
std::shared_ptr<Ports::EnumEntryParameterPort<Enumeration>> makeEntry(
    Enumeration value, const Texts::EntryText& text) {
    return std::make_shared<Ports::EnumEntryParameterPort<Enumeration>>(
        value, text.name, text.displayName, text.toolTip, text.description, true, true, true, true);
}

struct SelectorLinks {
    const char* selector;
    std::initializer_list<const char*> selected;
};

void addSelectorLinks(ParameterTree& tree) {
    const SelectorLinks links[] = {
        {Texts::deviceSelector.name,
         {Texts::deviceModelName.name, Texts::deviceVendorName.name, Texts::deviceSerialNumber.name,
          Texts::deviceUserDefinedName.name, Texts::deviceChoose.name}},
        {Texts::devicePropertySelector.name,
         {Texts::devicePropertyKey.name, Texts::devicePropertyValue.name,
          Texts::devicePropertyAdd.name, Texts::devicePropertyRemove.name}},
        {Texts::eventPinSelector.name,
         {Texts::eventPinConfiguration.name, Texts::eventPinAdd.name, Texts::eventPinRemove.name}},
        {Texts::chunkPinSelector.name,
         {Texts::chunkPinValue.name, Texts::chunkPinAdd.name, Texts::chunkPinRemove.name}},
    };
    for (const SelectorLinks& link : links) {
        for (const char* selected : link.selected) {
            tree.select(link.selector, selected);
        }
    }
}

}  // namespace

void Camera::buildParameterTree() {
    const Guard guard = lockNode();
    ParameterTree tree(impl_->adapter);
    for (const Texts::CategoryText* text :
         {&Texts::acquisitionControl, &Texts::deviceEnumerationControl,
          &Texts::selectedDeviceInformation, &Texts::eventOutputControl,
          &Texts::chunkOutputControl}) {
        tree.addCategory(makeCategory(*text));
    }
    // The order in which a viewer shows them is another one.
    for (const Texts::CategoryText* text :
         {&Texts::deviceEnumerationControl, &Texts::selectedDeviceInformation,
          &Texts::acquisitionControl, &Texts::eventOutputControl, &Texts::chunkOutputControl}) {
        tree.showCategory(text->name);
    }
    addSelectedDeviceParameters(tree);
    addAcquisitionParameters(tree);
    addDeviceParameters(tree);
    addDevicePropertyParameters(tree);
    addEventPinParameters(tree);
    addChunkPinParameters(tree);
    addSelectorLinks(tree);
    addConfigurationSetParameters(tree);
    tree.createNodeMap(*impl_->lock);
}

void Camera::addSelectedDeviceParameters(ParameterTree& tree) {
    const auto add = [&](const Texts::ParameterText& text) {
        return tree.add(makeShownText(text, textLength), Texts::selectedDeviceInformation.name);
    };
    impl_->selectedDeviceModelNamePort = add(Texts::selectedDeviceModelName);
    impl_->selectedDeviceSerialNumberPort = add(Texts::selectedDeviceSerialNumber);
    impl_->selectedDeviceVendorNamePort = add(Texts::selectedDeviceVendorName);
    impl_->selectedDeviceUserDefinedNamePort = add(Texts::selectedDeviceUserDefinedName);
}

void Camera::addAcquisitionParameters(ParameterTree& tree) {
    const char* category = Texts::acquisitionControl.name;

    const char* name = Texts::acquisitionMode.name;
    impl_->acquisitionModePort =
        tree.add(makePort<AcquisitionModePort>(*this, Texts::acquisitionMode), category);
    impl_->singleFrameEntry = tree.addEntry(
        name, makeEntry(AcquisitionMode::SingleFrame, Texts::acquisitionModeSingleFrame));
    impl_->continuousEntry = tree.addEntry(
        name, makeEntry(AcquisitionMode::Continuous, Texts::acquisitionModeContinuous));

    name = Texts::fixCorruptImages.name;
    impl_->fixCorruptImagesPort =
        tree.add(makePort<FixCorruptImagesPort>(*this, Texts::fixCorruptImages), category);
    impl_->onEntry =
        tree.addEntry(name, makeEntry(FixCorruptImages::On, Texts::fixCorruptImagesOn));
    impl_->offEntry =
        tree.addEntry(name, makeEntry(FixCorruptImages::Off, Texts::fixCorruptImagesOff));
}

void Camera::addDeviceParameters(ParameterTree& tree) {
    const char* category = Texts::deviceEnumerationControl.name;
    const auto addText = [&](const Texts::ParameterText& text) {
        return tree.add(makeShownText(text, textLength), category);
    };
    impl_->deviceListUpdatePort =
        tree.add(makeCommand<DeviceListUpdatePort>(*this, Texts::deviceListUpdate), category);
    impl_->deviceSelectorPort =
        tree.add(makeSelector<DeviceSelectorPort>(*this, Texts::deviceSelector), category);
    impl_->deviceModelNamePort = addText(Texts::deviceModelName);
    impl_->deviceVendorNamePort = addText(Texts::deviceVendorName);
    impl_->deviceSerialNumberPort = addText(Texts::deviceSerialNumber);
    impl_->deviceUserDefinedNamePort = addText(Texts::deviceUserDefinedName);
    impl_->deviceChoosePort =
        tree.add(makeCommand<DeviceChoosePort>(*this, Texts::deviceChoose), category);
}

void Camera::addDevicePropertyParameters(ParameterTree& tree) {
    const char* category = Texts::deviceEnumerationControl.name;
    impl_->devicePropertySelectorPort = tree.add(
        makeSelector<DevicePropertySelectorPort>(*this, Texts::devicePropertySelector), category);
    impl_->devicePropertyKeyPort = tree.add(
        makePort<DevicePropertyKeyPort>(*this, Texts::devicePropertyKey, textLength), category);
    impl_->devicePropertyValuePort = tree.add(
        makePort<DevicePropertyValuePort>(*this, Texts::devicePropertyValue, textLength), category);
    impl_->devicePropertyAddPort =
        tree.add(makeCommand<DevicePropertyAddPort>(*this, Texts::devicePropertyAdd), category);
    impl_->devicePropertyRemovePort = tree.add(
        makeCommand<DevicePropertyRemovePort>(*this, Texts::devicePropertyRemove), category);
}

void Camera::addEventPinParameters(ParameterTree& tree) {
    const char* category = Texts::eventOutputControl.name;
    impl_->eventPinSelectorPort =
        tree.add(makeSelector<EventPinSelectorPort>(*this, Texts::eventPinSelector), category);
    impl_->eventPinConfigurationPort = tree.add(
        makePort<EventPinConfigurationPort>(*this, Texts::eventPinConfiguration, textLength),
        category);
    impl_->eventPinAddPort =
        tree.add(makeCommand<EventPinAddPort>(*this, Texts::eventPinAdd), category);
    impl_->eventPinRemovePort =
        tree.add(makeCommand<EventPinRemovePort>(*this, Texts::eventPinRemove), category);
}

void Camera::addChunkPinParameters(ParameterTree& tree) {
    const char* category = Texts::chunkOutputControl.name;
    impl_->chunkPinSelectorPort =
        tree.add(makeSelector<ChunkPinSelectorPort>(*this, Texts::chunkPinSelector), category);
    impl_->chunkPinValuePort =
        tree.add(makePort<ChunkPinValuePort>(*this, Texts::chunkPinValue, textLength), category);
    impl_->chunkPinAddPort =
        tree.add(makeCommand<ChunkPinAddPort>(*this, Texts::chunkPinAdd), category);
    impl_->chunkPinRemovePort =
        tree.add(makeCommand<ChunkPinRemovePort>(*this, Texts::chunkPinRemove), category);
}

void Camera::addConfigurationSetParameters(ParameterTree& tree) {
    const char* category = Texts::configurationSetPersistence.name;
    tree.addCategory(makeCategory(Texts::configurationSetPersistence));
    tree.showCategory(category);

    impl_->identifierToStreamType = {
        {Names::cameraInstanceMap, StreamType::CameraInstance},
        {Names::streamGrabberMap, StreamType::StreamGrabber},
        {Names::cameraDeviceMap, StreamType::CameraDevice},
        {Names::transportLayerMap, StreamType::DeviceTransportLayer},
    };
    for (const auto& [identifier, type] : impl_->identifierToStreamType) {
        impl_->streamTypeToIdentifier[type] = identifier;
    }

    const char* name = Texts::configurationSetSelector.name;
    impl_->configurationSetSelectorPort = tree.add(
        makePort<ConfigurationSetSelectorPort>(*this, Texts::configurationSetSelector), category);
    impl_->cameraDeviceEntry = tree.addEntry(
        name, makeEntry(StreamType::CameraDevice, Texts::configurationSetSelectorCameraDevice));
    impl_->cameraInstanceEntry = tree.addEntry(
        name, makeEntry(StreamType::CameraInstance, Texts::configurationSetSelectorCameraInstance));
    impl_->deviceTransportLayerEntry =
        tree.addEntry(name, makeEntry(StreamType::DeviceTransportLayer,
                                      Texts::configurationSetSelectorDeviceTransportLayer));
    impl_->streamGrabberEntry = tree.addEntry(
        name, makeEntry(StreamType::StreamGrabber, Texts::configurationSetSelectorStreamGrabber));

    impl_->configurationSetFetchPort = tree.add(
        makeCommand<ConfigurationSetFetchPort>(*this, Texts::configurationSetFetch), category);
    impl_->configurationSetStagedPort = tree.add(
        makePort<ConfigurationSetStagedPort>(*this, Texts::configurationSetStaged, streamLength),
        category);
    impl_->configurationSetCommitPort = tree.add(
        makeCommand<ConfigurationSetCommitPort>(*this, Texts::configurationSetCommit), category);
    impl_->configurationSetActivePort =
        tree.add(makeShownText(Texts::configurationSetActive, streamLength), category);
    impl_->configurationSetClearPort = tree.add(
        makeCommand<ConfigurationSetClearPort>(*this, Texts::configurationSetClear), category);
}

}  // namespace Plugin::OrlixVCellPackageBase
