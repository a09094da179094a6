// CEventPort, a port whose registers lie in the last message of one event. CEventAdapter makes one
// for each event port of a map; it may also be connected by hand.
#pragma once

#include "genapi/bufferport.h"

namespace GenApi {

// Address 0 is the message's first byte. The port is read-only.
class GENAPI_API CEventPort final : public CBufferPort {
public:
    // Length in bytes. The message is copied, so it may go after the call. InvalidArgumentException
    // for a null message or a negative length.
    void AttachEvent(const std::uint8_t* pMessage, std::int64_t Length);
    // The registers are not available from now on.
    void DetachEvent();

    [[nodiscard]] EAccessMode GetAccessMode() const override;
    // AccessException.
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override;
};

}  // namespace GenApi
