#include "genapi/memoryport.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "gcbase/gcexception.h"

namespace GenApi {

CMemoryPort::CMemoryPort(std::int64_t size, std::int64_t limit)
    : bytes_(static_cast<std::size_t>(
          std::clamp<std::int64_t>(size, 0, std::max<std::int64_t>(limit, 0)))),
      limit_(std::max<std::int64_t>(limit, 0)) {}

void CMemoryPort::check(const char* what, std::int64_t address, std::int64_t length) const {
    // In this order no sum can overflow.
    if (length < 0 || address < 0 || length > limit_ || address > limit_ - length) {
        const std::string text = std::string("Memory port: ") + what + " of " +
                                 std::to_string(length) + " bytes at address " +
                                 std::to_string(address) + " is outside of the " +
                                 std::to_string(limit_) + " bytes of memory.";
        throw GenICam::OutOfRangeException(text.c_str(), __FILE__, __LINE__);
    }
}

void CMemoryPort::Read(void* pBuffer, std::int64_t Address, std::int64_t Length) {
    check("reading", Address, Length);
    const std::int64_t present = std::clamp<std::int64_t>(GetSize() - Address, 0, Length);
    auto* out = static_cast<std::uint8_t*>(pBuffer);
    if (present > 0) {
        std::memcpy(out, bytes_.data() + Address, static_cast<std::size_t>(present));
    }
    std::fill(out + present, out + Length, std::uint8_t{0});
}

void CMemoryPort::Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) {
    check("writing", Address, Length);
    if (Length == 0) {
        return;
    }
    if (Address + Length > GetSize()) {
        bytes_.resize(static_cast<std::size_t>(Address + Length));
    }
    std::memcpy(bytes_.data() + Address, pBuffer, static_cast<std::size_t>(Length));
}

}  // namespace GenApi
