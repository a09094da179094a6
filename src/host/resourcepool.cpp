#include "orlixhost/resourcepool.h"

#include <ostream>

#include "host/jsontext.h"
#include "host/message.h"
#include "orlixdataprocessingcore/core/bufferprovider.h"
#include "orlixdataprocessingcore/core/graphupdate.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/core/services.h"
#include "orlixdataprocessingcore/threading/threadpool.h"

namespace Orlix::Host {
namespace {

namespace Core = DataProcessing::Core;
namespace Utils = DataProcessing::Utils;

// Without a transport layer there is nothing to enumerate; the services are those of the process.
class ServicePool final : public Core::IResourcePool {
public:
    ResourceMap getResources(const Utils::TypeInfo&) override { return {}; }
    ResourceMap findResources(const Core::ResourceInfo&, const Utils::TypeInfo&) override {
        return {};
    }
    // The list stays as it is, so that there is nothing to tell.
    void refreshResources(const Utils::TypeInfo&) override {}
    std::shared_ptr<Utils::ISignal<void()>> getResourcesChangedSignal() override {
        return changed_;
    }

    std::shared_ptr<DataProcessing::Threading::IThreadPool> getThreadPool() override {
        return Core::getDefaultThreadPool();
    }
    std::shared_ptr<Core::IBufferProvider> getBufferProvider() override {
        return Core::getDefaultBufferProvider();
    }
    std::shared_ptr<Core::IUpdateFactory> getUpdateFactory() override {
        return Core::getDefaultUpdateFactory();
    }

private:
    std::shared_ptr<Utils::Signal<void()>> changed_ = std::make_shared<Utils::Signal<void()>>();
};

Json propertiesOf(const Core::ResourceInfo& info) {
    Json properties = Json::object();
    std::vector<GenICam::gcstring> names;
    info.GetPropertyNames(names);
    for (const GenICam::gcstring& name : names) {
        GenICam::gcstring value;
        if (info.GetPropertyValue(name, value)) {
            properties[name.str()] = value.str();
        }
    }
    return properties;
}

}  // namespace

std::shared_ptr<Core::IResourcePool> createResourcePool() {
    return std::make_shared<ServicePool>();
}

void printDevices(std::ostream& out, Core::IResourcePool& pool, DeviceFormat format) {
    const auto type = Utils::TypeInfo::getTypeInfo<Core::IDeviceResource>(true);
    Json devices = Json::array();
    for (const auto& [info, device] : pool.getResources(type)) {
        devices.push_back(propertiesOf(info));
    }
    if (format == DeviceFormat::Json) {
        out << printJson(devices);
        return;
    }
    if (devices.empty()) {
        out << "No devices. This version of the host knows no transport layer.\n";
    }
    for (const Json& device : devices) {
        for (const auto& property : device.items()) {
            out << property.key() << ": " << property.value().get<std::string>() << "\n";
        }
        out << "\n";
    }
}

}  // namespace Orlix::Host
