// The accesses of a connection to the camera's memory.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <vector>

#include "aravis/bigendian.h"
#include "aravis/bootstrap.h"
#include "aravis/connection.h"
#include "gcbase/gcexception.h"

namespace Orlix::Aravis {

using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using GenICam::RuntimeException;
using GenICam::TimeoutException;

namespace {

constexpr std::uint64_t wordSize = 4;

// The words that a range touches. GigE Vision moves whole words only, and Aravis fills up the rest
// of the last one with what happens to lie behind the caller's bytes.
struct Words {
    Words(Protocol protocol, std::uint64_t address, std::size_t length)
        : first(protocol == Protocol::GigE ? address / wordSize * wordSize : address),
          skipped(static_cast<std::size_t>(address - first)),
          size(protocol == Protocol::GigE ? (skipped + length + wordSize - 1) / wordSize * wordSize
                                          : length),
          areWhole(size == length) {}

    std::uint64_t first;
    std::size_t skipped;
    std::size_t size;
    bool areWhole;
};

using Bytes = std::vector<std::uint8_t>;

// Addresses of GigE Vision have 32 bits, and Aravis cuts off what is beyond.
void requireRange(Protocol protocol, std::int64_t address, std::size_t length) {
    constexpr std::uint64_t endOfNetworkMemory = std::uint64_t{1} << 32U;
    const bool isBeyond = protocol == Protocol::GigE &&
                          static_cast<std::uint64_t>(address) + length > endOfNetworkMemory;
    if (address < 0 || length > std::numeric_limits<std::int32_t>::max() || isBeyond) {
        const std::string text = "The camera has no memory of " + std::to_string(length) +
                                 " bytes at address " + std::to_string(address) + ".";
        throw InvalidArgumentException(text.c_str(), __FILE__, __LINE__);
    }
}

}  // namespace

// The caller's memory is used on its own thread only: it may leave before Aravis does.
void Connection::Read(std::int64_t address, void* buffer, std::size_t length) {
    requireRange(camera_.protocol, address, length);
    const Words words(camera_.protocol, static_cast<std::uint64_t>(address), length);
    const auto bytes = std::make_shared<Bytes>(words.size);
    use([this, words,
         bytes](ArvDevice* device) { transferIn(device, words.first, bytes->data(), words.size); },
        Purpose::Any);
    std::memcpy(buffer, bytes->data() + words.skipped, length);
}

void Connection::Write(std::int64_t address, const void* buffer, std::size_t length) {
    requireRange(camera_.protocol, address, length);
    const Words words(camera_.protocol, static_cast<std::uint64_t>(address), length);
    const auto* const first = static_cast<const std::uint8_t*>(buffer);
    const auto change = std::make_shared<const Bytes>(first, first + length);
    const bool setsHeartbeat = Bootstrap::Touches(Bootstrap::heartbeatTimeOut, address, length);
    use(
        [this, words, change, setsHeartbeat](ArvDevice* device) {
            Bytes bytes(words.size);
            if (!words.areWhole) {
                transferIn(device, words.first, bytes.data(), words.size);
            }
            std::copy(change->begin(), change->end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(words.skipped));
            transferOut(device, words.first, bytes.data(), words.size);
            if (setsHeartbeat) {
                learnHeartbeat(device);
            }
        },
        Purpose::Write);
}

std::uint32_t Connection::ReadRegister(std::uint32_t address) {
    std::array<std::uint8_t, wordSize> bytes{};
    Read(address, bytes.data(), bytes.size());
    return static_cast<std::uint32_t>(GetNumber(bytes.data(), bytes.size()));
}

void Connection::WriteRegister(std::uint32_t address, std::uint32_t value) {
    std::array<std::uint8_t, wordSize> bytes{};
    PutNumber(bytes.data(), bytes.size(), value);
    Write(address, bytes.data(), bytes.size());
}

// Cameras with descriptions of old schemas may know words by the register commands only.
bool Connection::isNumber(std::uint64_t address, std::size_t length) const noexcept {
    return numbersByRegister_ && length == wordSize && address % wordSize == 0;
}

void Connection::transferIn(ArvDevice* device, std::uint64_t address, void* buffer,
                            std::size_t length) {
    Error error;
    if (isNumber(address, length)) {
        std::uint32_t value = 0;
        if (arv_device_read_register(device, address, &value, error.Out()) != FALSE) {
            PutNumber(static_cast<std::uint8_t*>(buffer), length, value);
            ++answers_;
            return;
        }
    } else if (arv_device_read_memory(device, address, static_cast<guint32>(length), buffer,
                                      error.Out()) != FALSE) {
        ++answers_;
        return;
    }
    throwFailed("read", address, length, error);
}

void Connection::transferOut(ArvDevice* device, std::uint64_t address, const void* buffer,
                             std::size_t length) {
    Error error;
    if (isNumber(address, length)) {
        const auto value =
            static_cast<std::uint32_t>(GetNumber(static_cast<const std::uint8_t*>(buffer), length));
        if (arv_device_write_register(device, address, value, error.Out()) != FALSE) {
            ++answers_;
            return;
        }
    } else if (arv_device_write_memory(device, address, static_cast<guint32>(length),
                                       const_cast<void*>(buffer), error.Out()) != FALSE) {
        ++answers_;
        return;
    }
    throwFailed("written", address, length, error);
}

void Connection::throwFailed(const char* what, std::uint64_t address, std::size_t length,
                             const Error& error) {
    if (IsLost()) {
        ThrowGone();
    }
    std::array<char, 24> place{};
    static_cast<void>(std::snprintf(place.data(), place.size(), "0x%llx",
                                    static_cast<unsigned long long>(address)));
    const std::string text = std::to_string(length) + " bytes at address " + place.data() +
                             " of device '" + camera_.label + "' can't be " + what + ": " +
                             error.Text() + ".";
    if (error.Is(ARV_DEVICE_ERROR_TIMEOUT)) {
        throw TimeoutException(text.c_str(), __FILE__, __LINE__);
    }
    ++answers_;  // a refusal is one
    if (error.Is(ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED) ||
        error.Is(ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT) ||
        error.Is(ARV_DEVICE_ERROR_NOT_CONTROLLER)) {
        throw AccessException(text.c_str(), __FILE__, __LINE__);
    }
    throw RuntimeException(text.c_str(), __FILE__, __LINE__);
}

}  // namespace Orlix::Aravis
