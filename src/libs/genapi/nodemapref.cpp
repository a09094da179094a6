#include "genapi/nodemapref.h"

#include <utility>

#include "gcbase/gcexception.h"

namespace GenApi {

CNodeMapRef::CNodeMapRef(const gcstring& DeviceName) : deviceName_(DeviceName) {}

CNodeMapRef::CNodeMapRef(INodeMap* pNodeMap, const gcstring& DeviceName)
    : map_(pNodeMap), deviceName_(DeviceName) {
    if (map_ != nullptr) {
        map_->AddReference();
    }
}

CNodeMapRef::CNodeMapRef(const CNodeMapRef& other) : CNodeMapRef(other.map_, other.deviceName_) {}

CNodeMapRef::CNodeMapRef(CNodeMapRef&& other) noexcept
    : map_(std::exchange(other.map_, nullptr)), deviceName_(std::move(other.deviceName_)) {}

CNodeMapRef& CNodeMapRef::operator=(const CNodeMapRef& other) {
    CNodeMapRef copy(other);
    std::swap(map_, copy.map_);
    deviceName_.swap(copy.deviceName_);
    return *this;
}

CNodeMapRef& CNodeMapRef::operator=(CNodeMapRef&& other) noexcept {
    std::swap(map_, other.map_);
    deviceName_.swap(other.deviceName_);
    return *this;
}

CNodeMapRef::~CNodeMapRef() {
    _Destroy();
}

void CNodeMapRef::_Attach(INodeMap* pNodeMap) {
    // Taken before the old one goes, which may be the same.
    CNodeMapRef next(pNodeMap, deviceName_);
    if (pNodeMap != nullptr) {
        next.deviceName_ = pNodeMap->GetDeviceName();
    }
    *this = std::move(next);
}

void CNodeMapRef::_Destroy() {
    if (INodeMap* map = std::exchange(map_, nullptr)) {
        map->RemoveReference();
    }
}

INodeMap& CNodeMapRef::checked() const {
    if (map_ == nullptr) {
        throw GenICam::AccessException("Feature not present (reference not valid)", __FILE__,
                                       __LINE__);
    }
    return *map_;
}

}  // namespace GenApi
