#include "camera/eventpinmapping.h"

#include "camera/log.h"
#include "camera/pinparsing.h"

namespace Plugin::OrlixVCellPackageBase {

using GenICam::gcstring;
using namespace CameraLog;

namespace {

bool hasOneValue(const PinMapping& mapping, PinProperty property) {
    const auto found = mapping.properties.find(property);
    return found != mapping.properties.end() && found->second.size() == 1;
}

EventPinMapping makeMapping(const PinMapping& mapping) {
    if (mapping.mappingType != PinMappingType::Event) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Unexpected mapping type found in configuration");
        return {};
    }
    if (!hasOneValue(mapping, PinProperty::EventName) || !hasOneValue(mapping, PinProperty::Type) ||
        !hasOneValue(mapping, PinProperty::ValueName)) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Incomplete event configuration found");
        return {};
    }
    return {mapping.properties.at(PinProperty::ValueName).front(),
            mapping.properties.at(PinProperty::EventName).front(), mapping.pinType, mapping.pinName,
            true};
}

}  // namespace

EventPinMapping getEventMapping(const gcstring& text) {
    PinMappingMap pins;
    if (parsePins(PinMappingType::Event, {text}, pins) == ParseResult::Failed) {
        return {};
    }
    if (pins.size() != 1) {
        createLogEntry(Severitiy::Error, category(),
                       "Camera: Wrong number of event configurations found:%d",
                       static_cast<int>(pins.size()));
        return {};
    }
    return makeMapping(pins.begin()->second);
}

}  // namespace Plugin::OrlixVCellPackageBase
