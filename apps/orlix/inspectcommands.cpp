// The commands that only look: catalog, params, nodemap, devices.
#include <iostream>

#include "commands.h"
#include "orlixdataprocessingcore/core/inode.h"
#include "orlixdataprocessingcore/core/resourcepool.h"
#include "orlixdataprocessingcore/utils/typeinfo.h"
#include "orlixhost/descriptionfile.h"
#include "orlixhost/descriptionsteps.h"
#include "orlixhost/htmltext.h"
#include "orlixhost/nodeparameters.h"
#include "orlixhost/parametertree.h"
#include "orlixhost/resourcepool.h"

namespace Orlix::App {

Host::PackageList loadPackages(const CommonOptions& options) {
    Host::PackageList packages;
    for (const std::string& file : options.packages) {
        packages.add(Host::Package::load(file));
    }
    if (options.packages.empty()) {
        packages.add(Host::Package::load(Host::Package::defaultFile()));
    }
    return packages;
}

void showCatalog(const CommonOptions& options, Format format) {
    const Host::PackageList packages = loadPackages(options);
    for (const auto& package : packages.packages()) {
        if (format == Format::Json) {
            std::cout << package->catalog();
            continue;
        }
        std::cout << package->file() << "\nversion " << package->version() << ", "
                  << package->vendor() << "\n";
        for (const Host::Module& module : package->modules()) {
            std::cout << "\n== " << module.name << " " << module.objectVersion << " ("
                      << module.displayName << ", " << module.uuid << ")\n"
                      << module.shortDescription << "\n\n"
                      << Host::plainText(module.detailedDescription) << "\n";
        }
    }
}

void showParameters(const CommonOptions& options, const std::string& type, Format format) {
    const Host::PackageList packages = loadPackages(options);
    const auto entry = packages.find(type, {});
    const auto node =
        entry.package->createNode(*entry.module, Host::createResourcePool(options.cameras));
    const auto parameters = Host::readParameters(Host::vcellMapOf(*node));
    if (format == Format::Json) {
        Host::printParametersAsJson(std::cout, parameters);
    } else if (parameters.empty()) {
        std::cout << type << " has no parameters.\n";
    } else {
        Host::printParameters(std::cout, parameters);
    }
}

void showNodeMap(const NodeMapOptions& options, Format format) {
    Host::DescriptionFile description(options.file, Host::MemoryImage{options.memory});
    if (!options.steps.empty()) {
        Host::runSteps(std::cout, description, Host::readStepFile(options.steps));
    } else if (format == Format::Json) {
        description.printAsJson(std::cout);
    } else {
        description.print(std::cout);
    }
}

void showDevices(const CommonOptions& options, Format format) {
    Host::CameraOptions cameras = options.cameras;
    if (cameras.realCameras == Host::RealCameras::LookedFor) {
        cameras.realCameras = Host::RealCameras::WaitedFor;
    }
    const auto pool = Host::createResourcePool(cameras);
    Host::printDevices(
        std::cout, *pool,
        format == Format::Json ? Host::DeviceFormat::Json : Host::DeviceFormat::Text);
}

}  // namespace Orlix::App
