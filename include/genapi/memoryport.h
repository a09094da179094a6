// CMemoryPort, a port backed by memory: a device without a device, to look at a description or to
// test one. One thread at a time, which the lock of a map gives.
#pragma once

#include "genapi/portimpl.h"

namespace GenApi {

// Zero filled, growing as it is addressed up to its limit. An access to a negative address or
// beyond the limit is an OutOfRangeException that names address and length.
class GENAPI_API CMemoryPort : public CPortImpl {
public:
    static constexpr std::int64_t initialSize = std::int64_t{64} * 1024;
    static constexpr std::int64_t defaultLimit = std::int64_t{16} * 1024 * 1024;

    explicit CMemoryPort(std::int64_t size = initialSize, std::int64_t limit = defaultLimit);

    // An unwritten address reads zero and does not make the memory grow.
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override;

    // In bytes, as grown so far.
    [[nodiscard]] std::int64_t GetSize() const { return static_cast<std::int64_t>(bytes_.size()); }

private:
    void check(const char* what, std::int64_t address, std::int64_t length) const;

    std::vector<std::uint8_t> bytes_;
    std::int64_t limit_;
};

}  // namespace GenApi
