#include "orlixcamera/cameraeventhandler.h"

namespace Orlix {

CCameraEventHandler::CCameraEventHandler() = default;
CCameraEventHandler::~CCameraEventHandler() = default;

void CCameraEventHandler::DestroyCameraEventHandler(CInstantCamera& /*camera*/) {
    delete this;
}

}  // namespace Orlix
