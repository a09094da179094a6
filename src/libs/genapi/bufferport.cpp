#include "genapi/bufferport.h"

#include <cstring>
#include <optional>
#include <string>

#include "genapi/engineerror.h"
#include "genapi/nodemap.h"

namespace GenApi {

namespace {

// All maps are of this class: there is no other way to make one.
Detail::NodeMap* mapOf(INode* portNode) {
    return portNode == nullptr ? nullptr : static_cast<Detail::NodeMap*>(portNode->GetNodeMap());
}

}  // namespace

CBufferPort::CBufferPort() = default;
CBufferPort::~CBufferPort() = default;

EAccessMode CBufferPort::GetAccessMode() const {
    return hasBytes() ? RW : NA;
}

void CBufferPort::setBytes(std::uint8_t* bytes, std::int64_t length, Keep keep) {
    if (bytes == nullptr || length < 0) {
        GENAPI_THROW(InvalidArgumentException, "Buffer port: no bytes passed.");
    }
    std::optional<Detail::NodeMap::Call> call;
    if (auto* map = mapOf(GetPortNode())) {
        call.emplace(*map);
    }
    if (keep == Keep::copy) {
        // One byte at least, so that an empty copy has a place too.
        copy_.resize(static_cast<std::size_t>(length) + 1);
        std::memcpy(copy_.data(), bytes, static_cast<std::size_t>(length));
    }
    bytes_ = keep == Keep::copy ? copy_.data() : bytes;
    length_ = length;
    InvalidateNode();
}

void CBufferPort::clearBytes() {
    std::optional<Detail::NodeMap::Call> call;
    if (auto* map = mapOf(GetPortNode())) {
        call.emplace(*map);
    }
    if (!hasBytes()) {
        return;
    }
    bytes_ = nullptr;
    length_ = 0;
    InvalidateNode();
}

void CBufferPort::refuse(const char* what, std::int64_t address, std::int64_t length) const {
    std::string text = "Port";
    if (const INode* node = GetPortNode()) {
        text += " '" + node->GetName().str() + "'";
    }
    text += std::string(": ") + what + " of " + std::to_string(length) + " bytes at address " +
            std::to_string(address);
    text += hasBytes() ? " leaves the " + std::to_string(length_) + " bytes attached."
                       : " without any bytes attached.";
    GENAPI_THROW(OutOfRangeException, text);
}

std::int64_t CBufferPort::locate(const char* what, std::int64_t address,
                                 std::int64_t length) const {
    // By differences of what is known to be small; sums could overflow.
    if (!hasBytes() || length < 0 || address < 0 || address > length_ ||
        length > length_ - address) {
        refuse(what, address, length);
    }
    return address;
}

void CBufferPort::Read(void* pBuffer, std::int64_t Address, std::int64_t Length) {
    const std::int64_t offset = locate("reading", Address, Length);
    std::memcpy(pBuffer, bytes_ + offset, static_cast<std::size_t>(Length));
}

void CBufferPort::Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) {
    const std::int64_t offset = locate("writing", Address, Length);
    std::memcpy(bytes_ + offset, pBuffer, static_cast<std::size_t>(Length));
}

}  // namespace GenApi
