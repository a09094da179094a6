#include "orlixcamera/configurationeventhandler.h"

namespace Orlix {

CConfigurationEventHandler::CConfigurationEventHandler() = default;
CConfigurationEventHandler::~CConfigurationEventHandler() = default;

void CConfigurationEventHandler::DestroyConfiguration(CInstantCamera& /*camera*/) {
    delete this;
}

}  // namespace Orlix
