// CMemoryPort, a port backed by memory: a device without a device, to look at a description or to
// test one. One thread at a time, which the lock of a map gives.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <unordered_map>

#include "genapi/portimpl.h"

namespace GenApi {

// Zero filled, and growing page by page where it is written: descriptions use the whole range of
// 64-bit addresses. What it may hold is bounded; an access that is longer than that, or a write
// that would need more, is an OutOfRangeException that names address and length.
class GENAPI_API CMemoryPort : public CPortImpl {
public:
    static constexpr std::int64_t initialSize = std::int64_t{64} * 1024;
    static constexpr std::int64_t defaultLimit = std::int64_t{16} * 1024 * 1024;

    // Sizes in bytes; the initial ones lie at address 0.
    explicit CMemoryPort(std::int64_t size = initialSize, std::int64_t limit = defaultLimit);

    // An unwritten address reads zero and does not make the memory grow.
    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override;

    // In bytes, as grown so far, in whole pages.
    [[nodiscard]] std::int64_t GetSize() const;

private:
    static constexpr std::uint64_t pageSize = 4096;
    using Page = std::array<std::uint8_t, pageSize>;

    void check(const char* what, std::int64_t address, std::int64_t length) const;
    Page& page(std::uint64_t number, std::int64_t address, std::int64_t length);

    std::unordered_map<std::uint64_t, std::unique_ptr<Page>> pages_;
    std::int64_t limit_;
};

}  // namespace GenApi
