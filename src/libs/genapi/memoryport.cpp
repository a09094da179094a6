#include "genapi/memoryport.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "gcbase/gcexception.h"

namespace GenApi {

namespace {

// Calls `use(page, offset, done, count)` for each part of a range that lies in one page. Addresses
// wrap, so that those with the top bit set are like all others.
template <typename Use>
void forEachPage(std::uint64_t pageSize, std::int64_t address, std::int64_t length, Use use) {
    const auto total = static_cast<std::uint64_t>(length);
    for (std::uint64_t done = 0; done < total;) {
        const std::uint64_t here = static_cast<std::uint64_t>(address) + done;
        const std::uint64_t offset = here % pageSize;
        const std::uint64_t count = std::min(pageSize - offset, total - done);
        use(here / pageSize, offset, done, count);
        done += count;
    }
}

}  // namespace

CMemoryPort::CMemoryPort(std::int64_t size, std::int64_t limit)
    : limit_(std::max<std::int64_t>(limit, 0)) {
    const std::int64_t first = std::clamp<std::int64_t>(size, 0, limit_);
    forEachPage(pageSize, 0, first,
                [&](std::uint64_t number, auto, auto, auto) { page(number, 0, first); });
}

std::int64_t CMemoryPort::GetSize() const {
    return static_cast<std::int64_t>(pages_.size() * pageSize);
}

void CMemoryPort::check(const char* what, std::int64_t address, std::int64_t length) const {
    if (length < 0 || length > limit_) {
        const std::string text = std::string("Memory port: ") + what + " of " +
                                 std::to_string(length) + " bytes at address " +
                                 std::to_string(address) + " is more than the " +
                                 std::to_string(limit_) + " bytes that it may hold.";
        throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
    }
}

CMemoryPort::Page& CMemoryPort::page(std::uint64_t number, std::int64_t address,
                                     std::int64_t length) {
    const auto known = pages_.find(number);
    if (known != pages_.end()) {
        return *known->second;
    }
    // A page that the limit cuts through is still one.
    if (GetSize() >= limit_) {
        const std::string text = "Memory port: writing of " + std::to_string(length) +
                                 " bytes at address " + std::to_string(address) +
                                 " needs more than the " + std::to_string(limit_) +
                                 " bytes that it may hold.";
        throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
    }
    return *pages_.emplace(number, std::make_unique<Page>()).first->second;
}

void CMemoryPort::Read(void* pBuffer, std::int64_t Address, std::int64_t Length) {
    check("reading", Address, Length);
    auto* out = static_cast<std::uint8_t*>(pBuffer);
    forEachPage(
        pageSize, Address, Length,
        [&](std::uint64_t number, std::uint64_t offset, std::uint64_t done, std::uint64_t count) {
            const auto known = pages_.find(number);
            if (known == pages_.end()) {
                std::memset(out + done, 0, count);
            } else {
                std::memcpy(out + done, known->second->data() + offset, count);
            }
        });
}

void CMemoryPort::Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) {
    check("writing", Address, Length);
    const auto* in = static_cast<const std::uint8_t*>(pBuffer);
    forEachPage(
        pageSize, Address, Length,
        [&](std::uint64_t number, std::uint64_t offset, std::uint64_t done, std::uint64_t count) {
            std::memcpy(page(number, Address, Length).data() + offset, in + done, count);
        });
}

}  // namespace GenApi
