// CChunkPort, a port whose registers lie in one chunk of a frame. CChunkAdapter makes one for each
// chunk port of a map; it may also be connected by hand.
#pragma once

#include <limits>

#include "genapi/bufferport.h"

namespace GenApi {

// Address 0 is the chunk's first byte. A negative address counts from the chunk's end, -1 being the
// last byte. Two registers of eight bytes each, little endian, are served beside the data: where
// the chunk lies in memory, and how many bytes it has.
class GENAPI_API CChunkPort final : public CBufferPort {
public:
    static constexpr std::int64_t baseAddressRegister =
        std::numeric_limits<std::int64_t>::max() - 15;
    static constexpr std::int64_t lengthRegister = std::numeric_limits<std::int64_t>::max() - 7;

    // The chunk in the caller's buffer, with offset and length in bytes. It must stay until it is
    // detached or another is attached, unless `Copy` is set or the description asks for a copy
    // (CacheChunkData). InvalidArgumentException for a null base or a negative number.
    void AttachChunk(std::uint8_t* pBaseAddress, std::int64_t ChunkOffset, std::int64_t Length,
                     bool Copy = false);
    // The registers are not available from now on.
    void DetachChunk();
    // The frame's buffer is given back: a reference ends, a copy stays.
    void ReleaseBuffer();
    // The same chunk at another place, for a caller that moves or refills its buffer.
    void UpdateBuffer(std::uint8_t* pBaseAddress);

    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override;

protected:
    [[nodiscard]] std::int64_t locate(const char* what, std::int64_t address,
                                      std::int64_t length) const override;

private:
    [[nodiscard]] bool wantsCopy() const;

    // In the caller's buffer, also while a copy serves.
    std::uint64_t base_ = 0;
    std::int64_t offset_ = 0;
};

}  // namespace GenApi
