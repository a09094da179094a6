#include "genapi/chunkport.h"

#include <cstring>

#include "genapi/engineerror.h"
#include "genapi/inode.h"
#include "genapi/iportconstruct.h"

namespace GenApi {

bool CChunkPort::wantsCopy() const {
    const auto* node = dynamic_cast<const IPortConstruct*>(GetPortNode());
    return node != nullptr && node->CacheChunkData();
}

void CChunkPort::AttachChunk(std::uint8_t* pBaseAddress, std::int64_t ChunkOffset,
                             std::int64_t Length, bool Copy) {
    if (pBaseAddress == nullptr || ChunkOffset < 0 || Length < 0) {
        GENAPI_THROW(InvalidArgumentException, "Chunk port: no chunk passed.");
    }
    offset_ = ChunkOffset;
    base_ = reinterpret_cast<std::uintptr_t>(pBaseAddress + ChunkOffset);
    setBytes(pBaseAddress + ChunkOffset, Length,
             Copy || wantsCopy() ? Keep::copy : Keep::reference);
}

void CChunkPort::DetachChunk() {
    clearBytes();
}

void CChunkPort::ReleaseBuffer() {
    if (!isCopy()) {
        clearBytes();
    }
}

void CChunkPort::UpdateBuffer(std::uint8_t* pBaseAddress) {
    if (hasBytes()) {
        AttachChunk(pBaseAddress, offset_, GetLength(), isCopy());
    }
}

std::int64_t CChunkPort::locate(const char* what, std::int64_t address, std::int64_t length) const {
    if (address >= 0) {
        return CBufferPort::locate(what, address, length);
    }
    const std::int64_t fromStart = GetLength() + address;
    if (!hasBytes() || length < 0 || fromStart < 0 || length > -address) {
        refuse(what, address, length);
    }
    return fromStart;
}

void CChunkPort::Read(void* pBuffer, std::int64_t Address, std::int64_t Length) {
    const bool isPseudo = Address == baseAddressRegister || Address == lengthRegister;
    if (!isPseudo || !hasBytes() || Length != sizeof(std::uint64_t)) {
        CBufferPort::Read(pBuffer, Address, Length);
        return;
    }
    const std::uint64_t value =
        Address == lengthRegister ? static_cast<std::uint64_t>(GetLength()) : base_;
    std::memcpy(pBuffer, &value, sizeof value);
}

}  // namespace GenApi
