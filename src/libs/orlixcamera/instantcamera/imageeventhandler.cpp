#include "orlixcamera/imageeventhandler.h"

namespace Orlix {

CImageEventHandler::CImageEventHandler() = default;
CImageEventHandler::~CImageEventHandler() = default;

void CImageEventHandler::DestroyImageEventHandler(CInstantCamera& /*camera*/) {
    delete this;
}

}  // namespace Orlix
