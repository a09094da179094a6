// Memory that begins or ends at a page that can't be touched, so that an access one byte too far
// ends the test.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace Orlix::Test {

enum class GuardSide { Front, Back };

class GuardedBuffer {
public:
    GuardedBuffer(std::size_t size, GuardSide side) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t usable = (size + page - 1) / page * page;
        mappedSize_ = usable + 2 * page;
        mapped_ = mmap(nullptr, mappedSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped_ == MAP_FAILED) {
            throw std::runtime_error("No memory can be mapped.");
        }
        std::uint8_t* const first = static_cast<std::uint8_t*>(mapped_) + page;
        if (mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("Memory can't be made accessible.");
        }
        data_ = side == GuardSide::Front ? first : first + usable - size;
    }
    ~GuardedBuffer() { munmap(mapped_, mappedSize_); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    [[nodiscard]] std::uint8_t* Data() const noexcept { return data_; }

private:
    void* mapped_ = nullptr;
    std::size_t mappedSize_ = 0;
    std::uint8_t* data_ = nullptr;
};

}  // namespace Orlix::Test
