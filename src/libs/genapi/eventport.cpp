#include "genapi/eventport.h"

#include "genapi/engineerror.h"

namespace GenApi {

void CEventPort::AttachEvent(const std::uint8_t* pMessage, std::int64_t Length) {
    // It is copied, never written.
    setBytes(const_cast<std::uint8_t*>(pMessage), Length, Keep::copy);
}

void CEventPort::DetachEvent() {
    clearBytes();
}

EAccessMode CEventPort::GetAccessMode() const {
    return hasBytes() ? RO : NA;
}

void CEventPort::Write(const void*, std::int64_t, std::int64_t) {
    GENAPI_THROW(AccessException, "Event port: the message of an event can not be written.");
}

}  // namespace GenApi
