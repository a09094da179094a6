#include "orlixhost/unaskedcameras.h"

#include <algorithm>
#include <array>

#include "host/settingsdocument.h"
#include "orlixcamera/deviceinfo.h"
#include "orlixcamera/emulatedcameras.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixhost/jsonsettings.h"
#include "orlixhost/recipegraph.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

constexpr std::array properties{Key::DeviceClass,  Key::FullName,  Key::FriendlyName,
                                Key::SerialNumber, Key::ModelName, Key::UserDefinedName,
                                Key::IpAddress,    Key::VendorName};

void collectTexts(const Json& value, std::set<std::string>& texts) {
    if (value.is_string()) {
        texts.insert(value.get<std::string>());
    }
    if (value.is_structured()) {
        for (const Json& part : value) {
            collectTexts(part, texts);
        }
    }
}

std::string propertyOf(const Core::ResourceInfo& info, const char* key) {
    GenICam::gcstring value;
    return info.GetPropertyValue(key, value) ? value.str() : std::string();
}

bool isEmulated(const Core::ResourceInfo& info) {
    return propertyOf(info, Key::DeviceClass) == Orlix::EmulatedCameraClass;
}

bool isInUse(Utils::IObject& resource) {
    auto* const device = Utils::object_cast<Core::IDeviceResource>(&resource);
    return device != nullptr && !device->isUnused();
}

}  // namespace

UnaskedCameras::UnaskedCameras(const RecipeGraph& graph) : graph_(graph) {
    // Not as they were in the file: a device may have been chosen since.
    const Recipe recipe = graph.saved(graph.recipe().basePath());
    for (std::size_t i = 0; i < recipe.nodes().size(); ++i) {
        collectTexts(recipe.settings(i)->document().root, settings_);
    }
    settings_.erase(std::string());
}

std::vector<std::string> UnaskedCameras::names() const {
    std::vector<std::string> names;
    const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    for (const auto& [info, resource] : graph_.pool().getResources(type)) {
        const bool isAsked =
            std::any_of(properties.begin(), properties.end(), [&, &found = info](const char* key) {
                return settings_.count(propertyOf(found, key)) != 0;
            });
        if (isEmulated(info) && !isAsked && isInUse(*resource)) {
            names.push_back(propertyOf(info, Key::FriendlyName));
        }
    }
    return names;
}

}  // namespace Orlix::Host
